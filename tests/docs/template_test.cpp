#include "docs/template.h"
#include "docs/template_io.h"

#include "core/error.h"
#include "core/raii.h"
#include "lang/active_locale.h"
#include "lang/locale.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <glib/gstdio.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <string>
#include <vector>

namespace
{

using TemplatePtr = ov::Owned<ov_template, ov_template_destroy>;
using LangstrPtr = ov::Owned<langstr, ov_langstr_free>;

langstr *make_text(const char *uk_english)
{
    langstr *ls = nullptr;
    ov_langstr_set_translation(&ls, ov_locale_get_uk_english(), uk_english);
    return ls;
}

std::vector<std::string> list_folder(const std::string &path)
{
    std::vector<std::string> names;
    GDir *dir = g_dir_open(path.c_str(), 0, nullptr);
    if (dir == nullptr)
        return names;
    while (const char *name = g_dir_read_name(dir))
        names.emplace_back(name);
    g_dir_close(dir);
    std::sort(names.begin(), names.end());
    return names;
}

std::string example_templates_folder()
{
    return std::string(OV_SOURCE_DIR) + "/resources/install/templates";
}

// Reads path and writes it again into a temporary folder; the bytes written.
std::string rewrite(const std::string &path)
{
    ov::test::TempDir dir;
    TemplatePtr tmpl(ov_template_io_read_from_file(path.c_str()));
    EXPECT_TRUE(tmpl) << ov_error_get();
    if (!tmpl)
        return {};
    const std::string out = dir.file("out.template");
    EXPECT_TRUE(ov_template_io_write_to_file(tmpl.get(), out.c_str())) << ov_error_get();
    return ov::test::read_file(out);
}

class TemplateTest : public ::testing::Test
{
  protected:
    void SetUp() override { ov_error_clear(); }
    void TearDown() override { ov_error_clear(); }
};

TEST_F(TemplateTest, ExampleAndCanonicalFilesRoundTripByteForByte)
{
    std::vector<std::string> paths;
    for (const std::string &name : list_folder(example_templates_folder()))
        paths.push_back(example_templates_folder() + "/" + name);
    ASSERT_GE(paths.size(), 2u);
    paths.push_back(ov::test::fixture("templates/full.template"));
    paths.push_back(ov::test::fixture("templates/legacy_expected.template"));
    for (const std::string &path : paths) {
        SCOPED_TRACE(path);
        // Compared as a whole to keep a failure's output short.
        EXPECT_TRUE(rewrite(path) == ov::test::read_file(path));
    }
}

TEST_F(TemplateTest, ExampleTemplatesHaveBasicDataAndTwoReportTypesInFourLanguages)
{
    for (const std::string &name : list_folder(example_templates_folder())) {
        SCOPED_TRACE(name);
        const std::string path = example_templates_folder() + "/" + name;
        TemplatePtr tmpl(ov_template_io_read_from_file(path.c_str()));
        ASSERT_TRUE(tmpl) << ov_error_get();
        EXPECT_TRUE(ov_text_sheet_segment_has_contents(tmpl->details));
        EXPECT_EQ(ov::list_count(tmpl->report_types), 2u);
        OvTranslationStats *stats = ov_translation_stats_get_for_template(tmpl.get());
        const OvLocale *complete[] = {ov_locale_get_uk_english(), ov_locale_get_swedish_swedish()};
        for (const OvLocale *locale : complete)
            EXPECT_EQ(ov_translation_stats_get_percentage(stats, locale), 100) << locale->tag;
        for (const char *tag : {"de-de", "fr-fr"})
            EXPECT_GT(ov_translation_stats_get_percentage(stats, ov_locale_get_by_tag(tag)), 0) << tag;
        ov_translation_stats_destroy(stats);
    }
}

TEST_F(TemplateTest, LegacyFormsAreReadAndWrittenInTheCurrentForm)
{
    EXPECT_EQ(rewrite(ov::test::fixture("templates/legacy.template")),
              ov::test::read_file(ov::test::fixture("templates/legacy_expected.template")));
}

TEST_F(TemplateTest, ConditionElementsBecomeReportTypesWithTheFixedName)
{
    TemplatePtr tmpl(ov_template_io_read_from_file(ov::test::fixture("templates/legacy.template").c_str()));
    ASSERT_TRUE(tmpl) << ov_error_get();
    ASSERT_EQ(ov::list_count(tmpl->report_types), 3u);
    for (std::uint32_t i = 0; i < 2; ++i) {
        const ov_template_report_type *report_type = ov::list_nth(tmpl->report_types, i);
        EXPECT_STREQ(ov_langstr_get_text_for_locale(report_type->name, ov_locale_get_uk_english()),
                     "Condition Report");
        EXPECT_STREQ(ov_langstr_get_text_for_locale(report_type->name, ov_locale_get_swedish_swedish()),
                     "Tillst\xE5ndsrapport");
        ASSERT_EQ(ov::list_count(report_type->segments), 1u);
        EXPECT_EQ(report_type->segments.first()->header, nullptr);
    }
    // Condition mode reads neither contents nor "selected".
    const ov_text_sheet_row *row =
        ov::list_nth(tmpl->report_types, 1)->segments.first()->blocks.first()->rows.first();
    EXPECT_EQ(row->fields.first()->text, nullptr);
    EXPECT_FALSE(row->fields.last()->selected);
}

TEST_F(TemplateTest, ReportTypesKeepOnlyTheLayoutOfTheirFields)
{
    TemplatePtr tmpl(ov_template_new());
    tmpl->name = make_text("T");
    ov_template_report_type *report_type = ov_template_report_type_new(nullptr);
    ov_template_add_report_type(tmpl.get(), report_type);
    ov_text_sheet_segment *segment = ov_text_sheet_segment_new(nullptr);
    ov_template_report_type_add_segment(report_type, segment);
    ov_text_sheet_block *block = ov_text_sheet_block_new(nullptr);
    ov_text_sheet_segment_add_block(segment, block);
    LangstrPtr header(make_text("R"));
    ov_text_sheet_row *row = ov_text_sheet_row_new(header.get());
    ov_text_sheet_block_add_row(block, row);
    ov_text_sheet_field *text_field = ov_text_sheet_field_new(OV_TEXT_SHEET_FIELD_KIND_TEXT_FIELD);
    text_field->text = make_text("contents");
    ov_text_sheet_row_add_field(row, text_field);
    ov_text_sheet_field *checkbox = ov_text_sheet_field_new(OV_TEXT_SHEET_FIELD_KIND_CHECKBOX);
    checkbox->text = make_text("box");
    checkbox->selected = TRUE;
    ov_text_sheet_row_add_field(row, checkbox);
    // A details header alone makes an empty "details" element.
    tmpl->details->header = make_text("ignored");

    ov::test::TempDir dir;
    const std::string path = dir.file("t.template");
    ASSERT_TRUE(ov_template_io_write_to_file(tmpl.get(), path.c_str())) << ov_error_get();
    EXPECT_EQ(ov::test::read_file(path), "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>\n\n<template>\n\n"
                                         "\t<name lang=\"en-uk\">T</name>\n"
                                         "\n\t<details>\n\t</details>\n"
                                         "\n\t<report-type>\n"
                                         "\t\t<segment>\n"
                                         "\t\t\t<block>\n"
                                         "\t\t\t\t<row>\n"
                                         "\t\t\t\t\t<header lang=\"en-uk\">R</header>\n"
                                         "\t\t\t\t\t<textfield/>\n"
                                         "\t\t\t\t\t<checkbox>\n"
                                         "\t\t\t\t\t\t<label lang=\"en-uk\">box</label>\n"
                                         "\t\t\t\t\t</checkbox>\n"
                                         "\t\t\t\t</row>\n"
                                         "\t\t\t</block>\n"
                                         "\t\t</segment>\n"
                                         "\t</report-type>\n"
                                         "\n</template>\n");
}

TEST_F(TemplateTest, ReportTypeCloneIsDeep)
{
    TemplatePtr tmpl(ov_template_io_read_from_file(ov::test::fixture("templates/full.template").c_str()));
    ASSERT_TRUE(tmpl) << ov_error_get();
    const ov_template_report_type *source = tmpl->report_types.first();
    ov_template_report_type *copy = ov_template_report_type_clone(source);
    EXPECT_EQ(copy->previous, nullptr);
    EXPECT_TRUE(ov_langstr_is_identical(copy->name, source->name));
    EXPECT_NE(copy->name, source->name);
    ASSERT_EQ(ov::list_count(copy->segments), 2u);
    EXPECT_NE(copy->segments.last(), source->segments.last());
    EXPECT_TRUE(ov_langstr_is_identical(copy->segments.last()->header, source->segments.last()->header));
    // Appended to the template, the copy is written like the original.
    ov_template_add_report_type(tmpl.get(), copy);
    ov_template_report_type_destroy(ov::list_nth(tmpl->report_types, 1));
    ov_template_report_type_remove(tmpl->report_types.first());
    ov_template_report_type_destroy(const_cast<ov_template_report_type *>(source));
    EXPECT_EQ(ov::list_count(tmpl->report_types), 1u);
    EXPECT_EQ(tmpl->report_types.first(), copy);
}

TEST_F(TemplateTest, CodesetEntriesAndTemplateListEntries)
{
    TemplatePtr tmpl(ov_template_new());
    for (const char *name : {"a.codeset", "b.codeset", "c.codeset"})
        ov_template_add_codeset(tmpl.get(), ov_template_codeset_new(name));
    ov_template_codeset *middle = ov::list_nth(tmpl->codesets, 1);
    ov_template_codeset_remove(middle);
    ov_template_codeset_destroy(middle);
    ov_template_codeset_destroy(tmpl->codesets.first());
    EXPECT_STREQ(tmpl->codesets.first()->file_name, "c.codeset");
    ov_template_codeset_destroy(nullptr);

    ov_template_list *list = ov_template_list_new();
    ov_template_list_add_entry(list, ov_template_list_entry_new_take(g_strdup("/p"), g_strdup("P")));
    ov_template_list_add_entry(list, ov_template_list_entry_new_take(g_strdup("/q"), g_strdup("Q")));
    EXPECT_STREQ(ov_template_list_get_entry(list, 1)->ui_string, "Q");
    EXPECT_EQ(ov_template_list_get_entry(list, 2), nullptr);
    ov_template_list_entry *first = ov_template_list_get_entry(list, 0);
    ov_template_list_entry_remove(first);
    ov_template_list_entry_destroy(first);
    EXPECT_STREQ(ov_template_list_get_entry(list, 0)->path, "/q");
    ov_template_list_destroy(list);
    ov_template_list_destroy(nullptr);
    ov_template_destroy(nullptr);
}

std::string template_file(const std::string &body)
{
    return "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>\n<template>" + body + "</template>\n";
}

constexpr const char *name_element = "<name lang=\"en-uk\">N</name>";
constexpr const char *report_type_element = "<report-type><name lang=\"en-uk\">R</name></report-type>";

std::string with_segment(const std::string &blocks)
{
    return std::string(name_element) + "<report-type><name lang=\"en-uk\">R</name><segment>" + blocks +
           "</segment></report-type>";
}

std::string with_details(const std::string &blocks)
{
    return std::string(name_element) + "<details>" + blocks + "</details>" + report_type_element;
}

TEST_F(TemplateTest, BadContentsGiveTheExactMessageChain)
{
    struct Case {
        const char *what;
        std::string body;
        const char *error;
    };
    const std::string parsing = "Error parsing template file.\n\n";
    const Case cases[] = {
        {"no report types", name_element, "Missing report types."},
        {"no name", report_type_element, "Missing XML node: name"},
        {"two versions",
         std::string(name_element) + "<version>1</version><version>2</version>" + report_type_element,
         "Duplicate XML nodes found where not allowed."},
        {"empty version", std::string(name_element) + "<version> </version>" + report_type_element,
         "Missing text content in XML.\n\nText content is empty."},
        {"codeset without file name",
         std::string(name_element) + "<codesets><codeset/></codesets>" + report_type_element,
         "Missing XML attribute: filename"},
        {"codeset with empty file name",
         std::string(name_element) + "<codesets><codeset filename=\"\"/></codesets>" + report_type_element,
         "Empty XML attribute: filename"},
        {"codeset name beyond Latin-1",
         std::string(name_element) + "<codesets><codeset filename=\"&#x3A9;\"/></codesets>" +
             report_type_element,
         "Invalid XML attribute content.\n\nCharacter incompatible with ISO-8859-1 found where not allowed."},
        {"report type without name", std::string(name_element) + "<report-type/>", "Missing XML node: name"},
        {"row without header", with_segment("<block><row><textfield/></row></block>"),
         "Missing XML node: header"},
        {"checkbox without label",
         with_details("<block><row><header lang=\"sv\">H</header><checkbox/></row></block>"),
         "Missing XML node: label"},
        {"details item without header", with_details("<details-group><details-item/></details-group>"),
         "Missing XML node: details-item-header"},
        {"condition item without header",
         std::string(name_element) +
             "<condition><condition-group><condition-item/></condition-group></condition>",
         "Missing XML node: condition-item-header"},
        {"unknown locale", "<name lang=\"xx-yy\">N</name>" + std::string(report_type_element),
         "Unsupported locale in XML lang attribute."},
        {"upper-case tag", "<name lang=\"EN-UK\">N</name>" + std::string(report_type_element),
         "Unsupported locale in XML lang attribute."},
        {"no lang attribute", "<name>N</name>" + std::string(report_type_element),
         "Missing XML attribute: lang"},
        {"blank text", "<name lang=\"en-uk\"> \t </name>" + std::string(report_type_element),
         "Empty text content in XML where not allowed."},
        {"text beyond Latin-1", "<name lang=\"en-uk\">&#x3A9;mega</name>" + std::string(report_type_element),
         "Invalid XML node content.\n\nCharacter incompatible with ISO-8859-1 found where not allowed."},
        {"bad selected in details",
         with_details("<block><row><header lang=\"sv\">H</header><checkbox selected=\"True\">"
                      "<label lang=\"sv\">L</label></checkbox></row></block>"),
         "Invalid boolean value in XML attribute: selected"},
        // A container's own name or header counts before its children,
        // and the first failing child before later ones, wherever they
        // stand in the file.
        {"report type name missing, bad row",
         std::string(name_element) + "<report-type><segment><block><row/>"
                                     "</block></segment></report-type>",
         "Missing XML node: name"},
        {"segment header after a bad row",
         std::string(name_element) +
             "<report-type><segment><block><row/></block><header lang=\"xx\">H</header>"
             "</segment><name lang=\"sv\">R</name></report-type>",
         "Unsupported locale in XML lang attribute."},
        {"template name after bad children",
         "<report-type><segment><block><row/></block></segment></report-type><version></version>"
         "<name lang=\"sv\">N</name>",
         "Missing text content in XML.\n\nText content is empty."},
        {"first failing child",
         std::string(name_element) + "<codesets><codeset/></codesets>"
                                     "<report-type><segment><block><row/></block></segment></report-type>",
         "Missing XML attribute: filename"},
        {"blank contents in details",
         with_details(
             "<block><row><header lang=\"sv\">H</header><textfield><contents lang=\"sv\"> </contents>"
             "</textfield></row></block>"),
         "Empty text content in XML where not allowed."},
    };
    ov::test::TempDir dir;
    const std::string path = dir.file("bad.template");
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        ov_error_clear();
        ov::test::write_file(path, template_file(c.body));
        EXPECT_EQ(ov_template_io_read_from_file(path.c_str()), nullptr);
        EXPECT_EQ(ov_error_get(), parsing + c.error);
    }
}

