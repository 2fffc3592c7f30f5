#include "widgets/gfx_text.h"

#include "core/raii.h"
#include "core/strings.h"
#include "frame/startup.h"
#include "gui/image.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <unordered_map>

struct OvGfxTextCache {
    std::unordered_map<const langstr *, std::string> texts;
    gsize bytes = 0;
};

namespace
{

struct Rect {
    int x, y, width, height;
};

// The frame of the symbol, relative to its top-left corner.
constexpr Rect frame_parts[] = {{0, 0, 13, 1}, {0, 7, 13, 1}, {0, 1, 1, 6}, {12, 1, 1, 6}};
constexpr Rect first_square = {2, 2, 4, 4};
constexpr Rect second_square = {7, 2, 4, 4};
constexpr int status_width = 13;
constexpr int status_height = 8;

// A table entry costs about this much beside its text.
constexpr gsize cache_entry_overhead = 64;
// Enough for many screens of texts; a full cache starts afresh, which keeps
// both its memory and the cost of clearing it small on long sheets.
constexpr std::size_t cache_limit = 4096;

void add_rect(cairo_t *cr, double x, double y, const Rect &r)
{
    cairo_rectangle(cr, x + r.x, y + r.y, r.width, r.height);
}

struct TextStyleFont {
    const char *family;
    double size;
    PangoWeight weight;
    PangoStyle style;
};

constexpr std::array<TextStyleFont, 4> style_fonts = {{
    {"Sans", 12, PANGO_WEIGHT_NORMAL, PANGO_STYLE_NORMAL},
    {"Sans", 12, PANGO_WEIGHT_BOLD, PANGO_STYLE_NORMAL},
    {"Sans", 12, PANGO_WEIGHT_NORMAL, PANGO_STYLE_ITALIC},
    {"Arial, Sans", 12 * 1.6, PANGO_WEIGHT_BOLD, PANGO_STYLE_NORMAL},
}};

std::array<PangoFontDescription *, 4> fonts{};
int space_width = -1;
int space_height = -1;

const PangoFontDescription *font_for(int style)
{
    if (style < 0 || style >= int(fonts.size()))
        style = OV_GFX_TEXT_STYLE_PLAIN;
    if (fonts[style] == nullptr) {
        const TextStyleFont &look = style_fonts[style];
        PangoFontDescription *font = pango_font_description_new();
        pango_font_description_set_family(font, look.family);
        pango_font_description_set_absolute_size(font, look.size * PANGO_SCALE);
        pango_font_description_set_weight(font, look.weight);
        pango_font_description_set_style(font, look.style);
        fonts[style] = font;
    }
    return fonts[style];
}

using LayoutRef = ov::ObjectRef<PangoLayout>;

LayoutRef make_layout(const OvGfxTextSheetContext *context, int style, const char *text, int max_width)
{
    LayoutRef layout = LayoutRef::adopt(gtk_widget_create_pango_layout(context->widget, nullptr));
    pango_layout_set_font_description(layout.get(), font_for(style));
    pango_layout_set_text(layout.get(), text, -1);
    if (max_width > 0) {
        pango_layout_set_width(layout.get(), max_width * PANGO_SCALE);
        pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
    }
    return layout;
}

void measure_space(const OvGfxTextSheetContext *context)
{
    if (space_width >= 0)
        return;
    LayoutRef layout = make_layout(context, OV_GFX_TEXT_STYLE_PLAIN, "T", -1);
    int width = 0, height = 0;
    pango_layout_get_size(layout.get(), &width, &height);
    space_width = int(std::ceil(double(width) / PANGO_SCALE));
    space_height = int(std::ceil(double(height) / PANGO_SCALE));
}

int round_half_up(double value)
{
    return int(std::floor(value + 0.5));
}

int ceil_int(double value)
{
    return int(std::ceil(value));
}

bool paints(const OvGfxTextSheetContext *context, gboolean measure_only)
{
    return !measure_only && context->cairo != nullptr;
}

void set_grey(const OvGfxTextSheetContext *context)
{
    if (context->cairo != nullptr)
        cairo_set_source_rgb(context->cairo, 0xC0 / 255.0, 0xC0 / 255.0, 0xC0 / 255.0);
}

void set_black(const OvGfxTextSheetContext *context)
{
    if (context->cairo != nullptr)
        cairo_set_source_rgb(context->cairo, 0, 0, 0);
}

void record(const OvGfxTextSheetContext *context, ov_text_sheet_rect *target, const ov_text_sheet_rect &value)
{
    if (context->record_rectangles && target != nullptr)
        *target = value;
}

// The icons drawn beside titles and for checkboxes, loaded at start-up.
const OvImage *checkbox_icon_image(gboolean checked)
{
    return ov_get_checkbox_icon_image(checked);
}

const OvImage *menu_icon_image()
{
    return ov_get_text_tab_menu_icon_image();
}

int image_width(const OvImage *image)
{
    return image != nullptr ? ov_image_get_width(image) : 0;
}

int image_height(const OvImage *image)
{
    return image != nullptr ? ov_image_get_height(image) : 0;
}

// The text of a multilingual string in the active language, in UTF-8.
const char *utf8_of(const OvGfxTextSheetContext *context, const langstr *ls, ov::GStr &holder)
{
    if (ls == nullptr)
        return "";
    OvGfxTextCache *cache = context->texts;
    if (cache != nullptr) {
        auto found = cache->texts.find(ls);
        if (found != cache->texts.end())
            return found->second.c_str();
    }
    const char *latin1 = ov_langstr_get_text(ls, nullptr);
    holder.reset(ov_convert_latin1_to_utf8(latin1 != nullptr ? latin1 : ""));
    if (cache == nullptr)
        return holder.get();
    if (cache->texts.size() >= cache_limit)
        ov_gfx_text_cache_clear(cache);
    auto [entry, added] = cache->texts.emplace(ls, holder.get());
    cache->bytes += entry->second.capacity() + cache_entry_overhead;
    return entry->second.c_str();
}

// Every text block goes through here; status is the multilingual string
// whose symbol follows the text, when has_status is set.
void text_block(const OvGfxTextSheetContext *context, int style, const char *utf8, bool has_status,
                const langstr *status, gboolean measure_only, double *width_out, double *height_out,
                gboolean with_menu_icon, ov_text_sheet_rect *icon_rectangle,
                ov_text_sheet_rect *status_rectangle, int x, int y, int max_width)
{
    measure_space(context);
    const bool paint = paints(context, measure_only);
    const OvImage *icon = with_menu_icon ? menu_icon_image() : nullptr;
    const int icon_width = image_width(icon);
    const int icon_height = image_height(icon);
    if (with_menu_icon)
        max_width -= space_width + icon_width;

    LayoutRef layout = make_layout(context, style, utf8, max_width);
    int layout_width = 0, layout_height = 0;
    pango_layout_get_size(layout.get(), &layout_width, &layout_height);
    double width = double(layout_width) / PANGO_SCALE;
    double height = double(layout_height) / PANGO_SCALE;
    if (paint) {
        cairo_move_to(context->cairo, x, y + 1);
        pango_cairo_show_layout(context->cairo, layout.get());
    }

    if (has_status) {
        PangoLayoutIter *iter = pango_layout_get_iter(layout.get());
        while (!pango_layout_iter_at_last_line(iter))
            pango_layout_iter_next_line(iter);
        PangoRectangle line;
        pango_layout_iter_get_line_extents(iter, nullptr, &line);
        pango_layout_iter_free(iter);
        double line_top = double(line.y) / PANGO_SCALE;
        const double line_height = double(line.height) / PANGO_SCALE;
        int symbol_x = x + ceil_int(double(line.x + line.width) / PANGO_SCALE) + space_width;
        if (max_width > 0 && symbol_x + status_width - x > max_width) {
            symbol_x = x;
            line_top = height;
            height += line_height;
        }
        const int symbol_y = y + 1 + round_half_up(line_top + (line_height - status_height) / 2);
        if (paint)
            ov_gfx_text_draw_langstr_status_icon(context->cairo, symbol_x, symbol_y, status, 1.0);
        record(context, status_rectangle, {symbol_x, symbol_y, status_width, status_height});
        width = std::max(width, double(symbol_x + status_width - x));
    }

    if (with_menu_icon) {
        const int icon_x = x + ceil_int(width) + space_width;
        const int icon_y = y + round_half_up((height - icon_height) / 2);
        if (paint && icon != nullptr)
            ov_image_draw(icon, context->cairo, icon_x, icon_y);
        width += space_width + icon_width;
        record(context, icon_rectangle, {icon_x, icon_y, icon_width, icon_height});
    }
    if (width_out != nullptr)
        *width_out = width;
    if (height_out != nullptr)
        *height_out = height;
}

bool block_has_rows(const ov_text_sheet_block *block)
{
    return !block->rows.is_empty();
}

} // namespace

