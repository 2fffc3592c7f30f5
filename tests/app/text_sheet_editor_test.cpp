// The text sheet editor: the kept layout draws exactly what the plain
// drawing routines draw, whole or scrolled piece by piece; clicks,
// languages, undo and destruction.
#include "docs_gui/docs_gui_test_util.h"

#include "app/text_sheet_editor.h"
#include "docs_gui/undo_history.h"
#include "lang/event_bus.h"
#include "widgets/dropdown_panel.h"
#include "widgets/gfx_text.h"
#include "widgets/langstr_display.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using namespace ov::test;

namespace
{

ov_template_report_type *report_type_of(ov_template *tmpl)
{
    return tmpl->report_types.first();
}

// A template of the outlines (report type R and basic data), every text in
// UK English and, longer, in Swedish.
TemplatePtr make_template(const std::string &report_sheet, const char *basic_sheet = "")
{
    TemplatePtr tmpl = template_of("T", basic_sheet, {{"R", report_sheet.c_str()}});
    const auto translate = [](langstr *&ls) {
        if (ls != nullptr)
            ov_langstr_set_translation(
                &ls, ov_locale_get_swedish_swedish(),
                (std::string(ov_langstr_get_text(ls, nullptr)) + " p\xe5 svenska").c_str());
    };
    std::vector<ov_text_sheet_segment *> segments = {tmpl->details};
    for (ov_text_sheet_segment *segment : report_type_of(tmpl.get())->segments)
        segments.push_back(segment);
    for (ov_text_sheet_segment *segment : segments) {
        translate(segment->header);
        for (ov_text_sheet_block *block : segment->blocks) {
            translate(block->header);
            for (ov_text_sheet_row *row : block->rows) {
                translate(row->header);
                for (ov_text_sheet_field *field : row->fields)
                    translate(field->text);
            }
        }
    }
    return tmpl;
}

constexpr const char *rich_sheet =
    "Support[Canvas_with_a_title_long_enough_to_wrap_in_a_narrow_sheet[Tension[c:Good c:Slack "
    "C:Bulging_badly "
    "t] Tears_and_holes,_all_over_the_lower_left_corner[t c:Checked_after_the_text_field]] "
    "-[Untitled_block's_row[c:One c:Two c:Three c:Four c:Five c:Six]]] -[] Empty_segment[] "
    "Paint_layer[Surface[Cracks[C:None c:Age_cracks c:Drying_cracks t] Flaking]]";
constexpr const char *rich_basic_sheet = "Identification[Artist[t:Unknown_painter_of_the_north] Date[t]] "
                                         "-[Support[C:Canvas c:Panel c:Copper_plate_with_a_long_label]]";

struct Surface {
    ov::CairoSurfacePtr surface;
    int width() const { return cairo_image_surface_get_width(surface.get()); }
    const unsigned char *row(int y) const
    {
        cairo_surface_flush(surface.get());
        return cairo_image_surface_get_data(surface.get()) +
               y * cairo_image_surface_get_stride(surface.get());
    }
    // The first line in [0, lines) that differs from other's lines from other_top, or -1.
    int first_difference(const Surface &other, int other_top, int lines) const
    {
        for (int y = 0; y < lines; ++y)
            if (std::memcmp(row(y), other.row(other_top + y), std::size_t(width()) * 4) != 0)
                return y;
        return -1;
    }
};

Surface new_surface(int width, int height)
{
    return {ov::CairoSurfacePtr(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height))};
}

// An editor in a window of its own, off screen, sized width by height.
struct Page {
    GtkWidget *window = gtk_offscreen_window_new();
    GtkWidget *editor;
    ov_template *tmpl;
    bool basic;

