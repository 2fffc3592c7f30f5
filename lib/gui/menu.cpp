#include "gui/menu.h"

#include "core/raii.h"
#include "core/strings.h"

namespace
{

constexpr const char *item_data_key = "orvane_menu_item_data";

GtkWidget *prepare_item(GtkWidget *item, gpointer data, int state)
{
    g_object_set_data(G_OBJECT(item), item_data_key, data);
    gtk_widget_set_sensitive(item, state == 0);
    gtk_widget_show(item);
    return item;
}

GtkWidget *appended(GtkMenuShell *menu, GtkWidget *item)
{
    gtk_menu_shell_append(menu, item);
    return item;
}

// The event that opened the menu, or a stand-in at the pointer when the menu
// is opened without one (from a timeout or the keyboard).
GdkEvent *trigger_event()
{
    if (GdkEvent *event = gtk_get_current_event())
        return event;
    GdkDisplay *display = gdk_display_get_default();
    if (display == nullptr)
        return nullptr;
    GdkDevice *pointer = gdk_seat_get_pointer(gdk_display_get_default_seat(display));
    GdkWindow *root = gdk_screen_get_root_window(gdk_display_get_default_screen(display));
    int x = 0;
    int y = 0;
    gdk_window_get_device_position(root, pointer, &x, &y, nullptr);
    GdkEvent *event = gdk_event_new(GDK_BUTTON_PRESS);
    event->button.window = GDK_WINDOW(g_object_ref(root));
    event->button.time = GDK_CURRENT_TIME;
    event->button.x = event->button.x_root = x;
    event->button.y = event->button.y_root = y;
    gdk_event_set_device(event, pointer);
    return event;
}

void quit_loop(GtkMenuShell *, gpointer loop)
{
    g_main_loop_quit(static_cast<GMainLoop *>(loop));
}

// The menu's width follows the anchor; set once before popping up.
void match_anchor_width(GtkMenu *menu, GtkWidget *anchor)
{
    GtkAllocation allocation;
    gtk_widget_get_allocation(anchor, &allocation);
    gtk_widget_set_size_request(GTK_WIDGET(menu), allocation.width, -1);
}

} // namespace

GtkWidget *ov_gui_menu_create_item(const char *label, gpointer data, int state)
{
    return prepare_item(gtk_menu_item_new_with_label(label != nullptr ? label : ""), data, state);
}

GtkWidget *ov_gui_menu_create_item_with_activate_callback(const char *label, gpointer data, int state,
                                                          OvGuiMenuItemCallback callback, gpointer user_data)
{
    GtkWidget *item = ov_gui_menu_create_item(label, data, state);
    if (callback != nullptr)
        g_signal_connect(item, "activate", G_CALLBACK(callback), user_data);
    return item;
}

GtkWidget *ov_gui_menu_append_item(GtkMenuShell *menu, const char *label, gpointer data, int state)
{
    g_return_val_if_fail(GTK_IS_MENU_SHELL(menu), nullptr);
    return appended(menu, ov_gui_menu_create_item(label, data, state));
}

GtkWidget *ov_gui_menu_append_item_with_activate_callback(GtkMenuShell *menu, const char *label,
                                                          gpointer data, int state,
                                                          OvGuiMenuItemCallback callback, gpointer user_data)
{
    g_return_val_if_fail(GTK_IS_MENU_SHELL(menu), nullptr);
    return appended(menu,
                    ov_gui_menu_create_item_with_activate_callback(label, data, state, callback, user_data));
}

GtkWidget *ov_gui_menu_append_latin1_item(GtkMenuShell *menu, const char *latin1_label, gpointer data,
                                          int state)
{
    return ov_gui_menu_append_latin1_item_with_activate_callback(menu, latin1_label, data, state, nullptr,
                                                                 nullptr);
}

GtkWidget *ov_gui_menu_append_latin1_item_with_activate_callback(GtkMenuShell *menu, const char *latin1_label,
                                                                 gpointer data, int state,
                                                                 OvGuiMenuItemCallback callback,
                                                                 gpointer user_data)
{
    ov::GStr label(latin1_label != nullptr ? ov_convert_latin1_to_utf8(latin1_label) : nullptr);
    return ov_gui_menu_append_item_with_activate_callback(menu, label.get(), data, state, callback,
                                                          user_data);
}

GtkWidget *ov_gui_menu_append_check_item(GtkMenuShell *menu, const char *label, gpointer data, int state,
                                         gboolean active)
{
    return ov_gui_menu_append_check_item_with_toggled_callback(menu, label, data, state, active, nullptr,
                                                               nullptr);
}

