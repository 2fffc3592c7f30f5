// Every entry of the text sheet menu on first, middle and last nodes, made
// with a history: undone, the template saves to the bytes it had before;
// redone, to the bytes it had after.
#include "docs_gui/docs_gui_test_util.h"

#include "docs_gui/text_sheet_menu.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

using namespace ov::test;

namespace
{

using Answer = std::function<void(Script &)>;

struct Case {
    std::string clicked, entry;
    Answer answer;
};

Answer enter(const char *text)
{
    return [=](Script &s) { s.when_window("Enter multilingual text", enter_text(text)); };
}

const Answer yes = [](Script &s) { s.when_window("Question", [] { click_button("_Yes"); }); };
const Answer nothing = [](Script &) {};
const Answer fields = [](Script &s) {
    s.when_window("Set up fields", [] {
        click_button("Add text field");
        click_button("OK");
    });
};

// Picks the source template, then the item in each chooser named.
Answer read(std::vector<std::pair<const char *, const char *>> choices)
{
    return [=](Script &s) {
        s.when_window("Choose template", [] {
            click_list_row(GTK_WIDGET(top_window()), "Source");
            click_button("OK");
        });
        for (const auto &[title, item] : choices)
            s.when_window(title, [item = item] {
                click_list_row(GTK_WIDGET(top_window()), item);
                click_button("OK");
            });
    };
}

std::string bytes(const ov_template *tmpl)
{
    TempDir dir;
    const std::string path = dir.file("t.template");
    EXPECT_TRUE(ov_template_io_write_to_file(tmpl, path.c_str())) << ov_error_get();
    return read_file(path);
}

// The actions of each level on the first, middle and last of three.
std::vector<Case> cases_for(const char *level, const char *child, std::vector<std::string> names,
                            std::vector<Case> own)
{
    std::vector<Case> cases;
    const std::string l = level;
    for (const std::string &name : names) {
        for (Case c : own) {
            c.clicked = name;
            cases.push_back(c);
        }
        cases.push_back({name, "Edit " + l + " header", enter("x")});
        if (name != names.front())
            cases.push_back({name, "Move " + l + " up", nothing});
        if (name != names.back())
            cases.push_back({name, "Move " + l + " down", nothing});
        cases.push_back({name, "Delete " + l, yes});
        cases.push_back({name, "Add " + l + " above", enter("n")});
        cases.push_back({name, "Add " + l + " below", enter("n")});
        if (child != nullptr)
            cases.push_back({name, std::string("Add ") + child, enter("n")});
    }
    return cases;
}

class MenuUndo : public DocsGui
{
  protected:
    void SetUp() override
    {
        DocsGui::SetUp();
        workspace_.add("source.template",
                       template_of("Source", "XD[x1]", {{"R1", "YS[YB[y1]]"}, {"R2", "ZS[]"}}).get());
    }
    void check(const std::vector<Case> &cases)
    {
        for (const Case &c : cases) {
            const std::string where = c.clicked + ": " + c.entry;
            TemplatePtr tmpl = template_of("T", "D1[d1 d2 d3] D2[] D3[]",
                                           {{"R", "S1[B1[r1 r2 r3] B2[r4] B3[]] S2[B4[]] S3[]"}});
            const std::string original = bytes(tmpl.get());
            auto history = ov::ObjectRef<OvUndoHistory>::adopt(ov_undo_history_new());
            {
                Script script;
                script.when_menu([entry = c.entry] { activate_menu_item(entry.c_str()); });
                c.answer(script);
                const Click k = click_on(tmpl.get(), c.clicked);
                EXPECT_TRUE(ov_text_sheet_menu_run_with_history(tmpl.get(), k.type, k.segment, k.block, k.row,
                                                                nullptr, history.get()))
                    << where;
            }
            const std::string edited = bytes(tmpl.get());
            EXPECT_NE(edited, original) << where;
            EXPECT_EQ(ov_undo_history_get_undo_text(history.get()), c.entry) << where;
            for (int round = 0; round < 2; ++round) {
                EXPECT_TRUE(ov_undo_history_undo(history.get()));
                EXPECT_EQ(bytes(tmpl.get()), original) << where;
                EXPECT_TRUE(ov_undo_history_redo(history.get()));
                EXPECT_EQ(bytes(tmpl.get()), edited) << where;
            }
        }
    }

    TempWorkspace workspace_;
};

} // namespace

TEST_F(MenuUndo, RowActions)
{
    check(cases_for("row", nullptr, {"r1", "r2", "r3"}, {{"", "Set up fields", fields}}));
    check({{"d2", "Delete row", yes}, {"d3", "Move row up", nothing}, {"d1", "Set up fields", fields}});
}

TEST_F(MenuUndo, BlockActions)
{
    check(cases_for(
        "block", "row", {"B1", "B2", "B3"},
        {{"", "Delete block header", yes},
         {"", "Read one row from a template", read({{"Choose report type", "R1"}, {"Choose row", "y1"}})}}));
    check({{"D1", "Read one row from a template", read({{"Choose row", "x1"}})},
           {"D3", "Move block up", nothing}});
}

TEST_F(MenuUndo, SegmentActions)
{
    check(cases_for("segment", "block", {"S1", "S2", "S3"},
                    {{"", "Delete segment header", yes},
                     {"", "Read one block from a template",
                      read({{"Choose report type", "R1"}, {"Choose block", "YB"}})}}));
}

TEST_F(MenuUndo, EmptySpaceAndBasicDataActions)
{
    check({{"empty", "Add segment", enter("n")},
           {"empty", "Read one segment from a template",
            read({{"Choose report type", "R1"}, {"Choose segment", "YS"}})},
           {"empty", "Read all segments of one report type from a template",
            read({{"Choose report type", "R1"}})},
           {"basic", "Add block", enter("n")},
           {"basic", "Read one block from a template", read({{"Choose block", "XD"}})},
           {"basic", "Read all basic data blocks from a template", read({})}});
}