void ov_gfx_text_draw_langstr_status_icon(cairo_t *cr, double x, double y, const langstr *ls, double opacity)
{
    g_return_if_fail(cr != nullptr);
    ov::CairoSaveGuard saved(cr);
    if (ov_langstr_get_text_for_locale_or_language(ls, nullptr) == nullptr)
        cairo_set_source_rgba(cr, 0.933, 0.933, 0, opacity);
    else
        cairo_set_source_rgba(cr, 0.867, 0.867, 0.867, opacity);
    cairo_new_path(cr);
    for (const Rect &r : frame_parts)
        add_rect(cr, x, y, r);
    if (ls != nullptr)
        add_rect(cr, x, y, first_square);
    if (ls != nullptr && ls->next != nullptr)
        add_rect(cr, x, y, second_square);
    cairo_fill(cr);
}

OvGfxTextCache *ov_gfx_text_cache_new()
{
    return new OvGfxTextCache{};
}

void ov_gfx_text_cache_destroy(OvGfxTextCache *cache)
{
    delete cache;
}

void ov_gfx_text_cache_clear(OvGfxTextCache *cache)
{
    g_return_if_fail(cache != nullptr);
    cache->texts.clear();
    cache->bytes = 0;
}

gsize ov_gfx_text_cache_get_size(const OvGfxTextCache *cache)
{
    g_return_val_if_fail(cache != nullptr, 0);
    return cache->bytes + cache->texts.bucket_count() * sizeof(void *);
}

