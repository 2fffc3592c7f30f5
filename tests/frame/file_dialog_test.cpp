// File choosers on the window stack, driven through the chooser the toolkit
// shows: chosen paths, remembered folders, overwrite confirmation.
#include "support/gui_driver.h"
#include "support/test_support.h"

#include "core/raii.h"
#include "frame/file_dialog.h"
#include "frame/window_stack.h"
#include "gui/gui.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

class FileDialogTest : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        g_setenv("GSETTINGS_BACKEND", "memory", FALSE); // the chooser saves its settings on closing
        ov_window_stack_init();
        ov_window_stack_push_window(GTK_WINDOW(main_), OV_WINDOW_STACK_POSITION_CENTER);
        ov::test::show_and_wait(main_);
    }
    void TearDown() override
    {
        gtk_widget_destroy(main_);
        ov_file_dialog_clean_up();
        ov_window_stack_clean_up();
        ov::test::flush_events();
    }
    GtkWidget *main_ = ov_gui_create_window("Main");
    ov::test::TempDir dir_;
};

GtkFileChooser *chooser()
{
    GtkWindow *top = ov::test::top_window();
    return GTK_IS_FILE_CHOOSER(top) ? GTK_FILE_CHOOSER(top) : nullptr;
}

std::string current_folder()
{
    ov::GStr folder(gtk_file_chooser_get_current_folder(chooser()));
    return folder ? folder.get() : "";
}

} // namespace

// The chosen folder is remembered for choosers of the same kinds only.
TEST_F(FileDialogTest, SaveSuggestsUntitledConfirmsOverwritingAndRemembersTheFolder)
{
    ov::test::write_file(dir_.file("untitled.template"), "old");
    std::string suggested;
    ov::test::Script script;
    script.when(chooser, [&] {
        suggested = ov::GStr(gtk_file_chooser_get_current_name(chooser())).get();
        gtk_file_chooser_set_current_folder(chooser(), dir_.path().c_str());
        ov::test::wait_until([&] { return current_folder() == dir_.path(); });
        ov::test::wait_ms(100);
        ov::test::click_button("_Save");
    });
    script.when([] { return GTK_IS_MESSAGE_DIALOG(ov::test::top_window()); },
                [] { ov::test::click_button("_Replace"); });
    ov::GStr path(ov_file_dialog_get_file_path_for_writing(nullptr, OV_FILE_TYPE_TEMPLATE));
    EXPECT_EQ(suggested, "untitled.template");
    EXPECT_STREQ(path.get(), dir_.file("untitled.template").c_str());

    const OvFileType templates[] = {OV_FILE_TYPE_TEMPLATE},
                     pictures[] = {OV_FILE_TYPE_JPEG, OV_FILE_TYPE_PNG};
    for (const auto &[types, count] : {std::pair{templates, 1}, std::pair{pictures, 2}}) {
        std::string shown;
        ov::test::Script again;
        again.when(chooser, [&] {
            shown = current_folder();
            ov::test::click_button("_Cancel");
        });
        EXPECT_EQ(ov::GStr(ov_file_dialog_get_file_path_for_reading_("Again", nullptr, types, count)),
                  nullptr);
        EXPECT_EQ(shown == dir_.path(), types == templates);
    }
    EXPECT_EQ(ov_window_stack_get_top_window(), GTK_WINDOW(main_));
}
