// The text sheet menu: its entries per clicked level and what each entry
// does to the template.
#include "docs_gui/docs_gui_test_util.h"

#include "docs_gui/text_sheet_menu.h"

#include <gtest/gtest.h>

#include <functional>

using namespace ov::test;

namespace
{

constexpr const char *sheet = "S1[B1[r1 r2 r3] B2[r4] -[]] S2[B3[]] -[]";

TemplatePtr sample()
{
    return template_of("T", "D1[d1]", {{"R", sheet}, {"Q", "Q1[]"}});
}

// What was clicked: a node named in the outline ("r2", "B1", "S2"), "empty"
// for empty space of report type R, "basic" for empty space of the basic
// data sheet; a name found in the basic data is clicked on that sheet.
struct Click {
    ov_template_report_type *report_type = nullptr;
    ov_text_sheet_segment *segment = nullptr;
    ov_text_sheet_block *block = nullptr;
    ov_text_sheet_row *row = nullptr;
};

bool named(const langstr *header, const std::string &name)
{
    const char *text = ov_langstr_get_text(header, nullptr);
    return text != nullptr ? name == text : name == "-";
}

// Looks for the node in one segment; true when found.
bool find_in(ov_text_sheet_segment *segment, const std::string &name, Click &click)
{
    for (ov_text_sheet_block *block : segment->blocks) {
        if (named(block->header, name)) {
            click.segment = segment, click.block = block;
            return true;
        }
        for (ov_text_sheet_row *row : block->rows)
            if (named(row->header, name)) {
                click.segment = segment, click.block = block, click.row = row;
                return true;
            }
    }
    return false;
}

// "-" names the last unnamed node of its kind: the segment, else the block.
Click click_on(ov_template *tmpl, const std::string &name)
{
    Click click;
    if (name == "basic" || find_in(tmpl->details, name, click))
        return click;
    for (ov_template_report_type *report_type : tmpl->report_types) {
        click.report_type = report_type;
        if (name == "empty")
            return click;
        for (ov_text_sheet_segment *segment : report_type->segments)
            if (named(segment->header, name) && (name != "-" || ov::list_index(segment) > 0))
                click.segment = segment;
        if (click.segment != nullptr)
            return click;
        for (ov_text_sheet_segment *segment : report_type->segments)
            if (find_in(segment, name, click))
                return click;
    }
    ADD_FAILURE() << "No node " << name;
    return click;
}

gboolean run_menu(ov_template *tmpl, const Click &c)
{
    return ov_text_sheet_menu_run_for_template(tmpl, c.report_type, c.segment, c.block, c.row, nullptr);
}

// The entries as "Move row up(off)|-|...": "-" a separator, "(off)" insensitive.
std::string entries(GtkMenu *menu)
{
    std::string text;
    GList *items = gtk_container_get_children(GTK_CONTAINER(menu));
    for (GList *l = items; l != nullptr; l = l->next) {
        auto *item = GTK_WIDGET(l->data);
        text += text.empty() ? "" : "|";
        text += GTK_IS_SEPARATOR_MENU_ITEM(item) ? "-" : gtk_menu_item_get_label(GTK_MENU_ITEM(item));
        text += gtk_widget_get_sensitive(item) ? "" : "(off)";
    }
    g_list_free(items);
    return text;
}

} // namespace

