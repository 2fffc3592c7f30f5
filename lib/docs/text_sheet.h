// The text sheet: the structured form that the person examining an object
// fills in. Segments hold blocks, blocks hold rows, rows hold fields (text
// fields and checkboxes). Every heading and field text is a multilingual
// string owned by its node.
//
// Siblings live in a list with a head and a tail sentinel of the same record
// type (core/list.h); a node in no list has both links null. Nodes have no
// parent link: a node finds its index by walking back to the head.
#pragma once

#include "core/list.h"
#include "lang/langstr.h"

#include <glib.h>

#include <cstdint>

// A rectangle in widget pixels; one with no area never matches a point.
struct ov_text_sheet_rect {
    std::int32_t x;
    std::int32_t y;
    std::int32_t width;
    std::int32_t height;
};

// Where the text sheet editor last drew a row, block or segment and where
// its clickable spots are, and the node's measured size that the editor
// keeps between draws. The drawing code fills it; the model only zeroes it on
// creation and never copies it, so a new or cloned node is never taken for a
// measured one.
struct ov_text_sheet_hit_area {
    ov_text_sheet_rect menu;   // the node's menu icon
    ov_text_sheet_rect status; // the translation status symbol of its header
    std::int32_t top;          // a segment's or block's top y
    // Layout kept by the editor between draws, valid while layout_stamp is
    // the editor's current stamp (never 0): the height of a segment's header,
    // of a block's header or of a row, and a block's title column.
    std::uint32_t layout_stamp;
    std::int32_t height;
    std::int32_t column;
};

// A field's part of the same: it has no menu and no layout of its own, and
// there are as many fields as rows, so it stays small.
struct ov_text_sheet_field_hit_area {
    ov_text_sheet_rect status; // the translation status symbol of its text
    ov_text_sheet_rect field;  // the checkbox image or the whole text
};

enum : std::uint32_t {
    OV_TEXT_SHEET_FIELD_KIND_TEXT_FIELD = 0,
    OV_TEXT_SHEET_FIELD_KIND_CHECKBOX = 1,
};

struct ov_text_sheet_field {
    std::uint32_t kind;
    // A text field's pre-filled contents, or a checkbox's label.
    langstr *text;
    // Checkboxes only: ticked in advance.
    gboolean selected;
    ov_text_sheet_field_hit_area hit_area;
    ov_text_sheet_field *previous;
    ov_text_sheet_field *next;
};

struct ov_text_sheet_row {
    langstr *header;
    ov::SentinelList<ov_text_sheet_field> fields;
    ov_text_sheet_hit_area hit_area;
    ov_text_sheet_row *previous;
    ov_text_sheet_row *next;
};

struct ov_text_sheet_block {
    langstr *header;
    ov::SentinelList<ov_text_sheet_row> rows;
    ov_text_sheet_hit_area hit_area;
    ov_text_sheet_block *previous;
    ov_text_sheet_block *next;
};

struct ov_text_sheet_segment {
    langstr *header;
    ov::SentinelList<ov_text_sheet_block> blocks;
    ov_text_sheet_hit_area hit_area;
    ov_text_sheet_segment *previous;
    ov_text_sheet_segment *next;
};

// An ordered list of segments. Text sheets and the report types of a
// template both hold one, and the segment-list functions below serve either.
using ov_text_sheet_segment_list = ov::SentinelList<ov_text_sheet_segment>;

// The text sheet of a report document.
struct ov_text_sheet {
    // The report's basic data blocks; not in the segment list.
    ov_text_sheet_segment *leading_segment;
    // The condition part.
    ov_text_sheet_segment_list segments;
};

// Fields.
ov_text_sheet_field *ov_text_sheet_field_new(std::uint32_t kind);
ov_text_sheet_field *ov_text_sheet_field_clone(const ov_text_sheet_field *field);
void ov_text_sheet_field_remove(ov_text_sheet_field *field);
void ov_text_sheet_field_destroy(ov_text_sheet_field *field);
std::uint32_t ov_text_sheet_field_get_index(const ov_text_sheet_field *field);
gboolean ov_text_sheet_field_move_up(ov_text_sheet_field *field);
gboolean ov_text_sheet_field_move_down(ov_text_sheet_field *field);

