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

constexpr const char *template_chooser = "Choose template";

struct Chooser : DocsGui {
    TempWorkspace workspace;
    void SetUp() override
    {
        DocsGui::SetUp();
        // One report type with one segment with one block; no basic data.
        workspace.add("one.template", template_of("One", "", {{"R1", "S1[B1[r1 r2]]"}}).get());
        workspace.add(
            "many.template",
            template_of("Many", "D1[d1 d2] D2[d3]", {{"RA", "SA[BA[ra]] -[-[rb]]"}, {"RB", "SC[]"}}).get());
    }
};

std::string shown_rows()
{
    return list_rows(GTK_WIDGET(top_window()));
}

bool ok_sensitive()
{
    return gtk_widget_get_sensitive(find_button(GTK_WIDGET(top_window()), "OK"));
}

// Picks the entry in the chooser titled so and presses OK; rows gets what it listed.
Script &pick(Script &script, const char *title, const char *entry, std::string *rows = nullptr)
{
    return script.when_window(title, [=] {
        if (rows != nullptr)
            *rows = shown_rows();
        click_list_row(GTK_WIDGET(top_window()), entry);
        click_button("OK");
    });
}

Script &press(Script &script, const char *title, const char *button)
{
    return script.when_window(title, [=] { click_button(button); });
}

} // namespace

TEST_F(Chooser, LevelsWithOneItemAreSkippedExceptTheLastOfTheChain)
{
    // Mode 6: from the template chooser straight to the row chooser.
    TemplatePtr target = template_of("T", "", {{"R", "X[Y[y]]"}});
    ov_text_sheet_block *block = target->report_types.first()->segments.first()->blocks.first();
    std::string listed, rows, ok_states;
    Script script;
    script.when_window(template_chooser, [&] {
        listed = shown_rows();
        ok_states = ok_sensitive() ? "on" : "off";
        click_list_row(GTK_WIDGET(top_window()), "One");
        ok_states += ok_sensitive() ? " on" : " off";
        click_button("OK");
    });
    pick(script, "Choose row", "r2", &rows);
    EXPECT_TRUE(ov_template_gui_apply_template_to_template(OV_TEMPLATE_GUI_ROW, target.get(), nullptr,
                                                           nullptr, block));
    EXPECT_TRUE(listed == "One|Many" || listed == "Many|One") << listed;
    EXPECT_EQ(ok_states, "off on");
    EXPECT_EQ(rows, "r1|r2");
    EXPECT_EQ(outline(target.get()), " | R: X[Y[y r2]]");

    // Mode 7 still shows the segment chooser with the only segment; cancelling
    // it goes back to the template chooser.
    std::string segments;
    Script cancelled;
    pick(cancelled, template_chooser, "One");
    cancelled.when_window("Choose segment", [&] {
        segments = shown_rows();
        click_button("Cancel");
    });
    press(cancelled, template_chooser, "Cancel");
    EXPECT_FALSE(ov_template_gui_apply_template_to_template(OV_TEMPLATE_GUI_SEGMENT, target.get(),
                                                            target->report_types.first(), nullptr, nullptr));
    EXPECT_EQ(segments, "S1");
    EXPECT_EQ(outline(target.get()), " | R: X[Y[y r2]]");
}

TEST_F(Chooser, CancellingALaterChooserReturnsToTheNearestOneShown)
{
    TemplatePtr target = template_of("T", "", {{"R", "X[Y[]]"}});
    ov_text_sheet_block *block = target->report_types.first()->segments.first()->blocks.first();
    std::string types, segments, rows;
    Script script;
    pick(script, template_chooser, "Many");
    pick(script, "Choose report type", "RA", &types);
    pick(script, "Choose segment", "Untitled segment", &segments);
    // The segment's only block is skipped; the row chooser goes back to the segments.
    script.when_window("Choose row", [&] {
        rows = shown_rows();
        click_button("Cancel");
    });
    pick(script, "Choose segment", "SA");
    pick(script, "Choose row", "ra");
    EXPECT_TRUE(ov_template_gui_apply_template_to_template(OV_TEMPLATE_GUI_ROW, target.get(), nullptr,
                                                           nullptr, block));
    EXPECT_EQ(types, "RA|RB");
    EXPECT_EQ(segments, "SA|Untitled segment");
    EXPECT_EQ(rows, "rb");
    EXPECT_EQ(outline(target.get()), " | R: X[Y[ra]]");
}

