// Templates written and read as compact outlines, a temporary workspace, and
// answers to the multilingual text window for the tests of the documents'
// menus and choosers.
//
// Outline: segments "S1[B1[r1 r2[t c:Tick]] B2[]] S2[]", each name the
// UK English header ("-" for none); a row lists its fields only when it has
// some: "t" a text field, "t:text" one with contents, "c:label" a checkbox.
#pragma once

#include "frame/frame_test_support.h"
#include "widgets/widget_test_util.h"

#include "core/error.h"
#include "docs/template.h"
#include "docs/template_io.h"
#include "frame/window_stack.h"
#include "frame/workspace.h"
#include "widgets/langstr_editor.h"
#include "widgets/translation_entry.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace ov::test
{

using TemplatePtr = ov::Owned<ov_template, ov_template_destroy>;

namespace outline_detail
{

struct Item {
    std::string name;
    std::vector<Item> children;
};

inline std::vector<Item> parse(const char *&p)
{
    std::vector<Item> items;
    while (*p != '\0' && *p != ']') {
        if (*p == ' ') {
            ++p;
            continue;
        }
        Item item;
        while (*p != '\0' && *p != ' ' && *p != '[' && *p != ']')
            item.name += *p++;
        if (*p == '[') {
            item.children = parse(++p);
            if (*p == ']')
                ++p;
        }
        items.push_back(std::move(item));
    }
    return items;
}

inline LangstrPtr text_of(const std::string &name)
{
    return name == "-" ? LangstrPtr() : langstr_of("en-uk=" + name);
}

inline ov_text_sheet_row *row_of(const Item &item)
{
    ov_text_sheet_row *row = ov_text_sheet_row_new(text_of(item.name).get());
    for (const Item &f : item.children) {
        ov_text_sheet_field *field = ov_text_sheet_field_new(
            f.name[0] == 'c' ? OV_TEXT_SHEET_FIELD_KIND_CHECKBOX : OV_TEXT_SHEET_FIELD_KIND_TEXT_FIELD);
        if (f.name.size() > 2)
            field->text = text_of(f.name.substr(2)).release();
        ov_text_sheet_row_add_field(row, field);
    }
    return row;
}

inline void add_blocks(ov_text_sheet_segment *segment, const std::vector<Item> &blocks)
{
    for (const Item &b : blocks) {
        ov_text_sheet_block *block = ov_text_sheet_block_new(text_of(b.name).get());
        for (const Item &r : b.children)
            ov_text_sheet_block_add_row(block, row_of(r));
        ov_text_sheet_segment_add_block(segment, block);
    }
}

inline std::string name_of(const langstr *header)
{
    const char *text = ov_langstr_get_text(header, nullptr);
    return text != nullptr ? text : "-";
}

} // namespace outline_detail

// Adds the blocks of an outline ("B1[r1] B2[]") to the segment.
inline void add_blocks(ov_text_sheet_segment *segment, const char *blocks)
{
    outline_detail::add_blocks(segment, outline_detail::parse(blocks));
}

inline void add_segments(ov_template_report_type *report_type, const char *segments)
{
    for (const outline_detail::Item &s : outline_detail::parse(segments)) {
        ov_text_sheet_segment *segment = ov_text_sheet_segment_new(outline_detail::text_of(s.name).get());
        outline_detail::add_blocks(segment, s.children);
        ov_template_report_type_add_segment(report_type, segment);
    }
}

// A template named name with the basic data blocks and one report type per
// (name, segments) pair.
inline TemplatePtr template_of(const char *name, const char *details,
                               const std::vector<std::pair<const char *, const char *>> &report_types)
{
    TemplatePtr tmpl(ov_template_new());
    tmpl->name = outline_detail::text_of(name).release();
    add_blocks(tmpl->details, details);
    for (const auto &[type_name, segments] : report_types) {
        ov_template_report_type *report_type =
            ov_template_report_type_new(outline_detail::text_of(type_name).get());
        add_segments(report_type, segments);
        ov_template_add_report_type(tmpl.get(), report_type);
    }
    return tmpl;
}

inline std::string outline(const ov_text_sheet_row *row)
{
    std::string fields;
    for (const ov_text_sheet_field *field : row->fields) {
        fields += fields.empty() ? "" : " ";
        fields += field->kind == OV_TEXT_SHEET_FIELD_KIND_CHECKBOX ? "c" : "t";
        if (field->text != nullptr)
            fields += ":" + outline_detail::name_of(field->text);
    }
    return outline_detail::name_of(row->header) + (fields.empty() ? "" : "[" + fields + "]");
}

inline std::string outline(const ov_text_sheet_segment *segment)
{
    std::string blocks;
    for (const ov_text_sheet_block *block : segment->blocks) {
        std::string rows;
        for (const ov_text_sheet_row *row : block->rows)
            rows += (rows.empty() ? "" : " ") + outline(row);
        blocks += (blocks.empty() ? "" : " ") + outline_detail::name_of(block->header) + "[" + rows + "]";
    }
    return blocks;
}

inline std::string outline(const ov_template_report_type *report_type)
{
    std::string segments;
    for (const ov_text_sheet_segment *segment : report_type->segments)
        segments += (segments.empty() ? "" : " ") + outline_detail::name_of(segment->header) + "[" +
                    outline(segment) + "]";
    return segments;
}

// "details | Type: segments | ...".
inline std::string outline(const ov_template *tmpl)
{
    std::string text = outline(tmpl->details);
    for (const ov_template_report_type *report_type : tmpl->report_types)
        text += " | " + outline_detail::name_of(report_type->name) + ": " + outline(report_type);
    return text;
}

// The text field of the first entry of the multilingual text window on top.
inline GtkWidget *langstr_window_field()
{
    auto *editor = OV_LANGSTR_EDITOR(
        find_widget(GTK_WIDGET(top_window()), [](GtkWidget *w) { return OV_IS_LANGSTR_EDITOR(w); }));
    GList *entries = ov_langstr_editor_get_entries(editor);
    GtkWidget *field = ov_translation_entry_get_text_widget(OV_TRANSLATION_ENTRY(entries->data));
    g_list_free(entries);
    return field;
}

// Replaces the text in the multilingual text window on top and presses OK.
inline Script::Action enter_text(std::string text)
{
    return [text] {
        GtkWidget *field = langstr_window_field();
        gtk_editable_delete_text(GTK_EDITABLE(field), 0, -1);
        paste_text(field, text.c_str());
        click_button("OK");
    };
}

// UK English active, the window stack ready, the error buffer empty.
struct DocsGui : ErrorCleared {
    LocaleState keep_;
    void SetUp() override
    {
        ErrorCleared::SetUp();
        set_active("en-uk");
        ov_window_stack_init();
    }
    void TearDown() override
    {
        ov_window_stack_clean_up();
        flush_events();
        ErrorCleared::TearDown();
    }
};

// An open workspace in a temporary home folder, closed with the scope; the
// user folders GLib reports are restored afterwards.
class TempWorkspace
{
  public:
    TempWorkspace()
    {
        make_folder(dir_.file("home/Orvane Workspace"));
        make_folder(dir_.file("install"));
        g_set_user_dirs("HOME", dir_.file("home").c_str(), "XDG_CONFIG_HOME", dir_.file("config").c_str(),
                        nullptr);
        ov_workspace_set_install_folder_path(dir_.file("install").c_str());
        EXPECT_TRUE(ov_workspace_open()) << ov_error_get();
    }
    ~TempWorkspace()
    {
        ov_workspace_close();
        ov_workspace_set_install_folder_path(nullptr);
        g_set_user_dirs("HOME", home_.c_str(), "XDG_CONFIG_HOME", config_.c_str(), nullptr);
    }
    TempWorkspace(const TempWorkspace &) = delete;
    TempWorkspace &operator=(const TempWorkspace &) = delete;

    std::string path_of(const char *file_name) const
    {
        return std::string(ov_workspace_get_templates_folder_path()) + "/" + file_name;
    }
    void add(const char *file_name, const ov_template *tmpl) const
    {
        EXPECT_TRUE(ov_template_io_write_to_file(tmpl, path_of(file_name).c_str())) << ov_error_get();
    }

  private:
    std::string home_ = g_get_home_dir();
    std::string config_ = g_get_user_config_dir();
    TempDir dir_;
};

} // namespace ov::test
