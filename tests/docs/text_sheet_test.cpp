#include "docs/text_sheet.h"

#include "core/raii.h"
#include "lang/locale.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace
{

langstr *make_text(const char *uk_english)
{
    langstr *ls = nullptr;
    ov_langstr_set_translation(&ls, ov_locale_get_uk_english(), uk_english);
    return ls;
}

std::string text_of(const langstr *ls)
{
    const char *text = ov_langstr_get_text_for_locale(ls, ov_locale_get_uk_english());
    return text != nullptr ? text : "-";
}

// Each level names its node type, its container and the operations that
// differ only in name; the tests below run over all four.
struct FieldLevel {
    using Node = ov_text_sheet_field;
    using Parent = ov_text_sheet_row;
    static Parent *new_parent() { return ov_text_sheet_row_new(nullptr); }
    static void destroy_parent(Parent *parent) { ov_text_sheet_row_destroy(parent); }
    static ov::SentinelList<Node> &children(Parent *parent) { return parent->fields; }
    static Node *new_node(const char *name)
    {
        Node *field = ov_text_sheet_field_new(OV_TEXT_SHEET_FIELD_KIND_CHECKBOX);
        field->text = make_text(name);
        return field;
    }
    static langstr *&label(Node *node) { return node->text; }
    static void append(Parent *parent, Node *node) { ov_text_sheet_row_add_field(parent, node); }
    static Node *clone(const Node *node) { return ov_text_sheet_field_clone(node); }
    static void remove(Node *node) { ov_text_sheet_field_remove(node); }
    static void destroy(Node *node) { ov_text_sheet_field_destroy(node); }
    static std::uint32_t index(const Node *node) { return ov_text_sheet_field_get_index(node); }
    static gboolean move_up(Node *node) { return ov_text_sheet_field_move_up(node); }
    static gboolean move_down(Node *node) { return ov_text_sheet_field_move_down(node); }
};

struct RowLevel {
    using Node = ov_text_sheet_row;
    using Parent = ov_text_sheet_block;
    static Parent *new_parent() { return ov_text_sheet_block_new(nullptr); }
    static void destroy_parent(Parent *parent) { ov_text_sheet_block_destroy(parent); }
    static ov::SentinelList<Node> &children(Parent *parent) { return parent->rows; }
    static Node *new_node(const char *name)
    {
        ov::Owned<langstr, ov_langstr_free> header(make_text(name));
        return ov_text_sheet_row_new(header.get());
    }
    static langstr *&label(Node *node) { return node->header; }
    static void append(Parent *parent, Node *node) { ov_text_sheet_block_add_row(parent, node); }
    static Node *clone(const Node *node) { return ov_text_sheet_row_clone(node); }
    static void remove(Node *node) { ov_text_sheet_row_remove(node); }
    static void destroy(Node *node) { ov_text_sheet_row_destroy(node); }
    static std::uint32_t index(const Node *node) { return ov_text_sheet_row_get_index(node); }
    static gboolean move_up(Node *node) { return ov_text_sheet_row_move_up(node); }
    static gboolean move_down(Node *node) { return ov_text_sheet_row_move_down(node); }
    static void add_after(Node *node, Node *reference) { ov_text_sheet_row_add_after(node, reference); }
    static void add_before(Node *node, Node *reference) { ov_text_sheet_row_add_before(node, reference); }
};

struct BlockLevel {
    using Node = ov_text_sheet_block;
    using Parent = ov_text_sheet_segment;
    static Parent *new_parent() { return ov_text_sheet_segment_new(nullptr); }
    static void destroy_parent(Parent *parent) { ov_text_sheet_segment_destroy(parent); }
    static ov::SentinelList<Node> &children(Parent *parent) { return parent->blocks; }
    static Node *new_node(const char *name)
    {
        ov::Owned<langstr, ov_langstr_free> header(make_text(name));
        return ov_text_sheet_block_new(header.get());
    }
    static langstr *&label(Node *node) { return node->header; }
    static void append(Parent *parent, Node *node) { ov_text_sheet_segment_add_block(parent, node); }
    static Node *clone(const Node *node) { return ov_text_sheet_block_clone(node); }
    static void remove(Node *node) { ov_text_sheet_block_remove(node); }
    static void destroy(Node *node) { ov_text_sheet_block_destroy(node); }
    static std::uint32_t index(const Node *node) { return ov_text_sheet_block_get_index(node); }
    static gboolean move_up(Node *node) { return ov_text_sheet_block_move_up(node); }
    static gboolean move_down(Node *node) { return ov_text_sheet_block_move_down(node); }
    static void add_after(Node *node, Node *reference) { ov_text_sheet_block_add_after(node, reference); }
    static void add_before(Node *node, Node *reference) { ov_text_sheet_block_add_before(node, reference); }
};

struct SegmentLevel {
    using Node = ov_text_sheet_segment;
    using Parent = ov_text_sheet;
    static Parent *new_parent() { return ov_text_sheet_new(); }
    static void destroy_parent(Parent *parent) { ov_text_sheet_destroy(parent); }
    static ov::SentinelList<Node> &children(Parent *parent) { return parent->segments; }
    static Node *new_node(const char *name)
    {
        ov::Owned<langstr, ov_langstr_free> header(make_text(name));
        return ov_text_sheet_segment_new(header.get());
    }
    static langstr *&label(Node *node) { return node->header; }
    static void append(Parent *parent, Node *node) { ov_text_sheet_add_segment(&parent->segments, node); }
    static Node *clone(const Node *node) { return ov_text_sheet_segment_clone(node); }
    static void remove(Node *node) { ov_text_sheet_segment_remove(node); }
    static void destroy(Node *node) { ov_text_sheet_segment_destroy(node); }
    static std::uint32_t index(const Node *node) { return ov_text_sheet_segment_get_index(node); }
    static gboolean move_up(Node *node) { return ov_text_sheet_segment_move_up(node); }
    static gboolean move_down(Node *node) { return ov_text_sheet_segment_move_down(node); }
    static void add_after(Node *node, Node *reference) { ov_text_sheet_segment_add_after(node, reference); }
    static void add_before(Node *node, Node *reference) { ov_text_sheet_segment_add_before(node, reference); }
};

template <class Level> class TextSheetLevelTest : public ::testing::Test
{
  protected:
    using Node = typename Level::Node;

    void SetUp() override { parent_ = Level::new_parent(); }
    void TearDown() override { Level::destroy_parent(parent_); }

    // Fills the container with one node per space-separated name.
    void fill(const std::string &names)
    {
        gchar **parts = g_strsplit(names.c_str(), " ", -1);
        for (gchar **part = parts; *part != nullptr; ++part)
            if (**part != '\0')
                Level::append(parent_, Level::new_node(*part));
        g_strfreev(parts);
    }

    // The container's nodes as "a b c", checking both links on the way.
    std::string names()
    {
        const auto &list = Level::children(parent_);
        std::string result;
        Node *previous = list.head;
        for (Node *node = list.head->next; node != list.tail; node = node->next) {
            EXPECT_EQ(node->previous, previous);
            previous = node;
            if (!result.empty())
                result += ' ';
            result += text_of(Level::label(node));
        }
        EXPECT_EQ(list.tail->previous, previous);
        EXPECT_EQ(list.head->previous, nullptr);
        EXPECT_EQ(list.tail->next, nullptr);
        return result;
    }

    Node *node_at(std::uint32_t index) { return ov::list_nth(Level::children(parent_), index); }

    typename Level::Parent *parent_ = nullptr;
};

using Levels = ::testing::Types<FieldLevel, RowLevel, BlockLevel, SegmentLevel>;
TYPED_TEST_SUITE(TextSheetLevelTest, Levels);

TYPED_TEST(TextSheetLevelTest, AppendKeepsOrderAndIndexCountsFromZero)
{
    EXPECT_EQ(this->names(), "");
    this->fill("a b c d");
    EXPECT_EQ(this->names(), "a b c d");
    for (std::uint32_t i = 0; i < 4; ++i)
        EXPECT_EQ(TypeParam::index(this->node_at(i)), i);
}

TYPED_TEST(TextSheetLevelTest, MoveRefusesAtTheEnds)
{
    struct Case {
        const char *list;
        std::uint32_t index;
        bool up;
        gboolean result;
        const char *expected;
    };
    const Case cases[] = {
        {"a", 0, true, FALSE, "a"},         {"a", 0, false, FALSE, "a"},
        {"a b c", 0, true, FALSE, "a b c"}, {"a b c", 1, true, TRUE, "b a c"},
        {"a b c", 2, true, TRUE, "a c b"},  {"a b c", 0, false, TRUE, "b a c"},
        {"a b c", 1, false, TRUE, "a c b"}, {"a b c", 2, false, FALSE, "a b c"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(c.list) + (c.up ? " up " : " down ") + std::to_string(c.index));
        TypeParam::destroy_parent(this->parent_);
        this->parent_ = TypeParam::new_parent();
        this->fill(c.list);
        auto *node = this->node_at(c.index);
        EXPECT_EQ(c.up ? TypeParam::move_up(node) : TypeParam::move_down(node), c.result);
        EXPECT_EQ(this->names(), c.expected);
    }
}

TYPED_TEST(TextSheetLevelTest, RemoveUnlinksWithoutFreeing)
{
    const char *expected[] = {"b c", "a c", "a b"};
    for (std::uint32_t index = 0; index < 3; ++index) {
        SCOPED_TRACE(index);
        TypeParam::destroy_parent(this->parent_);
        this->parent_ = TypeParam::new_parent();
        this->fill("a b c");
        auto *node = this->node_at(index);
        TypeParam::remove(node);
        EXPECT_EQ(node->previous, nullptr);
        EXPECT_EQ(node->next, nullptr);
        EXPECT_EQ(this->names(), expected[index]);
        // Removing again and destroying an unlinked node touch no list.
        TypeParam::remove(node);
        TypeParam::destroy(node);
        EXPECT_EQ(this->names(), expected[index]);
    }
    TypeParam::destroy(nullptr);
}

TYPED_TEST(TextSheetLevelTest, DestroyInPlaceJoinsTheNeighbours)
{
    const char *expected[] = {"b c", "a c", "a b"};
    for (std::uint32_t index = 0; index < 3; ++index) {
        SCOPED_TRACE(index);
        TypeParam::destroy_parent(this->parent_);
        this->parent_ = TypeParam::new_parent();
        this->fill("a b c");
        TypeParam::destroy(this->node_at(index));
        EXPECT_EQ(this->names(), expected[index]);
    }
    TypeParam::destroy(this->node_at(0));
    TypeParam::destroy(this->node_at(0));
    EXPECT_EQ(this->names(), "");
    EXPECT_TRUE(TypeParam::children(this->parent_).is_empty());
}

// Fields have no add_after/add_before: they are appended and then moved.
template <class Level> class TextSheetInsertTest : public TextSheetLevelTest<Level>
{
};

using ContainerLevels = ::testing::Types<RowLevel, BlockLevel, SegmentLevel>;
TYPED_TEST_SUITE(TextSheetInsertTest, ContainerLevels);

TYPED_TEST(TextSheetInsertTest, AddAfterAndBeforeAtEveryPosition)
{
    struct Case {
        std::uint32_t reference;
        bool after;
        const char *expected;
    };
    const Case cases[] = {
        {0, false, "x a b c"}, {0, true, "a x b c"},  {1, false, "a x b c"},
        {1, true, "a b x c"},  {2, false, "a b x c"}, {2, true, "a b c x"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.expected);
        TypeParam::destroy_parent(this->parent_);
        this->parent_ = TypeParam::new_parent();
        this->fill("a b c");
        auto *node = TypeParam::new_node("x");
        if (c.after)
            TypeParam::add_after(node, this->node_at(c.reference));
        else
            TypeParam::add_before(node, this->node_at(c.reference));
        EXPECT_EQ(this->names(), c.expected);
        EXPECT_EQ(TypeParam::index(node), c.after ? c.reference + 1 : c.reference);
    }
}

TYPED_TEST(TextSheetLevelTest, CloneIsDeepUnlinkedAndWithoutHitArea)
{
    this->fill("a b c");
    auto *source = this->node_at(1);
    source->hit_area.bounds = {1, 2, 3, 4};
    auto *copy = TypeParam::clone(source);
    EXPECT_EQ(copy->previous, nullptr);
    EXPECT_EQ(copy->next, nullptr);
    EXPECT_EQ(copy->hit_area.bounds.width, 0);
    EXPECT_NE(TypeParam::label(copy), TypeParam::label(source));
    EXPECT_TRUE(ov_langstr_is_identical(TypeParam::label(copy), TypeParam::label(source)));
    ov_langstr_set_translation(&TypeParam::label(copy), ov_locale_get_uk_english(), "changed");
    EXPECT_EQ(this->names(), "a b c");
    TypeParam::destroy(copy);

    // A node without a header or text clones to one without.
    ov_langstr_free(TypeParam::label(source));
    TypeParam::label(source) = nullptr;
    copy = TypeParam::clone(source);
    EXPECT_EQ(TypeParam::label(copy), nullptr);
    TypeParam::destroy(copy);
}

// Describes a segment's tree compactly: "[S{B(R:f f)(R:)}]".
std::string describe(const ov_text_sheet_segment *segment)
{
    std::string text = "[" + text_of(segment->header);
    for (const ov_text_sheet_block *block : segment->blocks) {
        text += "{" + text_of(block->header);
        for (const ov_text_sheet_row *row : block->rows) {
            text += "(" + text_of(row->header) + ":";
            for (const ov_text_sheet_field *field : row->fields)
                text +=
                    " " + std::to_string(field->kind) + (field->selected ? "*" : "") + text_of(field->text);
            text += ")";
        }
        text += "}";
    }
    return text + "]";
}

ov_text_sheet_segment *make_segment(const char *name, int blocks)
{
    ov::Owned<langstr, ov_langstr_free> header(make_text(name));
    ov_text_sheet_segment *segment = ov_text_sheet_segment_new(header.get());
    for (int b = 0; b < blocks; ++b) {
        ov::Owned<langstr, ov_langstr_free> block_header(make_text(("B" + std::to_string(b)).c_str()));
        ov_text_sheet_block *block = ov_text_sheet_block_new(b == 0 ? nullptr : block_header.get());
        ov_text_sheet_segment_add_block(segment, block);
        for (int r = 0; r < 2; ++r) {
            ov::Owned<langstr, ov_langstr_free> row_header(make_text(("R" + std::to_string(r)).c_str()));
            ov_text_sheet_row *row = ov_text_sheet_row_new(row_header.get());
            ov_text_sheet_block_add_row(block, row);
            ov_text_sheet_field *text_field = ov_text_sheet_field_new(OV_TEXT_SHEET_FIELD_KIND_TEXT_FIELD);
            text_field->text = make_text("t");
            ov_text_sheet_row_add_field(row, text_field);
            ov_text_sheet_field *checkbox = ov_text_sheet_field_new(OV_TEXT_SHEET_FIELD_KIND_CHECKBOX);
            checkbox->selected = r == 1;
            ov_text_sheet_row_add_field(row, checkbox);
        }
    }
    return segment;
}

TEST(TextSheetTest, NewNodesAreZeroFilledAndHeadersCopied)
{
    ov_text_sheet_field *field = ov_text_sheet_field_new(OV_TEXT_SHEET_FIELD_KIND_CHECKBOX);
    EXPECT_EQ(field->kind, 1u);
    EXPECT_EQ(field->text, nullptr);
    EXPECT_FALSE(field->selected);
    const ov_text_sheet_hit_area zero{};
    EXPECT_EQ(std::memcmp(&field->hit_area, &zero, sizeof zero), 0);
    ov_text_sheet_field_destroy(field);

    langstr *header = make_text("h");
    ov_text_sheet_row *row = ov_text_sheet_row_new(header);
    EXPECT_NE(row->header, header);
    EXPECT_TRUE(ov_langstr_is_identical(row->header, header));
    EXPECT_TRUE(row->fields.is_empty());
    ov_langstr_free(header);
    ov_text_sheet_row_destroy(row);
}

TEST(TextSheetTest, SegmentCloneCopiesTheWholeTreeIndependently)
{
    ov_text_sheet_segment *source = make_segment("S", 2);
    const std::string expected = "[S{-(R0: 0t 1-)(R1: 0t 1*-)}{B1(R0: 0t 1-)(R1: 0t 1*-)}]";
    ASSERT_EQ(describe(source), expected);
    ov_text_sheet_segment *copy = ov_text_sheet_segment_clone(source);
    EXPECT_EQ(describe(copy), expected);

    // Nothing is shared: changing and destroying the source leaves the copy.
    ov_text_sheet_block *first = source->blocks.first();
    ov_text_sheet_field *field = first->rows.first()->fields.first();
    EXPECT_NE(field->text, copy->blocks.first()->rows.first()->fields.first()->text);
    ov_langstr_set_translation(&field->text, ov_locale_get_uk_english(), "x");
    ov_text_sheet_block_destroy(source->blocks.last());
    EXPECT_EQ(describe(source), "[S{-(R0: 0x 1-)(R1: 0t 1*-)}]");
    ov_text_sheet_segment_destroy(source);
    EXPECT_EQ(describe(copy), expected);
    ov_text_sheet_segment_destroy(copy);
}

TEST(TextSheetTest, SegmentContentsAreCopiedBehindTheExistingBlocks)
{
    ov_text_sheet_segment *destination = make_segment("D", 1);
    ov_text_sheet_segment *empty = make_segment("E", 0);
    ov_text_sheet_segment *source = make_segment("S", 2);
    EXPECT_TRUE(ov_text_sheet_segment_has_contents(destination));
    EXPECT_FALSE(ov_text_sheet_segment_has_contents(empty));

    ov_text_sheet_segment_copy_contents(destination, empty);
    EXPECT_EQ(ov::list_count(destination->blocks), 1u);
    ov_text_sheet_segment_copy_contents(destination, source);
    EXPECT_EQ(describe(destination), "[D{-(R0: 0t 1-)(R1: 0t 1*-)}{-(R0: 0t 1-)(R1: 0t 1*-)}"
                                     "{B1(R0: 0t 1-)(R1: 0t 1*-)}]");
    EXPECT_NE(destination->blocks.last(), source->blocks.last());
    for (auto *segment : {destination, empty, source})
        ov_text_sheet_segment_destroy(segment);
}

TEST(TextSheetTest, SheetSegmentListsIgnoreTheLeadingSegment)
{
    ov_text_sheet *sheet = ov_text_sheet_new();
    ASSERT_NE(sheet->leading_segment, nullptr);
    EXPECT_EQ(sheet->leading_segment->header, nullptr);
    ov_text_sheet_segment_add_block(sheet->leading_segment, ov_text_sheet_block_new(nullptr));
    EXPECT_FALSE(ov_text_sheet_has_segments(&sheet->segments));

    ov_text_sheet *other = ov_text_sheet_new();
    ov_text_sheet_copy_segments(&sheet->segments, &other->segments);
    EXPECT_FALSE(ov_text_sheet_has_segments(&sheet->segments));
    ov_text_sheet_add_segment(&other->segments, make_segment("A", 1));
    ov_text_sheet_add_segment(&other->segments, make_segment("B", 0));
    ov_text_sheet_add_segment(&sheet->segments, make_segment("Z", 0));
    ov_text_sheet_copy_segments(&sheet->segments, &other->segments);
    EXPECT_TRUE(ov_text_sheet_has_segments(&sheet->segments));

    std::vector<std::string> described;
    for (const ov_text_sheet_segment *segment : sheet->segments)
        described.push_back(describe(segment));
    EXPECT_EQ(described, (std::vector<std::string>{"[Z]", "[A{-(R0: 0t 1-)(R1: 0t 1*-)}]", "[B]"}));
    ov_text_sheet_destroy(other);
    ov_text_sheet_destroy(sheet);
    ov_text_sheet_destroy(nullptr);
}

} // namespace
