// The window stack with real windows: modality, sensitivity and cursors
// across nested windows and busy phases, and the focus tracking.
#include "support/gui_driver.h"
#include "support/test_support.h"

#include "frame/window_stack.h"
#include "widgets/gui.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

// Records what the stack last told each window about its cursor.
struct CursorLog {
    std::map<std::string, int> last;
    struct Entry {
        CursorLog *log;
        std::string name;
    };
    std::map<std::string, Entry *> entries;
    ~CursorLog()
    {
        for (auto &[name, entry] : entries)
            delete entry;
    }
    gpointer data_for(const std::string &name)
    {
        auto *&entry = entries[name];
        if (entry == nullptr)
            entry = new Entry{this, name};
        return entry;
    }
    static void callback(int cursor_set, gpointer data)
    {
        auto *entry = static_cast<Entry *>(data);
        entry->log->last[entry->name] = cursor_set;
    }
    int of(const std::string &name) const
    {
        auto it = last.find(name);
        return it == last.end() ? -1 : it->second;
    }
};

class WindowStackTest : public ::testing::Test {
protected:
    void SetUp() override { ov_window_stack_init(); }
    void TearDown() override
    {
        // Newest first: dialogs go with their parent.
        for (auto it = owned_.rbegin(); it != owned_.rend(); ++it)
            gtk_widget_destroy(*it);
        ov_window_stack_clean_up();
        ov::test::flush_events();
    }
    // A shown main window pushed at the bottom of the stack.
    GtkWidget *push_main(CursorLog *log = nullptr)
    {
        GtkWidget *window = ov_gui_create_window("Main");
        gtk_widget_set_size_request(window, 300, 200);
        ov_window_stack_push_window(GTK_WINDOW(window), OV_WINDOW_STACK_POSITION_CENTER);
        if (log != nullptr)
            ov_window_stack_set_mouse_cursor_callback(CursorLog::callback, log->data_for("Main"));
        ov::test::show_and_wait(window);
        owned_.push_back(window);
        return window;
    }
    // A dialog-like window with a "Close" button that destroys it.
    static GtkWidget *make_dialog(const char *title)
    {
        GtkWidget *window = ov_gui_create_window(title);
        GtkWidget *box = ov_gui_add_vbox(GTK_CONTAINER(window), TRUE);
        GtkWidget *close = ov_gui_pack_button(GTK_BOX(box), "Close", FALSE);
        g_signal_connect_swapped(close, "clicked", G_CALLBACK(gtk_widget_destroy), window);
        return window;
    }
    std::vector<GtkWidget *> owned_;
};

bool has_cursor(GtkWidget *window)
{
    GdkWindow *gdk_window = gtk_widget_get_window(window);
    return gdk_window != nullptr && gdk_window_get_cursor(gdk_window) != nullptr;
}

} // namespace

TEST_F(WindowStackTest, DialogOverMainWindowIsModalAndRestoresTheMainWindowWhenClosed)
{
    CursorLog log;
    GtkWidget *main = push_main(&log);
    EXPECT_EQ(ov_window_stack_get_top_window(), GTK_WINDOW(main));
    EXPECT_FALSE(gtk_window_get_modal(GTK_WINDOW(main)));
    EXPECT_EQ(gtk_window_get_transient_for(GTK_WINDOW(main)), nullptr);

    GtkWidget *dialog = make_dialog("Set up fields");
    bool checked = false;
    ov::test::Script script;
    script.when_window("Set up fields", [&] {
        EXPECT_EQ(ov_window_stack_get_top_window(), GTK_WINDOW(dialog));
        EXPECT_FALSE(gtk_widget_get_sensitive(main));
        EXPECT_TRUE(gtk_window_get_modal(GTK_WINDOW(dialog)));
        EXPECT_EQ(gtk_window_get_transient_for(GTK_WINDOW(dialog)), GTK_WINDOW(main));
        EXPECT_TRUE(gtk_window_get_destroy_with_parent(GTK_WINDOW(dialog)));
        EXPECT_TRUE(gtk_window_get_skip_taskbar_hint(GTK_WINDOW(dialog)));
        EXPECT_EQ(log.of("Main"), 1);
        EXPECT_TRUE(has_cursor(main));
        EXPECT_EQ(ov_window_stack_get_depth(), 2);
        checked = true;
        ov::test::click_button("Close");
    });
    ov_window_stack_run_window(GTK_WINDOW(dialog), OV_WINDOW_STACK_POSITION_CENTER_ON_PARENT, nullptr,
                               CursorLog::callback, log.data_for("Set up fields"));
    EXPECT_TRUE(checked);
    EXPECT_EQ(ov_window_stack_get_top_window(), GTK_WINDOW(main));
    EXPECT_EQ(ov_window_stack_get_depth(), 1);
    EXPECT_TRUE(gtk_widget_get_sensitive(main));
    EXPECT_EQ(log.of("Main"), 0);
    EXPECT_FALSE(has_cursor(main));
}

