#include "docs/template_io.h"

#include "core/atomic_file.h"
#include "core/error.h"
#include "core/file_type.h"
#include "core/fs_utils.h"
#include "core/raii.h"
#include "core/strings.h"
#include "core/util.h"
#include "core/xml.h"
#include "docs/xml_stream.h"
#include "lang/langstr_xml.h"
#include "lang/locale.h"

#include <libxml/xmlreader.h>

#include <cstdarg>
#include <cstring>
#include <string>
#include <string_view>

namespace
{

using TemplatePtr = ov::Owned<ov_template, ov_template_destroy>;

// The basic data carries pre-filled values (text field contents, ticked
// checkboxes); report types carry only the layout of their fields.
enum class Mode { details, condition };

// The element names of the older file forms, per mode.
struct LegacyNames {
    const char *group;
    const char *group_header;
    const char *item;
    const char *item_header;
};

constexpr LegacyNames details_names = {"details-group", "details-group-header", "details-item",
                                       "details-item-header"};
constexpr LegacyNames condition_names = {"condition-group", "condition-group-header", "condition-item",
                                         "condition-item-header"};

const LegacyNames &legacy_names(Mode mode)
{
    return mode == Mode::details ? details_names : condition_names;
}

bool is_element(const xmlNode *node, const char *name)
{
    return node->type == XML_ELEMENT_NODE && xmlStrcmp(node->name, BAD_CAST name) == 0;
}

// Reading.

bool parse_text_field(xmlDoc *doc, xmlNode *element, ov_text_sheet_row *row, Mode mode,
                      const char *contents_name, gboolean compact)
{
    ov_text_sheet_field *field = ov_text_sheet_field_new(OV_TEXT_SHEET_FIELD_KIND_TEXT_FIELD);
    ov_text_sheet_row_add_field(row, field);
    if (mode == Mode::details)
        return ov_xml_parse_langstr(&field->text, doc, element, contents_name, compact);
    return true;
}

bool parse_checkbox(xmlDoc *doc, xmlNode *element, ov_text_sheet_row *row, Mode mode)
{
    ov_text_sheet_field *field = ov_text_sheet_field_new(OV_TEXT_SHEET_FIELD_KIND_CHECKBOX);
    ov_text_sheet_row_add_field(row, field);
    if (mode == Mode::details &&
        !ov_xml_get_attribute_value_as_boolean_with_fallback(&field->selected, element, "selected", FALSE))
        return false;
    field->text = ov_xml_parse_required_langstr(doc, element, "label", TRUE);
    return field->text != nullptr;
}

bool parse_row(xmlDoc *doc, xmlNode *element, ov_text_sheet_block *block, Mode mode)
{
    langstr *header = ov_xml_parse_required_langstr(doc, element, "header", TRUE);
    if (header == nullptr)
        return false;
    ov_text_sheet_row *row = ov_text_sheet_row_new(nullptr);
    row->header = header;
    ov_text_sheet_block_add_row(block, row);
    for (xmlNode *child = element->children; child != nullptr; child = child->next) {
        if (is_element(child, "textfield")) {
            if (!parse_text_field(doc, child, row, mode, "contents", FALSE))
                return false;
        } else if (is_element(child, "checkbox")) {
            if (!parse_checkbox(doc, child, row, mode))
                return false;
        }
    }
    return true;
}

// The older single-field row: a header and one text field.
bool parse_item(xmlDoc *doc, xmlNode *element, ov_text_sheet_block *block, Mode mode)
{
    langstr *header = ov_xml_parse_required_langstr(doc, element, legacy_names(mode).item_header, TRUE);
    if (header == nullptr)
        return false;
    ov_text_sheet_row *row = ov_text_sheet_row_new(nullptr);
    row->header = header;
    ov_text_sheet_block_add_row(block, row);
    return parse_text_field(doc, element, row, mode, "details-item-text", TRUE);
}

bool parse_codesets(xmlNode *element, ov_template *tmpl)
{
    for (xmlNode *child = element->children; child != nullptr; child = child->next) {
        if (!is_element(child, "codeset"))
            continue;
        gchar *file_name = ov_xml_get_nonempty_required_attribute_value_as_latin1(child, "filename");
        if (file_name == nullptr)
            return false;
        ov_template_codeset *codeset = new ov_template_codeset{};
        codeset->file_name = file_name;
        ov_template_add_codeset(tmpl, codeset);
    }
    return true;
}

bool is_block_name(const xmlChar *name, Mode mode)
{
    const char *text = reinterpret_cast<const char *>(name);
    return std::strcmp(text, "block") == 0 || std::strcmp(text, "group") == 0 ||
           std::strcmp(text, legacy_names(mode).group) == 0;
}

// The template file is read as a stream: only one row's elements (and the
// few name and header elements of the containers around it) exist as a
// libxml2 tree at any time, so reading needs little more memory than the
// template itself whatever its shape. Each row is expanded into a tree and
// read with the tree functions above; the names and headers of the
// containers are copied aside and read when their container ends.
//
// The outcome is that of reading the whole tree in document order: a
// malformed file fails as XML whatever it contains; otherwise a container's
// own name or header fails before its children, and the first failing child
// counts.
//
// For a list of templates only the heading (name, author, version) is
// wanted: then reading stops at the first other element after the name.
class TemplateReader : public ov::XmlStreamReader
{
  public:
    TemplateReader(xmlTextReader *reader, ov_template *tmpl, bool heading_only)
        : XmlStreamReader(reader), tmpl_(tmpl), heading_only_(heading_only)
    {
        aside_doc_.reset(xmlNewDoc(BAD_CAST "1.0"));
    }

