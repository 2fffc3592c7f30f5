#include "app/text_sheet_editor.h"

#include "app/text_sheet_focus.h"
#include "app/text_sheet_layout.h"
#include "core/raii.h"
#include "docs_gui/text_sheet_menu.h"
#include "gui/gui.h"
#include "lang/event_bus.h"
#include "widgets/gfx_text.h"
#include "widgets/langstr_display.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace
{

// What the widget keeps beside its plain fields.
struct Impl {
    Impl(ov_template *tmpl, ov_template_report_type *report_type) : layout(tmpl, report_type) {}
    TextSheetLayout layout;
    ov::Owned<OvGfxTextCache, ov_gfx_text_cache_destroy> texts{ov_gfx_text_cache_new()};
    ov::SourceGuard measure_idle;
    ov::SourceGuard settle_idle;
    int menus_running = 0;
    // The node with the keyboard focus: a piece of the layout (its index a
    // hint checked against the node before use) and, in a row, a field.
    TextSheetLayout::Kind focus_kind = TextSheetLayout::Kind::add_segments;
    const void *focus_node = nullptr;
    ov_text_sheet_field *focus_field = nullptr;
    std::size_t focus_piece = SIZE_MAX;
    // Borrowed: a history may keep a page of this editor for an undo.
    OvUndoHistory *history = nullptr;
};

} // namespace

struct _TextSheetEditor {
    GtkWidget parent_instance;
    GtkAdjustment *hadjustment;
    GtkAdjustment *vadjustment;
    GtkScrollablePolicy hscroll_policy;
    GtkScrollablePolicy vscroll_policy;
    ov_template *tmpl;
    ov_template_report_type *report_type;
    OvGfxTextSheetContext context;
    int content_height;
    ov_text_sheet_rect add_segments_rectangle;
    OvEventBusHandler *locale_connection;
    Impl *impl;
};

enum { PROP_0, PROP_HADJUSTMENT, PROP_HSCROLL_POLICY, PROP_VADJUSTMENT, PROP_VSCROLL_POLICY, N_PROPS };

static void text_sheet_editor_scrollable_init(GtkScrollableInterface *) {}

G_DEFINE_TYPE_WITH_CODE(TextSheetEditor, text_sheet_editor, GTK_TYPE_WIDGET,
                        G_IMPLEMENT_INTERFACE(GTK_TYPE_SCROLLABLE, text_sheet_editor_scrollable_init))

enum { SIGNAL_CHANGED, N_SIGNALS };
static guint signals[N_SIGNALS];

