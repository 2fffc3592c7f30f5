// The window stack with real windows: modality, sensitivity and cursors
// across nested windows and busy phases.
#include "support/gui_driver.h"
#include "support/test_support.h"

#include "frame/window_stack.h"
#include "gui/gui.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <string>

namespace
{

// What the stack last told a window about its cursor (-1: nothing yet).
struct Cursor {
    int set = -1;
    static void record(int cursor_set, gpointer self) { static_cast<Cursor *>(self)->set = cursor_set; }
};

class WindowStackTest : public ::testing::Test
{
  protected:
    void SetUp() override { ov_window_stack_init(); }
    void TearDown() override
    {
        for (auto it = owned_.rbegin(); it != owned_.rend(); ++it)
            gtk_widget_destroy(*it);
        ov_window_stack_clean_up();
        ov::test::flush_events();
    }
    // Pushes and shows a window the test owns.
    GtkWidget *push(const char *title, Cursor *cursor = nullptr)
    {
        GtkWidget *window = ov_gui_create_window(title);
        gtk_widget_set_size_request(window, 300, 200);
        ov_window_stack_push_window(GTK_WINDOW(window), OV_WINDOW_STACK_POSITION_CENTER_ON_PARENT);
        if (cursor != nullptr)
            ov_window_stack_set_mouse_cursor_callback(Cursor::record, cursor);
        ov::test::show_and_wait(window);
        owned_.push_back(window);
        return window;
    }
    std::vector<GtkWidget *> owned_;
};

// Per window "s" when sensitive (else "-"), "m" when modal, "o" when owned
// by (transient for) the window before it, "c" with a cursor set.
std::string states(std::initializer_list<GtkWidget *> windows)
{
    std::string text;
    GtkWidget *before = nullptr;
    for (GtkWidget *w : windows) {
        GdkWindow *gdk_window = gtk_widget_get_window(w);
        text += std::string(text.empty() ? "" : " ") + (gtk_widget_get_sensitive(w) ? "s" : "-") +
                (gtk_window_get_modal(GTK_WINDOW(w)) ? "m" : "") +
                (before && gtk_window_get_transient_for(GTK_WINDOW(w)) == GTK_WINDOW(before) ? "o" : "") +
                (gdk_window != nullptr && gdk_window_get_cursor(gdk_window) != nullptr ? "c" : "");
        before = w;
    }
    return text;
}

} // namespace

TEST_F(WindowStackTest, NestedWindowsAreModalOverTheirOwnerAndReturnInTurn)
{
    Cursor main_cursor, first_cursor;
    GtkWidget *main = push("Main", &main_cursor);
    GtkWidget *first = ov_gui_create_window("First");
    GtkWidget *second = ov_gui_create_window("Second");
    std::string log;
    ov::test::Script script;
    script.when_window("First", [&] {
        log += "first:" + states({main, first}) + std::to_string(main_cursor.set) + " ";
        ov_window_stack_run_window(GTK_WINDOW(second), OV_WINDOW_STACK_POSITION_MOUSE, nullptr, nullptr,
                                   nullptr);
        log += "back:" + states({main, first}) + std::to_string(first_cursor.set) + " ";
        ov::test::close_window(GTK_WINDOW(first));
    });
    script.when_window("Second", [&] {
        log += "second:" + states({main, first, second}) + std::to_string(ov_window_stack_get_depth()) + " ";
        ov::test::close_window(GTK_WINDOW(second));
    });
    ov_window_stack_run_window(GTK_WINDOW(first), OV_WINDOW_STACK_POSITION_CENTER_ON_PARENT, nullptr,
                               Cursor::record, &first_cursor);
    // Cursor callbacks: 1 for the main window under "First", 0 for "First" back on top.
    EXPECT_EQ(log, "first:-c smo1 second:-c -moc smo3 back:-c smo0 ");
    EXPECT_EQ(states({main}) + std::to_string(main_cursor.set), "s0");
}

TEST_F(WindowStackTest, BusyPhasesNestHideEachOtherAndBlockPopping)
{
    Cursor main_cursor, dialog_cursor;
    GtkWidget *main = push("Main", &main_cursor);
    GtkWidget *dialog = push("Dialog", &dialog_cursor);
    auto cursors = [&] { return std::to_string(main_cursor.set) + std::to_string(dialog_cursor.set); };

    ov_window_stack_busy_begin(TRUE);
    GtkWidget *outer = GTK_WIDGET(ov_window_stack_get_top_busy_window());
    ASSERT_NE(outer, nullptr);
    EXPECT_EQ(states({main, dialog, outer}) + cursors(), "-c -moc smoc11");
    ov_window_stack_set_busy_message_utf8_printf("Reading %d <files>", 3);
    EXPECT_EQ(ov::test::label_texts(outer), "Reading 3 <files>");

    // Abort is clicked once; an inner phase starts clear and ends restoring it.
    ov_window_stack_show_abort_button();
    ov::test::show_and_wait(outer);
    ov::test::click_button_in(outer, "Abort");
    EXPECT_TRUE(ov_window_stack_is_abort_requested());
    EXPECT_FALSE(gtk_widget_get_sensitive(ov::test::find_button(outer, "Abort")));
    ov_window_stack_busy_begin(TRUE);
    GtkWidget *inner = GTK_WIDGET(ov_window_stack_get_top_busy_window());
    EXPECT_FALSE(ov_window_stack_is_abort_requested());
    EXPECT_EQ(states({dialog, inner}), "-mc smoc");
    EXPECT_FALSE(gtk_widget_get_visible(outer));

    ov_window_stack_pop_window(); // refused while busy
    EXPECT_EQ(ov_window_stack_get_depth(), 4);
    ov_window_stack_busy_end();
    EXPECT_EQ(GTK_WIDGET(ov_window_stack_get_top_busy_window()), outer);
    EXPECT_TRUE(gtk_widget_get_visible(outer) && ov_window_stack_is_abort_requested());

    ov_window_stack_busy_end();
    ov_window_stack_busy_end(); // nothing busy any more
    EXPECT_FALSE(ov_window_stack_is_abort_requested());
    EXPECT_EQ(states({main, dialog}) + cursors(), "-c smo10");
}

// The GUI driver's watchdog, on a window run as the code under test runs it:
// a step that never comes true, or a last step that leaves the window open,
// fails the test naming what was pending and closes the window, so that the
// run returns instead of waiting for the test's time limit.
void run_stuck_window(const char *awaited_title)
{
    ov::test::Script script(300);
    script.when_window(awaited_title, [] {});
    ov_window_stack_run_window(GTK_WINDOW(ov_gui_create_window("Stuck")), OV_WINDOW_STACK_POSITION_CENTER,
                               nullptr, nullptr, nullptr);
}

TEST_F(WindowStackTest, ScriptWatchdogFailsNamingThePendingStepAndClosesTheWindow)
{
    EXPECT_NONFATAL_FAILURE(run_stuck_window("Stuck"),
                            "waited in vain for the code under test to return after step 1 "
                            "(window \"Stuck\" on top); closing everything (shown: \"Stuck\").");
    EXPECT_NONFATAL_FAILURE(run_stuck_window("Other"),
                            "waited in vain for step 1 (window \"Other\" on top); closing everything (shown: "
                            "\"Stuck\").");
    EXPECT_EQ(ov::test::top_window(), nullptr);
}
