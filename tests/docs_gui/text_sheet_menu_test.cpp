// The text sheet menu: its entries per clicked level, what each entry does
// to the template, and the step it records: undone, the template saves to
// the bytes it had before; redone, to those it had after.
#include "docs_gui/docs_gui_test_util.h"

#include "docs_gui/text_sheet_menu.h"

#include <gtest/gtest.h>

#include <functional>

using namespace ov::test;

namespace
{

// Runs the menu on the click; the script answers it.
gboolean run_menu(ov_template *tmpl, const char *clicked)
{
    Click c = click_on(tmpl, clicked);
    return ov_text_sheet_menu_run_for_template(tmpl, c.type, c.segment, c.block, c.row, nullptr);
}

// The format with each %s replaced in turn.
std::string fill(std::string format, std::initializer_list<const char *> parts)
{
    for (const char *part : parts)
        format.replace(format.find("%s"), 2, part);
    return format;
}

} // namespace

TEST_F(DocsGui, MenuEntriesFollowTheClickedLevelAndItsPlaceAmongItsSiblings)
{
    const std::string row = "Edit row header|Set up fields|-|Move row up%s|Move row down%s|Delete row|-|Add "
                            "row above|Add row below";
    const std::string block = "%s|Add row|-|Read one row from a template|-|Move block up%s|Move block down%s|"
                              "Delete block|-|Add block above|Add block below";
    const std::string segment = "%s|Add block|-|Read one block from a template|-|Move segment up%s|"
                                "Move segment down%s|Delete segment|-|Add segment above|Add segment below";
    const char *edit_block = "Edit block header|Delete block header", *off = "(off)";
    const std::pair<const char *, std::string> cases[] = {
        {"r1", fill(row, {off, ""})},
        {"r3", fill(row, {"", off})},
        {"r4^", fill(block, {"Set block header", "", off})},
        {"D1", fill(block, {edit_block, off, off})},
        {"-", fill(segment, {"Set segment header", off, off})},
        {"empty", "Add segment|-|Read one segment from a template|"
                  "Read all segments of one report type from a template"},
        {"basic", "Add block|-|Read one block from a template|Read all basic data blocks from a template"},
    };
    for (const auto &[clicked, expected] : cases) {
        TemplatePtr tmpl = template_of("T", "D1[d1]", {{"R", "S1[B1[r1 r2 r3] -[r4]] S2[]"}, {"Q", "-[]"}});
        std::string shown;
        Script script;
        script.when_menu([&] {
            shown = menu_labels(open_menu(), true);
            dismiss_menu();
        });
        EXPECT_FALSE(run_menu(tmpl.get(), clicked)) << clicked;
        EXPECT_EQ(shown, expected) << clicked;
    }
}

namespace
{

constexpr const char *text_window = "Enter multilingual text";

// How the user answers the dialog an entry opens; seen gets its texts.
using Answer = std::function<void(Script &, std::string &seen)>;

Answer press(const char *window, const char *button, const char *text = nullptr)
{
    return [=](Script &s, std::string &seen) {
        s.when_window(window, [=, &seen] {
            seen = label_texts(GTK_WIDGET(top_window()));
            text != nullptr ? enter_text(text)() : click_button(button);
        });
    };
}

Answer enter(const char *text)
{
    return press(text_window, "OK", text);
}

const Answer cancel = press(text_window, "Cancel"), yes = press("Question", "_Yes"),
             nothing = [](Script &, std::string &) {};
const Answer add_text_field = [](Script &s, std::string &) {
    s.when_window("Set up fields", [] {
        click_button("Add text field");
        click_button("OK");
    });
};

} // namespace

TEST_F(DocsGui, MenuEntriesChangeTheSheetAsAskedAndReportIt)
{
    constexpr const char *sheet = "S1[B1[r1 r2] B2[]] S2[]";
    struct Case {
        const char *clicked, *entry;
        Answer answer;
        const char *seen, *after; // part of what the dialog showed; the sheet after
    };
    const Case cases[] = {
        {"r2", "Edit row header", enter("x"), "Row header: (Required)|", "S1[B1[r1 x] B2[]] S2[]"},
        {"r2", "Edit row header", cancel, "", sheet},
        {"r2", "Move row up", nothing, "", "S1[B1[r2 r1] B2[]] S2[]"},
        {"r1", "Delete row", yes, "Do you really want to delete this row?", "S1[B1[r2] B2[]] S2[]"},
        {"r2", "Add row above", enter("n"), "", "S1[B1[r1 n[t] r2] B2[]] S2[]"},
        {"B1", "Add row", enter("n"), "Row header: (Required)|", "S1[B1[r1 r2 n[t]] B2[]] S2[]"},
        {"B1", "Delete block header", yes, "Do you really want to delete the block header?",
         "S1[-[r1 r2] B2[]] S2[]"},
        {"B1", "Delete block", yes, "Do you really want to delete this entire block?", "S1[B2[]] S2[]"},
        {"B1", "Move block down", nothing, "", "S1[B2[] B1[r1 r2]] S2[]"},
        {"S2", "Add block", enter("N"), "", "S1[B1[r1 r2] B2[]] S2[N[]]"},
        {"S1", "Delete segment", yes, "Do you really want to delete this entire segment?", "S2[]"},
        {"S2", "Move segment up", nothing, "", "S2[] S1[B1[r1 r2] B2[]]"},
        {"empty", "Add segment", enter("N"), "", "S1[B1[r1 r2] B2[]] S2[] N[]"},
        {"basic", "Add block", enter("N"), "", sheet}, // the basic data gets the block
        {"r1", "Add row above", enter("n"), "", "S1[B1[n[t] r1 r2] B2[]] S2[]"},
        {"S2", "Add segment below", enter("N"), "", "S1[B1[r1 r2] B2[]] S2[] N[]"},
        {"r1", "Set up fields", add_text_field, "", "S1[B1[r1[t] r2] B2[]] S2[]"},
    };
    for (const Case &c : cases) {
        TemplatePtr tmpl = template_of("T", "D1[]", {{"R", sheet}});
        std::string seen;
        Script script;
        script.when_menu([entry = c.entry] { activate_menu_item(entry); });
        c.answer(script, seen);
        run_menu_undoably(tmpl.get(), click_on(tmpl.get(), c.clicked), c.entry);
        const std::string where = std::string(c.clicked) + " " + c.entry, after = outline(tmpl.get());
        EXPECT_EQ(after, std::string(*c.clicked == 'b' ? "D1[] N[]" : "D1[]") + " | R: " + c.after) << where;
        EXPECT_TRUE(contains(seen, c.seen)) << where << ": " << seen;
    }
}
