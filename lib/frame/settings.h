// The user's personal settings, kept in "settings.xml" in the workspace.
// The suite's programs share that file: each loads and saves only the groups
// selected by a mask and leaves every other element as it was.
//
// The settings are a process-wide record between ov_settings_init (which
// needs an open workspace) and ov_settings_clean_up. Setters change memory
// only; the caller saves with the mask bit of the field.
#pragma once

#include <glib.h>

#include "docs/remark.h"
#include "lang/langstr.h"

// One bit per element of "settings.xml".
enum : guint {
    OV_SETTINGS_ARCHIVE = 1,                   // "archive"
    OV_SETTINGS_AUTOMATICALLY_PLACE_ID = 2,    // "automatically-place-id"
    OV_SETTINGS_DEFAULT_MARK_ID_STYLE = 4,     // "default-mark-id-style"
    OV_SETTINGS_DEFAULT_PRINTOUT_SETTINGS = 8, // "default-printout-settings"
    OV_SETTINGS_EXPORT = 16,                   // "export"
    OV_SETTINGS_LAST_USED_LAYOUT = 32,         // "last-used-layout"
    OV_SETTINGS_LAST_USED_PAPER = 64,          // "last-used-paper"
    OV_SETTINGS_LEFT_HANDED = 128,             // "left-handed"
    OV_SETTINGS_RECENT_CUSTOM_REMARKS = 256,   // "recent-custom-remarks"
    OV_SETTINGS_REMEMBER_TOOL_CHOICE = 512,    // "remember-tool-choice"
    OV_SETTINGS_ALL = 1023,
};

// Printout identifier settings.
enum : int {
    OV_SETTINGS_IDENTIFIER_NONE = 0,
    OV_SETTINGS_IDENTIFIER_OBJECT_ID = 1,
    OV_SETTINGS_IDENTIFIER_INVENTORY_ID = 2,
    OV_SETTINGS_IDENTIFIER_INVENTORY_ID_OR_OBJECT_ID = 3,
};

// Paper orientations.
enum : int {
    OV_SETTINGS_ORIENTATION_PORTRAIT = 0,
    OV_SETTINGS_ORIENTATION_LANDSCAPE = 1,
};

// Legend filter levels: codesets 1 "From all codesets", 2 "From primary
// codeset only", 3 "From no codeset"; marks 1 "From all views", 2 "From this
// view only", 3 "From no view".
enum : int {
    OV_SETTINGS_FILTER_ALL = 1,
    OV_SETTINGS_FILTER_PRIMARY_OR_THIS = 2,
    OV_SETTINGS_FILTER_NONE = 3,
};

// The most recent custom remarks kept.
constexpr int OV_SETTINGS_RECENT_CUSTOM_REMARK_COUNT = 5;

// Texts of the enumerations as written in the file and shown to the user;
// null for a value outside the enumeration.
const char *ov_settings_get_identifier_setting_text(int setting);
const char *ov_settings_get_orientation_text(int orientation);
const char *ov_settings_get_codeset_filter_level_text(int level);
const char *ov_settings_get_mark_filter_level_text(int level);

// The paper sizes a printout can have ("A3", "A4", "A5", "Letter", "Legal").
int ov_settings_get_paper_count();
// Null for an index outside the table.
const char *ov_settings_get_paper_name(int index);
// -1 for an unknown name.
int ov_settings_find_paper_index(const char *name);
// A4.
int ov_settings_get_default_paper_index();

// Fills the record with the defaults; the file is "settings.xml" in the open
// workspace's folder.
gboolean ov_settings_init();
// Loads the groups of the mask. A missing file keeps the defaults. A bad
// paper id or remark makes the result FALSE while loading goes on.
gboolean ov_settings_load(guint mask);
gboolean ov_settings_save(guint mask);
void ov_settings_clean_up();

const char *ov_settings_get_settings_file_path();

// Borrowed strings; setters copy.
const char *ov_settings_get_archive_path();
void ov_settings_set_archive_path(const char *path);
gboolean ov_settings_get_automatically_place_id();
void ov_settings_set_automatically_place_id(gboolean active);
int ov_settings_get_default_mark_id_style();
void ov_settings_set_default_mark_id_style(int style);

int ov_settings_get_default_printout_settings_identifier_setting();
void ov_settings_set_default_printout_settings_identifier_setting(int setting);
// Null when no layout is set.
const char *ov_settings_get_default_printout_settings_layout_file_name();
void ov_settings_set_default_printout_settings_layout_file_name(const char *file_name);
int ov_settings_get_default_printout_settings_paper_index();
void ov_settings_set_default_printout_settings_paper_index(int index);
int ov_settings_get_default_printout_settings_paper_orientation();
void ov_settings_set_default_printout_settings_paper_orientation(int orientation);
gboolean ov_settings_get_default_printout_settings_details_on_text_page();
void ov_settings_set_default_printout_settings_details_on_text_page(gboolean show);
gboolean ov_settings_get_default_printout_settings_details_on_view_pages();
void ov_settings_set_default_printout_settings_details_on_view_pages(gboolean show);
gboolean ov_settings_get_default_printout_settings_legend_on_text_page();
void ov_settings_set_default_printout_settings_legend_on_text_page(gboolean show);
gboolean ov_settings_get_default_printout_settings_legend_on_view_pages();
void ov_settings_set_default_printout_settings_legend_on_view_pages(gboolean show);
gboolean ov_settings_get_default_printout_settings_show_page_numbers();
void ov_settings_set_default_printout_settings_show_page_numbers(gboolean show);
gboolean ov_settings_get_default_printout_settings_show_report_type();
void ov_settings_set_default_printout_settings_show_report_type(gboolean show);
int ov_settings_get_default_printout_settings_text_page_legend_codeset_filter_level();
void ov_settings_set_default_printout_settings_text_page_legend_codeset_filter_level(int level);
int ov_settings_get_default_printout_settings_text_page_legend_mark_filter_level();
void ov_settings_set_default_printout_settings_text_page_legend_mark_filter_level(int level);
int ov_settings_get_default_printout_settings_view_page_legend_codeset_filter_level();
void ov_settings_set_default_printout_settings_view_page_legend_codeset_filter_level(int level);
int ov_settings_get_default_printout_settings_view_page_legend_mark_filter_level();
void ov_settings_set_default_printout_settings_view_page_legend_mark_filter_level(int level);

const char *ov_settings_get_export_folder_path();
void ov_settings_set_export_folder_path(const char *path);
const char *ov_settings_get_last_used_legacy_layout_file_name();
void ov_settings_set_last_used_legacy_layout_file_name(const char *file_name);
const char *ov_settings_get_last_used_legacy_paper_id();
void ov_settings_set_last_used_legacy_paper_id(const char *paper_id);
gboolean ov_settings_get_left_handed();
void ov_settings_set_left_handed(gboolean left_handed);
gboolean ov_settings_get_remember_tool_choice();
void ov_settings_set_remember_tool_choice(gboolean remember);

// Newest first, at most five; borrowed.
OvRemarkList *ov_settings_get_recent_custom_remarks();
// Puts the remark first: an entry with the same code and an identical
// description moves to the front, otherwise a copy is added; the list is
// then cut to five.
void ov_settings_set_most_recent_custom_remark(const char *code, const langstr *description);
