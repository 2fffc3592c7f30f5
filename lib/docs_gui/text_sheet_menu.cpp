#include "docs_gui/text_sheet_menu.h"

#include "docs_gui/template_gui.h"
#include "docs_gui/text_sheet_fields_gui.h"
#include "docs_gui/undo_history.h"
#include "frame/message.h"
#include "gui/menu.h"
#include "widgets/langstr_window.h"

#include <array>
#include <string>
#include <utility>

namespace
{

// The menu's actions in alphabetical order of their names; an item carries
// its number.
enum Action : int {
    ADD_BLOCK,
    ADD_BLOCK_ABOVE,
    ADD_BLOCK_BELOW,
    ADD_ROW,
    ADD_ROW_ABOVE,
    ADD_ROW_BELOW,
    ADD_SEGMENT,
    ADD_SEGMENT_ABOVE,
    ADD_SEGMENT_BELOW,
    DELETE_BLOCK,
    DELETE_BLOCK_HEADER,
    DELETE_ROW,
    DELETE_SEGMENT,
    DELETE_SEGMENT_HEADER,
    EDIT_BLOCK_HEADER,
    EDIT_ROW_HEADER,
    EDIT_SEGMENT_HEADER,
    MOVE_BLOCK_DOWN,
    MOVE_BLOCK_UP,
    MOVE_ROW_DOWN,
    MOVE_ROW_UP,
    MOVE_SEGMENT_DOWN,
    MOVE_SEGMENT_UP,
    READ_ALL,
    READ_ONE_BLOCK,
    READ_ONE_ROW,
    READ_ONE_SEGMENT,
    SET_UP_FIELDS,
    N_ACTIONS
};

// The entry texts; the header entries read "Set ..." for a node without a
// header, and "read all" names what it reads on each sheet.
constexpr std::array<const char *, N_ACTIONS> entry_texts = {
    "Add block",
    "Add block above",
    "Add block below",
    "Add row",
    "Add row above",
    "Add row below",
    "Add segment",
    "Add segment above",
    "Add segment below",
    "Delete block",
    "Delete block header",
    "Delete row",
    "Delete segment",
    "Delete segment header",
    "Edit block header",
    "Edit row header",
    "Edit segment header",
    "Move block down",
    "Move block up",
    "Move row down",
    "Move row up",
    "Move segment down",
    "Move segment up",
    "Read all segments of one report type from a template",
    "Read one block from a template",
    "Read one row from a template",
    "Read one segment from a template",
    "Set up fields",
};

struct Context {
    ov_template *tmpl;
    ov_template_report_type *report_type; // null on the basic data sheet
    bool basic_data;
    ov_text_sheet_segment *segment;
    ov_text_sheet_block *block;
    ov_text_sheet_row *row;
    GtkWindow *parent;
    OvUndoHistory *history; // may be null
    std::string entry;      // the chosen entry's text, which names the edit
    gboolean changed;

    // The deepest of the given nodes, or else of the clicked ones.
    OvUndoPlace place(ov_text_sheet_segment *s = nullptr, ov_text_sheet_block *b = nullptr,
                      ov_text_sheet_row *r = nullptr) const
    {
        if (s == nullptr && b == nullptr && r == nullptr)
            return {TRUE, report_type, segment, block, row};
        return {TRUE, report_type, s != nullptr ? s : segment, b, r};
    }
    void record(ov::UndoStep *step) const { ov_undo_history_record(history, step); }
};

// The fields of a row before the fields dialog's "OK"; undo and redo swap
// the two lists.
class FieldsStep : public ov::UndoStep
{
  public:
    FieldsStep(std::string text, const OvUndoPlace &place, ov_text_sheet_row *row,
               ov::SentinelList<ov_text_sheet_field> old)
        : UndoStep(std::move(text), place), row_(row), other_(old)
    {
    }
    ~FieldsStep() override { ov::list_destroy(other_, ov_text_sheet_field_destroy); }
    void undo() override { std::swap(row_->fields, other_); }
    void redo() override { std::swap(row_->fields, other_); }

