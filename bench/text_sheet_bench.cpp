// The text sheet editor on a long page, in a 1000 by 800 scrolled window:
// scroll frames through the whole sheet (against the same at 1,000 rows), the
// first frame of a fresh page, the layout finished in idle time, the frame
// after a new width and after an edit near the top, the keyboard focus moved
// node by node and page by page, and the memory of the kept layout. Run
// under xvfb-run; wall times, one run.
//
//   ov_bench_text_sheet [BLOCKS]   (default 2000 blocks of ten rows)
#include "template_generator.h"

#include "app/text_sheet_editor.h"
#include "app/text_sheet_layout.h"
#include "core/error.h"
#include "core/raii.h"
#include "frame/startup.h"
#include "lang/active_locale.h"
#include "lang/locale.h"

#include <gtk/gtk.h>

#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

#include "main_loop_timing.h"

namespace
{

using namespace ov::bench;

using TemplatePtr = ov::Owned<ov_template, ov_template_destroy>;

// Processor time of this thread: steadier than wall time on a busy machine.
double cpu_ms()
{
    timespec t = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) * 1000.0 + double(t.tv_nsec) / 1e6;
}

struct Shown {
    GtkWidget *window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    GtkWidget *editor;
    bool drawn = false;
    double drawn_at = 0;

    explicit Shown(ov_template *tmpl)
    {
        gtk_window_set_default_size(GTK_WINDOW(window), 1000, 800);
        GtkWidget *scrolled = gtk_scrolled_window_new(nullptr, nullptr);
        gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scrolled), GTK_POLICY_NEVER, GTK_POLICY_ALWAYS);
        editor = text_sheet_editor_new_for_report_type(tmpl, tmpl->report_types.first());
        g_signal_connect_after(editor, "draw", G_CALLBACK(+[](GtkWidget *, cairo_t *, Shown *self) {
                                   self->drawn = true;
                                   self->drawn_at = now_ms();
                                   return FALSE;
                               }),
                               this);
        gtk_container_add(GTK_CONTAINER(scrolled), editor);
        gtk_container_add(GTK_CONTAINER(window), scrolled);
    }
    ~Shown() { gtk_widget_destroy(window); }
    GtkAdjustment *vadjustment() const { return gtk_scrollable_get_vadjustment(GTK_SCROLLABLE(editor)); }
    // The time from now until the next draw has finished.
    double next_frame(const std::function<void()> &action)
    {
        drawn = false;
        const double start = now_ms();
        action();
        run_until([this] { return drawn; });
        return drawn_at - start;
    }
};

struct Frames {
    std::vector<double> cpu, wall;
};

// Times of scrolling one page increment at a time through the whole sheet:
// the new value handled and the view drawn.
Frames scroll_frames(Shown &shown)
{
    GtkAdjustment *adjustment = shown.vadjustment();
    const int width = gtk_widget_get_allocated_width(shown.editor);
    const int height = gtk_widget_get_allocated_height(shown.editor);
    ov::CairoSurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height));
    ov::CairoPtr cr(cairo_create(surface.get()));
    Frames times;
    const double last = gtk_adjustment_get_upper(adjustment) - gtk_adjustment_get_page_size(adjustment);
    for (double value = 0; value <= last; value += gtk_adjustment_get_page_increment(adjustment)) {
        const double start = now_ms(), start_cpu = cpu_ms();
        gtk_adjustment_set_value(adjustment, value);
        gtk_widget_draw(shown.editor, cr.get());
        cairo_surface_flush(surface.get());
        times.cpu.push_back(cpu_ms() - start_cpu);
        times.wall.push_back(now_ms() - start);
    }
    return times;
}

int count_rows(const ov_template *tmpl)
{
    int rows = 0;
    for (const ov_text_sheet_segment *segment : tmpl->report_types.first()->segments)
        for (const ov_text_sheet_block *block : segment->blocks)
            rows += int(ov::list_count(block->rows));
    return rows;
}

} // namespace

