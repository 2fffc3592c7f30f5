// Writes a file through a temporary file in the same folder that replaces the
// target only when every write succeeded: the old file stays as it was when
// a write, the flush or the close fails (disk full, file size limit). The new
// file keeps the old file's mode; the data is synced before the rename and the
// folder after it.
#pragma once

#include <glib.h>

#include <cstdio>
#include <functional>

// Writes the new contents of path: opens the temporary file, hands its stream
// to writer and commits when writer returns true, else removes the temporary
// file and returns FALSE with the error writer set. On failure the old file
// stays and the error text is set: the errno text of a failed open with
// "Cannot open file." (and open_failure on top when given), "File I/O error
// when writing to file." for a failed flush or close.
gboolean ov_atomic_file_write(const char *path, const std::function<bool(FILE *stream)> &writer,
                              const char *open_failure = nullptr);
