// The new-workspace assistant: an introduction, the location with a folder
// chooser, and a summary once the workspace exists.
#pragma once

#include <glib.h>

// Runs the assistant on the window stack; TRUE if a workspace was created
// (and the pointer file written).
gboolean ov_workspace_gui_create_workspace();