int main(int argc, char **argv)
{
    gtk_init(&argc, &argv);
    const int blocks = argc > 1 ? std::atoi(argv[1]) : 2000;
    ov_ovinternal_set_system_locale(ov_locale_get_uk_english());
    ov_ovinternal_set_active_locale(ov_locale_get_uk_english());
    if (!ov_startup_load_icon_images()) {
        std::printf("%s\n", ov_error_get());
        return 1;
    }

    // The small sheet's scroll frames, for the ratio.
    TemplatePtr small(ov_bench_make_long_sheet_template(100));
    Frames small_frames;
    {
        Shown shown(small.get());
        gtk_widget_show_all(shown.window);
        run_until([&] { return shown.drawn; });
        run_until_quiet();
        small_frames = scroll_frames(shown);
    }

    TemplatePtr tmpl(ov_bench_make_long_sheet_template(blocks));
    const int rows = count_rows(tmpl.get());
    std::printf("text sheet editor: %d rows, 1000 x 800 window, %d cores\n", rows,
                int(g_get_num_processors()));
    Shown shown(tmpl.get());
    const double opened = now_ms();
    shown.next_frame([&] { gtk_widget_show_all(shown.window); });
    std::printf("first frame of a fresh page: %.1f ms (goal <= 100 ms)\n", shown.drawn_at - opened);
    run_until_quiet();
    std::printf("whole layout finished in idle time: %.0f ms after opening, content %d px\n",
                now_ms() - opened - 50, int(gtk_adjustment_get_upper(shown.vadjustment())));

    const Frames frames = scroll_frames(shown);
    std::printf("scroll frame p50: %.2f ms processor time (%.2f ms wall) over %zu page offsets\n",
                percentile(frames.cpu, 0.5), percentile(frames.wall, 0.5), frames.cpu.size());
    const double p95 = percentile(frames.cpu, 0.95), small_p95 = percentile(small_frames.cpu, 0.95);
    std::printf(
        "scroll frame p95: %.2f ms processor time (goal <= 8 ms), %.2f ms wall; at 1,000 rows %.2f ms, "
        "ratio %.2f (goal <= 1.5)\n",
        p95, percentile(frames.wall, 0.95), small_p95, p95 / small_p95);

    gtk_adjustment_set_value(shown.vadjustment(), 0);
    run_until_quiet();
    const double resized = shown.next_frame([&] { gtk_window_resize(GTK_WINDOW(shown.window), 900, 800); });
    std::printf("new width, next frame: %.1f ms (goal <= 100 ms)\n", resized);
    const double resize_start = now_ms();
    run_until_quiet();
    std::printf("new width, whole layout again in idle time: %.0f ms\n", now_ms() - resize_start - 50);

    // The keyboard focus moved one node, or a page, at a time from the top:
    // the key handled, the view scrolled and the next frame drawn.
    {
        gtk_adjustment_set_value(shown.vadjustment(), 0);
        gtk_widget_grab_focus(shown.editor);
        run_until_quiet();
        auto key = [&](guint keyval) {
            GdkEvent *event = gdk_event_new(GDK_KEY_PRESS);
            event->key.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(shown.editor)));
            event->key.send_event = TRUE;
            event->key.time = GDK_CURRENT_TIME;
            event->key.keyval = keyval;
            gdk_event_set_device(event, gdk_seat_get_keyboard(gdk_display_get_default_seat(
                                            gtk_widget_get_display(shown.editor))));
            const double start_cpu = cpu_ms();
            const double wall = shown.next_frame([&] { gtk_widget_event(shown.editor, event); });
            gdk_event_free(event);
            return std::pair(cpu_ms() - start_cpu, wall);
        };
        key(GDK_KEY_Home);
        Frames down, page;
        for (int i = 0; i < 3000; ++i) {
            const auto [cpu, wall] = key(GDK_KEY_Down);
            down.cpu.push_back(cpu);
            down.wall.push_back(wall);
        }
        for (int i = 0; i < 300; ++i) {
            const auto [cpu, wall] = key(GDK_KEY_Page_Down);
            page.cpu.push_back(cpu);
            page.wall.push_back(wall);
        }
        const auto [end_cpu, end_wall] = key(GDK_KEY_End);
        std::printf(
            "focus one node down, next frame p95: %.2f ms processor time (goal <= 8 ms), %.2f ms wall, "
            "over %zu presses\n",
            percentile(down.cpu, 0.95), percentile(down.wall, 0.95), down.cpu.size());
        std::printf("focus one page down, next frame p95: %.2f ms processor time, %.2f ms wall; to the end: "
                    "%.2f ms (%.2f ms wall)\n",
                    percentile(page.cpu, 0.95), percentile(page.wall, 0.95), end_cpu, end_wall);
        // The same presses handled and drawn at once, without the wait for
        // the frame clock's next tick that the wall times above include.
        key(GDK_KEY_Home);
        ov::CairoSurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, 1000, 800));
        ov::CairoPtr cr(cairo_create(surface.get()));
        std::vector<double> direct;
        for (int i = 0; i < 3000; ++i) {
            GdkEvent *event = gdk_event_new(GDK_KEY_PRESS);
            event->key.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(shown.editor)));
            event->key.send_event = TRUE;
            event->key.keyval = GDK_KEY_Down;
            const double start = now_ms();
            gtk_widget_event(shown.editor, event);
            gtk_widget_draw(shown.editor, cr.get());
            cairo_surface_flush(surface.get());
            direct.push_back(now_ms() - start);
            gdk_event_free(event);
        }
        std::printf("focus one node down, handled and drawn at once, p95: %.2f ms wall\n",
                    percentile(direct, 0.95));
        key(GDK_KEY_Home);
    }

    // An edit near the top as the widget handles a change from its menu: the
    // touched block measured again, the pieces listed anew, the view drawn.
    {
        TextSheetLayout layout(tmpl.get(), tmpl->report_types.first());
        ov::Owned<OvGfxTextCache, ov_gfx_text_cache_destroy> texts(ov_gfx_text_cache_new());
        ov::CairoSurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, 1000, 800));
        ov::CairoPtr cr(cairo_create(surface.get()));
        OvGfxTextSheetContext context{shown.editor, cr.get(), 1000, nullptr, TRUE, TRUE, texts.get()};
        layout.invalidate_all();
        while (layout.measure_some(&context, 1000000)) {
        }
        // Scrolled through once, so that the texts on screen are kept too.
        for (int offset = 0; offset < layout.content_height(); offset += 720)
            layout.paint(&context, offset, 0, 800, nullptr);
        std::printf("kept layout per row: %.0f bytes (goal <= 2048): pieces %zu, texts %zu bytes\n",
                    double(layout.memory_size() + ov_gfx_text_cache_get_size(texts.get())) / rows,
                    layout.memory_size(), std::size_t(ov_gfx_text_cache_get_size(texts.get())));
        ov_text_sheet_block *block = tmpl->report_types.first()->segments.first()->blocks.first();
        ov_text_sheet_row *row = block->rows.first()->next;
        ov_langstr_set_translation(&row->header, ov_locale_get_uk_english(), "An edited row header");
        const double start = now_ms();
        block->hit_area.layout_stamp = 0;
        ov_gfx_text_cache_clear(texts.get());
        layout.rebuild();
        layout.measure_range(&context, 0, 800);
        layout.paint(&context, 0, 0, 800, nullptr);
        cairo_surface_flush(surface.get());
        std::printf("edit of a row header near the top, next frame: %.2f ms (goal <= 50 ms)\n",
                    now_ms() - start);
    }
    return 0;
}
