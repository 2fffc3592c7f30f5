// The window the template choosers share: a label, a scrolled list with one
// text column, and "OK" (sensitive exactly while an entry is selected) and
// "Cancel". Run modally on the window stack.
#pragma once

#include "core/raii.h"

#include <gtk/gtk.h>

#include <functional>

namespace ov
{

// Undoes the selection of the first row that the list's first focus in a
// shown window makes, so that the user starts with none. Call before the
// window is run with the list as its focus widget.
void focus_list_without_selection(GtkTreeView *view);

class ChooserWindow
{
  public:
    // Told the selected entry on "OK" (or a double click); returns whether
    // the window closes. It may run further windows meanwhile.
    using Accept = std::function<bool(GtkTreeModel *model, GtkTreeIter *iter)>;

    // The list's first column is the text shown.
    explicit ChooserWindow(ObjectRef<GtkListStore> store) : store_(std::move(store)) {}
    ChooserWindow(const ChooserWindow &) = delete;
    ChooserWindow &operator=(const ChooserWindow &) = delete;

    GtkListStore *store() const { return store_.get(); }
    // Returns when the window has closed.
    void run(const char *title, const char *label, const char *column, int list_width, int list_height,
             Accept accept);

  private:
    static void on_selection_changed(GtkTreeSelection *selection, gpointer self);
    static void on_ok(GtkButton *, gpointer self);
    static void on_row_activated(GtkTreeView *, GtkTreePath *, GtkTreeViewColumn *, gpointer self);
    void accept_selected();

    ObjectRef<GtkListStore> store_;
    Accept accept_;
    GtkWidget *window_ = nullptr;
    GtkTreeView *view_ = nullptr;
    GtkWidget *ok_ = nullptr;
};

} // namespace ov
