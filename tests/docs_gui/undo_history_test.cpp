// The undo history on the model alone: its stacks, texts and saved mark, and
// chains of random edits undone and redone back to the same file bytes. Run
// under the sanitizers too, where nodes kept by dropped steps must not leak.
#include "support/test_support.h"

#include "core/raii.h"
#include "docs/template_io.h"
#include "docs_gui/undo_history.h"
#include "lang/locale.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

namespace
{

using TemplatePtr = ov::Owned<ov_template, ov_template_destroy>;
using HistoryPtr = ov::ObjectRef<OvUndoHistory>;

langstr *text(const std::string &uk_english)
{
    langstr *ls = nullptr;
    ov_langstr_set_translation(&ls, ov_locale_get_uk_english(), uk_english.c_str());
    return ls;
}

// Three segments of three blocks of three rows, each row with a field.
TemplatePtr sample()
{
    TemplatePtr tmpl(ov_template_new());
    tmpl->name = text("T");
    auto *type = ov_template_report_type_new(nullptr);
    ov_template_add_report_type(tmpl.get(), type);
    for (int s = 0; s < 3; ++s) {
        ov::Owned<langstr, ov_langstr_free> header(text("S" + std::to_string(s)));
        auto *segment = ov_text_sheet_segment_new(header.get());
        ov_template_report_type_add_segment(type, segment);
        for (int b = 0; b < 3; ++b) {
            auto *block = ov_text_sheet_block_new(nullptr);
            ov_text_sheet_segment_add_block(segment, block);
            for (int r = 0; r < 3; ++r) {
                header.reset(text("r" + std::to_string(s) + std::to_string(b) + std::to_string(r)));
                auto *row = ov_text_sheet_row_new(header.get());
                ov_text_sheet_row_add_field(row,
                                            ov_text_sheet_field_new(OV_TEXT_SHEET_FIELD_KIND_TEXT_FIELD));
                ov_text_sheet_block_add_row(block, row);
            }
        }
    }
    return tmpl;
}

std::string bytes(const ov_template *tmpl)
{
    ov::test::TempDir dir;
    const std::string path = dir.file("t.template");
    EXPECT_TRUE(ov_template_io_write_to_file(tmpl, path.c_str()));
    return ov::test::read_file(path);
}

constexpr OvUndoPlace nowhere = {};

// One random edit of the kind the sheet's menu makes, recorded; FALSE when
// the drawn edit does not apply.
template <class Node>
bool edit(OvUndoHistory *history, std::mt19937 &random, const std::vector<Node *> &nodes,
          Node *(*create)(const langstr *), void (*destroy)(Node *))
{
    Node *node = nodes[random() % nodes.size()];
    switch (random() % 5) {
    case 0:
    case 1: {
        const bool up = random() % 2 == 0;
        if (!(up ? ov::list_move_up(node) : ov::list_move_down(node)))
            return false;
        ov_undo_history_record(history, new ov::MoveStep<Node>("Move", nowhere, node, up));
        return true;
    }
    case 2:
        ov_undo_history_record(history, new ov::SpliceStep<Node>("Delete", nowhere, node, destroy));
        return true;
    case 3: // two new nodes after it, as a read appends several
        ov::list_insert_after(create(nullptr), node);
        ov::list_insert_after(create(nullptr), node->next);
        ov_undo_history_record(history, new ov::SpliceStep<Node>("Add", nowhere, node, 2, destroy));
        return true;
    default:
        ov_undo_history_record(history, new ov::LangstrStep("Header", nowhere, &node->header,
                                                            std::exchange(node->header, text("new"))));
        return true;
    }
}

void random_edit(OvUndoHistory *history, std::mt19937 &random, ov_template_report_type *type)
{
    for (;;) {
        std::vector<ov_text_sheet_segment *> segments;
        std::vector<ov_text_sheet_block *> blocks;
        std::vector<ov_text_sheet_row *> rows;
        for (auto *segment : type->segments) {
            segments.push_back(segment);
            for (auto *block : segment->blocks) {
                blocks.push_back(block);
                for (auto *row : block->rows)
                    rows.push_back(row);
            }
        }
        const unsigned level = random() % 3;
        if ((level == 0 && !segments.empty() &&
             edit(history, random, segments, ov_text_sheet_segment_new, ov_text_sheet_segment_destroy)) ||
            (level == 1 && !blocks.empty() &&
             edit(history, random, blocks, ov_text_sheet_block_new, ov_text_sheet_block_destroy)) ||
            (level == 2 && !rows.empty() &&
             edit(history, random, rows, ov_text_sheet_row_new, ov_text_sheet_row_destroy)))
            return;
    }
}

} // namespace

