// The fields dialog: what its list shows, how its buttons change the list,
// and what OK and Cancel leave in the row.
#include "docs_gui/docs_gui_test_util.h"

#include "docs_gui/text_sheet_fields_gui.h"

#include <gtest/gtest.h>

#include <vector>

using namespace ov::test;

namespace
{

constexpr const char *dialog = "Set up fields";

using RowPtr = ov::Owned<ov_text_sheet_row, ov_text_sheet_row_destroy>;

ov_text_sheet_field *add_field(ov_text_sheet_row *row, std::uint32_t kind, const char *latin1)
{
    ov_text_sheet_field *field = ov_text_sheet_field_new(kind);
    if (latin1 != nullptr)
        ov_langstr_set_translation(&field->text, ov_locale_get_by_tag("en-uk"), latin1);
    ov_text_sheet_row_add_field(row, field);
    return field;
}

std::vector<ov_text_sheet_field *> fields_of(const ov_text_sheet_row *row)
{
    std::vector<ov_text_sheet_field *> fields;
    for (ov_text_sheet_field *field : row->fields)
        fields.push_back(field);
    return fields;
}

std::string rows_shown()
{
    return list_rows(GTK_WIDGET(top_window()));
}

GtkWidget *button(const char *label)
{
    return find_button(GTK_WIDGET(top_window()), label);
}

void select(const char *first_column)
{
    click_list_row(GTK_WIDGET(top_window()), first_column);
}

// Selects the entry with those contents.
void select_contents(const char *contents)
{
    GtkTreeView *view = GTK_TREE_VIEW(
        find_widget(GTK_WIDGET(top_window()), [](GtkWidget *w) { return GTK_IS_TREE_VIEW(w); }));
    GtkTreeModel *model = gtk_tree_view_get_model(view);
    GtkTreeIter iter;
    for (gboolean valid = gtk_tree_model_get_iter_first(model, &iter); valid;
         valid = gtk_tree_model_iter_next(model, &iter)) {
        char *text = nullptr;
        gtk_tree_model_get(model, &iter, 1, &text, -1);
        const bool found = g_strcmp0(text, contents) == 0;
        g_free(text);
        if (found) {
            gtk_tree_selection_select_iter(gtk_tree_view_get_selection(view), &iter);
            return;
        }
    }
    ADD_FAILURE() << "No entry with contents " << contents << " among: " << rows_shown();
}

} // namespace

TEST_F(DocsGui, FieldsListShowsCompactedContentsCutAt53BytesAndFullTextAfterAnEdit)
{
    const std::string x52(52, 'x'), y53(53, 'y'), z60(60, 'z');
    RowPtr row(ov_text_sheet_row_new(nullptr));
    add_field(row.get(), OV_TEXT_SHEET_FIELD_KIND_CHECKBOX, x52.c_str());
    add_field(row.get(), OV_TEXT_SHEET_FIELD_KIND_TEXT_FIELD, "  Pre \t filled\n text ");
    add_field(row.get(), OV_TEXT_SHEET_FIELD_KIND_TEXT_FIELD, nullptr);
    ov_text_sheet_field *long_label = add_field(row.get(), OV_TEXT_SHEET_FIELD_KIND_CHECKBOX, y53.c_str());
    add_field(row.get(), OV_TEXT_SHEET_FIELD_KIND_CHECKBOX, "F\xe4rg");
    const std::vector<ov_text_sheet_field *> before = fields_of(row.get());

    std::string opened, edit_states, labels, after_edit;
    Script script;
    script.when_window(dialog, [&] {
        opened = rows_shown();
        edit_states = gtk_widget_get_sensitive(button("Edit")) ? "on" : "off";
        select("Text field");
        edit_states += gtk_widget_get_sensitive(button("Edit")) ? " on" : " off";
        select_contents((std::string(50, 'y') + "...").c_str());
        edit_states += gtk_widget_get_sensitive(button("Edit")) ? " on" : " off";
        click_button("Edit");
    });
    script.when_window("Edit checkbox", [&] {
        labels = label_texts(GTK_WIDGET(top_window()));
        enter_text(z60)();
    });
    // The list changes once the label window has closed.
    script.when([&] { return window_shown(dialog) && contains(rows_shown(), z60.c_str()); },
                [&] {
                    after_edit = rows_shown();
                    click_button("Cancel");
                });
    EXPECT_FALSE(ov_text_sheet_fields_gui_run(row.get(), nullptr));

    EXPECT_EQ(opened, "Checkbox, " + x52 + "|Text field, Pre filled text|Text field, |Checkbox, " +
                          std::string(50, 'y') + "...|Checkbox, F\xc3\xa4rg");
    EXPECT_EQ(edit_states, "off off on");
    EXPECT_TRUE(contains(labels, "Enter checkbox label: (Required)")) << labels;
    EXPECT_TRUE(contains(after_edit, ("|Checkbox, " + z60 + "|").c_str())) << after_edit;
    // The label was edited in place; Cancel keeps the edit and the fields.
    EXPECT_EQ(fields_of(row.get()), before);
    EXPECT_STREQ(ov_langstr_get_text(long_label->text, nullptr), z60.c_str());
}

