#include "lang/translation_stats.h"

#include <cmath>

#include "core/raii.h"

OvTranslationStats *ov_translation_stats_new()
{
    auto *stats = new OvTranslationStats{};
    ov::list_init(stats->locales);
    return stats;
}

OvTranslationStats *ov_translation_stats_clone(const OvTranslationStats *stats)
{
    g_return_val_if_fail(stats != nullptr, nullptr);
    OvTranslationStats *copy = ov_translation_stats_new();
    copy->total = stats->total;
    ov::list_clone_into(copy->locales, stats->locales, ov_translation_stats_locale_clone);
    return copy;
}

void ov_translation_stats_destroy(OvTranslationStats *stats)
{
    if (stats == nullptr)
        return;
    ov::list_destroy(stats->locales, ov_translation_stats_locale_destroy);
    delete stats;
}

OvTranslationStatsLocale *ov_translation_stats_locale_new(const OvLocale *locale, gint32 count)
{
    return new OvTranslationStatsLocale{locale, count, nullptr, nullptr};
}

OvTranslationStatsLocale *ov_translation_stats_locale_clone(const OvTranslationStatsLocale *record)
{
    g_return_val_if_fail(record != nullptr, nullptr);
    return ov_translation_stats_locale_new(record->locale, record->count);
}

void ov_translation_stats_locale_remove(OvTranslationStatsLocale *record)
{
    g_return_if_fail(record != nullptr);
    ov::list_unlink(record);
}

void ov_translation_stats_locale_destroy(OvTranslationStatsLocale *record)
{
    if (record == nullptr)
        return;
    ov::list_unlink(record);
    delete record;
}

void ov_translation_stats_add_locale(OvTranslationStats *stats, OvTranslationStatsLocale *record)
{
    g_return_if_fail(stats != nullptr && record != nullptr);
    ov::list_append(stats->locales, record);
}

OvTranslationStatsLocale *ov_translation_stats_find_locale(const OvTranslationStats *stats,
                                                           const OvLocale *locale)
{
    g_return_val_if_fail(stats != nullptr, nullptr);
    for (OvTranslationStatsLocale *record : stats->locales)
        if (record->locale == locale)
            return record;
    return nullptr;
}

void ov_translation_stats_add_langstr(OvTranslationStats *stats, const langstr *ls)
{
    g_return_if_fail(stats != nullptr);
    if (ls == nullptr)
        return;
    ++stats->total;
    for (; ls != nullptr; ls = ls->next) {
        if (ov_locale_is_undefined(ls->locale))
            continue;
        if (OvTranslationStatsLocale *record = ov_translation_stats_find_locale(stats, ls->locale))
            ++record->count;
        else
            ov_translation_stats_add_locale(stats, ov_translation_stats_locale_new(ls->locale, 1));
    }
}

int ov_translation_stats_get_percentage(const OvTranslationStats *stats, const OvLocale *locale)
{
    g_return_val_if_fail(stats != nullptr, 0);
    const OvTranslationStatsLocale *record = ov_translation_stats_find_locale(stats, locale);
    if (record == nullptr || stats->total <= 0)
        return 0;
    // std::round rounds halves away from zero.
    int percentage = static_cast<int>(std::round(record->count * 100.0 / stats->total));
    // A locale that occurs never shows 0%; only a complete one shows 100%.
    if (percentage == 0)
        return 1;
    if (percentage == 100 && record->count != stats->total)
        return 99;
    return percentage;
}

gchar *ov_translation_stats_format_locale_ui_string(const OvTranslationStats *stats, const OvLocale *locale)
{
    g_return_val_if_fail(stats != nullptr && locale != nullptr, nullptr);
    ov::GStr name(ov_locale_format_ui_string(locale));
    return g_strdup_printf("%s [%d%%]", name.get(), ov_translation_stats_get_percentage(stats, locale));
}

OvLocaleList *ov_translation_stats_get_locale_list(const OvTranslationStats *stats)
{
    g_return_val_if_fail(stats != nullptr, nullptr);
    OvLocaleList *list = ov_locale_list_new();
    for (const OvTranslationStatsLocale *record : stats->locales)
        ov_locale_list_add_last(list, record->locale);
    return list;
}
