// The component editor window and the metadata editor: saving and closing
// from the keyboard, the menu and the close button, the "Save before
// closing?" answers, the title, and the metadata's hand-over.
#include "support/gui_driver.h"
#include "support/test_support.h"

#include "app/component_gui_editor_window.h"
#include "app/component_gui_metadata_editor.h"
#include "core/error.h"
#include "frame/window_stack.h"
#include "lang/locale.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace ov::test;

constexpr GdkModifierType control = GDK_CONTROL_MASK;

class EditorWindowTest : public ::testing::Test
{
  protected:
    void SetUp() override { ov_window_stack_init(); }
    void TearDown() override
    {
        if (window_ != nullptr)
            gtk_widget_destroy(window_);
        ov_window_stack_clean_up();
        flush_events();
    }
    // Opens a window on museum.template and counts its saves.
    void open(gboolean is_new)
    {
        window_ = ov_component_gui_editor_window_new("Orvane Template Editor", "/some/folder/museum.template",
                                                     is_new);
        g_object_add_weak_pointer(G_OBJECT(window_), reinterpret_cast<gpointer *>(&window_));
        g_signal_connect_swapped(window_, "save", G_CALLBACK(+[](int *saves) { ++*saves; }), &saves_);
        ov_window_stack_push_window(GTK_WINDOW(window_), OV_WINDOW_STACK_POSITION_CENTER);
        g_signal_connect(window_, "destroy", G_CALLBACK(ov_window_stack_pop_window), nullptr);
        show_and_wait(window_);
    }
    OvComponentGuiEditorWindow *window() { return OV_COMPONENT_GUI_EDITOR_WINDOW(window_); }
    std::string title() { return gtk_window_get_title(GTK_WINDOW(window_)); }

    GtkWidget *window_ = nullptr;
    int saves_ = 0;
};

TEST_F(EditorWindowTest, SaveKeyHeldDownSavesOnceUntilReleased)
{
    open(FALSE);
    hold_key(window_, GDK_KEY_s, control, 4);
    EXPECT_EQ(saves_, 1);
    release_key(window_, GDK_KEY_s, control);
    hold_key(window_, GDK_KEY_s, control, 2);
    EXPECT_EQ(saves_, 2);
    release_key(window_, GDK_KEY_s, control);
    // Without the primary modifier the key does nothing.
    press_key(window_, GDK_KEY_s);
    press_key(window_, GDK_KEY_w);
    EXPECT_EQ(saves_, 2);
    EXPECT_NE(window_, nullptr);
}

TEST_F(EditorWindowTest, TitleFollowsTheModifiedFlag)
{
    open(FALSE);
    EXPECT_EQ(title(), "museum.template - Orvane Template Editor 3.3.0");
    ov_component_gui_editor_window_notify_file_has_been_modified(window());
    EXPECT_EQ(title(), "*museum.template - Orvane Template Editor 3.3.0");
    EXPECT_TRUE(ov_component_gui_editor_window_get_file_has_been_modified(window()));
    ov_component_gui_editor_window_set_file_has_been_modified(window(), FALSE);
    EXPECT_EQ(title(), "museum.template - Orvane Template Editor 3.3.0");
}

TEST_F(EditorWindowTest, FileMenuSavesAndCloses)
{
    open(FALSE);
    GtkWidget *file = find_button(window_, "File");
    std::string labels;
    Script script;
    script.when_menu([&] {
        labels = menu_labels(open_menu());
        activate_menu_item("Save");
    });
    click(file);
    EXPECT_TRUE(script.done());
    EXPECT_EQ(labels, "Close|Save");
    EXPECT_EQ(saves_, 1);
    script.when_menu([] { activate_menu_item("Close"); });
    click(file);
    EXPECT_EQ(window_, nullptr);
}

