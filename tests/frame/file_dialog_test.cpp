// File choosers on the window stack: filters, remembered folders, suggested
// names, multiple selection; driven through the chooser the toolkit shows.
#include "support/gui_driver.h"
#include "support/test_support.h"

#include "core/raii.h"
#include "frame/file_dialog.h"
#include "frame/window_stack.h"
#include "widgets/gui.h"

#include <gtest/gtest.h>

#include <string>

namespace {

class FileDialogTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        // The chooser saves its own settings when it closes; keep them in memory.
        g_setenv("GSETTINGS_BACKEND", "memory", FALSE);
        ov_window_stack_init();
        main_ = ov_gui_create_window("Main");
        ov_window_stack_push_window(GTK_WINDOW(main_), OV_WINDOW_STACK_POSITION_CENTER);
        ov::test::show_and_wait(main_);
        template_path_ = dir_.file("report.template");
        ov::test::write_file(template_path_, "<template/>");
        ov::test::write_file(dir_.file("second.template"), "<template/>");
    }
    void TearDown() override
    {
        gtk_widget_destroy(main_);
        ov_file_dialog_clean_up();
        ov_window_stack_clean_up();
        ov::test::flush_events();
    }
    GtkWidget *main_ = nullptr;
    ov::test::TempDir dir_;
    std::string template_path_;
};

GtkFileChooser *shown_chooser()
{
    GtkWindow *top = ov::test::top_window();
    return GTK_IS_FILE_CHOOSER(top) ? GTK_FILE_CHOOSER(top) : nullptr;
}

// "name name*" with a star on the selected filter.
std::string filter_names(GtkFileChooser *chooser)
{
    std::string names;
    GSList *filters = gtk_file_chooser_list_filters(chooser);
    for (GSList *walk = filters; walk != nullptr; walk = walk->next) {
        auto *filter = GTK_FILE_FILTER(walk->data);
        names += std::string(names.empty() ? "" : "|") + gtk_file_filter_get_name(filter);
        if (filter == gtk_file_chooser_get_filter(chooser))
            names += "*";
    }
    g_slist_free(filters);
    return names;
}

std::string current_folder(GtkFileChooser *chooser)
{
    ov::GStr folder(gtk_file_chooser_get_current_folder(chooser));
    return folder ? folder.get() : "";
}

// Picks the files in the chooser and presses its accept button.
void choose(const std::vector<std::string> &paths, const char *accept)
{
    GtkFileChooser *chooser = shown_chooser();
    ASSERT_NE(chooser, nullptr);
    // Selecting works once the chooser shows the folder.
    ov::GStr folder(g_path_get_dirname(paths.front().c_str()));
    gtk_file_chooser_set_current_folder(chooser, folder.get());
    for (int i = 0; i < 100 && current_folder(chooser) != folder.get(); ++i)
        ov::test::wait_ms(20);
    ov::test::wait_ms(100);
    for (const std::string &path : paths)
        gtk_file_chooser_select_filename(chooser, path.c_str());
    // The chooser loads the folder before it selects.
    for (int i = 0; i < 100; ++i) {
        GSList *selected = gtk_file_chooser_get_filenames(chooser);
        guint count = g_slist_length(selected);
        g_slist_free_full(selected, g_free);
        if (count == paths.size())
            break;
        ov::test::wait_ms(20);
    }
    ov::test::click_button(accept);
}

} // namespace

TEST(FileDialogKeys, KindNamesJoinedWithHash)
{
    const OvFileType pictures[] = {OV_FILE_TYPE_JPEG, OV_FILE_TYPE_PNG};
    ov::GStr key(ov_file_dialog_make_folder_key(pictures, 2));
    EXPECT_STREQ(key.get(), "JPEG#PNG");
    ov::GStr empty(ov_file_dialog_make_folder_key(nullptr, 0));
    EXPECT_STREQ(empty.get(), "");
    EXPECT_EQ(ov_file_dialog_get_remembered_folder(pictures, 2), nullptr);
}

