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
// A step that does not come true within ten seconds (or the limit given) fails the test, naming
// the step, and closes every window and menu so that the code under test
// returns. The watch goes on after the last step until the script ends: code
// that does not return within ten seconds of it fails the same way, and code
// that still does not return after the closing aborts the test program.
#pragma once

#include <gtk/gtk.h>

#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace ov::test
{

// The window a user sees on top: the window stack's busy window or top
// window, or a visible dialog that is transient for it (a file chooser run
// outside the stack); null when nothing is shown.
GtkWindow *top_window();
bool window_shown(const char *title); // top_window() has that title

// The innermost open popup menu (a submenu when one is open), or null.
GtkMenu *open_menu();
bool menu_shown();
// The labels of a menu's items joined with '|'; a separator is "-", an item
// with a submenu ends in " >"; with states an insensitive item in "(off)".
std::string menu_labels(GtkMenu *menu, bool states = false);
GtkWidget *find_menu_item(GtkMenu *menu, const char *label);
// Activates an item of the open menus as a click would, opening submenus
// along a path such as "All languages/Swedish/Finland". Fails the test when
// the item is missing or insensitive.
void activate_menu_item(const char *path);
// Selects an item of the innermost open menu with Down and activates it
// with Return, without a pointer event.
void choose_menu_item_by_keys(const char *label);
void dismiss_menu(); // Escape in the innermost open menu

// Widgets inside root (internal children included), in the window's order.
GtkWidget *find_widget(GtkWidget *root, const std::function<bool(GtkWidget *)> &predicate);
std::vector<GtkWidget *> find_widgets(GtkWidget *root, const std::function<bool(GtkWidget *)> &predicate);
// Labels match without mnemonic underscores and markup: "_Yes" finds "Yes".
GtkWidget *find_button(GtkWidget *root, const char *label);
GtkWidget *find_label(GtkWidget *root, const char *text);
std::string label_texts(GtkWidget *root); // the visible labels joined with '|'
// The tab of the first notebook page inside root whose tab holds a label
// with that text, or null; a click in its middle switches to the page.
GtkWidget *find_tab(GtkWidget *root, const char *text);
// The texts of the tabs of the first notebook inside root, joined with '|'.
std::string tab_texts(GtkWidget *root);

// User actions; the forms without a widget act on top_window().
void click(GtkWidget *widget); // the first mouse button in the widget's middle
// The first mouse button at (x, y) in the widget's coordinates.
void click_at(GtkWidget *widget, int x, int y, bool twice = false);
void click_button(const char *label);
void click_button_in(GtkWidget *root, const char *label);
// The first tree view inside root: the texts its rows show, one row per
// entry joined with '|', the columns of a row with ", ".
std::string list_rows(GtkWidget *root);
// Clicks the first row of the first tree view inside root that shows text
// in its first column or in all ("Checkbox, Tick"); fails the test when
// there is none. Double clicks with twice.
void click_list_row(GtkWidget *root, const char *text, bool twice = false);
// A key press and release sent to the widget's window, focused on widget.
void press_key(GtkWidget *widget, guint keyval, GdkModifierType modifiers = GdkModifierType(0));
// Presses without a release, as a key held down repeats them; release_key
// lets it go.
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

    // Each step, and the return after the last, may take limit_ms.
    explicit Script(guint limit_ms = 10000) : limit_us_(gint64(limit_ms) * 1000) {}
    ~Script();
    Script(const Script &) = delete;
    Script &operator=(const Script &) = delete;

    // what names the step in a failure.
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
