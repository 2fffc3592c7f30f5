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