TEST_F(DocsGui, MenuEntriesFollowTheClickedLevelAndItsPlaceAmongItsSiblings)
{
    const std::string row = "Edit row header|Set up fields|-|Move row up%s|Move row down%s|Delete row|-|"
                            "Add row above|Add row below";
    const std::string block = "%s|Add row|-|Read one row from a template|-|Move block up%s|Move block down%s|"
                              "Delete block|-|Add block above|Add block below";
    const std::string segment = "%s|Add block|-|Read one block from a template|-|Move segment up%s|"
                                "Move segment down%s|Delete segment|-|Add segment above|Add segment below";
    auto fill = [](const std::string &format, const char *a, const char *b, const char *c = nullptr) {
        std::string text = format;
        for (const char *part : {a, b, c})
            if (part != nullptr)
                text.replace(text.find("%s"), 2, part);
        return text;
    };
    const char *edit_block = "Edit block header|Delete block header";
    const char *edit_segment = "Edit segment header|Delete segment header";
    const std::pair<const char *, std::string> cases[] = {
        {"r1", fill(row, "(off)", "")},
        {"r2", fill(row, "", "")},
        {"r3", fill(row, "", "(off)")},
        {"r4", fill(row, "(off)", "(off)")},
        {"d1", fill(row, "(off)", "(off)")}, // on the basic data sheet alike
        {"B1", fill(block, edit_block, "(off)", "")},
        {"B2", fill(block, edit_block, "", "")},
        {"-", fill(segment, "Set segment header", "", "(off)")},
        {"B3", fill(block, edit_block, "(off)", "(off)")},
        {"D1", fill(block, edit_block, "(off)", "(off)")},
        {"S1", fill(segment, edit_segment, "(off)", "")},
        {"S2", fill(segment, edit_segment, "", "")},
        {"Q1", fill(segment, edit_segment, "(off)", "(off)")},
        {"empty", "Add segment|-|Read one segment from a template|"
                  "Read all segments of one report type from a template"},
        {"basic", "Add block|-|Read one block from a template|Read all basic data blocks from a template"},
    };
    for (const auto &[clicked, expected] : cases) {
        TemplatePtr tmpl = sample();
        std::string shown;
        Script script;
        script.when_menu([&] {
            shown = entries(open_menu());
            dismiss_menu();
        });
        EXPECT_FALSE(run_menu(tmpl.get(), click_on(tmpl.get(), clicked))) << clicked;
        EXPECT_EQ(shown, expected) << clicked;
        EXPECT_EQ(outline(tmpl.get()), outline(sample().get())) << clicked;
    }

    // A block without a header offers to set one.
    TemplatePtr tmpl = template_of("T", "", {{"R", "S[B[] -[]]"}});
    Click last_block = click_on(tmpl.get(), "B");
    last_block.block = last_block.block->next;
    std::string shown;
    Script script;
    script.when_menu([&] {
        shown = entries(open_menu());
        dismiss_menu();
    });
    run_menu(tmpl.get(), last_block);
    EXPECT_EQ(shown, fill(block, "Set block header", "", "(off)"));
}

namespace
{

constexpr const char *text_window = "Enter multilingual text";

// How the user answers what the entry opens; seen gets the texts it shows.
using Answer = std::function<void(Script &, std::string &seen)>;

Answer enter(const char *text)
{
    return [text](Script &s, std::string &seen) {
        s.when_window(text_window, [&seen, text] {
            seen = label_texts(GTK_WIDGET(top_window()));
            enter_text(text)();
        });
    };
}

Answer press(const char *window, const char *button)
{
    return [window, button](Script &s, std::string &seen) {
        s.when_window(window, [&seen, button] {
            seen = label_texts(GTK_WIDGET(top_window()));
            click_button(button);
        });
    };
}

const Answer cancel = press(text_window, "Cancel");
const Answer yes = press("Question", "_Yes");
const Answer no = press("Question", "_No");
const Answer nothing = [](Script &, std::string &) {};

} // namespace

