// A column of buttons that moves and removes the selected row of a list
// store shown in a tree view.
#pragma once

#include <gtk/gtk.h>

G_BEGIN_DECLS

#define OV_TYPE_LIST_CONTROL_PANEL (ov_list_control_panel_get_type())
G_DECLARE_FINAL_TYPE(OvListControlPanel, ov_list_control_panel, OV, LIST_CONTROL_PANEL, GtkBox)

G_END_DECLS

// Asked before the selected row is removed; returns whether it may go.
typedef gboolean (*OvListControlPanelRemoveCallback)(OvListControlPanel *panel, GtkTreeIter *iter,
                                                     gpointer user_data);

GtkWidget *ov_list_control_panel_new(GtkListStore *list_store, GtkTreeView *tree_view);
// Only the first call packs a button.
void ov_list_control_panel_pack_remove_button(OvListControlPanel *panel, const char *label,
                                              OvListControlPanelRemoveCallback callback, gpointer user_data);
