// The new-workspace assistant: an introduction, the location with a folder
// chooser, and a summary once the workspace exists.
#pragma once

#include <glib.h>

// Runs the assistant on the window stack; TRUE if a workspace was created
// (and the pointer file written).
gboolean ov_workspace_gui_create_workspace();

// Copies an object file from elsewhere into the workspace's documents
// folder, under the name its object id gives. Refuses an object the
// workspace already has a file for; every failure is shown to the user.
// The object id is taken from the file name, since the object-file format
// belongs to the object-file tools.
gboolean ov_workspace_gui_add_file(const char *path);
