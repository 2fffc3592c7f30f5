// Drawing of text sheets and their multilingual texts.
//
// The text sheet routines lay out and paint one piece of a sheet at a top y
// and return the next free y, recording the clickable rectangles of what
// they draw in the nodes' hit areas. Every size is a whole number of pixels,
// so a piece drawn at y + d looks exactly like the same piece at y moved
// down by d: the editor widget measures pieces once and paints only those on
// screen.
#pragma once

#include <cairo.h>
#include <glib.h>
#include <gtk/gtk.h>

#include <cstdint>

#include "docs/text_sheet.h"
#include "lang/langstr.h"

// The translation status symbol of a multilingual text, 13 by 8 pixels with
// its top-left corner at (x, y): a frame with one filled square for a string
// with a translation and a second for two or more; yellow when the string
// has no text in the active language, grey otherwise.
void ov_gfx_text_draw_langstr_status_icon(cairo_t *cr, double x, double y, const langstr *ls, double opacity);

// UTF-8 forms of multilingual texts in the active language, converted once
// and kept until cleared: on a new active language, and whenever a text may
// have been replaced (a freed text's address may come back for another).
// It holds a few thousand texts and starts afresh when full.
struct OvGfxTextCache;
OvGfxTextCache *ov_gfx_text_cache_new();
void ov_gfx_text_cache_destroy(OvGfxTextCache *cache); // null is a no-op
void ov_gfx_text_cache_clear(OvGfxTextCache *cache);
// Bytes held, roughly: texts and their table entries.
gsize ov_gfx_text_cache_get_size(const OvGfxTextCache *cache);

// Text styles: plain, bold, italic, and large bold for segment headers.
enum OvGfxTextStyle : int {
    OV_GFX_TEXT_STYLE_PLAIN = 0,
    OV_GFX_TEXT_STYLE_BOLD = 1,
    OV_GFX_TEXT_STYLE_ITALIC = 2,
    OV_GFX_TEXT_STYLE_LARGE = 3,
};

// What the routines draw with and into.
struct OvGfxTextSheetContext {
    GtkWidget *widget; // source of the Pango context
    cairo_t *cairo;    // null: nothing is painted, pieces are only measured and recorded
    std::int32_t width;
    ov_text_sheet_row *highlighted_row; // shown with a grey background, or null
    gboolean record_rectangles;         // store hit rectangles into the model
    gboolean editing;                   // menu icons and grey placeholders
    OvGfxTextCache *texts;              // may be null: texts are converted on each use
};

// The space unit: the size of "T" in the plain style, in whole pixels.
int ov_gfx_text_sheet_get_plain_space_width(const OvGfxTextSheetContext *context);
int ov_gfx_text_sheet_get_plain_space_height(const OvGfxTextSheetContext *context);

// One text in a style with its top-left corner at (x, y + 1), wrapped at
// max_width (-1: unlimited), in the current cairo colour. With the menu icon
// the icon follows the text and its rectangle goes to icon_rectangle (when
// rectangles are recorded). A multilingual text is followed by its status
// symbol, whose rectangle goes to status_rectangle. The measured size covers
// text, symbol and icon. Nothing is painted when measure_only is set.
void ov_gfx_text_sheet_draw_utf8_text_block(const OvGfxTextSheetContext *context, int style, const char *text,
                                            gboolean measure_only, double *width, double *height,
                                            gboolean with_menu_icon, ov_text_sheet_rect *icon_rectangle,
                                            int x, int y, int max_width);
void ov_gfx_text_sheet_draw_latin1_text_block(const OvGfxTextSheetContext *context, int style,
                                              const char *text, gboolean measure_only, double *width,
                                              double *height, gboolean with_menu_icon,
                                              ov_text_sheet_rect *icon_rectangle, int x, int y,
                                              int max_width);
void ov_gfx_text_sheet_draw_langstr_text_block(const OvGfxTextSheetContext *context, int style,
                                               const langstr *text, gboolean measure_only, double *width,
                                               double *height, gboolean with_menu_icon,
                                               ov_text_sheet_rect *icon_rectangle,
                                               ov_text_sheet_rect *status_rectangle, int x, int y,
                                               int max_width);

// "Add segments" in grey at the right, with its menu icon.
int ov_gfx_text_sheet_draw_add_segments(const OvGfxTextSheetContext *context, int y,
                                        ov_text_sheet_rect *rectangle);
// A page header in the large style.
int ov_gfx_text_sheet_draw_large_utf8_header(const OvGfxTextSheetContext *context, int y, const char *text,
                                             gboolean with_menu_icon, ov_text_sheet_rect *icon_rectangle);
int ov_gfx_text_sheet_draw_large_latin1_header(const OvGfxTextSheetContext *context, int y, const char *text,
                                               gboolean with_menu_icon, ov_text_sheet_rect *icon_rectangle);
int ov_gfx_text_sheet_draw_large_langstr_header(const OvGfxTextSheetContext *context, int y,
                                                const langstr *text, gboolean with_menu_icon,
                                                ov_text_sheet_rect *icon_rectangle,
                                                ov_text_sheet_rect *status_rectangle);
// A whole segment: its header (or "Untitled segment" with the untitled
// placeholder), its blocks and their framed rows. The field placeholder
// shows "Click here to add text" in empty text fields instead of "Text field".
int ov_gfx_text_sheet_draw_segment(const OvGfxTextSheetContext *context, int y,
                                   ov_text_sheet_segment *segment, gboolean untitled_placeholder,
                                   gboolean field_placeholder);
// A grey line across the width, dotted or dashed.
int ov_gfx_text_sheet_draw_separator(const OvGfxTextSheetContext *context, int y, gboolean dotted);

// The pieces of a segment, in the order ov_gfx_text_sheet_draw_segment
// draws them: the header, and for each block its header and its framed rows;
// a segment ends 25 pixels below its last piece.
int ov_gfx_text_sheet_draw_segment_header(const OvGfxTextSheetContext *context, int y,
                                          ov_text_sheet_segment *segment, gboolean untitled_placeholder);
int ov_gfx_text_sheet_draw_block_header(const OvGfxTextSheetContext *context, int y,
                                        ov_text_sheet_block *block);
// The width of a block's title column, from its widest row title.
int ov_gfx_text_sheet_get_title_column(const OvGfxTextSheetContext *context,
                                       const ov_text_sheet_block *block);
int ov_gfx_text_sheet_get_field_width(const OvGfxTextSheetContext *context, int column);
// A row drawn from y (the previous row's bottom) with its frame, its column
// line and, when highlighted, its grey background; returns its bottom.
int ov_gfx_text_sheet_draw_framed_row(const OvGfxTextSheetContext *context, int y, ov_text_sheet_row *row,
                                      int column, int field_width, gboolean field_placeholder);
// A row's title and fields without the frame.
int ov_gfx_text_sheet_draw_row(const OvGfxTextSheetContext *context, int y, ov_text_sheet_row *row,
                               int column, int field_width, gboolean field_placeholder,
                               gboolean measure_only);

// TRUE when the point is inside the rectangle.
gboolean ov_gfx_text_sheet_rect_contains(const ov_text_sheet_rect *rectangle, int x, int y);

// Frees the cached fonts and space unit (at shutdown).
void ov_gfx_text_clean_up();