TEST_F(WindowStackTest, NestedWindowsReturnInTurnAndKeepOnlyTheTopSensitive)
{
    GtkWidget *main = push_main();
    GtkWidget *first = make_dialog("First");
    GtkWidget *second = make_dialog("Second");
    std::string order;
    ov::test::Script script;
    script.when_window("First", [&] {
        order += "first-open ";
        ov_window_stack_run_window(GTK_WINDOW(second), OV_WINDOW_STACK_POSITION_MOUSE, nullptr, nullptr, nullptr);
        order += "second-returned ";
        EXPECT_TRUE(gtk_widget_get_sensitive(first));
        EXPECT_FALSE(gtk_widget_get_sensitive(main));
        ov::test::click_button("Close");
    });
    script.when_window("Second", [&] {
        order += "second-open ";
        EXPECT_FALSE(gtk_widget_get_sensitive(first));
        EXPECT_FALSE(gtk_widget_get_sensitive(main));
        EXPECT_EQ(gtk_window_get_transient_for(GTK_WINDOW(second)), GTK_WINDOW(first));
        ov::test::close_window(GTK_WINDOW(second)); // the window's close button
    });
    ov_window_stack_run_window(GTK_WINDOW(first), OV_WINDOW_STACK_POSITION_CENTER_ON_PARENT, nullptr, nullptr,
                               nullptr);
    EXPECT_EQ(order, "first-open second-open second-returned ");
    EXPECT_TRUE(gtk_widget_get_sensitive(main));
    EXPECT_EQ(ov_window_stack_get_depth(), 1);
}

TEST_F(WindowStackTest, PositionModesChooseTheWindowPosition)
{
    struct Case {
        bool with_owner;
        int mode;
        GtkWindowPosition expected;
    };
    const Case cases[] = {
        {false, OV_WINDOW_STACK_POSITION_CENTER_ON_PARENT, GTK_WIN_POS_CENTER},
        {true, OV_WINDOW_STACK_POSITION_CENTER_ON_PARENT, GTK_WIN_POS_CENTER_ON_PARENT},
        {true, OV_WINDOW_STACK_POSITION_CENTER, GTK_WIN_POS_CENTER},
        {true, OV_WINDOW_STACK_POSITION_MAXIMIZED, GTK_WIN_POS_CENTER},
        {true, OV_WINDOW_STACK_POSITION_MOUSE, GTK_WIN_POS_MOUSE},
        {true, 17, GTK_WIN_POS_MOUSE},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.mode);
        if (c.with_owner && ov_window_stack_get_depth() == 0)
            push_main();
        if (!c.with_owner && ov_window_stack_get_depth() > 0)
            continue;
        GtkWidget *window = ov_gui_create_window("Positioned");
        GtkWindowPosition position = GTK_WIN_POS_NONE;
        ov::test::Script script;
        script.when_window("Positioned", [&] {
            g_object_get(window, "window-position", &position, nullptr);
            gtk_widget_destroy(window);
        });
        ov_window_stack_run_window(GTK_WINDOW(window), c.mode, nullptr, nullptr, nullptr);
        EXPECT_EQ(position, c.expected);
    }
}

