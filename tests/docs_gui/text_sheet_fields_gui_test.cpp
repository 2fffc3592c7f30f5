// The fields dialog: what its list shows, and what OK, Cancel and the
// window's close leave in the row.
#include "docs_gui/docs_gui_test_util.h"

#include "docs_gui/text_sheet_fields_gui.h"

#include <gtest/gtest.h>

#include <vector>

using namespace ov::test;

namespace
{

using RowPtr = ov::Owned<ov_text_sheet_row, ov_text_sheet_row_destroy>;

// A row "r" with fields of the kinds given ('t', 'c') and Latin-1 texts (null: none).
RowPtr row_of(std::vector<std::pair<char, const char *>> fields)
{
    RowPtr row(ov_text_sheet_row_new(header_of("r").get()));
    for (auto [kind, text] : fields) {
        ov_text_sheet_field *field = ov_text_sheet_field_new(kind == 'c' ? 1 : 0);
        if (text != nullptr)
            ov_langstr_set_translation(&field->text, ov_locale_get_by_tag("en-uk"), text);
        ov_text_sheet_row_add_field(row.get(), field);
    }
    return row;
}

std::vector<ov_text_sheet_field *> fields_of(const ov_text_sheet_row *row)
{
    std::vector<ov_text_sheet_field *> fields;
    for (ov_text_sheet_field *field : row->fields)
        fields.push_back(field);
    return fields;
}

void select(const std::string &row)
{
    click_list_row(GTK_WIDGET(top_window()), row.c_str());
}

// Runs the window the button opens with the answer.
void open_with(const char *button, const char *window, Script::Action answer)
{
    Script s;
    s.when_window(window, std::move(answer));
    click_button(button);
    finish(s);
}

} // namespace

TEST_F(DocsGui, FieldsListShowsCompactedContentsCutAt53BytesAndFullTextAfterAnEdit)
{
    const std::string x52(52, 'x'), y53(53, 'y'), y50 = std::string(50, 'y') + "...", z60(60, 'z');
    RowPtr row = row_of({{'c', x52.c_str()},
                         {'t', " Pre \t filled\n text "},
                         {'t', nullptr},
                         {'c', y53.c_str()},
                         {'c', "F\xe4rg"}});
    const std::vector<ov_text_sheet_field *> before = fields_of(row.get());
    std::string opened, edited;
    Script script;
    script.when_window("Set up fields", [&] {
        opened = list_rows(GTK_WIDGET(top_window()));
        select("Checkbox, " + y50);
        open_with("Edit", "Edit checkbox", enter_text(z60));
        edited = list_rows(GTK_WIDGET(top_window()));
        click_button("Cancel");
    });
    EXPECT_FALSE(ov_text_sheet_fields_gui_run(row.get(), nullptr));
    EXPECT_EQ(opened, "Checkbox, " + x52 + "|Text field, Pre filled text|Text field, |Checkbox, " + y50 +
                          "|Checkbox, F\xc3\xa4rg");
    EXPECT_TRUE(contains(edited, ("|Checkbox, " + z60 + "|").c_str())) << edited;
    // The label changed in place and stays so after Cancel.
    EXPECT_EQ(fields_of(row.get()), before);
    EXPECT_STREQ(ov_langstr_get_text(before[3]->text, nullptr), z60.c_str());
}

TEST_F(DocsGui, FieldsOkTakesTheListOrderAndCancelDropsOnlyWhatTheDialogAdded)
{
    auto add_checkbox = [] { open_with("Add checkbox", "Add checkbox", enter_text("C")); };
    struct Case {
        std::function<void()> steps;
        const char *leave_with, *after;
    };
    const Case cases[] = {
        {[&] {
             click_button("Add text field");
             add_checkbox();
             select("Text field, A");
             click_button("Delete");
             select("Checkbox, C");
             click_button("Move up");
             click_button("Move up");
         },
         "OK", "r[c:C c:B t]"},
        {[&] {
             click_button("Add text field");
             add_checkbox();
             click_button("Delete");
             select("Text field, A");
             click_button("Delete");
         },
         "Cancel", "r[t:A c:B]"},
        {[] { click_button("Add text field"); }, "close", "r[t:A c:B]"},
    };
    for (const Case &c : cases) {
        RowPtr row = row_of({{'t', "A"}, {'c', "B"}});
        const std::vector<ov_text_sheet_field *> before = fields_of(row.get());
        Script script;
        script.when_window("Set up fields", [&] {
            c.steps();
            g_strcmp0(c.leave_with, "close") == 0 ? close_window(top_window()) : click_button(c.leave_with);
        });
        const gboolean ok = ov_text_sheet_fields_gui_run(row.get(), nullptr);
        EXPECT_EQ(ok, g_strcmp0(c.leave_with, "OK") == 0) << c.after;
        EXPECT_EQ(outline(row.get()), c.after);
        if (!ok) { // the very fields, not copies
            EXPECT_EQ(fields_of(row.get()), before) << c.after;
        }
    }
}