int ov_gfx_text_sheet_get_plain_space_width(const OvGfxTextSheetContext *context)
{
    g_return_val_if_fail(context != nullptr, 0);
    measure_space(context);
    return space_width;
}

int ov_gfx_text_sheet_get_plain_space_height(const OvGfxTextSheetContext *context)
{
    g_return_val_if_fail(context != nullptr, 0);
    measure_space(context);
    return space_height;
}

void ov_gfx_text_sheet_draw_utf8_text_block(const OvGfxTextSheetContext *context, int style, const char *text,
                                            gboolean measure_only, double *width, double *height,
                                            gboolean with_menu_icon, ov_text_sheet_rect *icon_rectangle,
                                            int x, int y, int max_width)
{
    g_return_if_fail(context != nullptr);
    text_block(context, style, text != nullptr ? text : "", false, nullptr, measure_only, width, height,
               with_menu_icon, icon_rectangle, nullptr, x, y, max_width);
}

void ov_gfx_text_sheet_draw_latin1_text_block(const OvGfxTextSheetContext *context, int style,
                                              const char *text, gboolean measure_only, double *width,
                                              double *height, gboolean with_menu_icon,
                                              ov_text_sheet_rect *icon_rectangle, int x, int y, int max_width)
{
    g_return_if_fail(context != nullptr);
    ov::GStr utf8(ov_convert_latin1_to_utf8(text != nullptr ? text : ""));
    text_block(context, style, utf8.get(), false, nullptr, measure_only, width, height, with_menu_icon,
               icon_rectangle, nullptr, x, y, max_width);
}

void ov_gfx_text_sheet_draw_langstr_text_block(const OvGfxTextSheetContext *context, int style,
                                               const langstr *text, gboolean measure_only, double *width,
                                               double *height, gboolean with_menu_icon,
                                               ov_text_sheet_rect *icon_rectangle,
                                               ov_text_sheet_rect *status_rectangle, int x, int y,
                                               int max_width)
{
    g_return_if_fail(context != nullptr);
    ov::GStr holder;
    text_block(context, style, utf8_of(context, text, holder), true, text, measure_only, width, height,
               with_menu_icon, icon_rectangle, status_rectangle, x, y, max_width);
}

int ov_gfx_text_sheet_draw_add_segments(const OvGfxTextSheetContext *context, int y,
                                        ov_text_sheet_rect *rectangle)
{
    g_return_val_if_fail(context != nullptr, y);
    constexpr const char *text = "Add segments";
    const int max_width = context->width - 50;
    double width = 0, height = 0;
    ov_gfx_text_sheet_draw_utf8_text_block(context, OV_GFX_TEXT_STYLE_PLAIN, text, TRUE, &width, &height,
                                           TRUE, nullptr, 0, 0, max_width);
    set_grey(context);
    ov_gfx_text_sheet_draw_utf8_text_block(context, OV_GFX_TEXT_STYLE_PLAIN, text, FALSE, nullptr, nullptr,
                                           TRUE, rectangle, context->width - ceil_int(width) - 25, y + 22,
                                           max_width);
    set_black(context);
    return y + ceil_int(height) + 47;
}

