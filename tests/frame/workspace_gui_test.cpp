// The new-workspace assistant, driven as a user would.
#include "frame/home_folder.h"
#include "support/gui_driver.h"

#include "frame/window_stack.h"
#include "frame/workspace_gui.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace ov::test;

class WorkspaceGuiTest : public ::testing::Test
{
  protected:
    void SetUp() override { ov_window_stack_init(); }
    void TearDown() override
    {
        ov_window_stack_clean_up();
        flush_events();
    }
    HomeFolder home_;
};

bool on_page(int page)
{
    return GTK_IS_ASSISTANT(top_window()) &&
           gtk_assistant_get_current_page(GTK_ASSISTANT(top_window())) == page;
}

// Replaces the location on the confirmation page as a user types it.
void type_location(const std::string &location)
{
    GtkWidget *entry = find_widget(GTK_WIDGET(top_window()), [](GtkWidget *w) { return GTK_IS_ENTRY(w); });
    ASSERT_NE(entry, nullptr);
    gtk_widget_grab_focus(entry);
    gtk_editable_delete_text(GTK_EDITABLE(entry), 0, -1);
    type_text(entry, location.c_str());
}

// A refused location gives its message and leads back to the first page; a
// good one then gives the summary and a workspace with its pointer file.
TEST_F(WorkspaceGuiTest, RefusesABadLocationThenCreatesTheWorkspace)
{
    write_file(home_.file("taken"), "x");
    std::string message;
    Script script;
    auto apply = [&script](std::string location) {
        script.when([] { return on_page(0); }, [] { click_button("_Next"); })
            .when([] { return on_page(1); }, [location] { type_location(location); })
            .then([] { click_button("_Apply"); });
    };
    apply(home_.file("taken"));
    script.when_window("Error", [&] {
        message = label_texts(GTK_WIDGET(top_window()));
        click_button("_Close");
    });
    apply(" " + home_.file("My Workspace") + "// ");
    script.when([] { return on_page(2); }, [] { click_button("_Close"); });
    EXPECT_TRUE(ov_workspace_gui_create_workspace());
    EXPECT_TRUE(script.done());
    EXPECT_NE(message.find("There is already a folder or a file with that name."), std::string::npos);
    EXPECT_NE(read_file(home_.file("config/orvane/orvane.xml")).find(home_.file("My Workspace") + "\""),
              std::string::npos);
    EXPECT_EQ(ov_window_stack_get_depth(), 0);
}

} // namespace