namespace
{

// How long one idle step measures the rest of the sheet.
constexpr gint64 idle_budget_us = 8000;

int scroll_offset(const TextSheetEditor *editor)
{
    return editor->vadjustment != nullptr ? int(gtk_adjustment_get_value(editor->vadjustment)) : 0;
}

void update_hadjustment(TextSheetEditor *editor)
{
    if (editor->hadjustment == nullptr)
        return;
    const double width = gtk_widget_get_allocated_width(GTK_WIDGET(editor));
    gtk_adjustment_configure(editor->hadjustment, 0, 0, width, 0.1 * width, 0.9 * width, width);
}

void update_vadjustment(TextSheetEditor *editor)
{
    if (editor->vadjustment == nullptr)
        return;
    const double page = gtk_widget_get_allocated_height(GTK_WIDGET(editor));
    const double upper = std::max(page, double(editor->content_height));
    const double value = std::min(gtk_adjustment_get_value(editor->vadjustment), upper - page);
    gtk_adjustment_configure(editor->vadjustment, value, 0, upper, 0.1 * page, 0.9 * page, page);
}

// The vertical adjustment follows the layout's height.
void settle_content_height(TextSheetEditor *editor)
{
    const int height = editor->impl->layout.content_height();
    if (height == editor->content_height)
        return;
    editor->content_height = height;
    update_vadjustment(editor);
}

gboolean measure_in_idle(gpointer data)
{
    auto *editor = TEXT_SHEET_EDITOR(data);
    TextSheetLayout &layout = editor->impl->layout;
    // What is on screen stays where it is while the pieces above it get
    // their real sizes, unless the view is at the end of the sheet, where it
    // stays.
    const int offset = scroll_offset(editor);
    const bool at_end =
        editor->vadjustment != nullptr && gtk_adjustment_get_value(editor->vadjustment) >=
                                              gtk_adjustment_get_upper(editor->vadjustment) -
                                                  gtk_adjustment_get_page_size(editor->vadjustment) - 0.5;
    const std::size_t anchor = layout.piece_at(offset);
    const int anchor_y = anchor < layout.pieces().size() ? layout.pieces()[anchor].y : 0;
    const bool more = layout.measure_some(&editor->context, idle_budget_us);
    settle_content_height(editor);
    const int moved = anchor < layout.pieces().size() ? layout.pieces()[anchor].y - anchor_y : 0;
    if (moved != 0 && !at_end && editor->vadjustment != nullptr)
        gtk_adjustment_set_value(editor->vadjustment, gtk_adjustment_get_value(editor->vadjustment) + moved);
    if (more)
        return G_SOURCE_CONTINUE;
    editor->impl->measure_idle.release();
    return G_SOURCE_REMOVE;
}

void measure_later(TextSheetEditor *editor)
{
    Impl *impl = editor->impl;
    if (!impl->layout.fully_measured() && impl->measure_idle.get() == 0)
        impl->measure_idle.reset(g_idle_add_full(G_PRIORITY_DEFAULT_IDLE, measure_in_idle, editor, nullptr));
}

// Measures what is on screen now, and the rest later.
void measure_onscreen(TextSheetEditor *editor)
{
    if (editor->impl == nullptr || !gtk_widget_get_realized(GTK_WIDGET(editor)))
        return;
    const int offset = scroll_offset(editor);
    editor->impl->layout.measure_range(&editor->context, offset,
                                       offset + gtk_widget_get_allocated_height(GTK_WIDGET(editor)));
    settle_content_height(editor);
    measure_later(editor);
}

gboolean settle_in_idle(gpointer data)
{
    auto *editor = TEXT_SHEET_EDITOR(data);
    editor->impl->settle_idle.release();
    settle_content_height(editor);
    return G_SOURCE_REMOVE;
}

void relayout(TextSheetEditor *editor)
{
    measure_onscreen(editor);
    gtk_widget_queue_draw(GTK_WIDGET(editor));
}

void on_value_changed(GtkAdjustment *adjustment, gpointer data)
{
    auto *editor = TEXT_SHEET_EDITOR(data);
    if (adjustment == editor->vadjustment)
        relayout(editor);
}

void on_active_locale_changed(gpointer data)
{
    auto *editor = TEXT_SHEET_EDITOR(data);
    ov_gfx_text_cache_clear(editor->impl->texts.get());
    editor->impl->layout.invalidate_all();
    relayout(editor);
}

void set_adjustment(TextSheetEditor *editor, bool horizontal, GtkAdjustment *adjustment)
{
    GtkAdjustment *&slot = horizontal ? editor->hadjustment : editor->vadjustment;
    if (adjustment != nullptr && adjustment == slot)
        return;
    if (slot != nullptr) {
        g_signal_handlers_disconnect_by_data(slot, editor);
        g_clear_object(&slot);
    }
    if (adjustment == nullptr)
        adjustment = gtk_adjustment_new(0, 0, 0, 0, 0, 0);
    g_signal_connect(adjustment, "value-changed", G_CALLBACK(on_value_changed), editor);
    slot = GTK_ADJUSTMENT(g_object_ref_sink(adjustment));
    if (horizontal) {
        update_hadjustment(editor);
    } else {
        update_vadjustment(editor);
        relayout(editor);
    }
    g_object_notify(G_OBJECT(editor), horizontal ? "hadjustment" : "vadjustment");
}

void release_adjustments(TextSheetEditor *editor)
{
    for (GtkAdjustment **slot : {&editor->hadjustment, &editor->vadjustment}) {
        if (*slot != nullptr)
            g_signal_handlers_disconnect_by_data(*slot, editor);
        g_clear_object(slot);
    }
}

void set_policy(TextSheetEditor *editor, GtkScrollablePolicy &slot, GtkScrollablePolicy policy,
                const char *name)
{
    if (slot == policy)
        return;
    slot = policy;
    gtk_widget_queue_resize(GTK_WIDGET(editor));
    g_object_notify(G_OBJECT(editor), name);
}

// The text sheet menu for what was clicked, at the pointer.
gboolean run_text_sheet_menu(TextSheetEditor *editor, ov_text_sheet_segment *segment,
                             ov_text_sheet_block *block, ov_text_sheet_row *row)
{
    return ov_text_sheet_menu_run_with_history(editor->tmpl, editor->report_type, segment, block, row,
                                               nullptr, editor->impl->history);
}

// Runs the menu; on a change the layout is listed anew, the sheet redrawn
// and "changed" emitted.
gboolean run_menu(TextSheetEditor *editor, ov_text_sheet_segment *segment, ov_text_sheet_block *block,
                  ov_text_sheet_row *row)
{
    Impl *impl = editor->impl;
    ++impl->menus_running;
    const gboolean changed = run_text_sheet_menu(editor, segment, block, row);
    --impl->menus_running;
    if (changed) {
        ov_gfx_text_cache_clear(impl->texts.get());
        impl->layout.rebuild();
        relayout(editor);
        g_signal_emit(editor, signals[SIGNAL_CHANGED], 0);
    }
    return changed;
}

// Gives the keyboard focus to a node (defined with the keys below).
void text_sheet_focus_set(TextSheetEditor *editor, TextSheetLayout::Kind kind, const void *node,
                          ov_text_sheet_field *field = nullptr, std::size_t piece_hint = SIZE_MAX);

bool hit(const ov_text_sheet_rect &rectangle, int x, int y)
{
    return ov_gfx_text_sheet_rect_contains(&rectangle, x, y);
}

bool press_in_row(TextSheetEditor *editor, ov_text_sheet_segment *segment, ov_text_sheet_block *block,
                  ov_text_sheet_row *row, int x, int y)
{
    for (const ov_text_sheet_field *field : row->fields) {
        if (hit(field->hit_area.status, x, y)) {
            ov_langstr_display_dropdown_run(field->text);
            return true;
        }
    }
    if (hit(row->hit_area.status, x, y)) {
        ov_langstr_display_dropdown_run(row->header);
        return true;
    }
    if (!hit(row->hit_area.menu, x, y))
        return false;
    text_sheet_focus_set(editor, TextSheetLayout::Kind::row, row);
    // The menu may change any row of the block and its title column.
    block->hit_area.layout_stamp = 0;
    editor->context.highlighted_row = row;
    gtk_widget_queue_draw(GTK_WIDGET(editor));
    run_menu(editor, segment, block, row);
    editor->context.highlighted_row = nullptr;
    gtk_widget_queue_draw(GTK_WIDGET(editor));
    return true;
}

bool press_in_block(TextSheetEditor *editor, ov_text_sheet_segment *segment, ov_text_sheet_block *block,
                    int x, int y)
{
    if (hit(block->hit_area.status, x, y)) {
        ov_langstr_display_dropdown_run(block->header);
        return true;
    }
    if (!hit(block->hit_area.menu, x, y))
        return false;
    text_sheet_focus_set(editor, TextSheetLayout::Kind::block_header, block);
    block->hit_area.layout_stamp = 0;
    run_menu(editor, segment, block, nullptr);
    return true;
}

bool press_in_segment_header(TextSheetEditor *editor, ov_text_sheet_segment *segment, int x, int y)
{
    if (hit(segment->hit_area.status, x, y)) {
        ov_langstr_display_dropdown_run(segment->header);
        return true;
    }
    if (!hit(segment->hit_area.menu, x, y))
        return false;
    text_sheet_focus_set(editor, TextSheetLayout::Kind::segment_header, segment);
    segment->hit_area.layout_stamp = 0;
    run_menu(editor, segment, nullptr, nullptr);
    return true;
}

// Only the pieces around the click can hold it; their rectangles are
// recorded afresh at the current scroll offset and tested in the sheet's
// order: a segment's rows block by block, each block after its rows, the
// segment after its blocks.
bool press_at(TextSheetEditor *editor, int x, int y)
{
    using namespace text_sheet_focus;
    const TextSheetLayout &layout = editor->impl->layout;
    const auto [first, last] =
        layout.record_around(&editor->context, scroll_offset(editor), y, &editor->add_segments_rectangle);
    const auto &pieces = layout.pieces();
    if (first == 0 && !layout.is_basic_data() && hit(editor->add_segments_rectangle, x, y)) {
        text_sheet_focus_set(editor, Kind::add_segments, nullptr);
        run_menu(editor, nullptr, nullptr, nullptr);
        return true;
    }
    for (std::size_t i = first; i < last;) {
        ov_text_sheet_segment *segment = pieces[i].segment;
        std::size_t end = i;
        bool header_recorded = false;
        for (; end < last && pieces[end].segment == segment; ++end)
            header_recorded = header_recorded || pieces[end].kind == Kind::segment_header ||
                              pieces[end].kind == Kind::basic_data_header;
        for (std::size_t k = i; k < end;) {
            ov_text_sheet_block *block = pieces[k].block;
            std::size_t block_end = k;
            while (block_end < end && pieces[block_end].block == block)
                ++block_end;
            if (block != nullptr) {
                for (std::size_t r = k; r < block_end; ++r)
                    if (pieces[r].kind == Kind::row &&
                        press_in_row(editor, segment, block, pieces[r].row, x, y))
                        return true;
                if (pieces[k].kind == Kind::block_header && press_in_block(editor, segment, block, x, y))
                    return true;
            }
            k = block_end;
        }
        if (segment != nullptr && header_recorded && press_in_segment_header(editor, segment, x, y))
            return true;
        i = end;
    }
    return false;
}

// The keyboard focus: one position (see text_sheet_focus.h), kept by its
// node, the piece's index a hint checked before use.

using namespace text_sheet_focus;

bool is_focus_piece(const Impl *impl, std::size_t index)
{
    const auto &pieces = impl->layout.pieces();
    return index < pieces.size() && pieces[index].kind == impl->focus_kind &&
           node_of(pieces[index]) == impl->focus_node;
}

// The focused piece's index. After an edit the node is looked up again; a
// node that is gone leaves the focus on what now takes its place.
std::size_t focus_index(TextSheetEditor *editor)
{
    Impl *impl = editor->impl;
    const TextSheetLayout &layout = impl->layout;
    const auto &pieces = layout.pieces();
    if (!is_focus_piece(impl, impl->focus_piece)) {
        std::size_t found = SIZE_MAX;
        if (impl->focus_piece != SIZE_MAX || impl->focus_node != nullptr)
            for (std::size_t i = 0; i < pieces.size() && found == SIZE_MAX; ++i)
                if (is_focus_piece(impl, i))
                    found = i;
        if (found == SIZE_MAX) {
            const std::size_t near =
                impl->focus_piece == SIZE_MAX ? 0 : std::min(impl->focus_piece, pieces.size() - 1);
            found = focusable_from(layout, near, 1);
            if (found == SIZE_MAX)
                found = focusable_from(layout, near, -1);
            impl->focus_field = nullptr;
            if (found == SIZE_MAX)
                return SIZE_MAX;
            impl->focus_kind = pieces[found].kind;
            impl->focus_node = node_of(pieces[found]);
        }
        impl->focus_piece = found;
    }
    if (impl->focus_field != nullptr &&
        (impl->focus_kind != Kind::row ||
         !row_has_field(static_cast<const ov_text_sheet_row *>(impl->focus_node), impl->focus_field)))
        impl->focus_field = nullptr;
    return impl->focus_piece;
}

void text_sheet_focus_set(TextSheetEditor *editor, Kind kind, const void *node, ov_text_sheet_field *field,
                          std::size_t piece_hint)
{
    Impl *impl = editor->impl;
    if (kind == Kind::segment_header && impl->layout.is_basic_data())
        kind = Kind::basic_data_header;
    impl->focus_kind = kind;
    impl->focus_node = node;
    impl->focus_field = field;
    impl->focus_piece = piece_hint;
    if (!is_focus_piece(impl, piece_hint))
        impl->focus_piece = SIZE_MAX;
    gtk_widget_queue_draw(GTK_WIDGET(editor));
}

void focus_piece(TextSheetEditor *editor, std::size_t index, ov_text_sheet_field *field = nullptr)
{
    const auto &piece = editor->impl->layout.pieces()[index];
    text_sheet_focus_set(editor, piece.kind, node_of(piece), field, index);
}

// The focused piece's band in page coordinates, measured first so that it
// is where it will be drawn.
std::pair<int, int> focus_band(TextSheetEditor *editor, std::size_t index)
{
    TextSheetLayout &layout = editor->impl->layout;
    if (gtk_widget_get_realized(GTK_WIDGET(editor))) {
        const int y = layout.pieces()[index].y;
        const int page = gtk_widget_get_allocated_height(GTK_WIDGET(editor));
        if (layout.measure_range(&editor->context, y - page, y + page))
            settle_content_height(editor);
    }
    const auto &piece = layout.pieces()[index];
    return {piece.y, piece.height};
}

// How far the focus frame reaches beyond its node's band.
constexpr int focus_margin = 5;

// Scrolls as little as it takes to show the focused node with its frame.
void scroll_to_focus(TextSheetEditor *editor)
{
    const std::size_t index = focus_index(editor);
    if (index == SIZE_MAX || editor->vadjustment == nullptr)
        return;
    auto [y, height] = focus_band(editor, index);
    y = std::max(y - focus_margin, 0);
    height += 2 * focus_margin;
    const double page = gtk_adjustment_get_page_size(editor->vadjustment);
    const double value = gtk_adjustment_get_value(editor->vadjustment);
    // A segment's title piece ends with its first block's title, but the
    // title itself is at its top: a band taller than the view shows its top.
    double target = value;
    if (y + height > value + page)
        target = y + height - page;
    if (y < target)
        target = y;
    if (target != value)
        gtk_adjustment_set_value(editor->vadjustment, target);
    gtk_widget_queue_draw(GTK_WIDGET(editor));
}

void focus_in_view(TextSheetEditor *editor)
{
    const std::size_t index = focus_index(editor);
    if (index == SIZE_MAX)
        return;
    const TextSheetLayout &layout = editor->impl->layout;
    const auto &piece = layout.pieces()[index];
    const int top = scroll_offset(editor);
    const int bottom = top + gtk_widget_get_allocated_height(GTK_WIDGET(editor));
    if (piece.y >= top && piece.y + piece.height <= bottom)
        return;
    const std::size_t first = focusable_from(layout, layout.piece_at(top), 1);
    if (first != SIZE_MAX && layout.pieces()[first].y < bottom)
        focus_piece(editor, first);
}

// One position on, through the rows' fields.
void move_focus(TextSheetEditor *editor, int step)
{
    Impl *impl = editor->impl;
    const std::size_t index = focus_index(editor);
    if (index == SIZE_MAX)
        return;
    const auto &pieces = impl->layout.pieces();
    if (impl->focus_kind == Kind::row) {
        auto *row = static_cast<ov_text_sheet_row *>(const_cast<void *>(impl->focus_node));
        ov_text_sheet_field *field = impl->focus_field;
        ov_text_sheet_field *next = nullptr;
        if (step > 0)
            next = field == nullptr ? row->fields.first()
                                    : (field->next->next != nullptr ? field->next : nullptr);
        else if (field != nullptr)
            next = field->previous->previous != nullptr ? field->previous : nullptr;
        if (next != nullptr || (step < 0 && field != nullptr)) {
            impl->focus_field = next;
            scroll_to_focus(editor);
            return;
        }
    }
    if (step < 0 && index == 0)
        return;
    const std::size_t to = focusable_from(impl->layout, index + std::size_t(std::ptrdiff_t(step)), step);
    if (to == SIZE_MAX)
        return;
    ov_text_sheet_field *field = nullptr;
    if (step < 0 && pieces[to].kind == Kind::row && !pieces[to].row->fields.is_empty())
        field = pieces[to].row->fields.last();
    focus_piece(editor, to, field);
    scroll_to_focus(editor);
}

void focus_edge(TextSheetEditor *editor, bool end)
{
    const TextSheetLayout &layout = editor->impl->layout;
    if (layout.pieces().empty())
        return;
    const std::size_t to =
        end ? focusable_from(layout, layout.pieces().size() - 1, -1) : focusable_from(layout, 0, 1);
    if (to == SIZE_MAX)
        return;
    ov_text_sheet_field *field = nullptr;
    if (end && layout.pieces()[to].kind == Kind::row && !layout.pieces()[to].row->fields.is_empty())
        field = layout.pieces()[to].row->fields.last();
    focus_piece(editor, to, field);
    scroll_to_focus(editor);
}

// A view's height on: the node at the same place a page further.
void move_focus_by_page(TextSheetEditor *editor, int step)
{
    const std::size_t index = focus_index(editor);
    if (index == SIZE_MAX || editor->vadjustment == nullptr)
        return;
    const TextSheetLayout &layout = editor->impl->layout;
    const int page = int(gtk_adjustment_get_page_size(editor->vadjustment));
    const int y = layout.pieces()[index].y + step * std::max(page, 1);
    std::size_t to = focusable_from(layout, std::min(layout.piece_at(y), layout.pieces().size() - 1), step);
    if (to == SIZE_MAX)
        to = focusable_from(layout, step > 0 ? layout.pieces().size() - 1 : 0, -step);
    if (to == SIZE_MAX || to == index) {
        focus_edge(editor, step > 0);
        return;
    }
    focus_piece(editor, to);
    scroll_to_focus(editor);
}

// The focused node's rectangle in widget coordinates: the field's own
// rectangle as last drawn, else the node's band across the sheet.
GdkRectangle focus_rectangle(TextSheetEditor *editor, std::size_t index)
{
    const auto &piece = editor->impl->layout.pieces()[index];
    const int width = gtk_widget_get_allocated_width(GTK_WIDGET(editor));
    const int offset = scroll_offset(editor);
    if (const ov_text_sheet_field *field = editor->impl->focus_field; field != nullptr) {
        const ov_text_sheet_rect &r = field->hit_area.field;
        if (r.width > 0 && r.height > 0)
            return {r.x - 3, r.y - 2, r.width + 6, r.height + 4};
    }
    // Around the rows' frames, which keep 25 pixels from either side (the
    // theme draws the focus a few pixels inside the rectangle).
    constexpr int inset = 16;
    return {inset, piece.y - offset - focus_margin, std::max(width - 2 * inset, 1),
            piece.height + 2 * focus_margin};
}

// Changes made through the menu's entries: the layout follows as after the
// menu itself.
gboolean after_edit(TextSheetEditor *editor, gboolean changed)
{
    Impl *impl = editor->impl;
    if (changed) {
        ov_gfx_text_cache_clear(impl->texts.get());
        impl->layout.rebuild();
        relayout(editor);
        g_signal_emit(editor, signals[SIGNAL_CHANGED], 0);
    }
    scroll_to_focus(editor);
    return changed;
}

GtkWindow *parent_window(TextSheetEditor *editor)
{
    GtkWidget *toplevel = gtk_widget_get_toplevel(GTK_WIDGET(editor));
    return GTK_IS_WINDOW(toplevel) ? GTK_WINDOW(toplevel) : nullptr;
}

void open_menu_at_focus(TextSheetEditor *editor)
{
    Impl *impl = editor->impl;
    const std::size_t index = focus_index(editor);
    if (index == SIZE_MAX)
        return;
    scroll_to_focus(editor);
    const FocusedNodes n = focused_nodes(impl->layout.pieces()[index]);
    const GdkRectangle rectangle = focus_rectangle(editor, index);
    if (n.block != nullptr)
        n.block->hit_area.layout_stamp = 0;
    else if (n.segment != nullptr)
        n.segment->hit_area.layout_stamp = 0;
    editor->context.highlighted_row = n.row;
    gtk_widget_queue_draw(GTK_WIDGET(editor));
    ++impl->menus_running;
    const gboolean changed =
        ov_text_sheet_menu_run_at_rect(editor->tmpl, editor->report_type, n.segment, n.block, n.row,
                                       GTK_WIDGET(editor), &rectangle, nullptr, impl->history);
    --impl->menus_running;
    editor->context.highlighted_row = nullptr;
    after_edit(editor, changed);
}

// Performs a menu entry on the nodes and keeps the focus on the node, or on
// the node the entry added.
void perform_on(TextSheetEditor *editor, const FocusedNodes &n, OvTextSheetMenuAction action)
{
    Impl *impl = editor->impl;
    if (n.block != nullptr)
        n.block->hit_area.layout_stamp = 0;
    else if (n.segment != nullptr)
        n.segment->hit_area.layout_stamp = 0;
    ++impl->menus_running;
    const gboolean changed = ov_text_sheet_menu_perform(editor->tmpl, editor->report_type, n.segment, n.block,
                                                        n.row, action, parent_window(editor), impl->history);
    --impl->menus_running;
    if (changed && action == OV_TEXT_SHEET_MENU_ADD_ROW_BELOW)
        text_sheet_focus_set(editor, Kind::row, n.row->next);
    else if (changed && action == OV_TEXT_SHEET_MENU_ADD_ROW_ABOVE)
        text_sheet_focus_set(editor, Kind::row, n.row->previous);
    else if (changed && action == OV_TEXT_SHEET_MENU_ADD_ROW)
        text_sheet_focus_set(editor, Kind::row, n.block->rows.last());
    else if (changed &&
             (action == OV_TEXT_SHEET_MENU_DELETE_ROW || action == OV_TEXT_SHEET_MENU_DELETE_BLOCK ||
              action == OV_TEXT_SHEET_MENU_DELETE_SEGMENT))
        impl->focus_node = nullptr; // gone: what takes its place gets the focus
    after_edit(editor, changed);
}

void perform_at_focus(TextSheetEditor *editor, OvTextSheetMenuAction action)
{
    const std::size_t index = focus_index(editor);
    if (index != SIZE_MAX)
        perform_on(editor, focused_nodes(editor->impl->layout.pieces()[index]), action);
}

// Enter: the focused node's header, or the field's own text.
void edit_at_focus(TextSheetEditor *editor)
{
    Impl *impl = editor->impl;
    if (focus_index(editor) == SIZE_MAX)
        return;
    if (impl->focus_field != nullptr) {
        const auto &piece = impl->layout.pieces()[impl->focus_piece];
        piece.block->hit_area.layout_stamp = 0;
        const FocusedNodes n = focused_nodes(piece);
        ++impl->menus_running;
        const gboolean changed = ov_text_sheet_menu_edit_field_text(editor->report_type, n.segment, n.block,
                                                                    n.row, impl->focus_field, impl->history);
        --impl->menus_running;
        after_edit(editor, changed);
        return;
    }
    switch (impl->focus_kind) {
    case Kind::segment_header:
        perform_at_focus(editor, OV_TEXT_SHEET_MENU_EDIT_SEGMENT_HEADER);
        break;
    case Kind::block_header:
        perform_at_focus(editor, OV_TEXT_SHEET_MENU_EDIT_BLOCK_HEADER);
        break;
    case Kind::row:
        perform_at_focus(editor, OV_TEXT_SHEET_MENU_EDIT_ROW_HEADER);
        break;
    default:
        // Titles without a text of their own offer their menu.
        open_menu_at_focus(editor);
        break;
    }
}

void move_at_focus(TextSheetEditor *editor, int step)
{
    const std::size_t index = focus_index(editor);
    if (index == SIZE_MAX)
        return;
    switch (editor->impl->focus_kind) {
    case Kind::segment_header:
        perform_at_focus(editor, step < 0 ? OV_TEXT_SHEET_MENU_MOVE_SEGMENT_UP
                                          : OV_TEXT_SHEET_MENU_MOVE_SEGMENT_DOWN);
        break;
    case Kind::block_header:
        perform_at_focus(editor,
                         step < 0 ? OV_TEXT_SHEET_MENU_MOVE_BLOCK_UP : OV_TEXT_SHEET_MENU_MOVE_BLOCK_DOWN);
        break;
    case Kind::row:
        perform_at_focus(editor,
                         step < 0 ? OV_TEXT_SHEET_MENU_MOVE_ROW_UP : OV_TEXT_SHEET_MENU_MOVE_ROW_DOWN);
        break;
    default:
        break;
    }
}

void delete_at_focus(TextSheetEditor *editor)
{
    if (focus_index(editor) == SIZE_MAX)
        return;
    switch (editor->impl->focus_kind) {
    case Kind::segment_header:
        perform_at_focus(editor, OV_TEXT_SHEET_MENU_DELETE_SEGMENT);
        break;
    case Kind::block_header:
        perform_at_focus(editor, OV_TEXT_SHEET_MENU_DELETE_BLOCK);
        break;
    case Kind::row:
        perform_at_focus(editor, OV_TEXT_SHEET_MENU_DELETE_ROW);
        break;
    default:
        break;
    }
}

void insert_at_focus(TextSheetEditor *editor)
{
    if (focus_index(editor) == SIZE_MAX)
        return;
    const Impl *impl = editor->impl;
    if (impl->focus_kind == Kind::row) {
        perform_at_focus(editor, OV_TEXT_SHEET_MENU_ADD_ROW_BELOW);
    } else if (impl->focus_kind == Kind::block_header) {
        const auto *block = static_cast<const ov_text_sheet_block *>(impl->focus_node);
        if (block->rows.is_empty())
            perform_at_focus(editor, OV_TEXT_SHEET_MENU_ADD_ROW);
        else
            // A new first row: asked for at the block, added above its first row.
            perform_on(editor,
                       {impl->layout.pieces()[impl->focus_piece].segment,
                        const_cast<ov_text_sheet_block *>(block), block->rows.first()},
                       OV_TEXT_SHEET_MENU_ADD_ROW_ABOVE);
    }
}

} // namespace

