// The component editor window and the metadata editor: saving and closing
// from the keyboard, the menu and the close button, the "Save before
// closing?" answers, the title, the metadata's hand-over, and undo and redo
// through the Edit menu and the keys.
#include "docs_gui/docs_gui_test_util.h"

#include "app/component_gui_editor_window.h"
#include "app/component_gui_metadata_editor.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace ov::test;

constexpr GdkModifierType control = GDK_CONTROL_MASK;
constexpr const char *title = "museum.template - Orvane Template Editor 3.3.0";

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
        saves_ = 0;
        window_ =
            ov_component_gui_editor_window_new("Orvane Template Editor", "/folder/museum.template", is_new);
        g_object_add_weak_pointer(G_OBJECT(window_), reinterpret_cast<gpointer *>(&window_));
        g_signal_connect_swapped(window_, "save", G_CALLBACK(+[](int *saves) { ++*saves; }), &saves_);
        ov_window_stack_push_window(GTK_WINDOW(window_), OV_WINDOW_STACK_POSITION_CENTER);
        g_signal_connect(window_, "destroy", G_CALLBACK(ov_window_stack_pop_window), nullptr);
        show_and_wait(window_);
    }
    OvComponentGuiEditorWindow *window() { return OV_COMPONENT_GUI_EDITOR_WINDOW(window_); }

    GtkWidget *window_ = nullptr;
    int saves_ = 0;
};

TEST_F(EditorWindowTest, HeldSaveKeySavesOnceAndTheTitleShowsTheFlag)
{
    open(FALSE);
    EXPECT_STREQ(gtk_window_get_title(GTK_WINDOW(window_)), title);
    for (int expected : {1, 2}) {
        hold_key(window_, GDK_KEY_s, control, 4);
        EXPECT_EQ(saves_, expected);
        release_key(window_, GDK_KEY_s, control);
    }
    ov_component_gui_editor_window_notify_file_has_been_modified(window());
    EXPECT_EQ(gtk_window_get_title(GTK_WINDOW(window_)), "*" + std::string(title));
    ov_component_gui_editor_window_set_file_has_been_modified(window(), FALSE);
    EXPECT_STREQ(gtk_window_get_title(GTK_WINDOW(window_)), title);
}

TEST_F(EditorWindowTest, FileMenuSavesAndCloses)
{
    open(FALSE);
    GtkWidget *file = find_button(window_, "File");
    Script script;
    script.when_menu([] { activate_menu_item("Save"); });
    click(file);
    EXPECT_EQ(saves_, 1);
    // The shortcuts window comes with Control+?.
    press_key(window_, GDK_KEY_question, GdkModifierType(GDK_CONTROL_MASK | GDK_SHIFT_MASK));
    wait_until([] { return window_shown("Keyboard shortcuts"); });
    gtk_widget_destroy(GTK_WIDGET(top_window()));
    script.when_menu([] { activate_menu_item("Close"); });
    click(file);
    EXPECT_EQ(window_, nullptr);
}

// Each way of closing: whether the question came, what the user answered,
// whether that saved and whether the window stayed.
TEST_F(EditorWindowTest, CloseAsksOnlyForModifiedFilesAndOnlyCancelKeepsTheWindow)
{
    struct Case {
        const char *name;
        gboolean is_new, modify, held_shortcut;
        const char *answer; // a button, or null when no question may come
        int saves;
        bool stays_open;
    };
    const Case cases[] = {
        {"unmodified", FALSE, FALSE, FALSE, nullptr, 0, false},
        {"save", FALSE, TRUE, FALSE, "Save", 1, false},
        {"cancel", FALSE, TRUE, FALSE, "_Cancel", 0, true},
        {"new file, held", TRUE, FALSE, TRUE, "Close without saving", 0, false},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        open(c.is_new);
        if (c.modify)
            ov_component_gui_editor_window_notify_file_has_been_modified(window());
        int questions = 0;
        Script script;
        if (c.answer != nullptr) {
            script.when_window("Save before closing?", [&] {
                ++questions;
                EXPECT_TRUE(contains(label_texts(GTK_WIDGET(top_window())),
                                     "Do you want to save your changes before closing the file?"));
                click_button(c.answer);
            });
        }
        if (c.held_shortcut)
            hold_key(window_, GDK_KEY_w, control, 3);
        else
            close_window(GTK_WINDOW(window_));
        flush_events();
        EXPECT_EQ(questions, c.answer != nullptr ? 1 : 0);
        EXPECT_EQ(saves_, c.saves);
        EXPECT_EQ(window_ != nullptr, c.stays_open);
        if (window_ != nullptr)
            gtk_widget_destroy(window_);
    }
}

