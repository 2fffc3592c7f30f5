// One translation of a multilingual text being edited: a locale picker, a
// spell-checked text field and a delete button.
// Signals: "delete" (the delete button was clicked) and "locale-changed"
// (the user picked another locale).
#pragma once

#include <gtk/gtk.h>

#include "lang/locale.h"
#include "lang/locale_list.h"
#include "widgets/langstr_mode.h"

G_BEGIN_DECLS
#define OV_TYPE_TRANSLATION_ENTRY (ov_translation_entry_get_type())
G_DECLARE_FINAL_TYPE(OvTranslationEntry, ov_translation_entry, OV, TRANSLATION_ENTRY, GtkBox)
G_END_DECLS

// mode (an OvLangstrMode): a one-line entry 68 characters wide, or a text
// view in a scrolled window 400 pixels wide. primary_locales may be null.
GtkWidget *ov_translation_entry_new(int mode, const OvLocale *locale, const char *latin1_text,
                                    const OvLocaleList *primary_locales, gboolean compact);
// The picker's selection (the undefined locale when it has none).
const OvLocale *ov_translation_entry_get_locale(OvTranslationEntry *entry);
// A new Latin-1 string, or null when the field holds text that cannot be read.
char *ov_translation_entry_get_text(OvTranslationEntry *entry);
gboolean ov_translation_entry_is_text_locked(OvTranslationEntry *entry);
// The text can then be neither edited nor deleted.
void ov_translation_entry_lock_text(OvTranslationEntry *entry);
void ov_translation_entry_lock_locale(OvTranslationEntry *entry);
// Puts the keyboard focus into the text field without selecting its text.
void ov_translation_entry_focus_text(OvTranslationEntry *entry);

// The parts, for the editor and for tests.
GtkWidget *ov_translation_entry_get_picker(OvTranslationEntry *entry);
// The spacifying entry (single-line) or text view (multi-line).
GtkWidget *ov_translation_entry_get_text_widget(OvTranslationEntry *entry);
GtkWidget *ov_translation_entry_get_delete_button(OvTranslationEntry *entry);
