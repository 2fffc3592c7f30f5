// The editing window as a user drives it: each scenario opens a template
// file of a temporary folder, edits it through the sheets' menu icons, the
// tabs' menus, the buttons and entries, saves with Control+S and compares
// the file's bytes with the expected file.
#include "docs_gui/docs_gui_test_util.h"

#include "app/component_gui_editor_window.h"
#include "app/editing_window.h"
#include "app/tab_menu_icon.h"
#include "app/text_sheet_editor.h"
#include "gui/spacifying_entry.h"
#include "widgets/langstr_entry.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

using namespace ov::test;

namespace
{

constexpr GdkModifierType control = GDK_CONTROL_MASK;
constexpr const char *header_window = "Enter multilingual text";

GtkWidget *current_sheet(GtkWidget *window)
{
    auto *notebook = GTK_NOTEBOOK(find_widget(window, [](GtkWidget *w) { return GTK_IS_NOTEBOOK(w); }));
    GtkWidget *page = gtk_notebook_get_nth_page(notebook, gtk_notebook_get_current_page(notebook));
    return gtk_bin_get_child(GTK_BIN(page));
}

ov_template_report_type *current_report_type(GtkWidget *window)
{
    return text_sheet_editor_get_report_type(TEXT_SHEET_EDITOR(current_sheet(window)));
}

void show_page(GtkWidget *window, const char *tab)
{
    click(find_tab(window, tab));
    wait_ms(100); // drawn, with the hit areas of its nodes
}

// Picks entry in the menu of the node whose icon the sheet drew at icon,
// then lets answers handle what the entry opens.
void node_menu(
    GtkWidget *window, const ov_text_sheet_rect &icon, const char *entry,
    const std::function<void(Script &)> &answers = [](Script &) {})
{
    wait_until([&] { return icon.width > 0; });
    answered(
        [&](Script &s) {
            s.when_menu([entry] { activate_menu_item(entry); });
            answers(s);
        },
        [&] { click_at(current_sheet(window), icon.x + icon.width / 2, icon.y + icon.height / 2); });
    wait_ms(100); // redrawn
}

// Picks entry in the menu of the report type's tab; menu gets the menu's
// labels with "(off)" after insensitive ones.
void tab_menu(
    GtkWidget *window, const char *tab, const char *entry,
    const std::function<void(Script &)> &answers = [](Script &) {}, std::string *menu = nullptr)
{
    GtkWidget *icon = find_widget(find_tab(window, tab), [](GtkWidget *w) { return TAB_MENU_IS_ICON(w); });
    answered(
        [&](Script &s) {
            s.when_menu([entry, menu] {
                if (menu != nullptr)
                    *menu = menu_labels(open_menu(), true);
                if (entry != nullptr)
                    activate_menu_item(entry);
                else
                    dismiss_menu();
            });
            if (answers)
                answers(s);
        },
        [&] { click(icon); });
}

// Types the UK English text, adds a Swedish translation and presses OK.
Script::Action enter_english_and_swedish(std::string english, std::string swedish)
{
    return [english, swedish] {
        type_text(translation_field(0), english.c_str());
        answered([](Script &s) { s.when_menu([] { activate_menu_item("All languages/Swedish/Sweden"); }); },
                 [] { click(ov_langstr_editor_get_add_button(top_langstr_editor())); });
        wait_until([] { return translation_field(1) != nullptr; });
        type_text(translation_field(1), swedish.c_str());
        click_button("OK");
    };
}

struct EditingWindow : SheetGui {
    TempWorkspace workspace;
    TempDir dir;
    std::string path = dir.file("edited.template");

