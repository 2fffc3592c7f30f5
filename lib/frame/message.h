// Message boxes: information, warning, error and yes/no questions. Texts are
// UTF-8 and shown as plain label text. Each box runs on the window stack,
// centred on the screen, and returns when it is closed.
#pragma once

#include <gtk/gtk.h>

void ov_message_show(const char *text);
void ov_message_show_utf8_printf(const char *format, ...) G_GNUC_PRINTF(1, 2);
void ov_message_show_warning(const char *text);
void ov_message_show_warning_utf8_printf(const char *format, ...) G_GNUC_PRINTF(1, 2);
void ov_message_show_error(const char *text);
void ov_message_show_error_utf8_printf(const char *format, ...) G_GNUC_PRINTF(1, 2);
void ov_message_show_unknown_error();

// Yes gives TRUE, No FALSE, closing the box any other way default_answer.
gboolean ov_message_ask_yes_no_question(gboolean default_answer, gboolean use_warning_icon, const char *text);
gboolean ov_message_ask_yes_no_question_utf8_printf(gboolean default_answer, gboolean use_warning_icon,
                                                    const char *format, ...) G_GNUC_PRINTF(3, 4);

// A question box without buttons (the caller adds its own), titled with
// title or "Question"; run it with ov_message_run_and_destroy_dialog.
GtkWidget *ov_message_create_question_dialog(const char *title, const char *text);
GtkWidget *ov_message_create_question_dialog_utf8_printf(const char *title, const char *format, ...)
    G_GNUC_PRINTF(2, 3);
// Runs the dialog on the window stack, destroys it and returns the response.
int ov_message_run_and_destroy_dialog(GtkWidget *dialog);