  private:
    ov_text_sheet_row *row_;
    ov::SentinelList<ov_text_sheet_field> other_;
};

// A node is first or last when its neighbour is the list's sentinel.
template <class Node> bool is_first(const Node *node)
{
    return node->previous->previous == nullptr;
}

template <class Node> bool is_last(const Node *node)
{
    return node->next->next == nullptr;
}

// The header a dialog asks for. allow_empty is the multilingual text
// window's flag that lets OK take an empty text: segments and blocks may go
// without a header (the sheet then shows none), a row always has one.
struct HeaderField {
    const char *label;
    gboolean allow_empty;
};

constexpr HeaderField segment_header = {"Segment header", TRUE};
constexpr HeaderField block_header = {"Block header", TRUE};
constexpr HeaderField row_header = {"Row header", FALSE};

// Records the old header of a node whose header the edit changed; it
// takes over old.
void record_header(const Context &c, const OvUndoPlace &place, langstr **slot, langstr *old)
{
    c.record(new ov::LangstrStep(c.entry, place, slot, old));
}

// Edits the node's own header in place; TRUE when confirmed.
template <class Node> gboolean edit_header(const Context &c, Node *node, const HeaderField &field)
{
    langstr *old = ov_langstr_clone(node->header);
    if (!ov_langstr_window_run(0, &node->header, nullptr, nullptr, 0, field.allow_empty, nullptr, field.label,
                               nullptr, nullptr)) {
        ov_langstr_free(old);
        return FALSE;
    }
    record_header(c, c.place(), &node->header, old);
    return TRUE;
}

// A new node with the header the user enters, or null when cancelled.
template <class Node> Node *ask_new_node(Node *(*create)(const langstr *), const HeaderField &field)
{
    langstr *header = nullptr;
    if (!ov_langstr_window_run(0, &header, nullptr, nullptr, 0, field.allow_empty, nullptr, field.label,
                               nullptr, nullptr))
        return nullptr;
    Node *node = create(header);
    ov_langstr_free(header);
    return node;
}

// Where a new or deleted node is shown.
OvUndoPlace place_of(const Context &c, ov_text_sheet_segment *node)
{
    return c.place(node);
}
OvUndoPlace place_of(const Context &c, ov_text_sheet_block *node)
{
    return c.place(c.segment, node);
}
OvUndoPlace place_of(const Context &c, ov_text_sheet_row *node)
{
    return c.place(c.segment, c.block, node);
}

// Links a new node into place with link(node); FALSE when the user
// cancelled its header.
template <class Node, class Link>
gboolean add_node(const Context &c, Node *(*create)(const langstr *), void (*destroy)(Node *),
                  const HeaderField &field, Link link)
{
    Node *node = ask_new_node(create, field);
    if (node == nullptr)
        return FALSE;
    link(node);
    c.record(new ov::SpliceStep<Node>(c.entry, place_of(c, node), node->previous, 1, destroy));
    return TRUE;
}

// A new row is never empty: it starts with one text field.
ov_text_sheet_row *new_row(const langstr *header)
{
    ov_text_sheet_row *row = ov_text_sheet_row_new(header);
    ov_text_sheet_row_add_field(row, ov_text_sheet_field_new(OV_TEXT_SHEET_FIELD_KIND_TEXT_FIELD));
    return row;
}

// The step takes the node out of the sheet and keeps it while it can be
// undone; without a history it is destroyed at once.
template <class Node>
gboolean delete_node(const Context &c, Node *node, void (*destroy)(Node *), const char *question)
{
    if (!ov_message_ask_yes_no_question(FALSE, TRUE, question))
        return FALSE;
    c.record(new ov::SpliceStep<Node>(c.entry, place_of(c, node), node, destroy));
    return TRUE;
}

template <class Node> gboolean delete_header(const Context &c, Node *node, const char *question)
{
    if (!ov_message_ask_yes_no_question(FALSE, FALSE, question))
        return FALSE;
    record_header(c, c.place(), &node->header, std::exchange(node->header, nullptr));
    return TRUE;
}

template <class Node> gboolean move_node(const Context &c, Node *node, bool up)
{
    if (!(up ? ov::list_move_up(node) : ov::list_move_down(node)))
        return FALSE;
    c.record(new ov::MoveStep<Node>(c.entry, place_of(c, node), node, up));
    return TRUE;
}

// The step of a read: the nodes appended to list after its last node before
// the read (its head sentinel when it was empty).
template <class Node>
void record_appended(const Context &c, const OvUndoPlace &place, const ov::SentinelList<Node> &list,
                     Node *mark, void (*destroy)(Node *))
{
    std::uint32_t count = 0;
    for (Node *node = mark->next; !list.is_end(node); node = node->next)
        ++count;
    c.record(new ov::SpliceStep<Node>(c.entry, place, mark, count, destroy));
}

// Items read from other templates always go to the end of the target: the
// list each mode appends to is marked before the read.
gboolean read_from_template(const Context &c, int mode)
{
    auto read = [&](const OvUndoPlace &place, const auto &list, auto destroy) -> gboolean {
        auto *mark = list.tail->previous;
        if (!ov_template_gui_apply_template_to_template(mode, c.tmpl, c.report_type, c.segment, c.block))
            return FALSE;
        record_appended(c, place, list, mark, destroy);
        return TRUE;
    };
    switch (mode) {
    case OV_TEMPLATE_GUI_ALL_BASIC_DATA_BLOCKS:
        return read(c.place(c.tmpl->details), c.tmpl->details->blocks, ov_text_sheet_block_destroy);
    case OV_TEMPLATE_GUI_ALL_SEGMENTS_OF_REPORT_TYPE:
    case OV_TEMPLATE_GUI_SEGMENT:
        return read(c.place(), c.report_type->segments, ov_text_sheet_segment_destroy);
    case OV_TEMPLATE_GUI_BASIC_DATA_BLOCK:
    case OV_TEMPLATE_GUI_BLOCK:
        return read(c.place(), c.segment->blocks, ov_text_sheet_block_destroy);
    default:
        return read(c.place(), c.block->rows, ov_text_sheet_row_destroy);
    }
}

// The fields dialog's "OK" is one step that keeps a copy of the fields
// before it.
gboolean set_up_fields(const Context &c)
{
    ov::SentinelList<ov_text_sheet_field> old;
    ov::list_init(old);
    ov::list_clone_into(old, c.row->fields, ov_text_sheet_field_clone);
    if (!ov_text_sheet_fields_gui_run(c.row, c.parent)) {
        ov::list_destroy(old, ov_text_sheet_field_destroy);
        return FALSE;
    }
    c.record(new FieldsStep(c.entry, c.place(), c.row, old));
    return TRUE;
}

gboolean perform(Context &c, Action action)
{
    switch (action) {
    case ADD_BLOCK:
        return add_node(c, ov_text_sheet_block_new, ov_text_sheet_block_destroy, block_header,
                        [&](auto *node) { ov_text_sheet_segment_add_block(c.segment, node); });
    case ADD_BLOCK_ABOVE:
        return add_node(c, ov_text_sheet_block_new, ov_text_sheet_block_destroy, block_header,
                        [&](auto *node) { ov_text_sheet_block_add_before(node, c.block); });
    case ADD_BLOCK_BELOW:
        return add_node(c, ov_text_sheet_block_new, ov_text_sheet_block_destroy, block_header,
                        [&](auto *node) { ov_text_sheet_block_add_after(node, c.block); });
    case ADD_ROW:
        return add_node(c, new_row, ov_text_sheet_row_destroy, row_header,
                        [&](auto *node) { ov_text_sheet_block_add_row(c.block, node); });
    case ADD_ROW_ABOVE:
        return add_node(c, new_row, ov_text_sheet_row_destroy, row_header,
                        [&](auto *node) { ov_text_sheet_row_add_before(node, c.row); });
    case ADD_ROW_BELOW:
        return add_node(c, new_row, ov_text_sheet_row_destroy, row_header,
                        [&](auto *node) { ov_text_sheet_row_add_after(node, c.row); });
    case ADD_SEGMENT:
        return add_node(c, ov_text_sheet_segment_new, ov_text_sheet_segment_destroy, segment_header,
                        [&](auto *node) { ov_template_report_type_add_segment(c.report_type, node); });
    case ADD_SEGMENT_ABOVE:
        return add_node(c, ov_text_sheet_segment_new, ov_text_sheet_segment_destroy, segment_header,
                        [&](auto *node) { ov_text_sheet_segment_add_before(node, c.segment); });
    case ADD_SEGMENT_BELOW:
        return add_node(c, ov_text_sheet_segment_new, ov_text_sheet_segment_destroy, segment_header,
                        [&](auto *node) { ov_text_sheet_segment_add_after(node, c.segment); });
    case DELETE_BLOCK:
        return delete_node(c, c.block, ov_text_sheet_block_destroy,
                           "Do you really want to delete this entire block?");
    case DELETE_BLOCK_HEADER:
        return delete_header(c, c.block, "Do you really want to delete the block header?");
    case DELETE_ROW:
        return delete_node(c, c.row, ov_text_sheet_row_destroy, "Do you really want to delete this row?");
    case DELETE_SEGMENT:
        return delete_node(c, c.segment, ov_text_sheet_segment_destroy,
                           "Do you really want to delete this entire segment?");
    case DELETE_SEGMENT_HEADER:
        return delete_header(c, c.segment, "Do you really want to delete the segment header?");
    case EDIT_BLOCK_HEADER:
        return edit_header(c, c.block, block_header);
    case EDIT_ROW_HEADER:
        return edit_header(c, c.row, row_header);
    case EDIT_SEGMENT_HEADER:
        return edit_header(c, c.segment, segment_header);
    case MOVE_BLOCK_DOWN:
        return move_node(c, c.block, false);
    case MOVE_BLOCK_UP:
        return move_node(c, c.block, true);
    case MOVE_ROW_DOWN:
        return move_node(c, c.row, false);
    case MOVE_ROW_UP:
        return move_node(c, c.row, true);
    case MOVE_SEGMENT_DOWN:
        return move_node(c, c.segment, false);
    case MOVE_SEGMENT_UP:
        return move_node(c, c.segment, true);
    case READ_ALL:
        return read_from_template(c, c.basic_data ? OV_TEMPLATE_GUI_ALL_BASIC_DATA_BLOCKS
                                                  : OV_TEMPLATE_GUI_ALL_SEGMENTS_OF_REPORT_TYPE);
    case READ_ONE_BLOCK:
        return read_from_template(c, c.basic_data ? OV_TEMPLATE_GUI_BASIC_DATA_BLOCK : OV_TEMPLATE_GUI_BLOCK);
    case READ_ONE_ROW:
        return read_from_template(c, c.basic_data ? OV_TEMPLATE_GUI_BASIC_DATA_ROW : OV_TEMPLATE_GUI_ROW);
    case READ_ONE_SEGMENT:
        return read_from_template(c, OV_TEMPLATE_GUI_SEGMENT);
    case SET_UP_FIELDS:
        return set_up_fields(c);
    case N_ACTIONS:
        break;
    }
    return FALSE;
}

void on_activate(GtkMenuItem *item, gpointer context)
{
    auto *c = static_cast<Context *>(context);
    const int action = GPOINTER_TO_INT(ov_gui_menu_get_item_data(GTK_WIDGET(item)));
    if (action < 0 || action >= N_ACTIONS)
        return;
    c->entry = gtk_menu_item_get_label(item);
    c->changed = perform(*c, static_cast<Action>(action));
}

class MenuBuilder
{
  public:
    explicit MenuBuilder(Context &c) : c_(c), menu_(GTK_MENU_SHELL(gtk_menu_new())) {}

