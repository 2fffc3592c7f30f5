// Undo and redo on a long page in a 1000 by 800 scrolled window: 100 mixed
// edits of the kinds the sheet's menu makes (moves, deletes, adds, header
// changes of rows and blocks) spread over the page, then 100 undos and 100
// redos, each timed from the call until the next frame of the sheet has been
// drawn (the layout listed anew and the view scrolled to the place on the
// way); and the memory the history holds. Run under xvfb-run; wall times.
//
//   ov_bench_undo [BLOCKS]   (default 2000 blocks of ten rows)
#include "template_generator.h"

#include "app/text_sheet_editor.h"
#include "core/error.h"
#include "core/raii.h"
#include "docs_gui/undo_history.h"
#include "frame/startup.h"
#include "lang/active_locale.h"
#include "lang/locale.h"

#include <gtk/gtk.h>
#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <vector>

#include "main_loop_timing.h"

namespace
{

using namespace ov::bench;

using TemplatePtr = ov::Owned<ov_template, ov_template_destroy>;

std::size_t allocated()
{
    return mallinfo2().uordblks;
}

// The page's blocks, in order.
std::vector<ov_text_sheet_block *> blocks_of(ov_template_report_type *type)
{
    std::vector<ov_text_sheet_block *> blocks;
    for (ov_text_sheet_segment *segment : type->segments)
        for (ov_text_sheet_block *block : segment->blocks)
            blocks.push_back(block);
    return blocks;
}

langstr *text(const char *uk_english)
{
    langstr *ls = nullptr;
    ov_langstr_set_translation(&ls, ov_locale_get_uk_english(), uk_english);
    return ls;
}

// One edit somewhere on the page, recorded as the menu records it.
void edit(OvUndoHistory *history, std::mt19937 &random, ov_template_report_type *type)
{
    for (;;) {
        const std::vector<ov_text_sheet_block *> blocks = blocks_of(type);
        ov_text_sheet_block *block = blocks[random() % blocks.size()];
        ov_text_sheet_segment *segment = nullptr;
        for (ov_text_sheet_segment *s : type->segments)
            for (ov_text_sheet_block *b : s->blocks)
                if (b == block)
                    segment = s;
        ov_text_sheet_row *row = block->rows.first();
        if (row == nullptr)
            continue;
        const OvUndoPlace place = {TRUE, type, segment, block, row};
        switch (random() % 6) {
        case 0:
            if (!ov::list_move_down(row))
                continue;
            ov_undo_history_record(history,
                                   new ov::MoveStep<ov_text_sheet_row>("Move row down", place, row, false));
            return;
        case 1:
            ov_undo_history_record(history, new ov::SpliceStep<ov_text_sheet_row>("Delete row", place, row,
                                                                                  ov_text_sheet_row_destroy));
            return;
        case 2: {
            auto *added = ov_text_sheet_row_new(row->header);
            ov_text_sheet_row_add_field(added, ov_text_sheet_field_new(OV_TEXT_SHEET_FIELD_KIND_TEXT_FIELD));
            ov::list_insert_after(added, row);
            ov_undo_history_record(history, new ov::SpliceStep<ov_text_sheet_row>(
                                                "Add row below", place, row, 1, ov_text_sheet_row_destroy));
            return;
        }
        case 3:
            ov_undo_history_record(history, new ov::LangstrStep("Edit row header", place, &row->header,
                                                                std::exchange(row->header, text("Edited"))));
            return;
        case 4:
            if (!ov::list_move_up(block))
                continue;
            ov_undo_history_record(history,
                                   new ov::MoveStep<ov_text_sheet_block>(
                                       "Move block up", {TRUE, type, segment, block, nullptr}, block, true));
            return;
        default:
            ov_undo_history_record(history, new ov::SpliceStep<ov_text_sheet_block>(
                                                "Delete block", {TRUE, type, segment, block, nullptr}, block,
                                                ov_text_sheet_block_destroy));
            return;
        }
    }
}

} // namespace