TEST_F(Chooser, NothingToChooseOrAnUnreadableFileKeepsTheTemplateChooserOpen)
{
    TemplatePtr target = template_of("T", "", {{"R", "X[]"}});
    std::string message, error, blocks;
    Script script;
    // Mode 3 on a template without basic data blocks.
    pick(script, template_chooser, "One");
    script.when_window("Message", [&] {
        message = label_texts(GTK_WIDGET(top_window()));
        click_button("_OK");
    });
    // A file that went bad after the list was made.
    script.when_window(template_chooser, [&] {
        write_file(workspace.path_of("one.template"), "<template>");
        click_list_row(GTK_WIDGET(top_window()), "One");
        click_button("OK");
    });
    script.when_window("Error", [&] {
        error = label_texts(GTK_WIDGET(top_window()));
        click_button("_Close");
    });
    pick(script, template_chooser, "Many");
    script.when_window("Choose block", [&] {
        blocks = shown_rows();
        click_list_row(GTK_WIDGET(top_window()), "D2");
        click_button("OK");
    });
    EXPECT_TRUE(ov_template_gui_apply_template_to_template(OV_TEMPLATE_GUI_BASIC_DATA_BLOCK, target.get(),
                                                           nullptr, target->details, nullptr));
    EXPECT_TRUE(contains(message, "No available content.")) << message;
    EXPECT_TRUE(
        contains(error, ("Error when loading template file:\n" + workspace.path_of("one.template")).c_str()))
        << error;
    EXPECT_EQ(blocks, "D1|D2");
    EXPECT_EQ(outline(target.get()), "D2[d3] | R: X[]");
    EXPECT_STREQ(ov_error_get(), "");
}

TEST_F(DocsGui, TemplateChooserOfAWorkspaceWithoutTemplatesIsEmptyWithOkInsensitive)
{
    {
        TempWorkspace workspace;
        TemplatePtr target = template_of("T", "", {{"R", "X[]"}});
        std::string rows = "?";
        bool ok = true;
        Script script;
        script.when_window(template_chooser, [&] {
            rows = shown_rows();
            ok = ok_sensitive();
            click_button("Cancel");
        });
        EXPECT_FALSE(ov_template_gui_apply_template_to_template(OV_TEMPLATE_GUI_REPORT_TYPE, target.get(),
                                                                nullptr, nullptr, nullptr));
        EXPECT_EQ(rows, "");
        EXPECT_FALSE(ok);
    }
}

// The read entries of the menu on each sheet walk the chain of their mode and
// append a clone at the end of the target, which outlives the source.
TEST_F(Chooser, ReadEntriesAppendTheChosenItemAtTheEndOfTheTarget)
{
    struct Case {
        const char *entry;
        bool basic_data;
        const char *clicked; // "" for empty space, else a block or segment of the sheet
        std::vector<std::pair<const char *, const char *>> picks;
        const char *after;
    };
    const Case cases[] = {
        {"Read all basic data blocks from a template",
         true,
         "",
         {{template_chooser, "Many"}},
         "D0[x] D1[d1 d2] D2[d3] | R: X[Y[y]]"},
        {"Read one block from a template",
         true,
         "",
         {{template_chooser, "Many"}, {"Choose block", "D1"}},
         "D0[x] D1[d1 d2] | R: X[Y[y]]"},
        {"Read one row from a template",
         true,
         "D0",
         {{template_chooser, "Many"}, {"Choose block", "D1"}, {"Choose row", "d2"}},
         "D0[x d2] | R: X[Y[y]]"},
        {"Read all segments of one report type from a template",
         false,
         "",
         {{template_chooser, "Many"}, {"Choose report type", "RA"}},
         "D0[x] | R: X[Y[y]] SA[BA[ra]] -[-[rb]]"},
        {"Read one segment from a template",
         false,
         "",
         {{template_chooser, "One"}, {"Choose segment", "S1"}},
         "D0[x] | R: X[Y[y]] S1[B1[r1 r2]]"},
        {"Read one block from a template",
         false,
         "X",
         {{template_chooser, "Many"},
          {"Choose report type", "RA"},
          {"Choose segment", "SA"},
          {"Choose block", "BA"}},
         "D0[x] | R: X[Y[y] BA[ra]]"},
        {"Read one row from a template",
         false,
         "Y",
         {{template_chooser, "Many"},
          {"Choose report type", "RA"},
          {"Choose segment", "Untitled segment"},
          {"Choose row", "rb"}},
         "D0[x] | R: X[Y[y rb]]"},
    };
    for (const Case &c : cases) {
        TemplatePtr target = template_of("T", "D0[x]", {{"R", "X[Y[y]]"}});
        ov_template_report_type *report_type = c.basic_data ? nullptr : target->report_types.first();
        ov_text_sheet_segment *segment = c.basic_data ? target->details : report_type->segments.first();
        ov_text_sheet_block *block = std::string_view(c.clicked) == "D0" || std::string_view(c.clicked) == "Y"
                                         ? segment->blocks.first()
                                         : nullptr;
        if (*c.clicked == '\0' && !c.basic_data)
            segment = nullptr;
        Script script;
        script.when_menu([&] { activate_menu_item(c.entry); });
        for (const auto &[title, entry] : c.picks)
            pick(script, title, entry);
        EXPECT_TRUE(
            ov_text_sheet_menu_run_for_template(target.get(), report_type, segment, block, nullptr, nullptr))
            << c.entry;
        EXPECT_EQ(outline(target.get()), c.after) << c.entry;
    }
}