// Rows. The header is cloned; the caller keeps its own.
ov_text_sheet_row *ov_text_sheet_row_new(const langstr *header);
ov_text_sheet_row *ov_text_sheet_row_clone(const ov_text_sheet_row *row);
void ov_text_sheet_row_add_field(ov_text_sheet_row *row, ov_text_sheet_field *field);
void ov_text_sheet_row_remove(ov_text_sheet_row *row);
void ov_text_sheet_row_destroy(ov_text_sheet_row *row);
std::uint32_t ov_text_sheet_row_get_index(const ov_text_sheet_row *row);
void ov_text_sheet_row_add_after(ov_text_sheet_row *row, ov_text_sheet_row *reference);
void ov_text_sheet_row_add_before(ov_text_sheet_row *row, ov_text_sheet_row *reference);
gboolean ov_text_sheet_row_move_up(ov_text_sheet_row *row);
gboolean ov_text_sheet_row_move_down(ov_text_sheet_row *row);

// Blocks.
ov_text_sheet_block *ov_text_sheet_block_new(const langstr *header);
ov_text_sheet_block *ov_text_sheet_block_clone(const ov_text_sheet_block *block);
void ov_text_sheet_block_add_row(ov_text_sheet_block *block, ov_text_sheet_row *row);
void ov_text_sheet_block_remove(ov_text_sheet_block *block);
void ov_text_sheet_block_destroy(ov_text_sheet_block *block);
std::uint32_t ov_text_sheet_block_get_index(const ov_text_sheet_block *block);
void ov_text_sheet_block_add_after(ov_text_sheet_block *block, ov_text_sheet_block *reference);
void ov_text_sheet_block_add_before(ov_text_sheet_block *block, ov_text_sheet_block *reference);
gboolean ov_text_sheet_block_move_up(ov_text_sheet_block *block);
gboolean ov_text_sheet_block_move_down(ov_text_sheet_block *block);

// Segments.
ov_text_sheet_segment *ov_text_sheet_segment_new(const langstr *header);
ov_text_sheet_segment *ov_text_sheet_segment_clone(const ov_text_sheet_segment *segment);
void ov_text_sheet_segment_add_block(ov_text_sheet_segment *segment, ov_text_sheet_block *block);
void ov_text_sheet_segment_remove(ov_text_sheet_segment *segment);
void ov_text_sheet_segment_destroy(ov_text_sheet_segment *segment);
std::uint32_t ov_text_sheet_segment_get_index(const ov_text_sheet_segment *segment);
void ov_text_sheet_segment_add_after(ov_text_sheet_segment *segment, ov_text_sheet_segment *reference);
void ov_text_sheet_segment_add_before(ov_text_sheet_segment *segment, ov_text_sheet_segment *reference);
gboolean ov_text_sheet_segment_move_up(ov_text_sheet_segment *segment);
gboolean ov_text_sheet_segment_move_down(ov_text_sheet_segment *segment);
// TRUE when the segment has at least one block.
gboolean ov_text_sheet_segment_has_contents(const ov_text_sheet_segment *segment);
// Appends a clone of every block of source to destination; destination's
// header and blocks are kept.
void ov_text_sheet_segment_copy_contents(ov_text_sheet_segment *destination,
                                         const ov_text_sheet_segment *source);

// Segment lists, of a text sheet or of a template's report type.
// Allocates the sentinels of an empty list.
void ov_text_sheet_segment_list_init(ov_text_sheet_segment_list *list);
// Destroys every segment and frees the sentinels.
void ov_text_sheet_segment_list_clear(ov_text_sheet_segment_list *list);
void ov_text_sheet_add_segment(ov_text_sheet_segment_list *list, ov_text_sheet_segment *segment);
// TRUE when the list has at least one segment.
gboolean ov_text_sheet_has_segments(const ov_text_sheet_segment_list *list);
// Appends a clone of every segment of source, in order, to destination.
void ov_text_sheet_copy_segments(ov_text_sheet_segment_list *destination,
                                 const ov_text_sheet_segment_list *source);

// Text sheets.
ov_text_sheet *ov_text_sheet_new();
void ov_text_sheet_destroy(ov_text_sheet *sheet);
