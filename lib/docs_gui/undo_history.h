// The undo history of a document window: every edit that changes the
// template is recorded as a small reversible step (a moved node, a node taken
// out of its list and kept, an old text, the old fields of a row) with the
// text the "Edit" menu shows for it. Two stacks, the redo stack dropped on a
// new edit, and a mark of the state last saved.
//
// A step may point into the template (a node's header slot, the neighbour
// after which it puts nodes back). Steps are undone and redone strictly in
// order, so whatever a step points at is in place whenever it runs. The
// history must therefore end before the template it edits.
#pragma once

#include "core/list.h"
#include "docs/template.h"

#include <glib-object.h>

#include <cstdint>
#include <string>
#include <utility>

G_BEGIN_DECLS
#define OV_TYPE_UNDO_HISTORY (ov_undo_history_get_type())
G_DECLARE_FINAL_TYPE(OvUndoHistory, ov_undo_history, OV, UNDO_HISTORY, GObject)
G_END_DECLS

// Where an edit happened, for the view to show after an undo or a redo: the
// page (a report type, or null for the basic data sheet, or none for the
// template's own data) and the deepest node that was clicked or changed.
// Nodes named here may be out of the template when the step has been undone
// or redone; the view falls back to the next level up.
struct OvUndoPlace {
    gboolean on_sheet;
    ov_template_report_type *report_type;
    ov_text_sheet_segment *segment;
    ov_text_sheet_block *block;
    ov_text_sheet_row *row;
};

namespace ov
{

class UndoStep
{
  public:
    UndoStep(std::string text, const OvUndoPlace &place) : text_(std::move(text)), place_(place) {}
    virtual ~UndoStep() = default;
    UndoStep(const UndoStep &) = delete;
    UndoStep &operator=(const UndoStep &) = delete;

    virtual void undo() = 0;
    virtual void redo() = 0;
    // The edit as the "Edit" menu names it: "Delete row".
    const std::string &text() const { return text_; }
    const OvUndoPlace &place() const { return place_; }

  private:
    std::string text_;
    OvUndoPlace place_;
};

// Nodes that an edit put into a list, or took out of it, as a run of count
// nodes directly after a neighbour (the list's head sentinel for the first
// place). While out of the document the nodes stay alive in the step's own
// list and are destroyed with the step.
template <ListNode Node> class SpliceStep : public UndoStep
{
  public:
    using Destroy = void (*)(Node *);

    // The count nodes after previous were just put in by the edit.
    SpliceStep(std::string text, const OvUndoPlace &place, Node *previous, std::uint32_t count,
               Destroy destroy)
        : UndoStep(std::move(text), place), previous_(previous), count_(count), inserted_(true),
          destroy_(destroy)
    {
        list_init(kept_);
    }
    // Takes node out of its list now: the edit deletes it.
    SpliceStep(std::string text, const OvUndoPlace &place, Node *node, Destroy destroy)
        : UndoStep(std::move(text), place), previous_(node->previous), count_(1), inserted_(false),
          destroy_(destroy)
    {
        list_init(kept_);
        take_out();
    }
    ~SpliceStep() override { list_destroy(kept_, destroy_); }

    void undo() override { inserted_ ? take_out() : put_back(); }
    void redo() override { inserted_ ? put_back() : take_out(); }

  private:
    void take_out()
    {
        for (std::uint32_t i = 0; i < count_; ++i) {
            Node *node = previous_->next;
            list_unlink(node);
            list_append(kept_, node);
        }
    }
    void put_back()
    {
        Node *reference = previous_;
        while (Node *node = kept_.first()) {
            list_unlink(node);
            list_insert_after(node, reference);
            reference = node;
        }
    }

    Node *previous_;
    std::uint32_t count_;
    bool inserted_;
    Destroy destroy_;
    SentinelList<Node> kept_;
};

// A node moved one place up or down among its siblings.
template <ListNode Node> class MoveStep : public UndoStep
{
  public:
    MoveStep(std::string text, const OvUndoPlace &place, Node *node, bool up)
        : UndoStep(std::move(text), place), node_(node), up_(up)
    {
    }
    void undo() override { up_ ? list_move_down(node_) : list_move_up(node_); }
    void redo() override { up_ ? list_move_up(node_) : list_move_down(node_); }

  private:
    Node *node_;
    bool up_;
};

// A multilingual text slot (a header, a name) and its other value; undo and
// redo swap them. Takes over old, which may be null.
class LangstrStep : public UndoStep
{
  public:
    LangstrStep(std::string text, const OvUndoPlace &place, langstr **slot, langstr *old)
        : UndoStep(std::move(text), place), slot_(slot), other_(old)
    {
    }
    ~LangstrStep() override { ov_langstr_free(other_); }
    void undo() override { std::swap(*slot_, other_); }
    void redo() override { std::swap(*slot_, other_); }

  private:
    langstr **slot_;
    langstr *other_;
};

} // namespace ov

OvUndoHistory *ov_undo_history_new();
// Takes over the step of an edit just made and drops every redo step. A null
// history destroys the step, which then keeps what the edit did: a node it
// took out is destroyed.
void ov_undo_history_record(OvUndoHistory *history, ov::UndoStep *step);
// FALSE when there is nothing to undo or redo.
gboolean ov_undo_history_undo(OvUndoHistory *history);
gboolean ov_undo_history_redo(OvUndoHistory *history);
// The step that would be undone, or null.
const ov::UndoStep *ov_undo_history_get_undo_step(OvUndoHistory *history);
// The text of the step that would be undone or redone, or null.
const char *ov_undo_history_get_undo_text(OvUndoHistory *history);
const char *ov_undo_history_get_redo_text(OvUndoHistory *history);
// The present state is the one saved; a new document has none until then.
void ov_undo_history_mark_saved(OvUndoHistory *history);
void ov_undo_history_forget_saved(OvUndoHistory *history);
gboolean ov_undo_history_is_at_saved(OvUndoHistory *history);

// Signals: "changed" after every record, undo, redo and saved mark;
// "applied" (const OvUndoPlace *place) after an undo or a redo, before
// "changed", for the view to show the place.
