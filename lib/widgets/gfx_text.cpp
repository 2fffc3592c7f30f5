#include "widgets/gfx_text.h"

#include "core/raii.h"

namespace
{

struct Rect {
    int x, y, width, height;
};

// The frame of the symbol, relative to its top-left corner.
constexpr Rect frame_parts[] = {{0, 0, 13, 1}, {0, 7, 13, 1}, {0, 1, 1, 6}, {12, 1, 1, 6}};
constexpr Rect first_square = {2, 2, 4, 4};
constexpr Rect second_square = {7, 2, 4, 4};

void add_rect(cairo_t *cr, double x, double y, const Rect &r)
{
    cairo_rectangle(cr, x + r.x, y + r.y, r.width, r.height);
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