static void text_sheet_editor_get_property(GObject *object, guint id, GValue *value, GParamSpec *pspec)
{
    auto *editor = TEXT_SHEET_EDITOR(object);
    switch (id) {
    case PROP_HADJUSTMENT:
        g_value_set_object(value, editor->hadjustment);
        break;
    case PROP_VADJUSTMENT:
        g_value_set_object(value, editor->vadjustment);
        break;
    case PROP_HSCROLL_POLICY:
        g_value_set_enum(value, editor->hscroll_policy);
        break;
    case PROP_VSCROLL_POLICY:
        g_value_set_enum(value, editor->vscroll_policy);
        break;
    default:
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
    }
}

static void text_sheet_editor_set_property(GObject *object, guint id, const GValue *value, GParamSpec *pspec)
{
    auto *editor = TEXT_SHEET_EDITOR(object);
    switch (id) {
    case PROP_HADJUSTMENT:
        set_adjustment(editor, true, GTK_ADJUSTMENT(g_value_get_object(value)));
        break;
    case PROP_VADJUSTMENT:
        set_adjustment(editor, false, GTK_ADJUSTMENT(g_value_get_object(value)));
        break;
    case PROP_HSCROLL_POLICY:
        set_policy(editor, editor->hscroll_policy, GtkScrollablePolicy(g_value_get_enum(value)),
                   "hscroll-policy");
        break;
    case PROP_VSCROLL_POLICY:
        set_policy(editor, editor->vscroll_policy, GtkScrollablePolicy(g_value_get_enum(value)),
                   "vscroll-policy");
        break;
    default:
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
    }
}

