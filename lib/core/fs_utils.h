// The file-system layer: every file and folder call of the system goes
// through here. Paths are UTF-8 on both sides; they are converted to the
// file system's encoding only at the C library calls. A failing call sets the
// error buffer to the C library's text with a sentence of its own on top and
// remembers errno (see ov_fs_utils_get_last_errno).
#pragma once

#include "core/raii.h"

#include <glib.h>

#include <dirent.h>

#include <cstddef>
#include <cstdio>
#include <functional>

// What ov_fs_utils_get_info tells about a path. A path that does not exist
// gives a record of all zeros.
struct OvFileInfo {
    gboolean exists;
    gboolean is_folder;
    gboolean is_regular_file;
    gint64 modification_time; // seconds since the epoch
    guint64 size;             // bytes
};

// File and folder calls. A mode that reads ("r", "rb", "r+") opens only a
// regular file and never blocks on a FIFO or device: anything else fails
// with "Cannot open file." and the reason.
FILE *ov_fs_utils_open_file(const char *path, const char *mode);
gboolean ov_fs_utils_close_file(FILE *stream);
DIR *ov_fs_utils_open_folder(const char *path);
gboolean ov_fs_utils_close_folder(DIR *folder);
// Sets *name to a new UTF-8 copy of the next entry's name, or to null at the
// end of the listing (which is a success). "." and ".." are passed through.
gboolean ov_fs_utils_next_folder_entry(DIR *folder, char **name);
// Creates the folder readable, writable and searchable by its owner only.
gboolean ov_fs_utils_create_folder(const char *path);
// Creates missing ancestors first; the folder itself must not exist yet.
gboolean ov_fs_utils_create_folder_recursively(const char *path);
gboolean ov_fs_utils_delete_file_if_exists(const char *path);
gboolean ov_fs_utils_delete_folder_if_exists(const char *path);
gboolean ov_fs_utils_rename(const char *from, const char *to);
// Follows symbolic links.
gboolean ov_fs_utils_get_info(const char *path, OvFileInfo *info);
// The target of a symbolic link, as a new UTF-8 string.
char *ov_fs_utils_read_link(const char *path);

// Encoding conversions of paths; each returns a new string.
char *ov_fs_utils_convert_utf8_to_osfsenc(const char *path);
char *ov_fs_utils_convert_utf8_to_glibfsenc(const char *path);
char *ov_fs_utils_convert_osfsenc_to_utf8(const char *path);
char *ov_fs_utils_convert_glibfsenc_to_utf8(const char *path);

// errno of the last failing file-system call made through this layer.
int ov_fs_utils_get_last_errno();

// Path texts: no file-system access, the delimiter is '/'.
// Removes all trailing delimiters in place; returns the new length.
size_t ov_fs_utils_strip_ending_path_delimiters(char *path);
// In place: leaves the parent folder path ("" when there is none).
void ov_fs_utils_strip_entry_name_from_path(char *path);
// The text after the last delimiter (the whole path if there is none).
const char *ov_fs_utils_find_entry_name_in_path(const char *path);
char *ov_fs_utils_find_entry_name_in_path(char *path);
gboolean ov_fs_utils_is_file_name_in_path(const char *path, const char *name);
// New copy ending in exactly one delimiter; "" stays "".
char *ov_fs_utils_end_folder_path_with_a_single_delimiter(const char *path);
// New path: the folder without trailing delimiters, then each non-empty
// name preceded by one delimiter.
char *ov_fs_utils_create_path_in_folder_(const char *folder, const char *const *names, int count);
// The same with the names as arguments, ended by nullptr.
char *ov_fs_utils_create_path_in_folder(const char *folder, ...) G_GNUC_NULL_TERMINATED;

namespace ov
{

// Calls visit with the name of each entry of the folder ("." and ".." left
// out), in listing order, while it returns true; visit may take the name.
// FALSE when the folder cannot be opened, read or closed, or visit stopped
// the walk (visit then leaves its own reason in the error buffer).
gboolean for_each_folder_entry(const char *path, const std::function<bool(ov::GStr &name)> &visit);

} // namespace ov
