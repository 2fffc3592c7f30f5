// The template editing window: the template's name, author and version, a
// notebook with the basic data page and one page per report type (each a
// text sheet editor), the buttons that add report types and the entry of
// the remark codeset file names. Saving writes the report types in the
// order of their tabs.
#pragma once

// Loads the template at path (a new, empty one when there is no such file,
// written only on the first save), runs the window maximised until the user
// closes it and frees the template. Failures are shown to the user.
void run_editing_window(const char *path);
