// Drives real windows from a test the way a user would: a script of steps
// runs from a timeout on whatever main loop is current (the nested loop of
// a window, a dialog or a menu), each step waiting until its condition holds,
// then finding a window, a button, a menu item or an entry by its label and
// clicking, activating or typing.
//
//   ov::test::Script script;
//   script.when_window("Question", [] { ov::test::click_button("_Yes"); });
//   gboolean answer = ov_message_ask_yes_no_question(FALSE, FALSE, "Delete?");
//
// A step that does not come true within the time limit fails the test and
// closes every window and menu so that the code under test returns.
#pragma once

#include <gtk/gtk.h>

#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace ov::test {

// Windows.
// The window a user sees on top: the window stack's busy window or top
// window, or a visible dialog that is transient for it (a file chooser run
// outside the stack); null when nothing is shown.
GtkWindow *top_window();
// A visible top-level window (not a popup) with that title, newest first.
GtkWindow *find_window(const char *title);
// Every visible top-level window that is not a popup.
std::vector<GtkWindow *> visible_windows();

// Menus.
// The innermost open popup menu (a submenu when one is open), or null.
GtkMenu *open_menu();
// The labels of a menu's items in order; a separator is "-", an item with a
// submenu ends in " >".
std::string menu_labels(GtkMenu *menu);
GtkWidget *find_menu_item(GtkMenu *menu, const char *label);
// Activates the item of the open menus as a click would (opening submenus
// along the way for "All languages/Swedish/Finland"-style paths). Fails the
// test when the item is not there or not sensitive.
void activate_menu_item(const char *path);
// Closes the innermost open menu with Escape.
void dismiss_menu();

// Widgets inside a window (including dialog action areas).
GtkWidget *find_widget(GtkWidget *root, const std::function<bool(GtkWidget *)> &predicate);
std::vector<GtkWidget *> find_widgets(GtkWidget *root, const std::function<bool(GtkWidget *)> &predicate);
// Label matching ignores mnemonic underscores and markup: "_Yes" and "Yes"
// both find the Yes button.
GtkWidget *find_button(GtkWidget *root, const char *label);
GtkWidget *find_label(GtkWidget *root, const char *text);
// The first entry or text view after the label in the window's order.
GtkWidget *find_entry(GtkWidget *root, const char *label);
// The texts of all visible labels in order, joined with '|'.
std::string label_texts(GtkWidget *root);

// User actions. The short forms look in top_window().
// A press and release of the first mouse button in the widget's middle.
void click(GtkWidget *widget);
void click_button(const char *label);
void click_button_in(GtkWidget *root, const char *label);
// A key press and release sent to the widget's window, focused on widget.
void press_key(GtkWidget *widget, guint keyval, GdkModifierType modifiers = GdkModifierType(0));
// Types the UTF-8 text key by key into the focused widget.
void type_text(GtkWidget *widget, const char *text);
// Puts the text on the clipboard and pastes it as Control-V would.
void paste_text(GtkWidget *widget, const char *text);
// Closes the window with its close button (a delete event).
void close_window(GtkWindow *window);

// Shows the window and waits until it is mapped and laid out.
void show_and_wait(GtkWidget *window);
// Lets pending events run (also inside nested loops).
void process_events();
// Runs a nested main loop for the given time.
void wait_ms(guint milliseconds);

// Conditions for steps.
bool window_shown(const char *title);
bool menu_shown();

class Script {
public:
    using Condition = std::function<bool()>;
    using Action = std::function<void()>;

    explicit Script(guint time_limit_ms = 10000);
    ~Script();
    Script(const Script &) = delete;
    Script &operator=(const Script &) = delete;

    Script &when(Condition condition, Action action);
    // Waits until a window with the title is on top.
    Script &when_window(const char *title, Action action);
    // Waits until a popup menu is open.
    Script &when_menu(Action action);
    // Runs at the next chance.
    Script &then(Action action);
    bool done() const { return steps_.empty(); }

private:
    struct Step {
        Condition condition;
        Action action;
    };
    static gboolean tick(gpointer self);
    void give_up();

    std::deque<Step> steps_;
    guint source_ = 0;
    gint64 deadline_ = 0;
    guint time_limit_ms_;
};

} // namespace ov::test
