// Starts the suite's sibling tools. Each tool is an executable beside ours,
// named after the tool in lower case with dashes ("Orvane Layout Editor" is
// "orvane-layout-editor"), started asynchronously as a new process. Each
// call returns whether the process could be started, not how the tool fared.
#pragma once

#include <glib.h>

gboolean ov_exe_create_new_object_file();
gboolean ov_exe_open_object_file(const char *path);
gboolean ov_exe_peek_at_object_file(const char *path);
// The path may be null: the tool then starts without a file.
gboolean ov_exe_launch_layout_editor(const char *path);
gboolean ov_exe_launch_remark_codeset_editor(const char *path);
gboolean ov_exe_launch_template_editor(const char *path);
gboolean ov_exe_launch_workspace_tool();

// The executable's file name for a tool name, as a new string.
char *ov_exe_get_executable_name(const char *tool_name);
