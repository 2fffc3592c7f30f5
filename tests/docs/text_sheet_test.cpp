#include "docs/text_sheet.h"

#include "core/raii.h"
#include "lang/locale.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <string>

namespace
{

using LangstrPtr = ov::Owned<langstr, ov_langstr_free>;

LangstrPtr make_text(const char *uk_english)
{
    langstr *ls = nullptr;
    ov_langstr_set_translation(&ls, ov_locale_get_uk_english(), uk_english);
    return LangstrPtr(ls);
}

std::string text_of(const langstr *ls)
{
    const char *text = ov_langstr_get_text_for_locale(ls, ov_locale_get_uk_english());
    return text != nullptr ? text : "-";
}

// A clone is unlinked, has no hit area and a label of its own.
template <class Node>
void check_clone(Node *node, langstr *Node::*label, Node *(*clone)(const Node *), void (*destroy)(Node *))
{
    std::memset(&node->hit_area, 1, sizeof node->hit_area);
    Node *copy = clone(node);
    const decltype(copy->hit_area) zero{};
    EXPECT_TRUE(copy->previous == nullptr && copy->next == nullptr &&
                std::memcmp(&copy->hit_area, &zero, sizeof zero) == 0);
    EXPECT_NE(copy->*label, node->*label);
    EXPECT_TRUE(ov_langstr_is_identical(copy->*label, node->*label));
    destroy(copy);
    destroy(node);
}

// The levels share their list code; rows stand for all of them.
TEST(TextSheetTest, RowListOperationsAndClonesAtEveryLevel)
{
    ov_text_sheet_block *block = ov_text_sheet_block_new(nullptr);
    for (const char *name : {"a", "b", "c"})
        ov_text_sheet_block_add_row(block, ov_text_sheet_row_new(make_text(name).get()));
    ov_text_sheet_row *a = block->rows.first(), *c = block->rows.last();
    ov_text_sheet_row_add_before(ov_text_sheet_row_new(make_text("x").get()), a);
    ov_text_sheet_row_add_after(ov_text_sheet_row_new(make_text("y").get()), c);
    EXPECT_FALSE(ov_text_sheet_row_move_up(block->rows.first()));
    EXPECT_FALSE(ov_text_sheet_row_move_down(block->rows.last()));
    EXPECT_TRUE(ov_text_sheet_row_move_down(a));
    ov_text_sheet_row_remove(c);
    EXPECT_TRUE(c->previous == nullptr && c->next == nullptr);
    ov_text_sheet_row_destroy(c);                   // an unlinked row touches no list
    ov_text_sheet_row_destroy(block->rows.first()); // a linked one leaves its list joined
    std::string names;
    std::uint32_t position = 0;
    for (const ov_text_sheet_row *row : block->rows) {
        EXPECT_EQ(ov_text_sheet_row_get_index(row), position++);
        names += text_of(row->header);
    }
    EXPECT_EQ(names, "bay");
    ov_text_sheet_block_destroy(block);

    ov_text_sheet_field *field = ov_text_sheet_field_new(OV_TEXT_SHEET_FIELD_KIND_CHECKBOX);
    field->text = make_text("f").release();
    check_clone(field, &ov_text_sheet_field::text, ov_text_sheet_field_clone, ov_text_sheet_field_destroy);
    check_clone(ov_text_sheet_row_new(make_text("r").get()), &ov_text_sheet_row::header,
                ov_text_sheet_row_clone, ov_text_sheet_row_destroy);
    check_clone(ov_text_sheet_block_new(make_text("b").get()), &ov_text_sheet_block::header,
                ov_text_sheet_block_clone, ov_text_sheet_block_destroy);
    check_clone(ov_text_sheet_segment_new(make_text("s").get()), &ov_text_sheet_segment::header,
                ov_text_sheet_segment_clone, ov_text_sheet_segment_destroy);
}

ov_text_sheet_segment *make_segment(const char *name, const char *blocks)
{
    ov_text_sheet_segment *segment = ov_text_sheet_segment_new(make_text(name).get());
    std::istringstream headers(blocks);
    for (std::string header; headers >> header;)
        ov_text_sheet_segment_add_block(segment, ov_text_sheet_block_new(make_text(header.c_str()).get()));
    return segment;
}

// "S: a b|T: c": segment headers and their block headers.
std::string describe(const ov_text_sheet_segment_list &segments)
{
    std::string text;
    for (const ov_text_sheet_segment *segment : segments) {
        text += (text.empty() ? "" : "|") + text_of(segment->header) + ":";
        for (const ov_text_sheet_block *block : segment->blocks)
            text += " " + text_of(block->header);
    }
    return text;
}

// Deep clones of whole trees are checked by the template tests, which clone
// every report type and the basic data and write them out byte for byte.
TEST(TextSheetTest, CopiedContentsAndSegmentsGoBehindTheExistingOnes)
{
    ov_text_sheet *sheet = ov_text_sheet_new(), *other = ov_text_sheet_new();
    ov_text_sheet_segment_add_block(sheet->leading_segment, ov_text_sheet_block_new(nullptr));
    EXPECT_FALSE(ov_text_sheet_has_segments(&sheet->segments)); // the leading segment is not in the list
    ov_text_sheet_add_segment(&sheet->segments, make_segment("D", "a"));
    ov_text_sheet_add_segment(&other->segments, make_segment("S", "b c"));
    ov_text_sheet_add_segment(&other->segments, make_segment("E", ""));
    EXPECT_TRUE(ov_text_sheet_segment_has_contents(other->segments.first()));
    EXPECT_FALSE(ov_text_sheet_segment_has_contents(other->segments.last()));
    ov_text_sheet_segment_copy_contents(sheet->segments.first(), other->segments.last());
    ov_text_sheet_segment_copy_contents(sheet->segments.first(), other->segments.first());
    ov_text_sheet_copy_segments(&sheet->segments, &other->segments);
    ov_text_sheet_destroy(other);
    EXPECT_TRUE(ov_text_sheet_has_segments(&sheet->segments));
    EXPECT_EQ(describe(sheet->segments), "D: a b c|S: b c|E:");
    ov_text_sheet_destroy(sheet);
}

} // namespace