TEST_F(TemplateTest, ReportTypesIgnoreWhatOnlyTheBasicDataCarries)
{
    // Bad "selected" values and blank contents are never looked at in a
    // report type.
    ov::test::TempDir dir;
    const std::string path = dir.file("ok.template");
    ov::test::write_file(path, template_file(with_segment(
                                   "<block><row><header lang=\"sv\">H</header><checkbox selected=\"True\">"
                                   "<label lang=\"sv\">L</label></checkbox><textfield><contents>x</contents>"
                                   "</textfield></row></block>")));
    TemplatePtr tmpl(ov_template_io_read_from_file(path.c_str()));
    ASSERT_TRUE(tmpl) << ov_error_get();
}

TEST_F(TemplateTest, UnreadableFilesGiveTheLoadingMessageChain)
{
    struct Case {
        const char *what;
        std::string contents;
        const char *error_start;
        const char *error_part;
    };
    const char *loading = "Error loading template file.\n\nCould not parse XML data.\n\n";
    std::string deep = "<?xml version=\"1.0\"?>\n<template>";
    for (int i = 0; i < 5000; ++i)
        deep += "<a>";
    std::string huge = "<?xml version=\"1.0\"?>\n<template><name lang=\"sv\">";
    huge.append(11 * 1024 * 1024, 'x');
    huge += "</name></template>";
    const Case cases[] = {
        {"empty file", "", loading, "parser error"},
        {"malformed", "<?xml version=\"1.0\"?>\n<template><name></template>", loading, "mismatch"},
        {"truncated", template_file(name_element).substr(0, 60), loading, ""},
        {"deeply nested", deep, loading, "depth"},
        {"huge text node", huge, loading, "huge"},
        {"wrong root", "<?xml version=\"1.0\"?>\n<codeset/>", "Not a template file.", ""},
        {"wrong root, malformed", "<?xml version=\"1.0\"?>\n<codeset><a></codeset>", loading, "mismatch"},
        {"bad contents, malformed end", template_file(with_segment("<block><row/></block>")) + "<junk",
         loading, "parser error"},
    };
    ov::test::TempDir dir;
    const std::string path = dir.file("bad.template");
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        ov_error_clear();
        ov::test::write_file(path, c.contents);
        EXPECT_EQ(ov_template_io_read_from_file(path.c_str()), nullptr);
        const std::string error = ov_error_get();
        EXPECT_EQ(error.rfind(c.error_start, 0), 0u) << error;
        EXPECT_NE(error.find(c.error_part), std::string::npos) << error;
    }
    ov_error_clear();
    EXPECT_EQ(ov_template_io_read_from_file(dir.file("missing.template").c_str()), nullptr);
    const std::string error = ov_error_get();
    EXPECT_EQ(error.rfind("Error loading template file.\n\nCannot open file.\n\n", 0), 0u) << error;
}