    MenuBuilder &item(Action action, bool insensitive = false, const char *text = nullptr)
    {
        ov_gui_menu_append_item_with_activate_callback(menu_, text != nullptr ? text : entry_texts[action],
                                                       GINT_TO_POINTER(action), insensitive ? 1 : 0,
                                                       on_activate, &c_);
        return *this;
    }
    MenuBuilder &separator()
    {
        ov_gui_menu_append_separator(menu_);
        return *this;
    }
    // A node's header entries: edit and delete, or set when it has none.
    MenuBuilder &header(const langstr *header, Action edit, const char *set_text, Action delete_header)
    {
        return header != nullptr ? item(edit).item(delete_header) : item(edit, false, set_text);
    }
    GtkMenu *menu() const { return GTK_MENU(menu_); }

  private:
    Context &c_;
    GtkMenuShell *menu_;
};

void build_row_menu(MenuBuilder &m, const ov_text_sheet_row *row)
{
    m.item(EDIT_ROW_HEADER).item(SET_UP_FIELDS).separator();
    m.item(MOVE_ROW_UP, is_first(row)).item(MOVE_ROW_DOWN, is_last(row)).item(DELETE_ROW).separator();
    m.item(ADD_ROW_ABOVE).item(ADD_ROW_BELOW);
}

void build_block_menu(MenuBuilder &m, const ov_text_sheet_block *block)
{
    m.header(block->header, EDIT_BLOCK_HEADER, "Set block header", DELETE_BLOCK_HEADER);
    m.item(ADD_ROW).separator().item(READ_ONE_ROW).separator();
    m.item(MOVE_BLOCK_UP, is_first(block))
        .item(MOVE_BLOCK_DOWN, is_last(block))
        .item(DELETE_BLOCK)
        .separator();
    m.item(ADD_BLOCK_ABOVE).item(ADD_BLOCK_BELOW);
}

void build_segment_menu(MenuBuilder &m, const ov_text_sheet_segment *segment)
{
    m.header(segment->header, EDIT_SEGMENT_HEADER, "Set segment header", DELETE_SEGMENT_HEADER);
    m.item(ADD_BLOCK).separator().item(READ_ONE_BLOCK).separator();
    m.item(MOVE_SEGMENT_UP, is_first(segment)).item(MOVE_SEGMENT_DOWN, is_last(segment)).item(DELETE_SEGMENT);
    m.separator().item(ADD_SEGMENT_ABOVE).item(ADD_SEGMENT_BELOW);
}

// The details segment has no header and is never moved, deleted or joined
// by other segments.
void build_basic_data_menu(MenuBuilder &m)
{
    m.item(ADD_BLOCK).separator().item(READ_ONE_BLOCK);
    m.item(READ_ALL, false, "Read all basic data blocks from a template");
}

void build_empty_space_menu(MenuBuilder &m)
{
    m.item(ADD_SEGMENT).separator().item(READ_ONE_SEGMENT).item(READ_ALL);
}

} // namespace

