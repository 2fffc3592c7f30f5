// Keyboard focus positions on a page of a text sheet, in drawing order: "Add
// segments" or the "Basic data" title, then each segment's title, each
// block's title, each row followed by its fields. A position is a focusable
// piece of the page's layout and, in a row, a field; each position but the
// first stands for one multilingual text: a header, a label or a field's
// text.
#pragma once

#include "app/text_sheet_layout.h"

#include <cstddef>

namespace text_sheet_focus
{

using Kind = TextSheetLayout::Kind;

bool focusable(const TextSheetLayout &layout, const TextSheetLayout::Piece &piece);
// The node a piece stands for (its segment, block or row), null for "Add
// segments".
const void *node_of(const TextSheetLayout::Piece &piece);
bool row_has_field(const ov_text_sheet_row *row, const ov_text_sheet_field *field);
// The nearest focusable piece from index in the direction step (+1 or -1),
// index itself included; SIZE_MAX when there is none.
std::size_t focusable_from(const TextSheetLayout &layout, std::size_t index, int step);

// The nodes a piece's menu is opened for: its own level and those above.
struct FocusedNodes {
    ov_text_sheet_segment *segment = nullptr;
    ov_text_sheet_block *block = nullptr;
    ov_text_sheet_row *row = nullptr;
};
FocusedNodes focused_nodes(const TextSheetLayout::Piece &piece);

// The text a position stands for, or null.
const langstr *text_at(const TextSheetLayout::Piece &piece, const ov_text_sheet_field *field);
// The first position after (or before) the piece and field given whose text
// has no text of its own in the active language (its status symbol is
// yellow); positions without a text never count. start SIZE_MAX searches the
// whole page from its start (or end).
bool find_untranslated(const TextSheetLayout &layout, std::size_t start,
                       const ov_text_sheet_field *start_field, bool forward, std::size_t *found,
                       ov_text_sheet_field **found_field);

} // namespace text_sheet_focus