int ov_gfx_text_sheet_draw_large_utf8_header(const OvGfxTextSheetContext *context, int y, const char *text,
                                             gboolean with_menu_icon, ov_text_sheet_rect *icon_rectangle)
{
    g_return_val_if_fail(context != nullptr, y);
    double height = 0;
    ov_gfx_text_sheet_draw_utf8_text_block(context, OV_GFX_TEXT_STYLE_LARGE, text, FALSE, nullptr, &height,
                                           with_menu_icon, icon_rectangle, 24, y - 4, context->width - 49);
    return y + ceil_int(height) - 8;
}

int ov_gfx_text_sheet_draw_large_latin1_header(const OvGfxTextSheetContext *context, int y, const char *text,
                                               gboolean with_menu_icon, ov_text_sheet_rect *icon_rectangle)
{
    g_return_val_if_fail(context != nullptr, y);
    double height = 0;
    ov_gfx_text_sheet_draw_latin1_text_block(context, OV_GFX_TEXT_STYLE_LARGE, text, FALSE, nullptr, &height,
                                             with_menu_icon, icon_rectangle, 24, y - 4, context->width - 49);
    return y + ceil_int(height) - 8;
}

int ov_gfx_text_sheet_draw_large_langstr_header(const OvGfxTextSheetContext *context, int y,
                                                const langstr *text, gboolean with_menu_icon,
                                                ov_text_sheet_rect *icon_rectangle,
                                                ov_text_sheet_rect *status_rectangle)
{
    g_return_val_if_fail(context != nullptr, y);
    double height = 0;
    ov_gfx_text_sheet_draw_langstr_text_block(context, OV_GFX_TEXT_STYLE_LARGE, text, FALSE, nullptr, &height,
                                              with_menu_icon, icon_rectangle, status_rectangle, 24, y - 4,
                                              context->width - 49);
    return y + ceil_int(height) - 8;
}

int ov_gfx_text_sheet_draw_separator(const OvGfxTextSheetContext *context, int y, gboolean dotted)
{
    g_return_val_if_fail(context != nullptr, y);
    cairo_t *cr = context->cairo;
    if (cr != nullptr) {
        const double dashes[2] = {dotted ? 1.0 : 4.0, dotted ? 4.0 : 1.0};
        set_grey(context);
        cairo_set_dash(cr, dashes, 2, 1);
        cairo_move_to(cr, 0, y + 0.5);
        cairo_line_to(cr, context->width, y + 0.5);
        cairo_stroke(cr);
        set_black(context);
        cairo_set_dash(cr, nullptr, 0, 0);
    }
    return y + 1;
}

namespace
{

// Draws a segment's or block's header, starting at top, with its text at
// (x, top + gap), or when editing its grey placeholder (none: nullptr), and
// records where it stands; FALSE when there is neither. height gets the
// text's height.
bool draw_node_header(const OvGfxTextSheetContext *context, int style, const langstr *header,
                      const char *placeholder, ov_text_sheet_hit_area &area, int x, int top, int gap,
                      int width, double *height)
{
    if (context->record_rectangles)
        area.top = top;
    const int y = top + gap;
    if (header != nullptr) {
        ov_gfx_text_sheet_draw_langstr_text_block(context, style, header, FALSE, nullptr, height,
                                                  context->editing, &area.menu, &area.status, x, y, width);
        return true;
    }
    if (placeholder == nullptr || !context->editing)
        return false;
    set_grey(context);
    ov_gfx_text_sheet_draw_utf8_text_block(context, style, placeholder, FALSE, nullptr, height, TRUE,
                                           &area.menu, x, y, width);
    set_black(context);
    record(context, &area.status, {});
    return true;
}

} // namespace

