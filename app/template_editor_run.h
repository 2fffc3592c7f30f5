// The template editor's run function: the window stack, the user session,
// the template path from the command line or the open dialog, and the
// editing window until it is closed.
#pragma once

// argv[1] is the template path; further arguments are ignored. Without it
// the open dialog asks for one.
void ov_template_editor_run(int argc, char **argv);
