// Translation statistics: how many multilingual texts there are and, per
// locale, how many of them have a translation for it. Records appear in
// order of first occurrence.
#pragma once

#include <glib.h>

#include "core/list.h"
#include "lang/langstr.h"
#include "lang/locale.h"
#include "lang/locale_list.h"

struct OvTranslationStatsLocale {
    const OvLocale *locale;
    gint32 count;
    OvTranslationStatsLocale *previous;
    OvTranslationStatsLocale *next;
};

struct OvTranslationStats {
    gint32 total;
    ov::SentinelList<OvTranslationStatsLocale> locales;
};

OvTranslationStats *ov_translation_stats_new();
OvTranslationStats *ov_translation_stats_clone(const OvTranslationStats *stats);
void ov_translation_stats_destroy(OvTranslationStats *stats);

OvTranslationStatsLocale *ov_translation_stats_locale_new(const OvLocale *locale, gint32 count);
OvTranslationStatsLocale *ov_translation_stats_locale_clone(const OvTranslationStatsLocale *record);
// Unlinks without freeing.
void ov_translation_stats_locale_remove(OvTranslationStatsLocale *record);
// Unlinks and frees; null is allowed.
void ov_translation_stats_locale_destroy(OvTranslationStatsLocale *record);
// Appends at the end.
void ov_translation_stats_add_locale(OvTranslationStats *stats, OvTranslationStatsLocale *record);
OvTranslationStatsLocale *ov_translation_stats_find_locale(const OvTranslationStats *stats,
                                                           const OvLocale *locale);

// Counts one multilingual text: a null one is not counted at all; each
// translation with a defined locale adds one to that locale's record.
void ov_translation_stats_add_langstr(OvTranslationStats *stats, const langstr *ls);

// round(count * 100 / total), half away from zero; 0 without a record, never
// 0 for a locale that occurs, 100 only when complete.
int ov_translation_stats_get_percentage(const OvTranslationStats *stats, const OvLocale *locale);
// "%s [%d%%]" with the locale's display string and its percentage.
gchar *ov_translation_stats_format_locale_ui_string(const OvTranslationStats *stats, const OvLocale *locale);
// A new list of the record locales in record order.
OvLocaleList *ov_translation_stats_get_locale_list(const OvTranslationStats *stats);
