// The text sheet from the keyboard: the focus order, scrolling, menus and
// edits from keys.
#include "docs_gui/docs_gui_test_util.h"
#include "lang/lang_test_util.h"

#include "app/text_sheet_editor.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

using namespace ov::test;

namespace
{

using SheetKeys = SheetGui;

// An editor of the first report type (or the basic data) in a scrolled
// window of its own, focused.
struct Sheet {
    TestWindow w;
    GtkWidget *editor;
    int changes = 0;

    Sheet(ov_template *tmpl, bool basic = false, int height = 500)
    {
        editor = basic ? text_sheet_editor_new_for_basic_data(tmpl)
                       : text_sheet_editor_new_for_report_type(tmpl, tmpl->report_types.first());
        GtkWidget *scrolled = gtk_scrolled_window_new(nullptr, nullptr);
        gtk_container_add(GTK_CONTAINER(scrolled), editor);
        gtk_window_set_default_size(GTK_WINDOW(w.window), 600, height);
        gtk_widget_show_all(scrolled);
        w.pack(scrolled, TRUE);
        g_signal_connect_swapped(editor, "changed", G_CALLBACK(+[](int *n) { ++*n; }), &changes);
        w.show();
        gtk_widget_grab_focus(editor);
        flush_events();
    }
    void key(guint keyval, GdkModifierType modifiers = GdkModifierType(0))
    {
        press_key(editor, keyval, modifiers);
    }
    TextSheetEditorFocus focus() const
    {
        TextSheetEditorFocus f;
        EXPECT_TRUE(text_sheet_editor_get_focus(TEXT_SHEET_EDITOR(editor), &f));
        return f;
    }
    // The focused position's text, a field's as "f:label"; "-" without one.
    std::string at() const
    {
        const TextSheetEditorFocus f = focus();
        return (f.field != nullptr ? "f:" : "") + name_of(f.text);
    }
    // Presses the key count times and lists where the focus went.
    std::string walk(guint keyval, int count)
    {
        std::string seen = at();
        for (int i = 0; i < count; ++i) {
            key(keyval);
            seen += " " + at();
        }
        return seen;
    }
    GtkAdjustment *vadjustment() const { return gtk_scrollable_get_vadjustment(GTK_SCROLLABLE(editor)); }
    bool focus_visible() const
    {
        const GdkRectangle r = focus().rectangle;
        return r.y >= 0 && r.y + r.height <= gtk_widget_get_allocated_height(editor);
    }
};

TemplatePtr sample()
{
    return template_of("T", "D1[d1 d2]", {{"R", "S1[B1[r1[c:Good t] r2] -[r3]] S2[]"}});
}

} // namespace

TEST_F(SheetKeys, FocusWalksEveryNodeInDrawingOrder)
{
    TemplatePtr tmpl = sample();
    Sheet sheet(tmpl.get());
    EXPECT_TRUE(gtk_widget_get_can_focus(sheet.editor));
    // "Add segments" and untitled blocks have no text: "-".
    EXPECT_EQ(sheet.walk(GDK_KEY_Down, 10), "- S1 B1 r1 f:Good f:- r2 - r3 S2 S2");
    EXPECT_EQ(sheet.walk(GDK_KEY_Up, 10), "S2 r3 - r2 f:- f:Good r1 B1 S1 - -");
    sheet.key(GDK_KEY_End);
    EXPECT_EQ(sheet.at(), "S2");
    sheet.key(GDK_KEY_Home);
    EXPECT_EQ(sheet.walk(GDK_KEY_Down, 1), "- S1");

    Sheet basic(tmpl.get(), true);
    EXPECT_EQ(basic.walk(GDK_KEY_Down, 4), "- D1 d1 d2 d2");
}