    // The first failure's text, empty when reading succeeded.
    const std::string &error() const { return error_; }

  private:
    void read_root() override
    {
        xmlNode *aside = new_aside();
        for_each_child([&](const xmlChar *name) { read_template_child(name, aside); });
        if (status_ >= 0)
            finish_template(aside);
        xmlFreeNode(aside);
    }

    bool stopped() const override { return stopped_; }

    // Keeps a copy of the current element under aside, then moves on.
    void copy_aside(xmlNode *aside)
    {
        if (xmlNode *node = expand(); node != nullptr) {
            xmlAddChild(aside, xmlDocCopyNode(node, aside_doc_.get(), 1));
            next();
        }
    }

    xmlNode *new_aside() { return xmlNewDocNode(aside_doc_.get(), nullptr, BAD_CAST "aside", nullptr); }

    // Records the first failure of a container's children.
    void fail(std::string &first)
    {
        if (first.empty())
            first = ov_error_get();
    }

    // Expands the current element and reads it with parse; a failure counts
    // for the container whose first error is first.
    template <class Parse> void parse_expanded(std::string &first, Parse parse)
    {
        xmlNode *node = expand();
        if (node == nullptr)
            return;
        if (!parse(node->doc, node))
            fail(first);
        next();
    }

    // The blocks of a "details", "condition" or "segment" element.
    void read_blocks(ov_text_sheet_segment *segment, Mode mode, std::string &first, xmlNode *aside)
    {
        for_each_child([&](const xmlChar *name) {
            if (is_block_name(name, mode))
                read_block(segment, mode, first);
            else if (aside != nullptr && xmlStrcmp(name, BAD_CAST "header") == 0)
                copy_aside(aside);
            else
                next();
        });
    }

