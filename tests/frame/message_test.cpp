// Message boxes over a main window, answered the way a user would.
#include "support/gui_driver.h"
#include "support/test_support.h"

#include "core/error.h"
#include "frame/message.h"
#include "frame/window_stack.h"
#include "widgets/gui.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace {

class MessageTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ov_window_stack_init();
        main_ = ov_gui_create_window("Orvane Template Editor");
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
    GtkWidget *main_ = nullptr;
};

// The icon names shown in a window.
std::string icon_names(GtkWidget *root)
{
    std::string names;
    for (GtkWidget *image : ov::test::find_widgets(root, [](GtkWidget *w) { return GTK_IS_IMAGE(w); })) {
        const char *name = nullptr;
        if (gtk_image_get_storage_type(GTK_IMAGE(image)) == GTK_IMAGE_ICON_NAME)
            gtk_image_get_icon_name(GTK_IMAGE(image), &name, nullptr);
        if (name != nullptr)
            names += std::string(names.empty() ? "" : " ") + name;
    }
    return names;
}

std::string button_labels(GtkWidget *root)
{
    std::string labels;
    for (GtkWidget *button : ov::test::find_widgets(root, [](GtkWidget *w) { return GTK_IS_BUTTON(w); }))
        if (const char *label = gtk_button_get_label(GTK_BUTTON(button)))
            labels += std::string(labels.empty() ? "" : " ") + label;
    return labels;
}

} // namespace

TEST_F(MessageTest, EachKindHasItsTitleIconAndButtonAndSitsOnTheStack)
{
    struct Case {
        std::function<void()> show;
        const char *title;
        const char *icons;
        const char *button;
        const char *text;
    };
    ov_error_clear();
    const Case cases[] = {
        {[] { ov_message_show("Saved."); }, "Message", "", "_OK", "Saved."},
        {[] { ov_message_show_utf8_printf("Rows: %d", 3); }, "Message", "", "_OK", "Rows: 3"},
        {[] { ov_message_show_warning("Careful."); }, "Warning", "dialog-warning", "_Close", "Careful."},
        {[] { ov_message_show_error_utf8_printf("Missing XML attribute: %s", "tag"); }, "Error", "dialog-error",
         "_Close", "Missing XML attribute: tag"},
        {[] { ov_message_show_unknown_error(); }, "Error", "dialog-error", "_Close", ov_error_message_unknown},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.text);
        bool seen = false;
        ov::test::Script script;
        script.when_window(c.title, [&] {
            GtkWidget *box = GTK_WIDGET(ov::test::top_window());
            EXPECT_EQ(ov_window_stack_get_top_window(), GTK_WINDOW(box));
            EXPECT_FALSE(gtk_widget_get_sensitive(main_));
            EXPECT_EQ(gtk_window_get_transient_for(GTK_WINDOW(box)), GTK_WINDOW(main_));
            EXPECT_EQ(icon_names(box), c.icons);
            EXPECT_EQ(button_labels(box), c.button);
            EXPECT_NE(ov::test::find_label(box, c.text), nullptr) << ov::test::label_texts(box);
            seen = true;
            ov::test::click_button(c.button);
        });
        c.show();
        EXPECT_TRUE(seen);
        EXPECT_TRUE(gtk_widget_get_sensitive(main_));
        EXPECT_EQ(ov_window_stack_get_top_window(), GTK_WINDOW(main_));
    }
}

