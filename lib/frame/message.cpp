#include "frame/message.h"

#include "core/error.h"
#include "core/raii.h"
#include "frame/window_stack.h"
#include "gui/gui.h"

#include <cstdarg>

namespace
{

struct MessageKind {
    const char *title;
    const char *icon_name;
    GtkButtonsType buttons;
};

constexpr MessageKind information_kind{"Message", nullptr, GTK_BUTTONS_OK};
constexpr MessageKind error_kind{"Error", "dialog-error", GTK_BUTTONS_CLOSE};
constexpr MessageKind warning_kind{"Warning", "dialog-warning", GTK_BUTTONS_CLOSE};
constexpr MessageKind question_kind{"Question", "dialog-question", GTK_BUTTONS_NONE};

GtkWidget *build_message_box(const char *title, const char *icon_name, GtkButtonsType buttons,
                             const char *text)
{
    GtkWidget *dialog = ov_gui_create_dialog(title, buttons);
    GtkBox *content = GTK_BOX(gtk_dialog_get_content_area(GTK_DIALOG(dialog)));
    GtkWidget *hbox;
    if (icon_name != nullptr) {
        hbox = ov_gui_create_box(GTK_ORIENTATION_HORIZONTAL, FALSE);
        gtk_box_set_spacing(GTK_BOX(hbox), 20);
        ov_gui_set_margins(hbox, 20, 25, 20, 20);
        GtkWidget *icon_box = ov_gui_pack_vbox(GTK_BOX(hbox), FALSE, FALSE);
        ov_gui_pack_image_from_icon_name(GTK_BOX(icon_box), icon_name, GTK_ICON_SIZE_DIALOG);
    } else {
        hbox = ov_gui_create_box(GTK_ORIENTATION_HORIZONTAL, FALSE);
        gtk_box_set_spacing(GTK_BOX(hbox), 25);
        ov_gui_set_margins(hbox, 20, 25, 20, 25);
    }
    ov_gui_pack_widget(content, hbox, TRUE);
    ov_gui_pack_label(GTK_BOX(hbox), text != nullptr ? text : "", 0.0f, 0.0f);
    return dialog;
}

GtkWidget *build_message_box(const MessageKind &kind, const char *text)
{
    return build_message_box(kind.title, kind.icon_name, kind.buttons, text);
}

void show(const MessageKind &kind, const char *text)
{
    ov_message_run_and_destroy_dialog(build_message_box(kind, text));
}

void show_vprintf(const MessageKind &kind, const char *format, va_list args)
{
    ov::GStr text(g_strdup_vprintf(format, args));
    show(kind, text.get());
}

} // namespace

int ov_message_run_and_destroy_dialog(GtkWidget *dialog)
{
    g_return_val_if_fail(GTK_IS_DIALOG(dialog), GTK_RESPONSE_NONE);
    ov_window_stack_push_window(GTK_WINDOW(dialog), OV_WINDOW_STACK_POSITION_CENTER);
    int response = gtk_dialog_run(GTK_DIALOG(dialog));
    gtk_widget_destroy(dialog);
    ov_window_stack_pop_window();
    return response;
}

void ov_message_show(const char *text)
{
    show(information_kind, text);
}
void ov_message_show_warning(const char *text)
{
    show(warning_kind, text);
}
void ov_message_show_error(const char *text)
{
    show(error_kind, text);
}
void ov_message_show_unknown_error()
{
    show(error_kind, ov_error_message_unknown);
}

void ov_message_show_utf8_printf(const char *format, ...)
{
    va_list args;
    va_start(args, format);
    show_vprintf(information_kind, format, args);
    va_end(args);
}

void ov_message_show_warning_utf8_printf(const char *format, ...)
{
    va_list args;
    va_start(args, format);
    show_vprintf(warning_kind, format, args);
    va_end(args);
}

void ov_message_show_error_utf8_printf(const char *format, ...)
{
    va_list args;
    va_start(args, format);
    show_vprintf(error_kind, format, args);
    va_end(args);
}

gboolean ov_message_ask_yes_no_question(gboolean default_answer, gboolean use_warning_icon, const char *text)
{
    GtkWidget *dialog = build_message_box(question_kind.title,
                                          use_warning_icon ? warning_kind.icon_name : question_kind.icon_name,
                                          GTK_BUTTONS_YES_NO, text);
    gtk_dialog_set_default_response(GTK_DIALOG(dialog), default_answer ? GTK_RESPONSE_YES : GTK_RESPONSE_NO);
    switch (ov_message_run_and_destroy_dialog(dialog)) {
    case GTK_RESPONSE_YES:
        return TRUE;
    case GTK_RESPONSE_NO:
        return FALSE;
    default:
        return default_answer;
    }
}

gboolean ov_message_ask_yes_no_question_utf8_printf(gboolean default_answer, gboolean use_warning_icon,
                                                    const char *format, ...)
{
    va_list args;
    va_start(args, format);
    ov::GStr text(g_strdup_vprintf(format, args));
    va_end(args);
    return ov_message_ask_yes_no_question(default_answer, use_warning_icon, text.get());
}

GtkWidget *ov_message_create_question_dialog(const char *title, const char *text)
{
    return build_message_box(title != nullptr ? title : question_kind.title, question_kind.icon_name,
                             question_kind.buttons, text);
}

GtkWidget *ov_message_create_question_dialog_utf8_printf(const char *title, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    ov::GStr text(g_strdup_vprintf(format, args));
    va_end(args);
    return ov_message_create_question_dialog(title, text.get());
}
