#include "frame/window_stack.h"

#include "core/list.h"
#include "core/raii.h"
#include "core/util.h"
#include "gui/gui.h"
#include "gui/style.h"

#include <algorithm>
#include <vector>

namespace
{

struct BusyRecord {
    GtkWidget *busy_window = nullptr;
    GtkWidget *content_box = nullptr;
    GtkWidget *message_label = nullptr;
    GtkWidget *abort_alignment = nullptr;
    GtkWidget *abort_button = nullptr;
    gboolean abort_requested = FALSE;
};

struct Node {
    // Cleared by GObject when the window is finalised.
    GtkWindow *window;
    OvWindowStackMouseCursorCallback mouse_cursor_callback;
    gpointer mouse_cursor_callback_data;
    BusyRecord *busy;
    ov::SignalGuard focus_in_handler;
    ov::SignalGuard focus_out_handler;
    Node *previous;
    Node *next;
};

struct WindowStack {
    gboolean focus_lost = FALSE;
    gint64 focus_out_time = 0;
    OvWindowStackFocusCallback focus_callback = nullptr;
    gpointer focus_callback_data = nullptr;
    ov::SentinelList<Node> nodes;
    // Idle and timeout sources of the focus tracking still pending.
    std::vector<ov::SourceGuard> focus_sources;
    // Cursors made on one display, reused while it stays the same.
    GdkDisplay *cursor_display = nullptr;
    GdkCursor *wait_cursor = nullptr;
    GdkCursor *default_cursor = nullptr;
};

constexpr int focus_priority = 300;
constexpr guint focus_timeout_ms = 500;
constexpr const char *default_busy_message = "Please wait";

WindowStack *stack = nullptr;

Node *top_node()
{
    return stack->nodes.last();
}

bool is_bottom(const Node *node)
{
    return node == stack->nodes.head;
}

GtkWidget *cursor_window_of(const Node *node)
{
    if (node->busy != nullptr)
        return node->busy->busy_window;
    return node->window != nullptr ? GTK_WIDGET(node->window) : nullptr;
}

GdkCursor *cursor_named(GdkDisplay *display, bool wait)
{
    if (stack->cursor_display != display) {
        g_clear_object(&stack->wait_cursor);
        g_clear_object(&stack->default_cursor);
        stack->cursor_display = display;
    }
    GdkCursor *&cursor = wait ? stack->wait_cursor : stack->default_cursor;
    if (cursor == nullptr)
        cursor = gdk_cursor_new_from_name(display, wait ? "wait" : "default");
    return cursor;
}

enum class Cursor { REMOVE, DEFAULT, WAIT };

void set_cursor(Node *node, Cursor cursor)
{
    GtkWidget *widget = cursor_window_of(node);
    if (widget == nullptr || !gtk_widget_get_realized(widget))
        return;
    GdkWindow *window = gtk_widget_get_window(widget);
    gdk_window_set_cursor(window, cursor == Cursor::REMOVE
                                      ? nullptr
                                      : cursor_named(gdk_window_get_display(window), cursor == Cursor::WAIT));
    if (node->mouse_cursor_callback != nullptr)
        node->mouse_cursor_callback(cursor == Cursor::REMOVE ? 0 : 1, node->mouse_cursor_callback_data);
}

// Applies the cursor from the bottom up to every node below stop (the top
// sentinel for all of them).
void set_cursors_below(const Node *stop, Cursor cursor)
{
    for (Node *node = stack->nodes.head->next; node != stop && !stack->nodes.is_end(node); node = node->next)
        set_cursor(node, cursor);
}

void set_cursors(Cursor cursor)
{
    set_cursors_below(stack->nodes.tail, cursor);
}

// Focus tracking.

void forget_focus_source(guint id)
{
    if (stack == nullptr)
        return;
    // The source ends by returning G_SOURCE_REMOVE; its guard lets go.
    auto &sources = stack->focus_sources;
    auto it = std::find_if(sources.begin(), sources.end(),
                           [id](const ov::SourceGuard &s) { return s.get() == id; });
    if (it != sources.end()) {
        it->release();
        sources.erase(it);
    }
}

bool stack_has_focus()
{
    for (Node *node : stack->nodes) {
        GtkWidget *windows[] = {node->window != nullptr ? GTK_WIDGET(node->window) : nullptr,
                                node->busy != nullptr ? node->busy->busy_window : nullptr};
        for (GtkWidget *window : windows)
            if (window != nullptr && gtk_window_has_toplevel_focus(GTK_WINDOW(window)))
                return true;
    }
    return false;
}

gboolean focus_timeout(gpointer source_id)
{
    forget_focus_source(GPOINTER_TO_UINT(source_id));
    if (stack != nullptr && !stack_has_focus())
        stack->focus_lost = TRUE;
    return G_SOURCE_REMOVE;
}

gboolean focus_idle(gpointer source_id)
{
    forget_focus_source(GPOINTER_TO_UINT(source_id));
    if (stack == nullptr)
        return G_SOURCE_REMOVE;
    // The timeout learns its own id through a box filled after it is added.
    auto *id_box = g_new0(guint, 1);
    guint id = g_timeout_add_full(
        focus_priority, focus_timeout_ms,
        [](gpointer box) -> gboolean { return focus_timeout(GUINT_TO_POINTER(*static_cast<guint *>(box))); },
        id_box, g_free);
    *id_box = id;
    stack->focus_sources.emplace_back(id);
    return G_SOURCE_REMOVE;
}

gboolean on_focus_out(GtkWidget *, GdkEventFocus *, gpointer)
{
    if (stack == nullptr)
        return FALSE;
    stack->focus_out_time = g_get_monotonic_time();
    auto *id_box = g_new0(guint, 1);
    guint id = g_idle_add_full(
        focus_priority,
        [](gpointer box) -> gboolean { return focus_idle(GUINT_TO_POINTER(*static_cast<guint *>(box))); },
        id_box, g_free);
    *id_box = id;
    stack->focus_sources.emplace_back(id);
    return FALSE;
}

gboolean on_focus_in(GtkWidget *, GdkEventFocus *, gpointer)
{
    if (stack == nullptr || !stack->focus_lost)
        return FALSE;
    stack->focus_lost = FALSE;
    if (stack->focus_callback != nullptr)
        stack->focus_callback((g_get_monotonic_time() - stack->focus_out_time) / G_USEC_PER_SEC,
                              stack->focus_callback_data);
    return FALSE;
}

// Nodes.

Node *link_node(GtkWindow *window, BusyRecord *busy)
{
    auto *node = new Node{};
    node->window = window;
    node->busy = busy;
    ov::list_append(stack->nodes, node);
    if (window != nullptr) {
        g_object_add_weak_pointer(G_OBJECT(window), reinterpret_cast<gpointer *>(&node->window));
        node->focus_in_handler.reset(
            window, g_signal_connect(window, "focus-in-event", G_CALLBACK(on_focus_in), nullptr));
        node->focus_out_handler.reset(
            window, g_signal_connect(window, "focus-out-event", G_CALLBACK(on_focus_out), nullptr));
    }
    return node;
}

void free_node(Node *node)
{
    ov::list_unlink(node);
    node->focus_in_handler.reset();
    node->focus_out_handler.reset();
    if (node->window != nullptr)
        g_object_remove_weak_pointer(G_OBJECT(node->window), reinterpret_cast<gpointer *>(&node->window));
    if (node->busy != nullptr) {
        if (node->busy->busy_window != nullptr)
            gtk_widget_destroy(node->busy->busy_window);
        delete node->busy;
    }
    delete node;
}

// Hides the busy windows directly below node and returns the first node
// below that is not busy (the owner), or null at the bottom.
Node *hide_busy_windows_below(Node *node)
{
    Node *below = node->previous;
    for (; !is_bottom(below) && below->busy != nullptr; below = below->previous)
        if (below->busy->busy_window != nullptr)
            gtk_widget_hide(below->busy->busy_window);
    return is_bottom(below) ? nullptr : below;
}

// Makes window modal over the owner's window, or a free window without one.
void attach_to_owner(GtkWindow *window, Node *owner)
{
    GtkWindow *owner_window = owner != nullptr ? owner->window : nullptr;
    if (owner_window == nullptr) {
        gtk_window_set_transient_for(window, nullptr);
        gtk_window_set_destroy_with_parent(window, FALSE);
        gtk_window_set_modal(window, FALSE);
        gtk_window_set_skip_taskbar_hint(window, FALSE);
        return;
    }
    gtk_window_set_transient_for(window, owner_window);
    gtk_window_set_destroy_with_parent(window, TRUE);
    gtk_window_set_modal(window, TRUE);
    gtk_window_set_skip_taskbar_hint(window, TRUE);
    gtk_widget_set_sensitive(GTK_WIDGET(owner_window), FALSE);
}

gboolean maximize_again(gpointer window)
{
    gtk_window_maximize(GTK_WINDOW(window));
    g_object_unref(window);
    return G_SOURCE_REMOVE;
}

void on_realize_maximize(GtkWidget *window, gpointer)
{
    g_signal_handlers_disconnect_by_func(window, reinterpret_cast<gpointer>(on_realize_maximize), nullptr);
    g_idle_add(maximize_again, window); // takes over the reference held since the push
}

void apply_position(GtkWindow *window, int mode, bool has_owner)
{
    switch (mode) {
    case OV_WINDOW_STACK_POSITION_CENTER_ON_PARENT:
        gtk_window_set_position(window, has_owner ? GTK_WIN_POS_CENTER_ON_PARENT : GTK_WIN_POS_CENTER);
        break;
    case OV_WINDOW_STACK_POSITION_CENTER:
        gtk_window_set_position(window, GTK_WIN_POS_CENTER);
        break;
    case OV_WINDOW_STACK_POSITION_MAXIMIZED:
        gtk_window_set_position(window, GTK_WIN_POS_CENTER);
        gtk_window_maximize(window);
        g_object_ref(window);
        g_signal_connect(window, "realize", G_CALLBACK(on_realize_maximize), nullptr);
        break;
    default:
        gtk_window_set_position(window, GTK_WIN_POS_MOUSE);
        break;
    }
}

// After the top node went: the new top regains control, or the nearest busy
// window comes back.
void restore_after_removal()
{
    Node *top = top_node();
    if (top == nullptr)
        return;
    if (top->busy == nullptr) {
        if (top->window != nullptr)
            gtk_widget_set_sensitive(GTK_WIDGET(top->window), TRUE);
        set_cursors_below(top, Cursor::DEFAULT);
        set_cursor(top, Cursor::REMOVE);
        return;
    }
    for (Node *node = top; !is_bottom(node) && node->busy != nullptr; node = node->previous)
        if (node->busy->busy_window != nullptr) {
            gtk_widget_show(node->busy->busy_window);
            break;
        }
    set_cursors(Cursor::WAIT);
}

BusyRecord *top_busy_with_window()
{
    Node *top = stack != nullptr ? top_node() : nullptr;
    if (top == nullptr || top->busy == nullptr || top->busy->busy_window == nullptr)
        return nullptr;
    return top->busy;
}

void on_abort_clicked(GtkButton *button, gpointer record)
{
    static_cast<BusyRecord *>(record)->abort_requested = TRUE;
    gtk_widget_set_sensitive(GTK_WIDGET(button), FALSE);
    ov_util_let_through_gtk_events();
}

void build_busy_window(Node *node)
{
    BusyRecord *busy = node->busy;
    GtkWidget *window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    busy->busy_window = window;
    gtk_window_set_decorated(GTK_WINDOW(window), FALSE);
    gtk_window_set_position(GTK_WINDOW(window), GTK_WIN_POS_CENTER);
    ov_css_style_widget(window, "* { background-color: #000000; }");
    ov_gui_set_surrounding_margin(window, 1);

    GtkWidget *event_box = ov_gui_add_event_box(GTK_CONTAINER(window));
    ov_css_style_widget(event_box, "* { background-color: #ffffff; }");
    GtkWidget *hbox = ov_gui_add_hbox(GTK_CONTAINER(event_box), FALSE);
    ov_gui_pack_space(GTK_BOX(hbox), 20, -1);
    GtkWidget *vbox = ov_gui_pack_vbox(GTK_BOX(hbox), TRUE, FALSE);
    ov_gui_pack_space(GTK_BOX(hbox), 20, -1);
    ov_gui_pack_space(GTK_BOX(vbox), -1, 20);
    busy->content_box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 15);
    ov_gui_pack_widget(GTK_BOX(vbox), busy->content_box, TRUE);
    ov_gui_pack_space(GTK_BOX(vbox), 280, 20);
    busy->message_label = ov_gui_create_label(nullptr, 0.5f, 0.5f);
    gtk_label_set_justify(GTK_LABEL(busy->message_label), GTK_JUSTIFY_CENTER);
    ov_gui_pack_widget(GTK_BOX(busy->content_box), busy->message_label, FALSE);
}

} // namespace