static void text_sheet_editor_realize(GtkWidget *widget)
{
    ov_gui_realize_own_window(widget, GDK_BUTTON_PRESS_MASK | GDK_KEY_PRESS_MASK | GDK_FOCUS_CHANGE_MASK);
    relayout(TEXT_SHEET_EDITOR(widget));
}

static void text_sheet_editor_size_allocate(GtkWidget *widget, GtkAllocation *allocation)
{
    auto *editor = TEXT_SHEET_EDITOR(widget);
    ov_gui_allocate_own_window(widget, allocation);
    if (allocation->width != editor->context.width) {
        editor->context.width = allocation->width;
        editor->impl->layout.invalidate_all();
    }
    update_hadjustment(editor);
    update_vadjustment(editor);
    measure_onscreen(editor);
}

static void text_sheet_editor_get_preferred_size(GtkWidget *, int *minimum, int *natural)
{
    *minimum = *natural = 100;
}

static gboolean text_sheet_editor_draw(GtkWidget *widget, cairo_t *cr)
{
    auto *editor = TEXT_SHEET_EDITOR(widget);
    Impl *impl = editor->impl;
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_paint(cr);
    cairo_set_source_rgb(cr, 0, 0, 0);
    cairo_set_line_width(cr, 1);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_MITER);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_BUTT);
    cairo_set_dash(cr, nullptr, 0, 0);
    if (impl == nullptr)
        return FALSE;
    // A menu may have changed the sheet before it returns: list it anew.
    if (impl->menus_running > 0) {
        ov_gfx_text_cache_clear(impl->texts.get());
        impl->layout.rebuild();
    }
    OvGfxTextSheetContext context = editor->context;
    context.cairo = cr;
    context.width = gtk_widget_get_allocated_width(widget);
    const int offset = scroll_offset(editor);
    GdkRectangle clip;
    if (!gdk_cairo_get_clip_rectangle(cr, &clip))
        clip = {0, 0, context.width, gtk_widget_get_allocated_height(widget)};
    // Normally measured before the draw; should it not be, the scrollbar
    // learns the new height after the draw.
    if (impl->layout.measure_range(&context, offset + clip.y, offset + clip.y + clip.height) &&
        impl->settle_idle.get() == 0)
        impl->settle_idle.reset(g_idle_add(settle_in_idle, editor));
    impl->layout.paint(&context, offset, clip.y, clip.y + clip.height, &editor->add_segments_rectangle);
    if (gtk_widget_has_visible_focus(widget)) {
        if (const std::size_t index = focus_index(editor); index != SIZE_MAX) {
            const GdkRectangle r = focus_rectangle(editor, index);
            gtk_render_focus(gtk_widget_get_style_context(widget), cr, r.x, r.y, r.width, r.height);
        }
    }
    return FALSE;
}

