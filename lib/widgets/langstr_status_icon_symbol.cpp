#include "widgets/langstr_status_icon_symbol.h"

#include "gui/gui.h"
#include "lang/event_bus.h"
#include "widgets/gfx_text.h"
#include "widgets/langstr_display.h"

struct _OvLangstrStatusIconSymbol {
    GtkWidget parent_instance;
    langstr *content;
    OvEventBusHandler *active_locale_handler;
};

G_DEFINE_TYPE(OvLangstrStatusIconSymbol, ov_langstr_status_icon_symbol, GTK_TYPE_WIDGET)

namespace
{

constexpr int symbol_width = 13;
constexpr int symbol_height = 8;

void on_active_locale_changed(gpointer symbol)
{
    gtk_widget_queue_draw(GTK_WIDGET(symbol));
}

// The default cursor while sensitive (unless the window has one already),
// the parent's cursor while insensitive.
void update_cursor(GtkWidget *widget)
{
    GdkWindow *window = gtk_widget_get_window(widget);
    if (window == nullptr || !gtk_widget_get_realized(widget))
        return;
    if (!gtk_widget_is_sensitive(widget)) {
        gdk_window_set_cursor(window, nullptr);
    } else if (gdk_window_get_cursor(window) == nullptr) {
        GdkCursor *cursor = gdk_cursor_new_from_name(gtk_widget_get_display(widget), "default");
        gdk_window_set_cursor(window, cursor);
        if (cursor != nullptr)
            g_object_unref(cursor);
    }
}

} // namespace

double ov_langstr_status_icon_symbol_opacity_for(const GdkRGBA *foreground)
{
    g_return_val_if_fail(foreground != nullptr, 1.0);
    return 1.0 - (0.299 * foreground->red + 0.587 * foreground->green + 0.114 * foreground->blue);
}

static void ov_langstr_status_icon_symbol_realize(GtkWidget *widget)
{
    ov_gui_realize_own_window(widget, GDK_BUTTON_PRESS_MASK);
    update_cursor(widget);
}

static void ov_langstr_status_icon_symbol_size_allocate(GtkWidget *widget, GtkAllocation *allocation)
{
    ov_gui_allocate_own_window(widget, allocation);
}

static void ov_langstr_status_icon_symbol_get_preferred_width(GtkWidget *, int *minimum, int *natural)
{
    *minimum = *natural = symbol_width;
}

static void ov_langstr_status_icon_symbol_get_preferred_height(GtkWidget *, int *minimum, int *natural)
{
    *minimum = *natural = symbol_height;
}

static gboolean ov_langstr_status_icon_symbol_draw(GtkWidget *widget, cairo_t *cr)
{
    auto *symbol = OV_LANGSTR_STATUS_ICON_SYMBOL(widget);
    GdkRGBA foreground;
    gtk_style_context_get_color(gtk_widget_get_style_context(widget), gtk_widget_get_state_flags(widget),
                                &foreground);
    int y = (gtk_widget_get_allocated_height(widget) - symbol_height) / 2;
    ov_gfx_text_draw_langstr_status_icon(cr, 0, y, symbol->content,
                                         ov_langstr_status_icon_symbol_opacity_for(&foreground));
    return FALSE;
}

static gboolean ov_langstr_status_icon_symbol_button_press_event(GtkWidget *widget, GdkEventButton *)
{
    // The dropdown runs a nested loop in which the symbol may be updated.
    langstr *shown = ov_langstr_clone(OV_LANGSTR_STATUS_ICON_SYMBOL(widget)->content);
    ov_langstr_display_dropdown_run(shown);
    ov_langstr_free(shown);
    return TRUE;
}

static void ov_langstr_status_icon_symbol_state_flags_changed(GtkWidget *widget, GtkStateFlags previous)
{
    GTK_WIDGET_CLASS(ov_langstr_status_icon_symbol_parent_class)->state_flags_changed(widget, previous);
    update_cursor(widget);
}

static void ov_langstr_status_icon_symbol_destroy(GtkWidget *widget)
{
    auto *symbol = OV_LANGSTR_STATUS_ICON_SYMBOL(widget);
    g_clear_pointer(&symbol->active_locale_handler, ov_event_bus_disconnect);
    GTK_WIDGET_CLASS(ov_langstr_status_icon_symbol_parent_class)->destroy(widget);
}

static void ov_langstr_status_icon_symbol_finalize(GObject *object)
{
    ov_langstr_free(OV_LANGSTR_STATUS_ICON_SYMBOL(object)->content);
    G_OBJECT_CLASS(ov_langstr_status_icon_symbol_parent_class)->finalize(object);
}

static void ov_langstr_status_icon_symbol_class_init(OvLangstrStatusIconSymbolClass *klass)
{
    G_OBJECT_CLASS(klass)->finalize = ov_langstr_status_icon_symbol_finalize;
    GtkWidgetClass *widget_class = GTK_WIDGET_CLASS(klass);
    widget_class->destroy = ov_langstr_status_icon_symbol_destroy;
    widget_class->realize = ov_langstr_status_icon_symbol_realize;
    widget_class->size_allocate = ov_langstr_status_icon_symbol_size_allocate;
    widget_class->get_preferred_width = ov_langstr_status_icon_symbol_get_preferred_width;
    widget_class->get_preferred_height = ov_langstr_status_icon_symbol_get_preferred_height;
    widget_class->draw = ov_langstr_status_icon_symbol_draw;
    widget_class->button_press_event = ov_langstr_status_icon_symbol_button_press_event;
    widget_class->state_flags_changed = ov_langstr_status_icon_symbol_state_flags_changed;
}

static void ov_langstr_status_icon_symbol_init(OvLangstrStatusIconSymbol *symbol)
{
    gtk_widget_set_has_window(GTK_WIDGET(symbol), TRUE);
    symbol->active_locale_handler =
        ov_event_bus_connect(OV_EVENT_ACTIVE_LOCALE_CHANGED, on_active_locale_changed, symbol);
}

GtkWidget *ov_langstr_status_icon_symbol_new(const langstr *ls)
{
    auto *symbol =
        static_cast<OvLangstrStatusIconSymbol *>(g_object_new(OV_TYPE_LANGSTR_STATUS_ICON_SYMBOL, nullptr));
    symbol->content = ov_langstr_clone(ls);
    return GTK_WIDGET(symbol);
}

void ov_langstr_status_icon_symbol_update(OvLangstrStatusIconSymbol *symbol, const langstr *ls)
{
    g_return_if_fail(OV_IS_LANGSTR_STATUS_ICON_SYMBOL(symbol));
    langstr *old = symbol->content;
    symbol->content = ov_langstr_clone(ls);
    ov_langstr_free(old);
    gtk_widget_queue_draw(GTK_WIDGET(symbol));
}

const langstr *ov_langstr_status_icon_symbol_get_content(OvLangstrStatusIconSymbol *symbol)
{
    g_return_val_if_fail(OV_IS_LANGSTR_STATUS_ICON_SYMBOL(symbol), nullptr);
    return symbol->content;
}