TEST_F(SheetKeys, TheViewScrollsToKeepTheFocusVisible)
{
    std::string rows;
    for (int i = 0; i < 120; ++i)
        rows += " r" + std::to_string(i);
    TemplatePtr tmpl = template_of("T", "", {{"R", ("S1[B1[" + rows + "]] S2[B2[x]]").c_str()}});
    Sheet sheet(tmpl.get(), false, 400);
    sheet.key(GDK_KEY_End);
    EXPECT_EQ(sheet.at(), "x");
    EXPECT_GT(gtk_adjustment_get_value(sheet.vadjustment()), 1000);
    EXPECT_TRUE(sheet.focus_visible());
    for (int i = 0; i < 3; ++i) {
        const std::string before = sheet.at();
        sheet.key(GDK_KEY_Page_Up);
        EXPECT_NE(sheet.at(), before);
        EXPECT_TRUE(sheet.focus_visible()) << sheet.at();
    }
    sheet.key(GDK_KEY_Home);
    EXPECT_EQ(gtk_adjustment_get_value(sheet.vadjustment()), 0);
    for (int i = 0; i < 30; ++i) {
        sheet.key(GDK_KEY_Down);
        ASSERT_TRUE(sheet.focus_visible()) << sheet.at();
    }
    sheet.key(GDK_KEY_Page_Down);
    EXPECT_TRUE(sheet.focus_visible()) << sheet.at();
    EXPECT_NE(sheet.at(), "r27");

    // Scrolled away from the focus, a click on a menu icon moves the focus
    // there and the view stays.
    ov_text_sheet_block *block = tmpl->report_types.first()->segments.first()->blocks.first();
    for (ov_text_sheet_row *row : block->rows)
        row->hit_area.menu = {}; // only what is drawn next counts
    gtk_adjustment_set_value(sheet.vadjustment(), 3000);
    wait_ms(100);
    const ov_text_sheet_row *clicked = nullptr;
    for (const ov_text_sheet_row *row : block->rows)
        if (clicked == nullptr && row->hit_area.menu.y > 100 && row->hit_area.menu.y < 300)
            clicked = row;
    ASSERT_NE(clicked, nullptr);
    Script script;
    script.when_menu([] { dismiss_menu(); });
    click_at(sheet.editor, clicked->hit_area.menu.x + 4, clicked->hit_area.menu.y + 4);
    finish(script);
    EXPECT_EQ(sheet.at(), name_of(clicked->header));
    EXPECT_EQ(gtk_adjustment_get_value(sheet.vadjustment()), 3000);
}

TEST_F(SheetKeys, MenuKeysOpenTheFocusedNodesMenu)
{
    struct Case {
        int downs;
        guint keyval;
        GdkModifierType modifiers;
        const char *first_entries;
    };
    const Case cases[] = {
        {0, GDK_KEY_Menu, GdkModifierType(0), "Add segment|-|Read one segment"},
        {1, GDK_KEY_F10, GDK_SHIFT_MASK, "Edit segment header|Delete segment header|Add block"},
        {2, GDK_KEY_Menu, GdkModifierType(0), "Edit block header|Delete block header|Add row"},
        {3, GDK_KEY_Menu, GdkModifierType(0), "Edit row header|Set up fields"},
        {4, GDK_KEY_F10, GDK_SHIFT_MASK, "Edit row header|Set up fields"}, // a field: its row's menu
        {7, GDK_KEY_Menu, GdkModifierType(0), "Set block header|Add row"},
    };
    TemplatePtr tmpl = sample();
    Sheet sheet(tmpl.get());
    for (const Case &c : cases) {
        sheet.key(GDK_KEY_Home);
        for (int i = 0; i < c.downs; ++i)
            sheet.key(GDK_KEY_Down);
        const GdkRectangle node = sheet.focus().rectangle;
        std::string shown;
        int menu_y = -1;
        GtkWidget *selected = nullptr;
        Script script;
        script.when_menu([&] {
            GtkMenu *menu = open_menu();
            shown = menu_labels(menu);
            selected = gtk_menu_shell_get_selected_item(GTK_MENU_SHELL(menu));
            int origin_x = 0;
            gdk_window_get_origin(gtk_widget_get_window(gtk_widget_get_toplevel(GTK_WIDGET(menu))), &origin_x,
                                  &menu_y);
            dismiss_menu();
        });
        sheet.key(c.keyval, c.modifiers);
        finish(script);
        EXPECT_EQ(shown.substr(0, std::string(c.first_entries).size()), c.first_entries) << c.downs;
        EXPECT_NE(selected, nullptr) << "the first entry is ready for the arrows";
        int editor_y = 0, origin_x = 0;
        gdk_window_get_origin(gtk_widget_get_window(sheet.editor), &origin_x, &editor_y);
        EXPECT_NEAR(menu_y, editor_y + node.y + node.height, 40) << c.downs << ": below the node";
    }
    EXPECT_EQ(sheet.changes, 0);
}