static gboolean text_sheet_editor_button_press(GtkWidget *widget, GdkEventButton *event)
{
    if (event->type != GDK_BUTTON_PRESS || event->button != 1)
        return FALSE;
    if (!gtk_widget_is_focus(widget))
        gtk_widget_grab_focus(widget);
    return press_at(TEXT_SHEET_EDITOR(widget), int(event->x), int(event->y));
}

static gboolean text_sheet_editor_key_press(GtkWidget *widget, GdkEventKey *event)
{
    auto *editor = TEXT_SHEET_EDITOR(widget);
    if (editor->impl == nullptr)
        return FALSE;
    const guint modifiers = event->state & gtk_accelerator_get_default_mod_mask();
    const bool alt = modifiers == GDK_MOD1_MASK;
    const bool shift = modifiers == GDK_SHIFT_MASK;
    if (modifiers != 0 && !alt && !shift)
        return FALSE;
    switch (event->keyval) {
    case GDK_KEY_Up:
    case GDK_KEY_KP_Up:
    case GDK_KEY_Down:
    case GDK_KEY_KP_Down: {
        const int step = event->keyval == GDK_KEY_Up || event->keyval == GDK_KEY_KP_Up ? -1 : 1;
        if (alt)
            move_at_focus(editor, step);
        else if (modifiers == 0)
            move_focus(editor, step);
        else
            return FALSE;
        return TRUE;
    }
    case GDK_KEY_F10:
        if (!shift)
            return FALSE;
        open_menu_at_focus(editor);
        return TRUE;
    default:
        break;
    }
    if (modifiers != 0)
        return FALSE;
    switch (event->keyval) {
    case GDK_KEY_Home:
    case GDK_KEY_KP_Home:
        focus_edge(editor, false);
        return TRUE;
    case GDK_KEY_End:
    case GDK_KEY_KP_End:
        focus_edge(editor, true);
        return TRUE;
    case GDK_KEY_Page_Up:
    case GDK_KEY_KP_Page_Up:
        move_focus_by_page(editor, -1);
        return TRUE;
    case GDK_KEY_Page_Down:
    case GDK_KEY_KP_Page_Down:
        move_focus_by_page(editor, 1);
        return TRUE;
    case GDK_KEY_Menu:
        open_menu_at_focus(editor);
        return TRUE;
    case GDK_KEY_Return:
    case GDK_KEY_KP_Enter:
    case GDK_KEY_F2:
        edit_at_focus(editor);
        return TRUE;
    case GDK_KEY_Delete:
    case GDK_KEY_KP_Delete:
        delete_at_focus(editor);
        return TRUE;
    case GDK_KEY_Insert:
    case GDK_KEY_KP_Insert:
        insert_at_focus(editor);
        return TRUE;
    default:
        return FALSE;
    }
}

