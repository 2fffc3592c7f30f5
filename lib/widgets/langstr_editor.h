// A column of translation entries, one per language, kept sorted by
// language and territory, with an "Add translation" button below.
// Signal: "shrunk" (single-line mode, after entries were removed).
#pragma once

#include <gtk/gtk.h>

#include "lang/langstr.h"
#include "lang/locale_list.h"
#include "widgets/langstr_mode.h"

G_BEGIN_DECLS
#define OV_TYPE_LANGSTR_EDITOR (ov_langstr_editor_get_type())
G_DECLARE_FINAL_TYPE(OvLangstrEditor, ov_langstr_editor, OV, LANGSTR_EDITOR, GtkBox)
G_END_DECLS

// mode is an OvLangstrMode. Translations of locked that are found
// among the entries cannot be edited or deleted; a defined locale cannot be
// changed either. primary_locales may be null.
GtkWidget *ov_langstr_editor_new(int mode, const langstr *value, const langstr *locked,
                                 const OvLocaleList *primary_locales, gboolean compact);
// Reads every non-empty entry in display order into a new multilingual
// string; FALSE with the reason in the error buffer (and *value untouched)
// when a language appears twice or the locked texts could not be matched.
gboolean ov_langstr_editor_get_value(OvLangstrEditor *editor, langstr **value);
gboolean ov_langstr_editor_has_locked_texts(OvLangstrEditor *editor);
// Removes every entry whose text is not locked.
void ov_langstr_editor_clear(OvLangstrEditor *editor);

// The translation entries in display order (free the list with g_list_free).
GList *ov_langstr_editor_get_entries(OvLangstrEditor *editor);
GtkWidget *ov_langstr_editor_get_add_button(OvLangstrEditor *editor);
// The locales offered by "Add translation" (borrowed).
const OvLocaleList *ov_langstr_editor_get_add_translation_locales(OvLangstrEditor *editor);