namespace
{

// The menu for the most specific level given, shown by show.
template <class Show>
gboolean run_menu(ov_template *tmpl, ov_template_report_type *report_type, ov_text_sheet_segment *segment,
                  ov_text_sheet_block *block, ov_text_sheet_row *row, GtkWindow *parent,
                  OvUndoHistory *history, Show show)
{
    const bool basic_data = report_type == nullptr;
    if (basic_data && segment == nullptr)
        segment = tmpl->details;
    Context c = {tmpl, report_type, basic_data, segment, block, row, parent, history, {}, FALSE};
    MenuBuilder m(c);
    if (row != nullptr)
        build_row_menu(m, row);
    else if (block != nullptr)
        build_block_menu(m, block);
    else if (segment != nullptr && basic_data)
        build_basic_data_menu(m);
    else if (segment != nullptr)
        build_segment_menu(m, segment);
    else
        build_empty_space_menu(m);
    show(m.menu());
    return c.changed;
}

} // namespace

gboolean ov_text_sheet_menu_run_for_template(ov_template *tmpl, ov_template_report_type *report_type,
                                             ov_text_sheet_segment *segment, ov_text_sheet_block *block,
                                             ov_text_sheet_row *row, GtkWindow *parent)
{
    return ov_text_sheet_menu_run_with_history(tmpl, report_type, segment, block, row, parent, nullptr);
}

