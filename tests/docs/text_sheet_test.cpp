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
    ov::SentinelList<Node> &(*children)(Parent *);
    void (*append)(Parent *, Node *);
    Node *(*new_node)(const langstr *label);
    langstr *&(*label)(Node *);
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
    // Ops: + append, u/d move up/down, r remove, x destroy in place, < > add before/after, c clone.
    struct Case {
        const char *start;
        char op;
        std::uint32_t at;
        const char *expected;
        gboolean result = TRUE;
    };
    static const Case cases[] = {
        {"", '+', 0, "x"},
        {"a b c", '+', 0, "a b c x"},
        {"a", 'u', 0, "a", FALSE},
        {"a", 'd', 0, "a", FALSE},
        {"a b c", 'u', 0, "a b c", FALSE},
        {"a b c", 'u', 1, "b a c"},
        {"a b c", 'u', 2, "a c b"},
        {"a b c", 'd', 0, "b a c"},
        {"a b c", 'd', 1, "a c b"},
        {"a b c", 'd', 2, "a b c", FALSE},
        {"a b c", 'r', 0, "b c"},
        {"a b c", 'r', 1, "a c"},
        {"a b c", 'r', 2, "a b"},
        {"a", 'r', 0, ""},
        {"a b c", 'x', 0, "b c"},
        {"a b c", 'x', 1, "a c"},
        {"a b c", 'x', 2, "a b"},
        {"a", 'x', 0, ""},
        {"a b c", '<', 0, "x a b c"},
        {"a b c", '<', 1, "a x b c"},
        {"a b c", '<', 2, "a b x c"},
        {"a b c", '>', 0, "a x b c"},
        {"a b c", '>', 1, "a b x c"},
        {"a b c", '>', 2, "a b c x"},
        {"a b c", 'c', 1, "a b c"},
    };
    for (const Case &c : cases) {
        if ((c.op == '<' || c.op == '>') && level.add_before == nullptr)
            continue; // fields are appended, then moved
        SCOPED_TRACE(std::string(c.start) + " " + c.op + std::to_string(c.at));
        Parent *parent = level.new_parent();
        const ov::SentinelList<Node> &list = level.children(parent);
        std::istringstream start(c.start);
        for (std::string name; start >> name;)
            level.append(parent, level.new_node(make_text(name.c_str()).get()));
        Node *node = ov::list_nth(list, c.at);
        Node *x = std::strchr("+<>", c.op) != nullptr ? level.new_node(make_text("x").get()) : nullptr;
        EXPECT_TRUE(x == nullptr || is_zero(x->hit_area));
        switch (c.op) {
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
            EXPECT_EQ(level.move_up(node), c.result);
            break;
        case 'd':
            EXPECT_EQ(level.move_down(node), c.result);
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
            EXPECT_NE(level.label(copy), level.label(node));
            EXPECT_TRUE(ov_langstr_is_identical(level.label(copy), level.label(node)));
            ov_langstr_set_translation(&level.label(copy), ov_locale_get_uk_english(), "changed");
            level.destroy(copy);
            break;
        }
        std::string names; // "a b c", checking the links and the index of each node
        std::uint32_t position = 0;
        for (Node *n : list) {
            EXPECT_TRUE(n->previous->next == n && level.index(n) == position++);
            names += (names.empty() ? "" : " ") + text_of(level.label(n));
        }
        EXPECT_EQ(list.tail->previous->next, list.tail);
        EXPECT_EQ(names, c.expected);
        level.destroy_parent(parent);
    }
    level.destroy(nullptr);
}

TEST(TextSheetTest, ListOperationsAtEveryLevel)
{
    check_level(Level<ov_text_sheet_field, ov_text_sheet_row>{
        "field", [] {
        return ov_text_sheet_row_new(nullptr); }, ov_text_sheet_row_destroy,
        [](ov_text_sheet_row *row) -> auto & { return row->fields;
}
, ov_text_sheet_row_add_field,
    [](const langstr *label) {
        ov_text_sheet_field *field = ov_text_sheet_field_new(OV_TEXT_SHEET_FIELD_KIND_CHECKBOX);
        field->text = ov_langstr_clone(label);
        return field;
    },
    [](ov_text_sheet_field *field) -> langstr *& { return field->text; }, OV_NODE_OPS(field), nullptr, nullptr
} // namespace
);
    check_level(Level<ov_text_sheet_row, ov_text_sheet_block>{
        "row", [] {
    return ov_text_sheet_block_new(nullptr); }, ov_text_sheet_block_destroy,
        [](ov_text_sheet_block *block) -> auto & { return block->rows;
    }
    , ov_text_sheet_block_add_row, ov_text_sheet_row_new,
        [](ov_text_sheet_row *row) -> langstr *& { return row->header; },
        OV_NODE_OPS(row), ov_text_sheet_row_add_after, ov_text_sheet_row_add_before
    });
    check_level(Level<ov_text_sheet_block, ov_text_sheet_segment>{
        "block", [] {
    return ov_text_sheet_segment_new(nullptr); }, ov_text_sheet_segment_destroy,
        [](ov_text_sheet_segment *segment) -> auto & { return segment->blocks;
    }
    , ov_text_sheet_segment_add_block, ov_text_sheet_block_new,
        [](ov_text_sheet_block *block) -> langstr *& { return block->header; },
        OV_NODE_OPS(block), ov_text_sheet_block_add_after, ov_text_sheet_block_add_before
    });
    check_level(Level<ov_text_sheet_segment, ov_text_sheet>{
        "segment", ov_text_sheet_new, ov_text_sheet_destroy,
        [](ov_text_sheet *sheet) -> auto & { return sheet->segments;
    }
    ,
        [](ov_text_sheet *sheet, ov_text_sheet_segment *one) {
            ov_text_sheet_add_segment(&sheet->segments, one);
        },
        ov_text_sheet_segment_new, [](ov_text_sheet_segment *one) -> langstr *& { return one->header; },
        OV_NODE_OPS(segment), ov_text_sheet_segment_add_after, ov_text_sheet_segment_add_before
    });
    }

    ov_text_sheet_segment *make_segment(const char *name, const char *blocks)
    {
        ov_text_sheet_segment *segment = ov_text_sheet_segment_new(make_text(name).get());
        std::istringstream headers(blocks);
        for (std::string header; headers >> header;)
            ov_text_sheet_segment_add_block(segment,
                                            ov_text_sheet_block_new(make_text(header.c_str()).get()));
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