void ov_window_stack_init()
{
    if (stack != nullptr)
        return;
    stack = new WindowStack{};
    ov::list_init(stack->nodes);
}

void ov_window_stack_clean_up()
{
    if (stack == nullptr)
        return;
    ov::list_destroy(stack->nodes, free_node);
    g_clear_object(&stack->wait_cursor);
    g_clear_object(&stack->default_cursor);
    delete stack;
    stack = nullptr;
}

void ov_window_stack_push_window(GtkWindow *window, int position_mode)
{
    g_return_if_fail(GTK_IS_WINDOW(window));
    if (stack == nullptr)
        return;
    Node *node = link_node(window, nullptr);
    Node *owner = hide_busy_windows_below(node);
    attach_to_owner(window, owner);
    if (owner != nullptr)
        set_cursors_below(node, Cursor::DEFAULT);
    apply_position(window, position_mode, owner != nullptr && owner->window != nullptr);
}

void ov_window_stack_pop_window()
{
    if (stack == nullptr)
        return;
    Node *top = top_node();
    if (top == nullptr || top->busy != nullptr)
        return;
    free_node(top);
    restore_after_removal();
}

GtkWindow *ov_window_stack_push_native_window()
{
    if (stack == nullptr)
        return nullptr;
    GtkWindow *parent = nullptr;
    for (Node *node = top_node(); node != nullptr && !is_bottom(node); node = node->previous)
        if (node->window != nullptr) {
            parent = node->window;
            break;
        }
    link_node(nullptr, nullptr);
    return parent;
}