    Page(ov_template *t, bool basic_data, int width, int height) : tmpl(t), basic(basic_data)
    {
        editor = basic ? text_sheet_editor_new_for_basic_data(tmpl)
                       : text_sheet_editor_new_for_report_type(tmpl, report_type_of(tmpl));
        g_object_set(editor, "vadjustment", gtk_adjustment_new(0, 0, 0, 0, 0, 0), nullptr);
        gtk_container_add(GTK_CONTAINER(window), editor);
        gtk_widget_show_all(window);
        resize(width, height);
    }
    ~Page()
    {
        gtk_widget_destroy(window);
        flush_events();
    }
    GtkAdjustment *vadjustment() const { return gtk_scrollable_get_vadjustment(GTK_SCROLLABLE(editor)); }
    int content_height() const { return int(gtk_adjustment_get_upper(vadjustment())); }
    void resize(int width, int height)
    {
        gtk_widget_set_size_request(editor, width, height);
        gtk_window_resize(GTK_WINDOW(window), width, height);
        wait_until([&] {
            return gtk_widget_get_allocated_width(editor) == width &&
                   gtk_widget_get_allocated_height(editor) == height;
        });
        flush_events(); // the idle measuring too
    }
    void scroll_to(int value)
    {
        gtk_adjustment_set_value(vadjustment(), value);
        flush_events();
    }
    Surface snapshot() const
    {
        Surface s =
            new_surface(gtk_widget_get_allocated_width(editor), gtk_widget_get_allocated_height(editor));
        gtk_widget_draw(editor, ov::CairoPtr(cairo_create(s.surface.get())).get());
        return s;
    }
};

// The whole page drawn by the drawing routines alone, every node laid out
// and painted on every draw; returns the content height.
int draw_plainly(const Page &page, cairo_t *cr, int width)
{
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_paint(cr);
    cairo_set_source_rgb(cr, 0, 0, 0);
    cairo_set_line_width(cr, 1);
    OvGfxTextSheetContext context{page.editor, cr, width, nullptr, TRUE, TRUE, nullptr};
    if (page.basic) {
        const int y = ov_gfx_text_sheet_draw_large_utf8_header(&context, 25, "Basic data", TRUE,
                                                               &page.tmpl->details->hit_area.menu);
        return ov_gfx_text_sheet_draw_segment(&context, y, page.tmpl->details, FALSE, FALSE);
    }
    ov_text_sheet_rect add_segments;
    int y = ov_gfx_text_sheet_draw_add_segments(&context, 0, &add_segments);
    for (ov_text_sheet_segment *segment : report_type_of(page.tmpl)->segments) {
        if (segment != report_type_of(page.tmpl)->segments.first())
            y = ov_gfx_text_sheet_draw_separator(&context, y, TRUE);
        y = ov_gfx_text_sheet_draw_segment(&context, y, segment, TRUE, FALSE);
    }
    return y;
}

using TextSheetEditorTest = SheetGui;

TEST_F(TextSheetEditorTest, PiecesDrawnWhileScrollingMatchTheSheetDrawnWhole)
{
    for (bool basic : {false, true}) {
        for (int width : {430, 700}) {
            SCOPED_TRACE(std::string(basic ? "basic data " : "report type ") + std::to_string(width));
            TemplatePtr tmpl = make_template(rich_sheet, rich_basic_sheet);
            Page page(tmpl.get(), basic, width, 120);
            const int height = page.content_height();
            ASSERT_GT(height, 2 * 113);

            // The plain routines first: their pixels are the reference.
            Surface plain = new_surface(width, height);
            EXPECT_EQ(draw_plainly(page, ov::CairoPtr(cairo_create(plain.surface.get())).get(), width),
                      height);

            page.resize(width, height);
            Surface whole = page.snapshot();
            EXPECT_EQ(whole.first_difference(plain, 0, height), -1);

            // Pieces that start and end anywhere: in rows, wrapped lines, gaps.
            constexpr int piece = 113;
            page.resize(width, piece);
            for (int offset = 0; offset <= height - piece; offset += 23) {
                page.scroll_to(offset);
                EXPECT_EQ(page.snapshot().first_difference(plain, offset, piece), -1) << "offset " << offset;
            }
            page.scroll_to(height);
            EXPECT_EQ(int(gtk_adjustment_get_value(page.vadjustment())), height - piece);
            EXPECT_EQ(page.snapshot().first_difference(plain, height - piece, piece), -1);
        }
    }
}