TEST_F(TemplateTest, TranslationStatisticsCountEveryTextOnce)
{
    TemplatePtr tmpl(ov_template_io_read_from_file(ov::test::fixture("templates/full.template").c_str()));
    ASSERT_TRUE(tmpl) << ov_error_get();
    OvTranslationStats *stats = ov_translation_stats_get_for_template(tmpl.get());
    // name, author; details: 2 rows, 3 field texts, 1 block header; first
    // report type: name, segment header, block header, row header, label;
    // second report type: name. The empty segment header and the plain text
    // field count nothing.
    EXPECT_EQ(stats->total, 14);
    std::string counts;
    for (const OvTranslationStatsLocale *record : stats->locales)
        counts += std::string(record->locale->tag) + "=" + std::to_string(record->count) + " ";
    EXPECT_EQ(counts, "en-uk=12 sv-fi=1 sv=2 de-de=1 fr-fr=1 ");
    ov_translation_stats_destroy(stats);
}

TEST_F(TemplateTest, OneLineDescriptionAndTheFolderList)
{
    const OvLocale *saved = ov_ovinternal_get_active_locale();
    ov_ovinternal_set_active_locale(ov_locale_get_swedish_swedish());
    ov::test::TempDir dir;
    const std::string painting = ov::test::read_file(example_templates_folder() + "/painting.template");
    ov::test::write_file(dir.file("painting.template"), painting);
    ov::test::write_file(
        dir.file("UPPER.TEMPLATE"),
        template_file(std::string(name_element) + "<version>v2</version>" + report_type_element));
    ov::test::write_file(dir.file("broken.template"), "<template>");
    ov::test::write_file(dir.file("notes.txt"), painting);
    ov::test::write_file(dir.file("template"), painting);
    g_mkdir(dir.file("folder.template").c_str(), 0700);

    gchar *text = ov_template_io_format_ui_string(dir.file("painting.template").c_str());
    EXPECT_STREQ(text, "M\xC3\xA5lning (Konserveringsavdelningen) 1.2");
    g_free(text);
    EXPECT_EQ(ov_template_io_format_ui_string(dir.file("broken.template").c_str()), nullptr);

    ov_error_clear();
    ov_template_list *list = ov_template_list_load_from_folder(dir.path().c_str());
    std::vector<std::string> entries;
    for (const ov_template_list_entry *entry : list->entries)
        entries.push_back(std::string(entry->path) + " " + entry->ui_string);
    std::sort(entries.begin(), entries.end());
    EXPECT_EQ(entries, (std::vector<std::string>{
                           dir.file("UPPER.TEMPLATE") + " N v2",
                           dir.file("painting.template") + " M\xC3\xA5lning (Konserveringsavdelningen) 1.2",
                       }));
    ov_template_list_destroy(list);

    list = ov_template_list_load_from_folder(dir.file("missing").c_str());
    EXPECT_TRUE(list->entries.is_empty());
    ov_template_list_destroy(list);
    ov_ovinternal_set_active_locale(saved);
    ov_error_clear();
}

