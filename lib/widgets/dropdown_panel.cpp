#include "widgets/dropdown_panel.h"

#include "frame/message.h"
#include "frame/window_stack.h"
#include "gui/gui.h"

struct _OvDropdownPanel {
    GtkWindow parent_instance;
};

G_DEFINE_TYPE(OvDropdownPanel, ov_dropdown_panel, GTK_TYPE_WINDOW)

namespace
{

GdkSeat *default_seat(GtkWidget *widget)
{
    return gdk_display_get_default_seat(gtk_widget_get_display(widget));
}

} // namespace

static gboolean ov_dropdown_panel_button_press_event(GtkWidget *widget, GdkEventButton *event)
{
    GdkWindow *own = gtk_widget_get_window(widget);
    if (event->window != own) {
        // A press inside one of the content's own windows goes on to it; a
        // press in any other window is outside the panel.
        for (GdkWindow *walk = event->window; walk != nullptr; walk = gdk_window_get_effective_parent(walk))
            if (walk == own)
                return FALSE;
        gtk_widget_destroy(widget);
        return TRUE;
    }
    GtkAllocation allocation;
    gtk_widget_get_allocation(widget, &allocation);
    if (event->x < 0 || event->y < 0 || event->x >= allocation.width || event->y >= allocation.height) {
        gtk_widget_destroy(widget);
        return TRUE;
    }
    GtkWidget *child = gtk_bin_get_child(GTK_BIN(widget));
    if (child != nullptr) {
        GtkAllocation child_allocation;
        gtk_widget_get_allocation(child, &child_allocation);
        int x = int(event->x) - child_allocation.x;
        int y = int(event->y) - child_allocation.y;
        if (x >= 0 && y >= 0 && x < child_allocation.width && y < child_allocation.height) {
            auto *child_class = GTK_WIDGET_GET_CLASS(child);
            if (child_class->button_press_event != nullptr)
                child_class->button_press_event(child, event);
        }
    }
    return TRUE;
}

static void ov_dropdown_panel_unmap(GtkWidget *widget)
{
    gdk_seat_ungrab(default_seat(widget));
    GTK_WIDGET_CLASS(ov_dropdown_panel_parent_class)->unmap(widget);
}

static void ov_dropdown_panel_class_init(OvDropdownPanelClass *klass)
{
    GTK_WIDGET_CLASS(klass)->button_press_event = ov_dropdown_panel_button_press_event;
    GTK_WIDGET_CLASS(klass)->unmap = ov_dropdown_panel_unmap;
}

static void ov_dropdown_panel_init(OvDropdownPanel *panel)
{
    gtk_widget_add_events(GTK_WIDGET(panel), GDK_BUTTON_PRESS_MASK);
}

int ov_dropdown_panel_place(int position, int extent, int screen_extent)
{
    if (position + extent <= screen_extent)
        return position;
    int placed = position - extent + 1;
    return placed < 0 ? 0 : placed;
}

GtkWidget *ov_dropdown_panel_new(gboolean with_margin)
{
    GtkWidget *panel = GTK_WIDGET(g_object_new(OV_TYPE_DROPDOWN_PANEL, "type", GTK_WINDOW_POPUP, nullptr));
    gtk_window_set_modal(GTK_WINDOW(panel), TRUE);
    gtk_window_set_destroy_with_parent(GTK_WINDOW(panel), TRUE);
    if (with_margin)
        ov_gui_set_default_surrounding_margin(panel);
    return panel;
}

void ov_dropdown_panel_open(OvDropdownPanel *panel)
{
    g_return_if_fail(OV_IS_DROPDOWN_PANEL(panel));
    GtkWidget *widget = GTK_WIDGET(panel);
    gtk_window_set_transient_for(GTK_WINDOW(panel), ov_window_stack_get_top_window());

    GdkSeat *seat = default_seat(widget);
    GdkScreen *screen = gtk_widget_get_screen(widget);
    GdkWindow *root = gdk_screen_get_root_window(screen);
    int pointer_x = 0;
    int pointer_y = 0;
    gdk_window_get_device_position(root, gdk_seat_get_pointer(seat), &pointer_x, &pointer_y, nullptr);
    GtkRequisition size;
    gtk_widget_get_preferred_size(widget, nullptr, &size);
    int x = ov_dropdown_panel_place(pointer_x, size.width, gdk_window_get_width(root));
    int y = ov_dropdown_panel_place(pointer_y, size.height, gdk_window_get_height(root));

    gtk_window_move(GTK_WINDOW(panel), x, y);
    gtk_widget_show(widget);
    gtk_window_move(GTK_WINDOW(panel), x, y);

    GdkGrabStatus status =
        gdk_seat_grab(seat, gtk_widget_get_window(widget), GDK_SEAT_CAPABILITY_ALL_POINTING, TRUE, nullptr,
                      nullptr, nullptr, nullptr);
    if (status != GDK_GRAB_SUCCESS) {
        ov_message_show_error("Internal error 7834");
        gtk_widget_destroy(widget);
    }
}

void ov_dropdown_panel_run(OvDropdownPanel *panel)
{
    g_return_if_fail(OV_IS_DROPDOWN_PANEL(panel));
    GMainLoop *loop = g_main_loop_new(nullptr, FALSE);
    g_signal_connect_swapped(panel, "destroy", G_CALLBACK(g_main_loop_quit), loop);
    g_object_ref(panel);
    ov_dropdown_panel_open(panel);
    if (gtk_widget_get_visible(GTK_WIDGET(panel)) && !gtk_widget_in_destruction(GTK_WIDGET(panel)))
        g_main_loop_run(loop);
    g_signal_handlers_disconnect_by_data(panel, loop);
    g_object_unref(panel);
    g_main_loop_unref(loop);
}
