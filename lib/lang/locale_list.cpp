#include "lang/locale_list.h"

namespace
{

void destroy_link(OvLocaleListLink *link)
{
    delete link;
}

} // namespace

OvLocaleList *ov_locale_list_new()
{
    auto *list = new OvLocaleList{};
    ov::list_init(*list);
    return list;
}

void ov_locale_list_destroy(OvLocaleList *list)
{
    if (list == nullptr)
        return;
    ov::list_destroy(*list, destroy_link);
    delete list;
}

void ov_locale_list_clear(OvLocaleList *list)
{
    g_return_if_fail(list != nullptr);
    while (!list->is_empty())
        ov_locale_list_link_destroy(list->head->next);
}

gboolean ov_locale_list_is_empty(const OvLocaleList *list)
{
    g_return_val_if_fail(list != nullptr, TRUE);
    return list->is_empty();
}

OvLocaleListLink *ov_locale_list_add_last(OvLocaleList *list, const OvLocale *locale)
{
    g_return_val_if_fail(list != nullptr, nullptr);
    OvLocaleListLink *link = ov_locale_list_link_new(locale);
    ov::list_append(*list, link);
    return link;
}

OvLocaleListLink *ov_locale_list_add_sorted_by_language_name_and_territory(OvLocaleList *list,
                                                                           const OvLocale *locale)
{
    g_return_val_if_fail(list != nullptr && locale != nullptr, nullptr);
    OvLocaleListLink *before = list->head->next;
    while (before != list->tail &&
           ov_locale_compare_by_language_name_and_territory(before->locale, locale) <= 0)
        before = before->next;
    OvLocaleListLink *link = ov_locale_list_link_new(locale);
    ov::list_insert_before(link, before);
    return link;
}

void ov_locale_list_add_from_list(OvLocaleList *list, const OvLocaleList *other)
{
    g_return_if_fail(list != nullptr && other != nullptr);
    // Appending a list to itself stops at the original end.
    OvLocaleListLink *end = other->tail->previous;
    if (end == other->head)
        return;
    for (OvLocaleListLink *link = other->head->next;; link = link->next) {
        ov_locale_list_add_last(list, link->locale);
        if (link == end)
            break;
    }
}

OvLocaleList *ov_locale_list_clone(const OvLocaleList *list)
{
    g_return_val_if_fail(list != nullptr, nullptr);
    OvLocaleList *copy = ov_locale_list_new();
    ov_locale_list_add_from_list(copy, list);
    return copy;
}

OvLocaleListLink *ov_locale_list_find(const OvLocaleList *list, const OvLocale *locale)
{
    g_return_val_if_fail(list != nullptr, nullptr);
    for (OvLocaleListLink *link : *list)
        if (link->locale == locale)
            return link;
    return nullptr;
}

OvLocaleListLink *ov_locale_list_link_new(const OvLocale *locale)
{
    return new OvLocaleListLink{locale, nullptr, nullptr};
}

void ov_locale_list_link_remove(OvLocaleListLink *link)
{
    g_return_if_fail(link != nullptr);
    ov::list_unlink(link);
}

void ov_locale_list_link_destroy(OvLocaleListLink *link)
{
    if (link == nullptr)
        return;
    ov::list_unlink(link);
    delete link;
}