// How each way of closing a modified (or new) window ends: whether the
// question came, what the user answered, whether it saved and closed.
TEST_F(EditorWindowTest, CloseAsksOnlyForModifiedFilesAndOnlyCancelKeepsTheWindow)
{
    enum class Close { button, shortcut_held };
    struct Case {
        const char *name;
        gboolean is_new;
        bool modify;
        Close how;
        const char *answer; // a button, "Escape", or null when no question may come
        int saves;
        bool stays_open;
    };
    const Case cases[] = {
        {"unmodified", FALSE, false, Close::button, nullptr, 0, false},
        {"save", FALSE, true, Close::button, "Save", 1, false},
        {"discard", FALSE, true, Close::button, "Close without saving", 0, false},
        {"escape", FALSE, true, Close::button, "Escape", 0, false},
        {"cancel", FALSE, true, Close::button, "_Cancel", 0, true},
        {"new file", TRUE, false, Close::shortcut_held, "Close without saving", 0, false},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        saves_ = 0;
        open(c.is_new);
        if (c.modify)
            ov_component_gui_editor_window_notify_file_has_been_modified(window());
        int questions = 0;
        std::string text;
        Script script;
        if (c.answer != nullptr) {
            script.when_window("Save before closing?", [&] {
                ++questions;
                text = label_texts(GTK_WIDGET(top_window()));
                if (std::string(c.answer) == "Escape")
                    press_key(GTK_WIDGET(top_window()), GDK_KEY_Escape);
                else
                    click_button(c.answer);
            });
        }
        if (c.how == Close::button) {
            close_window(GTK_WINDOW(window_));
        } else {
            hold_key(window_, GDK_KEY_w, control, 3);
        }
        flush_events();
        EXPECT_TRUE(script.done());
        EXPECT_EQ(questions, c.answer != nullptr ? 1 : 0);
        if (c.answer != nullptr) {
            EXPECT_NE(text.find("Do you want to save your changes before closing the file?"),
                      std::string::npos);
        }
        EXPECT_EQ(saves_, c.saves);
        EXPECT_EQ(window_ != nullptr, c.stays_open);
        if (window_ != nullptr)
            gtk_widget_destroy(window_);
    }
}

class MetadataEditorTest : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        editor_ = OV_COMPONENT_GUI_METADATA_EDITOR(
            g_object_ref_sink(ov_component_gui_create_metadata_editor("Template name")));
        g_signal_connect_swapped(editor_, "changed", G_CALLBACK(+[](int *changes) { ++*changes; }),
                                 &changes_);
    }
    void TearDown() override
    {
        gtk_widget_destroy(GTK_WIDGET(editor_));
        g_object_unref(editor_);
        ov_langstr_free(name_);
        ov_langstr_free(author_);
        g_free(version_);
    }
    static langstr *english(const char *text)
    {
        langstr *ls = nullptr;
        ov_langstr_set_translation(&ls, ov_locale_get_uk_english(), text);
        return ls;
    }
    OvComponentGuiMetadataEditor *editor_ = nullptr;
    int changes_ = 0;
    langstr *name_ = english("Old name");
    langstr *author_ = english("Old author");
    char *version_ = g_strdup("1.0");
};

TEST_F(MetadataEditorTest, EmptyNameIsRefusedAndLeavesTheSlots)
{
    ov_component_gui_metadata_editor_set_version(editor_, "2.0");
    ov_error_clear();
    EXPECT_FALSE(ov_component_gui_metadata_editor_replace_metadata(editor_, &name_, &author_, &version_));
    EXPECT_STREQ(ov_error_get(), "Template name field must not be empty.");
    ov_error_clear();
    EXPECT_STREQ(ov_langstr_get_text(name_, ov_locale_get_uk_english()), "Old name");
    EXPECT_STREQ(version_, "1.0");
}

TEST_F(MetadataEditorTest, EmptyAuthorAndVersionBecomeNone)
{
    langstr *name = english("Painting");
    ov_component_gui_metadata_editor_set_name(editor_, name);
    ov_langstr_free(name);
    ov_component_gui_metadata_editor_set_version(editor_, nullptr);
    ASSERT_TRUE(ov_component_gui_metadata_editor_replace_metadata(editor_, &name_, &author_, &version_));
    EXPECT_STREQ(ov_langstr_get_text(name_, ov_locale_get_uk_english()), "Painting");
    EXPECT_EQ(author_, nullptr);
    EXPECT_EQ(version_, nullptr);

    // A typed version is handed over spacified; typing counts as a change.
    GtkWidget *window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_container_add(GTK_CONTAINER(window), GTK_WIDGET(editor_));
    show_and_wait(window);
    GtkWidget *entry = find_widget(GTK_WIDGET(editor_), [](GtkWidget *w) { return GTK_IS_ENTRY(w); });
    type_text(entry, " 3.1  beta ");
    EXPECT_GT(changes_, 0);
    ASSERT_TRUE(ov_component_gui_metadata_editor_replace_metadata(editor_, &name_, &author_, &version_));
    EXPECT_STREQ(version_, "3.1 beta");
    gtk_container_remove(GTK_CONTAINER(window), GTK_WIDGET(editor_));
    gtk_widget_destroy(window);
}

} // namespace