    void copy_in(const std::string &fixture_path) { write_file(path, read_file(fixture_path)); }
    // Runs the window on path; body drives it once it is shown and closes it.
    void run(const std::function<void(GtkWidget *window)> &body)
    {
        Script script;
        script.when([] { return OV_IS_COMPONENT_GUI_EDITOR_WINDOW(top_window()); },
                    [&] {
                        GtkWidget *window = GTK_WIDGET(top_window());
                        gtk_window_resize(GTK_WINDOW(window), 1000, 900);
                        wait_ms(200);
                        body(window);
                    },
                    "the editing window");
        run_editing_window(path.c_str());
        EXPECT_TRUE(script.done());
    }
    void expect_file(const char *expected) { EXPECT_EQ(read_file(path), read_file(fixture(expected))); }
};

GtkWidget *name_entry(GtkWidget *window)
{
    return find_widget(window, [](GtkWidget *w) { return OV_IS_LANGSTR_ENTRY(w); });
}

void save(GtkWidget *window)
{
    press_key(window, GDK_KEY_s, control);
}

// Closes the window: saved first, or with its changes dropped.
void close(GtkWidget *window, bool saving)
{
    if (saving)
        save(window);
    answered(
        [&](Script &s) {
            if (!saving)
                s.when_window("Save before closing?", [] { click_button("Close without saving"); });
        },
        [&] { close_window(GTK_WINDOW(window)); });
}

bool is_modified(GtkWidget *window)
{
    return ov_component_gui_editor_window_get_file_has_been_modified(OV_COMPONENT_GUI_EDITOR_WINDOW(window));
}

} // namespace

TEST_F(EditingWindow, AddsASegmentABlockAndARowWithFieldsToTheBundledExample)
{
    copy_in(fixture("../../resources/install/templates/painting.template"));
    run([](GtkWidget *window) {
        EXPECT_EQ(tab_texts(window), "Basic data|Condition report|Loan report");
        show_page(window, "Condition report");
        ov_template_report_type *type = current_report_type(window);
        ov_text_sheet_segment *support = type->segments.first();
        node_menu(window, support->hit_area.menu, "Add segment above",
                  [](Script &s) { s.when_window(header_window, enter_text("Frame")); });
        ov_text_sheet_segment *frame = type->segments.first();
        ASSERT_NE(frame, support);
        node_menu(window, frame->hit_area.menu, "Add block",
                  [](Script &s) { s.when_window(header_window, enter_text("Glass")); });
        EXPECT_TRUE(is_modified(window));
        ov_text_sheet_block *glass = frame->blocks.first();
        node_menu(window, glass->hit_area.menu, "Add row", [](Script &s) {
            s.when_window(header_window, enter_english_and_swedish("Cracks", "Sprickor"));
        });
        ov_text_sheet_row *cracks = glass->rows.first();
        node_menu(window, cracks->hit_area.menu, "Set up fields", [](Script &s) {
            s.when_window("Set up fields", [] {
                answered([](Script &a) { a.when_window("Add checkbox", enter_text("Cracked")); },
                         [] { click_button("Add checkbox"); });
                click_button("OK");
            });
        });
        save(window);
        EXPECT_FALSE(is_modified(window));
        close_window(GTK_WINDOW(window));
    });
    expect_file("editing/painting_added.template");
}

// Moves through the menus of a row, a block, a segment and a report type;
// the tab order is the saved order.
TEST_F(EditingWindow, MovesRowsBlocksSegmentsAndReportTypesAndSavesTheTabOrder)
{
    copy_in(fixture("editing/small.template"));
    std::string first_menu, second_menu;
    run([&](GtkWidget *window) {
        show_page(window, "First");
        ov_template_report_type *type = current_report_type(window);
        ov_text_sheet_segment *s1 = type->segments.first();
        node_menu(window, s1->blocks.first()->rows.last()->hit_area.menu, "Move row up");
        node_menu(window, s1->blocks.last()->hit_area.menu, "Move block up");
        node_menu(window, type->segments.last()->hit_area.menu, "Move segment up");
        tab_menu(window, "First", nullptr, {}, &first_menu);
        tab_menu(window, "Second", nullptr, {}, &second_menu);
        tab_menu(window, "Second", "Move left");
        EXPECT_EQ(tab_texts(window), "Basic data|Second|First");
        close(window, true);
    });
    EXPECT_EQ(first_menu, "Rename|-|Move left(off)|Move right|Erase");
    EXPECT_EQ(second_menu, "Rename|-|Move left|Move right(off)|Erase");
    expect_file("editing/small_moved.template");
}