GtkWindow *ov_window_stack_get_top_window()
{
    if (stack == nullptr)
        return nullptr;
    Node *top = top_node();
    return top != nullptr ? top->window : nullptr;
}

void ov_window_stack_set_mouse_cursor_callback(OvWindowStackMouseCursorCallback callback, gpointer data)
{
    if (stack == nullptr || top_node() == nullptr)
        return;
    top_node()->mouse_cursor_callback = callback;
    top_node()->mouse_cursor_callback_data = data;
}

void ov_window_stack_set_focus_callback(OvWindowStackFocusCallback callback, gpointer data)
{
    if (stack == nullptr)
        return;
    stack->focus_callback = callback;
    stack->focus_callback_data = data;
}

namespace
{

struct RunState {
    GMainLoop *loop;
    bool finalized;
};

void on_run_window_destroy(GtkWidget *, gpointer state)
{
    ov_window_stack_pop_window();
    g_main_loop_quit(static_cast<RunState *>(state)->loop);
}

void note_finalized(gpointer state, GObject *)
{
    static_cast<RunState *>(state)->finalized = true;
}

} // namespace

void ov_window_stack_run_window(GtkWindow *window, int position_mode, GtkWidget *focus_widget,
                                OvWindowStackMouseCursorCallback callback, gpointer callback_data)
{
    g_return_if_fail(GTK_IS_WINDOW(window));
    if (stack == nullptr)
        return;
    RunState state{g_main_loop_new(nullptr, FALSE), false};
    g_object_weak_ref(G_OBJECT(window), note_finalized, &state);
    ov_window_stack_push_window(window, position_mode);
    if (callback != nullptr)
        ov_window_stack_set_mouse_cursor_callback(callback, callback_data);
    {
        ov::SignalGuard on_destroy(
            window, g_signal_connect(window, "destroy", G_CALLBACK(on_run_window_destroy), &state));
        gtk_widget_show(GTK_WIDGET(window));
        gtk_window_set_focus(window, focus_widget);
        g_main_loop_run(state.loop);
    }
    g_main_loop_unref(state.loop);
    if (!state.finalized) {
        g_object_weak_unref(G_OBJECT(window), note_finalized, &state);
        gtk_widget_destroy(GTK_WIDGET(window));
    }
}