int ov_gfx_text_sheet_draw_segment_header(const OvGfxTextSheetContext *context, int y,
                                          ov_text_sheet_segment *segment, gboolean untitled_placeholder)
{
    g_return_val_if_fail(context != nullptr && segment != nullptr, y);
    double height = 0;
    if (!draw_node_header(context, OV_GFX_TEXT_STYLE_LARGE, segment->header,
                          untitled_placeholder ? "Untitled segment" : nullptr, segment->hit_area, 24, y, 21,
                          context->width - 49, &height))
        return y;
    return y + ceil_int(height) + 17;
}

int ov_gfx_text_sheet_draw_block_header(const OvGfxTextSheetContext *context, int y,
                                        ov_text_sheet_block *block)
{
    g_return_val_if_fail(context != nullptr && block != nullptr, y);
    double height = 0;
    if (!draw_node_header(context, OV_GFX_TEXT_STYLE_BOLD, block->header, "Untitled block", block->hit_area,
                          25, y, 20, context->width - 50, &height))
        return y + 25;
    int bottom = y + 20 + ceil_int(height);
    if (block_has_rows(block))
        bottom += ov_gfx_text_sheet_get_plain_space_height(context);
    return bottom;
}

int ov_gfx_text_sheet_get_title_column(const OvGfxTextSheetContext *context, const ov_text_sheet_block *block)
{
    g_return_val_if_fail(context != nullptr && block != nullptr, 70);
    // Measured as drawn, menu icon included, so that the widest title fits
    // its column without wrapping.
    OvGfxTextSheetContext measuring = *context;
    measuring.record_rectangles = FALSE;
    int widest = 0;
    for (const ov_text_sheet_row *row : block->rows) {
        double width = 0;
        ov_gfx_text_sheet_draw_langstr_text_block(&measuring, OV_GFX_TEXT_STYLE_BOLD, row->header, TRUE,
                                                  &width, nullptr, context->editing, nullptr, nullptr, 0, 0,
                                                  -1);
        widest = std::max(widest, ceil_int(width));
    }
    const int column = std::min(widest + 20, (context->width - 50) / 3);
    return std::max(column, 70);
}

int ov_gfx_text_sheet_get_field_width(const OvGfxTextSheetContext *context, int column)
{
    g_return_val_if_fail(context != nullptr, 30);
    return std::max((context->width - 50) - column - 3, 50) - 20;
}

int ov_gfx_text_sheet_draw_row(const OvGfxTextSheetContext *context, int y, ov_text_sheet_row *row,
                               int column, int field_width, gboolean field_placeholder, gboolean measure_only)
{
    g_return_val_if_fail(context != nullptr && row != nullptr, y);
    const bool paint = paints(context, measure_only);
    double width = 0, height = 0;
    ov_gfx_text_sheet_draw_langstr_text_block(context, OV_GFX_TEXT_STYLE_BOLD, row->header, measure_only,
                                              nullptr, &height, context->editing, &row->hit_area.menu,
                                              &row->hit_area.status, 36, y + 11, column - 20);
    const int title_bottom = y + ceil_int(height) + 21;
    if (row->fields.is_empty())
        return std::max(y + 11, title_bottom);

    const int space = ov_gfx_text_sheet_get_plain_space_width(context);
    const int left = column + 37;
    const int right = column + field_width + 37;
    int line_top = y + 11;
    int x = left;
    bool pending = false;
    int pending_height = 0;
    for (ov_text_sheet_field *field : row->fields) {
        ov_text_sheet_field_hit_area &area = field->hit_area;
        if (field->kind == OV_TEXT_SHEET_FIELD_KIND_CHECKBOX) {
            const OvImage *image = checkbox_icon_image(field->selected);
            const int box_width = image_width(image);
            const int box_height = image_height(image);
            double label_width = 0, label_height = 0;
            OvGfxTextSheetContext measuring = *context;
            measuring.record_rectangles = FALSE;
            ov_gfx_text_sheet_draw_langstr_text_block(&measuring, OV_GFX_TEXT_STYLE_PLAIN, field->text, TRUE,
                                                      &label_width, &label_height, FALSE, nullptr, nullptr, 0,
                                                      0, -1);
            if (pending && x + box_width + space + label_width > right) {
                x = left;
                line_top += pending_height + 10;
                pending_height = 0;
            }
            const int image_y = line_top + round_half_up((label_height - box_height) / 2);
            record(context, &area.field, {x, image_y, box_width, box_height});
            if (paint && image != nullptr)
                ov_image_draw(image, context->cairo, x, image_y);
            const int label_x = x + box_width + space;
            ov_gfx_text_sheet_draw_langstr_text_block(
                context, OV_GFX_TEXT_STYLE_PLAIN, field->text, measure_only, &label_width, &label_height,
                FALSE, nullptr, &area.status, label_x, line_top, right - label_x);
            pending = true;
            pending_height = std::max(pending_height, ceil_int(label_height));
            x = label_x + ceil_int(label_width) + 10;
        } else {
            if (field->text == nullptr && !context->editing)
                continue;
            if (pending) {
                line_top += pending_height + 10;
                pending = false;
                pending_height = 0;
            }
            x = left;
            if (field->text != nullptr) {
                ov_gfx_text_sheet_draw_langstr_text_block(context, OV_GFX_TEXT_STYLE_PLAIN, field->text,
                                                          measure_only, &width, &height, FALSE, nullptr,
                                                          &area.status, left, line_top, field_width);
            } else {
                set_grey(context);
                ov_gfx_text_sheet_draw_utf8_text_block(
                    context, OV_GFX_TEXT_STYLE_PLAIN,
                    field_placeholder ? "Click here to add text" : "Text field", measure_only, &width,
                    &height, FALSE, nullptr, left, line_top, field_width);
                set_black(context);
                record(context, &area.status, {});
            }
            record(context, &area.field, {left, line_top, ceil_int(width), ceil_int(height)});
            line_top += ceil_int(height) + 10;
        }
    }
    return std::max(line_top + (pending ? pending_height + 10 : 0), title_bottom);
}

