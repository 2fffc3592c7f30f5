// The fixed locale table: 66 locales plus the undefined one. A locale is a
// pointer to its table entry; two locales are equal exactly when the
// pointers are equal. Locales are never created, copied or freed.
#pragma once

#include <glib.h>

// One entry of the language-name table. All locales of one language share
// the same entry, so sameness of language is a pointer comparison.
struct OvLanguage {
    const char *name;
};

// One entry of the locale table. `territory` is null for locales without one.
struct OvLocale {
    const OvLanguage *language;
    const char *territory;
    const char *tag;
};

// Always 66; the undefined locale is not counted.
guint ov_locale_get_count();
// Null with "Locale index out of bounds." for an index above 65.
const OvLocale *ov_locale_get_by_index(guint index);
// Exact, case-sensitive. "" gives the undefined locale without an error;
// any other unknown tag gives null with "Unsupported locale tag.".
const OvLocale *ov_locale_get_by_tag(const char *tag);
// As ov_locale_get_by_tag after rewriting the tags of older files:
// "de", "en", "es", "fr", "no" become "de-de", "en-uk", "es-es", "fr-fr", "nb".
const OvLocale *ov_locale_get_by_legacy_tag(const char *tag);

const OvLocale *ov_locale_get_undefined();
gboolean ov_locale_is_undefined(const OvLocale *locale);
const OvLocale *ov_locale_get_uk_english();
gboolean ov_locale_is_uk_english(const OvLocale *locale);
const OvLocale *ov_locale_get_swedish_swedish();
// TRUE for any of the en-* locales.
gboolean ov_locale_is_some_english(const OvLocale *locale);

// The language entry English (the first of the language-name table).
const OvLanguage *ov_language_get_english();

// Language names byte-wise; within one language the locales with a territory
// come first (territories byte-wise) and the territory-less one last.
int ov_locale_compare_by_language_name_and_territory(const OvLocale *a, const OvLocale *b);

// "Danish" or "English (United Kingdom)"; the caller frees it.
gchar *ov_locale_format_ui_string(const OvLocale *locale);