void ov_window_stack_busy_begin(gboolean show_window)
{
    if (stack == nullptr)
        return;
    Node *node = link_node(nullptr, new BusyRecord{});
    if (show_window) {
        build_busy_window(node);
        ov_window_stack_set_busy_message(nullptr);
        GtkWindow *window = GTK_WINDOW(node->busy->busy_window);
        attach_to_owner(window, hide_busy_windows_below(node));
        gtk_widget_show_all(GTK_WIDGET(window));
        ov_util_let_through_gtk_events();
    }
    set_cursors(Cursor::WAIT);
    ov_util_let_through_gtk_events();
}

void ov_window_stack_busy_end()
{
    if (stack == nullptr)
        return;
    Node *top = top_node();
    if (top == nullptr || top->busy == nullptr)
        return;
    free_node(top);
    restore_after_removal();
}

void ov_window_stack_set_busy_message(const char *text)
{
    BusyRecord *busy = top_busy_with_window();
    if (busy == nullptr)
        return;
    if (text == nullptr)
        text = default_busy_message;
    gtk_window_set_title(GTK_WINDOW(busy->busy_window), text);
    ov::GStr markup(g_markup_printf_escaped("<b>%s</b>", text));
    gtk_label_set_markup(GTK_LABEL(busy->message_label), markup.get());
    gtk_window_resize(GTK_WINDOW(busy->busy_window), 1, 1);
    ov_util_let_through_gtk_events();
}