TEST_F(FileDialogTest, FiltersFollowTheKindsGiven)
{
    struct Case {
        const char *title;
        std::function<char *()> open;
        const char *filters;
    };
    const Case cases[] = {
        {"One kind", [] { return ov_file_dialog_get_file_path_for_reading("One kind", nullptr, OV_FILE_TYPE_TEMPLATE); },
         "Template files*|All files"},
        {"Pictures",
         [] { return ov_file_dialog_get_file_path_for_reading("Pictures", nullptr, OV_FILE_TYPE_JPEG, OV_FILE_TYPE_PNG); },
         "Matching files*|JPEG files|PNG files|All files"},
        {"Named",
         [] { return ov_file_dialog_get_file_path_for_reading("Named", "Images", OV_FILE_TYPE_JPEG, OV_FILE_TYPE_PNG); },
         "Images*|JPEG files|PNG files|All files"},
        {"Anything", [] { return ov_file_dialog_get_file_path_for_reading("Anything", nullptr); }, "All files*"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.title);
        ov::test::Script script;
        script.when_window(c.title, [&] {
            GtkFileChooser *chooser = shown_chooser();
            ASSERT_NE(chooser, nullptr);
            EXPECT_EQ(gtk_file_chooser_get_action(chooser), GTK_FILE_CHOOSER_ACTION_OPEN);
            EXPECT_EQ(filter_names(chooser), c.filters);
            EXPECT_NE(ov::test::find_button(GTK_WIDGET(chooser), "_Open"), nullptr);
            EXPECT_EQ(ov_window_stack_get_top_window(), nullptr); // a native node is on top
            ov::test::click_button("_Cancel");
        });
        ov::GStr path(c.open());
        EXPECT_EQ(path, nullptr);
        EXPECT_EQ(ov_window_stack_get_top_window(), GTK_WINDOW(main_));
    }
}

TEST_F(FileDialogTest, ChosenFolderIsRememberedForTheSameKindsOnly)
{
    ov::test::Script script;
    script.when_window("Select a template file to open", [&] { choose({template_path_}, "_Open"); });
    ov::GStr path(ov_file_dialog_get_file_path_for_reading("Select a template file to open", nullptr,
                                                           OV_FILE_TYPE_TEMPLATE));
    ASSERT_NE(path, nullptr);
    EXPECT_EQ(std::string(path.get()), template_path_);
    const OvFileType templates[] = {OV_FILE_TYPE_TEMPLATE};
    EXPECT_EQ(std::string(ov_file_dialog_get_remembered_folder(templates, 1)), dir_.path());

    std::string again;
    std::string pictures;
    ov::test::Script second;
    second.when_window("Again", [&] {
        again = current_folder(shown_chooser());
        ov::test::close_window(ov::test::top_window());
    });
    second.when_window("Pictures", [&] {
        pictures = current_folder(shown_chooser());
        ov::test::click_button("_Cancel");
    });
    EXPECT_EQ(ov::GStr(ov_file_dialog_get_file_path_for_reading("Again", nullptr, OV_FILE_TYPE_TEMPLATE)), nullptr);
    EXPECT_EQ(ov::GStr(ov_file_dialog_get_file_path_for_reading("Pictures", nullptr, OV_FILE_TYPE_PNG)), nullptr);
    EXPECT_EQ(again, dir_.path());
    EXPECT_NE(pictures, dir_.path());
}