TEST_F(SheetKeys, AltArrowsMoveTheFocusedNodeAndKeepTheFocusOnIt)
{
    struct Case {
        int downs;
        guint keyval;
        const char *outline;
    };
    const Case cases[] = {
        {1, GDK_KEY_Up, "S1[B1[r1 r2] -[r3]] S2[]"},   // first segment
        {1, GDK_KEY_Down, "S2[] S1[B1[r1 r2] -[r3]]"}, // and down
        {9, GDK_KEY_Down, "S1[B1[r1 r2] -[r3]] S2[]"}, // last segment
        {2, GDK_KEY_Up, "S1[B1[r1 r2] -[r3]] S2[]"},   // first block
        {2, GDK_KEY_Down, "S1[-[r3] B1[r1 r2]] S2[]"},
        {3, GDK_KEY_Up, "S1[B1[r1 r2] -[r3]] S2[]"}, // first row
        {3, GDK_KEY_Down, "S1[B1[r2 r1] -[r3]] S2[]"},
        {6, GDK_KEY_Down, "S1[B1[r1 r2] -[r3]] S2[]"}, // last row
        {6, GDK_KEY_Up, "S1[B1[r2 r1] -[r3]] S2[]"},
        {8, GDK_KEY_Up, "S1[B1[r1 r2] -[r3]] S2[]"}, // a row alone in its block
    };
    for (const Case &c : cases) {
        TemplatePtr tmpl = sample();
        Sheet sheet(tmpl.get());
        for (int i = 0; i < c.downs; ++i)
            sheet.key(GDK_KEY_Down);
        const std::string before = sheet.at();
        sheet.key(c.keyval, GDK_MOD1_MASK);
        std::string shown = outline(tmpl.get());
        shown = shown.substr(shown.find(':') + 2);
        for (const char *fields : {"[c:Good t]"})
            shown.erase(shown.find(fields), std::string(fields).size());
        EXPECT_EQ(shown, c.outline) << c.downs;
        EXPECT_EQ(sheet.at(), before) << c.downs;
        EXPECT_EQ(sheet.changes, shown == "S1[B1[r1 r2] -[r3]] S2[]" ? 0 : 1) << c.downs;
    }
}

TEST_F(SheetKeys, InsertAndDeleteAskAsTheMenuDoes)
{
    TemplatePtr tmpl = template_of("T", "", {{"R", "S1[B1[r1 r2] B2[]]"}});
    Sheet sheet(tmpl.get());
    auto shown = [&] { return outline(tmpl.get()).substr(outline(tmpl.get()).find(':') + 2); };
    auto answered = [&](guint keyval, Script::Action answer, const char *title = "Enter multilingual text") {
        Script script;
        script.when_window(title, answer);
        sheet.key(keyval);
        finish(script);
    };
    sheet.walk(GDK_KEY_Down, 3); // r1
    answered(GDK_KEY_Insert, enter_text("n1"));
    EXPECT_EQ(shown(), "S1[B1[r1 n1[t] r2] B2[]]");
    EXPECT_EQ(sheet.at(), "n1");
    sheet.walk(GDK_KEY_Up, 2); // B1
    answered(GDK_KEY_Insert, enter_text("n0"));
    EXPECT_EQ(shown(), "S1[B1[n0[t] r1 n1[t] r2] B2[]]");
    EXPECT_EQ(sheet.at(), "n0");
    sheet.key(GDK_KEY_End); // B2, empty
    answered(GDK_KEY_Insert, enter_text("e"));
    EXPECT_EQ(shown(), "S1[B1[n0[t] r1 n1[t] r2] B2[e[t]]]");
    answered(
        GDK_KEY_Delete, [] { click_button("_No"); }, "Question");
    EXPECT_EQ(sheet.at(), "e");
    answered(
        GDK_KEY_Delete, [] { click_button("_Yes"); }, "Question");
    EXPECT_EQ(shown(), "S1[B1[n0[t] r1 n1[t] r2] B2[]]");
    EXPECT_EQ(sheet.at(), "B2");
    answered(
        GDK_KEY_Delete, [] { click_button("_Yes"); }, "Question");
    EXPECT_EQ(shown(), "S1[B1[n0[t] r1 n1[t] r2]]");
    EXPECT_EQ(sheet.changes, 5);
}

