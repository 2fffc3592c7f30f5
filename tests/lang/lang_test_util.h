// Compact forms of multilingual strings for the lang tests: "sv=Hus da=Hus"
// (an empty tag before "=" is the undefined locale, texts have no spaces).
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>

#include "lang/langstr.h"
#include "lang/locale.h"

namespace ov::test
{

struct LangstrDeleter {
    void operator()(langstr *ls) const { ov_langstr_free(ls); }
};
using LangstrPtr = std::unique_ptr<langstr, LangstrDeleter>;

inline const OvLocale *locale(const char *tag)
{
    const OvLocale *found = ov_locale_get_by_tag(tag);
    EXPECT_NE(found, nullptr) << tag;
    return found;
}

// Appends translations in the given order, bypassing the set rules, so that
// any chain can be built.
inline langstr *make_langstr(const std::string &spec)
{
    langstr *first = nullptr;
    langstr **place = &first;
    std::istringstream words(spec);
    std::string word;
    while (words >> word) {
        std::size_t equal = word.find('=');
        std::string tag = word.substr(0, equal);
        *place = new langstr{locale(tag.c_str()), g_strdup(word.substr(equal + 1).c_str()), nullptr};
        place = &(*place)->next;
    }
    return first;
}

inline LangstrPtr langstr_of(const std::string &spec)
{
    return LangstrPtr(make_langstr(spec));
}

inline std::string describe(const langstr *ls)
{
    std::string text;
    for (; ls != nullptr; ls = ls->next) {
        if (!text.empty())
            text += ' ';
        text += std::string(ls->locale->tag) + "=" + ls->text;
    }
    return text;
}

} // namespace ov::test
