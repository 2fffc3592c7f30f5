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

#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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

bool is_named(const xmlChar *name, const char *wanted)
{
    return std::strcmp(reinterpret_cast<const char *>(name), wanted) == 0;
}

bool is_block_name(const xmlChar *name, Mode mode)
{
    return is_named(name, "block") || is_named(name, "group") || is_named(name, legacy_names(mode).group);
}

// Reading.

// Keeps the first failure of a container's children.
void keep_first(std::string &first, const char *error)
{
    if (first.empty())
        first = error;
}

// The template file is read by libxml2's SAX parser: no tree is built, and
// the model grows element by element, so reading needs little more memory
// than the template itself whatever its shape.
//
// The outcome is that of reading the whole tree in document order: a
// malformed file fails as XML whatever it contains; otherwise a container's
// own name or header fails before its children (whichever comes first in
// the file), and the first failing child counts. Each open container keeps
// its own failure and the first of its children's, and settles them when it
// ends.
//
// For a list of templates only the heading (name, author, version) is
// wanted: then reading stops at the first other element after a name.
class TemplateReader : public ov::XmlSaxReader
{
  public:
    TemplateReader(ov_template *tmpl, bool heading_only) : tmpl_(tmpl), heading_only_(heading_only) {}

    // The first failure's text, empty when reading succeeded.
    const std::string &error() const { return error_; }

  private:
    // What an open element is, which decides what its children are.
    enum class Kind {
        ignored,     // and everything inside it
        translation, // one translation of a multilingual string
        version,
        codesets,
        blocks, // "details", "condition" and "segment"
        report_type,
        block,
        row,
        item, // the older single-field row
        text_field,
        checkbox,
    };

    struct ReportTypeState {
        ov_template_report_type *report_type = nullptr;
        std::optional<ov::LangstrElements> name;
        std::string segments_error;
    };
    // The open "details", "condition" or "segment" element.
    struct BlocksState {
        ov_text_sheet_segment *segment = nullptr;
        Mode mode = Mode::details;
        bool is_segment = false;
        std::optional<ov::LangstrElements> header; // a segment's
        std::string blocks_error;
    };
    struct BlockState {
        ov_text_sheet_block *block = nullptr;
        std::optional<ov::LangstrElements> header;
        std::optional<ov::LangstrElements> group_header;
        std::string rows_error;
    };
    struct RowState {
        ov_text_sheet_row *row = nullptr;
        std::optional<ov::LangstrElements> header;
        std::optional<ov::LangstrElements> item_text;
        std::string fields_error;
    };
    struct FieldState {
        ov_text_sheet_field *field = nullptr;
        std::optional<ov::LangstrElements> text;
        std::string error; // of the "selected" attribute
    };

    bool start_element(const xmlChar *name, const Attributes &attributes) override
    {
        Kind kind = Kind::ignored;
        if (open_.empty()) // a child of the root
            kind = start_template_child(name, attributes);
        else
            switch (open_.back()) {
            case Kind::codesets:
                if (is_named(name, "codeset"))
                    start_codeset(attributes);
                break;
            case Kind::blocks:
                if (is_block_name(name, blocks_.mode))
                    kind = start_block();
                else if (blocks_.is_segment && is_named(name, "header"))
                    kind = start_translation(&*blocks_.header, attributes);
                break;
            case Kind::report_type:
                if (is_named(name, "name"))
                    kind = start_translation(&*report_type_.name, attributes);
                else if (is_named(name, "segment"))
                    kind = start_segment();
                break;
            case Kind::block:
                if (is_named(name, "row"))
                    kind = start_row(Kind::row);
                else if (is_named(name, legacy_names(blocks_.mode).item))
                    kind = start_row(Kind::item);
                else if (is_named(name, "header"))
                    kind = start_translation(&*block_.header, attributes);
                else if (is_named(name, legacy_names(blocks_.mode).group_header))
                    kind = start_translation(&*block_.group_header, attributes);
                break;
            case Kind::row:
                if (is_named(name, "header"))
                    kind = start_translation(&*row_.header, attributes);
                else if (is_named(name, "textfield"))
                    kind = start_field(OV_TEXT_SHEET_FIELD_KIND_TEXT_FIELD, attributes);
                else if (is_named(name, "checkbox"))
                    kind = start_field(OV_TEXT_SHEET_FIELD_KIND_CHECKBOX, attributes);
                break;
            case Kind::item:
                if (is_named(name, legacy_names(blocks_.mode).item_header))
                    kind = start_translation(&*row_.header, attributes);
                else if (blocks_.mode == Mode::details && is_named(name, "details-item-text"))
                    kind = start_translation(&*row_.item_text, attributes);
                break;
            case Kind::text_field:
                if (blocks_.mode == Mode::details && is_named(name, "contents"))
                    kind = start_translation(&*field_.text, attributes);
                break;
            case Kind::checkbox:
                if (is_named(name, "label"))
                    kind = start_translation(&*field_.text, attributes);
                break;
            case Kind::ignored:
            case Kind::translation:
            case Kind::version:
                break;
            }
        open_.push_back(kind);
        return kind == Kind::translation || kind == Kind::version;
    }

