// Saving from the editing window against the template library's own write:
// the window's save (the metadata handed over, the report types taken in tab
// order, the codeset entry split, the file written) on a large template,
// and ov_template_io_write_to_file on the same template read by itself.
// Processor time, best of three. Aim: the window's save <= 1.1 x the
// library's write. Run under xvfb-run:
//
//   ov_bench_editing_window [TEMPLATE]
//
// Without a file, a template of 2,000 blocks of ten rows (about 11 MB) is
// generated first.
#include "template_generator.h"

#include "app/component_gui_editor_window.h"
#include "app/editing_window.h"
#include "core/error.h"
#include "core/raii.h"
#include "docs/template_io.h"
#include "frame/startup.h"
#include "frame/window_stack.h"
#include "lang/active_locale.h"
#include "lang/locale.h"

#include <glib/gstdio.h>
#include <gtk/gtk.h>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <string>

namespace
{

constexpr int repeats = 3;

double cpu_seconds()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

template <class Work> double best_of(Work work)
{
    double best = 1e9;
    for (int i = 0; i < repeats; ++i) {
        const double start = cpu_seconds();
        work();
        best = std::min(best, cpu_seconds() - start);
    }
    return best;
}

struct Run {
    std::string path;
    std::string copy_path;
    double window_save = -1;
    double library_write = -1;
    bool ok = true;
};

// Once the window is up: its saves, then the library's writes, then close.
gboolean measure(gpointer data)
{
    auto *run = static_cast<Run *>(data);
    GtkWindow *top = ov_window_stack_get_top_window();
    if (top == nullptr || !OV_IS_COMPONENT_GUI_EDITOR_WINDOW(top))
        return G_SOURCE_CONTINUE;
    run->window_save = best_of([&] { g_signal_emit_by_name(top, "save"); });
    using TemplatePtr = ov::Owned<ov_template, ov_template_destroy>;
    const TemplatePtr tmpl(ov_template_io_read_from_file(run->path.c_str()));
    if (!tmpl) {
        std::fprintf(stderr, "%s\n", ov_error_get());
        run->ok = false;
    } else {
        run->library_write = best_of([&] {
            if (!ov_template_io_write_to_file(tmpl.get(), run->copy_path.c_str()))
                run->ok = false;
        });
    }
    gtk_widget_destroy(GTK_WIDGET(top));
    return G_SOURCE_REMOVE;
}

} // namespace

int main(int argc, char **argv)
{
    gtk_init(&argc, &argv);
    ov_ovinternal_set_system_locale(ov_locale_get_uk_english());
    ov_ovinternal_set_active_locale(ov_locale_get_uk_english());
    if (!ov_startup_load_icon_images()) {
        std::fprintf(stderr, "%s\n", ov_error_get());
        return 1;
    }
    const ov::GStr folder(g_dir_make_tmp("orvane-bench-XXXXXX", nullptr));
    Run run;
    run.path = std::string(folder.get()) + "/large.template";
    run.copy_path = std::string(folder.get()) + "/copy.template";
    if (argc > 1) {
        ov::GStr bytes;
        gsize length = 0;
        if (!g_file_get_contents(argv[1], ov::out(bytes), &length, nullptr) ||
            !g_file_set_contents(run.path.c_str(), bytes.get(), gssize(length), nullptr)) {
            std::fprintf(stderr, "Cannot copy %s.\n", argv[1]);
            return 1;
        }
    } else {
        ov_template *tmpl = ov_bench_make_large_template(2000);
        const gboolean written = ov_template_io_write_to_file(tmpl, run.path.c_str());
        ov_template_destroy(tmpl);
        if (!written) {
            std::fprintf(stderr, "%s\n", ov_error_get());
            return 1;
        }
    }

    ov_window_stack_init();
    g_timeout_add(100, measure, &run);
    run_editing_window(run.path.c_str());
    ov_window_stack_clean_up();

    GStatBuf status = {};
    g_stat(run.path.c_str(), &status);
    if (!run.ok || run.window_save < 0) {
        std::fprintf(stderr, "The measurement failed.\n");
        return 1;
    }
    std::printf("save of a %.1f MB template, processor time, best of %d:\n", double(status.st_size) / 1e6,
                repeats);
    std::printf("  library write           %7.1f ms\n", run.library_write * 1000);
    std::printf("  save from the window    %7.1f ms\n", run.window_save * 1000);
    std::printf("  ratio window / library  %7.2f (aim <= 1.10)\n", run.window_save / run.library_write);
    g_unlink(run.path.c_str());
    g_unlink(run.copy_path.c_str());
    g_rmdir(folder.get());
    return 0;
}
