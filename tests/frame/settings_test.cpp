#include "frame/settings.h"

#include "core/error.h"
#include "core/raii.h"
#include "frame/frame_test_support.h"
#include "frame/workspace.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <glib/gstdio.h>

#include <csignal>
#include <string>
#include <sys/resource.h>

namespace {

// The child process ran its body to the end without a failed expectation.
void expect_success(int status) { EXPECT_EQ(status, 0); }

using ov::test::read_file;
using ov::test::TempDir;
using ov::test::write_file;

// Runs body with an open workspace in a temporary home and initialised
// settings; path is the settings file.
int with_settings(const std::function<bool(const std::string &path)> &body)
{
    TempDir dir;
    return ov::test::run_with_home(dir, [&] {
        g_mkdir(dir.file("home/Orvane Workspace").c_str(), 0700);
        if (!ov_workspace_open() || !ov_settings_init())
            return false;
        const std::string path = dir.file("home/Orvane Workspace/settings.xml");
        EXPECT_EQ(std::string(ov_settings_get_settings_file_path()), path);
        bool ok = body(path);
        ov_settings_clean_up();
        ov_workspace_close();
        return ok;
    });
}

langstr *make_langstr(const char *tag, const char *text)
{
    langstr *ls = nullptr;
    ov_langstr_set_translation(&ls, ov_locale_get_by_tag(tag), text);
    return ls;
}

std::string recent_codes()
{
    std::string text;
    for (const OvRemark *remark : *ov_settings_get_recent_custom_remarks())
        text += (text.empty() ? "" : " ") + std::string(remark->code) + ":" +
                ov_langstr_get_text(remark->description, nullptr);
    return text;
}

// Every field, as text, for comparing whole records.
std::string all_fields()
{
    auto b = [](gboolean value) { return value ? "1" : "0"; };
    const char *layout = ov_settings_get_default_printout_settings_layout_file_name();
    return std::string(ov_settings_get_archive_path()) + "|" + b(ov_settings_get_automatically_place_id()) + "|" +
           std::to_string(ov_settings_get_default_mark_id_style()) + "|" +
           std::to_string(ov_settings_get_default_printout_settings_identifier_setting()) + "|" +
           (layout != nullptr ? layout : "(none)") + "|" +
           std::to_string(ov_settings_get_default_printout_settings_paper_index()) + "|" +
           std::to_string(ov_settings_get_default_printout_settings_paper_orientation()) + "|" +
           b(ov_settings_get_default_printout_settings_details_on_text_page()) +
           b(ov_settings_get_default_printout_settings_details_on_view_pages()) +
           b(ov_settings_get_default_printout_settings_legend_on_text_page()) +
           b(ov_settings_get_default_printout_settings_legend_on_view_pages()) +
           b(ov_settings_get_default_printout_settings_show_page_numbers()) +
           b(ov_settings_get_default_printout_settings_show_report_type()) + "|" +
           std::to_string(ov_settings_get_default_printout_settings_text_page_legend_codeset_filter_level()) +
           std::to_string(ov_settings_get_default_printout_settings_text_page_legend_mark_filter_level()) +
           std::to_string(ov_settings_get_default_printout_settings_view_page_legend_codeset_filter_level()) +
           std::to_string(ov_settings_get_default_printout_settings_view_page_legend_mark_filter_level()) + "|" +
           ov_settings_get_export_folder_path() + "|" + ov_settings_get_last_used_legacy_layout_file_name() + "|" +
           ov_settings_get_last_used_legacy_paper_id() + "|" + b(ov_settings_get_left_handed()) + "|" +
           recent_codes() + "|" + b(ov_settings_get_remember_tool_choice());
}

constexpr const char *defaults = "|0|0|1|(none)|1|0|100111|2121|||A4_P|0||0";

void set_every_field()
{
    ov_settings_set_archive_path("/archive/å");
    ov_settings_set_automatically_place_id(TRUE);
    ov_settings_set_default_mark_id_style(7);
    ov_settings_set_default_printout_settings_identifier_setting(OV_SETTINGS_IDENTIFIER_INVENTORY_ID_OR_OBJECT_ID);
    ov_settings_set_default_printout_settings_layout_file_name("mine.layout");
    ov_settings_set_default_printout_settings_paper_index(3);
    ov_settings_set_default_printout_settings_paper_orientation(OV_SETTINGS_ORIENTATION_LANDSCAPE);
    ov_settings_set_default_printout_settings_details_on_text_page(FALSE);
    ov_settings_set_default_printout_settings_details_on_view_pages(TRUE);
    ov_settings_set_default_printout_settings_legend_on_text_page(TRUE);
    ov_settings_set_default_printout_settings_legend_on_view_pages(FALSE);
    ov_settings_set_default_printout_settings_show_page_numbers(FALSE);
    ov_settings_set_default_printout_settings_show_report_type(FALSE);
    ov_settings_set_default_printout_settings_text_page_legend_codeset_filter_level(3);
    ov_settings_set_default_printout_settings_text_page_legend_mark_filter_level(2);
    ov_settings_set_default_printout_settings_view_page_legend_codeset_filter_level(1);
    ov_settings_set_default_printout_settings_view_page_legend_mark_filter_level(3);
    ov_settings_set_export_folder_path("/export");
    ov_settings_set_last_used_legacy_layout_file_name("old.layout");
    ov_settings_set_last_used_legacy_paper_id("A3_L");
    ov_settings_set_left_handed(TRUE);
    langstr *description = make_langstr("sv", "R\xe4nder");
    ov_settings_set_most_recent_custom_remark("R&1", description);
    ov_langstr_free(description);
    ov_settings_set_remember_tool_choice(TRUE);
}

constexpr const char *every_field = "/archive/å|1|7|3|mine.layout|3|1|011000|3213|/export|old.layout|A3_L|1|R&1:R\xe4nder|1";

constexpr const char *every_field_file =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<settings>\n"
    "  <archive path=\"/archive/å\"/>\n"
    "  <automatically-place-id active=\"true\"/>\n"
    "  <default-mark-id-style style=\"7\"/>\n"
    "  <default-printout-settings>\n"
    "    <identifier setting=\"Inventory ID or Object ID\"/>\n"
    "    <layout filename=\"mine.layout\"/>\n"
    "    <paper name=\"Letter\" orientation=\"Landscape\"/>\n"
    "    <details show-on-text-page=\"false\" show-on-view-pages=\"true\"/>\n"
    "    <legend show-on-text-page=\"true\" show-on-view-pages=\"false\" "
    "text-page-codeset-filter-level=\"From no codeset\" text-page-mark-filter-level=\"From this view only\" "
    "view-page-codeset-filter-level=\"From all codesets\" view-page-mark-filter-level=\"From no view\"/>\n"
    "    <page-numbers show=\"false\"/>\n"
    "    <report-type show=\"false\"/>\n"
    "  </default-printout-settings>\n"
    "  <export>\n"
    "    <folder path=\"/export\"/>\n"
    "  </export>\n"
    "  <last-used-layout filename=\"old.layout\"/>\n"
    "  <last-used-paper id=\"A3_L\"/>\n"
    "  <left-handed active=\"true\"/>\n"
    "  <recent-custom-remarks>\n"
    "    <remark>\n"
    "      <code>R&amp;1</code>\n"
    "      <description lang=\"sv\">Ränder</description>\n"
    "    </remark>\n"
    "  </recent-custom-remarks>\n"
    "  <remember-tool-choice active=\"true\"/>\n"
    "</settings>\n";

TEST(Settings, PaperTableAndTexts)
{
    EXPECT_EQ(ov_settings_get_paper_count(), 5);
    EXPECT_STREQ(ov_settings_get_paper_name(ov_settings_get_default_paper_index()), "A4");
    EXPECT_EQ(ov_settings_find_paper_index("Legal"), 4);
    EXPECT_EQ(ov_settings_find_paper_index("a4"), -1);
    EXPECT_EQ(ov_settings_get_paper_name(5), nullptr);
    EXPECT_EQ(ov_settings_get_paper_name(-1), nullptr);
    EXPECT_STREQ(ov_settings_get_identifier_setting_text(0), "None");
    EXPECT_STREQ(ov_settings_get_orientation_text(1), "Landscape");
    EXPECT_STREQ(ov_settings_get_codeset_filter_level_text(2), "From primary codeset only");
    EXPECT_EQ(ov_settings_get_codeset_filter_level_text(0), nullptr);
    EXPECT_STREQ(ov_settings_get_mark_filter_level_text(3), "From no view");
}

TEST(Settings, DefaultsAndAMissingFile)
{
    expect_success(with_settings([](const std::string &path) {
                  EXPECT_EQ(all_fields(), defaults);
                  EXPECT_TRUE(ov_settings_load(OV_SETTINGS_ALL));
                  EXPECT_EQ(all_fields(), defaults);
                  EXPECT_FALSE(ov::test::file_exists(path));
                  return true;
              }));
}

TEST(Settings, SaveWritesEveryGroupAndLoadReadsItBack)
{
    expect_success(with_settings([](const std::string &path) {
                  set_every_field();
                  EXPECT_EQ(all_fields(), every_field);
                  EXPECT_TRUE(ov_settings_save(OV_SETTINGS_ALL)) << ov_error_get();
                  EXPECT_EQ(read_file(path), every_field_file);

                  ov_settings_init();
                  EXPECT_EQ(all_fields(), defaults);
                  EXPECT_TRUE(ov_settings_load(OV_SETTINGS_ALL)) << ov_error_get();
                  EXPECT_EQ(all_fields(), every_field);

                  // Saving again gives the same bytes.
                  EXPECT_TRUE(ov_settings_save(OV_SETTINGS_ALL));
                  EXPECT_EQ(read_file(path), every_field_file);

                  // Without a layout the element is left out.
                  ov_settings_set_default_printout_settings_layout_file_name(nullptr);
                  EXPECT_TRUE(ov_settings_save(OV_SETTINGS_DEFAULT_PRINTOUT_SETTINGS));
                  EXPECT_EQ(read_file(path).find("<layout"), std::string::npos);
                  return true;
              }));
}

TEST(Settings, LoadTakesOnlyTheGroupsOfTheMask)
{
    expect_success(with_settings([](const std::string &path) {
                  write_file(path, every_field_file);
                  EXPECT_TRUE(ov_settings_load(OV_SETTINGS_LEFT_HANDED | OV_SETTINGS_EXPORT));
                  EXPECT_EQ(all_fields(), "|0|0|1|(none)|1|0|100111|2121|/export||A4_P|1||0");
                  EXPECT_TRUE(ov_settings_load(OV_SETTINGS_DEFAULT_PRINTOUT_SETTINGS));
                  EXPECT_EQ(all_fields(), "|0|0|3|mine.layout|3|1|011000|3213|/export||A4_P|1||0");
                  return true;
              }));
}

TEST(Settings, SavingOneGroupKeepsEveryOtherElement)
{
    expect_success(with_settings([](const std::string &path) {
                  write_file(path, "<?xml version=\"1.0\"?>\n<settings>\n\n\t<other-program  x=\"1\">\n\t\t<keep>text "
                                   " </keep>\n\t</other-program>\n<!-- note -->\n"
                                   "\t<left-handed active=\"false\" extra=\"kept\"/>\n"
                                   "\t<archive path=\"/a\"/>\n"
                                   "\t<left-handed active=\"false\"/>\n</settings>\n");
                  ov_settings_set_left_handed(TRUE);
                  ov_settings_set_archive_path("/changed in memory only");
                  EXPECT_TRUE(ov_settings_save(OV_SETTINGS_LEFT_HANDED)) << ov_error_get();
                  EXPECT_EQ(read_file(path), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                             "<settings>\n"
                                             "  <other-program x=\"1\">\n"
                                             "    <keep>text  </keep>\n"
                                             "  </other-program>\n"
                                             "  <!-- note -->\n"
                                             "  <left-handed active=\"true\" extra=\"kept\"/>\n"
                                             "  <archive path=\"/a\"/>\n"
                                             "</settings>\n");
                  return true;
              }));
}

TEST(Settings, LoadKeepsFieldsForMissingAttributesAndUnknownTexts)
{
    expect_success(with_settings([](const std::string &path) {
                  write_file(path, "<settings>"
                                   "<archive/><left-handed active=\"True\"/><remember-tool-choice/>"
                                   "<default-mark-id-style style=\"x\"/><unknown/>"
                                   "<default-printout-settings><identifier setting=\"none\"/>"
                                   "<paper name=\"B5\" orientation=\"Landscape\"/>"
                                   "<legend text-page-mark-filter-level=\"From this view only\" "
                                   "view-page-mark-filter-level=\"From everywhere\"/></default-printout-settings>"
                                   "</settings>");
                  ov_settings_set_left_handed(TRUE);
                  EXPECT_TRUE(ov_settings_load(OV_SETTINGS_ALL)) << ov_error_get();
                  // "True" is not "true".
                  EXPECT_EQ(all_fields(), "|0|0|1|(none)|1|1|100111|2221|||A4_P|0||0");
                  return true;
              }));
}

TEST(Settings, BadPaperIdAndBadRemarkFailTheLoadButTheRestLoads)
{
    expect_success(with_settings([](const std::string &path) {
                  write_file(path, "<settings><last-used-paper id=\"A4_\xc3\xa5\"/>"
                                   "<recent-custom-remarks>"
                                   "<remark><code>A</code><description lang=\"sv\">a</description></remark>"
                                   "<remark><code>B</code></remark>"
                                   "<remark><code>C</code><description lang=\"sv\">c</description></remark>"
                                   "</recent-custom-remarks><left-handed active=\"true\"/></settings>");
                  langstr *description = make_langstr("sv", "old");
                  ov_settings_set_most_recent_custom_remark("OLD", description);
                  ov_langstr_free(description);
                  EXPECT_FALSE(ov_settings_load(OV_SETTINGS_ALL));
                  EXPECT_EQ(all_fields(), "|0|0|1|(none)|1|0|100111|2121|||A4_P|1|A:a C:c|0");
                  ov_error_clear();
                  return true;
              }));
}

TEST(Settings, UnreadableFilesFail)
{
    expect_success(with_settings([](const std::string &path) {
                  for (const char *contents : {"<settings>", "<other/>", ""}) {
                      write_file(path, contents);
                      ov_error_clear();
                      EXPECT_FALSE(ov_settings_load(OV_SETTINGS_ALL)) << contents;
                      EXPECT_STRNE(ov_error_get(), "");
                      // Another program's file is never replaced by ours.
                      EXPECT_FALSE(ov_settings_save(OV_SETTINGS_ALL)) << contents;
                      EXPECT_EQ(read_file(path), contents);
                  }
                  ov_error_clear();
                  return true;
              }));
}

TEST(Settings, RecentCustomRemarksKeepTheNewestFive)
{
    expect_success(with_settings([](const std::string &) {
                  auto record = [](const char *code, const char *text) {
                      langstr *description = make_langstr("en-uk", text);
                      ov_settings_set_most_recent_custom_remark(code, description);
                      ov_langstr_free(description);
                  };
                  for (const char *code : {"1", "2", "3", "4", "5", "6"})
                      record(code, "x");
                  EXPECT_EQ(recent_codes(), "6:x 5:x 4:x 3:x 2:x");
                  record("4", "x");
                  EXPECT_EQ(recent_codes(), "4:x 6:x 5:x 3:x 2:x");
                  record("2", "x");
                  EXPECT_EQ(recent_codes(), "2:x 4:x 6:x 5:x 3:x");
                  // Same code, another description: a separate entry.
                  record("2", "y");
                  EXPECT_EQ(recent_codes(), "2:y 2:x 4:x 6:x 5:x");
                  return true;
              }));
}

TEST(Settings, FailedSaveKeepsTheOldFile)
{
    expect_success(with_settings([](const std::string &path) {
                  const std::string old_contents = std::string(every_field_file);
                  write_file(path, old_contents);
                  for (int i = 0; i < 5; i++) {
                      std::string code(300, 'a' + i);
                      langstr *description = make_langstr("en-uk", std::string(300, 'x').c_str());
                      ov_settings_set_most_recent_custom_remark(code.c_str(), description);
                      ov_langstr_free(description);
                  }
                  signal(SIGXFSZ, SIG_IGN);
                  struct rlimit limit = {2000, 2000};
                  setrlimit(RLIMIT_FSIZE, &limit);
                  ov_error_clear();
                  EXPECT_FALSE(ov_settings_save(OV_SETTINGS_ALL));
                  EXPECT_STRNE(ov_error_get(), "");
                  EXPECT_EQ(read_file(path), old_contents);
                  ov::GStr parent = ov::gstr(g_path_get_dirname(path.c_str()));
                  GDir *folder = g_dir_open(parent.get(), 0, nullptr);
                  int entries = 0;
                  while (const char *name = g_dir_read_name(folder))
                      entries += g_str_has_prefix(name, "settings.xml") ? 1 : 0;
                  g_dir_close(folder);
                  EXPECT_EQ(entries, 1);
                  ov_error_clear();
                  return true;
              }));
}

} // namespace
