// The dialog that sets up the fields of a row: adds text fields and
// checkboxes, edits checkbox labels, reorders and deletes fields.
#pragma once

#include "docs/text_sheet.h"

#include <gtk/gtk.h>

// TRUE when closed with "OK", which gives the row the fields in the list's
// order. Closed otherwise, the row keeps its fields; checkbox labels edited
// meanwhile stay edited. The dialog runs on the window stack, whose top is
// the parent window.
gboolean ov_text_sheet_fields_gui_run(ov_text_sheet_row *row, GtkWindow *parent);
