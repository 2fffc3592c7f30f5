// A toggle button showing the selected locale with a down arrow; pressing it
// opens the language menu with the primary locales at the top.
// Signal "picked" (const OvLocale *locale).
#pragma once

#include "lang/locale.h"
#include "lang/translation_stats.h"

#include <gtk/gtk.h>

G_BEGIN_DECLS

#define OV_TYPE_LOCALE_PICKER (ov_locale_picker_get_type())
G_DECLARE_DERIVABLE_TYPE(OvLocalePicker, ov_locale_picker, OV, LOCALE_PICKER, GtkToggleButton)

struct _OvLocalePickerClass {
    GtkToggleButtonClass parent_class;
};

G_END_DECLS

GtkWidget *ov_locale_picker_new();
// Sorted by language name and territory; a locale already there is ignored.
void ov_locale_picker_insert_primary_locale(OvLocalePicker *picker, const OvLocale *locale);
void ov_locale_picker_clear_primary_locales(OvLocalePicker *picker);
void ov_locale_picker_set_all_languages_enabled(OvLocalePicker *picker, gboolean enabled);
// Keeps a clone (null clears) and relabels the selection.
void ov_locale_picker_set_translation_stats(OvLocalePicker *picker, const OvTranslationStats *stats);
const OvLocale *ov_locale_picker_get_selected(OvLocalePicker *picker);
void ov_locale_picker_select(OvLocalePicker *picker, const OvLocale *locale, gboolean emit);
// The system locale first on a tie, then UK English, then any English.
void ov_locale_picker_select_locale_with_best_stats(OvLocalePicker *picker, gboolean emit);
// The label's current text (for tests and accessibility).
const char *ov_locale_picker_get_label_text(OvLocalePicker *picker);
