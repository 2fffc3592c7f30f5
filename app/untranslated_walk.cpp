#include "app/untranslated_walk.h"

#include "app/text_sheet_editor.h"

#include <algorithm>
#include <vector>

namespace
{

// Every child, hidden notebook pages included, in order.
void collect_editors(GtkWidget *widget, std::vector<TextSheetEditor *> &editors)
{
    if (TEXT_SHEET_IS_EDITOR(widget)) {
        editors.push_back(TEXT_SHEET_EDITOR(widget));
        return;
    }
    if (GTK_IS_CONTAINER(widget))
        gtk_container_forall(
            GTK_CONTAINER(widget),
            [](GtkWidget *child, gpointer list) {
                collect_editors(child, *static_cast<std::vector<TextSheetEditor *> *>(list));
            },
            &editors);
}

// The notebook pages that hold the editor are brought to the front.
void show_page_of(GtkWidget *widget)
{
    for (GtkWidget *child = widget, *parent = gtk_widget_get_parent(widget); parent != nullptr;
         child = parent, parent = gtk_widget_get_parent(parent)) {
        if (GTK_IS_NOTEBOOK(parent))
            gtk_notebook_set_current_page(GTK_NOTEBOOK(parent),
                                          gtk_notebook_page_num(GTK_NOTEBOOK(parent), child));
    }
}

// The editor the walk starts in: the focused one, else the one on show.
std::size_t current_editor(const std::vector<TextSheetEditor *> &editors, bool *from_focus)
{
    for (std::size_t i = 0; i < editors.size(); ++i) {
        if (gtk_widget_is_focus(GTK_WIDGET(editors[i]))) {
            *from_focus = true;
            return i;
        }
    }
    *from_focus = false;
    for (std::size_t i = 0; i < editors.size(); ++i)
        if (gtk_widget_is_drawable(GTK_WIDGET(editors[i])))
            return i;
    return 0;
}

} // namespace

gboolean ov_untranslated_walk(GtkWidget *root, gboolean forward)
{
    g_return_val_if_fail(GTK_IS_WIDGET(root), FALSE);
    std::vector<TextSheetEditor *> editors;
    collect_editors(root, editors);
    if (editors.empty())
        return FALSE;
    bool from_focus = false;
    const std::size_t start = current_editor(editors, &from_focus);
    const std::size_t n = editors.size();
    // The rest of the current sheet, the other sheets whole, then the
    // current one whole (its part before the focus).
    for (std::size_t k = 0; k <= n; ++k) {
        const std::size_t i = forward ? (start + k) % n : (start + n - k % n) % n;
        const bool whole = k > 0 || !from_focus;
        TextSheetEditor *editor = editors[i];
        if (k == n && !from_focus)
            break;
        if (text_sheet_editor_focus_untranslated(editor, forward, whole)) {
            show_page_of(GTK_WIDGET(editor));
            gtk_widget_grab_focus(GTK_WIDGET(editor));
            return TRUE;
        }
    }
    return FALSE;
}
