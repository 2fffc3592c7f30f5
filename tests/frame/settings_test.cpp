#include "frame/settings.h"

#include "core/error.h"
#include "frame/frame_test_support.h"
#include "frame/workspace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <string>
#include <sys/resource.h>
#include <tuple>

namespace
{

using namespace ov::test;

// Runs body with initialised settings in an open workspace; path is the settings file.
void with_settings(const std::function<void(const std::string &path)> &body)
{
    run_with_home([&](const TempDir &dir) {
        make_folder(dir.file("home/Orvane Workspace"));
        ASSERT_TRUE(ov_workspace_open() && ov_settings_init()) << ov_error_get();
        const std::string path = dir.file("home/Orvane Workspace/settings.xml");
        body(path);
        ov_settings_clean_up();
        ov_workspace_close();
    });
}

void record_remark(const char *code, const char *text)
{
    langstr *description = nullptr;
    ov_langstr_set_translation(&description, ov_locale_get_by_tag("en-uk"), text);
    ov_settings_set_most_recent_custom_remark(code, description);
    ov_langstr_free(description);
}

std::string recent_remarks()
{
    std::string text;
    for (const OvRemark *remark : *ov_settings_get_recent_custom_remarks())
        text += (text.empty() ? "" : " ") + std::string(remark->code) + ":" +
                ov_langstr_get_text(remark->description, nullptr);
    return text;
}

// Each group as saved with values other than the defaults, and with the
// defaults; written with ' for ".
struct Group {
    guint mask;
    const char *set, *unset;
};
constexpr Group groups[] = {
    {OV_SETTINGS_ARCHIVE, "<archive path='/archive/å'/>", "<archive path=''/>"},
    {OV_SETTINGS_AUTOMATICALLY_PLACE_ID, "<automatically-place-id active='true'/>",
     "<automatically-place-id active='false'/>"},
    {OV_SETTINGS_DEFAULT_MARK_ID_STYLE, "<default-mark-id-style style='7'/>",
     "<default-mark-id-style style='0'/>"},
    {OV_SETTINGS_DEFAULT_PRINTOUT_SETTINGS,
     "<default-printout-settings>\n    <identifier setting='Inventory ID or Object ID'/>\n"
     "    <layout filename='mine.layout'/>\n    <paper name='Letter' orientation='Landscape'/>\n"
     "    <details show-on-text-page='false' show-on-view-pages='true'/>\n"
     "    <legend show-on-text-page='true' show-on-view-pages='false' text-page-codeset-filter-level='From "
     "no codeset' text-page-mark-filter-level='From this view only' view-page-codeset-filter-level='From "
     "all codesets' view-page-mark-filter-level='From no view'/>\n"
     "    <page-numbers show='false'/>\n    <report-type show='false'/>\n  </default-printout-settings>",
     "<default-printout-settings>\n    <identifier setting='Object ID'/>\n"
     "    <paper name='A4' orientation='Portrait'/>\n"
     "    <details show-on-text-page='true' show-on-view-pages='false'/>\n"
     "    <legend show-on-text-page='false' show-on-view-pages='true' text-page-codeset-filter-level='From "
     "primary codeset only' text-page-mark-filter-level='From all views' view-page-codeset-filter-level="
     "'From primary codeset only' view-page-mark-filter-level='From all views'/>\n"
     "    <page-numbers show='true'/>\n    <report-type show='true'/>\n  </default-printout-settings>"},
    {OV_SETTINGS_EXPORT, "<export>\n    <folder path='/export'/>\n  </export>",
     "<export>\n    <folder path=''/>\n  </export>"},
    {OV_SETTINGS_LAST_USED_LAYOUT, "<last-used-layout filename='old.layout'/>",
     "<last-used-layout filename=''/>"},
    {OV_SETTINGS_LAST_USED_PAPER, "<last-used-paper id='A3_L'/>", "<last-used-paper id='A4_P'/>"},
    {OV_SETTINGS_LEFT_HANDED, "<left-handed active='true'/>", "<left-handed active='false'/>"},
    {OV_SETTINGS_RECENT_CUSTOM_REMARKS,
     "<recent-custom-remarks>\n    <remark>\n      <code>R&amp;1</code>\n"
     "      <description lang='sv'>Ränder</description>\n    </remark>\n  </recent-custom-remarks>",
     "<recent-custom-remarks/>"},
    {OV_SETTINGS_REMEMBER_TOOL_CHOICE, "<remember-tool-choice active='true'/>",
     "<remember-tool-choice active='false'/>"},
};

// A settings file with the groups of mask set and the others at their defaults.
std::string settings_file(guint mask)
{
    std::string text = "<?xml version='1.0' encoding='UTF-8'?>\n<settings>\n";
    for (const Group &group : groups)
        text = text + "  " + ((mask & group.mask) != 0 ? group.set : group.unset) + "\n";
    std::replace(text.begin(), text.end(), '\'', '"');
    return text + "</settings>\n";
}

// Loading one group takes that group alone, and saving one group rewrites
// that element alone.
TEST(Settings, DefaultsAndLoadAndSaveByMask)
{
    EXPECT_STREQ(ov_settings_get_paper_name(ov_settings_get_default_paper_index()), "A4");
    EXPECT_EQ(ov_settings_find_paper_index("a4"), -1);
    EXPECT_EQ(ov_settings_get_paper_name(ov_settings_get_paper_count()), nullptr);
    with_settings([](const std::string &path) {
        EXPECT_TRUE(ov_settings_load(OV_SETTINGS_ALL)); // no file yet
        EXPECT_TRUE(ov_settings_save(OV_SETTINGS_ALL)) << ov_error_get();
        EXPECT_EQ(read_file(path), settings_file(0));
        for (const Group &group : groups) {
            ov_settings_init();
            write_file(path, settings_file(OV_SETTINGS_ALL));
            EXPECT_TRUE(ov_settings_load(group.mask));
            write_file(path, settings_file(0));
            EXPECT_TRUE(ov_settings_save(group.mask));
            EXPECT_EQ(read_file(path), settings_file(group.mask));
            EXPECT_TRUE(ov_settings_save(OV_SETTINGS_ALL)); // the other groups were not loaded
            EXPECT_EQ(read_file(path), settings_file(group.mask));
        }
    });
}

TEST(Settings, SavingKeepsOtherElementsAndDropsBlankText)
{
    with_settings([](const std::string &path) {
        write_file(path, "<?xml version='1.0'?>\n<settings>\n\n\t<other-program  x='1'>\n\t\t<keep>text  "
                         "</keep>\n\t</other-program>\n<!-- note -->\n\t<left-handed active='false' "
                         "extra='kept'/>\n\t<left-handed active='false'/>\n</settings>\n");
        ov_settings_set_left_handed(TRUE);
        EXPECT_TRUE(ov_settings_save(OV_SETTINGS_LEFT_HANDED)) << ov_error_get();
        EXPECT_EQ(read_file(path), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<settings>\n  <other-program "
                                   "x=\"1\">\n    <keep>text  </keep>\n  </other-program>\n  <!-- note -->\n"
                                   "  <left-handed active=\"true\" extra=\"kept\"/>\n</settings>\n");
    });
}

TEST(Settings, LoadSkipsWhatItCannotReadAndRefusesBrokenFiles)
{
    with_settings([](const std::string &path) {
        write_file(path, "<settings><archive/><left-handed active='True'/><default-mark-id-style style='x'/>"
                         "<unknown/><default-printout-settings><identifier setting='none'/><paper name='B5' "
                         "orientation='Landscape'/><legend text-page-mark-filter-level='From this view only'/"
                         "></default-printout-settings></settings>");
        ov_settings_set_left_handed(TRUE);
        EXPECT_TRUE(ov_settings_load(OV_SETTINGS_ALL)) << ov_error_get();
        EXPECT_FALSE(ov_settings_get_left_handed());                                  // "True" is not "true"
        EXPECT_EQ(ov_settings_get_default_printout_settings_identifier_setting(), 1); // "none" is unknown
        EXPECT_EQ(ov_settings_get_default_printout_settings_paper_orientation(), 1);  // "B5" unknown
        EXPECT_EQ(ov_settings_get_default_printout_settings_text_page_legend_mark_filter_level(), 2);

        // A paper id that is not ASCII and a remark without a description fail the load, not the rest.
        write_file(path, "<settings><last-used-paper id='A4_\xc3\xa5'/><recent-custom-remarks><remark><code>"
                         "A</code><description lang='sv'>a</description></remark><remark><code>B</code>"
                         "</remark><remark><code>C</code><description lang='sv'>c</description></remark>"
                         "</recent-custom-remarks><left-handed active='true'/></settings>");
        record_remark("OLD", "old");
        EXPECT_FALSE(ov_settings_load(OV_SETTINGS_ALL));
        EXPECT_TRUE(ov_settings_get_left_handed());
        EXPECT_STREQ(ov_settings_get_last_used_legacy_paper_id(), "A4_P");
        EXPECT_EQ(recent_remarks(), "A:a C:c");

        for (const char *contents : {"<settings>", "<other/>", ""}) { // never replaced by a save
            write_file(path, contents);
            ov_error_clear();
            EXPECT_FALSE(ov_settings_load(OV_SETTINGS_ALL)) << contents;
            EXPECT_STRNE(ov_error_get(), "");
            EXPECT_FALSE(ov_settings_save(OV_SETTINGS_ALL)) << contents;
            EXPECT_EQ(read_file(path), contents);
        }
    });
}

TEST(Settings, RecentCustomRemarksKeepTheNewestFive)
{
    with_settings([](const std::string &) {
        const std::tuple<const char *, const char *, const char *> steps[] = {
            {"123456", "x", "6:x 5:x 4:x 3:x 2:x"},
            {"4", "x", "4:x 6:x 5:x 3:x 2:x"},
            {"2", "x", "2:x 4:x 6:x 5:x 3:x"},
            {"2", "y", "2:y 2:x 4:x 6:x 5:x"}}; // y: another entry
        for (const auto &[codes, text, expected] : steps) {
            for (const char *code = codes; *code != '\0'; code++)
                record_remark(std::string(1, *code).c_str(), text);
            EXPECT_EQ(recent_remarks(), expected) << codes;
        }
    });
}

TEST(Settings, FailedSaveKeepsTheOldFile)
{
    with_settings([](const std::string &path) {
        write_file(path, settings_file(OV_SETTINGS_ALL));
        // Over 4 KB: the XML writer notices a failing write, not yet a short last one.
        for (const char *code : {"1", "2", "3", "4", "5"})
            record_remark(code, std::string(900, 'x').c_str());
        const struct rlimit limit = {512, 512};
        signal(SIGXFSZ, SIG_IGN), setrlimit(RLIMIT_FSIZE, &limit);
        EXPECT_FALSE(ov_settings_save(OV_SETTINGS_ALL));
        EXPECT_STRNE(ov_error_get(), "");
        EXPECT_EQ(read_file(path), settings_file(OV_SETTINGS_ALL));
        GDir *folder = g_dir_open(ov_workspace_get_workspace_folder_path(), 0, nullptr);
        int files = 0;
        while (const char *name = g_dir_read_name(folder))
            files += g_str_has_prefix(name, "settings.xml"); // no temporary file left
        g_dir_close(folder);
        EXPECT_EQ(files, 1);
    });
}

} // namespace
