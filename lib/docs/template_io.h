// The template file ("*.template"): an ISO-8859-1 XML file with the root
// "template". The reader also accepts the older element names ("condition",
// "details-group", "details-item", "condition-group", "condition-item" and
// their headers, "details-item-text"); the writer always uses the current
// ones. The basic data is read and written in details mode (text field
// contents and the "selected" attribute of checkboxes count), report types in
// condition mode (they carry only the layout of their fields).
#pragma once

#include "docs/template.h"

#include <glib.h>

// The template, or null with the reason in the error buffer.
ov_template *ov_template_io_read_from_file(const char *path);

// Writes through a temporary file that replaces path only when every write
// succeeded, so a failed save keeps the old file.
gboolean ov_template_io_write_to_file(const ov_template *tmpl, const char *path);

// "name (author) version" in UTF-8, or null when the file cannot be read.
// Reads only the heading: up to the first element after the name that is
// not the author or version.
gchar *ov_template_io_format_ui_string(const char *path);

// Every "*.template" file of the folder (the extension compared ASCII
// case-insensitively) with its one-line description, in the folder's listing
// order. Never null; empty when the folder cannot be opened. Unreadable files
// are left out. The workspace's list is ov_template_list_load
// (frame/template_list.h).
ov_template_list *ov_template_list_load_from_folder(const char *folder_path);