    void end_element(const std::string &text) override
    {
        const Kind kind = open_.back();
        open_.pop_back();
        switch (kind) {
        case Kind::translation:
            translation_target_->add(lang_, text);
            break;
        case Kind::version:
            version_.add(text);
            break;
        case Kind::blocks:
            if (blocks_.is_segment)
                end_segment();
            break;
        case Kind::report_type:
            end_report_type();
            break;
        case Kind::block:
            end_block();
            break;
        case Kind::row:
        case Kind::item:
            end_row(kind);
            break;
        case Kind::text_field:
        case Kind::checkbox:
            end_field();
            break;
        case Kind::ignored:
        case Kind::codesets:
            break;
        }
    }

    void end_root() override { finish_template(); }

    Kind start_template_child(const xmlChar *name, const Attributes &attributes)
    {
        if (is_named(name, "name"))
            return start_translation(&name_, attributes);
        if (is_named(name, "author"))
            return start_translation(&author_, attributes);
        if (is_named(name, "version"))
            return Kind::version;
        if (heading_only_) {
            if (name_.seen()) {
                finish_template();
                stop();
            }
            return Kind::ignored;
        }
        if (is_named(name, "codesets"))
            return Kind::codesets;
        if (is_named(name, "details"))
            return start_blocks(tmpl_->details, Mode::details, false);
        if (is_named(name, "condition"))
            return start_condition();
        if (is_named(name, "report-type")) {
            report_type_.report_type = ov_template_report_type_new(nullptr);
            ov_template_add_report_type(tmpl_, report_type_.report_type);
            report_type_.name.emplace(TRUE);
            report_type_.segments_error.clear();
            return Kind::report_type;
        }
        return Kind::ignored;
    }

    Kind start_translation(ov::LangstrElements *target, const Attributes &attributes)
    {
        translation_target_ = target;
        lang_ = attributes.find("lang", lang_text_);
        return Kind::translation;
    }

    // A codeset's failure counts among the template's children; the codesets
    // after the first failing one are not read.
    void start_codeset(const Attributes &attributes)
    {
        if (codesets_failed_)
            return;
        std::string value;
        gchar *file_name = ov_xml_copy_nonempty_required_attribute_value_as_latin1(
            attributes.find("filename", value), "filename");
        if (file_name == nullptr) {
            codesets_failed_ = true;
            keep_first(children_error_, ov_error_get());
            return;
        }
        ov_template_codeset *codeset = new ov_template_codeset{};
        codeset->file_name = file_name;
        ov_template_add_codeset(tmpl_, codeset);
    }

    Kind start_blocks(ov_text_sheet_segment *segment, Mode mode, bool is_segment)
    {
        blocks_.segment = segment;
        blocks_.mode = mode;
        blocks_.is_segment = is_segment;
        blocks_.blocks_error.clear();
        if (is_segment)
            blocks_.header.emplace(TRUE);
        return Kind::blocks;
    }

    // The older single-report form: one report type with a fixed name and a
    // single segment without a header.
    Kind start_condition()
    {
        ov_template_report_type *report_type = ov_template_report_type_new(nullptr);
        ov_langstr_set_translation(&report_type->name, ov_locale_get_uk_english(), "Condition Report");
        ov_langstr_set_translation(&report_type->name, ov_locale_get_swedish_swedish(),
                                   "Tillst\xE5ndsrapport");
        ov_template_add_report_type(tmpl_, report_type);
        ov_text_sheet_segment *segment = ov_text_sheet_segment_new(nullptr);
        ov_template_report_type_add_segment(report_type, segment);
        return start_blocks(segment, Mode::condition, false);
    }

    Kind start_segment()
    {
        ov_text_sheet_segment *segment = ov_text_sheet_segment_new(nullptr);
        ov_template_report_type_add_segment(report_type_.report_type, segment);
        return start_blocks(segment, Mode::condition, true);
    }

    // The blocks' first failure goes to the container of "details" and
    // "condition" (the template) right away, a segment's at its end.
    std::string &blocks_error() { return blocks_.is_segment ? blocks_.blocks_error : children_error_; }

    void end_segment()
    {
        if (!blocks_.header->finish(&blocks_.segment->header))
            keep_first(report_type_.segments_error, ov_error_get());
        else if (!blocks_.blocks_error.empty())
            keep_first(report_type_.segments_error, blocks_.blocks_error.c_str());
    }

