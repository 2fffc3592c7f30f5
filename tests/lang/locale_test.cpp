#include "lang/locale.h"
#include "lang/locale_list.h"
#include "lang/spell_dictionary.h"
#include "lang/system_locale.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "lang/lang_test_util.h"

namespace
{

using namespace ov::test;
using LocaleTable = ErrorCleared;
using SystemLocale = ErrorCleared;

std::string ui(const OvLocale *locale)
{
    return ov::gstr(ov_locale_format_ui_string(locale)).get();
}

TEST_F(LocaleTable, InvariantsAndSpotChecks)
{
    ASSERT_EQ(ov_locale_get_count(), 66u);
    std::set<std::string> tags, language_names;
    std::set<const OvLanguage *> languages;
    int english = 0, with_dictionary = 0;
    for (guint i = 0; i < 66; ++i) {
        const OvLocale *l = ov_locale_get_by_index(i);
        EXPECT_TRUE(tags.insert(l->tag).second) << l->tag;
        EXPECT_EQ(ov_locale_get_by_tag(l->tag), l);
        languages.insert(l->language);
        language_names.insert(l->language->name);
        english += g_str_has_prefix(l->tag, "en-");
        EXPECT_EQ(bool(ov_locale_is_some_english(l)), bool(g_str_has_prefix(l->tag, "en-"))) << l->tag;
        with_dictionary += ov_spellcheck_get_dict_name_for_locale_tag(l->tag) != nullptr;
    }
    // Locales of one language share one entry.
    EXPECT_EQ(languages.size(), language_names.size());
    EXPECT_EQ(languages.size(), 22u);
    EXPECT_EQ(english, 12);
    EXPECT_EQ(with_dictionary, 39);

    EXPECT_EQ(ui(ov_locale_get_by_index(6)), "Dutch (Netherlands)"); // tag "nl"
    EXPECT_EQ(ui(ov_locale_get_by_index(12)), "English (New Zeeland)");
    EXPECT_EQ(ui(ov_locale_get_by_index(36)), "Norwegian Bokm\xc3\xa5l");
    EXPECT_EQ(ui(ov_locale_get_undefined()), "Undefined language");
    EXPECT_EQ(ov_locale_get_uk_english(), locale("en-uk"));
    EXPECT_FALSE(ov_locale_is_uk_english(locale("en-us")));
    EXPECT_EQ(ov_locale_get_swedish_swedish(), ov_locale_get_by_index(65));
    EXPECT_EQ(ov_language_get_english(), locale("en-us")->language);
    const char *const dictionaries[][2] = {
        {"es-mx", "es_ES"}, {"fr-fr", "fr"}, {"fr-be", nullptr}, {"", nullptr}};
    for (const auto &[tag, dictionary] : dictionaries)
        EXPECT_STREQ(ov_spellcheck_get_dict_name_for_locale_tag(tag), dictionary) << tag;
    EXPECT_STREQ(ov_error_get(), "");
}

TEST_F(LocaleTable, LookupsByTagAndLegacyTag)
{
    // The empty tag is the undefined locale and no error.
    EXPECT_EQ(ov_locale_get_by_legacy_tag(""), ov_locale_get_undefined());
    const char *const legacy_tags[][2] = {
        {"de", "de-de"}, {"en", "en-uk"}, {"es", "es-es"},    {"fr", "fr-fr"},
        {"no", "nb"},    {"nn", "nn"},    {"en-us", "en-us"},
    };
    for (const auto &[legacy, tag] : legacy_tags)
        EXPECT_EQ(ov_locale_get_by_legacy_tag(legacy), locale(tag)) << legacy;
    EXPECT_STREQ(ov_error_get(), "");
    for (const char *bad : {"EN-UK", "en-gb", " sv", "DE", "xx"}) {
        EXPECT_EQ(ov_locale_get_by_legacy_tag(bad), nullptr) << bad;
        EXPECT_STREQ(ov_error_get(), "Unsupported locale tag.") << bad;
        ov_error_clear();
    }
    EXPECT_EQ(ov_locale_get_by_index(66), nullptr);
    EXPECT_STREQ(ov_error_get(), "Locale index out of bounds.");
}

TEST_F(LocaleTable, CompareByLanguageThenTerritoryWithTerritoryLessLast)
{
    struct {
        const char *a, *b;
        int sign;
    } cases[] = {
        {"sv-fi", "sv", -1}, {"nl-be", "nl", -1}, {"da", "de-at", -1},
        {"eu", "en-uk", -1}, {"pt", "pt-br", 1},  {"nb", "nb", 0},
    };
    for (const auto &[a, b, sign] : cases) {
        int result = ov_locale_compare_by_language_name_and_territory(locale(a), locale(b));
        EXPECT_EQ((result > 0) - (result < 0), sign) << a << " " << b;
    }
    // The table has no territory-less locale beside one with a territory.
    OvLocale bare{locale("sv")->language, nullptr, "sv-x"};
    EXPECT_EQ(ov_locale_compare_by_language_name_and_territory(&bare, locale("sv")), 1);
    EXPECT_EQ(ov_locale_compare_by_language_name_and_territory(locale("sv"), &bare), -1);
    EXPECT_EQ(ov_locale_compare_by_language_name_and_territory(&bare, &bare), 0);
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

    LocaleListPtr copy(ov_locale_list_clone(list.get()));
    ov_locale_list_clear(list.get());
    ov_locale_list_add_last(list.get(), locale("is"));
    ov_locale_list_add_from_list(list.get(), list.get()); // copies only what was there
    EXPECT_EQ(tags_of(list.get()), "is is");
    EXPECT_EQ(tags_of(copy.get()), "af da da en-au en-us sv-fi sv");
}

TEST_F(SystemLocale, NameTriesTheWholeNameThenTheLanguage)
{
    // A codeset suffix defeats the whole name ("en-us.utf-8"), so the
    // language alone decides; "no" is not rewritten here; "_SE" must not give
    // the undefined locale.
    const char *const unsupported = "Unsupported locale tag.";
    struct {
        const char *name, *result; // a tag, or the message when nothing maps
    } cases[] = {
        // clang-format off
        {"pt_BR", "pt-br"},       {"sv_SE.UTF-8", "sv"}, {"en_US", "en-us"},       {"en_US.UTF-8", "en-uk"},
        {"de_AT.UTF-8", "de-de"}, {"fr", "fr-fr"}, {"NB_no", "nb"},          {"no_NO", unsupported},
        {"C", unsupported},       {"", unsupported},
        {"_SE", unsupported},     {"sv\xe9", "Non-ascii byte found where not allowed."},
        // clang-format on
    };
    for (const auto &c : cases) {
        const OvLocale *mapped = ov_platform_map_system_locale_name(c.name);
        EXPECT_EQ(mapped != nullptr ? mapped->tag : ov_error_get(), std::string(c.result)) << c.name;
        ov_error_clear();
    }
}

TEST_F(SystemLocale, EnvironmentDecides)
{
    struct {
        const char *user_locale, *language, *lang; // null: unset
        const char *expected;                      // null: nothing maps
    } cases[] = {
        {"pt_BR", nullptr, "sv_SE.UTF-8", "pt-br"}, {"xx", nullptr, "sv_SE.UTF-8", "sv"},
        {"no_NO", nullptr, "da_DK.UTF-8", "da"},    {nullptr, nullptr, "en_US.UTF-8", "en-uk"},
        {nullptr, "xx:fi:sv", "C", "fi"},           {nullptr, "no", "C", nullptr},
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
