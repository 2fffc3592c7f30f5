// The template: a name, an optional author and version, the file names of
// the remark codesets its reports use, the basic data ("details") segment
// shared by every report type, and one or more report types, each with the
// segments of its condition part. Also the list of the templates in the
// workspace's templates folder and the translation statistics of a template.
#pragma once

#include "core/list.h"
#include "docs/text_sheet.h"
#include "lang/langstr.h"
#include "lang/translation_stats.h"

#include <glib.h>

#include <cstdint>

// One codeset file name, a bare name in the workspace's codesets folder.
struct ov_template_codeset {
    gchar *file_name; // Latin-1, as written in the file
    ov_template_codeset *previous;
    ov_template_codeset *next;
};

struct ov_template_report_type {
    langstr *name;
    ov_text_sheet_segment_list segments;
    ov_template_report_type *previous;
    ov_template_report_type *next;
};

struct ov_template {
    langstr *name;
    langstr *author;
    // Latin-1, whitespace-compacted, never empty when present.
    gchar *version;
    ov::SentinelList<ov_template_codeset> codesets;
    // The basic data blocks; always present, with a null header.
    ov_text_sheet_segment *details;
    ov::SentinelList<ov_template_report_type> report_types;
};

struct ov_template_list_entry {
    gchar *path;
    // One-line description in UTF-8.
    gchar *ui_string;
    ov_template_list_entry *previous;
    ov_template_list_entry *next;
};

struct ov_template_list {
    ov::SentinelList<ov_template_list_entry> entries;
};

// Templates.
ov_template *ov_template_new();
void ov_template_destroy(ov_template *tmpl);
void ov_template_add_codeset(ov_template *tmpl, ov_template_codeset *codeset);
void ov_template_add_report_type(ov_template *tmpl, ov_template_report_type *report_type);

// Codeset entries. The file name is copied.
ov_template_codeset *ov_template_codeset_new(const char *file_name);
void ov_template_codeset_remove(ov_template_codeset *codeset);
void ov_template_codeset_destroy(ov_template_codeset *codeset);

// Report types. The name is cloned and may be null.
ov_template_report_type *ov_template_report_type_new(const langstr *name);
ov_template_report_type *ov_template_report_type_clone(const ov_template_report_type *report_type);
void ov_template_report_type_add_segment(ov_template_report_type *report_type,
                                         ov_text_sheet_segment *segment);
void ov_template_report_type_remove(ov_template_report_type *report_type);
void ov_template_report_type_destroy(ov_template_report_type *report_type);

// Template lists.
ov_template_list *ov_template_list_new();
void ov_template_list_destroy(ov_template_list *list);
// Entry at a zero-based index, or null past the end.
ov_template_list_entry *ov_template_list_get_entry(const ov_template_list *list, std::uint32_t index);
// Takes over path and ui_string.
ov_template_list_entry *ov_template_list_entry_new_take(gchar *path, gchar *ui_string);
void ov_template_list_add_entry(ov_template_list *list, ov_template_list_entry *entry);
void ov_template_list_entry_remove(ov_template_list_entry *entry);
void ov_template_list_entry_destroy(ov_template_list_entry *entry);

// Counts every multilingual text of the template: its name and author, the
// report type names, the headers of every segment, block and row, and the
// field texts, of the basic data and of every report type. Never null.
OvTranslationStats *ov_translation_stats_get_for_template(const ov_template *tmpl);
// The same with name and author standing in for the template's own: what an
// editor shows while they are being edited and not yet put back.
OvTranslationStats *ov_translation_stats_get_for_template_as_edited(const ov_template *tmpl,
                                                                    const langstr *name,
                                                                    const langstr *author);
