// The language menu: the given locales (with statistics labels when stats
// are given) and, when show_all is set, the whole locale table grouped by
// language, either in an "All languages" submenu or in the top menu.
#pragma once

#include "lang/locale_list.h"
#include "lang/translation_stats.h"

#include <gtk/gtk.h>

// Runs the menu under anchor (at the pointer when null) and returns the
// chosen locale, or null when the menu was dismissed.
const OvLocale *ov_locale_list_menu_run(const OvLocaleList *list, const OvTranslationStats *stats,
                                        gboolean show_all, const OvLocale *current, GtkWidget *anchor);

// Builds the menu without running it; the menu stores the chosen locale in
// *result when an item is activated. Used by ov_locale_list_menu_run.
GtkWidget *ov_locale_list_menu_build(const OvLocaleList *list, const OvTranslationStats *stats,
                                     gboolean show_all, const OvLocale *current, const OvLocale **result);