void ov_window_stack_set_busy_message_utf8_printf(const char *format, ...)
{
    va_list args;
    va_start(args, format);
    ov::GStr text(g_strdup_vprintf(format, args));
    va_end(args);
    ov_window_stack_set_busy_message(text.get());
}

void ov_window_stack_show_abort_button()
{
    BusyRecord *busy = top_busy_with_window();
    if (busy == nullptr)
        return;
    if (busy->abort_alignment == nullptr) {
        busy->abort_alignment = ov_gui_create_alignment(0.5f, 0.5f, 0.0f, 0.0f);
        ov_gui_pack_widget(GTK_BOX(busy->content_box), busy->abort_alignment, FALSE);
        busy->abort_button = ov_gui_add_button(GTK_CONTAINER(busy->abort_alignment), "Abort");
        g_signal_connect(busy->abort_button, "clicked", G_CALLBACK(on_abort_clicked), busy);
    }
    gtk_widget_show(busy->abort_alignment);
    ov_util_let_through_gtk_events();
}

void ov_window_stack_hide_abort_button()
{
    BusyRecord *busy = top_busy_with_window();
    if (busy == nullptr || busy->abort_alignment == nullptr)
        return;
    gtk_widget_hide(busy->abort_alignment);
    ov_gui_resize_window_to_minimum_unless_maximized(GTK_WINDOW(busy->busy_window), TRUE);
}

gboolean ov_window_stack_is_abort_requested()
{
    if (stack == nullptr || top_node() == nullptr || top_node()->busy == nullptr)
        return FALSE;
    return top_node()->busy->abort_requested;
}

void ov_window_stack_present()
{
    if (stack == nullptr)
        return;
    for (Node *node = top_node(); node != nullptr && !is_bottom(node); node = node->previous) {
        GtkWidget *window = cursor_window_of(node);
        if (window != nullptr) {
            gtk_window_present(GTK_WINDOW(window));
            return;
        }
    }
}

GtkWindow *ov_window_stack_get_top_busy_window()
{
    BusyRecord *busy = top_busy_with_window();
    return busy != nullptr ? GTK_WINDOW(busy->busy_window) : nullptr;
}

int ov_window_stack_get_depth()
{
    return stack != nullptr ? int(ov::list_count(stack->nodes)) : 0;
}

gboolean ov_window_stack_is_focus_lost()
{
    return stack != nullptr && stack->focus_lost;
}
