// The "Keyboard shortcuts" window: every key of a document window and of
// its text sheets, in groups.
#pragma once

#include <gtk/gtk.h>

// A new GtkShortcutsWindow, transient for parent, not yet shown.
GtkWidget *ov_keyboard_shortcuts_window_new(GtkWindow *parent);
// Shows the window for parent, at most one per parent.
void ov_keyboard_shortcuts_window_present(GtkWindow *parent);
