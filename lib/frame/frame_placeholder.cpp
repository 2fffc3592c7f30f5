// Holds the library's place until its first module lands.
