#include "lang/locale.h"
#include "lang/locale_list.h"
#include "lang/spell_dictionary.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "core/error.h"
#include "core/raii.h"

namespace
{

struct ErrorCleared : ::testing::Test {
    void SetUp() override { ov_error_clear(); }
    void TearDown() override { ov_error_clear(); }
};

using LocaleTable = ErrorCleared;
using LocaleList = ErrorCleared;

std::string ui(const OvLocale *locale)
{
    return ov::gstr(ov_locale_format_ui_string(locale)).get();
}

TEST_F(LocaleTable, IndicesTagsAndTerritoriesAreFixed)
{
    ASSERT_EQ(ov_locale_get_count(), 66u);
    struct Case {
        guint index;
        const char *tag;
        const char *display;
    } cases[] = {
        {0, "af", "Afrikaans"},
        {5, "nl-be", "Dutch (Belgium)"},
        {6, "nl", "Dutch (Netherlands)"},
        {12, "en-nz", "English (New Zeeland)"},
        {16, "en-uk", "English (United Kingdom)"},
        {17, "en-us", "English (United States)"},
        {34, "it", "Italian (Italy)"},
        {36, "nb", "Norwegian Bokm\xc3\xa5l"},
        {39, "pt", "Portuguese (Portugal)"},
        {59, "es-es", "Spanish (Spain)"},
        {65, "sv", "Swedish (Sweden)"},
    };
    for (const Case &c : cases) {
        const OvLocale *locale = ov_locale_get_by_index(c.index);
        ASSERT_NE(locale, nullptr);
        EXPECT_STREQ(locale->tag, c.tag) << c.index;
        EXPECT_EQ(ui(locale), c.display) << c.index;
        EXPECT_EQ(ov_locale_get_by_tag(c.tag), locale);
    }
    EXPECT_STREQ(ov_error_get(), "");
}

TEST_F(LocaleTable, TagsAreUniqueAndLanguagesShared)
{
    std::set<std::string> tags;
    std::set<const OvLanguage *> languages;
    std::set<std::string> language_names;
    for (guint i = 0; i < ov_locale_get_count(); ++i) {
        const OvLocale *locale = ov_locale_get_by_index(i);
        EXPECT_TRUE(tags.insert(locale->tag).second) << locale->tag;
        languages.insert(locale->language);
        language_names.insert(locale->language->name);
        // Each tag leads back to its own entry.
        EXPECT_EQ(ov_locale_get_by_tag(locale->tag), locale);
    }
    // One entry per language: no two entries carry the same name.
    EXPECT_EQ(languages.size(), language_names.size());
    EXPECT_EQ(languages.size(), 22u);
    EXPECT_EQ(ov_locale_get_by_tag("sv")->language, ov_locale_get_by_tag("sv-fi")->language);
    EXPECT_NE(ov_locale_get_by_tag("nb")->language, ov_locale_get_by_tag("nn")->language);
}

TEST_F(LocaleTable, LookupFailuresAndTheUndefinedLocale)
{
    EXPECT_EQ(ov_locale_get_by_index(66), nullptr);
    EXPECT_STREQ(ov_error_get(), "Locale index out of bounds.");
    ov_error_clear();

    const OvLocale *undefined = ov_locale_get_by_tag("");
    EXPECT_EQ(undefined, ov_locale_get_undefined());
    EXPECT_TRUE(ov_locale_is_undefined(undefined));
    EXPECT_STREQ(undefined->tag, "");
    EXPECT_EQ(undefined->territory, nullptr);
    EXPECT_EQ(ui(undefined), "Undefined language");
    EXPECT_STREQ(ov_error_get(), "");
    for (guint i = 0; i < ov_locale_get_count(); ++i)
        EXPECT_NE(ov_locale_get_by_index(i), undefined);

    for (const char *bad : {"EN-UK", "en-gb", "no", "sv ", " sv", "xx", "en_uk", "de"}) {
        ov_error_clear();
        EXPECT_EQ(ov_locale_get_by_tag(bad), nullptr) << bad;
        EXPECT_STREQ(ov_error_get(), "Unsupported locale tag.") << bad;
    }
}

TEST_F(LocaleTable, LegacyTagsAreRewritten)
{
    struct Case {
        const char *legacy;
        const char *tag;
    } cases[] = {
        {"de", "de-de"}, {"en", "en-uk"}, {"es", "es-es"},    {"fr", "fr-fr"}, {"no", "nb"},
        {"nn", "nn"},    {"sv", "sv"},    {"en-us", "en-us"}, {"", ""},
    };
    for (const Case &c : cases) {
        const OvLocale *locale = ov_locale_get_by_legacy_tag(c.legacy);
        ASSERT_NE(locale, nullptr) << c.legacy;
        EXPECT_STREQ(locale->tag, c.tag);
    }
    EXPECT_EQ(ov_locale_get_by_legacy_tag("DE"), nullptr);
    EXPECT_STREQ(ov_error_get(), "Unsupported locale tag.");
}

TEST_F(LocaleTable, NamedLocalesAndEnglish)
{
    EXPECT_STREQ(ov_locale_get_uk_english()->tag, "en-uk");
    EXPECT_TRUE(ov_locale_is_uk_english(ov_locale_get_uk_english()));
    EXPECT_FALSE(ov_locale_is_uk_english(ov_locale_get_by_tag("en-us")));
    EXPECT_STREQ(ov_locale_get_swedish_swedish()->tag, "sv");

    int english = 0;
    for (guint i = 0; i < ov_locale_get_count(); ++i) {
        const OvLocale *locale = ov_locale_get_by_index(i);
        bool starts_en = std::strncmp(locale->tag, "en-", 3) == 0;
        EXPECT_EQ(bool(ov_locale_is_some_english(locale)), starts_en) << locale->tag;
        english += starts_en;
    }
    EXPECT_EQ(english, 12);
    EXPECT_FALSE(ov_locale_is_some_english(ov_locale_get_undefined()));
    EXPECT_STREQ(ov_language_get_english()->name, "English");
}

TEST_F(LocaleTable, CompareByLanguageThenTerritoryWithTerritoryLessLast)
{
    struct Case {
        const char *a;
        const char *b;
        int sign;
    } cases[] = {
        {"sv-fi", "sv", -1},                                      // Finland before Sweden
        {"nl-be", "nl", -1},                                      // Belgium before Netherlands
        {"da", "de-at", -1},                                      // by language name
        {"nb", "nb", 0},     {"sv", "sv", 0}, {"pt", "pt-br", 1}, // Portugal after Brazil
        {"eu", "en-uk", -1},                                      // Basque before English
    };
    for (const Case &c : cases) {
        int result = ov_locale_compare_by_language_name_and_territory(ov_locale_get_by_tag(c.a),
                                                                      ov_locale_get_by_tag(c.b));
        EXPECT_EQ((result > 0) - (result < 0), c.sign) << c.a << " " << c.b;
    }
    // Territory-less against one with a territory within one language: the
    // table has none, so build the pair from the same language entry.
    const OvLocale *sweden = ov_locale_get_by_tag("sv");
    OvLocale bare{sweden->language, nullptr, "sv-x"};
    EXPECT_EQ(ov_locale_compare_by_language_name_and_territory(&bare, sweden), 1);
    EXPECT_EQ(ov_locale_compare_by_language_name_and_territory(sweden, &bare), -1);
    EXPECT_EQ(ov_locale_compare_by_language_name_and_territory(&bare, &bare), 0);
}

TEST_F(LocaleTable, SpellCheckDictionaries)
{
    struct Case {
        const char *tag;
        const char *dictionary;
    } cases[] = {
        {"af", "af_ZA"},    {"en-uk", "en_GB"}, {"en-us", "en_US"}, {"es-mx", "es_ES"}, {"es-us", "es_ES"},
        {"fr-fr", "fr"},    {"sv-fi", "sv_FI"}, {"sw", "sw_TZ"},    {"fr-be", nullptr}, {"de-at", nullptr},
        {"en-nz", nullptr}, {"nl-be", nullptr}, {"", nullptr},      {"EN-UK", nullptr},
    };
    for (const Case &c : cases)
        EXPECT_STREQ(ov_spellcheck_get_dict_name_for_locale_tag(c.tag), c.dictionary) << c.tag;
    int with_dictionary = 0;
    for (guint i = 0; i < ov_locale_get_count(); ++i)
        with_dictionary +=
            ov_spellcheck_get_dict_name_for_locale_tag(ov_locale_get_by_index(i)->tag) != nullptr;
    EXPECT_EQ(with_dictionary, 39);
}

std::string tags_of(const OvLocaleList *list)
{
    std::string text;
    for (OvLocaleListLink *link : *list)
        text += (text.empty() ? "" : " ") + std::string(link->locale->tag);
    return text;
}

struct ListDeleter {
    void operator()(OvLocaleList *list) const { ov_locale_list_destroy(list); }
};
using ListPtr = std::unique_ptr<OvLocaleList, ListDeleter>;

ListPtr list_of(std::initializer_list<const char *> tags, bool sorted)
{
    ListPtr list(ov_locale_list_new());
    for (const char *tag : tags) {
        const OvLocale *locale = ov_locale_get_by_tag(tag);
        if (sorted)
            ov_locale_list_add_sorted_by_language_name_and_territory(list.get(), locale);
        else
            ov_locale_list_add_last(list.get(), locale);
    }
    return list;
}

TEST_F(LocaleList, SortedInsertion)
{
    EXPECT_EQ(tags_of(list_of({"sv", "sv-fi"}, true).get()), "sv-fi sv");
    EXPECT_EQ(tags_of(list_of({"nl", "nl-be"}, true).get()), "nl-be nl");
    EXPECT_EQ(tags_of(list_of({"sv", "da", "en-us", "af", "en-au", "sv-fi"}, true).get()),
              "af da en-au en-us sv-fi sv");
    EXPECT_EQ(tags_of(list_of({}, true).get()), "");
}

TEST_F(LocaleList, EqualEntriesKeepInsertionOrder)
{
    ListPtr list = list_of({"da", "sv"}, true);
    OvLocaleListLink *first_da = ov_locale_list_find(list.get(), ov_locale_get_by_tag("da"));
    OvLocaleListLink *second_da =
        ov_locale_list_add_sorted_by_language_name_and_territory(list.get(), ov_locale_get_by_tag("da"));
    EXPECT_EQ(tags_of(list.get()), "da da sv");
    EXPECT_EQ(first_da->next, second_da);
    EXPECT_EQ(ov_locale_list_find(list.get(), ov_locale_get_by_tag("da")), first_da);
}

TEST_F(LocaleList, AddFromCloneFindAndLinks)
{
    ListPtr list = list_of({"sv", "da"}, false);
    ListPtr other = list_of({"nb", "sv"}, false);
    ov_locale_list_add_from_list(list.get(), other.get());
    EXPECT_EQ(tags_of(list.get()), "sv da nb sv");
    ov_locale_list_add_from_list(list.get(), list.get());
    EXPECT_EQ(tags_of(list.get()), "sv da nb sv sv da nb sv");

    ListPtr copy(ov_locale_list_clone(other.get()));
    EXPECT_EQ(tags_of(copy.get()), "nb sv");
    EXPECT_EQ(ov_locale_list_find(copy.get(), ov_locale_get_by_tag("da")), nullptr);

    OvLocaleListLink *nb = ov_locale_list_find(copy.get(), ov_locale_get_by_tag("nb"));
    ov_locale_list_link_remove(nb);
    EXPECT_EQ(nb->previous, nullptr);
    EXPECT_EQ(nb->next, nullptr);
    EXPECT_EQ(tags_of(copy.get()), "sv");
    ov_locale_list_link_destroy(nb);
    ov_locale_list_link_destroy(nullptr);

    OvLocaleListLink *loose = ov_locale_list_link_new(ov_locale_get_by_tag("fi"));
    ov::list_append(*copy, loose);
    EXPECT_EQ(tags_of(copy.get()), "sv fi");
    ov_locale_list_link_destroy(ov_locale_list_find(copy.get(), ov_locale_get_by_tag("sv")));
    EXPECT_EQ(tags_of(copy.get()), "fi");

    EXPECT_FALSE(ov_locale_list_is_empty(list.get()));
    ov_locale_list_clear(list.get());
    EXPECT_TRUE(ov_locale_list_is_empty(list.get()));
    ov_locale_list_add_last(list.get(), ov_locale_get_by_tag("is"));
    EXPECT_EQ(tags_of(list.get()), "is");
    ov_locale_list_destroy(nullptr);
}

} // namespace
