// Drives real windows the way a user would: a script of steps runs on
// whatever main loop is current (a window's, a dialog's, a menu's), each step
// waiting until its condition holds, then finding a window, button, menu item
// or entry by its label and clicking, activating or typing.
//
//   ov::test::Script script;
//   script.when_window("Question", [] { ov::test::click_button("_Yes"); });
//   gboolean answer = ov_message_ask_yes_no_question(FALSE, FALSE, "Delete?");
//
// A step not come true within the limit (ten seconds), or code that does not
// return within it after the last step, fails the test naming the step and
// closes every window and menu; if even that does not end the loop, the test
// program aborts.
#pragma once

#include <gtk/gtk.h>

#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace ov::test
{

// The window on top: the stack's busy or top window, or a dialog transient
// for it (a file chooser run outside the stack); null when nothing is shown.
GtkWindow *top_window();
bool window_shown(const char *title); // top_window() has that title

// The innermost open popup menu (a submenu when one is open), or null.
GtkMenu *open_menu();
bool menu_shown();
// Item labels joined with '|': separator "-", submenu " >", with states "(off)".
std::string menu_labels(GtkMenu *menu, bool states = false);
GtkWidget *find_menu_item(GtkMenu *menu, const char *label);
// Activates an item along a path such as "All languages/Swedish/Finland";
// fails the test when it is missing or insensitive.
void activate_menu_item(const char *path);
// Selects an item of the innermost menu with Down, activates it with Return.
void choose_menu_item_by_keys(const char *label);
void dismiss_menu(); // Escape in the innermost open menu

// Widgets inside root (internal children included), in the window's order.
GtkWidget *find_widget(GtkWidget *root, const std::function<bool(GtkWidget *)> &predicate);
std::vector<GtkWidget *> find_widgets(GtkWidget *root, const std::function<bool(GtkWidget *)> &predicate);
// Labels match without mnemonic underscores and markup: "_Yes" finds "Yes".
GtkWidget *find_button(GtkWidget *root, const char *label);
std::string label_texts(GtkWidget *root); // the visible labels joined with '|'
// The tab of a notebook inside root labelled text, or null; the texts of the
// first notebook's tabs joined with '|'.
GtkWidget *find_tab(GtkWidget *root, const char *text);
std::string tab_texts(GtkWidget *root);

// User actions; the forms without a widget act on top_window().
void click(GtkWidget *widget); // the first mouse button in the widget's middle
// The first mouse button at (x, y) in the widget's coordinates.
void click_at(GtkWidget *widget, int x, int y, bool twice = false);
void click_button(const char *label);
void click_button_in(GtkWidget *root, const char *label);
// The first tree view inside root: its rows joined with '|', a row's columns
// with ", "; a click on the row showing text in its first column or in all.
std::string list_rows(GtkWidget *root);
void click_list_row(GtkWidget *root, const char *text, bool twice = false);
// A key press and release sent to the widget's window, focused on widget.
void press_key(GtkWidget *widget, guint keyval, GdkModifierType modifiers = GdkModifierType(0));
// Presses without a release, as a held key repeats; release_key lets it go.
void hold_key(GtkWidget *widget, guint keyval, GdkModifierType modifiers, int presses);
void release_key(GtkWidget *widget, guint keyval, GdkModifierType modifiers = GdkModifierType(0));
void type_text(GtkWidget *widget, const char *text);  // key by key
void paste_text(GtkWidget *widget, const char *text); // through the clipboard
void close_window(GtkWindow *window);                 // the window's close button
// Shows the window and waits until it is mapped and laid out.
void show_and_wait(GtkWidget *window);
// Runs a nested main loop for the given time, or until the condition holds.
void wait_ms(guint milliseconds);
void wait_until(const std::function<bool()> &condition, guint limit_ms = 2000);

class Script
{
  public:
    using Condition = std::function<bool()>;
    using Action = std::function<void()>;

    explicit Script(guint limit_ms = 10000) : limit_us_(gint64(limit_ms) * 1000) {}
    ~Script();
    Script(const Script &) = delete;
    Script &operator=(const Script &) = delete;

    Script &when(Condition condition, Action action, std::string what = "a condition");
    Script &when_window(const char *title, Action action); // on top
    Script &when_menu(Action action);                      // a popup menu open
    Script &then(Action action);                           // at the next chance
    bool done() const { return steps_.empty(); }

  private:
    struct Step {
        Condition condition;
        Action action;
        std::string what;
    };

    static gboolean tick(gpointer self);
    std::string pending() const;
    void time_out();

    std::deque<Step> steps_;
    int ran_ = 0;             // steps whose actions have started
    std::string last_;        // the last of them, for the message
    bool closed_all_ = false; // a timeout has closed everything once
    gint64 limit_us_;
    guint source_ = 0;
    gint64 deadline_ = 0;
};

} // namespace ov::test
