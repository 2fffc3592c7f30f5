#include "docs_gui/text_sheet_fields_gui.h"

#include "core/raii.h"
#include "core/strings.h"
#include "docs_gui/chooser_window.h"
#include "frame/window_stack.h"
#include "gui/gui.h"
#include "widgets/langstr_window.h"
#include "widgets/list_control_panel.h"

#include <cstring>
#include <vector>

namespace
{

enum { COLUMN_TYPE, COLUMN_CONTENTS, COLUMN_FIELD, N_COLUMNS };

// Longer contents are cut when the dialog opens.
constexpr std::size_t cut_at = 53;
constexpr std::size_t cut_to = 50;

struct Dialog {
    ov_text_sheet_row *row;
    ov::ObjectRef<GtkListStore> store;
    GtkWidget *window;
    GtkTreeView *view;
    GtkWidget *edit_button;
    gboolean accepted;
};

const char *type_word(const ov_text_sheet_field *field)
{
    return field->kind == OV_TEXT_SHEET_FIELD_KIND_CHECKBOX ? "Checkbox" : "Text field";
}

// The field's text in the active locale, compacted, as UTF-8; with shorten,
// cut to its first bytes and "..." when long.
ov::GStr contents_of(const ov_text_sheet_field *field, bool shorten)
{
    const char *text = ov_langstr_get_text(field->text, nullptr);
    if (text == nullptr)
        return ov::GStr(g_strdup(""));
    ov::GStr compact(ov_strip_surrounding_and_spacify_compactly_in_new_for_latin1(text));
    if (shorten && std::strlen(compact.get()) >= cut_at)
        std::strcpy(compact.get() + cut_to, "...");
    return ov::GStr(ov_convert_latin1_to_utf8(compact.get()));
}

ov_text_sheet_field *field_at(GtkTreeModel *model, GtkTreeIter *iter)
{
    gpointer field = nullptr;
    gtk_tree_model_get(model, iter, COLUMN_FIELD, &field, -1);
    return static_cast<ov_text_sheet_field *>(field);
}

// Fields added in this dialog are not linked into the row.
bool is_new(const ov_text_sheet_field *field)
{
    return field->previous == nullptr;
}

void append_and_select(Dialog *dialog, ov_text_sheet_field *field)
{
    GtkTreeIter iter;
    gtk_list_store_insert_with_values(dialog->store.get(), &iter, -1, COLUMN_TYPE, type_word(field),
                                      COLUMN_CONTENTS, contents_of(field, false).get(), COLUMN_FIELD, field,
                                      -1);
    gtk_tree_selection_select_iter(gtk_tree_view_get_selection(dialog->view), &iter);
    ov::Owned<GtkTreePath, gtk_tree_path_free> path(
        gtk_tree_model_get_path(GTK_TREE_MODEL(dialog->store.get()), &iter));
    gtk_tree_view_scroll_to_cell(dialog->view, path.get(), nullptr, FALSE, 0, 0);
}

// Checkbox labels are required, so the window refuses an empty text.
gboolean run_label_window(langstr **label, const char *title)
{
    return ov_langstr_window_run(0, label, nullptr, nullptr, 0, FALSE, title, "Enter checkbox label", nullptr,
                                 nullptr);
}

void on_add_text_field(GtkButton *, gpointer data)
{
    append_and_select(static_cast<Dialog *>(data),
                      ov_text_sheet_field_new(OV_TEXT_SHEET_FIELD_KIND_TEXT_FIELD));
}

void on_add_checkbox(GtkButton *, gpointer data)
{
    ov_text_sheet_field *field = ov_text_sheet_field_new(OV_TEXT_SHEET_FIELD_KIND_CHECKBOX);
    if (run_label_window(&field->text, "Add checkbox"))
        append_and_select(static_cast<Dialog *>(data), field);
    else
        ov_text_sheet_field_destroy(field);
}

// The label changes in place at once: closing the dialog without "OK" keeps
// the edit.
void on_edit(GtkButton *, gpointer data)
{
    auto *dialog = static_cast<Dialog *>(data);
    GtkTreeModel *model = nullptr;
    GtkTreeIter iter;
    if (!gtk_tree_selection_get_selected(gtk_tree_view_get_selection(dialog->view), &model, &iter))
        return;
    ov_text_sheet_field *field = field_at(model, &iter);
    if (run_label_window(&field->text, "Edit checkbox"))
        gtk_list_store_set(dialog->store.get(), &iter, COLUMN_CONTENTS, contents_of(field, false).get(), -1);
}

void on_selection_changed(GtkTreeSelection *selection, gpointer data)
{
    auto *dialog = static_cast<Dialog *>(data);
    GtkTreeModel *model = nullptr;
    GtkTreeIter iter;
    const bool checkbox = gtk_tree_selection_get_selected(selection, &model, &iter) &&
                          field_at(model, &iter)->kind == OV_TEXT_SHEET_FIELD_KIND_CHECKBOX;
    gtk_widget_set_sensitive(dialog->edit_button, checkbox);
}

// A field added in this dialog goes at once; a field of the row stays in
// the row until "OK".
gboolean on_delete(OvListControlPanel *, GtkTreeIter *iter, gpointer data)
{
    auto *dialog = static_cast<Dialog *>(data);
    ov_text_sheet_field *field = field_at(GTK_TREE_MODEL(dialog->store.get()), iter);
    if (is_new(field))
        ov_text_sheet_field_destroy(field);
    return TRUE;
}

void on_ok(GtkButton *, gpointer data)
{
    auto *dialog = static_cast<Dialog *>(data);
    dialog->accepted = TRUE;
    gtk_widget_destroy(dialog->window);
}

std::vector<ov_text_sheet_field *> listed_fields(GtkListStore *store)
{
    std::vector<ov_text_sheet_field *> fields;
    GtkTreeModel *model = GTK_TREE_MODEL(store);
    GtkTreeIter iter;
    for (gboolean valid = gtk_tree_model_get_iter_first(model, &iter); valid;
         valid = gtk_tree_model_iter_next(model, &iter))
        fields.push_back(field_at(model, &iter));
    return fields;
}

// The row gets the listed fields in list order; fields deleted in the
// dialog are destroyed.
void give_fields(ov_text_sheet_row *row, const std::vector<ov_text_sheet_field *> &fields)
{
    for (ov_text_sheet_field *field : fields)
        ov_text_sheet_field_remove(field);
    while (ov_text_sheet_field *left = row->fields.first())
        ov_text_sheet_field_destroy(left);
    for (ov_text_sheet_field *field : fields)
        ov_text_sheet_row_add_field(row, field);
}

GtkWidget *build_window(Dialog *dialog)
{
    GtkWidget *window = ov_gui_create_window("Set up fields");
    GtkWidget *box = ov_gui_add_vbox(GTK_CONTAINER(window), TRUE);
    ov_gui_set_default_surrounding_margin(box);

    GtkWidget *frame_box = ov_gui_create_hbox(TRUE);
    ov_gui_set_default_surrounding_margin(frame_box);
    ov_gui_pack_widget_in_frame(GTK_BOX(box), frame_box, TRUE, "Fields in this row");
    GtkWidget *scrolled = ov_gui_pack_scrolled_window(GTK_BOX(frame_box), TRUE, GTK_POLICY_NEVER,
                                                      GTK_POLICY_AUTOMATIC, GTK_SHADOW_IN);
    gtk_widget_set_size_request(scrolled, 450, 150);
    dialog->view = GTK_TREE_VIEW(gtk_tree_view_new_with_model(GTK_TREE_MODEL(dialog->store.get())));
    gtk_tree_view_append_column(dialog->view,
                                gtk_tree_view_column_new_with_attributes("Type", gtk_cell_renderer_text_new(),
                                                                         "text", COLUMN_TYPE, nullptr));
    GtkTreeViewColumn *contents = gtk_tree_view_column_new_with_attributes(
        "Contents", gtk_cell_renderer_text_new(), "text", COLUMN_CONTENTS, nullptr);
    gtk_tree_view_column_set_expand(contents, TRUE);
    gtk_tree_view_append_column(dialog->view, contents);
    gtk_container_add(GTK_CONTAINER(scrolled), GTK_WIDGET(dialog->view));
    gtk_widget_show(GTK_WIDGET(dialog->view));

    GtkWidget *buttons = ov_gui_pack_vbox(GTK_BOX(frame_box), FALSE, TRUE);
    g_signal_connect(ov_gui_pack_button(GTK_BOX(buttons), "Add text field", FALSE), "clicked",
                     G_CALLBACK(on_add_text_field), dialog);
    g_signal_connect(ov_gui_pack_button(GTK_BOX(buttons), "Add checkbox", FALSE), "clicked",
                     G_CALLBACK(on_add_checkbox), dialog);
    dialog->edit_button = ov_gui_pack_button(GTK_BOX(buttons), "Edit", FALSE);
    gtk_widget_set_sensitive(dialog->edit_button, FALSE);
    g_signal_connect(dialog->edit_button, "clicked", G_CALLBACK(on_edit), dialog);
    GtkWidget *panel = ov_gui_pack_widget(
        GTK_BOX(buttons), ov_list_control_panel_new(dialog->store.get(), dialog->view), FALSE);
    ov_list_control_panel_pack_remove_button(OV_LIST_CONTROL_PANEL(panel), "Delete", on_delete, dialog);
    g_signal_connect(gtk_tree_view_get_selection(dialog->view), "changed", G_CALLBACK(on_selection_changed),
                     dialog);

    GtkWidget *bottom = ov_gui_pack_hbox(GTK_BOX(box), FALSE, TRUE);
    gtk_widget_set_halign(bottom, GTK_ALIGN_END);
    g_signal_connect(ov_gui_pack_button(GTK_BOX(bottom), "OK", TRUE), "clicked", G_CALLBACK(on_ok), dialog);
    g_signal_connect_swapped(ov_gui_pack_button(GTK_BOX(bottom), "Cancel", FALSE), "clicked",
                             G_CALLBACK(gtk_widget_destroy), window);
    gtk_widget_show(box);
    ov::focus_list_without_selection(dialog->view);
    return window;
}

} // namespace

