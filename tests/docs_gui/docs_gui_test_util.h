// Templates built from and shown as compact outlines. Outline of a report type: "S1[B1[r1 r2] B2[]] S2[]",
// each name the UK English header ("-" for none). A row shows its fields when it has some: "r[t t:text
// c:label]" (text fields, checkboxes).
#pragma once

#include "frame/home_folder.h"
#include "widgets/widget_test_util.h"

#include "docs/template.h"
#include "docs/template_io.h"
#include "docs_gui/text_sheet_menu.h"
#include "frame/startup.h"
#include "frame/workspace.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace ov::test
{

using TemplatePtr = ov::Owned<ov_template, ov_template_destroy>;

// A UK English text; "_" stands for a space, "-" for no text.
inline LangstrPtr header_of(std::string name)
{
    if (name == "-")
        return LangstrPtr();
    std::replace(name.begin(), name.end(), '_', ' ');
    langstr *ls = nullptr;
    ov_langstr_set_translation(&ls, locale("en-uk"), name.c_str());
    return LangstrPtr(ls);
}

inline std::string name_of(const langstr *header)
{
    const char *text = ov_langstr_get_text(header, nullptr);
    return text != nullptr ? text : "-";
}

// Segments, blocks, rows and fields into a report type; without one,
// blocks, rows and fields into the segment. A field is "t" or "c" with an
// optional ":text", "C" a ticked checkbox.
inline void fill(ov_template_report_type *type, ov_text_sheet_segment *segment, const std::string &outline)
{
    int depth = type != nullptr ? 0 : 1;
    std::string name;
    for (char c : outline + " ") {
        if (c != '[' && c != ']' && c != ' ') {
            name += c;
            continue;
        }
        if (depth == 3 && !name.empty()) {
            ov_text_sheet_field *field = ov_text_sheet_field_new(
                name[0] == 't' ? OV_TEXT_SHEET_FIELD_KIND_TEXT_FIELD : OV_TEXT_SHEET_FIELD_KIND_CHECKBOX);
            field->selected = name[0] == 'C';
            field->text = name.size() > 2 ? header_of(name.substr(2)).release() : nullptr;
            ov_text_sheet_row_add_field(segment->blocks.last()->rows.last(), field);
        } else if (!name.empty()) {
            LangstrPtr header = header_of(name);
            if (depth == 0)
                ov_template_report_type_add_segment(type, segment = ov_text_sheet_segment_new(header.get()));
            else if (depth == 1)
                ov_text_sheet_segment_add_block(segment, ov_text_sheet_block_new(header.get()));
            else
                ov_text_sheet_block_add_row(segment->blocks.last(), ov_text_sheet_row_new(header.get()));
        }
        name.clear();
        depth += c == '[' ? 1 : c == ']' ? -1 : 0;
    }
}

// A template with basic data blocks and (name, segments) report types.
inline TemplatePtr template_of(const char *name, const char *details,
                               const std::vector<std::pair<const char *, const char *>> &report_types)
{
    TemplatePtr tmpl(ov_template_new());
    tmpl->name = header_of(name).release();
    fill(nullptr, tmpl->details, details);
    for (const auto &[type_name, segments] : report_types) {
        ov_template_report_type *type = ov_template_report_type_new(header_of(type_name).get());
        ov_template_add_report_type(tmpl.get(), type);
        fill(type, nullptr, segments);
    }
    return tmpl;
}

inline std::string outline(const ov_text_sheet_row *row)
{
    std::string fields;
    for (const ov_text_sheet_field *f : row->fields)
        fields += std::string(fields.empty() ? "" : " ") +
                  (f->kind == OV_TEXT_SHEET_FIELD_KIND_CHECKBOX ? "c" : "t") +
                  (f->text != nullptr ? ":" + name_of(f->text) : "");
    return name_of(row->header) + (fields.empty() ? "" : "[" + fields + "]");
}

inline std::string outline(const ov_text_sheet_segment *segment)
{
    std::string blocks;
    for (const ov_text_sheet_block *block : segment->blocks) {
        std::string rows;
        for (const ov_text_sheet_row *row : block->rows)
            rows += (rows.empty() ? "" : " ") + outline(row);
        blocks += (blocks.empty() ? "" : " ") + name_of(block->header) + "[" + rows + "]";
    }
    return blocks;
}

// "basic data blocks | Type: segments | ...".
inline std::string outline(const ov_template *tmpl)
{
    std::string text = outline(tmpl->details);
    for (const ov_template_report_type *type : tmpl->report_types) {
        text += " | " + name_of(type->name) + ":";
        for (const ov_text_sheet_segment *segment : type->segments)
            text += " " + name_of(segment->header) + "[" + outline(segment) + "]";
    }
    return text;
}

// Replaces the text of the multilingual text window on top and presses OK.
inline Script::Action enter_text(std::string text)
{
    return [text] {
        GtkWidget *field = translation_field(0);
        gtk_editable_delete_text(GTK_EDITABLE(field), 0, -1);
        paste_text(field, text.c_str());
        click_button("OK");
    };
}

using DocsGui = GuiTest;

// With the icons the sheets draw.
struct SheetGui : GuiTest {
    void SetUp() override
    {
        GuiTest::SetUp();
        ASSERT_TRUE(ov_startup_load_icon_images()) << ov_error_get();
    }
};

// An open workspace in a temporary home folder, closed with the scope.
struct TempWorkspace {
    HomeFolder home_;
    TempWorkspace()
    {
        make_folder(home_.home() + "/Orvane Workspace");
        make_folder(home_.file("install"));
        ov_workspace_set_install_folder_path(home_.file("install").c_str());
        EXPECT_TRUE(ov_workspace_open()) << ov_error_get();
    }
    ~TempWorkspace()
    {
        ov_workspace_close();
        ov_workspace_set_install_folder_path(nullptr);
    }
    std::string path_of(const char *file_name) const
    {
        return std::string(ov_workspace_get_templates_folder_path()) + "/" + file_name;
    }
    void add(const char *file_name, const ov_template *tmpl) const
    {
        EXPECT_TRUE(ov_template_io_write_to_file(tmpl, path_of(file_name).c_str())) << ov_error_get();
    }
};

struct Click {
    ov_template_report_type *type = nullptr;
    ov_text_sheet_segment *segment = nullptr;
    ov_text_sheet_block *block = nullptr;
    ov_text_sheet_row *row = nullptr;
};

// The last node of that name with what a click on it gives ("r4^": the
// block of r4); "empty" is empty space of the first report type, "basic"
// that of the basic data sheet.
inline Click click_on(ov_template *tmpl, std::string name)
{
    const bool parent = name.back() == '^';
    if (parent)
        name.pop_back();
    Click found;
    auto visit = [&](ov_template_report_type *type, ov_text_sheet_segment *segment) {
        if (type != nullptr && name_of(segment->header) == name)
            found = {type, segment};
        for (ov_text_sheet_block *block : segment->blocks) {
            if (name_of(block->header) == name)
                found = {type, segment, block};
            for (ov_text_sheet_row *row : block->rows)
                if (name_of(row->header) == name)
                    found = {type, segment, block, parent ? nullptr : row};
        }
    };
    visit(nullptr, tmpl->details);
    for (ov_template_report_type *type : tmpl->report_types)
        for (ov_text_sheet_segment *segment : type->segments)
            visit(type, segment);
    if (name == "empty")
        found.type = tmpl->report_types.first();
    return found;
}

inline std::string bytes(const ov_template *tmpl)
{
    TempDir dir;
    const std::string path = dir.file("t.template");
    EXPECT_TRUE(ov_template_io_write_to_file(tmpl, path.c_str())) << ov_error_get();
    return read_file(path);
}

// Runs the menu on the click with a history and returns whether the
// template changed; a change must be one step named after the entry that
// undoes to the bytes before it and redoes to those after it.
inline gboolean run_menu_undoably(ov_template *tmpl, const Click &c, const std::string &entry)
{
    const std::string before = bytes(tmpl);
    const auto history = ov::ObjectRef<OvUndoHistory>::adopt(ov_undo_history_new());
    const gboolean changed =
        ov_text_sheet_menu_run_with_history(tmpl, c.type, c.segment, c.block, c.row, nullptr, history.get());
    const std::string after = bytes(tmpl);
    EXPECT_EQ(bool(changed), after != before) << entry;
    if (changed) {
        EXPECT_EQ(ov_undo_history_get_undo_text(history.get()), entry);
        EXPECT_TRUE(ov_undo_history_undo(history.get()) && bytes(tmpl) == before) << entry;
        EXPECT_TRUE(ov_undo_history_redo(history.get()) && bytes(tmpl) == after) << entry;
    }
    return changed;
}

} // namespace ov::test
