// Edits typed or confirmed in the entries of a document window, recorded as
// undo steps: one step per visit to a text entry (the keystrokes of one
// visit merge while the step is the newest), one step per value confirmed in
// a multilingual entry's window. The entry itself holds the value: undo and
// redo put the other value back into it.
#pragma once

#include "docs_gui/undo_history.h"
#include "widgets/langstr_entry.h"

#include <gtk/gtk.h>

// The history is borrowed and must end before the entry.
void ov_entry_undo_track_text_entry(GtkEntry *entry, OvUndoHistory *history, const char *step_text);
void ov_entry_undo_track_langstr_entry(OvLangstrEntry *entry, OvUndoHistory *history, const char *step_text);
