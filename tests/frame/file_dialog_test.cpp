// File choosers on the window stack, driven through the chooser the toolkit
// shows: filters, chosen paths, remembered folders, overwrite confirmation.
#include "support/gui_driver.h"
#include "support/test_support.h"

#include "core/raii.h"
#include "frame/file_dialog.h"
#include "frame/window_stack.h"
#include "gui/gui.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

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
        for (const char *name : {"report.template", "second.template"})
            ov::test::write_file(dir_.file(name), "<template/>");
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

TEST_F(FileDialogTest, ChoosersShowTheFiltersForTheKindsGivenAndTheirAcceptButton)
{
    const std::vector<OvFileType> templates{OV_FILE_TYPE_TEMPLATE},
        pictures{OV_FILE_TYPE_JPEG, OV_FILE_TYPE_PNG};
    const struct {
        const char *accept, *filter_name;
        std::vector<OvFileType> types;
        const char *filters; // the selected one with a star
    } cases[] = {
        {"_Open", nullptr, templates, "Template files*|All files"},
        {"_Open", nullptr, pictures, "Matching files*|JPEG files|PNG files|All files"},
        {"_Open", "Images", pictures, "Images*|JPEG files|PNG files|All files"},
        {"_Open", nullptr, {}, "All files*"},
        {"_Save", nullptr, templates, "Template files*|All files"},
        {"_OK", nullptr, {}, ""},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.filters);
        const std::string accept = c.accept;
        ov::test::Script script;
        script.when(chooser, [&] {
            std::string filters;
            GSList *list = gtk_file_chooser_list_filters(chooser());
            for (GSList *walk = list; walk != nullptr; walk = walk->next)
                filters += std::string(filters.empty() ? "" : "|") +
                           gtk_file_filter_get_name(GTK_FILE_FILTER(walk->data)) +
                           (walk->data == gtk_file_chooser_get_filter(chooser()) ? "*" : "");
            g_slist_free(list);
            EXPECT_EQ(filters, c.filters);
            EXPECT_NE(ov::test::find_button(GTK_WIDGET(chooser()), c.accept), nullptr);
            EXPECT_EQ(ov_window_stack_get_top_window(), nullptr); // a native node is on top
            ov::test::click_button("_Cancel");
        });
        ov::GStr path(accept == "_Save" ? ov_file_dialog_get_file_path_for_writing(nullptr, c.types[0])
                      : accept == "_OK" ? ov_file_dialog_get_folder_path("Folder")
                                        : ov_file_dialog_get_file_path_for_reading_(
                                              "Open", c.filter_name, c.types.data(), c.types.size()));
        EXPECT_EQ(path, nullptr);
        EXPECT_EQ(ov_window_stack_get_top_window(), GTK_WINDOW(main_));
    }
}

TEST_F(FileDialogTest, ChosenPathsComeBackAndTheirFolderIsRememberedForTheSameKindsOnly)
{
    ov::test::Script script;
    script.when(chooser, [&] {
        // Shows the folder, then selects every file listed as Control-A there does.
        gtk_file_chooser_set_current_folder(chooser(), dir_.path().c_str());
        GtkTreeView *list = nullptr;
        ov::test::wait_until([&] {
            list = GTK_TREE_VIEW(ov::test::find_widget(GTK_WIDGET(chooser()), [](GtkWidget *w) {
                return GTK_IS_TREE_VIEW(w) && gtk_widget_is_drawable(w) &&
                       gtk_tree_view_get_model(GTK_TREE_VIEW(w));
            }));
            return current_folder() == dir_.path() && list != nullptr &&
                   gtk_tree_model_iter_n_children(gtk_tree_view_get_model(list), nullptr) == 2;
        });
        ov::test::wait_ms(50);
        gtk_tree_selection_select_all(gtk_tree_view_get_selection(list));
        ov::test::wait_until([&] {
            GSList *selected = gtk_file_chooser_get_filenames(chooser());
            guint count = g_slist_length(selected);
            g_slist_free_full(selected, g_free);
            return count == 2;
        });
        ov::test::click_button("_Open");
    });
    GSList *paths =
        ov_file_dialog_get_multiple_file_paths_for_reading("Several", nullptr, OV_FILE_TYPE_TEMPLATE);
    std::string names;
    for (GSList *walk = paths; walk != nullptr; walk = walk->next)
        names += ov::GStr(g_path_get_basename(static_cast<char *>(walk->data))).get() + std::string(" ");
    g_slist_free_full(paths, g_free);
    EXPECT_TRUE(names == "report.template second.template " || names == "second.template report.template ")
        << names;

    const OvFileType templates[] = {OV_FILE_TYPE_TEMPLATE},
                     pictures[] = {OV_FILE_TYPE_JPEG, OV_FILE_TYPE_PNG};
    EXPECT_STREQ(ov::GStr(ov_file_dialog_make_folder_key(pictures, 2)).get(), "JPEG#PNG");
    EXPECT_STREQ(ov_file_dialog_get_remembered_folder(templates, 1), dir_.path().c_str());
    // A chooser for the same kinds opens there, one for other kinds does not.
    for (const auto &[types, count] : {std::pair{templates, 1}, std::pair{pictures, 2}}) {
        std::string shown;
        ov::test::Script again;
        again.when(chooser, [&] {
            shown = current_folder();
            ov::test::close_window(ov::test::top_window());
        });
        EXPECT_EQ(ov::GStr(ov_file_dialog_get_file_path_for_reading_("Again", nullptr, types, count)),
                  nullptr);
        EXPECT_EQ(shown == dir_.path(), types == templates);
    }
}

TEST_F(FileDialogTest, SaveSuggestsUntitledWithTheExtensionAndConfirmsOverwriting)
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
}
