// Reading parts of other templates of the workspace into a template: the
// user picks a template file, then walks down a chain of chooser windows
// (report type, segment, block, row) to the item, whose clone is appended to
// the target.
#pragma once

#include "docs/template.h"

#include <glib.h>

// What is read, and where the clone goes (the numbers are passed by callers).
enum : int {
    OV_TEMPLATE_GUI_ALL_BASIC_DATA_BLOCKS = 1,       // into the target's details segment
    OV_TEMPLATE_GUI_ALL_SEGMENTS_OF_REPORT_TYPE = 2, // into the target report type
    OV_TEMPLATE_GUI_BASIC_DATA_BLOCK = 3,            // into the target segment
    OV_TEMPLATE_GUI_BASIC_DATA_ROW = 4,              // into the target block
    OV_TEMPLATE_GUI_BLOCK = 5,                       // into the target segment
    OV_TEMPLATE_GUI_ROW = 6,                         // into the target block
    OV_TEMPLATE_GUI_SEGMENT = 7,                     // into the target report type
    OV_TEMPLATE_GUI_REPORT_TYPE = 8,                 // into the target template
};

// Runs the template chooser and the chain of the mode; TRUE when something
// was appended to the target. Targets the mode does not use may be null.
// The source template is read for the run only: nothing of it is kept.
gboolean ov_template_gui_apply_template_to_template(int mode, ov_template *target,
                                                    ov_template_report_type *target_report_type,
                                                    ov_text_sheet_segment *target_segment,
                                                    ov_text_sheet_block *target_block);

// The chooser windows of the chain. Each returns the item at the end of the
// mode's chain below it: an ov_template_report_type (modes 2, 8), an
// ov_text_sheet_segment (7), an ov_text_sheet_block (3, 5) or an
// ov_text_sheet_row (4, 6) of the source, not a copy; null when the user
// cancelled or there was nothing to choose ("No available content." shown).
// A level with exactly one item is skipped unless it is the last of the
// chain, so the user always confirms the item that is copied.
gpointer ov_template_gui_report_type_window_run(ov_template *source, int mode);
gpointer ov_template_gui_segment_window_run(ov_template_report_type *report_type, int mode);
gpointer ov_template_gui_block_window_run(ov_text_sheet_segment *segment, int mode);
ov_text_sheet_row *ov_template_gui_row_window_run(ov_text_sheet_block *block);