    // A block's rows one at a time; its header is read at its end.
    void read_block(ov_text_sheet_segment *segment, Mode mode, std::string &first)
    {
        const LegacyNames &names = legacy_names(mode);
        ov_text_sheet_block *block = ov_text_sheet_block_new(nullptr);
        ov_text_sheet_segment_add_block(segment, block);
        xmlNode *aside = new_aside();
        std::string rows_error;
        for_each_child([&](const xmlChar *name) {
            if (xmlStrcmp(name, BAD_CAST "row") == 0)
                parse_expanded(rows_error,
                               [&](xmlDoc *doc, xmlNode *node) { return parse_row(doc, node, block, mode); });
            else if (xmlStrcmp(name, BAD_CAST names.item) == 0)
                parse_expanded(rows_error, [&](xmlDoc *doc, xmlNode *node) {
                    return parse_item(doc, node, block, mode);
                });
            else if (xmlStrcmp(name, BAD_CAST "header") == 0 ||
                     xmlStrcmp(name, BAD_CAST names.group_header) == 0)
                copy_aside(aside);
            else
                next();
        });
        xmlDoc *doc = aside_doc_.get();
        if (!ov_xml_parse_langstr(&block->header, doc, aside, "header", TRUE) ||
            (block->header == nullptr &&
             !ov_xml_parse_langstr(&block->header, doc, aside, names.group_header, TRUE)))
            fail(first);
        else if (!rows_error.empty() && first.empty())
            first = rows_error;
        xmlFreeNode(aside);
    }

    void read_segment(ov_template_report_type *report_type, std::string &first)
    {
        ov_text_sheet_segment *segment = ov_text_sheet_segment_new(nullptr);
        ov_template_report_type_add_segment(report_type, segment);
        xmlNode *aside = new_aside();
        std::string blocks_error;
        read_blocks(segment, Mode::condition, blocks_error, aside);
        if (!ov_xml_parse_langstr(&segment->header, aside_doc_.get(), aside, "header", TRUE))
            fail(first);
        else if (!blocks_error.empty() && first.empty())
            first = blocks_error;
        xmlFreeNode(aside);
    }

    void read_report_type(std::string &first)
    {
        ov_template_report_type *report_type = ov_template_report_type_new(nullptr);
        ov_template_add_report_type(tmpl_, report_type);
        xmlNode *aside = new_aside();
        std::string segments_error;
        for_each_child([&](const xmlChar *name) {
            if (xmlStrcmp(name, BAD_CAST "name") == 0)
                copy_aside(aside);
            else if (xmlStrcmp(name, BAD_CAST "segment") == 0)
                read_segment(report_type, segments_error);
            else
                next();
        });
        report_type->name = ov_xml_parse_required_langstr(aside_doc_.get(), aside, "name", TRUE);
        if (report_type->name == nullptr)
            fail(first);
        else if (!segments_error.empty() && first.empty())
            first = segments_error;
        xmlFreeNode(aside);
    }

    // The older single-report form: one report type with a fixed name and a
    // single segment without a header.
    void read_condition(std::string &first)
    {
        ov_template_report_type *report_type = ov_template_report_type_new(nullptr);
        ov_langstr_set_translation(&report_type->name, ov_locale_get_uk_english(), "Condition Report");
        ov_langstr_set_translation(&report_type->name, ov_locale_get_swedish_swedish(),
                                   "Tillst\xE5ndsrapport");
        ov_template_add_report_type(tmpl_, report_type);
        ov_text_sheet_segment *segment = ov_text_sheet_segment_new(nullptr);
        ov_template_report_type_add_segment(report_type, segment);
        read_blocks(segment, Mode::condition, first, nullptr);
    }

    void read_template_child(const xmlChar *name, xmlNode *aside)
    {
        const char *text = reinterpret_cast<const char *>(name);
        if (std::strcmp(text, "name") == 0 || std::strcmp(text, "author") == 0 ||
            std::strcmp(text, "version") == 0)
            copy_aside(aside);
        else if (heading_only_) {
            if (ov_xml_node_has_child_node_with_name(aside, "name"))
                stopped_ = true;
            else
                next();
        } else if (std::strcmp(text, "codesets") == 0)
            parse_expanded(children_error_,
                           [&](xmlDoc *, xmlNode *node) { return parse_codesets(node, tmpl_); });
        else if (std::strcmp(text, "details") == 0)
            read_blocks(tmpl_->details, Mode::details, children_error_, nullptr);
        else if (std::strcmp(text, "condition") == 0)
            read_condition(children_error_);
        else if (std::strcmp(text, "report-type") == 0)
            read_report_type(children_error_);
        else
            next();
    }

