#include "lang/langstr.h"
#include "lang/translation_stats.h"

#include <gtest/gtest.h>

#include <string>

#include "lang/active_locale.h"
#include "lang/lang_test_util.h"

namespace
{

using namespace ov::test;

TEST(Langstr, TextChoiceFallsBackInFourSteps)
{
    // 1: exact locale; 2: same language, smallest tag; 3: the same for UK
    // English; 4: smallest tag of all, where the undefined text ("") wins.
    struct {
        const char *translations, *shown_for, *expected;
    } cases[] = {
        // clang-format off
        {"en-us=Color en-uk=Colour", "en-au", "Colour"}, {"fr-ca=A fr-be=B fr-ch=C", "fr-fr", "B"},
        {"de-de=Haus en-us=Home", "fr-fr", "Home"}, {"sv=Hus da=Hus2", "fi", "Hus2"}, {"de-de=Y =X", "fr-fr", "X"},
        {"=X sv=Hus", "sv-fi", "Hus"}, {"", "sv", nullptr},
        // clang-format on
    };
    for (const auto &c : cases)
        EXPECT_STREQ(ov_langstr_get_text(langstr_of(c.translations).get(), locale(c.shown_for)), c.expected)
            << c.translations << " for " << c.shown_for;

    // No locale given: the active one, when there is one.
    const OvLocale *saved = ov_ovinternal_get_active_locale();
    LangstrPtr ls = langstr_of("en-us=Color en-uk=Colour =X sv=Hus");
    ov_ovinternal_set_active_locale(locale("sv-fi"));
    EXPECT_STREQ(ov_langstr_get_text(ls.get(), nullptr), "Hus");
    EXPECT_EQ(ov_langstr_get_text_for_locale(ls.get(), locale("sv-fi")), nullptr);
    ov_ovinternal_set_active_locale(nullptr);
    EXPECT_STREQ(ov_langstr_get_text(ls.get(), nullptr), "Colour");
    EXPECT_EQ(ov_langstr_get_text_for_locale_or_language(ls.get(), locale("de-de")), nullptr);
    ov_ovinternal_set_active_locale(saved);
}

TEST(Langstr, SetAndRemoveTranslation)
{
    struct {
        const char *before, *tag, *text; // null text: remove
        gboolean changed;
        const char *after;
    } cases[] = {
        // clang-format off
        {"sv=Hus", "sv", "Hus", FALSE, "sv=Hus"}, {"sv=Hus da=B", "sv", "Hem", TRUE, "sv=Hem da=B"},
        {"sv=A =Hus nb=C", "da", "Hus", TRUE, "sv=A da=Hus nb=C"}, // re-labelled in place
        {"da=Hus", "", "Hus", FALSE, "da=Hus"},                    // an undefined text any translation has
        {"=Hus da=B", "", "Hem", TRUE, "=Hus da=B =Hem"}, {"=A sv=Hus =B", "", nullptr, TRUE, "sv=Hus =B"},
        {"sv=Hus", "nb", nullptr, FALSE, "sv=Hus"},
        // clang-format on
    };
    for (const auto &c : cases) {
        LangstrPtr before = langstr_of(c.before);
        langstr *ls = ov_langstr_clone(before.get());
        EXPECT_EQ(c.text != nullptr ? ov_langstr_set_translation(&ls, locale(c.tag), c.text)
                                    : ov_langstr_remove_translation(&ls, locale(c.tag)),
                  c.changed)
            << c.before << " " << c.tag;
        EXPECT_EQ(describe(LangstrPtr(ls).get()), c.after);
        EXPECT_EQ(describe(before.get()), c.before); // the clone was deep
    }
}

// The builder ends where translation-by-translation setting ends, past the
// length where it starts to keep indexes: replaced texts, relabelled
// undefined texts and refused repeats included.
TEST(Langstr, BuilderGivesTheOutcomeOfSettingEachInTurn)
{
    const char *tags[] = {"", "", "", "sv", "da", "nb", "en-uk", "en-us", "de-de", "fi"};
    GRand *random = g_rand_new_with_seed(14);
    for (int round = 0; round < 150; ++round) {
        langstr *expected = nullptr;
        ov::LangstrBuilder built;
        const int steps = g_rand_int_range(random, 1, 60), texts = g_rand_int_range(random, 2, 40);
        for (int step = 0; step < steps; ++step) {
            const OvLocale *tag = locale(tags[g_rand_int_range(random, 0, G_N_ELEMENTS(tags))]);
            const std::string text = "t" + std::to_string(g_rand_int_range(random, 0, texts));
            ASSERT_EQ(built.set_translation(tag, text.c_str()),
                      ov_langstr_set_translation(&expected, tag, text.c_str()))
                << round << " " << step;
        }
        LangstrPtr result(built.release());
        EXPECT_EQ(describe(result.get()), describe(expected)) << round;
        ov_langstr_free(expected);
    }
    g_rand_free(random);
}

TEST(Langstr, IdenticalSubsetMergeableAndMerge)
{
    // An undefined translation matches its text in any locale and never conflicts.
    struct {
        const char *a, *b;
        bool identical, subset, mergeable;
        const char *merged; // a after merging b into it
    } cases[] = {
        // clang-format off
        {"", "sv=A", false, true, false, ""}, {"sv=A da=B", "da=B sv=A", false, true, true, "sv=A da=B"},
        {"sv=A", "da=A", false, false, false, "sv=A"},
        {"=A", "da=A", false, true, true, "da=A"},
        {"=A nb=X", "da=A sv=B", false, false, true, "da=A nb=X sv=B"},
        {"=A", "=B", false, false, false, "=A"},
        {"=A", "=A", true, true, true, "=A"},
        // clang-format on
    };
    for (const auto &c : cases) {
        langstr *a = langstr_of(c.a).release();
        LangstrPtr b = langstr_of(c.b);
        EXPECT_EQ(bool(ov_langstr_is_identical(a, b.get())), c.identical) << c.a << " / " << c.b;
        EXPECT_EQ(bool(ov_langstr_is_subset(a, b.get())), c.subset) << c.a << " / " << c.b;
        EXPECT_EQ(bool(ov_langstr_is_mergeable(a, b.get())), c.mergeable) << c.a << " / " << c.b;
        EXPECT_EQ(bool(ov_langstr_merge(&a, b.get())), std::string(c.a) != c.merged) << c.a << " / " << c.b;
        EXPECT_EQ(describe(LangstrPtr(a).get()), c.merged) << c.a << " / " << c.b;
    }
}

using StatsPtr = ov::Owned<OvTranslationStats, ov_translation_stats_destroy>;

// "total: tag=count ..." in record order.
std::string records(const OvTranslationStats *stats)
{
    std::string text = std::to_string(stats->total) + ":";
    for (const OvTranslationStatsLocale *record : stats->locales)
        text += " " + std::string(record->locale->tag) + "=" + std::to_string(record->count);
    return text;
}

TEST(TranslationStats, CountsInOrderOfFirstOccurrence)
{
    // The absent text is not counted; undefined translations count the text but no locale.
    StatsPtr stats(ov_translation_stats_new());
    for (const char *text : {"sv=A =U", "da=B sv=C", "", "=V", "nb=D sv=E da=F"})
        ov_translation_stats_add_langstr(stats.get(), langstr_of(text).get());
    EXPECT_EQ(records(stats.get()), "4: sv=3 da=2 nb=1");
    EXPECT_EQ(records(StatsPtr(ov_translation_stats_clone(stats.get())).get()), "4: sv=3 da=2 nb=1");
    EXPECT_EQ(tags_of(LocaleListPtr(ov_translation_stats_get_locale_list(stats.get())).get()), "sv da nb");
}

TEST(TranslationStats, PercentageRoundsHalfAwayFromZeroAndClamps)
{
    // Halves round up, not to even; no truncation; never 0% for a locale
    // that occurs; 99.5% and 99.95% are not complete.
    const int cases[][3] = {
        {5, 8, 63}, {2, 3, 67}, {1, 300, 1}, {1999, 2000, 99}, {200, 200, 100},
    };
    for (const auto &[count, total, percentage] : cases) {
        StatsPtr stats(ov_translation_stats_new());
        stats->total = total;
        ov_translation_stats_add_locale(stats.get(), ov_translation_stats_locale_new(locale("da"), count));
        EXPECT_EQ(ov_translation_stats_get_percentage(stats.get(), locale("da")), percentage)
            << count << "/" << total;
    }
}

} // namespace
