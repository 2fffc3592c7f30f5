// The text sheet editor: one page of a template (its basic data, or the
// segments of one report type) drawn as a read-only sheet that scrolls in a
// scrolled window. Clicks on the menu icons edit the sheet through the text
// sheet menu, clicks on the status symbols show a text in all its languages;
// "changed" follows every edit.
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
// Edits through the sheet's menu are recorded in the history, which is
// borrowed (and forgotten should it end first); null records none.
void text_sheet_editor_set_undo_history(TextSheetEditor *editor, OvUndoHistory *history);
// After an undo or a redo: the sheet is listed anew and scrolled so that the
// deepest node of the place that is on the page is in view.
void text_sheet_editor_show_place(TextSheetEditor *editor, const OvUndoPlace *place);