int ov_gfx_text_sheet_draw_framed_row(const OvGfxTextSheetContext *context, int y, ov_text_sheet_row *row,
                                      int column, int field_width, gboolean field_placeholder)
{
    g_return_val_if_fail(context != nullptr && row != nullptr, y);
    cairo_t *cr = context->cairo;
    const int frame_top = y + 1;
    if (row == context->highlighted_row && cr != nullptr) {
        const int bottom =
            ov_gfx_text_sheet_draw_row(context, y, row, column, field_width, field_placeholder, TRUE);
        cairo_set_source_rgb(cr, 0xE0 / 255.0, 0xE0 / 255.0, 0xE0 / 255.0);
        cairo_rectangle(cr, 26, frame_top, context->width - 52, bottom - frame_top);
        cairo_fill(cr);
        set_black(context);
    }
    const int bottom =
        ov_gfx_text_sheet_draw_row(context, y, row, column, field_width, field_placeholder, FALSE);
    if (cr != nullptr) {
        cairo_rectangle(cr, 25.5, frame_top - 0.5, context->width - 51, (bottom - frame_top) + 1);
        cairo_stroke(cr);
        cairo_move_to(cr, column + 26.5, frame_top);
        cairo_line_to(cr, column + 26.5, bottom);
        cairo_stroke(cr);
    }
    return bottom;
}

int ov_gfx_text_sheet_draw_segment(const OvGfxTextSheetContext *context, int y,
                                   ov_text_sheet_segment *segment, gboolean untitled_placeholder,
                                   gboolean field_placeholder)
{
    g_return_val_if_fail(context != nullptr && segment != nullptr, y);
    y = ov_gfx_text_sheet_draw_segment_header(context, y, segment, untitled_placeholder);
    if (segment->blocks.is_empty())
        return y + 25;
    for (ov_text_sheet_block *block : segment->blocks) {
        y = ov_gfx_text_sheet_draw_block_header(context, y, block);
        const int column = ov_gfx_text_sheet_get_title_column(context, block);
        const int field_width = ov_gfx_text_sheet_get_field_width(context, column);
        for (ov_text_sheet_row *row : block->rows)
            y = ov_gfx_text_sheet_draw_framed_row(context, y, row, column, field_width, field_placeholder);
    }
    return y + 25;
}

gboolean ov_gfx_text_sheet_rect_contains(const ov_text_sheet_rect *rectangle, int x, int y)
{
    g_return_val_if_fail(rectangle != nullptr, FALSE);
    return rectangle->width > 0 && rectangle->height > 0 && x >= rectangle->x &&
           x < rectangle->x + rectangle->width && y >= rectangle->y && y < rectangle->y + rectangle->height;
}

void ov_gfx_text_clean_up()
{
    for (PangoFontDescription *&font : fonts) {
        if (font != nullptr)
            pango_font_description_free(font);
        font = nullptr;
    }
    space_width = -1;
    space_height = -1;
}
