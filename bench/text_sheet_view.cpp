// Shows one page of a template in the text sheet editor, in a 1000 by 800
// window, for looking at the drawing:
//   ov_text_sheet_view TEMPLATE [PAGE [OFFSET]]
// Page 0 is the basic data, 1 the first report type; OFFSET scrolls down.
#include "app/text_sheet_editor.h"
#include "core/error.h"
#include "docs/template_io.h"
#include "frame/startup.h"
#include "lang/active_locale.h"
#include "lang/locale.h"

#include <gtk/gtk.h>

#include <cstdlib>

int main(int argc, char **argv)
{
    gtk_init(&argc, &argv);
    if (argc < 2) {
        g_printerr("Usage: %s TEMPLATE [PAGE [OFFSET]]\n", argv[0]);
        return 2;
    }
    ov_ovinternal_set_system_locale(ov_locale_get_uk_english());
    ov_ovinternal_set_active_locale(ov_locale_get_uk_english());
    if (!ov_startup_load_icon_images()) {
        g_printerr("%s\n", ov_error_get());
        return 1;
    }
    ov_template *tmpl = ov_template_io_read_from_file(argv[1]);
    if (tmpl == nullptr) {
        g_printerr("%s\n", ov_error_get());
        return 1;
    }
    const int page = argc > 2 ? std::atoi(argv[2]) : 0;
    ov_template_report_type *report_type = nullptr;
    for (int i = 0; i < page; ++i)
        report_type = report_type == nullptr ? tmpl->report_types.first() : report_type->next;
    GtkWidget *editor = report_type == nullptr || tmpl->report_types.is_end(report_type)
                            ? text_sheet_editor_new_for_basic_data(tmpl)
                            : text_sheet_editor_new_for_report_type(tmpl, report_type);
    GtkWidget *window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_default_size(GTK_WINDOW(window), 1000, 800);
    GtkWidget *scrolled = gtk_scrolled_window_new(nullptr, nullptr);
    gtk_container_add(GTK_CONTAINER(scrolled), editor);
    gtk_container_add(GTK_CONTAINER(window), scrolled);
    g_signal_connect(window, "destroy", G_CALLBACK(gtk_main_quit), nullptr);
    gtk_widget_show_all(window);
    if (argc > 3)
        gtk_adjustment_set_value(gtk_scrollable_get_vadjustment(GTK_SCROLLABLE(editor)), std::atof(argv[3]));
    gtk_main();
    ov_template_destroy(tmpl);
    return 0;
}
