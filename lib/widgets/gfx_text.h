// Drawing of text sheets and their multilingual texts.
#pragma once

#include <cairo.h>
#include <glib.h>

#include "lang/langstr.h"

// The translation status symbol of a multilingual text, 13 by 8 pixels with
// its top-left corner at (x, y): a frame with one filled square for a string
// with a translation and a second for two or more; yellow when the string
// has no text in the active language, grey otherwise.
void ov_gfx_text_draw_langstr_status_icon(cairo_t *cr, double x, double y, const langstr *ls, double opacity);