    void end_report_type()
    {
        if (!report_type_.name->finish_required(&report_type_.report_type->name, "name"))
            keep_first(children_error_, ov_error_get());
        else if (!report_type_.segments_error.empty())
            keep_first(children_error_, report_type_.segments_error.c_str());
    }

    Kind start_block()
    {
        block_.block = ov_text_sheet_block_new(nullptr);
        ov_text_sheet_segment_add_block(blocks_.segment, block_.block);
        block_.header.emplace(TRUE);
        block_.group_header.emplace(TRUE);
        block_.rows_error.clear();
        return Kind::block;
    }

    // The header, or the older group header when there is none.
    void end_block()
    {
        ov_text_sheet_block *block = block_.block;
        if (!block_.header->finish(&block->header) ||
            (block->header == nullptr && !block_.group_header->finish(&block->header)))
            keep_first(blocks_error(), ov_error_get());
        else if (!block_.rows_error.empty())
            keep_first(blocks_error(), block_.rows_error.c_str());
    }

    Kind start_row(Kind kind)
    {
        row_.row = ov_text_sheet_row_new(nullptr);
        ov_text_sheet_block_add_row(block_.block, row_.row);
        row_.header.emplace(TRUE);
        row_.item_text.emplace(TRUE);
        row_.fields_error.clear();
        return kind;
    }

    // A row's header comes before its fields; an older item is a header
    // and one text field.
    void end_row(Kind kind)
    {
        ov_text_sheet_row *row = row_.row;
        const char *header_name = kind == Kind::item ? legacy_names(blocks_.mode).item_header : "header";
        if (!row_.header->finish_required(&row->header, header_name)) {
            keep_first(block_.rows_error, ov_error_get());
            return;
        }
        if (kind == Kind::item) {
            ov_text_sheet_field *field = ov_text_sheet_field_new(OV_TEXT_SHEET_FIELD_KIND_TEXT_FIELD);
            ov_text_sheet_row_add_field(row, field);
            if (!row_.item_text->finish(&field->text))
                keep_first(block_.rows_error, ov_error_get());
        } else if (!row_.fields_error.empty()) {
            keep_first(block_.rows_error, row_.fields_error.c_str());
        }
    }

    // Basic data carry pre-filled values (text field contents, ticked
    // checkboxes); report types only the layout of their fields.
    Kind start_field(std::uint32_t field_kind, const Attributes &attributes)
    {
        field_.field = ov_text_sheet_field_new(field_kind);
        ov_text_sheet_row_add_field(row_.row, field_.field);
        field_.text.emplace(field_kind == OV_TEXT_SHEET_FIELD_KIND_TEXT_FIELD ? FALSE : TRUE);
        field_.error.clear();
        if (field_kind == OV_TEXT_SHEET_FIELD_KIND_TEXT_FIELD)
            return Kind::text_field;
        if (blocks_.mode == Mode::details) {
            std::string value;
            if (!ov_xml_parse_attribute_value_as_boolean_with_fallback(
                    &field_.field->selected, attributes.find("selected", value), "selected", FALSE))
                field_.error = ov_error_get();
        }
        return Kind::checkbox;
    }

    void end_field()
    {
        ov_text_sheet_field *field = field_.field;
        bool read = true;
        if (!field_.error.empty()) {
            ov_error_set(field_.error.c_str());
            read = false;
        } else if (field->kind == OV_TEXT_SHEET_FIELD_KIND_CHECKBOX) {
            read = field_.text->finish_required(&field->text, "label");
        } else if (blocks_.mode == Mode::details) {
            read = field_.text->finish(&field->text);
        }
        if (!read)
            keep_first(row_.fields_error, ov_error_get());
    }

    void finish_template()
    {
        if (!name_.finish_required(&tmpl_->name, "name") || !author_.finish(&tmpl_->author) ||
            !version_.finish_nonempty_compact_latin1(&tmpl_->version))
            error_ = ov_error_get();
        else if (!children_error_.empty())
            error_ = children_error_;
        else if (tmpl_->report_types.is_empty() && !heading_only_)
            error_ = "Missing report types.";
    }

    ov_template *tmpl_;
    bool heading_only_;
    std::vector<Kind> open_; // the elements open inside the root
    ov::LangstrElements name_{TRUE};
    ov::LangstrElements author_{TRUE};
    ov::DistinctTextElement version_;
    bool codesets_failed_ = false;
    ReportTypeState report_type_;
    BlocksState blocks_;
    BlockState block_;
    RowState row_;
    FieldState field_;
    // The translation being read.
    ov::LangstrElements *translation_target_ = nullptr;
    const char *lang_ = nullptr; // its "lang" attribute, held in lang_text_
    std::string lang_text_;
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
    TemplateReader reader(tmpl.get(), heading_only);
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
