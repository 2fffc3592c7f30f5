#include "docs/text_sheet.h"

namespace
{

// The three container levels differ only in their child type and member;
// these helpers do the shared work once.

template <class Node, class Child>
Node *new_container(const langstr *header, ov::SentinelList<Child> Node::*children)
{
    Node *node = new Node{};
    node->header = ov_langstr_clone(header);
    ov::list_init(node->*children);
    return node;
}

// Deep copy: header and every child, in order; hit area and links stay zero.
template <class Node, class Child, class CloneChild>
Node *clone_container(const Node *source, ov::SentinelList<Child> Node::*children, CloneChild clone_child)
{
    Node *copy = new_container(source->header, children);
    ov::list_clone_into(copy->*children, source->*children, clone_child);
    return copy;
}

template <class Node, class Child, class DestroyChild>
void destroy_container(Node *node, ov::SentinelList<Child> Node::*children, DestroyChild destroy_child)
{
    if (node == nullptr)
        return;
    ov::list_unlink(node);
    ov_langstr_free(node->header);
    ov::list_destroy(node->*children, destroy_child);
    delete node;
}

} // namespace

// Fields.

ov_text_sheet_field *ov_text_sheet_field_new(std::uint32_t kind)
{
    ov_text_sheet_field *field = new ov_text_sheet_field{};
    field->kind = kind;
    return field;
}

ov_text_sheet_field *ov_text_sheet_field_clone(const ov_text_sheet_field *field)
{
    g_return_val_if_fail(field != nullptr, nullptr);
    ov_text_sheet_field *copy = ov_text_sheet_field_new(field->kind);
    copy->text = ov_langstr_clone(field->text);
    copy->selected = field->selected;
    return copy;
}

void ov_text_sheet_field_remove(ov_text_sheet_field *field)
{
    g_return_if_fail(field != nullptr);
    ov::list_unlink(field);
}

void ov_text_sheet_field_destroy(ov_text_sheet_field *field)
{
    if (field == nullptr)
        return;
    ov::list_unlink(field);
    ov_langstr_free(field->text);
    delete field;
}

std::uint32_t ov_text_sheet_field_get_index(const ov_text_sheet_field *field)
{
    g_return_val_if_fail(field != nullptr, 0);
    return ov::list_index(field);
}

gboolean ov_text_sheet_field_move_up(ov_text_sheet_field *field)
{
    g_return_val_if_fail(field != nullptr, FALSE);
    return ov::list_move_up(field);
}

gboolean ov_text_sheet_field_move_down(ov_text_sheet_field *field)
{
    g_return_val_if_fail(field != nullptr, FALSE);
    return ov::list_move_down(field);
}

// Rows.

ov_text_sheet_row *ov_text_sheet_row_new(const langstr *header)
{
    return new_container(header, &ov_text_sheet_row::fields);
}

ov_text_sheet_row *ov_text_sheet_row_clone(const ov_text_sheet_row *row)
{
    g_return_val_if_fail(row != nullptr, nullptr);
    return clone_container(row, &ov_text_sheet_row::fields, ov_text_sheet_field_clone);
}

void ov_text_sheet_row_add_field(ov_text_sheet_row *row, ov_text_sheet_field *field)
{
    g_return_if_fail(row != nullptr && field != nullptr);
    ov::list_append(row->fields, field);
}

void ov_text_sheet_row_remove(ov_text_sheet_row *row)
{
    g_return_if_fail(row != nullptr);
    ov::list_unlink(row);
}

void ov_text_sheet_row_destroy(ov_text_sheet_row *row)
{
    destroy_container(row, &ov_text_sheet_row::fields, ov_text_sheet_field_destroy);
}

std::uint32_t ov_text_sheet_row_get_index(const ov_text_sheet_row *row)
{
    g_return_val_if_fail(row != nullptr, 0);
    return ov::list_index(row);
}

void ov_text_sheet_row_add_after(ov_text_sheet_row *row, ov_text_sheet_row *reference)
{
    g_return_if_fail(row != nullptr && reference != nullptr);
    ov::list_insert_after(row, reference);
}

void ov_text_sheet_row_add_before(ov_text_sheet_row *row, ov_text_sheet_row *reference)
{
    g_return_if_fail(row != nullptr && reference != nullptr);
    ov::list_insert_before(row, reference);
}

gboolean ov_text_sheet_row_move_up(ov_text_sheet_row *row)
{
    g_return_val_if_fail(row != nullptr, FALSE);
    return ov::list_move_up(row);
}

gboolean ov_text_sheet_row_move_down(ov_text_sheet_row *row)
{
    g_return_val_if_fail(row != nullptr, FALSE);
    return ov::list_move_down(row);
}

// Blocks.

ov_text_sheet_block *ov_text_sheet_block_new(const langstr *header)
{
    return new_container(header, &ov_text_sheet_block::rows);
}

ov_text_sheet_block *ov_text_sheet_block_clone(const ov_text_sheet_block *block)
{
    g_return_val_if_fail(block != nullptr, nullptr);
    return clone_container(block, &ov_text_sheet_block::rows, ov_text_sheet_row_clone);
}

void ov_text_sheet_block_add_row(ov_text_sheet_block *block, ov_text_sheet_row *row)
{
    g_return_if_fail(block != nullptr && row != nullptr);
    ov::list_append(block->rows, row);
}

void ov_text_sheet_block_remove(ov_text_sheet_block *block)
{
    g_return_if_fail(block != nullptr);
    ov::list_unlink(block);
}

