#include "app/entry_undo.h"

#include "core/raii.h"

#include <string>
#include <utility>

namespace
{

using LangstrPtr = ov::Owned<langstr, ov_langstr_free>;

// The value of a text entry or of a multilingual entry.
struct TextValue {
    std::string text;
    static TextValue of(GtkWidget *widget) { return {gtk_entry_get_text(GTK_ENTRY(widget))}; }
    void put(GtkWidget *widget) const { gtk_entry_set_text(GTK_ENTRY(widget), text.c_str()); }
};

struct LangstrValue {
    LangstrPtr value;
    static LangstrValue of(GtkWidget *widget)
    {
        return {LangstrPtr(ov_langstr_entry_get_value(OV_LANGSTR_ENTRY(widget)))};
    }
    void put(GtkWidget *widget) const
    {
        ov_langstr_entry_set_value(OV_LANGSTR_ENTRY(widget), value.get(), nullptr);
    }
};

// What is known of one entry: its value after the last change, and the step
// of the visit going on, which later keystrokes join while it is the newest.
template <class Value> struct Tracker {
    GtkWidget *widget;
    OvUndoHistory *history;
    std::string step_text;
    bool merge_keystrokes;
    Value last;
    const ov::UndoStep *visit_step = nullptr;
    bool applying = false;
};

// Swaps the entry's value with the one it keeps.
template <class Value> class EntryStep : public ov::UndoStep
{
  public:
    EntryStep(Tracker<Value> *tracker, Value old)
        : UndoStep(tracker->step_text, OvUndoPlace{}), tracker_(tracker), other_(std::move(old))
    {
    }
    void undo() override { swap(); }
    void redo() override { swap(); }

  private:
    void swap()
    {
        Value shown = Value::of(tracker_->widget);
        tracker_->applying = true;
        other_.put(tracker_->widget);
        tracker_->applying = false;
        other_ = std::move(shown);
        tracker_->last = Value::of(tracker_->widget);
        tracker_->visit_step = nullptr;
    }

    Tracker<Value> *tracker_;
    Value other_;
};

template <class Value> void on_changed(GtkWidget *, gpointer data)
{
    auto *tracker = static_cast<Tracker<Value> *>(data);
    if (tracker->applying)
        return;
    Value now = Value::of(tracker->widget);
    if (tracker->visit_step == nullptr ||
        tracker->visit_step != ov_undo_history_get_undo_step(tracker->history)) {
        auto *step = new EntryStep<Value>(tracker, std::exchange(tracker->last, std::move(now)));
        ov_undo_history_record(tracker->history, step);
        tracker->visit_step = tracker->merge_keystrokes ? step : nullptr;
        return;
    }
    tracker->last = std::move(now);
}

template <class Value> gboolean on_focus_out(GtkWidget *, GdkEvent *, gpointer data)
{
    static_cast<Tracker<Value> *>(data)->visit_step = nullptr;
    return FALSE;
}

template <class Value>
void track(GtkWidget *widget, OvUndoHistory *history, const char *step_text, bool merge_keystrokes)
{
    auto *tracker = new Tracker<Value>{widget, history, step_text, merge_keystrokes, Value::of(widget)};
    g_object_set_data_full(
        G_OBJECT(widget), "ov-entry-undo", tracker,
        +[](gpointer data) { delete static_cast<Tracker<Value> *>(data); });
    g_signal_connect(widget, "changed", G_CALLBACK(on_changed<Value>), tracker);
    g_signal_connect(widget, "focus-out-event", G_CALLBACK(on_focus_out<Value>), tracker);
}

} // namespace

void ov_entry_undo_track_text_entry(GtkEntry *entry, OvUndoHistory *history, const char *step_text)
{
    g_return_if_fail(GTK_IS_ENTRY(entry) && OV_IS_UNDO_HISTORY(history));
    track<TextValue>(GTK_WIDGET(entry), history, step_text, true);
}

void ov_entry_undo_track_langstr_entry(OvLangstrEntry *entry, OvUndoHistory *history, const char *step_text)
{
    g_return_if_fail(OV_IS_LANGSTR_ENTRY(entry) && OV_IS_UNDO_HISTORY(history));
    track<LangstrValue>(GTK_WIDGET(entry), history, step_text, false);
}
