// Walks through the texts that have no text of their own in the active
// language over every text sheet of a window, page after page of its
// notebook, wrapping at the end.
#pragma once

#include <gtk/gtk.h>

// Moves the keyboard focus to the next (or previous) such text of the text
// sheet editors inside root, in their order, showing the notebook page it
// is on; FALSE when no sheet has one.
gboolean ov_untranslated_walk(GtkWidget *root, gboolean forward);
