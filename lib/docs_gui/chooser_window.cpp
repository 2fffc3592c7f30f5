#include "docs_gui/chooser_window.h"

#include "frame/window_stack.h"
#include "gui/gui.h"

namespace ov
{

namespace
{

void unselect_after_first_focus(GtkWidget *view, gpointer)
{
    if (!gtk_widget_get_realized(view))
        return;
    gtk_tree_selection_unselect_all(gtk_tree_view_get_selection(GTK_TREE_VIEW(view)));
    g_signal_handlers_disconnect_by_func(view, reinterpret_cast<gpointer>(unselect_after_first_focus),
                                         nullptr);
}

} // namespace

void focus_list_without_selection(GtkTreeView *view)
{
    // Focusing a realised tree view without a cursor puts the cursor on the
    // first row and selects it; later focusing keeps the cursor.
    g_signal_connect_after(view, "grab-focus", G_CALLBACK(unselect_after_first_focus), nullptr);
}

void ChooserWindow::on_selection_changed(GtkTreeSelection *selection, gpointer self)
{
    gtk_widget_set_sensitive(static_cast<ChooserWindow *>(self)->ok_,
                             gtk_tree_selection_get_selected(selection, nullptr, nullptr));
}

void ChooserWindow::on_ok(GtkButton *, gpointer self)
{
    static_cast<ChooserWindow *>(self)->accept_selected();
}

void ChooserWindow::on_row_activated(GtkTreeView *, GtkTreePath *, GtkTreeViewColumn *, gpointer self)
{
    static_cast<ChooserWindow *>(self)->accept_selected();
}

void ChooserWindow::accept_selected()
{
    GtkTreeModel *model = nullptr;
    GtkTreeIter iter;
    if (!gtk_tree_selection_get_selected(gtk_tree_view_get_selection(view_), &model, &iter))
        return;
    // The accept function may run further choosers; the window must outlive
    // them even if it is closed meanwhile.
    ObjectRef<GtkWidget> window = ObjectRef<GtkWidget>::ref(window_);
    if (accept_(model, &iter))
        gtk_widget_destroy(window.get());
}

void ChooserWindow::run(const char *title, const char *label, const char *column, int list_width,
                        int list_height, Accept accept)
{
    accept_ = std::move(accept);
    window_ = ov_gui_create_window(title);
    GtkWidget *box = ov_gui_add_vbox(GTK_CONTAINER(window_), TRUE);
    ov_gui_set_default_surrounding_margin(box);
    ov_gui_pack_label(GTK_BOX(box), label, 0, 0.5);

    GtkWidget *scrolled = ov_gui_pack_scrolled_window(GTK_BOX(box), TRUE, GTK_POLICY_NEVER,
                                                      GTK_POLICY_AUTOMATIC, GTK_SHADOW_IN);
    gtk_widget_set_size_request(scrolled, list_width, list_height);
    view_ = GTK_TREE_VIEW(gtk_tree_view_new_with_model(GTK_TREE_MODEL(store_.get())));
    gtk_tree_view_append_column(view_, gtk_tree_view_column_new_with_attributes(
                                           column, gtk_cell_renderer_text_new(), "text", 0, nullptr));
    gtk_container_add(GTK_CONTAINER(scrolled), GTK_WIDGET(view_));
    gtk_widget_show(GTK_WIDGET(view_));

    GtkWidget *buttons = ov_gui_pack_hbox(GTK_BOX(box), FALSE, TRUE);
    gtk_widget_set_halign(buttons, GTK_ALIGN_END);
    ok_ = ov_gui_pack_button(GTK_BOX(buttons), "OK", TRUE);
    GtkWidget *cancel = ov_gui_pack_button(GTK_BOX(buttons), "Cancel", FALSE);
    g_signal_connect(ok_, "clicked", G_CALLBACK(on_ok), this);
    g_signal_connect_swapped(cancel, "clicked", G_CALLBACK(gtk_widget_destroy), window_);
    g_signal_connect(view_, "row-activated", G_CALLBACK(on_row_activated), this);

    focus_list_without_selection(view_);
    gtk_widget_set_sensitive(ok_, FALSE);
    g_signal_connect(gtk_tree_view_get_selection(view_), "changed", G_CALLBACK(on_selection_changed), this);

    gtk_widget_show(box);
    ov_window_stack_run_window(GTK_WINDOW(window_), OV_WINDOW_STACK_POSITION_CENTER_ON_PARENT,
                               GTK_WIDGET(view_), nullptr, nullptr);
    window_ = nullptr;
    view_ = nullptr;
    ok_ = nullptr;
}

} // namespace ov
