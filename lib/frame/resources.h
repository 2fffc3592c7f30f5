// The resource archive: a zip of icons and other small files compiled into
// the program as bytes and opened from memory once, at start-up, until
// shutdown.
#pragma once

#include "core/file_type.h"
#include "gui/image.h"

#include <glib.h>
#include <libxml/tree.h>

// Opens the archive from the built-in bytes. Opening it again while it is
// open succeeds and changes nothing.
gboolean ov_resources_open();
// Closes the archive; nothing happens when it is not open.
void ov_resources_clean_up();

// Reads an entry as an image of the given type. On failure appends "Could
// not load image resource." to the reader's reason.
OvImage *ov_resources_load_image(const char *entry_name, OvFileType type);
// Reads an entry as an XML document. On failure appends "Could not open XML
// resource." to the parser's reason.
xmlDoc *ov_resources_load_xml_doc(const char *entry_name);

// Reads an entry whole into a new buffer (null on failure, with the reason
// in the error buffer).
GBytes *ov_resources_read_entry(const char *entry_name);
