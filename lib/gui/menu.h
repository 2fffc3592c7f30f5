// Popup menus whose items carry one untyped pointer under
// "orvane_menu_item_data". Every item is shown, gets the sensitivity state
// (0 sensitive, anything else insensitive) and stores its data.
#pragma once

#include <gtk/gtk.h>

typedef void (*OvGuiMenuItemCallback)(GtkMenuItem *item, gpointer user_data);
typedef void (*OvGuiMenuToggledCallback)(GtkCheckMenuItem *item, gpointer user_data);

GtkWidget *ov_gui_menu_create_item(const char *label, gpointer data, int state);
GtkWidget *ov_gui_menu_create_item_with_activate_callback(const char *label, gpointer data, int state,
                                                          OvGuiMenuItemCallback callback, gpointer user_data);
GtkWidget *ov_gui_menu_append_item(GtkMenuShell *menu, const char *label, gpointer data, int state);
GtkWidget *ov_gui_menu_append_item_with_activate_callback(GtkMenuShell *menu, const char *label,
                                                          gpointer data, int state,
                                                          OvGuiMenuItemCallback callback, gpointer user_data);
// The label is Latin-1.
GtkWidget *ov_gui_menu_append_latin1_item(GtkMenuShell *menu, const char *latin1_label, gpointer data,
                                          int state);
GtkWidget *ov_gui_menu_append_latin1_item_with_activate_callback(GtkMenuShell *menu, const char *latin1_label,
                                                                 gpointer data, int state,
                                                                 OvGuiMenuItemCallback callback,
                                                                 gpointer user_data);
GtkWidget *ov_gui_menu_append_check_item(GtkMenuShell *menu, const char *label, gpointer data, int state,
                                         gboolean active);
GtkWidget *ov_gui_menu_append_check_item_with_toggled_callback(GtkMenuShell *menu, const char *label,
                                                               gpointer data, int state, gboolean active,
                                                               OvGuiMenuToggledCallback callback,
                                                               gpointer user_data);
GtkWidget *ov_gui_menu_create_separator();
GtkWidget *ov_gui_menu_append_separator(GtkMenuShell *menu);

gpointer ov_gui_menu_get_item_data(GtkWidget *item);
void ov_gui_menu_set_item_label_accel(GtkWidget *item, guint key, GdkModifierType modifiers);
// Asked from the display's keymap once; Control without a display.
GdkModifierType ov_gui_menu_get_primary_accelerator_modifier();

// Pops the menu up (under the anchor and as wide as it, or at the pointer
// without one), waits in a nested main loop until it closes, destroys it.
// Item callbacks have run when this returns.
void ov_gui_menu_run_and_destroy(GtkMenu *menu, GtkWidget *anchor);
// The same below a rectangle in the coordinates of the widget's window, with
// the first entry selected, as for a menu opened from the keyboard.
void ov_gui_menu_run_at_rect_and_destroy(GtkMenu *menu, GtkWidget *widget, const GdkRectangle *rectangle);
