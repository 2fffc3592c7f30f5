// Remark codesets: a named, versioned list of remarks kept in the
// workspace's codesets folder.
#pragma once

#include <glib.h>

#include "docs/remark.h"
#include "lang/langstr.h"

struct OvCodeset {
    langstr *name;         // owned; required in a file
    langstr *author;       // owned, may be null
    char *version;         // Latin-1, owned, may be null
    OvRemarkList *remarks; // owned
    gboolean outdated;     // set by the report tools; carried along here
    OvCodeset *previous;
    OvCodeset *next;
};

// An empty codeset with an empty remark list.
OvCodeset *ov_codeset_new();
// Every field deep, remarks in order, the outdated flag too; unlinked.
OvCodeset *ov_codeset_clone(const OvCodeset *codeset);
// Unlinks only.
void ov_codeset_remove(OvCodeset *codeset);
// Unlinks and frees; null is a no-op.
void ov_codeset_destroy(OvCodeset *codeset);
int ov_codeset_get_index(const OvCodeset *codeset);
// "Name (Author) 1.2 (outdated?)" in UTF-8, as a new string.
char *ov_codeset_format_ui_string(const OvCodeset *codeset);
