#include "support/gui_driver.h"

#include "core/raii.h"
#include "frame/window_stack.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <vector>

namespace ov::test
{

namespace
{

// The main-loop depths of the script actions running, innermost last.
std::vector<int> acting_depths;

using Predicate = std::function<bool(GtkWidget *)>;

// Visits root and everything inside it in the window's order until visit
// returns true, and returns that widget.
GtkWidget *walk(GtkWidget *root, const Predicate &visit)
{
    if (root == nullptr || visit(root))
        return root;
    if (!GTK_IS_CONTAINER(root))
        return nullptr;
    struct State {
        const Predicate *visit;
        GtkWidget *found;
    } state{&visit, nullptr};
    gtk_container_forall(
        GTK_CONTAINER(root),
        [](GtkWidget *child, gpointer data) {
            auto *s = static_cast<State *>(data);
            if (s->found == nullptr)
                s->found = walk(child, *s->visit);
        },
        &state);
    return state.found;
}

// The shown top-level windows of that type, newest first.
std::vector<GtkWindow *> shown_windows(GtkWindowType type)
{
    std::vector<GtkWindow *> windows;
    GList *list = gtk_window_list_toplevels();
    for (GList *walk = list; walk != nullptr; walk = walk->next)
        if (gtk_window_get_window_type(GTK_WINDOW(walk->data)) == type &&
            gtk_widget_get_mapped(GTK_WIDGET(walk->data)))
            windows.push_back(GTK_WINDOW(walk->data));
    g_list_free(list);
    return windows;
}

std::vector<GtkMenu *> shown_menus()
{
    std::vector<GtkMenu *> menus;
    for (GtkWindow *popup : shown_windows(GTK_WINDOW_POPUP)) {
        GtkWidget *child = gtk_bin_get_child(GTK_BIN(popup));
        if (GTK_IS_MENU(child) && gtk_widget_get_visible(child))
            menus.push_back(GTK_MENU(child));
    }
    return menus;
}

// Text without mnemonic underscores ("_Yes" -> "Yes", "__" -> "_").
std::string without_mnemonics(const char *text)
{
    std::string plain;
    for (const char *p = text; *p != '\0'; ++p) {
        if (*p == '_' && p[1] != '\0')
            ++p;
        plain += *p;
    }
    return plain;
}

bool same_label(const char *shown, const char *wanted)
{
    return shown != nullptr && without_mnemonics(shown) == without_mnemonics(wanted);
}

// The texts (without markup) of the labels inside root, joined.
std::string joined_labels(GtkWidget *root, const char *separator, bool visible_only)
{
    std::string text;
    for (GtkWidget *label : find_widgets(root, [&](GtkWidget *w) {
             return GTK_IS_LABEL(w) && (!visible_only || gtk_widget_get_visible(w));
         }))
        text += (text.empty() ? "" : separator) + std::string(gtk_label_get_text(GTK_LABEL(label)));
    return text;
}

std::string menu_item_label(GtkWidget *item)
{
    if (GTK_IS_SEPARATOR_MENU_ITEM(item))
        return "-";
    const char *label = gtk_menu_item_get_label(GTK_MENU_ITEM(item));
    return label != nullptr ? without_mnemonics(label) : joined_labels(item, "", false);
}

std::vector<GtkWidget *> menu_items(GtkMenu *menu)
{
    return find_widgets(GTK_WIDGET(menu),
                        [&](GtkWidget *w) { return gtk_widget_get_parent(w) == GTK_WIDGET(menu); });
}

// A press and its release sent to window from the pointer, or from the
// keyboard for keys; fill sets the rest of what the events carry.
void send_events(GdkWindow *window, std::initializer_list<GdkEventType> types,
                 const std::function<void(GdkEvent *)> &fill)
{
    GdkSeat *seat = gdk_display_get_default_seat(gdk_window_get_display(window));
    const GdkEventType first = *types.begin();
    const bool keys = first == GDK_KEY_PRESS || first == GDK_KEY_RELEASE;
    GdkDevice *device = keys ? gdk_seat_get_keyboard(seat) : gdk_seat_get_pointer(seat);
    // A press may close the window (a double click that accepts a list).
    auto keep = ov::ObjectRef<GdkWindow>::ref(window);
    for (GdkEventType type : types) {
        GdkEvent *event = gdk_event_new(type);
        event->any.window = GDK_WINDOW(g_object_ref(window));
        event->any.send_event = TRUE;
        gdk_event_set_device(event, device);
        gdk_event_set_source_device(event, device);
        fill(event);
        if (!gdk_window_is_destroyed(window))
            gtk_main_do_event(event);
        gdk_event_free(event);
    }
}

void send_key_events(GdkWindow *window, std::initializer_list<GdkEventType> types, guint keyval,
                     GdkModifierType modifiers)
{
    GdkKeymapKey *keys = nullptr;
    int count = 0;
    gdk_keymap_get_entries_for_keyval(gdk_keymap_get_for_display(gdk_window_get_display(window)), keyval,
                                      &keys, &count);
    send_events(window, types, [&](GdkEvent *event) {
        event->key.state = modifiers;
        event->key.keyval = keyval;
        event->key.hardware_keycode = count > 0 ? keys[0].keycode : 0;
        event->key.group = count > 0 ? keys[0].group : 0;
    });
    g_free(keys);
}

void send_key(GdkWindow *window, guint keyval, GdkModifierType modifiers = GdkModifierType(0))
{
    send_key_events(window, {GDK_KEY_PRESS, GDK_KEY_RELEASE}, keyval, modifiers);
}

// The realised top-level window of a widget, focused on the widget.
GdkWindow *focus_for_keys(GtkWidget *widget)
{
    GtkWidget *toplevel = gtk_widget_get_toplevel(widget);
    // Grabbing the focus again would select an entry's whole text.
    if (widget != toplevel && !gtk_widget_is_focus(widget))
        gtk_widget_grab_focus(widget);
    GdkWindow *window = gtk_widget_get_window(toplevel);
    if (window == nullptr)
        ADD_FAILURE() << "The widget to type into is not realised.";
    return window;
}

// The deepest visible child window of parent that holds the point (given
// in parent's coordinates); the point is turned into that window's.
GdkWindow *window_at(GdkWindow *parent, int &x, int &y)
{
    for (GList *walk = gdk_window_peek_children(parent); walk != nullptr; walk = walk->next) {
        auto *child = GDK_WINDOW(walk->data);
        int cx, cy, cw, ch;
        gdk_window_get_geometry(child, &cx, &cy, &cw, &ch);
        if (gdk_window_is_visible(child) && x >= cx && y >= cy && x < cx + cw && y < cy + ch) {
            x -= cx;
            y -= cy;
            return window_at(child, x, y);
        }
    }
    return parent;
}

// Opens the submenu of item with the arrow keys and waits until it is shown.
GtkMenu *open_submenu(GtkMenu *menu, GtkWidget *item)
{
    GtkWidget *submenu = gtk_menu_item_get_submenu(GTK_MENU_ITEM(item));
    if (submenu == nullptr)
        return nullptr;
    GdkWindow *window = gtk_widget_get_window(gtk_widget_get_toplevel(GTK_WIDGET(menu)));
    for (int i = 0; i < 200 && gtk_menu_shell_get_selected_item(GTK_MENU_SHELL(menu)) != item; ++i)
        send_key(window, GDK_KEY_Down);
    send_key(window, GDK_KEY_Right);
    wait_until([&] { return gtk_widget_get_mapped(submenu); }, 1000);
    return gtk_widget_get_mapped(submenu) ? GTK_MENU(submenu) : nullptr;
}

} // namespace

GtkWindow *top_window()
{
    std::vector<GtkWindow *> windows = shown_windows(GTK_WINDOW_TOPLEVEL);
    auto dialog_of = [&](GtkWindow *owner) {
        auto it = std::find_if(windows.begin(), windows.end(),
                               [&](GtkWindow *w) { return gtk_window_get_transient_for(w) == owner; });
        return it == windows.end() ? nullptr : *it;
    };
    GtkWindow *top = ov_window_stack_get_top_busy_window();
    if (top == nullptr)
        top = ov_window_stack_get_top_window();
    if (top != nullptr) {
        // A dialog run outside the stack sits above the window it belongs to.
        while (GtkWindow *dialog = dialog_of(top))
            top = dialog;
        if (gtk_widget_get_mapped(GTK_WIDGET(top)))
            return top;
    }
    // Otherwise a modal window nothing is transient for, else the last such.
    GtkWindow *fallback = nullptr;
    for (GtkWindow *window : windows) {
        if (dialog_of(window) != nullptr)
            continue;
        if (gtk_window_get_modal(window))
            return window;
        fallback = window;
    }
    return fallback;
}

bool window_shown(const char *title)
{
    GtkWindow *top = top_window();
    return top != nullptr && g_strcmp0(gtk_window_get_title(top), title) == 0;
}

GtkMenu *open_menu()
{
    std::vector<GtkMenu *> menus = shown_menus();
    for (GtkMenu *menu : menus)
        if (std::none_of(menus.begin(), menus.end(), [&](GtkMenu *other) {
                GtkWidget *attach = gtk_menu_get_attach_widget(other);
                return other != menu && attach != nullptr &&
                       gtk_widget_get_parent(attach) == GTK_WIDGET(menu);
            }))
            return menu;
    return nullptr;
}

bool menu_shown()
{
    return open_menu() != nullptr;
}

std::string menu_labels(GtkMenu *menu, bool states)
{
    std::string labels;
    for (GtkWidget *item : menu_items(menu)) {
        labels += (labels.empty() ? "" : "|") + menu_item_label(item);
        if (GTK_IS_MENU_ITEM(item) && gtk_menu_item_get_submenu(GTK_MENU_ITEM(item)) != nullptr)
            labels += " >";
        if (states && !GTK_IS_SEPARATOR_MENU_ITEM(item) && !gtk_widget_get_sensitive(item))
            labels += "(off)";
    }
    return labels;
}

GtkWidget *find_menu_item(GtkMenu *menu, const char *label)
{
    for (GtkWidget *item : menu_items(menu))
        if (menu_item_label(item) == without_mnemonics(label))
            return item;
    return nullptr;
}

namespace
{

// The sensitive item of that label in menu; fails the test when there is none.
GtkWidget *sensitive_item(GtkMenu *menu, const char *label)
{
    GtkWidget *item = menu != nullptr ? find_menu_item(menu, label) : nullptr;
    if (item != nullptr && gtk_widget_is_sensitive(item))
        return item;
    ADD_FAILURE() << "No sensitive menu item \"" << label
                  << "\" in: " << (menu != nullptr ? menu_labels(menu) : "(no open menu)");
    return nullptr;
}

} // namespace

void activate_menu_item(const char *path)
{
    GtkMenu *menu = open_menu();
    ov::GStrv parts(g_strsplit(path, "/", -1));
    for (char **part = parts.get(); *part != nullptr; ++part) {
        GtkWidget *item = sensitive_item(menu, *part);
        if (item == nullptr)
            return;
        if (part[1] == nullptr)
            gtk_menu_shell_activate_item(GTK_MENU_SHELL(menu), item, TRUE);
        else
            menu = open_submenu(menu, item); // null when it opens none
    }
    flush_events();
}

void choose_menu_item_by_keys(const char *label)
{
    GtkMenu *menu = open_menu();
    GtkWidget *item = sensitive_item(menu, label);
    if (item == nullptr)
        return;
    GdkWindow *window = gtk_widget_get_window(gtk_widget_get_toplevel(GTK_WIDGET(menu)));
    // Down passes over separators and insensitive items; the list wraps.
    for (int presses = 0; gtk_menu_shell_get_selected_item(GTK_MENU_SHELL(menu)) != item; ++presses) {
        if (presses > 64) {
            ADD_FAILURE() << "Down never reaches \"" << label << "\"";
            return;
        }
        send_key(window, GDK_KEY_Down);
        flush_events();
    }
    send_key(window, GDK_KEY_Return);
    flush_events();
}

void dismiss_menu()
{
    GtkMenu *menu = open_menu();
    if (menu == nullptr) {
        ADD_FAILURE() << "No menu is open to dismiss.";
        return;
    }
    send_key(gtk_widget_get_window(gtk_widget_get_toplevel(GTK_WIDGET(menu))), GDK_KEY_Escape);
    flush_events();
}

std::vector<GtkWidget *> find_widgets(GtkWidget *root, const Predicate &predicate)
{
    std::vector<GtkWidget *> found;
    walk(root, [&](GtkWidget *w) {
        if (predicate(w))
            found.push_back(w);
        return false;
    });
    return found;
}

GtkWidget *find_widget(GtkWidget *root, const Predicate &predicate)
{
    return walk(root, predicate);
}

GtkWidget *find_button(GtkWidget *root, const char *label)
{
    return walk(root, [&](GtkWidget *w) {
        return GTK_IS_BUTTON(w) && gtk_widget_get_visible(w) &&
               (same_label(gtk_button_get_label(GTK_BUTTON(w)), label) ||
                same_label(joined_labels(w, "", false).c_str(), label));
    });
}

std::string label_texts(GtkWidget *root)
{
    return joined_labels(root, "|", true);
}

GtkWidget *find_tab(GtkWidget *root, const char *text)
{
    GtkWidget *tab = nullptr;
    walk(root, [&](GtkWidget *w) {
        if (!GTK_IS_NOTEBOOK(w))
            return false;
        auto *notebook = GTK_NOTEBOOK(w);
        for (int i = 0; i < gtk_notebook_get_n_pages(notebook) && tab == nullptr; ++i) {
            GtkWidget *label = gtk_notebook_get_tab_label(notebook, gtk_notebook_get_nth_page(notebook, i));
            if (label != nullptr && walk(label, [&](GtkWidget *l) {
                                        return GTK_IS_LABEL(l) &&
                                               same_label(gtk_label_get_text(GTK_LABEL(l)), text);
                                    }) != nullptr)
                tab = label;
        }
        return tab != nullptr;
    });
    return tab;
}

std::string tab_texts(GtkWidget *root)
{
    auto *notebook = GTK_NOTEBOOK(walk(root, [](GtkWidget *w) { return GTK_IS_NOTEBOOK(w); }));
    std::string texts;
    for (int i = 0; notebook != nullptr && i < gtk_notebook_get_n_pages(notebook); ++i) {
        GtkWidget *label = gtk_notebook_get_tab_label(notebook, gtk_notebook_get_nth_page(notebook, i));
        texts += (i > 0 ? "|" : "") + joined_labels(label, "", true);
    }
    return texts;
}

void click(GtkWidget *widget)
{
    click_at(widget, -1, -1);
}

// A press and release of the first mouse button at (x, y) in the widget's
// allocation (its middle for negative values); with twice a second pair and
// the double-click event follow.
void click_at(GtkWidget *widget, int x, int y, bool twice)
{
    if (widget == nullptr || !gtk_widget_is_sensitive(widget) || !gtk_widget_get_mapped(widget)) {
        ADD_FAILURE() << "The widget to click is missing, insensitive or not shown.";
        return;
    }
    // A widget added to a shown window is laid out with the next frame.
    GtkAllocation allocation;
    wait_until(
        [&] {
            gtk_widget_get_allocation(widget, &allocation);
            return allocation.x >= 0 && allocation.width > 1;
        },
        1000);
    if (x < 0 || y < 0) {
        x = allocation.width / 2;
        y = allocation.height / 2;
    }
    GtkWidget *toplevel = gtk_widget_get_toplevel(widget);
    if (!gtk_widget_translate_coordinates(widget, toplevel, x, y, &x, &y)) {
        ADD_FAILURE() << "The widget to click is not inside a window.";
        return;
    }
    GdkWindow *window = window_at(gtk_widget_get_window(toplevel), x, y);
    int root_x = 0;
    int root_y = 0;
    gdk_window_get_root_coords(window, x, y, &root_x, &root_y);
    auto keep = ov::ObjectRef<GdkWindow>::ref(window); // see send_events
    for (int n = 0; n < (twice ? 2 : 1); ++n)
        send_events(window, {GDK_BUTTON_PRESS, GDK_BUTTON_RELEASE}, [&](GdkEvent *event) {
            event->button.x = x;
            event->button.y = y;
            event->button.x_root = root_x;
            event->button.y_root = root_y;
            event->button.button = 1;
            event->button.state = event->type == GDK_BUTTON_RELEASE ? GDK_BUTTON1_MASK : 0;
            if (n == 1 && event->type == GDK_BUTTON_RELEASE && !gdk_window_is_destroyed(window)) {
                // GDK sends the double press between the second press and release.
                GdkEvent *double_press = gdk_event_copy(event);
                double_press->type = GDK_2BUTTON_PRESS;
                double_press->button.state = 0;
                gtk_main_do_event(double_press);
                gdk_event_free(double_press);
            }
        });
    flush_events();
}

namespace
{

GtkTreeView *first_tree_view(GtkWidget *root)
{
    return GTK_TREE_VIEW(find_widget(root, [](GtkWidget *w) { return GTK_IS_TREE_VIEW(w); }));
}

// The texts the row shows in each visible column.
std::vector<std::string> row_texts(GtkTreeView *view, GtkTreeIter *iter)
{
    std::vector<std::string> texts;
    GtkTreeModel *model = gtk_tree_view_get_model(view);
    for (int i = 0; GtkTreeViewColumn *column = gtk_tree_view_get_column(view, i); ++i) {
        if (!gtk_tree_view_column_get_visible(column))
            continue;
        gtk_tree_view_column_cell_set_cell_data(column, model, iter, FALSE, FALSE);
        std::string text;
        GList *cells = gtk_cell_layout_get_cells(GTK_CELL_LAYOUT(column));
        for (GList *cell = cells; cell != nullptr; cell = cell->next)
            if (GTK_IS_CELL_RENDERER_TEXT(cell->data)) {
                char *shown = nullptr;
                g_object_get(cell->data, "text", &shown, nullptr);
                text += shown != nullptr ? shown : "";
                g_free(shown);
            }
        g_list_free(cells);
        texts.push_back(text);
    }
    return texts;
}

std::string row_text(GtkTreeView *view, GtkTreeIter *iter)
{
    std::string row;
    for (const std::string &text : row_texts(view, iter))
        row += (row.empty() ? "" : ", ") + text;
    return row;
}

} // namespace

std::string list_rows(GtkWidget *root)
{
    GtkTreeView *view = first_tree_view(root);
    if (view == nullptr)
        return "(no list)";
    std::string rows;
    GtkTreeModel *model = gtk_tree_view_get_model(view);
    GtkTreeIter iter;
    bool first_row = true;
    for (gboolean valid = gtk_tree_model_get_iter_first(model, &iter); valid;
         valid = gtk_tree_model_iter_next(model, &iter), first_row = false)
        rows += (first_row ? "" : "|") + row_text(view, &iter);
    return rows;
}

void click_list_row(GtkWidget *root, const char *text, bool twice)
{
    GtkTreeView *view = first_tree_view(root);
    GtkTreeModel *model = view != nullptr ? gtk_tree_view_get_model(view) : nullptr;
    GtkTreeIter iter;
    for (gboolean valid = model != nullptr && gtk_tree_model_get_iter_first(model, &iter); valid;
         valid = gtk_tree_model_iter_next(model, &iter)) {
        if (row_text(view, &iter) != text && row_texts(view, &iter).front() != text)
            continue;
        ov::Owned<GtkTreePath, gtk_tree_path_free> path(gtk_tree_model_get_path(model, &iter));
        gtk_tree_view_scroll_to_cell(view, path.get(), nullptr, FALSE, 0, 0);
        // Scrolling and layout run with the next frames, later on a busy
        // machine: the row is clicked once it is laid out in view.
        GdkRectangle cell = {};
        wait_until([&] {
            GtkTreePath *first = nullptr, *last = nullptr;
            const bool shown = gtk_widget_get_mapped(GTK_WIDGET(view)) &&
                               gtk_tree_view_get_visible_range(view, &first, &last) &&
                               gtk_tree_path_compare(first, path.get()) <= 0 &&
                               gtk_tree_path_compare(path.get(), last) <= 0;
            gtk_tree_path_free(first);
            gtk_tree_path_free(last);
            gtk_tree_view_get_cell_area(view, path.get(), gtk_tree_view_get_column(view, 0), &cell);
            return shown && cell.height > 0;
        });
        int x = 0;
        int y = 0;
        gtk_tree_view_convert_bin_window_to_widget_coords(view, cell.x + cell.width / 2,
                                                          cell.y + cell.height / 2, &x, &y);
        click_at(GTK_WIDGET(view), x, y, twice);
        return;
    }
    ADD_FAILURE() << "No list row \"" << text << "\" among: " << list_rows(root);
}

void click_button_in(GtkWidget *root, const char *label)
{
    GtkWidget *button = find_button(root, label);
    if (button == nullptr)
        ADD_FAILURE() << "No button \"" << label << "\" among: " << label_texts(root);
    else
        click(button);
}

void click_button(const char *label)
{
    click_button_in(GTK_WIDGET(top_window()), label);
}

void press_key(GtkWidget *widget, guint keyval, GdkModifierType modifiers)
{
    if (GdkWindow *window = focus_for_keys(widget); window != nullptr)
        send_key(window, keyval, modifiers);
    flush_events();
}

void hold_key(GtkWidget *widget, guint keyval, GdkModifierType modifiers, int presses)
{
    // A window that closes under the held key gets no more of it.
    GtkWidget *toplevel = gtk_widget_get_toplevel(widget);
    g_object_add_weak_pointer(G_OBJECT(toplevel), reinterpret_cast<gpointer *>(&toplevel));
    for (int i = 0; i < presses && toplevel != nullptr && gtk_widget_get_realized(toplevel); ++i) {
        if (GdkWindow *window = focus_for_keys(widget); window != nullptr)
            send_key_events(window, {GDK_KEY_PRESS}, keyval, modifiers);
    }
    if (toplevel != nullptr)
        g_object_remove_weak_pointer(G_OBJECT(toplevel), reinterpret_cast<gpointer *>(&toplevel));
    flush_events();
}

void release_key(GtkWidget *widget, guint keyval, GdkModifierType modifiers)
{
    if (GdkWindow *window = focus_for_keys(widget); window != nullptr)
        send_key_events(window, {GDK_KEY_RELEASE}, keyval, modifiers);
    flush_events();
}

void type_text(GtkWidget *widget, const char *text)
{
    // Each key is handled as it is sent; pending events run only after the
    // last one, so that a script's next step cannot start halfway through
    // the text (as a click on "Apply" after three letters of a path).
    for (const char *p = text; *p != '\0'; p = g_utf8_next_char(p)) {
        const gunichar c = g_utf8_get_char(p);
        if (GdkWindow *window = focus_for_keys(widget); window != nullptr)
            send_key(window, c == '\n' ? GDK_KEY_Return : c == '\t' ? GDK_KEY_Tab : gdk_unicode_to_keyval(c));
    }
    flush_events();
}

void paste_text(GtkWidget *widget, const char *text)
{
    if (!gtk_widget_is_focus(widget))
        gtk_widget_grab_focus(widget);
    gtk_clipboard_set_text(gtk_widget_get_clipboard(widget, GDK_SELECTION_CLIPBOARD), text, -1);
    g_signal_emit_by_name(widget, "paste-clipboard");
    wait_ms(50); // the clipboard answers through the main loop
}

void close_window(GtkWindow *window)
{
    GdkWindow *gdk_window = gtk_widget_get_window(GTK_WIDGET(window));
    if (gdk_window == nullptr) {
        ADD_FAILURE() << "The window to close is not realised.";
        return;
    }
    GdkEvent *event = gdk_event_new(GDK_DELETE);
    event->any.window = GDK_WINDOW(g_object_ref(gdk_window));
    event->any.send_event = TRUE;
    gtk_main_do_event(event);
    gdk_event_free(event);
    flush_events();
}

void show_and_wait(GtkWidget *window)
{
    gtk_widget_show(window);
    wait_until([&] { return gtk_widget_get_mapped(window) && gtk_widget_get_allocated_width(window) > 1; },
               2000);
    wait_ms(20); // one more frame so that the children are laid out and styled
}

void wait_ms(guint milliseconds)
{
    HelperWait wait;
    GMainLoop *loop = g_main_loop_new(nullptr, FALSE);
    g_timeout_add(
        milliseconds,
        [](gpointer l) -> gboolean {
            g_main_loop_quit(static_cast<GMainLoop *>(l));
            return G_SOURCE_REMOVE;
        },
        loop);
    g_main_loop_run(loop);
    g_main_loop_unref(loop);
}

void wait_until(const std::function<bool()> &condition, guint limit_ms)
{
    for (guint waited = 0; waited < limit_ms && !condition(); waited += 10)
        wait_ms(10);
}

Script::~Script()
{
    if (source_ != 0)
        g_source_remove(source_);
    if (!steps_.empty())
        ADD_FAILURE() << steps_.size() << " step(s) of the GUI script never ran.";
}

Script &Script::when(Condition condition, Action action, std::string what)
{
    steps_.push_back({std::move(condition), std::move(action), std::move(what)});
    deadline_ = g_get_monotonic_time() + limit_us_;
    if (source_ == 0)
        source_ = g_timeout_add(20, tick, this);
    return *this;
}

Script &Script::when_window(const char *title, Action action)
{
    std::string wanted = title;
    std::string what = "window \"" + wanted + "\" on top";
    return when([wanted] { return window_shown(wanted.c_str()); }, std::move(action), std::move(what));
}

Script &Script::when_menu(Action action)
{
    return when(menu_shown, std::move(action), "a menu open");
}

Script &Script::then(Action action)
{
    return when([] { return true; }, std::move(action), "the next chance");
}

std::string Script::pending() const
{
    const std::string last = ran_ == 0 ? "" : " after step " + std::to_string(ran_) + " (" + last_ + ")";
    if (steps_.empty())
        return "the code under test to return" + last;
    return "step " + std::to_string(ran_ + 1) + " (" + steps_.front().what + ")" + last;
}

void Script::time_out()
{
    if (closed_all_) {
        // Closing every window did not end the nested loop: nothing the
        // test can do will, and waiting would only hide the failing step.
        g_printerr("The GUI script still waits for %s after closing everything; aborting.\n",
                   pending().c_str());
        std::abort();
    }
    std::string shown;
    for (GtkWindow *window : shown_windows(GTK_WINDOW_TOPLEVEL))
        shown += std::string(shown.empty() ? "" : ", ") + "\"" + (gtk_window_get_title(window) ?: "") + "\"";
    ADD_FAILURE() << "The GUI script waited in vain for " << pending()
                  << "; closing everything (shown: " << (shown.empty() ? "no window" : shown) << ").";
    closed_all_ = true;
    steps_.clear();
    deadline_ = g_get_monotonic_time() + limit_us_;
    for (GtkMenu *menu : shown_menus())
        gtk_menu_shell_cancel(GTK_MENU_SHELL(menu));
    for (GtkWindow *window : shown_windows(GTK_WINDOW_TOPLEVEL))
        close_window(window);
}

// Keeps running while the script lives: after the last step it watches the
// code under test return.
gboolean Script::tick(gpointer data)
{
    auto *self = static_cast<Script *>(data);
    // No step starts from the driver's own event processing inside an
    // action still running (the events a click sends, a wait for layout):
    // a user acts only once the program has handled the last input, and a
    // window closed by that input has left its loop. Loops the action opens
    // (a dialog, a menu) run deeper and tick as usual.
    if (!acting_depths.empty() && HelperWait::innermost_depth() == acting_depths.back() &&
        g_main_depth() == acting_depths.back() + 1)
        return G_SOURCE_CONTINUE;
    if (!self->steps_.empty() && self->steps_.front().condition()) {
        // The action runs from a source of its own: it may run a nested loop
        // (open a window, a menu) in which the next steps must still tick.
        auto *action = new Action(std::move(self->steps_.front().action));
        self->last_ = std::move(self->steps_.front().what);
        self->steps_.pop_front();
        self->ran_++;
        self->deadline_ = g_get_monotonic_time() + self->limit_us_;
        g_idle_add_full(
            G_PRIORITY_DEFAULT,
            [](gpointer a) -> gboolean {
                acting_depths.push_back(g_main_depth());
                (*static_cast<Action *>(a))();
                acting_depths.pop_back();
                return G_SOURCE_REMOVE;
            },
            action, [](gpointer a) { delete static_cast<Action *>(a); });
    } else if (g_get_monotonic_time() > self->deadline_) {
        self->time_out();
    }
    return G_SOURCE_CONTINUE;
}

} // namespace ov::test