static gboolean text_sheet_editor_focus_in(GtkWidget *widget, GdkEventFocus *)
{
    auto *editor = TEXT_SHEET_EDITOR(widget);
    // The view stays where it is: a focused node scrolled out of view gives
    // way to the first node in view.
    if (editor->impl != nullptr)
        focus_in_view(editor);
    gtk_widget_queue_draw(widget);
    return FALSE;
}

static gboolean text_sheet_editor_focus_out(GtkWidget *widget, GdkEventFocus *)
{
    gtk_widget_queue_draw(widget);
    return FALSE;
}

static void text_sheet_editor_destroy(GtkWidget *widget)
{
    auto *editor = TEXT_SHEET_EDITOR(widget);
    release_adjustments(editor);
    if (editor->locale_connection != nullptr)
        ov_event_bus_disconnect(std::exchange(editor->locale_connection, nullptr));
    if (editor->impl != nullptr) {
        editor->impl->measure_idle.reset();
        editor->impl->settle_idle.reset();
        text_sheet_editor_set_undo_history(editor, nullptr);
    }
    GTK_WIDGET_CLASS(text_sheet_editor_parent_class)->destroy(widget);
}

static void text_sheet_editor_finalize(GObject *object)
{
    auto *editor = TEXT_SHEET_EDITOR(object);
    release_adjustments(editor);
    delete editor->impl;
    G_OBJECT_CLASS(text_sheet_editor_parent_class)->finalize(object);
}