TEST_F(WindowStackTest, BusyPhasesNestHideEachOtherAndBlockPopping)
{
    CursorLog log;
    GtkWidget *main = push_main(&log);
    GtkWidget *dialog = make_dialog("Dialog");
    ov_window_stack_push_window(GTK_WINDOW(dialog), OV_WINDOW_STACK_POSITION_CENTER_ON_PARENT);
    ov_window_stack_set_mouse_cursor_callback(CursorLog::callback, log.data_for("Dialog"));
    ov::test::show_and_wait(dialog);
    owned_.push_back(dialog);

    ov_window_stack_busy_begin(TRUE);
    GtkWindow *first_busy = ov_window_stack_get_top_busy_window();
    ASSERT_NE(first_busy, nullptr);
    EXPECT_EQ(ov_window_stack_get_top_window(), nullptr);
    EXPECT_TRUE(gtk_widget_get_visible(dialog));
    EXPECT_FALSE(gtk_widget_get_sensitive(dialog));
    EXPECT_EQ(gtk_window_get_transient_for(first_busy), GTK_WINDOW(dialog));
    EXPECT_TRUE(gtk_window_get_modal(first_busy));
    EXPECT_FALSE(gtk_window_get_decorated(first_busy));
    EXPECT_STREQ(gtk_window_get_title(first_busy), "Please wait");
    EXPECT_EQ(ov::test::label_texts(GTK_WIDGET(first_busy)), "Please wait");
    EXPECT_EQ(log.of("Main"), 1);
    EXPECT_EQ(log.of("Dialog"), 1);
    EXPECT_TRUE(has_cursor(GTK_WIDGET(first_busy)));

    ov_window_stack_set_busy_message_utf8_printf("Reading %d <files>", 3);
    EXPECT_STREQ(gtk_window_get_title(first_busy), "Reading 3 <files>");
    EXPECT_EQ(ov::test::label_texts(GTK_WIDGET(first_busy)), "Reading 3 <files>");

    ov_window_stack_busy_begin(TRUE);
    GtkWindow *second_busy = ov_window_stack_get_top_busy_window();
    EXPECT_NE(second_busy, first_busy);
    EXPECT_FALSE(gtk_widget_get_visible(GTK_WIDGET(first_busy)));
    EXPECT_TRUE(gtk_widget_get_visible(GTK_WIDGET(second_busy)));
    EXPECT_EQ(gtk_window_get_transient_for(second_busy), GTK_WINDOW(dialog));

    // A busy phase without a window only sets the wait cursor.
    ov_window_stack_busy_begin(FALSE);
    EXPECT_EQ(ov_window_stack_get_top_busy_window(), nullptr);
    EXPECT_EQ(ov_window_stack_get_depth(), 5);
    ov_window_stack_pop_window();
    EXPECT_EQ(ov_window_stack_get_depth(), 5);
    ov_window_stack_set_busy_message("ignored without a window");
    ov_window_stack_busy_end();
    EXPECT_TRUE(gtk_widget_get_visible(GTK_WIDGET(second_busy)));

    ov_window_stack_busy_end();
    EXPECT_TRUE(gtk_widget_get_visible(GTK_WIDGET(first_busy)));
    EXPECT_EQ(ov_window_stack_get_top_busy_window(), first_busy);
    EXPECT_EQ(log.of("Dialog"), 1);

    ov_window_stack_busy_end();
    EXPECT_EQ(ov_window_stack_get_top_busy_window(), nullptr);
    EXPECT_TRUE(gtk_widget_get_sensitive(dialog));
    EXPECT_FALSE(gtk_widget_get_sensitive(main));
    EXPECT_EQ(log.of("Dialog"), 0);
    EXPECT_EQ(log.of("Main"), 1);
    ov_window_stack_busy_end(); // nothing busy any more
    EXPECT_EQ(ov_window_stack_get_depth(), 2);
}

TEST_F(WindowStackTest, AbortButtonIsClickedOnceAndANewBusyPhaseStartsClear)
{
    push_main();
    ov_window_stack_busy_begin(TRUE);
    EXPECT_FALSE(ov_window_stack_is_abort_requested());
    ov_window_stack_show_abort_button();
    GtkWidget *busy = GTK_WIDGET(ov_window_stack_get_top_busy_window());
    ov::test::show_and_wait(busy);
    GtkWidget *abort = ov::test::find_button(busy, "Abort");
    ASSERT_NE(abort, nullptr);
    ov::test::click(abort);
    EXPECT_TRUE(ov_window_stack_is_abort_requested());
    EXPECT_FALSE(gtk_widget_get_sensitive(abort));
    ov_window_stack_hide_abort_button();
    EXPECT_FALSE(gtk_widget_is_visible(abort));
    ov_window_stack_show_abort_button();
    EXPECT_TRUE(gtk_widget_is_visible(abort));

    ov_window_stack_busy_begin(TRUE);
    EXPECT_FALSE(ov_window_stack_is_abort_requested());
    ov_window_stack_busy_end();
    EXPECT_TRUE(ov_window_stack_is_abort_requested());
    ov_window_stack_busy_end();
    EXPECT_FALSE(ov_window_stack_is_abort_requested());
}