TEST_F(DocsGui, MenuEntriesChangeTheSheetAsAskedAndReportIt)
{
    struct Case {
        const char *clicked;
        const char *entry;
        Answer answer;
        const char *seen; // part of what the dialog showed
        const char *sheet_after;
    };
    const Case cases[] = {
        {"r2", "Edit row header", enter("x"), "Row header: (Required)|",
         "S1[B1[r1 x r3] B2[r4] -[]] S2[B3[]] -[]"},
        {"r2", "Edit row header", cancel, "", sheet},
        {"r1", "Move row down", nothing, "", "S1[B1[r2 r1 r3] B2[r4] -[]] S2[B3[]] -[]"},
        {"r3", "Move row up", nothing, "", "S1[B1[r1 r3 r2] B2[r4] -[]] S2[B3[]] -[]"},
        {"r2", "Delete row", yes, "Do you really want to delete this row?",
         "S1[B1[r1 r3] B2[r4] -[]] S2[B3[]] -[]"},
        {"r2", "Delete row", no, "", sheet},
        {"r2", "Add row above", enter("n"), "", "S1[B1[r1 n[t] r2 r3] B2[r4] -[]] S2[B3[]] -[]"},
        {"r2", "Add row below", enter("n"), "", "S1[B1[r1 r2 n[t] r3] B2[r4] -[]] S2[B3[]] -[]"},
        {"B2", "Add row", enter("n"), "Row header: (Required)|",
         "S1[B1[r1 r2 r3] B2[r4 n[t]] -[]] S2[B3[]] -[]"},
        {"B2", "Add row", cancel, "", sheet},
        {"B1", "Edit block header", enter("X"), "Block header:|", "S1[X[r1 r2 r3] B2[r4] -[]] S2[B3[]] -[]"},
        {"B1", "Edit block header", enter(""), "", "S1[-[r1 r2 r3] B2[r4] -[]] S2[B3[]] -[]"},
        {"B1", "Delete block header", yes, "Do you really want to delete the block header?",
         "S1[-[r1 r2 r3] B2[r4] -[]] S2[B3[]] -[]"},
        {"B1", "Delete block header", no, "", sheet},
        {"B1", "Delete block", yes, "Do you really want to delete this entire block?",
         "S1[B2[r4] -[]] S2[B3[]] -[]"},
        {"B2", "Add block above", enter("N"), "Block header:|",
         "S1[B1[r1 r2 r3] N[] B2[r4] -[]] S2[B3[]] -[]"},
        {"B2", "Add block below", enter(""), "", "S1[B1[r1 r2 r3] B2[r4] -[] -[]] S2[B3[]] -[]"},
        {"B2", "Add block below", cancel, "", sheet},
        {"B1", "Move block down", nothing, "", "S1[B2[r4] B1[r1 r2 r3] -[]] S2[B3[]] -[]"},
        {"B2", "Move block up", nothing, "", "S1[B2[r4] B1[r1 r2 r3] -[]] S2[B3[]] -[]"},
        {"S1", "Add block", enter("N"), "", "S1[B1[r1 r2 r3] B2[r4] -[] N[]] S2[B3[]] -[]"},
        {"S1", "Edit segment header", enter("T"), "Segment header:|",
         "T[B1[r1 r2 r3] B2[r4] -[]] S2[B3[]] -[]"},
        {"S1", "Delete segment header", yes, "Do you really want to delete the segment header?",
         "-[B1[r1 r2 r3] B2[r4] -[]] S2[B3[]] -[]"},
        {"-", "Set segment header", enter("Z"), "Segment header:|",
         "S1[B1[r1 r2 r3] B2[r4] -[]] S2[B3[]] Z[]"},
        {"S2", "Delete segment", yes, "Do you really want to delete this entire segment?",
         "S1[B1[r1 r2 r3] B2[r4] -[]] -[]"},
        {"S2", "Delete segment", no, "", sheet},
        {"S2", "Move segment up", nothing, "", "S2[B3[]] S1[B1[r1 r2 r3] B2[r4] -[]] -[]"},
        {"S1", "Move segment down", nothing, "", "S2[B3[]] S1[B1[r1 r2 r3] B2[r4] -[]] -[]"},
        {"S2", "Add segment above", enter("N"), "", "S1[B1[r1 r2 r3] B2[r4] -[]] N[] S2[B3[]] -[]"},
        {"S2", "Add segment below", enter("N"), "", "S1[B1[r1 r2 r3] B2[r4] -[]] S2[B3[]] N[] -[]"},
        {"empty", "Add segment", enter("N"), "", "S1[B1[r1 r2 r3] B2[r4] -[]] S2[B3[]] -[] N[]"},
        {"empty", "Add segment", cancel, "", sheet},
        {"r2", "Set up fields", press("Set up fields", "Cancel"), "", sheet},
    };
    for (const Case &c : cases) {
        TemplatePtr tmpl = sample();
        std::string seen;
        Script script;
        script.when_menu([entry = c.entry] { activate_menu_item(entry); });
        c.answer(script, seen);
        const gboolean changed = run_menu(tmpl.get(), click_on(tmpl.get(), c.clicked));
        const std::string where = std::string(c.clicked) + " " + c.entry;
        EXPECT_EQ(changed, g_strcmp0(c.sheet_after, sheet) != 0) << where;
        EXPECT_EQ(outline(ov::list_nth(tmpl->report_types, 0)), c.sheet_after) << where;
        EXPECT_TRUE(contains(seen, c.seen)) << where << ": " << seen;
        EXPECT_EQ(outline(tmpl->details), "D1[d1]") << where;
    }

    // The basic data sheet: blocks go into the details segment; the report
    // types are left alone.
    TemplatePtr tmpl = sample();
    std::string seen;
    Script script;
    script.when_menu([] { activate_menu_item("Add block"); });
    enter("N")(script, seen);
    EXPECT_TRUE(run_menu(tmpl.get(), click_on(tmpl.get(), "basic")));
    EXPECT_EQ(outline(tmpl.get()), std::string("D1[d1] N[] | R: ") + sheet + " | Q: Q1[]");
}
