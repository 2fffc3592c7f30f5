#include "widgets/langstr_window.h"

#include "core/error.h"
#include "frame/message.h"
#include "frame/window_stack.h"
#include "gui/gui.h"
#include "widgets/langstr_editor.h"
#include "widgets/translation_entry.h"

namespace
{

struct Run {
    GtkWidget *window;
    OvLangstrEditor *editor;
    langstr **value;
    int state;
    gboolean allow_empty;
    gboolean confirmed;
};

void on_ok_clicked(GtkButton *, gpointer data)
{
    auto *run = static_cast<Run *>(data);
    if (run->state == 0) {
        langstr *result = nullptr;
        if (!ov_langstr_editor_get_value(run->editor, &result)) {
            ov_message_show_error(ov_error_get());
            ov_error_clear();
            return;
        }
        if (result == nullptr && !run->allow_empty) {
            ov_message_show_error("You haven't entered anything.");
            return;
        }
        ov_langstr_free(*run->value);
        *run->value = result;
    }
    run->confirmed = TRUE;
    gtk_widget_destroy(run->window);
}

void on_cancel_clicked(GtkButton *, gpointer window)
{
    gtk_widget_destroy(GTK_WIDGET(window));
}

void on_shrunk(OvLangstrEditor *, gpointer window)
{
    ov_gui_resize_window_to_minimum_unless_maximized(GTK_WINDOW(window), FALSE);
}

// The text field of the first entry that can be edited.
GtkWidget *first_editable_field(OvLangstrEditor *editor)
{
    GList *entries = ov_langstr_editor_get_entries(editor);
    GtkWidget *field = nullptr;
    for (GList *l = entries; l != nullptr && field == nullptr; l = l->next) {
        auto *entry = OV_TRANSLATION_ENTRY(l->data);
        if (!ov_translation_entry_is_text_locked(entry))
            field = ov_translation_entry_get_text_widget(entry);
    }
    g_list_free(entries);
    return field;
}

} // namespace

gboolean ov_langstr_window_run(int mode, langstr **value, const langstr *locked,
                               const OvLocaleList *primary_locales, int state, gboolean allow_empty,
                               const char *title, const char *field_label, const char *note,
                               const char *ok_label)
{
    g_return_val_if_fail(value != nullptr, FALSE);
    Run run = {};
    run.value = value;
    run.state = state;
    run.allow_empty = allow_empty;
    run.window = ov_gui_create_window(title != nullptr ? title : "Enter multilingual text");
    GtkWidget *box = ov_gui_add_vbox(GTK_CONTAINER(run.window), TRUE);
    ov_gui_set_default_surrounding_margin(box);

    ov_gui_pack_input_field_label(GTK_BOX(box), field_label != nullptr ? field_label : "Text", !allow_empty);
    GtkWidget *editor = ov_langstr_editor_new(mode, *value, locked, primary_locales, FALSE);
    run.editor = OV_LANGSTR_EDITOR(editor);
    ov_gui_pack_widget(GTK_BOX(box), editor, mode == OV_LANGSTR_MODE_MULTI_LINE);
    ov_gui_set_sensitivity(editor, state);
    g_signal_connect(editor, "shrunk", G_CALLBACK(on_shrunk), run.window);

    if (note != nullptr && (state == 1 || ov_langstr_editor_has_locked_texts(run.editor))) {
        GtkWidget *label = ov_gui_pack_label(GTK_BOX(box), note, 0, 0.5);
        gtk_label_set_line_wrap(GTK_LABEL(label), TRUE);
    }

    GtkWidget *row = ov_gui_pack_hbox(GTK_BOX(box), FALSE, TRUE);
    gtk_widget_set_halign(row, GTK_ALIGN_END);
    GtkWidget *ok = ov_gui_pack_button(GTK_BOX(row), ok_label != nullptr ? ok_label : "OK", TRUE);
    GtkWidget *cancel = ov_gui_pack_button(GTK_BOX(row), "Cancel", FALSE);
    g_signal_connect(ok, "clicked", G_CALLBACK(on_ok_clicked), &run);
    g_signal_connect(cancel, "clicked", G_CALLBACK(on_cancel_clicked), run.window);

    gtk_widget_show(box);
    ov_window_stack_run_window(GTK_WINDOW(run.window), OV_WINDOW_STACK_POSITION_CENTER_ON_PARENT,
                               first_editable_field(run.editor), nullptr, nullptr);
    return run.confirmed;
}
