#include "docs_gui/undo_history.h"

#include <memory>

namespace
{

// One step in either stack; the stacks' tops are their last entries.
struct Entry {
    std::unique_ptr<ov::UndoStep> step;
    Entry *previous;
    Entry *next;
};

void destroy_entry(Entry *entry)
{
    delete entry;
}

// The saved state is out of reach once the steps leading back to it are
// gone.
constexpr std::int64_t unreachable = -1;

} // namespace

struct _OvUndoHistory {
    GObject parent_instance;
    ov::SentinelList<Entry> done;
    ov::SentinelList<Entry> undone;
    // The number of done steps, and that number in the state last saved.
    std::int64_t depth;
    std::int64_t saved_depth;
};

G_DEFINE_TYPE(OvUndoHistory, ov_undo_history, G_TYPE_OBJECT)

enum { SIGNAL_CHANGED, SIGNAL_APPLIED, N_SIGNALS };
static guint signals[N_SIGNALS];

namespace
{

void emit_changed(OvUndoHistory *self)
{
    g_signal_emit(self, signals[SIGNAL_CHANGED], 0);
}

// Runs the top step of from and moves it to the other stack.
void apply_top(OvUndoHistory *self, ov::SentinelList<Entry> &from, ov::SentinelList<Entry> &to, bool undo)
{
    Entry *entry = from.last();
    undo ? entry->step->undo() : entry->step->redo();
    ov::list_unlink(entry);
    ov::list_append(to, entry);
    self->depth += undo ? -1 : 1;
    g_signal_emit(self, signals[SIGNAL_APPLIED], 0, &entry->step->place());
    emit_changed(self);
}

} // namespace

static void ov_undo_history_finalize(GObject *object)
{
    auto *self = OV_UNDO_HISTORY(object);
    // Each step destroys only the nodes it keeps, so the order is free.
    ov::list_destroy(self->undone, destroy_entry);
    ov::list_destroy(self->done, destroy_entry);
    G_OBJECT_CLASS(ov_undo_history_parent_class)->finalize(object);
}

static void ov_undo_history_class_init(OvUndoHistoryClass *klass)
{
    G_OBJECT_CLASS(klass)->finalize = ov_undo_history_finalize;
    signals[SIGNAL_CHANGED] = g_signal_new("changed", G_TYPE_FROM_CLASS(klass), G_SIGNAL_RUN_FIRST, 0,
                                           nullptr, nullptr, nullptr, G_TYPE_NONE, 0);
    signals[SIGNAL_APPLIED] = g_signal_new("applied", G_TYPE_FROM_CLASS(klass), G_SIGNAL_RUN_FIRST, 0,
                                           nullptr, nullptr, nullptr, G_TYPE_NONE, 1, G_TYPE_POINTER);
}

static void ov_undo_history_init(OvUndoHistory *self)
{
    ov::list_init(self->done);
    ov::list_init(self->undone);
    self->saved_depth = unreachable;
}

OvUndoHistory *ov_undo_history_new()
{
    return OV_UNDO_HISTORY(g_object_new(OV_TYPE_UNDO_HISTORY, nullptr));
}

void ov_undo_history_record(OvUndoHistory *history, ov::UndoStep *step)
{
    std::unique_ptr<ov::UndoStep> owned(step);
    if (history == nullptr)
        return;
    g_return_if_fail(OV_IS_UNDO_HISTORY(history) && step != nullptr);
    while (Entry *entry = history->undone.first()) {
        ov::list_unlink(entry);
        destroy_entry(entry);
    }
    if (history->saved_depth > history->depth)
        history->saved_depth = unreachable;
    ov::list_append(history->done, new Entry{std::move(owned), nullptr, nullptr});
    ++history->depth;
    emit_changed(history);
}

gboolean ov_undo_history_undo(OvUndoHistory *history)
{
    g_return_val_if_fail(OV_IS_UNDO_HISTORY(history), FALSE);
    if (history->done.is_empty())
        return FALSE;
    apply_top(history, history->done, history->undone, true);
    return TRUE;
}

gboolean ov_undo_history_redo(OvUndoHistory *history)
{
    g_return_val_if_fail(OV_IS_UNDO_HISTORY(history), FALSE);
    if (history->undone.is_empty())
        return FALSE;
    apply_top(history, history->undone, history->done, false);
    return TRUE;
}

const ov::UndoStep *ov_undo_history_get_undo_step(OvUndoHistory *history)
{
    g_return_val_if_fail(OV_IS_UNDO_HISTORY(history), nullptr);
    const Entry *entry = history->done.last();
    return entry != nullptr ? entry->step.get() : nullptr;
}

const char *ov_undo_history_get_undo_text(OvUndoHistory *history)
{
    g_return_val_if_fail(OV_IS_UNDO_HISTORY(history), nullptr);
    const Entry *entry = history->done.last();
    return entry != nullptr ? entry->step->text().c_str() : nullptr;
}

const char *ov_undo_history_get_redo_text(OvUndoHistory *history)
{
    g_return_val_if_fail(OV_IS_UNDO_HISTORY(history), nullptr);
    const Entry *entry = history->undone.last();
    return entry != nullptr ? entry->step->text().c_str() : nullptr;
}

void ov_undo_history_mark_saved(OvUndoHistory *history)
{
    g_return_if_fail(OV_IS_UNDO_HISTORY(history));
    if (history->saved_depth == history->depth)
        return;
    history->saved_depth = history->depth;
    emit_changed(history);
}

void ov_undo_history_forget_saved(OvUndoHistory *history)
{
    g_return_if_fail(OV_IS_UNDO_HISTORY(history));
    if (history->saved_depth == unreachable)
        return;
    history->saved_depth = unreachable;
    emit_changed(history);
}

gboolean ov_undo_history_is_at_saved(OvUndoHistory *history)
{
    g_return_val_if_fail(OV_IS_UNDO_HISTORY(history), FALSE);
    return history->saved_depth == history->depth;
}