int main(int argc, char **argv)
{
    gtk_init(&argc, &argv);
    const int block_count = argc > 1 ? std::atoi(argv[1]) : 2000;
    ov_ovinternal_set_system_locale(ov_locale_get_uk_english());
    ov_ovinternal_set_active_locale(ov_locale_get_uk_english());
    if (!ov_startup_load_icon_images()) {
        std::printf("%s\n", ov_error_get());
        return 1;
    }
    TemplatePtr tmpl(ov_bench_make_long_sheet_template(block_count));
    ov_template_report_type *type = tmpl->report_types.first();

    GtkWidget *window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_default_size(GTK_WINDOW(window), 1000, 800);
    GtkWidget *scrolled = gtk_scrolled_window_new(nullptr, nullptr);
    gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scrolled), GTK_POLICY_NEVER, GTK_POLICY_ALWAYS);
    GtkWidget *editor = text_sheet_editor_new_for_report_type(tmpl.get(), type);
    bool drawn = false;
    g_signal_connect_after(editor, "draw", G_CALLBACK(+[](GtkWidget *, cairo_t *, bool *flag) {
                               *flag = true;
                               return FALSE;
                           }),
                           &drawn);
    gtk_container_add(GTK_CONTAINER(scrolled), editor);
    gtk_container_add(GTK_CONTAINER(window), scrolled);
    gtk_widget_show_all(window);
    run_until([&] { return drawn; });
    run_until_quiet();

    auto history = ov::ObjectRef<OvUndoHistory>::adopt(ov_undo_history_new());
    text_sheet_editor_set_undo_history(TEXT_SHEET_EDITOR(editor), history.get());
    g_signal_connect_swapped(history.get(), "applied", G_CALLBACK(text_sheet_editor_show_place), editor);

    // The document's own change is small beside what the history keeps: a
    // delete keeps the node, an add keeps nothing more than the document.
    std::mt19937 random(15);
    const std::size_t before = allocated();
    for (int i = 0; i < 100; ++i)
        edit(history.get(), random, type);
    const std::size_t after_edits = allocated();
    OvUndoPlace top = {TRUE, type, nullptr, nullptr, nullptr};
    text_sheet_editor_show_place(TEXT_SHEET_EDITOR(editor), &top);
    run_until_quiet();

    auto timed = [&](gboolean (*apply)(OvUndoHistory *)) {
        std::vector<double> times;
        for (int i = 0; i < 100; ++i) {
            drawn = false;
            const double start = now_ms();
            apply(history.get());
            gtk_widget_queue_draw(editor);
            run_until([&] { return drawn; });
            times.push_back(now_ms() - start);
        }
        return times;
    };
    const std::vector<double> undos = timed(ov_undo_history_undo);
    const std::size_t after_undos = allocated();
    const std::vector<double> redos = timed(ov_undo_history_redo);
    std::printf("undo history: %d rows, 1000 x 800 window, %d cores, 100 mixed edits\n", block_count * 10,
                int(g_get_num_processors()));
    std::printf("undo to next frame: p50 %.1f ms, p95 %.1f ms, max %.1f ms (goal p95 <= 50 ms)\n",
                percentile(undos, 0.5), percentile(undos, 0.95), percentile(undos, 1));
    std::printf("redo to next frame: p50 %.1f ms, p95 %.1f ms, max %.1f ms (goal p95 <= 50 ms)\n",
                percentile(redos, 0.5), percentile(redos, 0.95), percentile(redos, 1));
    std::printf("heap after 100 edits: %+.2f MB (document and history); after undoing them all: %+.2f MB "
                "(goal <= 20 MB)\n",
                double(std::int64_t(after_edits) - std::int64_t(before)) / 1e6,
                double(std::int64_t(after_undos) - std::int64_t(before)) / 1e6);
    gtk_widget_destroy(window);
    history.reset();
    return 0;
}