TEST_F(DocsGui, FieldsOkTakesTheListOrderAndCancelDropsOnlyWhatTheDialogAdded)
{
    struct Case {
        const char *name;
        std::function<void()> steps; // run in the dialog, which is then left
        const char *leave_with;      // "OK", "Cancel" or "close"
        const char *row_after;
        gboolean result;
    };
    auto add_checkbox = [](const char *label) {
        Script s;
        s.when_window("Add checkbox", enter_text(label));
        click_button("Add checkbox");
        finish(s);
    };
    const Case cases[] = {
        {"add, delete, reorder",
         [&] {
             click_button("Add text field");
             add_checkbox("C");
             select("Text field");
             click_button("Delete");
             select_contents("C");
             click_button("Move up");
             click_button("Move up");
         },
         "OK", "r[c:C c:B t]", TRUE},
        {"delete everything",
         [&] {
             for (int i = 0; i < 2; ++i) {
                 select_contents(i == 0 ? "A" : "B");
                 click_button("Delete");
             }
         },
         "OK", "r", TRUE},
        {"cancel after adds and deletes",
         [&] {
             click_button("Add text field");
             add_checkbox("C");
             select_contents("C");
             click_button("Delete");
             select_contents("A");
             click_button("Delete");
         },
         "Cancel", "r[t:A c:B]", FALSE},
        {"closed after an add", [&] { click_button("Add text field"); }, "close", "r[t:A c:B]", FALSE},
        {"cancelled label adds nothing",
         [&] {
             Script s;
             s.when_window("Add checkbox", [] { click_button("Cancel"); });
             click_button("Add checkbox");
             finish(s);
         },
         "OK", "r[t:A c:B]", TRUE},
    };
    for (const Case &c : cases) {
        RowPtr row(ov_text_sheet_row_new(langstr_of("en-uk=r").get()));
        add_field(row.get(), OV_TEXT_SHEET_FIELD_KIND_TEXT_FIELD, "A");
        add_field(row.get(), OV_TEXT_SHEET_FIELD_KIND_CHECKBOX, "B");
        const std::vector<ov_text_sheet_field *> before = fields_of(row.get());
        Script script;
        script.when_window(dialog, [&] {
            c.steps();
            if (g_strcmp0(c.leave_with, "close") == 0)
                close_window(top_window());
            else
                click_button(c.leave_with);
        });
        EXPECT_EQ(ov_text_sheet_fields_gui_run(row.get(), nullptr), c.result) << c.name;
        EXPECT_EQ(outline(row.get()), c.row_after) << c.name;
        if (!c.result) {
            EXPECT_EQ(fields_of(row.get()), before) << c.name;
        }
    }
}