gboolean ov_text_sheet_fields_gui_run(ov_text_sheet_row *row, GtkWindow *)
{
    g_return_val_if_fail(row != nullptr, FALSE);
    Dialog dialog = {row,
                     ov::ObjectRef<GtkListStore>::adopt(
                         gtk_list_store_new(N_COLUMNS, G_TYPE_STRING, G_TYPE_STRING, G_TYPE_POINTER)),
                     nullptr,
                     nullptr,
                     nullptr,
                     FALSE};
    for (ov_text_sheet_field *field : row->fields)
        gtk_list_store_insert_with_values(dialog.store.get(), nullptr, -1, COLUMN_TYPE, type_word(field),
                                          COLUMN_CONTENTS, contents_of(field, true).get(), COLUMN_FIELD,
                                          field, -1);
    dialog.window = build_window(&dialog);
    ov_window_stack_run_window(GTK_WINDOW(dialog.window), OV_WINDOW_STACK_POSITION_CENTER_ON_PARENT,
                               GTK_WIDGET(dialog.view), nullptr, nullptr);

    std::vector<ov_text_sheet_field *> fields = listed_fields(dialog.store.get());
    if (dialog.accepted) {
        give_fields(row, fields);
        return TRUE;
    }
    for (ov_text_sheet_field *field : fields)
        if (is_new(field))
            ov_text_sheet_field_destroy(field);
    return FALSE;
}
