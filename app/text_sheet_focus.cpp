#include "app/text_sheet_focus.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace text_sheet_focus
{

bool focusable(const TextSheetLayout &layout, const TextSheetLayout::Piece &piece)
{
    switch (piece.kind) {
    case Kind::add_segments:
    case Kind::basic_data_header:
    case Kind::block_header:
    case Kind::row:
        return true;
    case Kind::segment_header:
        return !layout.is_basic_data();
    default:
        return false;
    }
}

const void *node_of(const TextSheetLayout::Piece &piece)
{
    switch (piece.kind) {
    case Kind::basic_data_header:
    case Kind::segment_header:
        return piece.segment;
    case Kind::block_header:
        return piece.block;
    case Kind::row:
        return piece.row;
    default:
        return nullptr;
    }
}

bool row_has_field(const ov_text_sheet_row *row, const ov_text_sheet_field *field)
{
    for (const ov_text_sheet_field *f : row->fields)
        if (f == field)
            return true;
    return false;
}

std::size_t focusable_from(const TextSheetLayout &layout, std::size_t index, int step)
{
    const auto &pieces = layout.pieces();
    for (std::size_t i = index; i < pieces.size(); i += std::size_t(std::ptrdiff_t(step)))
        if (focusable(layout, pieces[i]))
            return i;
    return SIZE_MAX;
}

FocusedNodes focused_nodes(const TextSheetLayout::Piece &piece)
{
    switch (piece.kind) {
    case Kind::basic_data_header:
    case Kind::segment_header:
        return {piece.segment, nullptr, nullptr};
    case Kind::block_header:
        return {piece.segment, piece.block, nullptr};
    case Kind::row:
        return {piece.segment, piece.block, piece.row};
    default:
        return {};
    }
}

namespace
{

bool untranslated(const langstr *text)
{
    return text != nullptr && ov_langstr_get_text_for_locale_or_language(text, nullptr) == nullptr;
}

} // namespace

const langstr *text_at(const TextSheetLayout::Piece &piece, const ov_text_sheet_field *field)
{
    if (field != nullptr)
        return field->text;
    switch (piece.kind) {
    case Kind::segment_header:
        return piece.segment->header;
    case Kind::block_header:
        return piece.block->header;
    case Kind::row:
        return piece.row->header;
    default:
        return nullptr;
    }
}

bool find_untranslated(const TextSheetLayout &layout, std::size_t start,
                       const ov_text_sheet_field *start_field, bool forward, std::size_t *found,
                       ov_text_sheet_field **found_field)
{
    const auto &pieces = layout.pieces();
    if (pieces.empty())
        return false;
    // Positions of one piece in order: the piece, then its fields.
    auto check_piece = [&](std::size_t i, const ov_text_sheet_field *after, bool skip_piece) {
        const auto &piece = pieces[i];
        if (!focusable(layout, piece))
            return false;
        std::vector<ov_text_sheet_field *> positions{nullptr};
        if (piece.kind == Kind::row)
            for (ov_text_sheet_field *f : piece.row->fields)
                positions.push_back(f);
        if (!forward)
            std::reverse(positions.begin(), positions.end());
        bool passed = !skip_piece;
        for (ov_text_sheet_field *f : positions) {
            if (passed && untranslated(text_at(piece, f))) {
                *found = i;
                *found_field = f;
                return true;
            }
            if (!passed && f == after)
                passed = true;
        }
        return false;
    };
    const bool whole = start == SIZE_MAX;
    std::size_t i = whole ? (forward ? 0 : pieces.size() - 1) : start;
    for (bool first = !whole;; first = false) {
        if (check_piece(i, start_field, first))
            return true;
        if (forward ? i + 1 >= pieces.size() : i == 0)
            return false;
        i = forward ? i + 1 : i - 1;
    }
}

} // namespace text_sheet_focus
