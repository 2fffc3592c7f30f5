// The new-workspace assistant and the user session, driven as a user would.
#include "frame/home_folder.h"
#include "support/gui_driver.h"

#include "frame/settings.h"
#include "frame/user_session.h"
#include "frame/window_stack.h"
#include "frame/workspace.h"
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

GtkAssistant *assistant()
{
    return GTK_IS_ASSISTANT(top_window()) ? GTK_ASSISTANT(top_window()) : nullptr;
}

bool on_page(int page)
{
    return assistant() != nullptr && gtk_assistant_get_current_page(assistant()) == page;
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

// Each refused location gives its message and leads back to the first page;
// a good one then gives the summary and a workspace with its pointer file.
TEST_F(WorkspaceGuiTest, RefusesBadLocationsThenCreatesTheWorkspace)
{
    write_file(home_.file("taken"), "x");
    struct Refusal {
        std::string location;
        const char *message_start;
    };
    const Refusal refusals[] = {
        {home_.file("taken"),
         "There is already a folder or a file with that name.\n\nPlease choose a new location."},
        {home_.file("taken") + "/inside", "Cannot access the specified location."},
        {home_.file("missing/Workspace"), "Creating a workspace at the chosen location failed."},
    };
    std::string messages;
    Script script;
    for (const Refusal &refusal : refusals) {
        script.when([] { return on_page(0); }, [] { click_button("_Next"); })
            .when([] { return on_page(1); }, [&] { type_location(refusal.location); })
            .then([] { click_button("_Apply"); })
            .when_window("Error", [&] {
                messages += label_texts(GTK_WIDGET(top_window())) + "\n--\n";
                click_button("_Close");
            });
    }
    const std::string good = home_.file("My Workspace") + "// ";
    script.when([] { return on_page(0); }, [] { click_button("_Next"); })
        .when([] { return on_page(1); }, [&] { type_location(" " + good); })
        .then([] { click_button("_Apply"); })
        .when([] { return on_page(2); },
              [] {
                  EXPECT_NE(
                      label_texts(GTK_WIDGET(top_window())).find("Your workspace was successfully created"),
                      std::string::npos);
                  EXPECT_STREQ(gtk_window_get_title(top_window()), "Orvane");
                  click_button("_Close");
              });
    EXPECT_TRUE(ov_workspace_gui_create_workspace());
    EXPECT_TRUE(script.done());
    for (const Refusal &refusal : refusals)
        EXPECT_NE(messages.find(refusal.message_start), std::string::npos) << messages;
    EXPECT_TRUE(file_exists(home_.file("My Workspace")));
    EXPECT_NE(read_file(home_.pointer_file()).find(home_.file("My Workspace") + "\""), std::string::npos);
    EXPECT_EQ(ov_window_stack_get_depth(), 0);
}

TEST_F(WorkspaceGuiTest, SessionWithoutAWorkspaceEndsWhenTheAssistantIsCancelled)
{
    Script script;
    script.when([] { return on_page(0); }, [] { click_button("_Cancel"); });
    EXPECT_FALSE(ov_user_session_start());
    EXPECT_TRUE(script.done());
    EXPECT_FALSE(file_exists(home_.pointer_file()));
    EXPECT_FALSE(file_exists(home_.home() + "/Orvane Workspace"));
}

// An existing workspace opens without the assistant; unreadable settings
// give a warning and the session goes on with the defaults.
TEST_F(WorkspaceGuiTest, SessionWarnsOfUnreadableSettingsAndGoesOn)
{
    const std::string workspace = home_.home() + "/Orvane Workspace";
    make_folder(workspace);
    write_file(workspace + "/settings.xml", "<settings><left-handed active=\"true\"");
    std::string warning;
    Script script;
    script.when_window("Warning", [&] {
        warning = label_texts(GTK_WIDGET(top_window()));
        click_button("_Close");
    });
    ASSERT_TRUE(ov_user_session_start());
    EXPECT_NE(warning.find("Something went wrong when reading your personal settings."), std::string::npos);
    EXPECT_FALSE(ov_settings_get_left_handed());
    EXPECT_STREQ(ov_workspace_get_workspace_folder_path(), workspace.c_str());
    ov_user_session_end();
    EXPECT_EQ(ov_workspace_get_workspace_folder_path(), nullptr);
}

// Object files from elsewhere are copied in once, under their object id.
TEST_F(WorkspaceGuiTest, AddsAnObjectFileOnlyOnce)
{
    make_folder(home_.home() + "/Orvane Workspace");
    ASSERT_TRUE(ov_workspace_open());
    write_file(home_.file("A 12.orvane"), "object");
    write_file(home_.file("notes.txt"), "text");
    std::string messages;
    Script script;
    for (int i = 0; i < 2; ++i)
        script.when_window("Error", [&] {
            messages += label_texts(GTK_WIDGET(top_window()));
            click_button("_Close");
        });
    EXPECT_FALSE(ov_workspace_gui_add_file(home_.file("notes.txt").c_str()));
    EXPECT_TRUE(ov_workspace_gui_add_file(home_.file("A 12.orvane").c_str()));
    EXPECT_FALSE(ov_workspace_gui_add_file(home_.file("A 12.orvane").c_str()));
    EXPECT_TRUE(ov_workspace_get_object_file_status("A 12"));
    EXPECT_NE(messages.find("Couldn't read the file:\n\n" + home_.file("notes.txt")), std::string::npos);
    EXPECT_NE(messages.find("You already have an object file for A 12 in your workspace."),
              std::string::npos);
    ov_workspace_close();
}

} // namespace
