#include "widgets/list_control_panel.h"

#include "gui/gui.h"

struct _OvListControlPanel {
    GtkBox parent_instance;
    GtkListStore *list_store;
    GtkTreeView *tree_view;
    GtkTreeSelection *selection;
    gulong selection_changed_handler;
    GtkWidget *move_up_button;
    gulong move_up_handler;
    GtkWidget *move_down_button;
    gulong move_down_handler;
    GtkWidget *remove_button;
    gulong remove_handler;
    OvListControlPanelRemoveCallback remove_callback;
    gpointer remove_callback_data;
};

G_DEFINE_TYPE(OvListControlPanel, ov_list_control_panel, GTK_TYPE_BOX)

namespace
{

bool get_selected(OvListControlPanel *panel, GtkTreeIter *iter)
{
    if (panel->list_store == nullptr || panel->tree_view == nullptr || panel->selection == nullptr)
        return false;
    return gtk_tree_selection_get_selected(panel->selection, nullptr, iter);
}

void set_sensitive(GtkWidget *button, bool sensitive)
{
    if (button != nullptr)
        gtk_widget_set_sensitive(button, sensitive);
}

void update_buttons(OvListControlPanel *panel)
{
    GtkTreeIter iter;
    if (!get_selected(panel, &iter)) {
        set_sensitive(panel->move_up_button, false);
        set_sensitive(panel->move_down_button, false);
        set_sensitive(panel->remove_button, false);
        return;
    }
    GtkTreeModel *model = GTK_TREE_MODEL(panel->list_store);
    GtkTreeIter neighbour = iter;
    set_sensitive(panel->move_up_button, gtk_tree_model_iter_previous(model, &neighbour));
    neighbour = iter;
    set_sensitive(panel->move_down_button, gtk_tree_model_iter_next(model, &neighbour));
    set_sensitive(panel->remove_button, true);
}

void on_selection_changed(GtkTreeSelection *, gpointer panel)
{
    update_buttons(OV_LIST_CONTROL_PANEL(panel));
}

void move(OvListControlPanel *panel, bool up)
{
    GtkTreeIter iter;
    if (!get_selected(panel, &iter))
        return;
    GtkTreeIter neighbour = iter;
    GtkTreeModel *model = GTK_TREE_MODEL(panel->list_store);
    if (!(up ? gtk_tree_model_iter_previous(model, &neighbour) : gtk_tree_model_iter_next(model, &neighbour)))
        return;
    // List store iterators stay valid across a swap, so the selection
    // follows the moved row.
    gtk_list_store_swap(panel->list_store, &iter, &neighbour);
    gtk_tree_selection_select_iter(panel->selection, &iter);
    update_buttons(panel);
}

void on_move_up(GtkButton *, gpointer panel)
{
    move(OV_LIST_CONTROL_PANEL(panel), true);
}

void on_move_down(GtkButton *, gpointer panel)
{
    move(OV_LIST_CONTROL_PANEL(panel), false);
}

void on_remove(GtkButton *, gpointer data)
{
    auto *panel = OV_LIST_CONTROL_PANEL(data);
    GtkTreeIter iter;
    if (!get_selected(panel, &iter))
        return;
    if (panel->remove_callback != nullptr &&
        !panel->remove_callback(panel, &iter, panel->remove_callback_data))
        return;
    gtk_list_store_remove(panel->list_store, &iter);
}

void drop_button(GtkWidget **button, gulong *handler)
{
    if (*button != nullptr) {
        g_clear_signal_handler(handler, *button);
        g_clear_object(button);
    }
}

} // namespace

static void ov_list_control_panel_dispose(GObject *object)
{
    auto *panel = OV_LIST_CONTROL_PANEL(object);
    if (panel->selection != nullptr) {
        g_clear_signal_handler(&panel->selection_changed_handler, panel->selection);
        g_clear_object(&panel->selection);
    }
    drop_button(&panel->move_up_button, &panel->move_up_handler);
    drop_button(&panel->move_down_button, &panel->move_down_handler);
    drop_button(&panel->remove_button, &panel->remove_handler);
    g_clear_object(&panel->tree_view);
    g_clear_object(&panel->list_store);
    G_OBJECT_CLASS(ov_list_control_panel_parent_class)->dispose(object);
}

static void ov_list_control_panel_class_init(OvListControlPanelClass *klass)
{
    G_OBJECT_CLASS(klass)->dispose = ov_list_control_panel_dispose;
}

static void ov_list_control_panel_init(OvListControlPanel *panel)
{
    gtk_orientable_set_orientation(GTK_ORIENTABLE(panel), GTK_ORIENTATION_VERTICAL);
    gtk_box_set_spacing(GTK_BOX(panel), ov_gui_get_default_margin());
}

GtkWidget *ov_list_control_panel_new(GtkListStore *list_store, GtkTreeView *tree_view)
{
    auto *panel = OV_LIST_CONTROL_PANEL(g_object_new(OV_TYPE_LIST_CONTROL_PANEL, nullptr));
    if (list_store != nullptr)
        panel->list_store = GTK_LIST_STORE(g_object_ref(list_store));
    if (tree_view != nullptr) {
        panel->tree_view = GTK_TREE_VIEW(g_object_ref(tree_view));
        panel->selection = GTK_TREE_SELECTION(g_object_ref(gtk_tree_view_get_selection(tree_view)));
        panel->selection_changed_handler =
            g_signal_connect(panel->selection, "changed", G_CALLBACK(on_selection_changed), panel);
    }
    panel->move_up_button = GTK_WIDGET(g_object_ref(ov_gui_pack_button(GTK_BOX(panel), "Move up", FALSE)));
    panel->move_up_handler =
        g_signal_connect(panel->move_up_button, "clicked", G_CALLBACK(on_move_up), panel);
    panel->move_down_button =
        GTK_WIDGET(g_object_ref(ov_gui_pack_button(GTK_BOX(panel), "Move down", FALSE)));
    panel->move_down_handler =
        g_signal_connect(panel->move_down_button, "clicked", G_CALLBACK(on_move_down), panel);
    update_buttons(panel);
    return GTK_WIDGET(panel);
}

void ov_list_control_panel_pack_remove_button(OvListControlPanel *panel, const char *label,
                                              OvListControlPanelRemoveCallback callback, gpointer user_data)
{
    g_return_if_fail(OV_IS_LIST_CONTROL_PANEL(panel));
    if (panel->remove_button != nullptr)
        return;
    panel->remove_callback = callback;
    panel->remove_callback_data = user_data;
    panel->remove_button = GTK_WIDGET(g_object_ref(ov_gui_pack_button(GTK_BOX(panel), label, FALSE)));
    panel->remove_handler = g_signal_connect(panel->remove_button, "clicked", G_CALLBACK(on_remove), panel);
    update_buttons(panel);
}
