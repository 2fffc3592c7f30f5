// What differs between operating systems: temporary files, the program's
// own location, launching commands and other programs, file identity and
// dates for display. This is the Linux implementation.
#pragma once

#include <glib.h>

#include <sys/types.h>

#include <cstdio>

// "/tmp", as a new string.
char *ov_platform_get_temp_files_folder_path();
// An anonymous temporary file, removed when it is closed.
FILE *ov_platform_create_temp_file();
// "/tmp/orvane-<pid>.<size of our executable>.odt", as a new string.
char *ov_platform_get_temp_legacy_printout_file_path();
// The executable of a process, as a new UTF-8 string.
char *ov_platform_get_exe_path(pid_t process_id);
// The folder holding this process's executable, as a new UTF-8 string.
char *ov_platform_get_install_folder_path();
// The text quoted for a /bin/sh command line, as a new string.
char *ov_platform_escape_string_for_command_line(const char *text);
// Starts the user's default application for the file without waiting.
gboolean ov_platform_open_file_with_default_app(const char *path);
// Starts the command line without waiting; TRUE if it could be started.
gboolean ov_platform_run_command_line(const char *command_line);
// Runs the command line to its end; TRUE if it ran (whatever its exit
// status), output not captured.
gboolean ov_platform_run_command_line_and_wait(const char *command_line);
gboolean ov_platform_has_enough_disk_space_for_printing();
// TRUE if both paths name the same file-system object.
gboolean ov_platform_compare_file_system_paths(const char *path_a, const char *path_b);
// The date for display in the current time locale, as a new string. An
// invalid date shows as year-month-day digits; a null or cleared date gives
// null.
char *ov_platform_get_date_string(const GDate *date);
