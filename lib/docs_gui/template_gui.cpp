#include "docs_gui/template_gui.h"

#include "core/error.h"
#include "core/raii.h"
#include "core/strings.h"
#include "docs/template_io.h"
#include "docs_gui/chooser_window.h"
#include "frame/message.h"
#include "frame/template_list.h"

#include <vector>

namespace
{

using TemplatePtr = ov::Owned<ov_template, ov_template_destroy>;

constexpr const char *no_content = "No available content.";

// One level of the chain below the template chooser.
struct Level {
    const char *title;
    const char *label;
    const char *column;
    const char *untitled; // shown for an item without a text, or null
};

constexpr Level report_type_level = {"Choose report type", "Select a report type:", "Name", nullptr};
constexpr Level segment_level = {"Choose segment", "Select a segment:", "Header", "Untitled segment"};
constexpr Level block_level = {"Choose block", "Select a block:", "Header", "Untitled block"};
constexpr Level row_level = {"Choose row", "Select a row:", "Header", nullptr};

// The chooser after this level for the mode, or null when this level ends
// the chain.
using Next = gpointer (*)(gpointer item, int mode);

// The item's text in the active locale as UTF-8, or the placeholder.
ov::GStr display_text(const langstr *text, const char *untitled)
{
    const char *latin1 = ov_langstr_get_text(text, nullptr);
    if (latin1 == nullptr || *latin1 == '\0')
        return ov::GStr(g_strdup(untitled != nullptr ? untitled : ""));
    return ov::GStr(ov_convert_latin1_to_utf8(latin1));
}

// Children of a sentinel list with their texts, in list order.
template <class T>
std::vector<std::pair<ov::GStr, gpointer>> items_of(const ov::SentinelList<T> &list, langstr *T::*text,
                                                    const char *untitled)
{
    std::vector<std::pair<ov::GStr, gpointer>> items;
    for (T *node : list)
        items.emplace_back(display_text(node->*text, untitled), node);
    return items;
}

// Shows the level's chooser, or skips it when it has one item and is not
// the last level. OK leads on to the next level; when that gives nothing
// the window stays open for another choice.
gpointer run_level(const Level &level, std::vector<std::pair<ov::GStr, gpointer>> items, int mode, Next next)
{
    if (items.empty()) {
        ov_message_show(no_content);
        return nullptr;
    }
    if (items.size() == 1 && next != nullptr)
        return next(items.front().second, mode);

    ov::ChooserWindow chooser(
        ov::ObjectRef<GtkListStore>::adopt(gtk_list_store_new(2, G_TYPE_STRING, G_TYPE_POINTER)));
    for (const auto &[text, item] : items)
        gtk_list_store_insert_with_values(chooser.store(), nullptr, -1, 0, text.get(), 1, item, -1);
    gpointer result = nullptr;
    chooser.run(level.title, level.label, level.column, 300, 300,
                [&](GtkTreeModel *model, GtkTreeIter *iter) {
                    gpointer item = nullptr;
                    gtk_tree_model_get(model, iter, 1, &item, -1);
                    result = next != nullptr ? next(item, mode) : item;
                    return result != nullptr;
                });
    return result;
}

gpointer next_segment(gpointer report_type, int mode)
{
    return ov_template_gui_segment_window_run(static_cast<ov_template_report_type *>(report_type), mode);
}

gpointer next_block(gpointer segment, int mode)
{
    return ov_template_gui_block_window_run(static_cast<ov_text_sheet_segment *>(segment), mode);
}

gpointer next_row(gpointer block, int)
{
    return ov_template_gui_row_window_run(static_cast<ov_text_sheet_block *>(block));
}

struct Target {
    ov_template *tmpl;
    ov_template_report_type *report_type;
    ov_text_sheet_segment *segment;
    ov_text_sheet_block *block;
};

// Runs the chain of the mode on the source and appends a clone of the chosen
// item to the target; false when nothing was chosen.
bool copy_from(ov_template *source, int mode, const Target &target)
{
    if (mode == OV_TEMPLATE_GUI_ALL_BASIC_DATA_BLOCKS) {
        if (!ov_text_sheet_segment_has_contents(source->details)) {
            ov_message_show(no_content);
            return false;
        }
        ov_text_sheet_segment_copy_contents(target.tmpl->details, source->details);
        return true;
    }
    const bool basic_data =
        mode == OV_TEMPLATE_GUI_BASIC_DATA_BLOCK || mode == OV_TEMPLATE_GUI_BASIC_DATA_ROW;
    gpointer item = basic_data ? ov_template_gui_block_window_run(source->details, mode)
                               : ov_template_gui_report_type_window_run(source, mode);
    if (item == nullptr)
        return false;
    switch (mode) {
    case OV_TEMPLATE_GUI_ALL_SEGMENTS_OF_REPORT_TYPE: {
        auto *report_type = static_cast<ov_template_report_type *>(item);
        if (!ov_text_sheet_has_segments(&report_type->segments)) {
            ov_message_show(no_content);
            return false;
        }
        ov_text_sheet_copy_segments(&target.report_type->segments, &report_type->segments);
        return true;
    }
    case OV_TEMPLATE_GUI_BASIC_DATA_BLOCK:
    case OV_TEMPLATE_GUI_BLOCK:
        ov_text_sheet_segment_add_block(target.segment,
                                        ov_text_sheet_block_clone(static_cast<ov_text_sheet_block *>(item)));
        return true;
    case OV_TEMPLATE_GUI_BASIC_DATA_ROW:
    case OV_TEMPLATE_GUI_ROW:
        ov_text_sheet_block_add_row(target.block,
                                    ov_text_sheet_row_clone(static_cast<ov_text_sheet_row *>(item)));
        return true;
    case OV_TEMPLATE_GUI_SEGMENT:
        ov_template_report_type_add_segment(
            target.report_type, ov_text_sheet_segment_clone(static_cast<ov_text_sheet_segment *>(item)));
        return true;
    default: // OV_TEMPLATE_GUI_REPORT_TYPE
        ov_template_add_report_type(
            target.tmpl, ov_template_report_type_clone(static_cast<ov_template_report_type *>(item)));
        return true;
    }
}

// The template chooser: reads the selected file and runs the mode's chain on
// it; stays open when the file cannot be read or the chain gives nothing.
gboolean run_template_chooser(int mode, const Target &target)
{
    ov::ChooserWindow chooser(
        ov::ObjectRef<GtkListStore>::adopt(gtk_list_store_new(2, G_TYPE_STRING, G_TYPE_STRING)));
    {
        ov::Owned<ov_template_list, ov_template_list_destroy> list(ov_template_list_load());
        for (ov_template_list_entry *entry : list->entries)
            gtk_list_store_insert_with_values(chooser.store(), nullptr, -1, 0, entry->ui_string, 1,
                                              entry->path, -1);
    }
    // Files left out of the list leave their reasons behind; they are not
    // shown, and must not precede the reason of a file that fails later.
    ov_error_clear();

    gboolean applied = FALSE;
    chooser.run("Choose template", "Select a template:", "Description", 400, 300,
                [&](GtkTreeModel *model, GtkTreeIter *iter) {
                    char *path = nullptr;
                    gtk_tree_model_get(model, iter, 1, &path, -1);
                    ov::GStr owned_path(path);
                    TemplatePtr source(ov_template_io_read_from_file(path));
                    if (source == nullptr) {
                        ov_error_append_utf8_printf("Error when loading template file:\n%s", path);
                        ov_message_show_error(ov_error_get());
                        ov_error_clear();
                        return false;
                    }
                    applied = copy_from(source.get(), mode, target);
                    return applied != FALSE;
                });
    return applied;
}

} // namespace