// A template without report types is not saved, and the window stays open
// and modified; erasing asks first.
TEST_F(EditingWindow, RefusesToSaveWithoutReportTypes)
{
    copy_in(fixture("editing/small.template"));
    std::string message;
    run([&](GtkWidget *window) {
        for (auto [tab, answer] : {std::pair{"Second", "_No"}, {"Second", "_Yes"}, {"First", "_Yes"}})
            tab_menu(window, tab, "Erase",
                     [answer](Script &s) { s.when_window("Question", [answer] { click_button(answer); }); });
        EXPECT_EQ(tab_texts(window), "Basic data");
        answered(
            [&](Script &s) {
                s.when_window("Error", [&] {
                    message = label_texts(GTK_WIDGET(top_window()));
                    click_button("Close");
                });
            },
            [&] { save(window); });
        EXPECT_TRUE(is_modified(window));
        EXPECT_TRUE(gtk_widget_get_visible(window));
        close(window, false);
    });
    EXPECT_TRUE(contains(message, "The template must have at least one report type.")) << message;
    expect_file("editing/small.template");
}

TEST_F(EditingWindow, CodesetEntrySavesTheTrimmedNonEmptyNames)
{
    copy_in(fixture("editing/small.template"));
    std::string shown;
    run([&](GtkWidget *window) {
        // The metadata's version entry comes first.
        auto *entry =
            GTK_ENTRY(find_widgets(window, [](GtkWidget *w) { return OV_IS_SPACIFYING_ENTRY(w); }).back());
        shown = gtk_entry_get_text(entry);
        gtk_editable_delete_text(GTK_EDITABLE(entry), 0, -1);
        type_text(GTK_WIDGET(entry), " a.codeset , ,b.codeset,");
        EXPECT_TRUE(is_modified(window));
        close(window, true);
    });
    EXPECT_EQ(shown, "x.codeset");
    expect_file("editing/small_codesets.template");
}

TEST_F(EditingWindow, APathThatDoesNotExistIsANewFileCreatedOnSave)
{
    path = dir.file("fresh.template");
    std::string title;
    run([&](GtkWidget *window) {
        title = gtk_window_get_title(GTK_WINDOW(window));
        EXPECT_EQ(tab_texts(window), "Basic data");
        answered([](Script &s) { s.when_window("Name the new report type", enter_text("Only")); },
                 [&] { click(find_button(window, "New")); });
        answered(
            [](Script &s) { s.when([] { return top_langstr_editor() != nullptr; }, enter_text("Fresh")); },
            [&] { click(name_entry(window)); });
        save(window);
        EXPECT_FALSE(is_modified(window));
        close_window(GTK_WINDOW(window));
    });
    EXPECT_EQ(title, "*fresh.template - Orvane Template Editor 3.3.0");
    expect_file("editing/fresh.template");
}

