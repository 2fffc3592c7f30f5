// Writes a file through a temporary file in the same folder that replaces the
// target only when every write succeeded: the old file stays as it was when
// a write, the flush or the close fails (disk full, file size limit). The new
// file keeps the old file's mode; the data is synced before the rename and the
// folder after it.
#pragma once

#include <glib.h>

#include <cstdio>

struct OvAtomicFile;

// Creates the temporary file beside path. Returns null with the error text
// of a failed file open on failure.
OvAtomicFile *ov_atomic_file_open(const char *path);

// The stream to write the new contents into.
FILE *ov_atomic_file_get_stream(OvAtomicFile *file);

// Flushes, syncs and closes the temporary file, gives it the old file's mode
// and renames it over the target, then syncs the folder. Always frees file.
// On failure the temporary file is removed and the error text set ("File I/O
// error when writing to file." for a failed write or close).
gboolean ov_atomic_file_commit(OvAtomicFile *file);

// Closes and removes the temporary file and frees file; null is a no-op.
void ov_atomic_file_discard(OvAtomicFile *file);