// The folder holds only the target: no temporary file was left behind.
void expect_only(const ov::test::TempDir &dir, const std::string &path, const std::string &contents)
{
    EXPECT_EQ(list_folder(dir.path()), std::vector<std::string>{"t.template"});
    EXPECT_TRUE(ov::test::read_file(path) == contents);
}

TEST_F(TemplateTest, FailedSavesKeepTheOldFile)
{
    ov::test::TempDir dir;
    const std::string path = dir.file("t.template");
    const std::string old_contents = "old contents\n";
    ov::test::write_file(path, old_contents);
    TemplatePtr tmpl(
        ov_template_io_read_from_file((example_templates_folder() + "/painting.template").c_str()));
    ASSERT_TRUE(tmpl) << ov_error_get();

    // The file system refuses writes beyond a few kilobytes part-way through.
    const int status = ov::test::run_in_child([&] {
        const rlimit limit = {4096, 4096};
        std::signal(SIGXFSZ, SIG_IGN);
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
            return false;
        ov_error_clear();
        return !ov_template_io_write_to_file(tmpl.get(), path.c_str()) &&
               std::string(ov_error_get()).find("File I/O error when writing to file.") != std::string::npos;
    });
    EXPECT_EQ(status, 0);
    expect_only(dir, path, old_contents);

    // A field of no known kind fails the writer itself.
    ov_text_sheet_field *field = tmpl->details->blocks.last()->rows.last()->fields.last();
    const std::uint32_t kind = field->kind;
    field->kind = 7;
    EXPECT_FALSE(ov_template_io_write_to_file(tmpl.get(), path.c_str()));
    expect_only(dir, path, old_contents);
    field->kind = kind;

    // A folder that does not exist.
    ov_error_clear();
    EXPECT_FALSE(ov_template_io_write_to_file(tmpl.get(), dir.file("missing/t.template").c_str()));
    EXPECT_EQ(std::string(ov_error_get()).rfind("Cannot create file.\n\n", 0), 0u) << ov_error_get();

    // And a save that succeeds replaces the old file with exactly the bytes
    // of the example.
    ASSERT_TRUE(ov_template_io_write_to_file(tmpl.get(), path.c_str())) << ov_error_get();
    expect_only(dir, path, ov::test::read_file(example_templates_folder() + "/painting.template"));
}

} // namespace
