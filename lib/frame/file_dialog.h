// File choosers: open, save and folder choosers on the window stack, with
// file-kind filters and the folder last used remembered per list of kinds
// for the life of the process. Paths are UTF-8; null means cancelled.
#pragma once

#include "core/file_type.h"

#include <glib.h>

// filter_name names the combined filter of two or more kinds ("Matching
// files" when null).
char *ov_file_dialog_get_file_path_for_reading_(const char *title, const char *filter_name,
                                                const OvFileType *types, gsize count);
// A list of new strings in the chooser's order, or null.
GSList *ov_file_dialog_get_multiple_file_paths_for_reading_(const char *title, const char *filter_name,
                                                            const OvFileType *types, gsize count);

// Convenience forms: ov_file_dialog_get_file_path_for_reading(title, nullptr,
// OV_FILE_TYPE_JPEG, OV_FILE_TYPE_PNG).
template <class... Types>
char *ov_file_dialog_get_file_path_for_reading(const char *title, const char *filter_name, Types... types)
{
    const OvFileType array[sizeof...(Types) + 1] = {types..., OV_FILE_TYPE_COUNT};
    return ov_file_dialog_get_file_path_for_reading_(title, filter_name, array, sizeof...(Types));
}
template <class... Types>
GSList *ov_file_dialog_get_multiple_file_paths_for_reading(const char *title, const char *filter_name,
                                                           Types... types)
{
    const OvFileType array[sizeof...(Types) + 1] = {types..., OV_FILE_TYPE_COUNT};
    return ov_file_dialog_get_multiple_file_paths_for_reading_(title, filter_name, array, sizeof...(Types));
}

// "Save As"; suggests suggested_name or "untitled" with the kind's extension.
char *ov_file_dialog_get_file_path_for_writing(const char *suggested_name, OvFileType type);
// "Save As" with a name made from the object id in NTFS-safe form.
char *ov_file_dialog_get_printout_file_path(const char *object_id, OvFileType type);
char *ov_file_dialog_get_folder_path(const char *title);

// The key under which a folder is remembered: the display names of the kinds
// joined with '#' ("JPEG#PNG"); "" for no kinds.
char *ov_file_dialog_make_folder_key(const OvFileType *types, gsize count);
// The folder remembered for the kinds, or null (not a copy).
const char *ov_file_dialog_get_remembered_folder(const OvFileType *types, gsize count);
void ov_file_dialog_clean_up();