TEST(MetadataEditorTest, HandsOverTheFieldsAndRefusesAnEmptyName)
{
    TestWindow w;
    auto *editor = OV_COMPONENT_GUI_METADATA_EDITOR(
        ov_component_gui_pack_metadata_editor(GTK_BOX(w.box), "Template name"));
    w.show();
    langstr *name = header_of("Old_name").release(), *author = header_of("Old_author").release();
    char *version = g_strdup("1.0");

    ov_error_clear();
    EXPECT_FALSE(ov_component_gui_metadata_editor_replace_metadata(editor, &name, &author, &version));
    EXPECT_STREQ(ov_error_get(), "Template name field must not be empty.");
    ov_error_clear();
    EXPECT_STREQ(ov_langstr_get_text(name, ov_locale_get_uk_english()), "Old name");
    EXPECT_STREQ(version, "1.0");

    // An empty author becomes none; a typed version is spacified.
    const LangstrPtr painting = header_of("Painting");
    ov_component_gui_metadata_editor_set_name(editor, painting.get());
    type_text(find_widget(w.box, [](GtkWidget *e) { return GTK_IS_ENTRY(e); }), " 3.1  beta ");
    ASSERT_TRUE(ov_component_gui_metadata_editor_replace_metadata(editor, &name, &author, &version));
    EXPECT_TRUE(ov_langstr_is_identical(name, painting.get()));
    EXPECT_EQ(author, nullptr);
    EXPECT_STREQ(version, "3.1 beta");

    ov_langstr_free(name);
    g_free(version);
}

// The Edit menu's entries, "(off)" after insensitive ones.
std::string edit_menu(GtkWidget *window)
{
    std::string shown;
    answered(
        [&](Script &s) {
            s.when_menu([&] {
                shown = menu_labels(open_menu(), true);
                dismiss_menu();
            });
        },
        [&] { click(find_button(window, "Edit")); });
    return shown;
}

} // namespace

TEST_F(EditorWindowTest, EditMenuAndKeysUndoAndRedoAndTheMarkFollowsTheSavedState)
{
    open(FALSE);
    TemplatePtr tmpl = template_of("T", "", {{"R", "S1[] S2[] S3[]"}});
    OvUndoHistory *history = ov_component_gui_editor_window_get_undo_history(window());
    auto segments = [&] { return outline(tmpl.get()); };
    ov_text_sheet_segment *first = tmpl->report_types.first()->segments.first();
    auto move_s1_down = [&] {
        ov::list_move_down(first);
        ov_undo_history_record(
            history, new ov::MoveStep<ov_text_sheet_segment>("Move segment down", {}, first, false));
    };
    auto starred = [&] { return gtk_window_get_title(GTK_WINDOW(window_))[0] == '*'; };
    EXPECT_EQ(edit_menu(window_), "Undo(off)|Redo(off)");
    move_s1_down();
    move_s1_down();
    EXPECT_TRUE(starred());
    EXPECT_EQ(edit_menu(window_), "Undo Move segment down|Redo(off)");

    Script script;
    script.when_menu([] { activate_menu_item("Undo Move segment down"); });
    click(find_button(window_, "Edit"));
    EXPECT_EQ(segments(), " | R: S2[] S1[] S3[]");
    EXPECT_EQ(edit_menu(window_), "Undo Move segment down|Redo Move segment down");
    press_key(window_, GDK_KEY_z, control);
    EXPECT_EQ(segments(), " | R: S1[] S2[] S3[]");
    EXPECT_FALSE(starred());
    flush_events();
    press_key(window_, GDK_KEY_Z, GdkModifierType(control | GDK_SHIFT_MASK));
    EXPECT_TRUE(starred());
    flush_events();
    press_key(window_, GDK_KEY_y, control);
    EXPECT_EQ(segments(), " | R: S2[] S3[] S1[]");

    // Saving makes this the unmodified state; a held key undoes once per
    // drawn frame, not once per repeat.
    ov_component_gui_editor_window_set_file_has_been_modified(window(), FALSE);
    EXPECT_FALSE(starred());
    flush_events();
    hold_key(window_, GDK_KEY_z, control, 4);
    release_key(window_, GDK_KEY_z, control);
    EXPECT_EQ(segments(), " | R: S2[] S1[] S3[]");
    EXPECT_TRUE(starred());
    // The history ends with the window, before the template.
    gtk_widget_destroy(window_);
}