gboolean ov_template_gui_apply_template_to_template(int mode, ov_template *target,
                                                    ov_template_report_type *target_report_type,
                                                    ov_text_sheet_segment *target_segment,
                                                    ov_text_sheet_block *target_block)
{
    g_return_val_if_fail(mode >= OV_TEMPLATE_GUI_ALL_BASIC_DATA_BLOCKS && mode <= OV_TEMPLATE_GUI_REPORT_TYPE,
                         FALSE);
    switch (mode) {
    case OV_TEMPLATE_GUI_ALL_BASIC_DATA_BLOCKS:
    case OV_TEMPLATE_GUI_REPORT_TYPE:
        g_return_val_if_fail(target != nullptr, FALSE);
        break;
    case OV_TEMPLATE_GUI_ALL_SEGMENTS_OF_REPORT_TYPE:
    case OV_TEMPLATE_GUI_SEGMENT:
        g_return_val_if_fail(target_report_type != nullptr, FALSE);
        break;
    case OV_TEMPLATE_GUI_BASIC_DATA_BLOCK:
    case OV_TEMPLATE_GUI_BLOCK:
        g_return_val_if_fail(target_segment != nullptr, FALSE);
        break;
    default:
        g_return_val_if_fail(target_block != nullptr, FALSE);
        break;
    }
    return run_template_chooser(mode, Target{target, target_report_type, target_segment, target_block});
}

gpointer ov_template_gui_report_type_window_run(ov_template *source, int mode)
{
    g_return_val_if_fail(source != nullptr, nullptr);
    const bool last =
        mode == OV_TEMPLATE_GUI_ALL_SEGMENTS_OF_REPORT_TYPE || mode == OV_TEMPLATE_GUI_REPORT_TYPE;
    return run_level(report_type_level,
                     items_of(source->report_types, &ov_template_report_type::name, nullptr), mode,
                     last ? nullptr : next_segment);
}

gpointer ov_template_gui_segment_window_run(ov_template_report_type *report_type, int mode)
{
    g_return_val_if_fail(report_type != nullptr, nullptr);
    return run_level(segment_level,
                     items_of(report_type->segments, &ov_text_sheet_segment::header, segment_level.untitled),
                     mode, mode == OV_TEMPLATE_GUI_SEGMENT ? nullptr : next_block);
}

gpointer ov_template_gui_block_window_run(ov_text_sheet_segment *segment, int mode)
{
    g_return_val_if_fail(segment != nullptr, nullptr);
    const bool last = mode == OV_TEMPLATE_GUI_BASIC_DATA_BLOCK || mode == OV_TEMPLATE_GUI_BLOCK;
    return run_level(block_level,
                     items_of(segment->blocks, &ov_text_sheet_block::header, block_level.untitled), mode,
                     last ? nullptr : next_row);
}

ov_text_sheet_row *ov_template_gui_row_window_run(ov_text_sheet_block *block)
{
    g_return_val_if_fail(block != nullptr, nullptr);
    return static_cast<ov_text_sheet_row *>(
        run_level(row_level, items_of(block->rows, &ov_text_sheet_row::header, nullptr), 0, nullptr));
}
