// The codeset file: ISO-8859-1 XML with the root "codeset". Remarks are kept
// sorted by code when read. Writing replaces the file only when every write
// succeeded.
#pragma once

#include <glib.h>

#include "docs/codeset.h"

// Null with the reason on failure.
OvCodeset *ov_codeset_io_read_from_file(const char *path);
// Reads the file of that name in the workspace's codesets folder.
OvCodeset *ov_codeset_io_read_from_file_in_workspace(const char *file_name);
gboolean ov_codeset_io_write_to_file(const OvCodeset *codeset, const char *path);
