// The vertical layout of one page of a text sheet, kept between draws.
//
// A page is a column of pieces: "Add segments" or the "Basic data" header,
// then for each segment its header, each block's header and its framed rows,
// and the gaps and separators between them. Each piece knows its top y
// and height in page coordinates (offset 0); pieces are measured with the
// text sheet drawing routines and their sizes kept in the nodes' hit areas
// under a stamp that changes with the width and the active language.
// Unmeasured pieces carry an estimate until they are measured: those on
// screen at once, the rest a little at a time from an idle handler.
#pragma once

#include "docs/template.h"
#include "widgets/gfx_text.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

class TextSheetLayout
{
  public:
    enum class Kind : std::uint8_t {
        add_segments,
        basic_data_header,
        segment_header,
        block_header,
        row,
        separator,
        segment_end,
    };
    struct Piece {
        Kind kind;
        bool measured;
        std::int32_t y;
        std::int32_t height;
        ov_text_sheet_segment *segment;
        ov_text_sheet_block *block; // block headers and rows
        ov_text_sheet_row *row;     // rows
    };

    // The page of the report type, or the basic data page without one.
    TextSheetLayout(ov_template *tmpl, ov_template_report_type *report_type);

    // The sheet's structure changed: pieces are listed anew, keeping the
    // sizes of nodes measured under the current stamp.
    void rebuild();
    // Width or language changed: every size is measured again (the old ones
    // stay as estimates until then).
    void invalidate_all();

    // Measures the unmeasured pieces that meet [top, bottom) until all of
    // them are measured; TRUE if any size changed.
    bool measure_range(const OvGfxTextSheetContext *context, int top, int bottom);
    // Measures unmeasured pieces from the top for about budget_us
    // microseconds; TRUE while some remain.
    bool measure_some(const OvGfxTextSheetContext *context, gint64 budget_us);
    bool fully_measured() const { return unmeasured_ == 0; }

    // Paints the pieces that may reach into [top, bottom) of a view scrolled
    // down by offset, recording their hit rectangles as they are drawn.
    void paint(const OvGfxTextSheetContext *context, int offset, int top, int bottom,
               ov_text_sheet_rect *add_segments_rectangle) const;
    // Records, without painting, the hit rectangles of the pieces around
    // view y and of the headers above them; returns the index range
    // [first, last) of the pieces around y.
    std::pair<std::size_t, std::size_t> record_around(const OvGfxTextSheetContext *context, int offset, int y,
                                                      ov_text_sheet_rect *add_segments_rectangle) const;

    int content_height() const;
    // The first piece whose bottom is below y (page coordinates).
    std::size_t piece_at(int y) const;
    const std::vector<Piece> &pieces() const { return pieces_; }
    bool is_basic_data() const { return report_type_ == nullptr; }
    // Bytes held by the piece list.
    std::size_t memory_size() const { return pieces_.capacity() * sizeof(Piece); }

  private:
    void measure_piece(const OvGfxTextSheetContext *context, std::size_t index);
    void place();
    void paint_piece(const OvGfxTextSheetContext *context, const Piece &piece, int y,
                     ov_text_sheet_rect *add_segments_rectangle) const;
    void add_segment(ov_text_sheet_segment *segment);

    ov_template *template_;
    ov_template_report_type *report_type_;
    std::vector<Piece> pieces_;
    std::uint32_t stamp_;
    std::size_t unmeasured_ = 0;
    std::size_t scan_from_ = 0;
    // Sizes of the page header, which has no node of its own.
    std::uint32_t header_stamp_ = 0;
    std::int32_t header_height_ = 0;
    // Estimates from what has been measured so far.
    std::int64_t measured_row_total_ = 0;
    std::int64_t measured_row_count_ = 0;
};
