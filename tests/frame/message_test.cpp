// Message boxes over a main window, answered the way a user would.
#include "support/gui_driver.h"
#include "support/test_support.h"

#include "frame/message.h"
#include "frame/window_stack.h"
#include "gui/gui.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

class MessageTest : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        ov_window_stack_init();
        gtk_widget_set_size_request(main_, 400, 300);
        ov_window_stack_push_window(GTK_WINDOW(main_), OV_WINDOW_STACK_POSITION_CENTER);
        ov::test::show_and_wait(main_);
    }
    void TearDown() override
    {
        gtk_widget_destroy(main_);
        ov_window_stack_clean_up();
        ov::test::flush_events();
    }
    GtkWidget *main_ = ov_gui_create_window("Orvane Template Editor");
};

// The icon of the box on top.
std::string icon_name()
{
    GtkWidget *image = ov::test::find_widget(GTK_WIDGET(ov::test::top_window()), [](GtkWidget *w) {
        return GTK_IS_IMAGE(w) && gtk_image_get_storage_type(GTK_IMAGE(w)) == GTK_IMAGE_ICON_NAME;
    });
    const char *name = nullptr;
    if (image != nullptr)
        gtk_image_get_icon_name(GTK_IMAGE(image), &name, nullptr);
    return name != nullptr ? name : "";
}

} // namespace

TEST_F(MessageTest, YesNoGivesTheAnswerClickedOrTheDefaultWhenClosedOtherwise)
{
    enum Action { YES, NO, CLOSE, ENTER };
    const struct {
        gboolean default_answer, warning;
        Action action;
        gboolean expected;
    } cases[] = {
        {FALSE, FALSE, YES, TRUE},
        {TRUE, TRUE, NO, FALSE},
        {TRUE, FALSE, CLOSE, TRUE},
        {FALSE, FALSE, ENTER, FALSE},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::to_string(c.default_answer) + " " + std::to_string(c.action));
        ov::test::Script script;
        script.when_window("Question", [&] {
            GtkWindow *box = ov::test::top_window();
            EXPECT_EQ(ov_window_stack_get_top_window(), box);
            // Shown as it is, markup and all.
            EXPECT_NE(ov::test::label_texts(GTK_WIDGET(box)).find("Delete this <b>row</b>?"),
                      std::string::npos);
            EXPECT_EQ(icon_name(), c.warning ? "dialog-warning" : "dialog-question");
            GtkWidget *focus = gtk_window_get_focus(box);
            if (c.action == CLOSE)
                ov::test::close_window(box);
            else if (c.action == ENTER)
                ov::test::press_key(focus != nullptr ? focus : GTK_WIDGET(box), GDK_KEY_Return);
            else
                ov::test::click_button(c.action == YES ? "Yes" : "No");
        });
        EXPECT_EQ(ov_message_ask_yes_no_question_utf8_printf(c.default_answer, c.warning, "Delete this %s?",
                                                             "<b>row</b>"),
                  c.expected);
    }
}
