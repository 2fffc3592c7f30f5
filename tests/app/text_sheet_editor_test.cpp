// The text sheet editor: the kept layout draws exactly what the plain
// drawing routines draw, whole or scrolled piece by piece; hit rectangles
// follow the layout rules; clicks, scrolling, languages and destruction.
#include "docs_gui/docs_gui_test_util.h"

#include "app/text_sheet_editor.h"
#include "docs_gui/undo_history.h"
#include "lang/event_bus.h"
#include "widgets/dropdown_panel.h"
#include "widgets/gfx_text.h"
#include "widgets/langstr_display.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

using namespace ov::test;

namespace
{

// Every text in UK English and, longer, in Swedish.
langstr *text_of(const std::string &english)
{
    langstr *ls = nullptr;
    ov_langstr_set_translation(&ls, ov_locale_get_uk_english(), english.c_str());
    ov_langstr_set_translation(&ls, ov_locale_get_swedish_swedish(), (english + " p\xe5 svenska").c_str());
    return ls;
}

ov_template_report_type *report_type_of(ov_template *tmpl)
{
    return tmpl->report_types.first();
}

void translate(langstr *&ls)
{
    if (ls != nullptr)
        ov_langstr_set_translation(
            &ls, ov_locale_get_swedish_swedish(),
            (std::string(ov_langstr_get_text(ls, nullptr)) + " p\xe5 svenska").c_str());
}

void translate(ov_text_sheet_segment *segment)
{
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

// A template of the outlines (report type R and basic data), every text in
// UK English and, longer, in Swedish.
TemplatePtr make_template(const std::string &report_sheet, const char *basic_sheet = "")
{
    TemplatePtr tmpl = template_of("T", basic_sheet, {{"R", report_sheet.c_str()}});
    translate(tmpl->details);
    for (ov_text_sheet_segment *segment : report_type_of(tmpl.get())->segments)
        translate(segment);
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
    int height() const { return cairo_image_surface_get_height(surface.get()); }
    const unsigned char *row(int y) const
    {
        cairo_surface_flush(surface.get());
        return cairo_image_surface_get_data(surface.get()) +
               y * cairo_image_surface_get_stride(surface.get());
    }
    guint32 pixel(int x, int y) const { return reinterpret_cast<const guint32 *>(row(y))[x] & 0xffffff; }
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

std::string describe(const ov_text_sheet_rect &r)
{
    return std::to_string(r.x) + "," + std::to_string(r.y) + " " + std::to_string(r.width) + "x" +
           std::to_string(r.height);
}

// Every recorded rectangle of the sheet, one node a line.
std::string rectangles_of(const ov_text_sheet_segment *segment)
{
    std::string s = "segment " + std::to_string(segment->hit_area.top) + " " +
                    describe(segment->hit_area.menu) + " " + describe(segment->hit_area.status) + "\n";
    for (const ov_text_sheet_block *block : segment->blocks) {
        s += " block " + std::to_string(block->hit_area.top) + " " + describe(block->hit_area.menu) + " " +
             describe(block->hit_area.status) + "\n";
        for (const ov_text_sheet_row *row : block->rows) {
            s += "  row " + describe(row->hit_area.menu) + " " + describe(row->hit_area.status) + "\n";
            for (const ov_text_sheet_field *field : row->fields)
                s += "   field " + describe(field->hit_area.field) + " " + describe(field->hit_area.status) +
                     "\n";
        }
    }
    return s;
}

std::string rectangles_of(const Page &page)
{
    if (page.basic)
        return rectangles_of(page.tmpl->details);
    std::string s;
    for (const ov_text_sheet_segment *segment : report_type_of(page.tmpl)->segments)
        s += rectangles_of(segment);
    return s;
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

            // The plain routines first: their pixels and rectangles are the reference.
            Surface plain = new_surface(width, height);
            EXPECT_EQ(draw_plainly(page, ov::CairoPtr(cairo_create(plain.surface.get())).get(), width),
                      height);
            const std::string plain_rectangles = rectangles_of(page);

            page.resize(width, height);
            Surface whole = page.snapshot();
            EXPECT_EQ(whole.first_difference(plain, 0, height), -1);
            EXPECT_EQ(rectangles_of(page), plain_rectangles);

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

// The layout rules worked out by hand from the sizes of single texts.
struct Sizes {
    OvGfxTextSheetContext context;
    int space_width = ov_gfx_text_sheet_get_plain_space_width(&context);
    int space_height = ov_gfx_text_sheet_get_plain_space_height(&context);
    // Width and height, rounded up, of a text block measured alone.
    std::pair<int, int> of(int style, const char *english, bool multilingual = true, bool icon = false,
                           int max_width = -1)
    {
        double width = 0, height = 0;
        if (multilingual) {
            ov::Owned<langstr, ov_langstr_free> ls(text_of(english));
            ov_gfx_text_sheet_draw_langstr_text_block(&context, style, ls.get(), TRUE, &width, &height, icon,
                                                      nullptr, nullptr, 0, 0, max_width);
        } else {
            ov_gfx_text_sheet_draw_utf8_text_block(&context, style, english, TRUE, &width, &height, icon,
                                                   nullptr, 0, 0, max_width);
        }
        return {int(std::ceil(width)), int(std::ceil(height))};
    }
};

TEST_F(TextSheetEditorTest, RectanglesFollowTheLayoutRules)
{
    constexpr int bold = OV_GFX_TEXT_STYLE_BOLD, plain = OV_GFX_TEXT_STYLE_PLAIN,
                  large = OV_GFX_TEXT_STYLE_LARGE;

    // One row with an empty text field, under a titled segment and block.
    {
        TemplatePtr tmpl = make_template("Support[Canvas[Tension[t]]]");
        Page page(tmpl.get(), false, 600, 100);
        const int content_height = page.content_height();
        page.resize(600, 1000);
        Sizes sizes{{page.editor, nullptr, 600, nullptr, FALSE, TRUE, nullptr}};
        ov_text_sheet_segment *segment = report_type_of(tmpl.get())->segments.first();
        ov_text_sheet_block *block = segment->blocks.first();
        ov_text_sheet_row *row = block->rows.first();
        const int block_top =
            sizes.of(plain, "Add segments", false).second + 47 + sizes.of(large, "Support").second + 17;
        const int row_top = block_top + 20 + sizes.of(bold, "Canvas").second + sizes.space_height;
        const auto [title_width, title_height] = sizes.of(bold, "Tension");
        const int column = std::max(std::min(sizes.of(bold, "Tension", true, true).first + 20, 550 / 3), 70);
        const auto [field_width, field_height] = sizes.of(plain, "Text field", false);
        EXPECT_EQ(block->hit_area.top, block_top);
        EXPECT_EQ(describe(row->hit_area.menu), describe({36 + title_width + sizes.space_width,
                                                          row_top + 11 + (title_height - 9 + 1) / 2, 11, 9}));
        EXPECT_EQ(describe(row->fields.first()->hit_area.field),
                  describe({column + 37, row_top + 11, field_width, field_height}));
        EXPECT_EQ(describe(row->fields.first()->hit_area.status), describe({}));
        const int row_bottom = std::max(row_top + 11 + field_height + 10, row_top + title_height + 21);
        EXPECT_EQ(content_height, row_bottom + 25);
    }

    // Three checkboxes that fit one to a line, then a text field on a line of
    // its own; an untitled block; a narrow widget keeps a 70-pixel column.
    for (int width : {400, 200}) {
        SCOPED_TRACE(width);
        TemplatePtr tmpl = make_template(
            "-[-[R[c:First_checkbox_label C:Second_checkbox_label c:Third_checkbox_label t:Text]]]");
        Page page(tmpl.get(), false, width, 1000);
        Sizes sizes{{page.editor, nullptr, width, nullptr, FALSE, TRUE, nullptr}};
        ov_text_sheet_segment *segment = report_type_of(tmpl.get())->segments.first();
        ov_text_sheet_block *block = segment->blocks.first();
        const int column = 70;
        const int field_area = std::max(width - 50 - column - 3, 50) - 20;
        const int label_room = field_area - 13 - sizes.space_width;
        ASSERT_GT(2 * sizes.of(plain, "Third checkbox label").first + 13 + sizes.space_width + 10,
                  label_room);
        const int row_top = block->hit_area.top + 20 + sizes.of(bold, "Untitled block", false, true).second +
                            sizes.space_height;
        int line_top = row_top + 11;
        for (const ov_text_sheet_field *field : block->rows.first()->fields) {
            const char *label = ov_langstr_get_text_for_locale(field->text, ov_locale_get_uk_english());
            if (field->kind == OV_TEXT_SHEET_FIELD_KIND_CHECKBOX) {
                const int line_height = sizes.of(plain, label).second;
                EXPECT_EQ(describe(field->hit_area.field),
                          describe({column + 37, line_top + (line_height - 13 + 1) / 2, 13, 13}));
                line_top += sizes.of(plain, label, true, false, label_room).second + 10;
            } else {
                EXPECT_EQ(field->hit_area.field.x, column + 37);
                EXPECT_EQ(field->hit_area.field.y, line_top);
                EXPECT_LE(field->hit_area.field.width, std::max(field_area, 30));
            }
        }
        EXPECT_EQ(describe(block->hit_area.status), describe({}));
        EXPECT_GT(block->hit_area.menu.width, 0);
        EXPECT_EQ(describe(segment->hit_area.status), describe({})); // "Untitled segment"
    }

    // A report type without segments is "Add segments" alone; a segment
    // without blocks ends 25 pixels below its title, then a separator.
    {
        TemplatePtr tmpl = make_template("", "-[Row[t]]");
        Page page(tmpl.get(), false, 500, 100);
        Sizes sizes{{page.editor, nullptr, 500, nullptr, FALSE, TRUE, nullptr}};
        const auto [add_width, add_height] = sizes.of(plain, "Add segments", false, true, 450);
        const int header = add_height + 47;
        EXPECT_LT(header, 100);
        EXPECT_EQ(page.content_height(), 100); // the page: nothing to scroll
        ov_text_sheet_rect add_segments = {};
        OvGfxTextSheetContext recording{page.editor, nullptr, 500, nullptr, TRUE, TRUE, nullptr};
        EXPECT_EQ(ov_gfx_text_sheet_draw_add_segments(&recording, 0, &add_segments), header);
        EXPECT_EQ(describe(add_segments),
                  describe({500 - add_width - 25 + add_width - 11, 22 + (add_height - 9 + 1) / 2, 11, 9}));

        TemplatePtr two = make_template("First[] Second[]");
        Page second(two.get(), false, 500, 1000);
        ov_text_sheet_segment *last = report_type_of(two.get())->segments.last();
        EXPECT_EQ(last->hit_area.top, header + sizes.of(large, "First").second + 17 + 25 + 1);

        // The basic data never shows "Untitled segment": its blocks follow the header.
        Page basic(tmpl.get(), true, 500, 1000);
        const int header_bottom = 25 + sizes.of(large, "Basic data", false, true).second - 8;
        EXPECT_EQ(tmpl->details->blocks.first()->hit_area.top, header_bottom);
        EXPECT_GT(tmpl->details->hit_area.menu.width, 0);
    }
}

TEST_F(TextSheetEditorTest, ShrinkingContentClampsTheScrollValue)
{
    TemplatePtr tmpl = make_template(rich_sheet);
    Page page(tmpl.get(), false, 300, 200);
    const int narrow_height = page.content_height();
    page.scroll_to(narrow_height);
    EXPECT_EQ(gtk_adjustment_get_value(page.vadjustment()), narrow_height - 200);
    page.resize(900, 200); // less wrapping: a shorter sheet
    const int wide_height = page.content_height();
    EXPECT_LT(wide_height, narrow_height);
    EXPECT_EQ(gtk_adjustment_get_value(page.vadjustment()), wide_height - 200);
    EXPECT_EQ(gtk_adjustment_get_page_size(page.vadjustment()), 200);
}

GtkWidget *shown_dropdown()
{
    return shown_toplevel([](GtkWidget *w) { return OV_IS_DROPDOWN_PANEL(w); });
}

// A click in the middle of r that opens nothing.
bool click_opens_nothing(GtkWidget *editor, const ov_text_sheet_rect &r)
{
    click_at(editor, r.x + r.width / 2, r.y + r.height / 2);
    return shown_dropdown() == nullptr;
}

// The text of the dropdown that a click in the middle of r opened; the
// dropdown is closed again.
std::string click_and_read_dropdown(GtkWidget *editor, const ov_text_sheet_rect &r)
{
    std::string shown;
    Script script;
    script.when([] { return shown_dropdown() != nullptr; },
                [&] {
                    auto *display = OV_LANGSTR_DISPLAY(
                        find_widget(shown_dropdown(), [](GtkWidget *d) { return OV_IS_LANGSTR_DISPLAY(d); }));
                    GtkTextBuffer *buffer =
                        gtk_text_view_get_buffer(ov_langstr_display_get_text_view(display));
                    GtkTextIter start, end;
                    gtk_text_buffer_get_bounds(buffer, &start, &end);
                    shown = ov::GStr(gtk_text_buffer_get_text(buffer, &start, &end, FALSE)).get();
                    gtk_widget_destroy(shown_dropdown());
                });
    click_at(editor, r.x + r.width / 2, r.y + r.height / 2);
    finish(script);
    return shown;
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
    ASSERT_GT(gtk_adjustment_get_value(vadjustment), 100);
    wait_until([&] { return field->hit_area.status.width > 0; });
    ASSERT_TRUE(field->hit_area.status.y > 0 && field->hit_area.status.y < 250);

    EXPECT_TRUE(
        contains(click_and_read_dropdown(editor, field->hit_area.status), "Age cracks p\xc3\xa5 svenska"));
    EXPECT_TRUE(contains(click_and_read_dropdown(editor, row->hit_area.status), "Cracks p\xc3\xa5 svenska"));
    EXPECT_TRUE(contains(click_and_read_dropdown(editor, segment->hit_area.status), "Paint layer"));
    // Beside the symbols, and on a checkbox itself, nothing opens.
    ov_text_sheet_rect beside = row->hit_area.status;
    beside.x -= 20;
    EXPECT_TRUE(click_opens_nothing(editor, beside));
    EXPECT_TRUE(click_opens_nothing(editor, field->hit_area.field));
    EXPECT_EQ(changes, 0);
}

// The row's menu icon opens the menu with the row drawn on grey, beside its
// column line too, until the menu closes; "Add segments" opens it too.
TEST_F(TextSheetEditorTest, MenuIconsOpenTheMenuWithTheRowHighlighted)
{
    TemplatePtr tmpl = make_template("Support[Canvas[Tension[c:Good] Other[t]]]");
    TestWindow w;
    gtk_window_set_default_size(GTK_WINDOW(w.window), 500, 300);
    GtkWidget *editor =
        w.pack(text_sheet_editor_new_for_report_type(tmpl.get(), report_type_of(tmpl.get())), TRUE);
    w.show();
    ov_text_sheet_row *row = report_type_of(tmpl.get())->segments.first()->blocks.first()->rows.first();
    wait_until([&] { return row->next->hit_area.menu.width > 0; });
    const ov_text_sheet_rect menu = row->hit_area.menu;
    // The row's background left of the title and of the checkbox; the next row's.
    auto backgrounds = [&] {
        Surface s =
            new_surface(gtk_widget_get_allocated_width(editor), gtk_widget_get_allocated_height(editor));
        gtk_widget_draw(editor, ov::CairoPtr(cairo_create(s.surface.get())).get());
        return std::to_string(s.pixel(30, menu.y)) + " " +
               std::to_string(s.pixel(row->fields.first()->hit_area.field.x - 4, menu.y)) + " " +
               std::to_string(s.pixel(30, row->next->hit_area.menu.y));
    };
    const std::string grey = std::to_string(0xe0e0e0) + " ", white = std::to_string(0xffffff);
    std::string while_open;
    answered(
        [&](Script &s) {
            s.when_menu([&] {
                while_open = backgrounds();
                dismiss_menu();
            });
        },
        [&] { click_at(editor, menu.x + 5, menu.y + 4); });
    EXPECT_EQ(while_open, grey + grey + white);
    EXPECT_EQ(backgrounds(), white + " " + white + " " + white);

    ov_text_sheet_rect add_segments = {};
    OvGfxTextSheetContext recording{editor, nullptr, gtk_widget_get_allocated_width(editor), nullptr, TRUE,
                                    TRUE,   nullptr};
    ov_gfx_text_sheet_draw_add_segments(&recording, 0, &add_segments);
    answered([](Script &s) { s.when_menu([] { dismiss_menu(); }); },
             [&] { click_at(editor, add_segments.x + 5, add_segments.y + 4); });
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
    {
        // Drawn afresh in Swedish: the same pixels, so every text and symbol followed.
        Page fresh(tmpl.get(), false, 600, 400);
        EXPECT_EQ(fresh.snapshot().first_difference(swedish, 0, 400), -1);
    }
    set_active("de-de"); // no German: the UK English texts with yellow symbols
    flush_events();
    const Surface german = page.snapshot();
    EXPECT_EQ(german.pixel(tmpl->report_types.first()->segments.first()->hit_area.status.x + 1,
                           tmpl->report_types.first()->segments.first()->hit_area.status.y),
              0xeeee00u);
    set_active("en-uk");
    flush_events();
    EXPECT_EQ(page.snapshot().first_difference(english, 0, 400), -1);
}

TEST_F(TextSheetEditorTest, DestroyingLetsGoOfAdjustmentsAndTheEventBus)
{
    TemplatePtr tmpl = make_template("Support[]");
    const guint handlers = ov_event_bus_count_handlers(OV_EVENT_ACTIVE_LOCALE_CHANGED);
    GtkAdjustment *adjustments[2];
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
        EXPECT_EQ(text_sheet_editor_get_report_type(TEXT_SHEET_EDITOR(editor)), nullptr);
        adjustments[0] = GTK_ADJUSTMENT(g_object_ref(gtk_scrollable_get_hadjustment(GTK_SCROLLABLE(editor))));
        adjustments[1] = GTK_ADJUSTMENT(g_object_ref(gtk_scrollable_get_vadjustment(GTK_SCROLLABLE(editor))));
        EXPECT_NE(g_signal_handler_find(adjustments[1], G_SIGNAL_MATCH_DATA, 0, 0, nullptr, nullptr, editor),
                  0u);
    }
    EXPECT_EQ(editor, nullptr); // finalized
    EXPECT_EQ(ov_event_bus_count_handlers(OV_EVENT_ACTIVE_LOCALE_CHANGED), handlers);
    for (GtkAdjustment *adjustment : adjustments) {
        EXPECT_EQ(g_signal_handler_find(adjustment, G_SIGNAL_MATCH_DATA, 0, 0, nullptr, nullptr, was), 0u);
        g_object_unref(adjustment);
    }
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
    const int value = int(gtk_adjustment_get_value(page.vadjustment()));
    EXPECT_GT(value, full_height / 2); // the last row is in view
    // What shows is what a fresh sheet of the same template shows there.
    Page fresh(tmpl.get(), false, 300, 200);
    fresh.scroll_to(value);
    EXPECT_EQ(page.snapshot().first_difference(fresh.snapshot(), 0, 200), -1);

    page.scroll_to(0);
    ov_undo_history_redo(history.get());
    flush_events();
    EXPECT_LT(page.content_height(), full_height);
    EXPECT_EQ(gtk_adjustment_get_value(page.vadjustment()), 0); // the block's header is at the top
}