static void text_sheet_editor_class_init(TextSheetEditorClass *klass)
{
    GObjectClass *object_class = G_OBJECT_CLASS(klass);
    object_class->get_property = text_sheet_editor_get_property;
    object_class->set_property = text_sheet_editor_set_property;
    object_class->finalize = text_sheet_editor_finalize;
    GtkWidgetClass *widget_class = GTK_WIDGET_CLASS(klass);
    widget_class->destroy = text_sheet_editor_destroy;
    widget_class->realize = text_sheet_editor_realize;
    widget_class->size_allocate = text_sheet_editor_size_allocate;
    widget_class->get_preferred_width = text_sheet_editor_get_preferred_size;
    widget_class->get_preferred_height = text_sheet_editor_get_preferred_size;
    widget_class->draw = text_sheet_editor_draw;
    widget_class->button_press_event = text_sheet_editor_button_press;
    widget_class->key_press_event = text_sheet_editor_key_press;
    widget_class->focus_in_event = text_sheet_editor_focus_in;
    widget_class->focus_out_event = text_sheet_editor_focus_out;
    g_object_class_override_property(object_class, PROP_HADJUSTMENT, "hadjustment");
    g_object_class_override_property(object_class, PROP_HSCROLL_POLICY, "hscroll-policy");
    g_object_class_override_property(object_class, PROP_VADJUSTMENT, "vadjustment");
    g_object_class_override_property(object_class, PROP_VSCROLL_POLICY, "vscroll-policy");
    signals[SIGNAL_CHANGED] = g_signal_new("changed", G_TYPE_FROM_CLASS(klass), G_SIGNAL_RUN_FIRST, 0,
                                           nullptr, nullptr, nullptr, G_TYPE_NONE, 0);
}

static void text_sheet_editor_init(TextSheetEditor *editor)
{
    gtk_widget_set_has_window(GTK_WIDGET(editor), TRUE);
    gtk_widget_set_can_focus(GTK_WIDGET(editor), TRUE);
    editor->context.widget = GTK_WIDGET(editor);
    editor->context.width = -1;
    editor->context.record_rectangles = TRUE;
    editor->context.editing = TRUE;
    editor->locale_connection =
        ov_event_bus_connect(OV_EVENT_ACTIVE_LOCALE_CHANGED, on_active_locale_changed, editor);
}

