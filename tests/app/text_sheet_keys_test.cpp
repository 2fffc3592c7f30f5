// The text sheet from the keyboard: the focus order, scrolling, menus and
// edits from keys.
#include "docs_gui/docs_gui_test_util.h"
#include "lang/lang_test_util.h"

#include "app/text_sheet_editor.h"

#include <gtest/gtest.h>

#include <string>

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
    void key(guint keyval, GdkModifierType modifiers = {}) { press_key(editor, keyval, modifiers); }
    // Focuses the node downs steps below the top.
    void go(int downs)
    {
        key(GDK_KEY_Home);
        for (int i = 0; i < downs; ++i)
            key(GDK_KEY_Down);
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
    sheet.key(GDK_KEY_Page_Up);
    EXPECT_NE(sheet.at(), "x");
    EXPECT_TRUE(sheet.focus_visible()) << sheet.at();
    sheet.key(GDK_KEY_Home);
    EXPECT_EQ(gtk_adjustment_get_value(sheet.vadjustment()), 0);
}

TEST_F(SheetKeys, MenuKeysOpenTheFocusedNodesMenu)
{
    TemplatePtr tmpl = sample();
    Sheet sheet(tmpl.get());
    sheet.go(4); // a field: its row's menu
    std::string shown;
    GtkWidget *selected = nullptr;
    Script script;
    script.when_menu([&] {
        shown = menu_labels(open_menu());
        selected = gtk_menu_shell_get_selected_item(GTK_MENU_SHELL(open_menu()));
        dismiss_menu();
    });
    sheet.key(GDK_KEY_F10, GDK_SHIFT_MASK);
    finish(script);
    EXPECT_TRUE(shown.starts_with("Edit row header|Set up fields")) << shown;
    EXPECT_NE(selected, nullptr) << "the first entry is ready for the arrows";
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
        {1, GDK_KEY_Down, "S2[] S1[B1[r1 r2] -[r3]]"},
        {3, GDK_KEY_Up, "S1[B1[r1 r2] -[r3]] S2[]"}, // first row
        {6, GDK_KEY_Up, "S1[B1[r2 r1] -[r3]] S2[]"},
    };
    for (const Case &c : cases) {
        TemplatePtr tmpl = sample();
        Sheet sheet(tmpl.get());
        sheet.go(c.downs);
        const std::string before = sheet.at();
        sheet.key(c.keyval, GDK_MOD1_MASK);
        std::string shown = outline(tmpl.get());
        shown = shown.substr(shown.find(':') + 2);
        shown.erase(shown.find("[c:Good t]"), 10);
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
    sheet.go(3); // r1
    answered(GDK_KEY_Insert, enter_text("n1"));
    EXPECT_EQ(shown(), "S1[B1[r1 n1[t] r2] B2[]]");
    EXPECT_EQ(sheet.at(), "n1");
    sheet.key(GDK_KEY_End); // B2, empty
    answered(GDK_KEY_Insert, enter_text("e"));
    EXPECT_EQ(shown(), "S1[B1[r1 n1[t] r2] B2[e[t]]]");
    answered(
        GDK_KEY_Delete, [] { click_button("_Yes"); }, "Question");
    EXPECT_EQ(shown(), "S1[B1[r1 n1[t] r2] B2[]]");
    EXPECT_EQ(sheet.at(), "B2");
    EXPECT_EQ(sheet.changes, 3);
}

// A menu entry chosen and its question answered with keys alone.
TEST_F(SheetKeys, MenuEditsWorkWithoutAPointer)
{
    TemplatePtr tmpl = template_of("T", "", {{"R", "S1[B1[r1 r2]] S2[]"}});
    Sheet sheet(tmpl.get());
    sheet.go(1);
    Script script;
    script.when_menu([] { choose_menu_item_by_keys("Delete segment"); });
    script.when_window("Question", [] { press_key(GTK_WIDGET(top_window()), GDK_KEY_y, GDK_MOD1_MASK); });
    sheet.key(GDK_KEY_Menu);
    finish(script);
    EXPECT_EQ(outline(tmpl.get()), " | R: S2[]");
    EXPECT_EQ(sheet.changes, 1);
}

// Edits made with keys are steps of the sheet's history, as the menu's are.
TEST_F(SheetKeys, KeyEditsAreRecordedAsUndoSteps)
{
    TemplatePtr tmpl = sample();
    const std::string before = outline(tmpl.get());
    Sheet sheet(tmpl.get());
    const ov::ObjectRef<OvUndoHistory> history = ov::ObjectRef<OvUndoHistory>::adopt(ov_undo_history_new());
    text_sheet_editor_set_undo_history(TEXT_SHEET_EDITOR(sheet.editor), history.get());
    sheet.go(3); // r1
    sheet.key(GDK_KEY_Down, GDK_MOD1_MASK);
    EXPECT_STREQ(ov_undo_history_get_undo_text(history.get()), "Move row down");
    sheet.key(GDK_KEY_Down); // r1's checkbox
    Script script;
    script.when([] { return top_langstr_editor() != nullptr; }, enter_text("Fair"), "the text window");
    sheet.key(GDK_KEY_Return);
    finish(script);
    EXPECT_STREQ(ov_undo_history_get_undo_text(history.get()), "Edit checkbox");
    EXPECT_NE(outline(tmpl.get()), before);
    EXPECT_TRUE(ov_undo_history_undo(history.get()));
    EXPECT_TRUE(ov_undo_history_undo(history.get()));
    EXPECT_EQ(outline(tmpl.get()), before);
    text_sheet_editor_set_undo_history(TEXT_SHEET_EDITOR(sheet.editor), nullptr);
}