    void finish_template(xmlNode *aside)
    {
        xmlDoc *doc = aside_doc_.get();
        tmpl_->name = ov_xml_parse_required_langstr(doc, aside, "name", TRUE);
        if (tmpl_->name == nullptr || !ov_xml_parse_langstr(&tmpl_->author, doc, aside, "author", TRUE) ||
            !ov_xml_get_nonempty_text_content_from_distinct_child_node_as_compact_latin1(&tmpl_->version, doc,
                                                                                         aside, "version"))
            fail(error_);
        else if (!children_error_.empty())
            error_ = children_error_;
        else if (tmpl_->report_types.is_empty() && !heading_only_)
            error_ = "Missing report types.";
    }

    ov_template *tmpl_;
    bool heading_only_;
    bool stopped_ = false;
    ov::XmlDocPtr aside_doc_;
    std::string children_error_;
    std::string error_;
};

// Writing. Every write is checked and the first failure stops the writer.

constexpr std::string_view tabs = "\t\t\t\t\t\t\t\t";

// depth tabs, then text.
bool write_line(FILE *stream, int depth, const char *text)
{
    return ov_util_fprintf(stream, "%.*s%s", depth, tabs.data(), text);
}

bool write_field(FILE *stream, const ov_text_sheet_field *field, int depth, Mode mode)
{
    switch (field->kind) {
    case OV_TEXT_SHEET_FIELD_KIND_CHECKBOX:
        return write_line(stream, depth,
                          mode == Mode::details && field->selected ? "<checkbox selected=\"true\">\n"
                                                                   : "<checkbox>\n") &&
               ov_xml_write_langstr(stream, field->text, "label", depth + 1) &&
               write_line(stream, depth, "</checkbox>\n");
    case OV_TEXT_SHEET_FIELD_KIND_TEXT_FIELD:
        // Contents of report-type fields are dropped on saving.
        if (mode == Mode::details && field->text != nullptr)
            return write_line(stream, depth, "<textfield>\n") &&
                   ov_xml_write_langstr(stream, field->text, "contents", depth + 1) &&
                   write_line(stream, depth, "</textfield>\n");
        return write_line(stream, depth, "<textfield/>\n");
    default:
        ov_error_set_utf8_printf("Unknown kind of text sheet field: %u", field->kind);
        return false;
    }
}

bool write_blocks(FILE *stream, const ov_text_sheet_segment *segment, int depth, Mode mode)
{
    for (const ov_text_sheet_block *block : segment->blocks) {
        if (!write_line(stream, depth, "<block>\n") ||
            !ov_xml_write_langstr(stream, block->header, "header", depth + 1))
            return false;
        for (const ov_text_sheet_row *row : block->rows) {
            if (!write_line(stream, depth + 1, "<row>\n") ||
                !ov_xml_write_langstr(stream, row->header, "header", depth + 2))
                return false;
            for (const ov_text_sheet_field *field : row->fields)
                if (!write_field(stream, field, depth + 2, mode))
                    return false;
            if (!write_line(stream, depth + 1, "</row>\n"))
                return false;
        }
        if (!write_line(stream, depth, "</block>\n"))
            return false;
    }
    return true;
}

bool write_template(FILE *stream, const ov_template *tmpl)
{
    if (!ov_util_fprintf(stream, "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>\n\n<template>\n\n") ||
        !ov_xml_write_langstr(stream, tmpl->name, "name", 1) ||
        !ov_xml_write_langstr(stream, tmpl->author, "author", 1))
        return false;
    if (tmpl->version != nullptr &&
        !(write_line(stream, 1, "<version>") && ov_xml_write_string(stream, tmpl->version) &&
          write_line(stream, 0, "</version>\n")))
        return false;

    if (!tmpl->codesets.is_empty()) {
        if (!write_line(stream, 0, "\n\t<codesets>\n"))
            return false;
        for (const ov_template_codeset *codeset : tmpl->codesets)
            if (!(write_line(stream, 2, "<codeset filename=\"") &&
                  ov_xml_write_string(stream, codeset->file_name) && write_line(stream, 0, "\"/>\n")))
                return false;
        if (!write_line(stream, 1, "</codesets>\n"))
            return false;
    }

    const ov_text_sheet_segment *details = tmpl->details;
    if (details->header != nullptr || ov_text_sheet_segment_has_contents(details)) {
        if (!write_line(stream, 0, "\n\t<details>\n") || !write_blocks(stream, details, 2, Mode::details) ||
            !write_line(stream, 1, "</details>\n"))
            return false;
    }

    for (const ov_template_report_type *report_type : tmpl->report_types) {
        if (!write_line(stream, 0, "\n\t<report-type>\n") ||
            !ov_xml_write_langstr(stream, report_type->name, "name", 2))
            return false;
        for (const ov_text_sheet_segment *segment : report_type->segments)
            if (!write_line(stream, 2, "<segment>\n") ||
                !ov_xml_write_langstr(stream, segment->header, "header", 3) ||
                !write_blocks(stream, segment, 3, Mode::condition) || !write_line(stream, 2, "</segment>\n"))
                return false;
        if (!write_line(stream, 1, "</report-type>\n"))
            return false;
    }
    return write_line(stream, 0, "\n</template>\n");
}

} // namespace

