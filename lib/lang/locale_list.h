// Ordered lists of locales. The list owns its links, never the locales.
// Iterate from head->next up to (not including) tail, or with range-for.
#pragma once

#include "core/list.h"
#include "lang/locale.h"

struct OvLocaleListLink {
    const OvLocale *locale;
    OvLocaleListLink *previous;
    OvLocaleListLink *next;
};

struct OvLocaleList : ov::SentinelList<OvLocaleListLink> {
};

OvLocaleList *ov_locale_list_new();
void ov_locale_list_destroy(OvLocaleList *list);
// Frees every link, keeps the empty list.
void ov_locale_list_clear(OvLocaleList *list);
gboolean ov_locale_list_is_empty(const OvLocaleList *list);

OvLocaleListLink *ov_locale_list_add_last(OvLocaleList *list, const OvLocale *locale);
// Inserts before the first link that compares greater, so equal locales keep
// insertion order. Duplicates are not refused.
OvLocaleListLink *ov_locale_list_add_sorted_by_language_name_and_territory(OvLocaleList *list,
                                                                           const OvLocale *locale);
void ov_locale_list_add_from_list(OvLocaleList *list, const OvLocaleList *other);
OvLocaleList *ov_locale_list_clone(const OvLocaleList *list);
// The first link holding that very locale, or null.
OvLocaleListLink *ov_locale_list_find(const OvLocaleList *list, const OvLocale *locale);

OvLocaleListLink *ov_locale_list_link_new(const OvLocale *locale);
// Unlinks without freeing; its own links are cleared.
void ov_locale_list_link_remove(OvLocaleListLink *link);
// Unlinks and frees; null is allowed.
void ov_locale_list_link_destroy(OvLocaleListLink *link);
