#include "lang/system_locale.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <string>

#include "core/error.h"

namespace
{

constexpr std::array<const char *, 5> variables = {"ORVANE_USER_LOCALE", "LANGUAGE", "LC_ALL", "LC_MESSAGES",
                                                   "LANG"};

// Sets the environment the language names come from and restores it after.
// GLib caches the language names per value of these variables, so setting
// them is enough to make it compute the list anew.
struct SystemLocale : ::testing::Test {
    std::array<std::optional<std::string>, variables.size()> saved;

    void SetUp() override
    {
        for (std::size_t i = 0; i < variables.size(); ++i) {
            if (const char *value = g_getenv(variables[i]))
                saved[i] = value;
            g_unsetenv(variables[i]);
        }
        ov_error_clear();
    }
    void TearDown() override
    {
        for (std::size_t i = 0; i < variables.size(); ++i) {
            if (saved[i])
                g_setenv(variables[i], saved[i]->c_str(), TRUE);
            else
                g_unsetenv(variables[i]);
        }
        ov_error_clear();
    }

    // The tag of the system locale, or "none".
    static std::string system_tag()
    {
        const OvLocale *locale = ov_platform_get_system_locale();
        return locale != nullptr ? locale->tag : "none";
    }
};

TEST_F(SystemLocale, NamesMapThroughTheFirstUnderscoreOnly)
{
    struct Case {
        const char *name;
        const char *tag; // null: no locale
    } cases[] = {
        {"pt_BR", "pt-br"},       {"sv_SE", "sv"}, // "sv-se" is not a tag, the language decides
        {"sv_SE.UTF-8", "sv"},    {"sv_FI", "sv-fi"},
        {"en_US", "en-us"},       {"en_US.UTF-8", "en-uk"}, // the codeset suffix defeats "en-us"
        {"en_GB", "en-uk"},       {"de_AT", "de-at"},
        {"de_AT.UTF-8", "de-de"}, {"fr", "fr-fr"},
        {"es_ES@euro", "es-es"},  {"NB_no", "nb"},
        {"nb_NO", "nb"},          {"nn", "nn"},
        {"no_NO", nullptr}, // "no" is not rewritten here
        {"no", nullptr},          {"C", nullptr},
        {"POSIX", nullptr},       {"C.UTF-8", nullptr},
        {"xx", nullptr},          {"", nullptr},
        {"_SE", nullptr},         {"sv\xc3\xa9", nullptr},
    };
    for (const Case &c : cases) {
        const OvLocale *locale = ov_platform_map_system_locale_name(c.name);
        if (c.tag == nullptr) {
            EXPECT_EQ(locale, nullptr) << c.name;
        } else {
            ASSERT_NE(locale, nullptr) << c.name;
            EXPECT_STREQ(locale->tag, c.tag) << c.name;
        }
    }
    ov_error_clear();
    EXPECT_EQ(ov_platform_map_system_locale_name("sv\xe9"), nullptr);
    EXPECT_STREQ(ov_error_get(), "Non-ascii byte found where not allowed.");
    ov_error_clear();
    EXPECT_EQ(ov_platform_map_system_locale_name("no_NO"), nullptr);
    EXPECT_STREQ(ov_error_get(), "Unsupported locale tag.");
}

TEST_F(SystemLocale, EnvironmentDecides)
{
    struct Case {
        const char *user_locale; // ORVANE_USER_LOCALE, null: unset
        const char *language;    // LANGUAGE
        const char *lang;        // LANG
        const char *expected;
    } cases[] = {
        {"pt_BR", nullptr, "sv_SE.UTF-8", "pt-br"},
        {"xx", nullptr, "sv_SE.UTF-8", "sv"},
        {"de_AT.UTF-8", nullptr, "C", "de-de"},
        {"nb_NO", nullptr, nullptr, "nb"},
        {"no_NO", nullptr, "da_DK.UTF-8", "da"},
        {nullptr, nullptr, "en_US.UTF-8", "en-uk"},
        {nullptr, nullptr, "pt_BR", "pt-br"},
        {nullptr, "xx:fi:sv", "C", "fi"},
        {nullptr, "no", "C", "none"},
        {nullptr, nullptr, "C", "none"},
        {nullptr, nullptr, nullptr, "none"},
    };
    for (const Case &c : cases) {
        for (auto [name, value] : {std::pair{"ORVANE_USER_LOCALE", c.user_locale},
                                   std::pair{"LANGUAGE", c.language}, std::pair{"LANG", c.lang}}) {
            if (value != nullptr)
                g_setenv(name, value, TRUE);
            else
                g_unsetenv(name);
        }
        EXPECT_EQ(system_tag(), c.expected)
            << (c.user_locale ? c.user_locale : "-") << " " << (c.language ? c.language : "-") << " "
            << (c.lang ? c.lang : "-");
    }
}

TEST_F(SystemLocale, LcAllAndLcMessagesComeBeforeLang)
{
    g_setenv("LANG", "da_DK", TRUE);
    g_setenv("LC_MESSAGES", "fi_FI", TRUE);
    EXPECT_EQ(system_tag(), "fi");
    g_setenv("LC_ALL", "is_IS", TRUE);
    EXPECT_EQ(system_tag(), "is");
}

} // namespace