TEST_F(WindowStackTest, NativeNodesGiveTheirParentAndPopLikeWindows)
{
    GtkWidget *main = push_main();
    EXPECT_EQ(ov_window_stack_push_native_window(), GTK_WINDOW(main));
    EXPECT_EQ(ov_window_stack_get_top_window(), nullptr);
    ov_window_stack_present(); // skips the node without a window
    ov_window_stack_pop_window();
    EXPECT_EQ(ov_window_stack_get_top_window(), GTK_WINDOW(main));
    ov_window_stack_pop_window();
    EXPECT_EQ(ov_window_stack_get_depth(), 0);
    ov_window_stack_pop_window(); // empty: nothing happens
}

TEST(WindowStackWithoutStack, EveryOperationDoesNothing)
{
    GtkWidget *window = ov_gui_create_window("Alone");
    ov_window_stack_push_window(GTK_WINDOW(window), 0);
    ov_window_stack_run_window(GTK_WINDOW(window), 0, nullptr, nullptr, nullptr);
    EXPECT_EQ(ov_window_stack_get_top_window(), nullptr);
    EXPECT_EQ(ov_window_stack_push_native_window(), nullptr);
    ov_window_stack_busy_begin(TRUE);
    EXPECT_EQ(ov_window_stack_get_top_busy_window(), nullptr);
    ov_window_stack_show_abort_button();
    EXPECT_FALSE(ov_window_stack_is_abort_requested());
    ov_window_stack_busy_end();
    ov_window_stack_pop_window();
    ov_window_stack_present();
    EXPECT_EQ(ov_window_stack_get_depth(), 0);
    gtk_widget_destroy(window);
}

namespace {

void send_focus(GtkWidget *window, bool in)
{
    GdkEvent *event = gdk_event_new(GDK_FOCUS_CHANGE);
    event->focus_change.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(window)));
    event->focus_change.send_event = TRUE;
    event->focus_change.in = in;
    gtk_widget_send_focus_change(window, event);
    gdk_event_free(event);
}

} // namespace

TEST_F(WindowStackTest, FocusMovingBetweenOwnWindowsIsNoLossButLeavingTheProgramIs)
{
    // Without a window manager the X focus follows the pointer: keep it off
    // the windows so that only the focus changes sent below count.
    GdkDisplay *display = gdk_display_get_default();
    gdk_device_warp(gdk_seat_get_pointer(gdk_display_get_default_seat(display)),
                    gdk_display_get_default_screen(display), 0, 0);
    GtkWidget *main = push_main();
    GtkWidget *dialog = make_dialog("Dialog");
    ov_window_stack_push_window(GTK_WINDOW(dialog), OV_WINDOW_STACK_POSITION_CENTER_ON_PARENT);
    ov::test::show_and_wait(dialog);
    owned_.push_back(dialog);
    std::vector<gint64> reported;
    ov_window_stack_set_focus_callback(
        [](gint64 seconds, gpointer data) { static_cast<std::vector<gint64> *>(data)->push_back(seconds); },
        &reported);

    // From the dialog to the main window within half a second.
    send_focus(dialog, true);
    send_focus(dialog, false);
    ov::test::wait_ms(100);
    send_focus(main, true);
    ov::test::wait_ms(700);
    EXPECT_FALSE(ov_window_stack_is_focus_lost());
    EXPECT_TRUE(reported.empty());

    // Away for more than a second.
    send_focus(main, false);
    ov::test::wait_ms(1200);
    EXPECT_TRUE(ov_window_stack_is_focus_lost());
    send_focus(dialog, true);
    EXPECT_FALSE(ov_window_stack_is_focus_lost());
    ASSERT_EQ(reported.size(), 1u);
    EXPECT_EQ(reported[0], 1);

    // A focus-in without a loss reports nothing; clean-up drops pending checks.
    send_focus(dialog, false);
    send_focus(main, true);
    EXPECT_EQ(reported.size(), 1u);
}
