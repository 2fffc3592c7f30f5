#include "support/gui_driver.h"

#include "core/raii.h"
#include "frame/window_stack.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <sstream>

namespace ov::test {

namespace {

std::vector<GtkWindow *> all_toplevels()
{
    std::vector<GtkWindow *> windows;
    GList *list = gtk_window_list_toplevels();
    for (GList *walk = list; walk != nullptr; walk = walk->next)
        windows.push_back(GTK_WINDOW(walk->data));
    g_list_free(list);
    return windows;
}

bool is_shown(GtkWindow *window)
{
    return gtk_widget_get_visible(GTK_WIDGET(window)) && gtk_widget_get_mapped(GTK_WIDGET(window));
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
    if (shown == nullptr || wanted == nullptr)
        return false;
    return without_mnemonics(shown) == without_mnemonics(wanted);
}

// The text a label shows, without markup.
const char *label_text(GtkWidget *widget)
{
    return GTK_IS_LABEL(widget) ? gtk_label_get_text(GTK_LABEL(widget)) : nullptr;
}

void collect(GtkWidget *widget, const std::function<bool(GtkWidget *)> &predicate, std::vector<GtkWidget *> &found)
{
    if (predicate(widget))
        found.push_back(widget);
    if (GTK_IS_CONTAINER(widget)) {
        struct Walk {
            const std::function<bool(GtkWidget *)> *predicate;
            std::vector<GtkWidget *> *found;
        } walk{&predicate, &found};
        gtk_container_forall(
            GTK_CONTAINER(widget),
            [](GtkWidget *child, gpointer data) {
                auto *w = static_cast<Walk *>(data);
                collect(child, *w->predicate, *w->found);
            },
            &walk);
    }
}

// The texts of the labels inside a widget, joined.
std::string inner_label_text(GtkWidget *widget)
{
    std::string text;
    for (GtkWidget *label : find_widgets(widget, [](GtkWidget *w) { return GTK_IS_LABEL(w); }))
        text += gtk_label_get_text(GTK_LABEL(label));
    return text;
}

bool button_has_label(GtkWidget *widget, const char *wanted)
{
    if (!GTK_IS_BUTTON(widget))
        return false;
    if (same_label(gtk_button_get_label(GTK_BUTTON(widget)), wanted))
        return true;
    return same_label(inner_label_text(widget).c_str(), wanted);
}

std::string menu_item_label(GtkWidget *item)
{
    if (GTK_IS_SEPARATOR_MENU_ITEM(item))
        return "-";
    const char *label = gtk_menu_item_get_label(GTK_MENU_ITEM(item));
    std::string text = label != nullptr ? without_mnemonics(label) : inner_label_text(item);
    return text;
}

std::vector<GtkMenu *> shown_menus()
{
    std::vector<GtkMenu *> menus;
    for (GtkWindow *window : all_toplevels()) {
        if (gtk_window_get_window_type(window) != GTK_WINDOW_POPUP || !is_shown(window))
            continue;
        GtkWidget *child = gtk_bin_get_child(GTK_BIN(window));
        if (GTK_IS_MENU(child) && gtk_widget_get_visible(child))
            menus.push_back(GTK_MENU(child));
    }
    return menus;
}

GdkDevice *pointer_device(GdkDisplay *display)
{
    return gdk_seat_get_pointer(gdk_display_get_default_seat(display));
}

GdkDevice *keyboard_device(GdkDisplay *display)
{
    return gdk_seat_get_keyboard(gdk_display_get_default_seat(display));
}

// The deepest visible child window of parent that holds the point (given
// in parent's coordinates); the point is turned into that window's.
GdkWindow *window_at(GdkWindow *parent, int &x, int &y)
{
    GList *children = gdk_window_peek_children(parent);
    for (GList *walk = children; walk != nullptr; walk = walk->next) {
        auto *child = GDK_WINDOW(walk->data);
        if (!gdk_window_is_visible(child))
            continue;
        int cx, cy, cw, ch;
        gdk_window_get_geometry(child, &cx, &cy, &cw, &ch);
        if (x >= cx && y >= cy && x < cx + cw && y < cy + ch) {
            x -= cx;
            y -= cy;
            return window_at(child, x, y);
        }
    }
    return parent;
}

void send_button(GdkEventType type, GdkWindow *window, int x, int y)
{
    GdkEvent *event = gdk_event_new(type);
    event->button.window = GDK_WINDOW(g_object_ref(window));
    event->button.send_event = TRUE;
    event->button.time = GDK_CURRENT_TIME;
    event->button.x = x;
    event->button.y = y;
    int root_x = 0;
    int root_y = 0;
    gdk_window_get_root_coords(window, x, y, &root_x, &root_y);
    event->button.x_root = root_x;
    event->button.y_root = root_y;
    event->button.button = 1;
    event->button.state = type == GDK_BUTTON_RELEASE ? GDK_BUTTON1_MASK : 0;
    GdkDevice *device = pointer_device(gdk_window_get_display(window));
    gdk_event_set_device(event, device);
    gdk_event_set_source_device(event, device);
    gtk_main_do_event(event);
    gdk_event_free(event);
}

void send_key(GdkEventType type, GdkWindow *window, guint keyval, GdkModifierType modifiers)
{
    GdkEvent *event = gdk_event_new(type);
    event->key.window = GDK_WINDOW(g_object_ref(window));
    event->key.send_event = TRUE;
    event->key.time = GDK_CURRENT_TIME;
    event->key.state = modifiers;
    event->key.keyval = keyval;
    GdkDisplay *display = gdk_window_get_display(window);
    GdkKeymapKey *keys = nullptr;
    int count = 0;
    if (gdk_keymap_get_entries_for_keyval(gdk_keymap_get_for_display(display), keyval, &keys, &count) &&
        count > 0) {
        event->key.hardware_keycode = keys[0].keycode;
        event->key.group = keys[0].group;
    }
    g_free(keys);
    GdkDevice *device = keyboard_device(display);
    gdk_event_set_device(event, device);
    gdk_event_set_source_device(event, device);
    gtk_main_do_event(event);
    gdk_event_free(event);
}

// Opens the submenu of item from the keyboard, as the arrow keys would, and
// waits until it is shown.
GtkMenu *open_submenu(GtkMenu *menu, GtkWidget *item)
{
    GtkWidget *submenu = gtk_menu_item_get_submenu(GTK_MENU_ITEM(item));
    if (submenu == nullptr)
        return nullptr;
    GdkWindow *window = gtk_widget_get_window(gtk_widget_get_toplevel(GTK_WIDGET(menu)));
    auto *shell = GTK_MENU_SHELL(menu);
    for (int i = 0; i < 200 && gtk_menu_shell_get_selected_item(shell) != item; ++i) {
        send_key(GDK_KEY_PRESS, window, GDK_KEY_Down, GdkModifierType(0));
        send_key(GDK_KEY_RELEASE, window, GDK_KEY_Down, GdkModifierType(0));
    }
    send_key(GDK_KEY_PRESS, window, GDK_KEY_Right, GdkModifierType(0));
    send_key(GDK_KEY_RELEASE, window, GDK_KEY_Right, GdkModifierType(0));
    for (int i = 0; i < 100 && !gtk_widget_get_mapped(submenu); ++i)
        wait_ms(10);
    return gtk_widget_get_mapped(submenu) ? GTK_MENU(submenu) : nullptr;
}

} // namespace

// Windows.

std::vector<GtkWindow *> visible_windows()
{
    std::vector<GtkWindow *> windows;
    for (GtkWindow *window : all_toplevels())
        if (gtk_window_get_window_type(window) == GTK_WINDOW_TOPLEVEL && is_shown(window))
            windows.push_back(window);
    return windows;
}

GtkWindow *top_window()
{
    std::vector<GtkWindow *> windows = visible_windows();
    auto is_leaf = [&](GtkWindow *window) {
        return std::none_of(windows.begin(), windows.end(),
                            [&](GtkWindow *other) { return gtk_window_get_transient_for(other) == window; });
    };
    GtkWindow *top = ov_window_stack_get_top_busy_window();
    if (top == nullptr)
        top = ov_window_stack_get_top_window();
    // A dialog run outside the stack sits above the window it belongs to.
    for (bool moved = top != nullptr; moved;) {
        moved = false;
        for (GtkWindow *window : windows)
            if (gtk_window_get_transient_for(window) == top) {
                top = window;
                moved = true;
                break;
            }
    }
    if (top != nullptr && is_shown(top))
        return top;
    GtkWindow *fallback = nullptr;
    for (GtkWindow *window : windows) {
        if (!is_leaf(window))
            continue;
        if (gtk_window_get_modal(window))
            return window;
        fallback = window;
    }
    return fallback;
}

GtkWindow *find_window(const char *title)
{
    for (GtkWindow *window : visible_windows()) {
        const char *shown = gtk_window_get_title(window);
        if (shown != nullptr && g_strcmp0(shown, title) == 0)
            return window;
    }
    return nullptr;
}

bool window_shown(const char *title)
{
    GtkWindow *top = top_window();
    return top != nullptr && g_strcmp0(gtk_window_get_title(top), title) == 0;
}

// Menus.

GtkMenu *open_menu()
{
    std::vector<GtkMenu *> menus = shown_menus();
    for (GtkMenu *menu : menus) {
        bool has_open_submenu = std::any_of(menus.begin(), menus.end(), [&](GtkMenu *other) {
            GtkWidget *attach = gtk_menu_get_attach_widget(other);
            return other != menu && attach != nullptr && gtk_widget_get_parent(attach) == GTK_WIDGET(menu);
        });
        if (!has_open_submenu)
            return menu;
    }
    return nullptr;
}

bool menu_shown()
{
    return open_menu() != nullptr;
}

std::string menu_labels(GtkMenu *menu)
{
    std::string labels;
    GList *children = gtk_container_get_children(GTK_CONTAINER(menu));
    for (GList *walk = children; walk != nullptr; walk = walk->next) {
        auto *item = GTK_WIDGET(walk->data);
        if (!labels.empty())
            labels += "|";
        labels += menu_item_label(item);
        if (GTK_IS_MENU_ITEM(item) && gtk_menu_item_get_submenu(GTK_MENU_ITEM(item)) != nullptr)
            labels += " >";
    }
    g_list_free(children);
    return labels;
}

GtkWidget *find_menu_item(GtkMenu *menu, const char *label)
{
    GtkWidget *found = nullptr;
    GList *children = gtk_container_get_children(GTK_CONTAINER(menu));
    for (GList *walk = children; walk != nullptr && found == nullptr; walk = walk->next)
        if (menu_item_label(GTK_WIDGET(walk->data)) == without_mnemonics(label))
            found = GTK_WIDGET(walk->data);
    g_list_free(children);
    return found;
}

void activate_menu_item(const char *path)
{
    GtkMenu *menu = open_menu();
    if (menu == nullptr) {
        ADD_FAILURE() << "No menu is open to choose \"" << path << "\" from.";
        return;
    }
    ov::GStrv parts(g_strsplit(path, "/", -1));
    for (char **part = parts.get(); *part != nullptr; ++part) {
        GtkWidget *item = find_menu_item(menu, *part);
        if (item == nullptr) {
            ADD_FAILURE() << "No menu item \"" << *part << "\" in: " << menu_labels(menu);
            return;
        }
        if (!gtk_widget_is_sensitive(item)) {
            ADD_FAILURE() << "The menu item \"" << *part << "\" is insensitive.";
            return;
        }
        if (part[1] != nullptr) {
            menu = open_submenu(menu, item);
            if (menu == nullptr) {
                ADD_FAILURE() << "The menu item \"" << *part << "\" opens no submenu.";
                return;
            }
            continue;
        }
        gtk_menu_shell_activate_item(GTK_MENU_SHELL(gtk_widget_get_parent(item)), item, TRUE);
    }
    process_events();
}

void dismiss_menu()
{
    GtkMenu *menu = open_menu();
    if (menu == nullptr) {
        ADD_FAILURE() << "No menu is open to dismiss.";
        return;
    }
    GtkWidget *toplevel = gtk_widget_get_toplevel(GTK_WIDGET(menu));
    send_key(GDK_KEY_PRESS, gtk_widget_get_window(toplevel), GDK_KEY_Escape, GdkModifierType(0));
    send_key(GDK_KEY_RELEASE, gtk_widget_get_window(toplevel), GDK_KEY_Escape, GdkModifierType(0));
    process_events();
}

// Widgets.

std::vector<GtkWidget *> find_widgets(GtkWidget *root, const std::function<bool(GtkWidget *)> &predicate)
{
    std::vector<GtkWidget *> found;
    if (root != nullptr)
        collect(root, predicate, found);
    return found;
}

GtkWidget *find_widget(GtkWidget *root, const std::function<bool(GtkWidget *)> &predicate)
{
    std::vector<GtkWidget *> found = find_widgets(root, predicate);
    return found.empty() ? nullptr : found.front();
}

GtkWidget *find_button(GtkWidget *root, const char *label)
{
    return find_widget(root, [&](GtkWidget *w) { return gtk_widget_get_visible(w) && button_has_label(w, label); });
}

GtkWidget *find_label(GtkWidget *root, const char *text)
{
    return find_widget(root, [&](GtkWidget *w) { return same_label(label_text(w), text); });
}

GtkWidget *find_entry(GtkWidget *root, const char *label)
{
    bool after_label = false;
    GtkWidget *entry = nullptr;
    std::string wanted = label;
    find_widgets(root, [&](GtkWidget *w) {
        if (entry != nullptr)
            return false;
        if (const char *text = label_text(w)) {
            std::string shown = text;
            // Input-field labels read "Label:" or "Label: (Required)".
            after_label = after_label || shown == wanted || shown.rfind(wanted + ":", 0) == 0;
        } else if (after_label && (GTK_IS_ENTRY(w) || GTK_IS_TEXT_VIEW(w))) {
            entry = w;
        }
        return false;
    });
    return entry;
}

std::string label_texts(GtkWidget *root)
{
    std::string texts;
    for (GtkWidget *label : find_widgets(root, [](GtkWidget *w) {
             return GTK_IS_LABEL(w) && gtk_widget_get_visible(w);
         })) {
        if (!texts.empty())
            texts += "|";
        texts += gtk_label_get_text(GTK_LABEL(label));
    }
    return texts;
}

// Actions.

void click(GtkWidget *widget)
{
    if (widget == nullptr) {
        ADD_FAILURE() << "Nothing to click.";
        return;
    }
    if (!gtk_widget_is_sensitive(widget) || !gtk_widget_get_mapped(widget)) {
        ADD_FAILURE() << "The widget to click is insensitive or not shown.";
        return;
    }
    GtkWidget *toplevel = gtk_widget_get_toplevel(widget);
    // A widget added to a shown window is laid out with the next frame.
    GtkAllocation allocation;
    gtk_widget_get_allocation(widget, &allocation);
    for (int i = 0; i < 100 && (allocation.x < 0 || allocation.width <= 1); ++i) {
        wait_ms(10);
        gtk_widget_get_allocation(widget, &allocation);
    }
    int x = 0;
    int y = 0;
    if (!gtk_widget_translate_coordinates(widget, toplevel, allocation.width / 2, allocation.height / 2, &x, &y)) {
        ADD_FAILURE() << "The widget to click is not inside a window.";
        return;
    }
    GdkWindow *window = window_at(gtk_widget_get_window(toplevel), x, y);
    send_button(GDK_BUTTON_PRESS, window, x, y);
    send_button(GDK_BUTTON_RELEASE, window, x, y);
    process_events();
}

void click_button_in(GtkWidget *root, const char *label)
{
    GtkWidget *button = find_button(root, label);
    if (button == nullptr) {
        ADD_FAILURE() << "No button \"" << label << "\" among: " << label_texts(root);
        return;
    }
    click(button);
}

void click_button(const char *label)
{
    GtkWindow *top = top_window();
    if (top == nullptr) {
        ADD_FAILURE() << "No window is shown to click \"" << label << "\" in.";
        return;
    }
    click_button_in(GTK_WIDGET(top), label);
}

void press_key(GtkWidget *widget, guint keyval, GdkModifierType modifiers)
{
    GtkWidget *toplevel = gtk_widget_get_toplevel(widget);
    // Grabbing the focus again would select an entry's whole text.
    if (widget != toplevel && !gtk_widget_is_focus(widget))
        gtk_widget_grab_focus(widget);
    GdkWindow *window = gtk_widget_get_window(toplevel);
    if (window == nullptr) {
        ADD_FAILURE() << "The widget to type into is not realised.";
        return;
    }
    send_key(GDK_KEY_PRESS, window, keyval, modifiers);
    send_key(GDK_KEY_RELEASE, window, keyval, modifiers);
    process_events();
}

void type_text(GtkWidget *widget, const char *text)
{
    for (const char *p = text; *p != '\0'; p = g_utf8_next_char(p)) {
        gunichar c = g_utf8_get_char(p);
        guint keyval = c == '\n' ? GDK_KEY_Return : c == '\t' ? GDK_KEY_Tab : gdk_unicode_to_keyval(c);
        press_key(widget, keyval);
    }
}

void paste_text(GtkWidget *widget, const char *text)
{
    if (!gtk_widget_is_focus(widget))
        gtk_widget_grab_focus(widget);
    GtkClipboard *clipboard = gtk_widget_get_clipboard(widget, GDK_SELECTION_CLIPBOARD);
    gtk_clipboard_set_text(clipboard, text, -1);
    g_signal_emit_by_name(widget, "paste-clipboard");
    // The clipboard answers through the main loop.
    wait_ms(50);
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
    process_events();
}

void show_and_wait(GtkWidget *window)
{
    gtk_widget_show(window);
    for (int i = 0; i < 200 && !(gtk_widget_get_mapped(window) && gtk_widget_get_allocated_width(window) > 1); ++i)
        wait_ms(10);
    // One more frame so that the children are laid out and styled.
    wait_ms(20);
}

void process_events()
{
    while (g_main_context_iteration(nullptr, FALSE))
        ;
}

void wait_ms(guint milliseconds)
{
    GMainLoop *loop = g_main_loop_new(nullptr, FALSE);
    g_timeout_add(milliseconds, [](gpointer l) -> gboolean {
        g_main_loop_quit(static_cast<GMainLoop *>(l));
        return G_SOURCE_REMOVE;
    }, loop);
    g_main_loop_run(loop);
    g_main_loop_unref(loop);
}

// Script.

Script::Script(guint time_limit_ms) : time_limit_ms_(time_limit_ms) {}

Script::~Script()
{
    if (source_ != 0)
        g_source_remove(source_);
    if (!steps_.empty())
        ADD_FAILURE() << steps_.size() << " step(s) of the GUI script never ran.";
}

Script &Script::when(Condition condition, Action action)
{
    steps_.push_back({std::move(condition), std::move(action)});
    if (source_ == 0) {
        deadline_ = g_get_monotonic_time() + gint64(time_limit_ms_) * 1000;
        source_ = g_timeout_add(20, tick, this);
    }
    return *this;
}

Script &Script::when_window(const char *title, Action action)
{
    std::string wanted = title;
    return when([wanted] { return window_shown(wanted.c_str()); }, std::move(action));
}

Script &Script::when_menu(Action action)
{
    return when(menu_shown, std::move(action));
}

Script &Script::then(Action action)
{
    return when([] { return true; }, std::move(action));
}

gboolean Script::tick(gpointer data)
{
    auto *self = static_cast<Script *>(data);
    if (self->steps_.empty()) {
        self->source_ = 0;
        return G_SOURCE_REMOVE;
    }
    if (!self->steps_.front().condition()) {
        if (g_get_monotonic_time() > self->deadline_)
            self->give_up();
        return G_SOURCE_CONTINUE;
    }
    // The action runs from a source of its own: it may run a nested loop
    // (open a window, a menu) in which the next steps must still tick.
    auto *action = new Action(std::move(self->steps_.front().action));
    self->steps_.pop_front();
    self->deadline_ = g_get_monotonic_time() + gint64(self->time_limit_ms_) * 1000;
    g_idle_add_full(
        G_PRIORITY_DEFAULT,
        [](gpointer a) -> gboolean {
            (*static_cast<Action *>(a))();
            return G_SOURCE_REMOVE;
        },
        action, [](gpointer a) { delete static_cast<Action *>(a); });
    if (self->steps_.empty()) {
        self->source_ = 0;
        return G_SOURCE_REMOVE;
    }
    return G_SOURCE_CONTINUE;
}

void Script::give_up()
{
    ADD_FAILURE() << "A step of the GUI script did not come true in time; closing everything.";
    steps_.clear();
    for (GtkMenu *menu : shown_menus())
        gtk_menu_shell_cancel(GTK_MENU_SHELL(menu));
    for (GtkWindow *window : visible_windows())
        close_window(window);
}

} // namespace ov::test
