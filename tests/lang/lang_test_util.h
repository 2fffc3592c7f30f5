// Short forms for the lang tests: multilingual strings as "sv=Hus =X" (an
// empty tag is the undefined locale, texts have no spaces), lists as "sv da".
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "core/error.h"
#include "core/raii.h"
#include "lang/langstr.h"
#include "lang/locale_list.h"
#include "support/test_support.h"

namespace ov::test
{

using LangstrPtr = ov::Owned<langstr, ov_langstr_free>;
using LocaleListPtr = ov::Owned<OvLocaleList, ov_locale_list_destroy>;

inline const OvLocale *locale(const char *tag)
{
    const OvLocale *found = ov_locale_get_by_tag(tag);
    EXPECT_NE(found, nullptr) << tag;
    return found;
}

// Builds the chain as written, bypassing the set rules.
inline LangstrPtr langstr_of(const std::string &short_form)
{
    langstr *first = nullptr, **place = &first;
    std::istringstream words(short_form);
    for (std::string word; words >> word; place = &(*place)->next) {
        std::size_t equal = word.find('=');
        *place =
            new langstr{locale(word.substr(0, equal).c_str()), g_strdup(word.c_str() + equal + 1), nullptr};
    }
    return LangstrPtr(first);
}

inline std::string describe(const langstr *ls)
{
    std::string text;
    for (; ls != nullptr; ls = ls->next)
        text += (text.empty() ? "" : " ") + std::string(ls->locale->tag) + "=" + ls->text;
    return text;
}

inline std::string tags_of(const OvLocaleList *list)
{
    std::string text;
    for (const OvLocaleListLink *link : *list)
        text += (text.empty() ? "" : " ") + std::string(link->locale->tag);
    return text;
}

} // namespace ov::test
