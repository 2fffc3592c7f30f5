#include "frame/settings.h"

#include "core/error.h"
#include "frame/frame_test_support.h"
#include "frame/workspace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <string>
#include <sys/resource.h>

#include <glib/gstdio.h>

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

// Every group with values other than the defaults, as saved; written with ' for ".
std::string all_set()
{
    std::string text =
        "<?xml version='1.0' encoding='UTF-8'?>\n<settings>\n  <archive path='/archive/å'/>\n"
        "  <automatically-place-id active='true'/>\n  <default-mark-id-style style='7'/>\n"
        "  <default-printout-settings>\n    <identifier setting='Inventory ID or Object ID'/>\n"
        "    <layout filename='mine.layout'/>\n    <paper name='Letter' orientation='Landscape'/>\n"
        "    <details show-on-text-page='false' show-on-view-pages='true'/>\n"
        "    <legend show-on-text-page='true' show-on-view-pages='false' "
        "text-page-codeset-filter-level='From "
        "no codeset' text-page-mark-filter-level='From this view only' view-page-codeset-filter-level='From "
        "all codesets' view-page-mark-filter-level='From no view'/>\n"
        "    <page-numbers show='false'/>\n    <report-type show='false'/>\n  </default-printout-settings>\n"
        "  <export>\n    <folder path='/export'/>\n  </export>\n  <last-used-layout filename='old.layout'/>\n"
        "  <last-used-paper id='A3_L'/>\n  <left-handed active='true'/>\n  <recent-custom-remarks>\n"
        "    <remark>\n      <code>R&amp;1</code>\n      <description lang='sv'>Ränder</description>\n"
        "    </remark>\n  </recent-custom-remarks>\n  <remember-tool-choice active='true'/>\n</settings>\n";
    std::replace(text.begin(), text.end(), '\'', '"');
    return text;
}

// Every group is read and written back as it was; loading or saving one
// group touches that group alone.
TEST(Settings, RoundTripAndLoadAndSaveByMask)
{
    with_settings([](const std::string &path) {
        EXPECT_TRUE(ov_settings_load(OV_SETTINGS_ALL)); // no file yet
        EXPECT_TRUE(ov_settings_save(OV_SETTINGS_ALL)) << ov_error_get();
        const std::string defaults = read_file(path);
        write_file(path, all_set());
        EXPECT_TRUE(ov_settings_load(OV_SETTINGS_ALL));
        g_unlink(path.c_str());
        EXPECT_TRUE(ov_settings_save(OV_SETTINGS_ALL));
        EXPECT_EQ(read_file(path), all_set());

        ov_settings_init();
        EXPECT_TRUE(ov_settings_load(OV_SETTINGS_LEFT_HANDED));
        EXPECT_STREQ(ov_settings_get_archive_path(), "");
        write_file(path, defaults);
        EXPECT_TRUE(ov_settings_save(OV_SETTINGS_LEFT_HANDED));
        std::string expected = defaults;
        expected.replace(expected.find("<left-handed active=\"false\"/>"), 29,
                         "<left-handed active=\"true\"/>");
        EXPECT_EQ(read_file(path), expected);
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

        for (const char *contents : {"<settings>", "<other/>"}) { // never replaced by a save
            write_file(path, contents);
            ov_error_clear();
            EXPECT_FALSE(ov_settings_load(OV_SETTINGS_ALL)) << contents;
            EXPECT_STRNE(ov_error_get(), "");
            EXPECT_FALSE(ov_settings_save(OV_SETTINGS_ALL)) << contents;
            EXPECT_EQ(read_file(path), contents);
        }
    });
}

TEST(Settings, FailedSaveKeepsTheOldFile)
{
    with_settings([](const std::string &path) {
        write_file(path, all_set());
        // Over 4 KB: the XML writer notices a failing write, not yet a short last one.
        for (const char *code : {"1", "2", "3", "4", "5"})
            record_remark(code, std::string(900, 'x').c_str());
        const struct rlimit limit = {512, 512};
        signal(SIGXFSZ, SIG_IGN), setrlimit(RLIMIT_FSIZE, &limit);
        EXPECT_FALSE(ov_settings_save(OV_SETTINGS_ALL));
        EXPECT_STRNE(ov_error_get(), "");
        EXPECT_EQ(read_file(path), all_set());
        GDir *folder = g_dir_open(ov_workspace_get_workspace_folder_path(), 0, nullptr);
        int files = 0;
        while (const char *name = g_dir_read_name(folder))
            files += g_str_has_prefix(name, "settings.xml"); // no temporary file left
        g_dir_close(folder);
        EXPECT_EQ(files, 1);
    });
}

} // namespace
