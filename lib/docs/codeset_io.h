// The codeset file: ISO-8859-1 XML with the root "codeset". Remarks are kept
// sorted by code when read. Writing replaces the file only when every write
// succeeded.
#pragma once

#include <glib.h>

#include "docs/codeset.h"

// Null with the reason on failure.
OvCodeset *ov_codeset_io_read_from_file(const char *path);
gboolean ov_codeset_io_write_to_file(const OvCodeset *codeset, const char *path);