// Menu entries chosen and answered with keys alone.
TEST_F(SheetKeys, EveryMenuEditWorksWithoutAPointer)
{
    struct Case {
        int downs;
        const char *entry;
        const char *answer; // a header to type, "yes" to a question, or null
        const char *outline;
    };
    // What each entry does is the menu's own; here one of each answer and level.
    const Case cases[] = {
        {0, "Add segment", "S3", "S1[B1[r1 r2]] S2[] S3[]"},
        {1, "Delete segment", "yes", "S2[]"},
        {2, "Add block below", "B9", "S1[B1[r1 r2] B9[]] S2[]"},
        {3, "Move row down", nullptr, "S1[B1[r2 r1]] S2[]"},
        {4, "Move row up", nullptr, "S1[B1[r2 r1]] S2[]"},
    };
    for (const Case &c : cases) {
        TemplatePtr tmpl = template_of("T", "", {{"R", "S1[B1[r1 r2]] S2[]"}});
        Sheet sheet(tmpl.get());
        for (int i = 0; i < c.downs; ++i)
            sheet.key(GDK_KEY_Down);
        Script script;
        script.when_menu([&] { choose_menu_item_by_keys(c.entry); });
        if (c.answer != nullptr && std::string(c.answer) == "yes")
            script.when_window("Question",
                               [] { press_key(GTK_WIDGET(top_window()), GDK_KEY_y, GDK_MOD1_MASK); });
        else if (c.answer != nullptr)
            script.when_window("Enter multilingual text", enter_text(c.answer));
        sheet.key(GDK_KEY_Menu);
        finish(script);
        std::string shown = outline(tmpl.get());
        EXPECT_EQ(shown.substr(shown.find(':') + 2), c.outline) << c.entry;
        EXPECT_EQ(sheet.changes, 1) << c.entry;
    }
}

bool text_window_shown()
{
    return top_window() != nullptr && top_langstr_editor() != nullptr;
}

TEST_F(SheetKeys, EnterEditsTheFocusedHeaderLabelOrText)
{
    TemplatePtr tmpl = sample();
    Sheet sheet(tmpl.get());
    const std::pair<int, const char *> cases[] = {{1, "A"}, {2, "B"}, {3, "C"}, {4, "D"}, {5, "E"}};
    for (const auto &[downs, text] : cases) {
        sheet.key(GDK_KEY_Home);
        for (int i = 0; i < downs; ++i)
            sheet.key(GDK_KEY_Down);
        Script script;
        script.when(text_window_shown, enter_text(text), "the text window");
        sheet.key(downs % 2 == 0 ? GDK_KEY_F2 : GDK_KEY_Return);
        finish(script);
        EXPECT_EQ(sheet.at(), std::string(downs >= 4 ? "f:" : "") + text);
    }
    EXPECT_EQ(outline(tmpl.get()), "D1[d1 d2] | R: A[B[C[c:D t:E] r2] -[r3]] S2[]");
    EXPECT_EQ(sheet.changes, 5);
}

// Edits made with keys are steps of the sheet's history, as the menu's are.
TEST_F(SheetKeys, KeyEditsAreRecordedAsUndoSteps)
{
    TemplatePtr tmpl = sample();
    const std::string before = outline(tmpl.get());
    Sheet sheet(tmpl.get());
    const ov::ObjectRef<OvUndoHistory> history = ov::ObjectRef<OvUndoHistory>::adopt(ov_undo_history_new());
    text_sheet_editor_set_undo_history(TEXT_SHEET_EDITOR(sheet.editor), history.get());
    sheet.walk(GDK_KEY_Down, 3); // r1
    sheet.key(GDK_KEY_Down, GDK_MOD1_MASK);
    EXPECT_STREQ(ov_undo_history_get_undo_text(history.get()), "Move row down");
    sheet.key(GDK_KEY_Down); // r1's checkbox
    Script script;
    script.when(text_window_shown, enter_text("Fair"), "the text window");
    sheet.key(GDK_KEY_Return);
    finish(script);
    EXPECT_STREQ(ov_undo_history_get_undo_text(history.get()), "Edit checkbox");
    EXPECT_NE(outline(tmpl.get()), before);
    EXPECT_TRUE(ov_undo_history_undo(history.get()));
    EXPECT_TRUE(ov_undo_history_undo(history.get()));
    EXPECT_EQ(outline(tmpl.get()), before);
    text_sheet_editor_set_undo_history(TEXT_SHEET_EDITOR(sheet.editor), nullptr);
}
