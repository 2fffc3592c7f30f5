#include "docs/template.h"

// Templates.

ov_template *ov_template_new()
{
    ov_template *tmpl = new ov_template{};
    ov::list_init(tmpl->codesets);
    tmpl->details = ov_text_sheet_segment_new(nullptr);
    ov::list_init(tmpl->report_types);
    return tmpl;
}

void ov_template_destroy(ov_template *tmpl)
{
    if (tmpl == nullptr)
        return;
    ov_langstr_free(tmpl->name);
    ov_langstr_free(tmpl->author);
    g_free(tmpl->version);
    ov::list_destroy(tmpl->codesets, ov_template_codeset_destroy);
    ov_text_sheet_segment_destroy(tmpl->details);
    ov::list_destroy(tmpl->report_types, ov_template_report_type_destroy);
    delete tmpl;
}

void ov_template_add_codeset(ov_template *tmpl, ov_template_codeset *codeset)
{
    g_return_if_fail(tmpl != nullptr && codeset != nullptr);
    ov::list_append(tmpl->codesets, codeset);
}

void ov_template_add_report_type(ov_template *tmpl, ov_template_report_type *report_type)
{
    g_return_if_fail(tmpl != nullptr && report_type != nullptr);
    ov::list_append(tmpl->report_types, report_type);
}

// Codeset entries.

ov_template_codeset *ov_template_codeset_new(const char *file_name)
{
    ov_template_codeset *codeset = new ov_template_codeset{};
    codeset->file_name = g_strdup(file_name);
    return codeset;
}

void ov_template_codeset_remove(ov_template_codeset *codeset)
{
    g_return_if_fail(codeset != nullptr);
    ov::list_unlink(codeset);
}

void ov_template_codeset_destroy(ov_template_codeset *codeset)
{
    if (codeset == nullptr)
        return;
    ov::list_unlink(codeset);
    g_free(codeset->file_name);
    delete codeset;
}

// Report types.

ov_template_report_type *ov_template_report_type_new(const langstr *name)
{
    ov_template_report_type *report_type = new ov_template_report_type{};
    report_type->name = ov_langstr_clone(name);
    ov_text_sheet_segment_list_init(&report_type->segments);
    return report_type;
}

ov_template_report_type *ov_template_report_type_clone(const ov_template_report_type *report_type)
{
    g_return_val_if_fail(report_type != nullptr, nullptr);
    ov_template_report_type *copy = ov_template_report_type_new(report_type->name);
    ov_text_sheet_copy_segments(&copy->segments, &report_type->segments);
    return copy;
}

void ov_template_report_type_add_segment(ov_template_report_type *report_type, ov_text_sheet_segment *segment)
{
    g_return_if_fail(report_type != nullptr && segment != nullptr);
    ov_text_sheet_add_segment(&report_type->segments, segment);
}

void ov_template_report_type_remove(ov_template_report_type *report_type)
{
    g_return_if_fail(report_type != nullptr);
    ov::list_unlink(report_type);
}

void ov_template_report_type_destroy(ov_template_report_type *report_type)
{
    if (report_type == nullptr)
        return;
    ov::list_unlink(report_type);
    ov_langstr_free(report_type->name);
    ov_text_sheet_segment_list_clear(&report_type->segments);
    delete report_type;
}

// Template lists.

ov_template_list *ov_template_list_new()
{
    ov_template_list *list = new ov_template_list{};
    ov::list_init(list->entries);
    return list;
}

void ov_template_list_destroy(ov_template_list *list)
{
    if (list == nullptr)
        return;
    ov::list_destroy(list->entries, ov_template_list_entry_destroy);
    delete list;
}

ov_template_list_entry *ov_template_list_get_entry(const ov_template_list *list, std::uint32_t index)
{
    g_return_val_if_fail(list != nullptr, nullptr);
    return ov::list_nth(list->entries, index);
}

ov_template_list_entry *ov_template_list_entry_new_take(gchar *path, gchar *ui_string)
{
    ov_template_list_entry *entry = new ov_template_list_entry{};
    entry->path = path;
    entry->ui_string = ui_string;
    return entry;
}

void ov_template_list_add_entry(ov_template_list *list, ov_template_list_entry *entry)
{
    g_return_if_fail(list != nullptr && entry != nullptr);
    ov::list_append(list->entries, entry);
}

void ov_template_list_entry_remove(ov_template_list_entry *entry)
{
    g_return_if_fail(entry != nullptr);
    ov::list_unlink(entry);
}

void ov_template_list_entry_destroy(ov_template_list_entry *entry)
{
    if (entry == nullptr)
        return;
    ov::list_unlink(entry);
    g_free(entry->path);
    g_free(entry->ui_string);
    delete entry;
}

// Translation statistics.

namespace
{

void add_segment_texts(OvTranslationStats *stats, const ov_text_sheet_segment *segment)
{
    ov_translation_stats_add_langstr(stats, segment->header);
    for (const ov_text_sheet_block *block : segment->blocks) {
        ov_translation_stats_add_langstr(stats, block->header);
        for (const ov_text_sheet_row *row : block->rows) {
            ov_translation_stats_add_langstr(stats, row->header);
            for (const ov_text_sheet_field *field : row->fields)
                ov_translation_stats_add_langstr(stats, field->text);
        }
    }
}

} // namespace

OvTranslationStats *ov_translation_stats_get_for_template(const ov_template *tmpl)
{
    g_return_val_if_fail(tmpl != nullptr, ov_translation_stats_new());
    return ov_translation_stats_get_for_template_as_edited(tmpl, tmpl->name, tmpl->author);
}

OvTranslationStats *ov_translation_stats_get_for_template_as_edited(const ov_template *tmpl,
                                                                    const langstr *name,
                                                                    const langstr *author)
{
    OvTranslationStats *stats = ov_translation_stats_new();
    g_return_val_if_fail(tmpl != nullptr, stats);
    ov_translation_stats_add_langstr(stats, name);
    ov_translation_stats_add_langstr(stats, author);
    add_segment_texts(stats, tmpl->details);
    for (const ov_template_report_type *report_type : tmpl->report_types) {
        ov_translation_stats_add_langstr(stats, report_type->name);
        for (const ov_text_sheet_segment *segment : report_type->segments)
            add_segment_texts(stats, segment);
    }
    return stats;
}
