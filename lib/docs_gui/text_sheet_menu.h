// The context menu through which every structural edit of a template's text
// sheets goes: headers, adding, moving and deleting segments, blocks and
// rows, the fields of a row, and reading parts of other templates.
#pragma once

#include "docs/template.h"
#include "docs_gui/undo_history.h"

#include <gtk/gtk.h>

// Pops up, at the pointer, the menu for the most specific clicked level (the
// row, else the block, else the segment, else empty space), performs the
// chosen action and returns whether the template changed. A row click gives
// its block and segment too, a block click its segment. report_type is null
// on the basic data sheet, whose segment is the template's details segment
// (empty space there counts as that segment). Dialogs run on the window
// stack, whose top is the parent window.
gboolean ov_text_sheet_menu_run_for_template(ov_template *tmpl, ov_template_report_type *report_type,
                                             ov_text_sheet_segment *segment, ov_text_sheet_block *block,
                                             ov_text_sheet_row *row, GtkWindow *parent);

// The same, recording the change as one step of the history, named by the
// chosen entry ("Delete row"); a null history records nothing.
gboolean ov_text_sheet_menu_run_with_history(ov_template *tmpl, ov_template_report_type *report_type,
                                             ov_text_sheet_segment *segment, ov_text_sheet_block *block,
                                             ov_text_sheet_row *row, GtkWindow *parent,
                                             OvUndoHistory *history);

// The same menu below a rectangle of the widget (in its window's
// coordinates) with its first entry selected: the menu opened from the
// keyboard for a node.
gboolean ov_text_sheet_menu_run_at_rect(ov_template *tmpl, ov_template_report_type *report_type,
                                        ov_text_sheet_segment *segment, ov_text_sheet_block *block,
                                        ov_text_sheet_row *row, GtkWidget *widget,
                                        const GdkRectangle *rectangle, GtkWindow *parent,
                                        OvUndoHistory *history);

// Entries of the menu that keys reach directly.
enum OvTextSheetMenuAction : int {
    OV_TEXT_SHEET_MENU_EDIT_SEGMENT_HEADER,
    OV_TEXT_SHEET_MENU_EDIT_BLOCK_HEADER,
    OV_TEXT_SHEET_MENU_EDIT_ROW_HEADER,
    OV_TEXT_SHEET_MENU_MOVE_SEGMENT_UP,
    OV_TEXT_SHEET_MENU_MOVE_SEGMENT_DOWN,
    OV_TEXT_SHEET_MENU_MOVE_BLOCK_UP,
    OV_TEXT_SHEET_MENU_MOVE_BLOCK_DOWN,
    OV_TEXT_SHEET_MENU_MOVE_ROW_UP,
    OV_TEXT_SHEET_MENU_MOVE_ROW_DOWN,
    OV_TEXT_SHEET_MENU_DELETE_SEGMENT,
    OV_TEXT_SHEET_MENU_DELETE_BLOCK,
    OV_TEXT_SHEET_MENU_DELETE_ROW,
    OV_TEXT_SHEET_MENU_ADD_ROW,
    OV_TEXT_SHEET_MENU_ADD_ROW_ABOVE,
    OV_TEXT_SHEET_MENU_ADD_ROW_BELOW,
};
// Performs one entry on the node as the menu would, with the same dialogs
// and questions, where the menu offers it (a move at the first or last
// place does nothing), recorded in the history as the menu records it;
// whether the template changed.
gboolean ov_text_sheet_menu_perform(ov_template *tmpl, ov_template_report_type *report_type,
                                    ov_text_sheet_segment *segment, ov_text_sheet_block *block,
                                    ov_text_sheet_row *row, OvTextSheetMenuAction action, GtkWindow *parent,
                                    OvUndoHistory *history);
// Edits a field's own text as the fields dialog does: a checkbox's label
// (never empty) or a text field's pre-filled text; TRUE when confirmed,
// with the old text kept as one step of the history.
gboolean ov_text_sheet_menu_edit_field_text(ov_template_report_type *report_type,
                                            ov_text_sheet_segment *segment, ov_text_sheet_block *block,
                                            ov_text_sheet_row *row, ov_text_sheet_field *field,
                                            OvUndoHistory *history);