// What a click in the middle of r shows in a dropdown, closed again; "-"
// when no dropdown is shown and none is awaited.
std::string click_and_read_dropdown(GtkWidget *editor, const ov_text_sheet_rect &r, bool awaited = true)
{
    const auto dropdown = [] { return shown_toplevel([](GtkWidget *w) { return OV_IS_DROPDOWN_PANEL(w); }); };
    std::string shown = "-";
    Script script;
    if (awaited)
        script.when([&] { return dropdown() != nullptr; },
                    [&] {
                        auto *display = OV_LANGSTR_DISPLAY(
                            find_widget(dropdown(), [](GtkWidget *d) { return OV_IS_LANGSTR_DISPLAY(d); }));
                        GtkTextBuffer *buffer =
                            gtk_text_view_get_buffer(ov_langstr_display_get_text_view(display));
                        GtkTextIter start, end;
                        gtk_text_buffer_get_bounds(buffer, &start, &end);
                        shown = ov::GStr(gtk_text_buffer_get_text(buffer, &start, &end, FALSE)).get();
                        gtk_widget_destroy(dropdown());
                    });
    click_at(editor, r.x + r.width / 2, r.y + r.height / 2);
    finish(script);
    return dropdown() == nullptr ? shown : "open";
}

TEST_F(TextSheetEditorTest, ClicksOnStatusSymbolsShowTheTextInEveryLanguage)
{
    TemplatePtr tmpl = make_template(rich_sheet);
    TestWindow w;
    gtk_window_set_default_size(GTK_WINDOW(w.window), 500, 300);
    GtkWidget *scrolled = w.pack(gtk_scrolled_window_new(nullptr, nullptr), TRUE);
    GtkWidget *editor = text_sheet_editor_new_for_report_type(tmpl.get(), report_type_of(tmpl.get()));
    gtk_container_add(GTK_CONTAINER(scrolled), editor);
    gtk_widget_show_all(w.window);
    w.show();
    int changes = 0;
    count_signal(editor, "changed", changes);
    // Scrolled to the bottom, where the last segment is.
    ov_text_sheet_segment *segment = report_type_of(tmpl.get())->segments.last();
    ov_text_sheet_row *row = segment->blocks.first()->rows.first();
    ov_text_sheet_field *field = row->fields.first()->next;
    GtkAdjustment *vadjustment = gtk_scrollable_get_vadjustment(GTK_SCROLLABLE(editor));
    flush_events();
    gtk_adjustment_set_value(vadjustment, gtk_adjustment_get_upper(vadjustment));
    flush_events();
    wait_until([&] { return field->hit_area.status.width > 0; });
    ASSERT_TRUE(field->hit_area.status.y > 0 && field->hit_area.status.y < 250);

    EXPECT_TRUE(
        contains(click_and_read_dropdown(editor, field->hit_area.status), "Age cracks p\xc3\xa5 svenska"));
    EXPECT_TRUE(contains(click_and_read_dropdown(editor, row->hit_area.status), "Cracks p\xc3\xa5 svenska"));
    EXPECT_TRUE(contains(click_and_read_dropdown(editor, segment->hit_area.status), "Paint layer"));
    // Beside the symbols, and on a checkbox itself, nothing opens.
    ov_text_sheet_rect beside = row->hit_area.status;
    beside.x -= 20;
    EXPECT_EQ(click_and_read_dropdown(editor, beside, false), "-");
    EXPECT_EQ(click_and_read_dropdown(editor, field->hit_area.field, false), "-");
    EXPECT_EQ(changes, 0);
}

TEST_F(TextSheetEditorTest, FollowsTheActiveLocale)
{
    TemplatePtr tmpl = make_template(rich_sheet);
    Page page(tmpl.get(), false, 600, 400);
    const Surface english = page.snapshot();
    set_active("sv");
    flush_events();
    const Surface swedish = page.snapshot();
    EXPECT_NE(swedish.first_difference(english, 0, 400), -1);
    // Drawn afresh in Swedish: the same pixels, so every text and symbol followed.
    Page fresh(tmpl.get(), false, 600, 400);
    EXPECT_EQ(fresh.snapshot().first_difference(swedish, 0, 400), -1);
}

