#include "lang/translation_stats.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "core/raii.h"
#include "lang/lang_test_util.h"

namespace
{

using ov::test::langstr_of;
using ov::test::locale;

struct StatsDeleter {
    void operator()(OvTranslationStats *stats) const { ov_translation_stats_destroy(stats); }
};
using StatsPtr = std::unique_ptr<OvTranslationStats, StatsDeleter>;

StatsPtr stats_of(std::initializer_list<const char *> texts)
{
    StatsPtr stats(ov_translation_stats_new());
    for (const char *text : texts)
        ov_translation_stats_add_langstr(stats.get(), langstr_of(text).get());
    return stats;
}

std::string label(const OvTranslationStats *stats, const char *tag)
{
    return ov::gstr(ov_translation_stats_format_locale_ui_string(stats, locale(tag))).get();
}

std::string records(const OvTranslationStats *stats)
{
    std::string text = std::to_string(stats->total) + ":";
    for (const OvTranslationStatsLocale *record : stats->locales)
        text += " " + std::string(record->locale->tag) + "=" + std::to_string(record->count);
    return text;
}

TEST(TranslationStats, CountsInOrderOfFirstOccurrence)
{
    StatsPtr stats = stats_of({"sv=A =U", "da=B sv=C", "", "=V", "nb=D sv=E da=F"});
    // The absent text is not counted, the undefined ones are counted as texts
    // but give no locale a record.
    EXPECT_EQ(records(stats.get()), "4: sv=3 da=2 nb=1");

    ov::test::LangstrPtr none;
    ov_translation_stats_add_langstr(stats.get(), none.get());
    EXPECT_EQ(stats->total, 4);

    OvLocaleList *list = ov_translation_stats_get_locale_list(stats.get());
    std::string tags;
    for (OvLocaleListLink *link : *list)
        tags += std::string(link->locale->tag) + " ";
    EXPECT_EQ(tags, "sv da nb ");
    ov_locale_list_destroy(list);
}

TEST(TranslationStats, LabelsShowClampedPercentages)
{
    StatsPtr stats = stats_of({"sv=A da=B", "sv=C", "sv=D"});
    EXPECT_EQ(label(stats.get(), "sv"), "Swedish (Sweden) [100%]");
    EXPECT_EQ(label(stats.get(), "da"), "Danish [33%]");
    EXPECT_EQ(label(stats.get(), "fi"), "Finnish [0%]");
}

TEST(TranslationStats, PercentageRoundsHalfAwayFromZeroAndClamps)
{
    struct Case {
        gint32 count;
        gint32 total;
        int percentage;
    } cases[] = {
        {1, 300, 1},                      // 0.33 rounds to 0, shown as 1
        {1, 201, 1},                      // 0.497
        {1, 200, 1},                      // 0.5 rounds up
        {1, 8, 13},                       // 12.5
        {3, 8, 38},                       // 37.5
        {5, 8, 63},                       // 62.5
        {2, 3, 67},       {199, 200, 99}, // 99.5 would round to 100 but is incomplete
        {299, 300, 99},                   // 99.67
        {1999, 2000, 99}, {200, 200, 100}, {1, 1, 100},
    };
    for (const Case &c : cases) {
        StatsPtr stats(ov_translation_stats_new());
        stats->total = c.total;
        ov_translation_stats_add_locale(stats.get(), ov_translation_stats_locale_new(locale("da"), c.count));
        EXPECT_EQ(ov_translation_stats_get_percentage(stats.get(), locale("da")), c.percentage)
            << c.count << "/" << c.total;
        EXPECT_EQ(ov_translation_stats_get_percentage(stats.get(), locale("sv")), 0);
    }
}

TEST(TranslationStats, RecordsCloneFindAndRemove)
{
    StatsPtr stats = stats_of({"sv=A da=B", "sv=C nb=D"});
    StatsPtr copy(ov_translation_stats_clone(stats.get()));
    EXPECT_EQ(records(copy.get()), "2: sv=2 da=1 nb=1");

    OvTranslationStatsLocale *da = ov_translation_stats_find_locale(copy.get(), locale("da"));
    ASSERT_NE(da, nullptr);
    ov_translation_stats_locale_remove(da);
    EXPECT_EQ(da->previous, nullptr);
    EXPECT_EQ(records(copy.get()), "2: sv=2 nb=1");
    ov_translation_stats_add_locale(copy.get(), da);
    EXPECT_EQ(records(copy.get()), "2: sv=2 nb=1 da=1");
    ov_translation_stats_locale_destroy(ov_translation_stats_find_locale(copy.get(), locale("sv")));
    EXPECT_EQ(ov_translation_stats_find_locale(copy.get(), locale("sv")), nullptr);
    EXPECT_EQ(records(copy.get()), "2: nb=1 da=1");

    OvTranslationStatsLocale *loose = ov_translation_stats_locale_clone(da);
    EXPECT_EQ(loose->count, 1);
    EXPECT_EQ(loose->next, nullptr);
    ov_translation_stats_locale_destroy(loose);
    ov_translation_stats_locale_destroy(nullptr);
    ov_translation_stats_destroy(nullptr);

    // The original is untouched.
    EXPECT_EQ(records(stats.get()), "2: sv=2 da=1 nb=1");
}

} // namespace
