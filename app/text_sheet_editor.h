// The text sheet editor: one page of a template (its basic data, or the
// segments of one report type) drawn as a read-only sheet that scrolls in a
// scrolled window. Clicks on the menu icons edit the sheet through the text
// sheet menu, clicks on the status symbols show a text in all its languages;
// "changed" follows every edit. The sheet takes the keyboard focus and moves
// it from node to node with the arrow keys; keys open a node's menu, edit,
// move, delete and add as its menu does.
#pragma once

#include "docs/template.h"
#include "docs_gui/undo_history.h"

#include <gtk/gtk.h>

G_BEGIN_DECLS
#define TYPE_TEXT_SHEET_EDITOR (text_sheet_editor_get_type())
G_DECLARE_FINAL_TYPE(TextSheetEditor, text_sheet_editor, TEXT_SHEET, EDITOR, GtkWidget)
G_END_DECLS

// Neither the template nor the report type is owned.
GtkWidget *text_sheet_editor_new_for_report_type(ov_template *tmpl, ov_template_report_type *report_type);
GtkWidget *text_sheet_editor_new_for_basic_data(ov_template *tmpl);
// Null on the basic data page.
ov_template_report_type *text_sheet_editor_get_report_type(TextSheetEditor *editor);

// The node with the keyboard focus: the segment, block and row it lies in
// (none of them for "Add segments"), a field of the row, the text it stands
// for (null for titles without one) and its frame in widget coordinates.
struct TextSheetEditorFocus {
    ov_text_sheet_segment *segment;
    ov_text_sheet_block *block;
    ov_text_sheet_row *row;
    ov_text_sheet_field *field;
    const langstr *text;
    GdkRectangle rectangle;
};
// FALSE on an empty page.
gboolean text_sheet_editor_get_focus(TextSheetEditor *editor, TextSheetEditorFocus *focus);
// Moves the focus to the next (or previous) text without a text of its own
// in the active language, after the focused node or, with whole_page, from
// the page's start (or end); FALSE when there is none there.
gboolean text_sheet_editor_focus_untranslated(TextSheetEditor *editor, gboolean forward, gboolean whole_page);
// Edits through the sheet's menu are recorded in the history, which is
// borrowed (and forgotten should it end first); null records none.
void text_sheet_editor_set_undo_history(TextSheetEditor *editor, OvUndoHistory *history);
// After an undo or a redo: the sheet is listed anew and scrolled so that the
// deepest node of the place that is on the page is in view.
void text_sheet_editor_show_place(TextSheetEditor *editor, const OvUndoPlace *place);
