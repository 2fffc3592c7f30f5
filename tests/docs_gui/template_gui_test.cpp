// The template choosers on templates written into a temporary workspace:
// which windows the chain of each mode shows, what they list, and what is
// appended to the target.
#include "docs_gui/docs_gui_test_util.h"

#include "docs_gui/template_gui.h"
#include "docs_gui/text_sheet_menu.h"

#include <gtest/gtest.h>

using namespace ov::test;

namespace
{

constexpr const char *templates = "Choose template";

struct Chooser : DocsGui {
    TempWorkspace workspace;
    TemplatePtr target = template_of("T", "D0[x]", {{"R", "X[Y[y]]"}});
    ov_template_report_type *type = target->report_types.first();
    ov_text_sheet_block *block = type->segments.first()->blocks.first();
    void SetUp() override
    {
        DocsGui::SetUp();
        workspace.add("one.template", template_of("One", "", {{"R1", "S1[B1[r1 r2]]"}}).get());
        workspace.add(
            "many.template",
            template_of("Many", "D1[d1 d2] D2[d3]", {{"RA", "SA[BA[ra]] -[-[rb]]"}, {"RB", "SC[]"}}).get());
    }
};

GtkWidget *top()
{
    return GTK_WIDGET(top_window());
}

// In the window titled so: keeps what its list shows in listed, picks the
// entry and presses OK ("Cancel" as entry presses Cancel).
Script &pick(Script &script, const char *title, const char *entry, std::string *listed = nullptr)
{
    return script.when_window(title, [=] {
        if (listed != nullptr)
            *listed = list_rows(top());
        if (g_strcmp0(entry, "Cancel") != 0)
            click_list_row(top(), entry);
        click_button(g_strcmp0(entry, "Cancel") != 0 ? "OK" : "Cancel");
    });
}

} // namespace

TEST_F(Chooser, ChainSkipsLevelsWithOneItemButNeverTheLastAndCancelGoesBackToTheNearestShown)
{
    std::string listed, states, rows, segments, types, cancelled_rows;
    Script script;
    script.when_window(templates, [&] {
        listed = list_rows(top());
        states = gtk_widget_get_sensitive(find_button(top(), "OK")) ? "on" : "off";
        click_list_row(top(), "One");
        states += gtk_widget_get_sensitive(find_button(top(), "OK")) ? " on" : " off";
        click_button("OK");
    });
    pick(script, "Choose row", "r2", &rows); // the report type, segment and block are skipped
    EXPECT_TRUE(ov_template_gui_apply_template_to_template(OV_TEMPLATE_GUI_ROW, target.get(), nullptr,
                                                           nullptr, block));
    EXPECT_TRUE(listed == "One|Many" || listed == "Many|One") << listed;
    EXPECT_EQ(states, "off on");
    EXPECT_EQ(rows, "r1|r2");

    // The segment chooser of a segment read shows even its only segment.
    pick(pick(pick(script, templates, "One"), "Choose segment", "Cancel", &segments), templates, "Cancel");
    EXPECT_FALSE(ov_template_gui_apply_template_to_template(OV_TEMPLATE_GUI_SEGMENT, target.get(), type,
                                                            nullptr, nullptr));
    EXPECT_EQ(segments, "S1");

    // The only block of the untitled segment is skipped, so cancelling the
    // row chooser goes back to the segments.
    pick(pick(script, templates, "Many"), "Choose report type", "RA", &types);
    pick(pick(script, "Choose segment", "Untitled segment", &segments), "Choose row", "Cancel",
         &cancelled_rows);
    pick(pick(script, "Choose segment", "SA"), "Choose row", "ra");
    EXPECT_TRUE(ov_template_gui_apply_template_to_template(OV_TEMPLATE_GUI_ROW, target.get(), nullptr,
                                                           nullptr, block));
    EXPECT_EQ(types, "RA|RB");
    EXPECT_EQ(segments, "SA|Untitled segment");
    EXPECT_EQ(cancelled_rows, "rb");

    EXPECT_EQ(outline(target.get()), "D0[x] | R: X[Y[y r2 ra]]");
}

TEST_F(Chooser, NothingToChooseOrAnUnreadableFileKeepsTheTemplateChooserOpen)
{
    std::string message, error, blocks;
    Script script;
    pick(script, templates, "One"); // no basic data blocks
    script.when_window("Message", [&] {
        message = label_texts(top());
        click_button("_OK");
    });
    script.when_window(templates, [&] {
        write_file(workspace.path_of("one.template"), "<template>"); // gone bad since the list was made
        click_list_row(top(), "One");
        click_button("OK");
    });
    script.when_window("Error", [&] {
        error = label_texts(top());
        click_button("_Close");
    });
    pick(pick(script, templates, "Many"), "Choose block", "D2", &blocks);
    EXPECT_TRUE(ov_template_gui_apply_template_to_template(OV_TEMPLATE_GUI_BASIC_DATA_BLOCK, target.get(),
                                                           nullptr, target->details, nullptr));
    EXPECT_TRUE(contains(message, "No available content.")) << message;
    const std::string expected = "Error when loading template file:\n" + workspace.path_of("one.template");
    EXPECT_TRUE(contains(error, expected.c_str())) << error;
    EXPECT_EQ(blocks, "D1|D2");
    EXPECT_EQ(outline(target.get()), "D0[x] D2[d3] | R: X[Y[y]]");
    EXPECT_STREQ(ov_error_get(), "");
}

// The menu's read entries walk the chain of their mode on each sheet and
// append the clone at the end of the target, as one step undone and redone;
// the clone outlives the source.
TEST_F(Chooser, ReadEntriesOfTheMenuAppendTheChosenItemAtTheEndOfTheTarget)
{
    struct Case {
        const char *entry;
        char clicked; // 'b' the basic data sheet, 'e' empty space of R, 'Y' its block
        const char *source, *chooser, *item, *after;
    };
    const Case cases[] = {
        {"Read one block from a template", 'b', "Many", "Choose block", "D1", "D0[x] D1[d1 d2] | R: X[Y[y]]"},
        {"Read one segment from a template", 'e', "One", "Choose segment", "S1",
         "D0[x] | R: X[Y[y]] S1[B1[r1 r2]]"},
        {"Read one row from a template", 'Y', "One", "Choose row", "r1", "D0[x] | R: X[Y[y r1]]"},
    };
    for (const Case &c : cases) {
        TemplatePtr tmpl = template_of("T", "D0[x]", {{"R", "X[Y[y]]"}});
        const bool basic = c.clicked == 'b';
        ov_template_report_type *type = basic ? nullptr : tmpl->report_types.first();
        ov_text_sheet_segment *segment = basic              ? tmpl->details
                                         : c.clicked == 'e' ? nullptr
                                                            : type->segments.first();
        ov_text_sheet_block *clicked_block = c.clicked == 'Y' ? segment->blocks.first() : nullptr;
        Script script;
        script.when_menu([&] { activate_menu_item(c.entry); });
        pick(pick(script, templates, c.source), c.chooser, c.item);
        EXPECT_TRUE(run_menu_undoably(tmpl.get(), {type, segment, clicked_block}, c.entry));
        EXPECT_EQ(outline(tmpl.get()), c.after) << c.entry;
    }
}
