// The small menu symbol (three horizontal bars) at the end of a report
// type's notebook tab. "clicked" follows the release of the first mouse
// button on it.
#pragma once

#include <gtk/gtk.h>

G_BEGIN_DECLS
#define TYPE_TAB_MENU_ICON (tab_menu_icon_get_type())
G_DECLARE_FINAL_TYPE(TabMenuIcon, tab_menu_icon, TAB_MENU, ICON, GtkWidget)
G_END_DECLS

GtkWidget *tab_menu_icon_new();
