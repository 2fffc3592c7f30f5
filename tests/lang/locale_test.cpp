#include "lang/locale.h"
#include "lang/locale_list.h"
#include "lang/system_locale.h"

#include <gtest/gtest.h>

#include <string>

#include "lang/lang_test_util.h"

namespace
{

using namespace ov::test;
using LocaleTable = ErrorCleared;
using SystemLocale = ErrorCleared;

TEST_F(LocaleTable, LookupsByTagAndLegacyTag)
{
    // The empty tag is the undefined locale and no error.
    EXPECT_EQ(ov_locale_get_by_legacy_tag(""), ov_locale_get_undefined());
    const char *const legacy_tags[][2] = {{"en", "en-uk"}, {"no", "nb"}, {"en-us", "en-us"}};
    for (const auto &[legacy, tag] : legacy_tags)
        EXPECT_EQ(ov_locale_get_by_legacy_tag(legacy), locale(tag)) << legacy;
    EXPECT_STREQ(ov_error_get(), "");
    EXPECT_EQ(ov_locale_get_by_legacy_tag("EN-UK"), nullptr);
    EXPECT_STREQ(ov_error_get(), "Unsupported locale tag.");
    EXPECT_EQ(ov_locale_get_by_index(66), nullptr);
    EXPECT_STREQ(ov_error_get(), "Locale index out of bounds.");
}

TEST_F(LocaleTable, CompareByLanguageThenTerritoryWithTerritoryLessLast)
{
    struct {
        const char *a, *b;
        int sign;
    } cases[] = {
        {"sv-fi", "sv", -1},
        {"eu", "en-uk", -1},
        {"pt", "pt-br", 1},
        {"nb", "nb", 0},
    };
    for (const auto &[a, b, sign] : cases) {
        int result = ov_locale_compare_by_language_name_and_territory(locale(a), locale(b));
        EXPECT_EQ((result > 0) - (result < 0), sign) << a << " " << b;
    }
    // The table has no territory-less locale beside one with a territory.
    OvLocale bare{locale("sv")->language, nullptr, "sv-x"};
    EXPECT_EQ(ov_locale_compare_by_language_name_and_territory(&bare, locale("sv")), 1);
}

TEST(LocaleList, SortedInsertionAddFromAndClone)
{
    LocaleListPtr list(ov_locale_list_new());
    for (const char *tag : {"sv", "da", "en-us", "af", "en-au", "sv-fi"})
        ov_locale_list_add_sorted_by_language_name_and_territory(list.get(), locale(tag));
    EXPECT_EQ(tags_of(list.get()), "af da en-au en-us sv-fi sv");
    OvLocaleListLink *later =
        ov_locale_list_add_sorted_by_language_name_and_territory(list.get(), locale("da"));
    EXPECT_EQ(ov_locale_list_find(list.get(), locale("da"))->next, later); // equals keep insertion order

    ov_locale_list_add_from_list(list.get(), list.get()); // copies only what was there
    EXPECT_EQ(ov::list_count(*list), 14u);
}

TEST_F(SystemLocale, NameTriesTheWholeNameThenTheLanguage)
{
    // A codeset suffix defeats the whole name ("en-us.utf-8"), so the
    // language alone decides; "no" is not rewritten here; "_SE" must not give
    // the undefined locale.
    const char *const unsupported = "Unsupported locale tag.";
    const std::pair<const char *, const char *> cases[] = {
        // a tag, or the message when nothing maps
        // clang-format off
        {"pt_BR", "pt-br"}, {"en_US", "en-us"}, {"en_US.UTF-8", "en-uk"}, {"de_AT.UTF-8", "de-de"},
        {"NB_no", "nb"}, {"no_NO", unsupported}, {"_SE", unsupported}, {"sv\xe9", "Non-ascii byte found where not allowed."},
        // clang-format on
    };
    for (const auto &[name, result] : cases) {
        const OvLocale *mapped = ov_platform_map_system_locale_name(name);
        EXPECT_EQ(mapped != nullptr ? mapped->tag : ov_error_get(), std::string(result)) << name;
        ov_error_clear();
    }
}

TEST_F(SystemLocale, EnvironmentDecides)
{
    struct {
        const char *user_locale, *language, *lang; // null: unset
        const char *expected;                      // null: nothing maps
    } cases[] = {
        {"pt_BR", nullptr, "sv_SE.UTF-8", "pt-br"},
        {"xx", nullptr, "sv_SE.UTF-8", "sv"},
        {nullptr, "xx:fi:sv", "C", "fi"},
        {nullptr, nullptr, nullptr, nullptr},
    };
    for (const auto &c : cases) {
        // In a child, so that the environment need not be restored.
        int status = run_in_child([&] {
            for (const char *name : {"ORVANE_USER_LOCALE", "LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"})
                g_unsetenv(name);
            for (auto [name, value] :
                 {std::pair{"ORVANE_USER_LOCALE", c.user_locale}, {"LANGUAGE", c.language}, {"LANG", c.lang}})
                if (value != nullptr)
                    g_setenv(name, value, TRUE);
            const OvLocale *found = ov_platform_get_system_locale();
            return g_strcmp0(found != nullptr ? found->tag : nullptr, c.expected) == 0;
        });
        EXPECT_EQ(status, 0) << "case " << &c - cases;
    }
}

} // namespace
