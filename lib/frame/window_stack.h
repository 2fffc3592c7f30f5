// The process-wide stack of modal top-level windows, from the main window at
// the bottom to the window or busy indicator on top. Each new window is
// modal and transient for the one below, which becomes insensitive; each
// runs in a nested main loop of its own. Every operation does nothing while
// there is no stack (between clean_up and init).
#pragma once

#include <gtk/gtk.h>

// Told whether the stack imposes a cursor on the node's window (1) or not (0).
typedef void (*OvWindowStackMouseCursorCallback)(int cursor_set, gpointer user_data);
// Told how many whole seconds the application was without the focus.
typedef void (*OvWindowStackFocusCallback)(gint64 seconds, gpointer user_data);

enum : int {
    OV_WINDOW_STACK_POSITION_CENTER_ON_PARENT = 0,
    OV_WINDOW_STACK_POSITION_CENTER = 1,
    OV_WINDOW_STACK_POSITION_MAXIMIZED = 2,
    OV_WINDOW_STACK_POSITION_MOUSE = 3,
};

void ov_window_stack_init();
void ov_window_stack_clean_up();

// Runs the window modally until it is destroyed.
void ov_window_stack_run_window(GtkWindow *window, int position_mode, GtkWidget *focus_widget,
                                OvWindowStackMouseCursorCallback callback, gpointer callback_data);
void ov_window_stack_push_window(GtkWindow *window, int position_mode);
// Does nothing while a busy phase is on top.
void ov_window_stack_pop_window();
// A node for a native dialog; returns the window it should be transient for.
GtkWindow *ov_window_stack_push_native_window();
GtkWindow *ov_window_stack_get_top_window();
void ov_window_stack_set_mouse_cursor_callback(OvWindowStackMouseCursorCallback callback, gpointer data);
void ov_window_stack_set_focus_callback(OvWindowStackFocusCallback callback, gpointer data);

// Busy phases nest. With show_window the "Please wait" window appears.
void ov_window_stack_busy_begin(gboolean show_window);
void ov_window_stack_busy_end();
// Null shows "Please wait".
void ov_window_stack_set_busy_message(const char *text);
void ov_window_stack_set_busy_message_utf8_printf(const char *format, ...) G_GNUC_PRINTF(1, 2);
void ov_window_stack_show_abort_button();
void ov_window_stack_hide_abort_button();
gboolean ov_window_stack_is_abort_requested();

void ov_window_stack_present();

// For tests and diagnostics: the busy window on top (null when none), the
// number of nodes and whether the focus counts as lost.
GtkWindow *ov_window_stack_get_top_busy_window();
int ov_window_stack_get_depth();
gboolean ov_window_stack_is_focus_lost();
