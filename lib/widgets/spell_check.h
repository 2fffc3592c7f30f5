// Spell checking of translation entries with gspell: the language follows
// the locale of the entry, and inline checking is on exactly when a
// dictionary for that locale is installed.
#pragma once

#include <gspell/gspell.h>
#include <gtk/gtk.h>

#include "lang/locale.h"

// The gspell language of the locale's dictionary, or null when the locale
// has no dictionary name or no such dictionary is installed.
const GspellLanguage *ov_spell_check_get_language(const OvLocale *locale);

// gspell's basic set-up (for the text view without its language menu).
void ov_spell_check_set_up_entry(GtkEntry *entry);
void ov_spell_check_set_up_text_view(GtkTextView *view);

// Sets the language of the widget's checker from the locale and turns
// inline checking on exactly when the language exists; returns that.
gboolean ov_spell_check_apply_locale_to_entry(GtkEntry *entry, const OvLocale *locale);
gboolean ov_spell_check_apply_locale_to_text_view(GtkTextView *view, const OvLocale *locale);

// The checker attached to the widget, or null.
GspellChecker *ov_spell_check_get_entry_checker(GtkEntry *entry);
GspellChecker *ov_spell_check_get_text_view_checker(GtkTextView *view);