// Report type actions and a sheet edit: saved after the edit, after its
// undo (the bytes of the file before) and after its redo (those after it);
// the undo brings the edit's page to the front and the mark follows.
TEST_F(EditingWindow, EditsUndoAndRedoToTheSavedBytesAndShowTheirPage)
{
    workspace.add("source.template", template_of("Source", "", {{"Loan", "SX[BX[RX]]"}}).get());
    copy_in(fixture("editing/small.template"));
    const std::string original = read_file(path);
    const auto erase = [](Script &s) { s.when_window("Question", [] { click_button("_Yes"); }); };
    run([&](GtkWidget *window) {
        OvUndoHistory *history =
            ov_component_gui_editor_window_get_undo_history(OV_COMPONENT_GUI_EDITOR_WINDOW(window));
        const std::function<void()> edits[] = {
            [&] { tab_menu(window, "Second", "Move left"); },
            [&] {
                answered(
                    [](Script &s) {
                        s.when_window("Choose template", [] {
                             click_list_row(GTK_WIDGET(top_window()), "Source");
                             click_button("OK");
                         }).when_window("Choose report type", [] {
                            click_list_row(GTK_WIDGET(top_window()), "Loan");
                            click_button("OK");
                        });
                    },
                    [&] { click(find_button(window, "From template")); });
            },
            [&] {
                show_page(window, "First");
                node_menu(window, current_report_type(window)->segments.last()->hit_area.menu,
                          "Delete segment", erase);
                show_page(window, "Basic data");
            },
        };
        for (const auto &edit : edits) {
            const std::string tabs = tab_texts(window);
            edit();
            const std::string step = ov_undo_history_get_undo_text(history);
            SCOPED_TRACE(step);
            save(window);
            const std::string edited = read_file(path);
            EXPECT_NE(edited, original);
            press_key(window, GDK_KEY_z, control);
            EXPECT_EQ(tab_texts(window), tabs);
            if (step == "Delete segment") {
                ov_template_report_type *shown = current_report_type(window);
                EXPECT_TRUE(shown != nullptr && name_of(shown->name) == "First");
            }
            save(window);
            EXPECT_EQ(read_file(path), original);
            wait_ms(50);
            press_key(window, GDK_KEY_y, control);
            save(window);
            EXPECT_EQ(read_file(path), edited);
            wait_ms(50);
            press_key(window, GDK_KEY_z, control);
            save(window);
            wait_ms(50);
        }
        close_window(GTK_WINDOW(window));
    });
    EXPECT_EQ(read_file(path), original);
}

namespace
{

// Presses F8 count times with the modifiers and lists where the focus went
// as the page and the focused text: "1:sv2".
std::string walk(GtkWidget *window, GdkModifierType modifiers, int count)
{
    std::string seen;
    for (int i = 0; i < count; ++i) {
        press_key(window, GDK_KEY_F8, modifiers);
        TextSheetEditorFocus f{};
        text_sheet_editor_get_focus(TEXT_SHEET_EDITOR(current_sheet(window)), &f);
        const char *text = ov_langstr_get_text(f.text, locale("en-uk"));
        text = text != nullptr ? text : ov_langstr_get_text(f.text, locale("sv"));
        const int page = gtk_notebook_get_current_page(
            GTK_NOTEBOOK(find_widget(window, [](GtkWidget *w) { return GTK_IS_NOTEBOOK(w); })));
        seen += (seen.empty() ? "" : " ") + std::to_string(page) + ":" + (text != nullptr ? text : "-");
    }
    return seen;
}

} // namespace

// F8 and Shift+F8 go to the next and previous text without a translation in
// the active language, across the pages.
TEST_F(EditingWindow, F8WalksThroughUntranslatedTextsAcrossPagesBothWays)
{
    // The last rows of D1 and S1 and the first of S2 get a Swedish header only.
    TemplatePtr tmpl = template_of("T", "D1[d1 sv1]", {{"R", "S1[B1[r1 sv2]]"}, {"Q", "S2[B2[sv3 q1]]"}});
    for (langstr **header :
         {&tmpl->details->blocks.first()->rows.last()->header,
          &tmpl->report_types.first()->segments.first()->blocks.first()->rows.last()->header,
          &tmpl->report_types.last()->segments.first()->blocks.first()->rows.first()->header}) {
        const std::string name = name_of(*header);
        ov_langstr_free(*header);
        *header = langstr_of("sv=" + name).release();
    }
    EXPECT_TRUE(ov_template_io_write_to_file(tmpl.get(), path.c_str()));
    set_active("sv");
    run([](GtkWidget *window) {
        // In Swedish: everything but sv1, sv2 and sv3 lacks a translation.
        EXPECT_EQ(walk(window, {}, 10), "0:D1 0:d1 1:S1 1:B1 1:r1 2:S2 2:B2 2:q1 0:D1 0:d1");
        EXPECT_EQ(walk(window, GDK_SHIFT_MASK, 3), "0:D1 2:q1 2:B2");
        EXPECT_STREQ(ov_component_gui_editor_window_get_note(OV_COMPONENT_GUI_EDITOR_WINDOW(window)), "");
        close_window(GTK_WINDOW(window));
    });
}
