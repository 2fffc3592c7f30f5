// A button that looks like an entry and shows a multilingual text in the
// active locale with its status icon; clicking it opens the langstr window.
// Signal: "changed" (the user confirmed a new value in the window).
#pragma once

#include <gtk/gtk.h>

#include "lang/langstr.h"
#include "lang/locale_list.h"

G_BEGIN_DECLS
#define OV_TYPE_LANGSTR_ENTRY (ov_langstr_entry_get_type())
G_DECLARE_FINAL_TYPE(OvLangstrEntry, ov_langstr_entry, OV, LANGSTR_ENTRY, GtkButton)
G_END_DECLS

GtkWidget *ov_langstr_entry_new();
// Stores clones of both.
void ov_langstr_entry_set_value(OvLangstrEntry *entry, const langstr *value, const langstr *locked);
// A clone of the value.
langstr *ov_langstr_entry_get_value(OvLangstrEntry *entry);
// Languages offered in the window besides the active one (cloned; null clears).
void ov_langstr_entry_set_additional_locales(OvLangstrEntry *entry, const OvLocaleList *list);
// The label and status icon inside, for tests.
GtkWidget *ov_langstr_entry_get_label(OvLangstrEntry *entry);
GtkWidget *ov_langstr_entry_get_status_icon(OvLangstrEntry *entry);
