#include "docs/template.h"
#include "docs/template_io.h"

#include "core/raii.h"
#include "docs_test_util.h"
#include "lang/active_locale.h"
#include "lang/locale.h"

#include <utility>

namespace
{

using namespace ov::test;
using TemplatePtr = ov::Owned<ov_template, ov_template_destroy>;
using TemplateTest = ErrorCleared;

const std::string examples = std::string(OV_SOURCE_DIR) + "/resources/install/templates/";

TemplatePtr read_template(const std::string &path)
{
    TemplatePtr tmpl(ov_template_io_read_from_file(path.c_str()));
    EXPECT_TRUE(tmpl) << path << ": " << ov_error_get();
    return tmpl;
}

// The bytes the writer gives for tmpl.
std::string written(const ov_template *tmpl)
{
    TempDir dir;
    EXPECT_TRUE(ov_template_io_write_to_file(tmpl, dir.file("out.template").c_str())) << ov_error_get();
    return read_file(dir.file("out.template"));
}

TEST_F(TemplateTest, FilesRoundTripByteForByte)
{
    // Read from the first, written as the second: the examples and the file
    // with every element unchanged, the legacy forms in the current ones.
    std::vector<std::pair<std::string, std::string>> files;
    for (const std::string &name : list_folder(examples))
        files.emplace_back(examples + name, examples + name);
    ASSERT_GE(files.size(), 2u);
    const std::string full = fixture("templates/full.template");
    const std::string legacy = fixture("templates/legacy.template");
    const std::string current = fixture("templates/legacy_expected.template");
    // Entities with markup, a parsed entity beside the file, attributes a
    // DTD gives by default, character data sections, and the text of
    // elements inside a text left out.
    const std::string dtd = fixture("templates/dtd.template");
    files.insert(files.end(), {{full, full},
                               {current, current},
                               {legacy, current},
                               {dtd, fixture("templates/dtd_expected.template")}});
    for (const auto &[from, expected] : files) {
        SCOPED_TRACE(from);
        TemplatePtr tmpl = read_template(from);
        ASSERT_TRUE(tmpl);
        EXPECT_TRUE(written(tmpl.get()) == read_file(expected)); // not EXPECT_EQ: keeps a failure short
    }
}

TEST_F(TemplateTest, ClonesAreDeepAndReportTypesWriteOnlyTheLayoutOfTheirFields)
{
    const std::string path = fixture("templates/full.template");
    TemplatePtr tmpl = read_template(path);
    ASSERT_TRUE(tmpl);
    // What a report type or the basic data has no place for in the file.
    ov_text_sheet_row *row = tmpl->report_types.first()->segments.last()->blocks.first()->rows.first();
    row->fields.first()->selected = TRUE;
    ov_langstr_set_translation(&row->fields.last()->text, ov_locale_get_uk_english(), "contents");
    ov_langstr_set_translation(&tmpl->details->header, ov_locale_get_uk_english(), "header");
    // The basic data and each report type replaced by a clone, in order.
    ov_text_sheet_segment_destroy(std::exchange(tmpl->details, ov_text_sheet_segment_clone(tmpl->details)));
    for (std::uint32_t i = 0, count = ov::list_count(tmpl->report_types); i < count; ++i) {
        ov_template_report_type *original = tmpl->report_types.first();
        ov_template_add_report_type(tmpl.get(), ov_template_report_type_clone(original));
        ov_template_report_type_destroy(original);
    }
    EXPECT_TRUE(written(tmpl.get()) == read_file(path));
}

TEST_F(TemplateTest, BadInputGivesTheExactMessageChain)
{
    const std::string N = "<name lang=\"en-uk\">N</name>", R = "<report-type>" + N + "</report-type>";
    const std::string H = "<header lang=\"sv\">H</header>";
    const std::string bad_report = "<report-type><segment><block><row/></block></segment></report-type>";
    const std::string ticked = "<checkbox selected=\"True\"><label lang=\"sv\">L</label></checkbox>";
    const std::string blank = "<textfield><contents lang=\"sv\"> </contents></textfield>";
    auto file = [](std::string in) { return "<?xml version=\"1.0\"?>\n<template>" + in + "</template>"; };
    auto report = [&](std::string in) { return file(N + "<report-type>" + N + in + "</report-type>"); };
    auto details = [&](std::string in) { return file(N + "<details>" + in + "</details>" + R); };
    auto row = [&](std::string in) { return "<block><row>" + H + in + "</row></block>"; };
    const std::string P = "Error parsing template file.\n\n", node = P + "Missing XML node: ";
    const std::string L = libxml_refusal("template");
    const std::string no_text = P + "Missing text content in XML.\n\nText content is empty.";
    const std::string locale = P + "Unsupported locale in XML lang attribute.";
    const std::string no_file_name = P + "Missing XML attribute: filename";
    // Entities load only from beside the document (one opener serves both readers).
    TempDir dir, outside;
    write_file(outside.file("secret"), "SECRET");
    const std::vector<BadFile> cases = {
        {"entity from outside",
         "<!DOCTYPE template [<!ENTITY x SYSTEM \"" + outside.file("secret") + "\">]><template>" +
             "<name lang=\"sv\">&x;</name>" + R + "</template>",
         L + "External entity outside the document's folder refused: " + outside.file("secret")},
        {"malformed", "<template><name></template>", L + "mismatch"},
        {"NUL bytes after the root", file(N + R) + std::string(3, '\0'), L + "Extra content"},
        {"wrong root", "<codeset/>", "Not a template file."},
        {"no report types", file(N), P + "Missing report types."},
        {"unknown locale", file("<name lang=\"xx-yy\">N</name>" + R), locale},
        {"row without header", report("<segment><block><row/></block></segment>"), node + "header"},
        // The basic data reads "selected" and contents, report types do not.
        {"bad selected in details", details(row(ticked + blank)),
         P + "Invalid boolean value in XML attribute: selected"},
        {"both in a report type", report("<segment>" + row(ticked + blank) + "</segment>"), ""},
        // A container's own name or header fails before its children, the
        // first failing child before later ones, wherever they stand.
        {"name after a bad row", file(N + bad_report), node + "name"},
        {"segment header after a bad row",
         report("<segment><block><row/></block><header lang=\"xx\">H</header></segment>"), locale},
        {"version after bad children", file(bad_report + "<version/>" + N), no_text},
        {"first failing child", file(N + "<codesets><codeset/></codesets>" + bad_report), no_file_name},
    };
    expect_refusals(
        "template", dir,
        [](const char *path) { return TemplatePtr(ov_template_io_read_from_file(path)) != nullptr; }, cases);
}

TEST_F(TemplateTest, FolderListHasTheTemplatesWithTheirOneLineDescriptions)
{
    const OvLocale *saved = ov_ovinternal_get_active_locale();
    ov_ovinternal_set_active_locale(ov_locale_get_swedish_swedish());
    TempDir dir;
    const std::string painting = read_file(examples + "painting.template");
    write_file(dir.file("PAINTING.TEMPLATE"), painting);
    write_file(dir.file("broken.template"), "<template>");
    // Only the heading is read for the list: what follows far behind it is not.
    write_file(dir.file("heading.template"), "<template><name lang=\"sv\">Rubrik</name><version>3</version>"
                                             "<report-type>" +
                                                 std::string(1 << 20, ' ') + "<junk></template>");
    mkdir(dir.file("folder.template").c_str(), 0700);
    mkfifo(dir.file("fifo.template").c_str(), 0600);
    ov_template_list *list = ov_template_list_load_from_folder(dir.path().c_str());
    ASSERT_EQ(ov::list_count(list->entries), 2u);
    std::vector<std::pair<std::string, std::string>> entries;
    for (const auto *entry : list->entries)
        entries.emplace_back(entry->path, entry->ui_string);
    std::sort(entries.begin(), entries.end());
    EXPECT_EQ(entries[0], std::pair(dir.file("PAINTING.TEMPLATE"),
                                    std::string("M\xC3\xA5lning (Konserveringsavdelningen) 1.2")));
    EXPECT_EQ(entries[1], std::pair(dir.file("heading.template"), std::string("Rubrik 3")));
    ov_template_list_destroy(list);
    ov_ovinternal_set_active_locale(saved);
}

// Every text of the example is in English and Swedish; an edited name
// without its Swedish text counts as it stands, before it is put back.
TEST_F(TemplateTest, TranslationSharesCountTheNameAndAuthorAsEdited)
{
    TemplatePtr tmpl = read_template(examples + "painting.template");
    ASSERT_TRUE(tmpl);
    const OvLocale *swedish = ov_locale_get_swedish_swedish();
    langstr *name = nullptr;
    ov_langstr_set_translation(&name, ov_locale_get_uk_english(), "Edited");
    const ov::Owned<OvTranslationStats, ov_translation_stats_destroy> saved(
        ov_translation_stats_get_for_template(tmpl.get())),
        edited(ov_translation_stats_get_for_template_as_edited(tmpl.get(), name, tmpl->author));
    EXPECT_EQ(ov_translation_stats_get_percentage(saved.get(), swedish), 100);
    EXPECT_LT(ov_translation_stats_get_percentage(edited.get(), swedish), 100);
    EXPECT_EQ(ov_translation_stats_get_percentage(edited.get(), ov_locale_get_uk_english()), 100);
    ov_langstr_free(name);
}

TEST_F(TemplateTest, FailedSaveKeepsTheOldFileAndLeavesNoTemporaryFile)
{
    TemplatePtr tmpl = read_template(examples + "painting.template");
    ASSERT_TRUE(tmpl);
    expect_failed_saves_keep_the_old_file(
        "t.template", [&](const char *path) { return ov_template_io_write_to_file(tmpl.get(), path); });
}

} // namespace
