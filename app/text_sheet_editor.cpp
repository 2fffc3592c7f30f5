#include "app/text_sheet_editor.h"

#include "app/text_sheet_layout.h"
#include "core/raii.h"
#include "docs_gui/text_sheet_menu.h"
#include "lang/event_bus.h"
#include "widgets/gfx_text.h"
#include "widgets/langstr_display.h"

#include <algorithm>
#include <memory>
#include <utility>

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
    using Kind = TextSheetLayout::Kind;
    const TextSheetLayout &layout = editor->impl->layout;
    const auto [first, last] =
        layout.record_around(&editor->context, scroll_offset(editor), y, &editor->add_segments_rectangle);
    const auto &pieces = layout.pieces();
    if (first == 0 && !layout.is_basic_data() && hit(editor->add_segments_rectangle, x, y)) {
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
    GtkAllocation allocation;
    gtk_widget_get_allocation(widget, &allocation);
    gtk_widget_set_realized(widget, TRUE);
    GdkWindowAttr attributes = {};
    attributes.window_type = GDK_WINDOW_CHILD;
    attributes.x = allocation.x;
    attributes.y = allocation.y;
    attributes.width = allocation.width;
    attributes.height = allocation.height;
    attributes.wclass = GDK_INPUT_OUTPUT;
    attributes.visual = gtk_widget_get_visual(widget);
    attributes.event_mask = gtk_widget_get_events(widget) | GDK_EXPOSURE_MASK | GDK_BUTTON_PRESS_MASK;
    GdkWindow *window = gdk_window_new(gtk_widget_get_parent_window(widget), &attributes,
                                       GDK_WA_X | GDK_WA_Y | GDK_WA_VISUAL);
    gtk_widget_register_window(widget, window);
    gtk_widget_set_window(widget, window);
    relayout(TEXT_SHEET_EDITOR(widget));
}

static void text_sheet_editor_size_allocate(GtkWidget *widget, GtkAllocation *allocation)
{
    auto *editor = TEXT_SHEET_EDITOR(widget);
    gtk_widget_set_allocation(widget, allocation);
    if (gtk_widget_get_realized(widget))
        gdk_window_move_resize(gtk_widget_get_window(widget), allocation->x, allocation->y, allocation->width,
                               allocation->height);
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
    return FALSE;
}

static gboolean text_sheet_editor_button_press(GtkWidget *widget, GdkEventButton *event)
{
    if (event->type != GDK_BUTTON_PRESS || event->button != 1)
        return FALSE;
    return press_at(TEXT_SHEET_EDITOR(widget), int(event->x), int(event->y));
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
