#include "widgets/langstr_status_icon.h"

#include "widgets/langstr_status_icon_symbol.h"

struct _OvLangstrStatusIcon {
    GtkFixed parent_instance;
    GtkWidget *symbol; // own reference
    guint centre_source;
};

G_DEFINE_TYPE(OvLangstrStatusIcon, ov_langstr_status_icon, GTK_TYPE_FIXED)

namespace
{

gboolean centre_symbol(gpointer data)
{
    auto *icon = OV_LANGSTR_STATUS_ICON(data);
    icon->centre_source = 0;
    if (icon->symbol != nullptr) {
        int y = (gtk_widget_get_allocated_height(GTK_WIDGET(icon)) -
                 gtk_widget_get_allocated_height(icon->symbol)) /
                2;
        int current_y = 0;
        gtk_container_child_get(GTK_CONTAINER(icon), icon->symbol, "y", &current_y, nullptr);
        if (current_y != y)
            gtk_fixed_move(GTK_FIXED(icon), icon->symbol, 0, y);
    }
    return G_SOURCE_REMOVE;
}

} // namespace

static void ov_langstr_status_icon_get_preferred_width(GtkWidget *widget, int *minimum, int *natural)
{
    auto *icon = OV_LANGSTR_STATUS_ICON(widget);
    if (icon->symbol != nullptr)
        gtk_widget_get_preferred_width(icon->symbol, minimum, natural);
    else
        *minimum = *natural = 1;
}

static void ov_langstr_status_icon_get_preferred_height(GtkWidget *widget, int *minimum, int *natural)
{
    auto *icon = OV_LANGSTR_STATUS_ICON(widget);
    if (icon->symbol != nullptr)
        gtk_widget_get_preferred_height(icon->symbol, minimum, natural);
    else
        *minimum = *natural = 1;
}

static void ov_langstr_status_icon_size_allocate(GtkWidget *widget, GtkAllocation *allocation)
{
    GTK_WIDGET_CLASS(ov_langstr_status_icon_parent_class)->size_allocate(widget, allocation);
    auto *icon = OV_LANGSTR_STATUS_ICON(widget);
    if (icon->centre_source == 0)
        icon->centre_source = g_idle_add(centre_symbol, icon);
}

static void ov_langstr_status_icon_destroy(GtkWidget *widget)
{
    auto *icon = OV_LANGSTR_STATUS_ICON(widget);
    g_clear_object(&icon->symbol);
    g_clear_handle_id(&icon->centre_source, g_source_remove);
    GTK_WIDGET_CLASS(ov_langstr_status_icon_parent_class)->destroy(widget);
}

static void ov_langstr_status_icon_class_init(OvLangstrStatusIconClass *klass)
{
    GtkWidgetClass *widget_class = GTK_WIDGET_CLASS(klass);
    widget_class->destroy = ov_langstr_status_icon_destroy;
    widget_class->get_preferred_width = ov_langstr_status_icon_get_preferred_width;
    widget_class->get_preferred_height = ov_langstr_status_icon_get_preferred_height;
    widget_class->size_allocate = ov_langstr_status_icon_size_allocate;
}

static void ov_langstr_status_icon_init(OvLangstrStatusIcon *) {}

GtkWidget *ov_langstr_status_icon_new(const langstr *ls)
{
    auto *icon = static_cast<OvLangstrStatusIcon *>(g_object_new(OV_TYPE_LANGSTR_STATUS_ICON, nullptr));
    icon->symbol = GTK_WIDGET(g_object_ref_sink(ov_langstr_status_icon_symbol_new(ls)));
    gtk_fixed_put(GTK_FIXED(icon), icon->symbol, 0, 0);
    gtk_widget_show(icon->symbol);
    return GTK_WIDGET(icon);
}

void ov_langstr_status_icon_update(OvLangstrStatusIcon *icon, const langstr *ls)
{
    g_return_if_fail(OV_IS_LANGSTR_STATUS_ICON(icon));
    if (icon->symbol != nullptr)
        ov_langstr_status_icon_symbol_update(OV_LANGSTR_STATUS_ICON_SYMBOL(icon->symbol), ls);
}

GtkWidget *ov_langstr_status_icon_get_symbol(OvLangstrStatusIcon *icon)
{
    g_return_val_if_fail(OV_IS_LANGSTR_STATUS_ICON(icon), nullptr);
    return icon->symbol;
}