void ov_text_sheet_block_destroy(ov_text_sheet_block *block)
{
    destroy_container(block, &ov_text_sheet_block::rows, ov_text_sheet_row_destroy);
}

std::uint32_t ov_text_sheet_block_get_index(const ov_text_sheet_block *block)
{
    g_return_val_if_fail(block != nullptr, 0);
    return ov::list_index(block);
}

void ov_text_sheet_block_add_after(ov_text_sheet_block *block, ov_text_sheet_block *reference)
{
    g_return_if_fail(block != nullptr && reference != nullptr);
    ov::list_insert_after(block, reference);
}

void ov_text_sheet_block_add_before(ov_text_sheet_block *block, ov_text_sheet_block *reference)
{
    g_return_if_fail(block != nullptr && reference != nullptr);
    ov::list_insert_before(block, reference);
}

gboolean ov_text_sheet_block_move_up(ov_text_sheet_block *block)
{
    g_return_val_if_fail(block != nullptr, FALSE);
    return ov::list_move_up(block);
}

gboolean ov_text_sheet_block_move_down(ov_text_sheet_block *block)
{
    g_return_val_if_fail(block != nullptr, FALSE);
    return ov::list_move_down(block);
}

// Segments.

ov_text_sheet_segment *ov_text_sheet_segment_new(const langstr *header)
{
    return new_container(header, &ov_text_sheet_segment::blocks);
}

ov_text_sheet_segment *ov_text_sheet_segment_clone(const ov_text_sheet_segment *segment)
{
    g_return_val_if_fail(segment != nullptr, nullptr);
    return clone_container(segment, &ov_text_sheet_segment::blocks, ov_text_sheet_block_clone);
}

void ov_text_sheet_segment_add_block(ov_text_sheet_segment *segment, ov_text_sheet_block *block)
{
    g_return_if_fail(segment != nullptr && block != nullptr);
    ov::list_append(segment->blocks, block);
}

void ov_text_sheet_segment_remove(ov_text_sheet_segment *segment)
{
    g_return_if_fail(segment != nullptr);
    ov::list_unlink(segment);
}

void ov_text_sheet_segment_destroy(ov_text_sheet_segment *segment)
{
    destroy_container(segment, &ov_text_sheet_segment::blocks, ov_text_sheet_block_destroy);
}

std::uint32_t ov_text_sheet_segment_get_index(const ov_text_sheet_segment *segment)
{
    g_return_val_if_fail(segment != nullptr, 0);
    return ov::list_index(segment);
}

void ov_text_sheet_segment_add_after(ov_text_sheet_segment *segment, ov_text_sheet_segment *reference)
{
    g_return_if_fail(segment != nullptr && reference != nullptr);
    ov::list_insert_after(segment, reference);
}

void ov_text_sheet_segment_add_before(ov_text_sheet_segment *segment, ov_text_sheet_segment *reference)
{
    g_return_if_fail(segment != nullptr && reference != nullptr);
    ov::list_insert_before(segment, reference);
}

gboolean ov_text_sheet_segment_move_up(ov_text_sheet_segment *segment)
{
    g_return_val_if_fail(segment != nullptr, FALSE);
    return ov::list_move_up(segment);
}

gboolean ov_text_sheet_segment_move_down(ov_text_sheet_segment *segment)
{
    g_return_val_if_fail(segment != nullptr, FALSE);
    return ov::list_move_down(segment);
}

gboolean ov_text_sheet_segment_has_contents(const ov_text_sheet_segment *segment)
{
    g_return_val_if_fail(segment != nullptr, FALSE);
    return !segment->blocks.is_empty();
}

void ov_text_sheet_segment_copy_contents(ov_text_sheet_segment *destination,
                                         const ov_text_sheet_segment *source)
{
    g_return_if_fail(destination != nullptr && source != nullptr);
    ov::list_clone_into(destination->blocks, source->blocks, ov_text_sheet_block_clone);
}

// Segment lists.

void ov_text_sheet_segment_list_init(ov_text_sheet_segment_list *list)
{
    g_return_if_fail(list != nullptr);
    ov::list_init(*list);
}

void ov_text_sheet_segment_list_clear(ov_text_sheet_segment_list *list)
{
    g_return_if_fail(list != nullptr);
    ov::list_destroy(*list, ov_text_sheet_segment_destroy);
}

void ov_text_sheet_add_segment(ov_text_sheet_segment_list *list, ov_text_sheet_segment *segment)
{
    g_return_if_fail(list != nullptr && segment != nullptr);
    ov::list_append(*list, segment);
}

gboolean ov_text_sheet_has_segments(const ov_text_sheet_segment_list *list)
{
    g_return_val_if_fail(list != nullptr, FALSE);
    return !list->is_empty();
}

void ov_text_sheet_copy_segments(ov_text_sheet_segment_list *destination,
                                 const ov_text_sheet_segment_list *source)
{
    g_return_if_fail(destination != nullptr && source != nullptr);
    ov::list_clone_into(*destination, *source, ov_text_sheet_segment_clone);
}

// Text sheets.

ov_text_sheet *ov_text_sheet_new()
{
    ov_text_sheet *sheet = new ov_text_sheet{};
    sheet->leading_segment = ov_text_sheet_segment_new(nullptr);
    ov::list_init(sheet->segments);
    return sheet;
}

void ov_text_sheet_destroy(ov_text_sheet *sheet)
{
    if (sheet == nullptr)
        return;
    ov_text_sheet_segment_destroy(sheet->leading_segment);
    ov::list_destroy(sheet->segments, ov_text_sheet_segment_destroy);
    delete sheet;
}