TEST_F(TextSheetEditorTest, DestroyingLetsGoOfAdjustmentsAndTheEventBus)
{
    TemplatePtr tmpl = make_template("Support[]");
    const guint handlers = ov_event_bus_count_handlers(OV_EVENT_ACTIVE_LOCALE_CHANGED);
    ov::ObjectRef<GtkAdjustment> adjustment;
    GtkWidget *editor = nullptr;
    gpointer was = nullptr;
    {
        TestWindow w;
        GtkWidget *scrolled = w.pack(gtk_scrolled_window_new(nullptr, nullptr), TRUE);
        editor = text_sheet_editor_new_for_basic_data(tmpl.get());
        was = editor;
        g_object_add_weak_pointer(G_OBJECT(editor), reinterpret_cast<gpointer *>(&editor));
        gtk_container_add(GTK_CONTAINER(scrolled), editor);
        w.show();
        EXPECT_EQ(ov_event_bus_count_handlers(OV_EVENT_ACTIVE_LOCALE_CHANGED), handlers + 1);
        adjustment =
            ov::ObjectRef<GtkAdjustment>::ref(gtk_scrollable_get_vadjustment(GTK_SCROLLABLE(editor)));
        EXPECT_NE(
            g_signal_handler_find(adjustment.get(), G_SIGNAL_MATCH_DATA, 0, 0, nullptr, nullptr, editor), 0u);
    }
    EXPECT_EQ(editor, nullptr); // finalized
    EXPECT_EQ(ov_event_bus_count_handlers(OV_EVENT_ACTIVE_LOCALE_CHANGED), handlers);
    EXPECT_EQ(g_signal_handler_find(adjustment.get(), G_SIGNAL_MATCH_DATA, 0, 0, nullptr, nullptr, was), 0u);
}

} // namespace

TEST_F(TextSheetEditorTest, UndoAndRedoListTheSheetAnewAndScrollToWhereTheEditWas)
{
    std::string sheet = "Support[Canvas[";
    for (int i = 0; i < 40; ++i)
        sheet += " Row_" + std::to_string(i) + "[t]";
    sheet += "]]";
    TemplatePtr tmpl = make_template(sheet);
    Page page(tmpl.get(), false, 300, 200);
    const int full_height = page.content_height();
    auto history = ov::ObjectRef<OvUndoHistory>::adopt(ov_undo_history_new());
    text_sheet_editor_set_undo_history(TEXT_SHEET_EDITOR(page.editor), history.get());
    g_signal_connect_swapped(history.get(), "applied", G_CALLBACK(text_sheet_editor_show_place), page.editor);

    ov_text_sheet_segment *segment = report_type_of(tmpl.get())->segments.first();
    ov_text_sheet_block *block = segment->blocks.first();
    ov_text_sheet_row *row = block->rows.last();
    const OvUndoPlace place = {TRUE, report_type_of(tmpl.get()), segment, block, row};
    ov_undo_history_record(history.get(), new ov::SpliceStep<ov_text_sheet_row>("Delete row", place, row,
                                                                                ov_text_sheet_row_destroy));
    text_sheet_editor_show_place(TEXT_SHEET_EDITOR(page.editor), &place);
    flush_events();
    EXPECT_LT(page.content_height(), full_height);

    ov_undo_history_undo(history.get());
    flush_events();
    EXPECT_EQ(page.content_height(), full_height);
    EXPECT_GT(gtk_adjustment_get_value(page.vadjustment()), full_height / 2); // the last row is in view

    page.scroll_to(0);
    ov_undo_history_redo(history.get());
    flush_events();
    EXPECT_LT(page.content_height(), full_height);
    EXPECT_EQ(gtk_adjustment_get_value(page.vadjustment()), 0); // the block's header is at the top
}