namespace
{

GtkWidget *new_editor(ov_template *tmpl, ov_template_report_type *report_type)
{
    auto *editor = static_cast<TextSheetEditor *>(g_object_new(TYPE_TEXT_SHEET_EDITOR, nullptr));
    editor->tmpl = tmpl;
    editor->report_type = report_type;
    editor->impl = new Impl(tmpl, report_type);
    editor->context.texts = editor->impl->texts.get();
    return GTK_WIDGET(editor);
}

} // namespace

GtkWidget *text_sheet_editor_new_for_report_type(ov_template *tmpl, ov_template_report_type *report_type)
{
    g_return_val_if_fail(tmpl != nullptr && report_type != nullptr, nullptr);
    return new_editor(tmpl, report_type);
}

GtkWidget *text_sheet_editor_new_for_basic_data(ov_template *tmpl)
{
    g_return_val_if_fail(tmpl != nullptr, nullptr);
    return new_editor(tmpl, nullptr);
}

ov_template_report_type *text_sheet_editor_get_report_type(TextSheetEditor *editor)
{
    g_return_val_if_fail(TEXT_SHEET_IS_EDITOR(editor), nullptr);
    return editor->report_type;
}

gboolean text_sheet_editor_get_focus(TextSheetEditor *editor, TextSheetEditorFocus *focus)
{
    g_return_val_if_fail(TEXT_SHEET_IS_EDITOR(editor) && focus != nullptr, FALSE);
    *focus = {};
    const std::size_t index = focus_index(editor);
    if (index == SIZE_MAX)
        return FALSE;
    const auto &piece = editor->impl->layout.pieces()[index];
    const FocusedNodes n = focused_nodes(piece);
    focus->segment = n.segment;
    focus->block = n.block;
    focus->row = n.row;
    focus->field = editor->impl->focus_field;
    focus->text = text_at(piece, focus->field);
    const GdkRectangle r = focus_rectangle(editor, index);
    focus->rectangle = r;
    return TRUE;
}

gboolean text_sheet_editor_focus_untranslated(TextSheetEditor *editor, gboolean forward, gboolean whole_page)
{
    g_return_val_if_fail(TEXT_SHEET_IS_EDITOR(editor), FALSE);
    Impl *impl = editor->impl;
    std::size_t start = SIZE_MAX;
    if (!whole_page) {
        start = focus_index(editor);
        if (start == SIZE_MAX)
            return FALSE;
    }
    std::size_t found = 0;
    ov_text_sheet_field *field = nullptr;
    if (!find_untranslated(impl->layout, start, whole_page ? nullptr : impl->focus_field, forward, &found,
                           &field))
        return FALSE;
    focus_piece(editor, found, field);
    if (!gtk_widget_is_focus(GTK_WIDGET(editor)))
        gtk_widget_grab_focus(GTK_WIDGET(editor));
    scroll_to_focus(editor);
    return TRUE;
}

void text_sheet_editor_set_undo_history(TextSheetEditor *editor, OvUndoHistory *history)
{
    g_return_if_fail(TEXT_SHEET_IS_EDITOR(editor));
    OvUndoHistory *&slot = editor->impl->history;
    if (slot != nullptr)
        g_object_remove_weak_pointer(G_OBJECT(slot), reinterpret_cast<gpointer *>(&slot));
    slot = history;
    if (slot != nullptr)
        g_object_add_weak_pointer(G_OBJECT(slot), reinterpret_cast<gpointer *>(&slot));
}

namespace
{

// The piece of the deepest node of the place that is on the page, or the
// number of pieces when none is.
std::size_t piece_of_place(const TextSheetLayout &layout, const OvUndoPlace &place)
{
    using Kind = TextSheetLayout::Kind;
    const auto &pieces = layout.pieces();
    std::size_t best = pieces.size();
    int best_depth = 0;
    for (std::size_t i = 0; i < pieces.size() && best_depth < 3; ++i) {
        const TextSheetLayout::Piece &piece = pieces[i];
        int depth = 0;
        if (piece.kind == Kind::row && place.row != nullptr && piece.row == place.row)
            depth = 3;
        else if (piece.kind == Kind::block_header && place.block != nullptr && piece.block == place.block)
            depth = 2;
        else if ((piece.kind == Kind::segment_header || piece.kind == Kind::basic_data_header) &&
                 place.segment != nullptr && piece.segment == place.segment)
            depth = 1;
        if (depth > best_depth) {
            best = i;
            best_depth = depth;
        }
    }
    return best;
}

} // namespace

void text_sheet_editor_show_place(TextSheetEditor *editor, const OvUndoPlace *place)
{
    g_return_if_fail(TEXT_SHEET_IS_EDITOR(editor) && place != nullptr);
    Impl *impl = editor->impl;
    // The nodes of the place may have new headers, fields or rows.
    for (ov_text_sheet_hit_area *area : {place->segment != nullptr ? &place->segment->hit_area : nullptr,
                                         place->block != nullptr ? &place->block->hit_area : nullptr,
                                         place->row != nullptr ? &place->row->hit_area : nullptr})
        if (area != nullptr)
            area->layout_stamp = 0;
    ov_gfx_text_cache_clear(impl->texts.get());
    impl->layout.rebuild();
    const std::size_t index = piece_of_place(impl->layout, *place);
    if (index < impl->layout.pieces().size() && editor->vadjustment != nullptr &&
        gtk_widget_get_realized(GTK_WIDGET(editor))) {
        const int page = gtk_widget_get_allocated_height(GTK_WIDGET(editor));
        const auto &piece = impl->layout.pieces()[index];
        impl->layout.measure_range(&editor->context, piece.y - page, piece.y + page);
        settle_content_height(editor);
        const auto &measured = impl->layout.pieces()[index];
        const double value = gtk_adjustment_get_value(editor->vadjustment);
        if (measured.y < value || measured.y + measured.height > value + page)
            gtk_adjustment_set_value(
                editor->vadjustment,
                std::max(0, measured.y + std::min(measured.height, page) / 2 - page / 2));
    }
    relayout(editor);
}
