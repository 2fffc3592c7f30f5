#include "app/text_sheet_layout.h"

#include <algorithm>
#include <utility>

namespace
{

// Text may reach a little beyond its piece (a large header is drawn above its
// top, glyphs overhang their lines), so pieces this close to the clip are
// painted too, in their order, which keeps every pixel as a full draw makes it.
constexpr int paint_margin = 64;
constexpr int segment_end_height = 25;
constexpr int default_header_height = 45;
constexpr int default_row_height = 50;
constexpr const char *basic_data_title = "Basic data";

std::uint32_t new_stamp()
{
    static std::uint32_t last = 0;
    if (++last == 0)
        ++last;
    return last;
}

// A measurement context: nothing painted, nothing recorded, and the texts
// converted without filling the cache, which is for what is on screen.
OvGfxTextSheetContext measuring(const OvGfxTextSheetContext *context)
{
    OvGfxTextSheetContext result = *context;
    result.cairo = nullptr;
    result.record_rectangles = FALSE;
    result.texts = nullptr;
    return result;
}

} // namespace

TextSheetLayout::TextSheetLayout(ov_template *tmpl, ov_template_report_type *report_type)
    : template_(tmpl), report_type_(report_type), stamp_(new_stamp())
{
    rebuild();
}

void TextSheetLayout::add_segment(ov_text_sheet_segment *segment)
{
    auto estimate = [](std::int32_t old, int fallback) { return old > 0 ? old : fallback; };
    const int row_estimate =
        measured_row_count_ > 0 ? int(measured_row_total_ / measured_row_count_) : default_row_height;
    const bool header_known = segment->hit_area.layout_stamp == stamp_;
    const int header_fallback = is_basic_data() && segment->header == nullptr ? 0 : default_header_height;
    pieces_.push_back(
        {Kind::segment_header, header_known, 0,
         header_known ? segment->hit_area.height : estimate(segment->hit_area.height, header_fallback),
         segment, nullptr, nullptr});
    for (ov_text_sheet_block *block : segment->blocks) {
        bool known = block->hit_area.layout_stamp == stamp_;
        for (const ov_text_sheet_row *row : block->rows)
            known = known && row->hit_area.layout_stamp == stamp_;
        pieces_.push_back(
            {Kind::block_header, known, 0,
             known ? block->hit_area.height : estimate(block->hit_area.height, default_header_height),
             segment, block, nullptr});
        for (ov_text_sheet_row *row : block->rows)
            pieces_.push_back({Kind::row, known, 0,
                               known ? row->hit_area.height : estimate(row->hit_area.height, row_estimate),
                               segment, block, row});
    }
    pieces_.push_back({Kind::segment_end, true, 0, segment_end_height, segment, nullptr, nullptr});
}

void TextSheetLayout::rebuild()
{
    pieces_.clear();
    const bool header_known = header_stamp_ == stamp_;
    const int header_height = header_height_ > 0 ? header_height_ : default_header_height;
    if (report_type_ != nullptr) {
        pieces_.push_back({Kind::add_segments, header_known, 0, header_height, nullptr, nullptr, nullptr});
        bool first = true;
        for (ov_text_sheet_segment *segment : report_type_->segments) {
            if (!std::exchange(first, false))
                pieces_.push_back({Kind::separator, true, 0, 1, segment, nullptr, nullptr});
            add_segment(segment);
        }
    } else {
        pieces_.push_back(
            {Kind::basic_data_header, header_known, 0, header_height, template_->details, nullptr, nullptr});
        add_segment(template_->details);
    }
    unmeasured_ = std::count_if(pieces_.begin(), pieces_.end(), [](const Piece &p) { return !p.measured; });
    scan_from_ = 0;
    place();
}

void TextSheetLayout::invalidate_all()
{
    stamp_ = new_stamp();
    unmeasured_ = 0;
    for (Piece &piece : pieces_) {
        piece.measured = piece.kind == Kind::separator || piece.kind == Kind::segment_end;
        unmeasured_ += piece.measured ? 0 : 1;
    }
    scan_from_ = 0;
}

void TextSheetLayout::place()
{
    std::int32_t y = 0;
    for (Piece &piece : pieces_) {
        piece.y = y;
        y += piece.height;
    }
}

int TextSheetLayout::content_height() const
{
    return pieces_.empty() ? 0 : pieces_.back().y + pieces_.back().height;
}

std::size_t TextSheetLayout::piece_at(int y) const
{
    auto found = std::partition_point(pieces_.begin(), pieces_.end(),
                                      [y](const Piece &p) { return p.y + p.height <= y; });
    return std::size_t(found - pieces_.begin());
}

