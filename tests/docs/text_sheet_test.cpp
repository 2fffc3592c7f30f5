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

template <class HitArea> bool is_zero(const HitArea &area)
{
    const HitArea zero{};
    return std::memcmp(&area, &zero, sizeof zero) == 0;
}

// One level of the sheet: its node, the container of such nodes and the
// operations that differ between levels only in name.
template <class Node, class Parent> struct Level {
    const char *name;
    Parent *(*new_parent)();
    void (*destroy_parent)(Parent *);
    ov::SentinelList<Node> Parent::*children;
    void (*append)(Parent *, Node *);
    Node *(*new_node)(const langstr *label);
    langstr *Node::*label;
    Node *(*clone)(const Node *);
    void (*remove)(Node *), (*destroy)(Node *);
    std::uint32_t (*index)(const Node *);
    gboolean (*move_up)(Node *), (*move_down)(Node *);
    void (*add_after)(Node *, Node *), (*add_before)(Node *, Node *); // null for fields: appended, then moved
};

#define OV_NODE_OPS(level)                                                                                   \
    ov_text_sheet_##level##_clone, ov_text_sheet_##level##_remove, ov_text_sheet_##level##_destroy,          \
        ov_text_sheet_##level##_get_index, ov_text_sheet_##level##_move_up,                                  \
        ov_text_sheet_##level##_move_down

template <class Node, class Parent> void check_level(const Level<Node, Parent> &level)
{
    SCOPED_TRACE(level.name);
    // "start/op and index/expected": + append, u/d move up/down (refused
    // where the expected ends in "!"), r remove, x destroy in place, < > add
    // before/after, c clone.
    // clang-format off
    static const char *const cases[] = {
        "/+0/x", "a b c/+0/a b c x",
        "a/u0/a!", "a b c/u0/a b c!", "a b c/u1/b a c", "a b c/u2/a c b",
        "a/d0/a!", "a b c/d0/b a c", "a b c/d1/a c b", "a b c/d2/a b c!",
        "a b c/r0/b c", "a b c/r1/a c", "a b c/r2/a b", "a/r0/",
        "a b c/x0/b c", "a b c/x1/a c", "a b c/x2/a b", "a/x0/",
        "a b c/<0/x a b c", "a b c/<1/a x b c", "a b c/<2/a b x c",
        "a b c/>0/a x b c", "a b c/>1/a b x c", "a b c/>2/a b c x",
        "a b c/c1/a b c",
    };
    // clang-format on
    for (const char *row : cases) {
        const ov::GStrv parts(g_strsplit(row, "/", 3));
        const char op = parts.get()[1][0], *expected = parts.get()[2];
        const std::uint32_t at = parts.get()[1][1] - '0';
        const gboolean refused = g_str_has_suffix(expected, "!");
        if ((op == '<' || op == '>') && level.add_before == nullptr)
            continue; // fields are appended, then moved
        SCOPED_TRACE(row);
        Parent *parent = level.new_parent();
        const ov::SentinelList<Node> &list = parent->*level.children;
        std::istringstream start(parts.get()[0]);
        for (std::string name; start >> name;)
            level.append(parent, level.new_node(make_text(name.c_str()).get()));
        Node *node = ov::list_nth(list, at);
        Node *x = std::strchr("+<>", op) != nullptr ? level.new_node(make_text("x").get()) : nullptr;
        EXPECT_TRUE(x == nullptr || is_zero(x->hit_area));
        switch (op) {
        case '+':
            level.append(parent, x);
            break;
        case '<':
            level.add_before(x, node);
            break;
        case '>':
            level.add_after(x, node);
            break;
        case 'u':
            EXPECT_EQ(level.move_up(node), !refused);
            break;
        case 'd':
            EXPECT_EQ(level.move_down(node), !refused);
            break;
        case 'x':
            level.destroy(node);
            break;
        case 'r':
            level.remove(node);
            EXPECT_TRUE(node->previous == nullptr && node->next == nullptr);
            level.destroy(node); // an unlinked node touches no list
            break;
        case 'c':
            node->hit_area.status = {1, 2, 3, 4};
            Node *copy = level.clone(node);
            EXPECT_TRUE(copy->previous == nullptr && copy->next == nullptr && is_zero(copy->hit_area));
            EXPECT_NE(copy->*level.label, node->*level.label);
            EXPECT_TRUE(ov_langstr_is_identical(copy->*level.label, node->*level.label));
            ov_langstr_set_translation(&(copy->*level.label), ov_locale_get_uk_english(), "changed");
            level.destroy(copy);
            break;
        }
        std::string names; // "a b c", checking the links and the index of each node
        std::uint32_t position = 0;
        for (Node *n : list) {
            EXPECT_TRUE(n->previous->next == n && level.index(n) == position++);
            names += (names.empty() ? "" : " ") + text_of(n->*level.label);
        }
        EXPECT_EQ(list.tail->previous->next, list.tail);
        EXPECT_EQ(names + (refused ? "!" : ""), expected);
        level.destroy_parent(parent);
    }
    level.destroy(nullptr);
}

// A container without a header.
template <auto make> auto *unnamed()
{
    return make(nullptr);
}

ov_text_sheet_field *new_field(const langstr *label)
{
    ov_text_sheet_field *field = ov_text_sheet_field_new(OV_TEXT_SHEET_FIELD_KIND_CHECKBOX);
    field->text = ov_langstr_clone(label);
    return field;
}

void add_segment(ov_text_sheet *sheet, ov_text_sheet_segment *segment)
{
    ov_text_sheet_add_segment(&sheet->segments, segment);
}

TEST(TextSheetTest, ListOperationsAtEveryLevel)
{
    check_level(Level<ov_text_sheet_field, ov_text_sheet_row>{
        "field", unnamed<ov_text_sheet_row_new>, ov_text_sheet_row_destroy, &ov_text_sheet_row::fields,
        ov_text_sheet_row_add_field, new_field, &ov_text_sheet_field::text, OV_NODE_OPS(field), nullptr,
        nullptr});
    check_level(Level<ov_text_sheet_row, ov_text_sheet_block>{
        "row", unnamed<ov_text_sheet_block_new>, ov_text_sheet_block_destroy, &ov_text_sheet_block::rows,
        ov_text_sheet_block_add_row, ov_text_sheet_row_new, &ov_text_sheet_row::header, OV_NODE_OPS(row),
        ov_text_sheet_row_add_after, ov_text_sheet_row_add_before});
    check_level(Level<ov_text_sheet_block, ov_text_sheet_segment>{
        "block", unnamed<ov_text_sheet_segment_new>, ov_text_sheet_segment_destroy,
        &ov_text_sheet_segment::blocks, ov_text_sheet_segment_add_block, ov_text_sheet_block_new,
        &ov_text_sheet_block::header, OV_NODE_OPS(block), ov_text_sheet_block_add_after,
        ov_text_sheet_block_add_before});
    check_level(Level<ov_text_sheet_segment, ov_text_sheet>{
        "segment", ov_text_sheet_new, ov_text_sheet_destroy, &ov_text_sheet::segments, add_segment,
        ov_text_sheet_segment_new, &ov_text_sheet_segment::header, OV_NODE_OPS(segment),
        ov_text_sheet_segment_add_after, ov_text_sheet_segment_add_before});
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
    ov_text_sheet_destroy(nullptr);
}

} // namespace