GtkWidget *ov_gui_menu_append_check_item_with_toggled_callback(GtkMenuShell *menu, const char *label,
                                                               gpointer data, int state, gboolean active,
                                                               OvGuiMenuToggledCallback callback,
                                                               gpointer user_data)
{
    g_return_val_if_fail(GTK_IS_MENU_SHELL(menu), nullptr);
    GtkWidget *item = gtk_check_menu_item_new_with_label(label != nullptr ? label : "");
    gtk_check_menu_item_set_active(GTK_CHECK_MENU_ITEM(item), active);
    prepare_item(item, data, state);
    // Connected after setting the state, so that only the user's toggles count.
    if (callback != nullptr)
        g_signal_connect(item, "toggled", G_CALLBACK(callback), user_data);
    return appended(menu, item);
}

GtkWidget *ov_gui_menu_create_separator()
{
    GtkWidget *item = gtk_separator_menu_item_new();
    gtk_widget_show(item);
    return item;
}

GtkWidget *ov_gui_menu_append_separator(GtkMenuShell *menu)
{
    g_return_val_if_fail(GTK_IS_MENU_SHELL(menu), nullptr);
    return appended(menu, ov_gui_menu_create_separator());
}

gpointer ov_gui_menu_get_item_data(GtkWidget *item)
{
    g_return_val_if_fail(G_IS_OBJECT(item), nullptr);
    return g_object_get_data(G_OBJECT(item), item_data_key);
}

void ov_gui_menu_set_item_label_accel(GtkWidget *item, guint key, GdkModifierType modifiers)
{
    g_return_if_fail(GTK_IS_MENU_ITEM(item));
    GtkWidget *child = gtk_bin_get_child(GTK_BIN(item));
    if (GTK_IS_ACCEL_LABEL(child))
        gtk_accel_label_set_accel(GTK_ACCEL_LABEL(child), key, modifiers);
}

GdkModifierType ov_gui_menu_get_primary_accelerator_modifier()
{
    static bool asked = false;
    static GdkModifierType modifier = GDK_CONTROL_MASK;
    if (!asked) {
        GdkDisplay *display = gdk_display_get_default();
        if (display == nullptr)
            return GDK_CONTROL_MASK; // asked again once there is a display
        asked = true;
        modifier = gdk_keymap_get_modifier_mask(gdk_keymap_get_for_display(display),
                                                GDK_MODIFIER_INTENT_PRIMARY_ACCELERATOR);
    }
    return modifier;
}

namespace
{

// Runs a menu until it closes once pop_up has shown it, then destroys it.
template <class PopUp> void run_popped_up_and_destroy(GtkMenu *menu, PopUp pop_up)
{
    g_object_ref_sink(menu);
    GMainLoop *loop = g_main_loop_new(nullptr, FALSE);
    ov::SignalGuard on_deactivate(menu, g_signal_connect(menu, "deactivate", G_CALLBACK(quit_loop), loop));
    GdkEvent *event = trigger_event();
    pop_up(event);
    if (event != nullptr)
        gdk_event_free(event);
    if (gtk_widget_get_visible(GTK_WIDGET(menu)))
        g_main_loop_run(loop);
    on_deactivate.reset();
    g_main_loop_unref(loop);
    gtk_widget_destroy(GTK_WIDGET(menu));
    g_object_unref(menu);
}

} // namespace

void ov_gui_menu_run_at_rect_and_destroy(GtkMenu *menu, GtkWidget *widget, const GdkRectangle *rectangle)
{
    g_return_if_fail(GTK_IS_MENU(menu));
    g_return_if_fail(GTK_IS_WIDGET(widget) && rectangle != nullptr);
    run_popped_up_and_destroy(menu, [&](GdkEvent *event) {
        GdkWindow *window = gtk_widget_get_window(widget);
        if (window == nullptr)
            return;
        gtk_menu_popup_at_rect(menu, window, rectangle, GDK_GRAVITY_SOUTH_WEST, GDK_GRAVITY_NORTH_WEST,
                               event);
        // Opened from the keyboard, the first entry is ready for the arrows.
        gtk_menu_shell_select_first(GTK_MENU_SHELL(menu), FALSE);
    });
}

void ov_gui_menu_run_and_destroy(GtkMenu *menu, GtkWidget *anchor)
{
    g_return_if_fail(GTK_IS_MENU(menu));
    // The item's "activate" runs right after "deactivate", in the same
    // dispatch, so its callback has run when the loop returns. A menu that
    // could not pop up (no pointer, no display) is never shown and would
    // never be deactivated.
    run_popped_up_and_destroy(menu, [&](GdkEvent *event) {
        if (anchor != nullptr && gtk_widget_get_realized(anchor)) {
            match_anchor_width(menu, anchor);
            gtk_menu_popup_at_widget(menu, anchor, GDK_GRAVITY_SOUTH_WEST, GDK_GRAVITY_NORTH_WEST, event);
        } else if (event != nullptr) {
            gtk_menu_popup_at_pointer(menu, event);
        }
    });
}