namespace
{

// Reads the template at path (only its heading when asked).
ov_template *read_template(const char *path, bool heading_only)
{
    ov::XmlStreamFile file(path, "template");
    TemplatePtr tmpl(ov_template_new());
    TemplateReader reader(file.reader(), tmpl.get(), heading_only);
    if (!file.read(reader, "template"))
        return nullptr;
    if (!reader.error().empty()) {
        ov_error_set(reader.error().c_str());
        ov_error_append("Error parsing template file.");
        return nullptr;
    }
    return tmpl.release();
}

} // namespace

ov_template *ov_template_io_read_from_file(const char *path)
{
    g_return_val_if_fail(path != nullptr, nullptr);
    return read_template(path, false);
}

gboolean ov_template_io_write_to_file(const ov_template *tmpl, const char *path)
{
    g_return_val_if_fail(tmpl != nullptr && path != nullptr, FALSE);
    return ov_atomic_file_write(
        path, [tmpl](FILE *stream) { return write_template(stream, tmpl); }, "Cannot create file.");
}

gchar *ov_template_io_format_ui_string(const char *path)
{
    g_return_val_if_fail(path != nullptr, nullptr);
    TemplatePtr tmpl(read_template(path, true));
    if (!tmpl)
        return nullptr;
    GString *text = g_string_new(ov_langstr_get_text(tmpl->name, nullptr));
    if (const char *author = ov_langstr_get_text(tmpl->author, nullptr); author != nullptr)
        g_string_append_printf(text, " (%s)", author);
    if (tmpl->version != nullptr)
        g_string_append_printf(text, " %s", tmpl->version);
    ov::GStr latin1(g_string_free(text, FALSE));
    return ov_convert_latin1_to_utf8(latin1.get());
}

ov_template_list *ov_template_list_load_from_folder(const char *folder_path)
{
    ov_template_list *list = ov_template_list_new();
    g_return_val_if_fail(folder_path != nullptr, list);
    const char *extension = ov_file_type_get_default_file_name_extension_with_period(OV_FILE_TYPE_TEMPLATE);
    ov::for_each_folder_entry(folder_path, [&](ov::GStr &name) {
        if (!ov_utf8_has_suffix_case_insensitive_ascii(name.get(), extension))
            return true;
        ov::GStr path(ov_fs_utils_create_path_in_folder(folder_path, name.get(), nullptr));
        gchar *ui_string = ov_template_io_format_ui_string(path.get());
        if (ui_string != nullptr)
            ov_template_list_add_entry(list, ov_template_list_entry_new_take(path.release(), ui_string));
        return true;
    });
    return list;
}
