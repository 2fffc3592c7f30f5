// Filled by its module's work.