void TextSheetLayout::measure_piece(const OvGfxTextSheetContext *context, std::size_t index)
{
    const OvGfxTextSheetContext m = measuring(context);
    auto settle = [this](Piece &piece, int height) {
        piece.height = height;
        if (!piece.measured) {
            piece.measured = true;
            --unmeasured_;
        }
    };
    Piece &piece = pieces_[index];
    switch (piece.kind) {
    case Kind::add_segments:
    case Kind::basic_data_header:
        header_height_ =
            piece.kind == Kind::add_segments
                ? ov_gfx_text_sheet_draw_add_segments(&m, 0, nullptr)
                : ov_gfx_text_sheet_draw_large_utf8_header(&m, 25, basic_data_title, TRUE, nullptr);
        header_stamp_ = stamp_;
        settle(piece, header_height_);
        break;
    case Kind::segment_header: {
        ov_text_sheet_hit_area &area = piece.segment->hit_area;
        area.height = ov_gfx_text_sheet_draw_segment_header(&m, 0, piece.segment, !is_basic_data());
        area.layout_stamp = stamp_;
        settle(piece, area.height);
        break;
    }
    case Kind::row: {
        std::size_t header = index;
        while (pieces_[header].kind != Kind::block_header)
            --header;
        measure_piece(context, header);
        break;
    }
    case Kind::block_header: {
        ov_text_sheet_block *block = piece.block;
        ov_text_sheet_hit_area &area = block->hit_area;
        area.height = ov_gfx_text_sheet_draw_block_header(&m, 0, block);
        area.column = ov_gfx_text_sheet_get_title_column(&m, block);
        area.layout_stamp = stamp_;
        settle(piece, area.height);
        const int field_width = ov_gfx_text_sheet_get_field_width(&m, area.column);
        for (std::size_t i = index + 1; i < pieces_.size() && pieces_[i].kind == Kind::row; ++i) {
            ov_text_sheet_row *row = pieces_[i].row;
            row->hit_area.height =
                ov_gfx_text_sheet_draw_framed_row(&m, 0, row, area.column, field_width, FALSE);
            row->hit_area.layout_stamp = stamp_;
            measured_row_total_ += row->hit_area.height;
            ++measured_row_count_;
            settle(pieces_[i], row->hit_area.height);
        }
        break;
    }
    case Kind::separator:
    case Kind::segment_end:
        break;
    }
}

bool TextSheetLayout::measure_range(const OvGfxTextSheetContext *context, int top, int bottom)
{
    bool any = false;
    for (;;) {
        bool changed = false;
        for (std::size_t i = piece_at(top - paint_margin);
             i < pieces_.size() && pieces_[i].y < bottom + paint_margin; ++i) {
            if (!pieces_[i].measured) {
                measure_piece(context, i);
                changed = true;
            }
        }
        if (!changed)
            return any;
        any = true;
        place();
    }
}

bool TextSheetLayout::measure_some(const OvGfxTextSheetContext *context, gint64 budget_us)
{
    const gint64 start = g_get_monotonic_time();
    bool measured = false;
    while (scan_from_ < pieces_.size()) {
        if (!pieces_[scan_from_].measured) {
            measure_piece(context, scan_from_);
            measured = true;
            if (g_get_monotonic_time() - start >= budget_us)
                break;
        }
        ++scan_from_;
    }
    if (measured)
        place();
    return unmeasured_ > 0;
}

void TextSheetLayout::paint_piece(const OvGfxTextSheetContext *context, const Piece &piece, int y,
                                  ov_text_sheet_rect *add_segments_rectangle) const
{
    switch (piece.kind) {
    case Kind::add_segments:
        ov_gfx_text_sheet_draw_add_segments(context, y, add_segments_rectangle);
        break;
    case Kind::basic_data_header:
        ov_gfx_text_sheet_draw_large_utf8_header(context, y + 25, basic_data_title, TRUE,
                                                 &template_->details->hit_area.menu);
        break;
    case Kind::segment_header:
        ov_gfx_text_sheet_draw_segment_header(context, y, piece.segment, !is_basic_data());
        break;
    case Kind::block_header:
        ov_gfx_text_sheet_draw_block_header(context, y, piece.block);
        break;
    case Kind::row: {
        const int column = piece.block->hit_area.column;
        ov_gfx_text_sheet_draw_framed_row(context, y, piece.row, column,
                                          ov_gfx_text_sheet_get_field_width(context, column), FALSE);
        break;
    }
    case Kind::separator:
        ov_gfx_text_sheet_draw_separator(context, y, TRUE);
        break;
    case Kind::segment_end:
        break;
    }
}

void TextSheetLayout::paint(const OvGfxTextSheetContext *context, int offset, int top, int bottom,
                            ov_text_sheet_rect *add_segments_rectangle) const
{
    for (std::size_t i = piece_at(offset + top - paint_margin);
         i < pieces_.size() && pieces_[i].y < offset + bottom + paint_margin; ++i)
        paint_piece(context, pieces_[i], pieces_[i].y - offset, add_segments_rectangle);
}

std::pair<std::size_t, std::size_t>
TextSheetLayout::record_around(const OvGfxTextSheetContext *context, int offset, int y,
                               ov_text_sheet_rect *add_segments_rectangle) const
{
    OvGfxTextSheetContext recording = *context;
    recording.cairo = nullptr;
    recording.record_rectangles = TRUE;
    const std::size_t at = piece_at(offset + y);
    const std::size_t first = at >= 2 ? at - 2 : 0;
    const std::size_t last = std::min(pieces_.size(), at + 3);
    for (std::size_t i = first; i < last; ++i)
        paint_piece(&recording, pieces_[i], pieces_[i].y - offset, add_segments_rectangle);
    return {first, last};
}
