#include "app/tab_menu_icon.h"

struct _TabMenuIcon {
    GtkWidget parent_instance;
};

G_DEFINE_TYPE(TabMenuIcon, tab_menu_icon, GTK_TYPE_WIDGET)

enum { SIGNAL_CLICKED, N_SIGNALS };
static guint signals[N_SIGNALS];

namespace
{

constexpr int icon_width = 11;
constexpr int icon_height = 9;
constexpr int bar_spacing = 4;

} // namespace

// A window of its own, so that the icon gets its button events inside the
// tab rather than the notebook.
static void tab_menu_icon_realize(GtkWidget *widget)
{
    GtkAllocation allocation;
    gtk_widget_get_allocation(widget, &allocation);
    GdkWindowAttr attributes = {};
    attributes.x = allocation.x;
    attributes.y = allocation.y;
    attributes.width = allocation.width;
    attributes.height = allocation.height;
    attributes.wclass = GDK_INPUT_OUTPUT;
    attributes.window_type = GDK_WINDOW_CHILD;
    attributes.visual = gtk_widget_get_visual(widget);
    attributes.event_mask =
        gtk_widget_get_events(widget) | GDK_EXPOSURE_MASK | GDK_BUTTON_PRESS_MASK | GDK_BUTTON_RELEASE_MASK;
    GdkWindow *window = gdk_window_new(gtk_widget_get_parent_window(widget), &attributes,
                                       GDK_WA_X | GDK_WA_Y | GDK_WA_VISUAL);
    gtk_widget_register_window(widget, window);
    gtk_widget_set_window(widget, window);
    gtk_widget_set_realized(widget, TRUE);
}

static void tab_menu_icon_size_allocate(GtkWidget *widget, GtkAllocation *allocation)
{
    gtk_widget_set_allocation(widget, allocation);
    if (gtk_widget_get_realized(widget))
        gdk_window_move_resize(gtk_widget_get_window(widget), allocation->x, allocation->y, allocation->width,
                               allocation->height);
}

static void tab_menu_icon_get_preferred_width(GtkWidget *, int *minimum, int *natural)
{
    *minimum = *natural = icon_width;
}

static void tab_menu_icon_get_preferred_height(GtkWidget *, int *minimum, int *natural)
{
    *minimum = *natural = icon_height;
}

static gboolean tab_menu_icon_draw(GtkWidget *widget, cairo_t *cr)
{
    GtkStyleContext *context = gtk_widget_get_style_context(widget);
    const int width = gtk_widget_get_allocated_width(widget);
    const int height = gtk_widget_get_allocated_height(widget);
    gtk_render_background(context, cr, 0, 0, width, height);
    GdkRGBA color;
    gtk_style_context_get_color(context, gtk_widget_get_state_flags(widget), &color);
    gdk_cairo_set_source_rgba(cr, &color);
    const int top = (height - icon_height) / 2;
    for (int bar = 0; bar < 3; ++bar)
        cairo_rectangle(cr, 0, top + bar * bar_spacing, icon_width, 1);
    cairo_fill(cr);
    return FALSE;
}

// Handled, so that a press on the icon does not also switch the page.
static gboolean tab_menu_icon_button_press(GtkWidget *, GdkEventButton *)
{
    return TRUE;
}

static gboolean tab_menu_icon_button_release(GtkWidget *widget, GdkEventButton *event)
{
    if (event->button == GDK_BUTTON_PRIMARY)
        g_signal_emit(widget, signals[SIGNAL_CLICKED], 0);
    return TRUE;
}

static void tab_menu_icon_class_init(TabMenuIconClass *klass)
{
    GtkWidgetClass *widget_class = GTK_WIDGET_CLASS(klass);
    widget_class->realize = tab_menu_icon_realize;
    widget_class->size_allocate = tab_menu_icon_size_allocate;
    widget_class->get_preferred_width = tab_menu_icon_get_preferred_width;
    widget_class->get_preferred_height = tab_menu_icon_get_preferred_height;
    widget_class->draw = tab_menu_icon_draw;
    widget_class->button_press_event = tab_menu_icon_button_press;
    widget_class->button_release_event = tab_menu_icon_button_release;
    signals[SIGNAL_CLICKED] = g_signal_new("clicked", G_TYPE_FROM_CLASS(klass), G_SIGNAL_RUN_FIRST, 0,
                                           nullptr, nullptr, nullptr, G_TYPE_NONE, 0);
}

static void tab_menu_icon_init(TabMenuIcon *self)
{
    gtk_widget_set_has_window(GTK_WIDGET(self), TRUE);
    gtk_widget_add_events(GTK_WIDGET(self), GDK_BUTTON_PRESS_MASK | GDK_BUTTON_RELEASE_MASK);
}

GtkWidget *tab_menu_icon_new()
{
    return GTK_WIDGET(g_object_new(TYPE_TAB_MENU_ICON, nullptr));
}
