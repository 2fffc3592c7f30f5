#include "lang/system_locale.h"

#include <string>
#include <string_view>

#include "core/error.h"
#include "core/strings.h"

namespace
{

struct ShortTag {
    std::string_view system;
    const char *tag;
};

// Plain language names of the system that stand for one locale here. "no"
// is deliberately not among them.
constexpr ShortTag short_tags[] = {
    {"en", "en-uk"},
    {"fr", "fr-fr"},
    {"de", "de-de"},
    {"es", "es-es"},
};

// An empty tag would name the undefined locale, which no user interface
// can start in.
const OvLocale *locale_for_system_tag(const std::string &tag)
{
    if (tag.empty()) {
        ov_error_set("Unsupported locale tag.");
        return nullptr;
    }
    for (const ShortTag &entry : short_tags)
        if (entry.system == tag)
            return ov_locale_get_by_tag(entry.tag);
    return ov_locale_get_by_tag(tag.c_str());
}

} // namespace

// Only the first "_" becomes "-" and nothing else is cut, so a codeset or
// modifier suffix makes the full attempt fail and the language alone
// decides: "en_US.UTF-8" gives "en" (UK English), "de_AT.UTF-8" gives
// "de-de". Failed attempts leave "Unsupported locale tag." behind.
const OvLocale *ov_platform_map_system_locale_name(const char *name)
{
    g_return_val_if_fail(name != nullptr, nullptr);
    if (ov_ascii_assert_in_latin1(name) == nullptr)
        return nullptr;
    std::string tag(name);
    for (char &c : tag)
        c = g_ascii_tolower(c);
    std::size_t underscore = tag.find('_');
    if (underscore == std::string::npos)
        return locale_for_system_tag(tag);
    tag[underscore] = '-';
    if (const OvLocale *locale = locale_for_system_tag(tag); locale != nullptr)
        return locale;
    tag.resize(underscore);
    return locale_for_system_tag(tag);
}

const OvLocale *ov_platform_get_system_locale()
{
    if (const char *user = g_getenv("ORVANE_USER_LOCALE"); user != nullptr)
        if (const OvLocale *locale = ov_platform_map_system_locale_name(user); locale != nullptr)
            return locale;
    for (const gchar *const *name = g_get_language_names(); *name != nullptr; ++name)
        if (const OvLocale *locale = ov_platform_map_system_locale_name(*name); locale != nullptr)
            return locale;
    return nullptr;
}