TEST_F(MessageTest, TextIsPlainLabelTextWithTheMarginsOfItsLayout)
{
    ov::test::Script script;
    script.when_window("Error", [&] {
        GtkWidget *box = GTK_WIDGET(ov::test::top_window());
        GtkWidget *label = ov::test::find_label(box, "<b>not bold</b> & more");
        ASSERT_NE(label, nullptr);
        EXPECT_FLOAT_EQ(gtk_label_get_xalign(GTK_LABEL(label)), 0.0f);
        EXPECT_FLOAT_EQ(gtk_label_get_yalign(GTK_LABEL(label)), 0.0f);
        GtkWidget *row = gtk_widget_get_parent(label);
        EXPECT_EQ(gtk_box_get_spacing(GTK_BOX(row)), 20);
        EXPECT_EQ(gtk_widget_get_margin_top(row), 20);
        EXPECT_EQ(gtk_widget_get_margin_end(row), 25);
        EXPECT_EQ(gtk_widget_get_margin_bottom(row), 20);
        EXPECT_EQ(gtk_widget_get_margin_start(row), 20);
        ov::test::close_window(GTK_WINDOW(box));
    });
    script.when_window("Message", [&] {
        GtkWidget *row = gtk_widget_get_parent(ov::test::find_label(GTK_WIDGET(ov::test::top_window()), "Plain"));
        EXPECT_EQ(gtk_box_get_spacing(GTK_BOX(row)), 25);
        EXPECT_EQ(gtk_widget_get_margin_start(row), 25);
        ov::test::close_window(ov::test::top_window());
    });
    ov_message_show_error("<b>not bold</b> & more");
    ov_message_show("Plain");
}

TEST_F(MessageTest, YesNoGivesTheAnswerAndTheDefaultWhenClosedOtherwise)
{
    enum Action { YES, NO, CLOSE, ENTER };
    struct Case {
        gboolean default_answer;
        Action action;
        gboolean expected;
    };
    const Case cases[] = {
        {FALSE, YES, TRUE},  {TRUE, NO, FALSE},  {TRUE, CLOSE, TRUE},
        {FALSE, CLOSE, FALSE}, {TRUE, ENTER, TRUE}, {FALSE, ENTER, FALSE},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::to_string(c.default_answer) + " " + std::to_string(c.action));
        ov::test::Script script;
        script.when_window("Question", [&] {
            GtkWidget *box = GTK_WIDGET(ov::test::top_window());
            EXPECT_EQ(icon_names(box), "dialog-question");
            EXPECT_EQ(button_labels(box), "_No _Yes");
            switch (c.action) {
            case YES:
                ov::test::click_button("_Yes");
                break;
            case NO:
                ov::test::click_button("_No");
                break;
            case CLOSE:
                ov::test::close_window(GTK_WINDOW(box));
                break;
            case ENTER: {
                GtkWidget *focus = gtk_window_get_focus(GTK_WINDOW(box));
                ov::test::press_key(focus != nullptr ? focus : box, GDK_KEY_Return);
                break;
            }
            }
        });
        EXPECT_EQ(ov_message_ask_yes_no_question_utf8_printf(c.default_answer, FALSE,
                                                             "Do you really want to delete this %s?", "row"),
                  c.expected);
    }
}

TEST_F(MessageTest, YesNoWithTheWarningFlagShowsTheWarningIcon)
{
    ov::test::Script script;
    script.when_window("Question", [&] {
        EXPECT_EQ(icon_names(GTK_WIDGET(ov::test::top_window())), "dialog-warning");
        ov::test::click_button("Yes");
    });
    EXPECT_TRUE(ov_message_ask_yes_no_question(FALSE, TRUE, "Overwrite?"));
}

TEST_F(MessageTest, QuestionDialogTakesTheCallersButtonsAndReturnsTheResponse)
{
    GtkWidget *dialog = ov_message_create_question_dialog("Save before closing?",
                                                          "Do you want to save your changes before closing the file?");
    gtk_dialog_add_button(GTK_DIALOG(dialog), "Save", 1);
    gtk_dialog_add_button(GTK_DIALOG(dialog), "Close without saving", 2);
    ov::test::Script script;
    script.when_window("Save before closing?", [&] {
        EXPECT_EQ(button_labels(GTK_WIDGET(ov::test::top_window())), "Save Close without saving");
        ov::test::click_button("Close without saving");
    });
    EXPECT_EQ(ov_message_run_and_destroy_dialog(dialog), 2);
    EXPECT_EQ(ov_window_stack_get_top_window(), GTK_WINDOW(main_));

    GtkWidget *untitled = ov_message_create_question_dialog_utf8_printf(nullptr, "%d?", 42);
    EXPECT_STREQ(gtk_window_get_title(GTK_WINDOW(untitled)), "Question");
    ov::test::Script closing;
    closing.when_window("Question", [] { ov::test::close_window(ov::test::top_window()); });
    EXPECT_EQ(ov_message_run_and_destroy_dialog(untitled), GTK_RESPONSE_DELETE_EVENT);
}