TEST(UndoHistory, StacksTextsAndTheSavedMark)
{
    TemplatePtr tmpl = sample();
    HistoryPtr history = HistoryPtr::adopt(ov_undo_history_new());
    OvUndoHistory *h = history.get();
    int changes = 0;
    g_signal_connect_swapped(h, "changed", G_CALLBACK(+[](int *count) { ++*count; }), &changes);
    EXPECT_FALSE(ov_undo_history_undo(h));
    EXPECT_FALSE(ov_undo_history_is_at_saved(h)); // a new document
    ov_undo_history_mark_saved(h);
    EXPECT_TRUE(ov_undo_history_is_at_saved(h));

    ov_text_sheet_segment *first = tmpl->report_types.first()->segments.first();
    ov::list_move_down(first);
    ov_undo_history_record(
        h, new ov::MoveStep<ov_text_sheet_segment>("Move segment down", nowhere, first, false));
    ov_undo_history_record(h, new ov::SpliceStep<ov_text_sheet_segment>("Delete segment", nowhere, first,
                                                                        ov_text_sheet_segment_destroy));
    EXPECT_STREQ(ov_undo_history_get_undo_text(h), "Delete segment");
    EXPECT_FALSE(ov_undo_history_is_at_saved(h));
    ov_undo_history_undo(h);
    EXPECT_STREQ(ov_undo_history_get_undo_text(h), "Move segment down");
    EXPECT_STREQ(ov_undo_history_get_redo_text(h), "Delete segment");
    ov_undo_history_undo(h);
    EXPECT_TRUE(ov_undo_history_is_at_saved(h));
    ov_undo_history_redo(h);
    ov_undo_history_mark_saved(h); // saved after the move
    ov_undo_history_undo(h);
    EXPECT_FALSE(ov_undo_history_is_at_saved(h));
    // A new edit drops the redo steps, the saved state among them.
    ov::list_move_up(first);
    ov_undo_history_record(h,
                           new ov::MoveStep<ov_text_sheet_segment>("Move segment up", nowhere, first, true));
    EXPECT_EQ(ov_undo_history_get_redo_text(h), nullptr);
    EXPECT_FALSE(ov_undo_history_undo(h) && ov_undo_history_is_at_saved(h));
    ov_undo_history_forget_saved(h);
    EXPECT_EQ(changes, 10);
}

TEST(UndoHistory, RandomChainsUndoToTheOriginalBytesAndRedoToTheEdited)
{
    for (unsigned seed : {1u, 2u, 3u}) {
        std::mt19937 random(seed);
        TemplatePtr tmpl = sample();
        ov_template_report_type *type = tmpl->report_types.first();
        HistoryPtr history = HistoryPtr::adopt(ov_undo_history_new());
        const std::string original = bytes(tmpl.get());
        std::vector<std::string> states = {original};
        for (int i = 0; i < 20; ++i) {
            random_edit(history.get(), random, type);
            states.push_back(bytes(tmpl.get()));
        }
        for (int i = 20; i > 0; --i) {
            ASSERT_TRUE(ov_undo_history_undo(history.get()));
            ASSERT_EQ(bytes(tmpl.get()), states[std::size_t(i) - 1]) << "seed " << seed << " undo " << i;
        }
        EXPECT_FALSE(ov_undo_history_undo(history.get()));
        for (int i = 1; i <= 20; ++i)
            ASSERT_TRUE(ov_undo_history_redo(history.get()));
        EXPECT_EQ(bytes(tmpl.get()), states.back()) << "seed " << seed;
        // Half undone, then new edits drop the other half with the nodes
        // they keep; the rest go with the history before the template.
        for (int i = 0; i < 10; ++i)
            ov_undo_history_undo(history.get());
        for (int i = 0; i < 5; ++i)
            random_edit(history.get(), random, type);
        history.reset();
    }
}