TEST_F(FileDialogTest, SaveSuggestsUntitledWithTheExtensionAndConfirmsOverwriting)
{
    std::string suggested;
    gboolean confirms = FALSE;
    ov::test::Script script;
    script.when_window("Save As", [&] {
        GtkFileChooser *chooser = shown_chooser();
        ASSERT_NE(chooser, nullptr);
        ov::GStr name(gtk_file_chooser_get_current_name(chooser));
        suggested = name.get();
        confirms = gtk_file_chooser_get_do_overwrite_confirmation(chooser);
        EXPECT_EQ(filter_names(chooser), "Template files*|All files");
        EXPECT_NE(ov::test::find_button(GTK_WIDGET(chooser), "_Save"), nullptr);
        gtk_file_chooser_set_current_folder(chooser, dir_.path().c_str());
        ov::test::wait_ms(100);
        ov::test::click_button("_Save");
    });
    ov::GStr path(ov_file_dialog_get_file_path_for_writing(nullptr, OV_FILE_TYPE_TEMPLATE));
    EXPECT_EQ(suggested, "untitled.template");
    EXPECT_TRUE(confirms);
    ASSERT_NE(path, nullptr);
    EXPECT_EQ(std::string(path.get()), dir_.file("untitled.template"));

    ov::test::Script printout;
    printout.when_window("Save As", [&] {
        ov::GStr name(gtk_file_chooser_get_current_name(shown_chooser()));
        suggested = name.get();
        ov::test::click_button("_Cancel");
    });
    EXPECT_EQ(ov::GStr(ov_file_dialog_get_printout_file_path("Jar 12", OV_FILE_TYPE_PDF)), nullptr);
    EXPECT_EQ(suggested.substr(suggested.size() - 4), ".pdf");
}

TEST_F(FileDialogTest, MultipleSelectionReturnsEveryChosenPath)
{
    ov::test::Script script;
    script.when_window("Several", [&] {
        GtkFileChooser *chooser = shown_chooser();
        EXPECT_TRUE(gtk_file_chooser_get_select_multiple(chooser));
        gtk_file_chooser_set_current_folder(chooser, dir_.path().c_str());
        // Select everything in the file list once the folder is listed.
        GtkWidget *list = ov::test::find_widget(GTK_WIDGET(chooser), [](GtkWidget *w) {
            return GTK_IS_TREE_VIEW(w) && gtk_widget_is_drawable(w) &&
                   gtk_tree_view_get_model(GTK_TREE_VIEW(w)) != nullptr;
        });
        ASSERT_NE(list, nullptr);
        auto listed = [&] {
            GtkTreeModel *model = gtk_tree_view_get_model(GTK_TREE_VIEW(list));
            return current_folder(chooser) == dir_.path() && model != nullptr &&
                   gtk_tree_model_iter_n_children(model, nullptr) == 2;
        };
        for (int i = 0; i < 100 && !listed(); ++i)
            ov::test::wait_ms(20);
        ov::test::wait_ms(50);
        // Selects every row, as Control-A in the list does.
        gtk_tree_selection_select_all(gtk_tree_view_get_selection(GTK_TREE_VIEW(list)));
        for (int i = 0; i < 50; ++i) {
            GSList *selected = gtk_file_chooser_get_filenames(chooser);
            guint count = g_slist_length(selected);
            g_slist_free_full(selected, g_free);
            if (count == 2)
                break;
            ov::test::wait_ms(20);
        }
        ov::test::click_button("_Open");
    });
    GSList *paths = ov_file_dialog_get_multiple_file_paths_for_reading("Several", nullptr, OV_FILE_TYPE_TEMPLATE);
    ASSERT_EQ(g_slist_length(paths), 2u);
    std::string joined = std::string(static_cast<char *>(paths->data)) + " " + static_cast<char *>(paths->next->data);
    EXPECT_NE(joined.find("report.template"), std::string::npos);
    EXPECT_NE(joined.find("second.template"), std::string::npos);
    g_slist_free_full(paths, g_free);
}

TEST_F(FileDialogTest, FolderChooserHasNoFiltersAndRemembersNothing)
{
    ov::test::Script script;
    script.when_window("Choose a folder", [&] {
        GtkFileChooser *chooser = shown_chooser();
        ASSERT_NE(chooser, nullptr);
        EXPECT_EQ(gtk_file_chooser_get_action(chooser), GTK_FILE_CHOOSER_ACTION_SELECT_FOLDER);
        EXPECT_EQ(filter_names(chooser), "");
        EXPECT_NE(ov::test::find_button(GTK_WIDGET(chooser), "_OK"), nullptr);
        ov::test::click_button("_Cancel");
    });
    EXPECT_EQ(ov::GStr(ov_file_dialog_get_folder_path("Choose a folder")), nullptr);
    EXPECT_EQ(ov_file_dialog_get_remembered_folder(nullptr, 0), nullptr);
}