gboolean ov_text_sheet_menu_run_with_history(ov_template *tmpl, ov_template_report_type *report_type,
                                             ov_text_sheet_segment *segment, ov_text_sheet_block *block,
                                             ov_text_sheet_row *row, GtkWindow *parent,
                                             OvUndoHistory *history)
{
    g_return_val_if_fail(tmpl != nullptr, FALSE);
    g_return_val_if_fail(row == nullptr || block != nullptr, FALSE);
    return run_menu(tmpl, report_type, segment, block, row, parent, history,
                    [](GtkMenu *menu) { ov_gui_menu_run_and_destroy(menu, nullptr); });
}

gboolean ov_text_sheet_menu_run_at_rect(ov_template *tmpl, ov_template_report_type *report_type,
                                        ov_text_sheet_segment *segment, ov_text_sheet_block *block,
                                        ov_text_sheet_row *row, GtkWidget *widget,
                                        const GdkRectangle *rectangle, GtkWindow *parent,
                                        OvUndoHistory *history)
{
    g_return_val_if_fail(tmpl != nullptr, FALSE);
    g_return_val_if_fail(row == nullptr || block != nullptr, FALSE);
    g_return_val_if_fail(GTK_IS_WIDGET(widget) && rectangle != nullptr, FALSE);
    return run_menu(tmpl, report_type, segment, block, row, parent, history,
                    [&](GtkMenu *menu) { ov_gui_menu_run_at_rect_and_destroy(menu, widget, rectangle); });
}

