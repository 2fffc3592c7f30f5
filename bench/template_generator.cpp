#include "template_generator.h"

#include "lang/locale.h"

#include <glib.h>

namespace
{

// The same words in three languages; numbers make every text distinct.
langstr *make_text(const char *uk_english, const char *swedish, const char *german, int a, int b)
{
    langstr *ls = nullptr;
    const struct {
        const OvLocale *locale;
        const char *word;
    } translations[] = {
        {ov_locale_get_uk_english(), uk_english},
        {ov_locale_get_swedish_swedish(), swedish},
        {ov_locale_get_by_tag("de-de"), german},
    };
    for (const auto &translation : translations) {
        gchar *text = g_strdup_printf("%s %d.%d", translation.word, a, b);
        ov_langstr_set_translation(&ls, translation.locale, text);
        g_free(text);
    }
    return ls;
}

ov_text_sheet_block *make_block(int number, bool details, bool more_checkboxes = false)
{
    ov_text_sheet_block *block = ov_text_sheet_block_new(nullptr);
    block->header = make_text("Surface condition of the object", "Ytans skick p\xE5 f\xF6rem\xE5let",
                              "Oberfl\xE4"
                              "chenzustand des Objekts",
                              number, 0);
    for (int r = 1; r <= 10; ++r) {
        ov_text_sheet_row *row = ov_text_sheet_row_new(nullptr);
        row->header = make_text("Cracks, flaking and losses", "Sprickor, flagning och bortfall",
                                "Risse, Abbl\xE4tterungen und Fehlstellen", number, r);
        ov_text_sheet_block_add_row(block, row);
        ov_text_sheet_field *text_field = ov_text_sheet_field_new(OV_TEXT_SHEET_FIELD_KIND_TEXT_FIELD);
        if (details)
            text_field->text = make_text("Describe the extent &\nlocation", "Beskriv omfattning &\nplats",
                                         "Umfang & Lage\nbeschreiben", number, r);
        ov_text_sheet_row_add_field(row, text_field);
        ov_text_sheet_field *checkbox = ov_text_sheet_field_new(OV_TEXT_SHEET_FIELD_KIND_CHECKBOX);
        checkbox->text = make_text("Needs treatment <urgent>",
                                   "Beh\xF6ver \xE5tg\xE4rd <br\xE5"
                                   "dskande>",
                                   "Behandlung n\xF6tig <dringend>", number, r);
        checkbox->selected = details && r % 2 == 0;
        ov_text_sheet_row_add_field(row, checkbox);
        // Some rows have more checkboxes, which wrap in narrow sheets.
        for (int extra = 0; more_checkboxes && extra < (number + r) % 3; ++extra) {
            ov_text_sheet_field *more = ov_text_sheet_field_new(OV_TEXT_SHEET_FIELD_KIND_CHECKBOX);
            more->text = make_text("Stable", "Stabil", "Stabil", number, r * 10 + extra);
            ov_text_sheet_row_add_field(row, more);
        }
    }
    return block;
}

} // namespace

ov_template *ov_bench_make_large_template(int block_count)
{
    ov_template *tmpl = ov_template_new();
    tmpl->name = make_text("Benchmark template", "Prestandamall", "Leistungsvorlage", block_count, 0);
    tmpl->version = g_strdup("1.0");
    ov_template_add_codeset(tmpl, ov_template_codeset_new("condition_remarks.codeset"));

    ov_text_sheet_segment *segments[20] = {};
    for (int t = 0; t < 2; ++t) {
        ov_template_report_type *report_type = ov_template_report_type_new(nullptr);
        report_type->name = make_text("Condition report", "Tillst\xE5ndsrapport", "Zustandsprotokoll", t, 0);
        ov_template_add_report_type(tmpl, report_type);
        for (int s = 0; s < 10; ++s) {
            ov_text_sheet_segment *segment = ov_text_sheet_segment_new(nullptr);
            segment->header = make_text("Paint layer", "F\xE4rgskikt", "Malschicht", t, s);
            ov_template_report_type_add_segment(report_type, segment);
            segments[t * 10 + s] = segment;
        }
    }
    for (int b = 0; b < block_count; ++b) {
        if (b % 10 == 0)
            ov_text_sheet_segment_add_block(tmpl->details, make_block(b, true));
        else
            ov_text_sheet_segment_add_block(segments[b % 20], make_block(b, false));
    }
    return tmpl;
}

ov_template *ov_bench_make_long_sheet_template(int block_count)
{
    ov_template *tmpl = ov_template_new();
    tmpl->name = make_text("Benchmark sheet", "Prestandablad", "Leistungsblatt", block_count, 0);
    ov_template_report_type *report_type = ov_template_report_type_new(nullptr);
    report_type->name = make_text("Condition report", "Tillst\xE5ndsrapport", "Zustandsprotokoll", 0, 0);
    ov_template_add_report_type(tmpl, report_type);
    ov_text_sheet_segment *segments[10] = {};
    for (int s = 0; s < 10; ++s) {
        segments[s] = ov_text_sheet_segment_new(nullptr);
        segments[s]->header = make_text("Paint layer", "F\xE4rgskikt", "Malschicht", 0, s);
        ov_template_report_type_add_segment(report_type, segments[s]);
    }
    for (int b = 0; b < block_count; ++b)
        ov_text_sheet_segment_add_block(segments[b * 10 / block_count], make_block(b, false, true));
    return tmpl;
}
