// Tests of the module arrive with it.
