// The user's workspace: a personal folder holding object files ("documents"),
// remark codesets, templates, print layouts, fonts and "settings.xml". Its
// location is kept in a pointer file in the user configuration folder. The
// workspace is a process-wide singleton between ov_workspace_open and
// ov_workspace_close.
#pragma once

#include <glib.h>

#include "docs/codeset.h"

// One object file found in the documents folder.
//
// The suite's object-file format is not part of this program, so a record
// holds only what the file name and the file status tell: the name, the
// path, the object id decoded from the FAT-safe file name and the
// modification time. The object-file summary (and whether its id matches the
// file name) belongs to the object-file tools.
struct OvWorkspaceObjectFile {
    char *file_name;          // UTF-8, owned
    char *path;               // UTF-8, owned
    char *object_id;          // Latin-1, owned
    gint64 modification_time; // seconds since the epoch
    guint64 generation;       // refresh in which the file was last seen
    OvWorkspaceObjectFile *previous;
    OvWorkspaceObjectFile *next;
};

using OvWorkspaceObjectFileCallback = void (*)(OvWorkspaceObjectFile *object_file, gpointer data);

// Opens the saved workspace, or the default folder when none is saved. The
// folder must exist; the component folders are created when missing and the
// shipped layouts upgraded. A failed open leaves no state behind.
gboolean ov_workspace_open();
void ov_workspace_close();
// Makes a new workspace folder at path with the shipped codesets, layouts and
// templates and saves the pointer file. A failure undoes every step.
gboolean ov_workspace_create(const char *path);

// The home folder plus "Orvane Workspace", as a new string; null when the
// home folder's name cannot be converted to UTF-8.
char *ov_workspace_get_default_folder_path();
// The pointer file. A missing file is success with *path null.
gboolean ov_workspace_get_saved_folder_path(char **path);
// A null path deletes the pointer file.
gboolean ov_workspace_save_folder_path(const char *path);

// Borrowed; null when no workspace is open.
const char *ov_workspace_get_codesets_folder_path();
const char *ov_workspace_get_font_files_folder_path();
const char *ov_workspace_get_layouts_folder_path();
const char *ov_workspace_get_object_files_folder_path();
const char *ov_workspace_get_templates_folder_path();
const char *ov_workspace_get_workspace_folder_path();

// Reads the codeset file of that name in the workspace's codesets folder
// (the codeset module itself knows nothing of the workspace).
OvCodeset *ov_codeset_io_read_from_file_in_workspace(const char *file_name);

// The folder the shipped components are installed from: the folder of the
// program (null) or another one, for tests and runs from the build tree.
void ov_workspace_set_install_folder_path(const char *path);

// Copies the installation's shipped files of one kind ("codesets", "layouts"
// or "templates") into the workspace folder, never overwriting a file.
gboolean ov_workspace_install_components(const char *workspace_folder_path, const char *kind);

// A shipped layout file of an earlier edition, recognised by its MD5 sum
// (32 lower-case hexadecimal digits).
struct OvLayoutEdition {
    const char *file_name;
    const char *md5sum;
};

// Upgrades the open workspace's layouts from the installation: a
// "standard.layout" with the replaced sum is deleted and the shipped layouts
// installed again; then each listed file that still has its earlier
// edition's sum (the user never changed it) is overwritten by the shipped
// copy. Nothing here fails the caller. ov_workspace_open runs it with the
// sums of the suite's earlier editions.
void ov_workspace_upgrade_layouts(const char *replaced_standard_md5sum, const OvLayoutEdition *editions,
                                  int edition_count);

// Rescans the documents folder and tells the observers what was added,
// changed and removed.
gboolean ov_workspace_refresh();
void ov_workspace_set_object_file_added_callback(OvWorkspaceObjectFileCallback callback, gpointer data);
void ov_workspace_set_object_file_changed_callback(OvWorkspaceObjectFileCallback callback, gpointer data);
void ov_workspace_set_object_file_removed_callback(OvWorkspaceObjectFileCallback callback, gpointer data);

// TRUE if the documents folder holds a file for the object.
gboolean ov_workspace_get_object_file_status(const char *object_id);
// The path the object's file has in the documents folder, as a new string.
char *ov_workspace_create_object_file_path(const char *object_id);
// TRUE if path names a file directly inside the documents folder.
gboolean ov_workspace_has_object_file_path(const char *path);
