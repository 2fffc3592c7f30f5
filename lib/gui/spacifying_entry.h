// A one-line entry that refuses, as the user types or pastes, every
// character Latin-1 cannot hold and every white-space character other than
// the plain space: white space becomes a space, the rest is dropped, and
// the display beeps. Texts go in and out in Latin-1.
#pragma once

#include <gtk/gtk.h>

G_BEGIN_DECLS

#define OV_TYPE_SPACIFYING_ENTRY (ov_spacifying_entry_get_type())
G_DECLARE_FINAL_TYPE(OvSpacifyingEntry, ov_spacifying_entry, OV, SPACIFYING_ENTRY, GtkEntry)

G_END_DECLS

// A compact entry turns each run of white space into one space.
GtkWidget *ov_spacifying_entry_new(gboolean compact);
void ov_spacifying_entry_set_text(OvSpacifyingEntry *entry, const char *latin1_text);
// A new Latin-1 string, stripped and spacified, or null.
char *ov_spacifying_entry_get_text(OvSpacifyingEntry *entry);

// The filter itself: whether text (length bytes, or up to its NUL when
// negative) must be fixed, and the fixed copy (null for invalid UTF-8).
// keep_line_feeds selects the text view's rules.
gboolean ov_spacifying_text_needs_fixing(const char *text, gssize length, gboolean keep_line_feeds);
char *ov_spacifying_text_fix(const char *text, gssize length, gboolean keep_line_feeds);