namespace
{

struct KeyedAction {
    Action action;
    int level; // 0 segment, 1 block, 2 row: the node it needs
    // Offered only away from the first (-1) or last (1) place.
    int place;
};

constexpr std::array<KeyedAction, 15> keyed_actions = {{
    {EDIT_SEGMENT_HEADER, 0, 0},
    {EDIT_BLOCK_HEADER, 1, 0},
    {EDIT_ROW_HEADER, 2, 0},
    {MOVE_SEGMENT_UP, 0, -1},
    {MOVE_SEGMENT_DOWN, 0, 1},
    {MOVE_BLOCK_UP, 1, -1},
    {MOVE_BLOCK_DOWN, 1, 1},
    {MOVE_ROW_UP, 2, -1},
    {MOVE_ROW_DOWN, 2, 1},
    {DELETE_SEGMENT, 0, 0},
    {DELETE_BLOCK, 1, 0},
    {DELETE_ROW, 2, 0},
    {ADD_ROW, 1, 0},
    {ADD_ROW_ABOVE, 2, 0},
    {ADD_ROW_BELOW, 2, 0},
}};

template <class Node> bool offered_at(const Node *node, int place)
{
    return place == 0 || (place < 0 ? !is_first(node) : !is_last(node));
}

} // namespace

gboolean ov_text_sheet_menu_perform(ov_template *tmpl, ov_template_report_type *report_type,
                                    ov_text_sheet_segment *segment, ov_text_sheet_block *block,
                                    ov_text_sheet_row *row, OvTextSheetMenuAction action, GtkWindow *parent,
                                    OvUndoHistory *history)
{
    g_return_val_if_fail(tmpl != nullptr, FALSE);
    g_return_val_if_fail(action >= 0 && std::size_t(action) < keyed_actions.size(), FALSE);
    const KeyedAction &keyed = keyed_actions[action];
    const bool basic_data = report_type == nullptr;
    if (basic_data && segment == nullptr)
        segment = tmpl->details;
    // The details segment has no segment entries at all.
    switch (keyed.level) {
    case 0:
        if (segment == nullptr || (basic_data && segment == tmpl->details) ||
            !offered_at(segment, keyed.place))
            return FALSE;
        break;
    case 1:
        if (block == nullptr || !offered_at(block, keyed.place))
            return FALSE;
        break;
    default:
        if (row == nullptr || block == nullptr || !offered_at(row, keyed.place))
            return FALSE;
    }
    Context c = {
        tmpl, report_type, basic_data, segment, block, row, parent, history, entry_texts[keyed.action],
        FALSE};
    return perform(c, keyed.action);
}

gboolean ov_text_sheet_menu_edit_field_text(ov_template_report_type *report_type,
                                            ov_text_sheet_segment *segment, ov_text_sheet_block *block,
                                            ov_text_sheet_row *row, ov_text_sheet_field *field,
                                            OvUndoHistory *history)
{
    g_return_val_if_fail(field != nullptr, FALSE);
    const bool checkbox = field->kind == OV_TEXT_SHEET_FIELD_KIND_CHECKBOX;
    langstr *old = ov_langstr_clone(field->text);
    const gboolean confirmed =
        checkbox ? ov_langstr_window_run(0, &field->text, nullptr, nullptr, 0, FALSE, "Edit checkbox",
                                         "Enter checkbox label", nullptr, nullptr)
                 : ov_langstr_window_run(0, &field->text, nullptr, nullptr, 0, TRUE, "Edit text field",
                                         "Text", nullptr, nullptr);
    if (!confirmed) {
        ov_langstr_free(old);
        return FALSE;
    }
    const OvUndoPlace place = {TRUE, report_type, segment, block, row};
    ov_undo_history_record(history, new ov::LangstrStep(checkbox ? "Edit checkbox" : "Edit text field", place,
                                                        &field->text, old));
    return TRUE;
}
