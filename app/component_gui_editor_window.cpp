#include "app/component_gui_editor_window.h"

#include "app/keyboard_shortcuts_window.h"
#include "app/untranslated_walk.h"
#include "core/fs_utils.h"
#include "core/raii.h"
#include "docs_gui/undo_history.h"
#include "frame/message.h"
#include "gui/gui.h"
#include "gui/menu.h"
#include "lang/active_locale.h"
#include "widgets/active_locale_picker.h"

#include <utility>

struct _OvComponentGuiEditorWindow {
    GtkWindow parent_instance;
    const char *program_title;
    const char *file_path;
    gboolean file_has_been_modified;
    // A change made outside the history since the last save.
    gboolean unrecorded_change;
    OvUndoHistory *history;
    gulong history_handler;
    GtkWidget *file_menu_button;
    GtkWidget *edit_menu_button;
    gulong edit_menu_handler;
    // Set by an undo or redo from the keyboard until the next frame is
    // drawn; a held key's repeats meanwhile are dropped.
    guint drawn_idle;
    GtkWidget *contents_container;
    gulong file_menu_handler;
    gboolean save_key_down;
    gboolean close_key_down;
    GtkWidget *picker;
    GtkWidget *note;
    guint note_timeout;
};

G_DEFINE_TYPE(OvComponentGuiEditorWindow, ov_component_gui_editor_window, GTK_TYPE_WINDOW)

enum { SIGNAL_SAVE, N_SIGNALS };
static guint signals[N_SIGNALS];

namespace
{

enum : int { RESPONSE_SAVE = 1, RESPONSE_CLOSE_WITHOUT_SAVING = 2 };

void update_title(OvComponentGuiEditorWindow *self)
{
    const char *name =
        self->file_path != nullptr ? ov_fs_utils_find_entry_name_in_path(self->file_path) : nullptr;
    const ov::GStr title =
        ov::gstr(ov_gui_generate_main_window_title(self->program_title, name, self->file_has_been_modified));
    gtk_window_set_title(GTK_WINDOW(self), title.get());
}

// Closing takes one path whatever asked for it: the window's own delete
// event.
void request_close(OvComponentGuiEditorWindow *self)
{
    GdkWindow *gdk_window = gtk_widget_get_window(GTK_WIDGET(self));
    if (gdk_window == nullptr)
        return;
    GdkEvent *event = gdk_event_new(GDK_DELETE);
    event->any.window = GDK_WINDOW(g_object_ref(gdk_window));
    event->any.send_event = TRUE;
    gtk_main_do_event(event);
    gdk_event_free(event);
}

void on_file_menu_clicked(GtkButton *button, gpointer data)
{
    auto *self = OV_COMPONENT_GUI_EDITOR_WINDOW(data);
    switch (ov_component_gui_file_menu_run(GTK_WIDGET(button))) {
    case OV_COMPONENT_GUI_FILE_MENU_SAVE:
        g_signal_emit(self, signals[SIGNAL_SAVE], 0);
        break;
    case OV_COMPONENT_GUI_FILE_MENU_CLOSE:
        request_close(self);
        break;
    case OV_COMPONENT_GUI_FILE_MENU_SHORTCUTS:
        ov_keyboard_shortcuts_window_present(GTK_WINDOW(self));
        break;
    default:
        break;
    }
}

void set_modified(OvComponentGuiEditorWindow *self, gboolean modified)
{
    if (self->file_has_been_modified == modified)
        return;
    self->file_has_been_modified = modified;
    update_title(self);
}

void on_history_changed(OvUndoHistory *history, gpointer data)
{
    auto *self = OV_COMPONENT_GUI_EDITOR_WINDOW(data);
    set_modified(self, self->unrecorded_change || !ov_undo_history_is_at_saved(history));
}

void on_edit_menu_clicked(GtkButton *button, gpointer data)
{
    auto *self = OV_COMPONENT_GUI_EDITOR_WINDOW(data);
    switch (ov_component_gui_edit_menu_run(GTK_WIDGET(button), self->history)) {
    case OV_COMPONENT_GUI_EDIT_MENU_UNDO:
        ov_undo_history_undo(self->history);
        break;
    case OV_COMPONENT_GUI_EDIT_MENU_REDO:
        ov_undo_history_redo(self->history);
        break;
    default:
        break;
    }
}

gboolean on_drawn(gpointer data)
{
    OV_COMPONENT_GUI_EDITOR_WINDOW(data)->drawn_idle = 0;
    return G_SOURCE_REMOVE;
}

// Undo or redo from the keyboard, unless the last one is not drawn yet.
void undo_or_redo_key(OvComponentGuiEditorWindow *self, bool redo)
{
    if (self->drawn_idle != 0)
        return;
    if (!(redo ? ov_undo_history_redo(self->history) : ov_undo_history_undo(self->history)))
        return;
    // Idle handlers below the redraw priority run after the frame.
    self->drawn_idle = g_idle_add_full(G_PRIORITY_DEFAULT_IDLE, on_drawn, self, nullptr);
}

void on_file_menu_item(GtkMenuItem *item, gpointer data)
{
    *static_cast<int *>(data) = GPOINTER_TO_INT(ov_gui_menu_get_item_data(GTK_WIDGET(item)));
}

// The key's character when it is a single byte in UTF-8, else 0.
char key_character(const GdkEventKey *event)
{
    char text[8] = {};
    const int length = g_unichar_to_utf8(gdk_keyval_to_unicode(event->keyval), text);
    return length == 1 ? text[0] : '\0';
}

gboolean hide_note(gpointer data)
{
    auto *self = OV_COMPONENT_GUI_EDITOR_WINDOW(data);
    self->note_timeout = 0;
    gtk_label_set_text(GTK_LABEL(self->note), "");
    return G_SOURCE_REMOVE;
}

// F8 and Shift+F8: the next or previous text without a translation.
void walk_untranslated(OvComponentGuiEditorWindow *self, gboolean forward)
{
    if (ov_untranslated_walk(self->contents_container, forward)) {
        g_clear_handle_id(&self->note_timeout, g_source_remove);
        gtk_label_set_text(GTK_LABEL(self->note), "");
        return;
    }
    const ov::GStr language = ov::gstr(ov_locale_format_ui_string(ov_ovinternal_get_active_locale()));
    const ov::GStr text = ov::gstr(g_strdup_printf("Every text has a translation in %s.", language.get()));
    ov_component_gui_editor_window_show_note(self, text.get());
}

// Only the shortcuts are taken: a plain "s" or "w" goes on to the entry
// that has the focus.
gboolean on_key_press(GtkWidget *, GdkEventKey *event, gpointer data)
{
    auto *self = OV_COMPONENT_GUI_EDITOR_WINDOW(data);
    const gboolean primary = (event->state & ov_gui_menu_get_primary_accelerator_modifier()) != 0;
    const guint modifiers = event->state & gtk_accelerator_get_default_mod_mask();
    if (event->keyval == GDK_KEY_F8 && (modifiers & ~GDK_SHIFT_MASK) == 0) {
        walk_untranslated(self, (modifiers & GDK_SHIFT_MASK) == 0);
        return TRUE;
    }
    if (event->keyval == GDK_KEY_question && primary) {
        ov_keyboard_shortcuts_window_present(GTK_WINDOW(self));
        return TRUE;
    }
    if (!primary)
        return FALSE;
    switch (key_character(event)) {
    case 'z':
    case 'Z':
    case 'y':
    case 'Y':
        undo_or_redo_key(self, (event->state & GDK_SHIFT_MASK) != 0 ||
                                   g_ascii_tolower(key_character(event)) == 'y');
        return TRUE;
    case 'w':
        // Held down, the key closes once, not once per repeat.
        if (!self->close_key_down) {
            self->close_key_down = TRUE;
            request_close(self);
        }
        return TRUE;
    case 's':
        if (!self->save_key_down) {
            self->save_key_down = TRUE;
            g_signal_emit(self, signals[SIGNAL_SAVE], 0);
        }
        return TRUE;
    default:
        return FALSE;
    }
}

gboolean on_key_release(GtkWidget *, GdkEventKey *event, gpointer data)
{
    auto *self = OV_COMPONENT_GUI_EDITOR_WINDOW(data);
    switch (key_character(event)) {
    case 'w':
        return std::exchange(self->close_key_down, FALSE);
    case 's':
        return std::exchange(self->save_key_down, FALSE);
    default:
        return FALSE;
    }
}

gboolean on_focus_out(GtkWidget *, GdkEventFocus *, gpointer data)
{
    auto *self = OV_COMPONENT_GUI_EDITOR_WINDOW(data);
    self->save_key_down = FALSE;
    self->close_key_down = FALSE;
    return FALSE;
}

// TRUE keeps the window open.
gboolean on_delete(GtkWidget *, GdkEvent *, gpointer data)
{
    auto *self = OV_COMPONENT_GUI_EDITOR_WINDOW(data);
    if (!self->file_has_been_modified)
        return FALSE;
    GtkWidget *dialog = ov_message_create_question_dialog(
        "Save before closing?", "Do you want to save your changes before closing the file?");
    gtk_dialog_add_button(GTK_DIALOG(dialog), "Save", RESPONSE_SAVE);
    gtk_dialog_add_button(GTK_DIALOG(dialog), "Close without saving", RESPONSE_CLOSE_WITHOUT_SAVING);
    gtk_dialog_add_button(GTK_DIALOG(dialog), "_Cancel", GTK_RESPONSE_CANCEL);
    const int response = ov_message_run_and_destroy_dialog(dialog);
    // The question took the keys' releases; the next press must count.
    self->close_key_down = FALSE;
    self->save_key_down = FALSE;
    // The window closes even when the owner's save fails (the owner has
    // shown why), and on any answer but Cancel: dismissing the question
    // closes without saving.
    if (response == RESPONSE_SAVE)
        g_signal_emit(self, signals[SIGNAL_SAVE], 0);
    return response == GTK_RESPONSE_CANCEL;
}

} // namespace

static void ov_component_gui_editor_window_destroy(GtkWidget *widget)
{
    auto *self = OV_COMPONENT_GUI_EDITOR_WINDOW(widget);
    if (self->file_menu_button != nullptr)
        g_clear_signal_handler(&self->file_menu_handler, self->file_menu_button);
    g_clear_object(&self->file_menu_button);
    if (self->edit_menu_button != nullptr)
        g_clear_signal_handler(&self->edit_menu_handler, self->edit_menu_button);
    g_clear_object(&self->edit_menu_button);
    g_clear_handle_id(&self->drawn_idle, g_source_remove);
    if (self->history != nullptr)
        g_clear_signal_handler(&self->history_handler, self->history);
    g_clear_object(&self->history);
    g_clear_object(&self->contents_container);
    g_clear_handle_id(&self->note_timeout, g_source_remove);
    GTK_WIDGET_CLASS(ov_component_gui_editor_window_parent_class)->destroy(widget);
}

static void ov_component_gui_editor_window_class_init(OvComponentGuiEditorWindowClass *klass)
{
    GTK_WIDGET_CLASS(klass)->destroy = ov_component_gui_editor_window_destroy;
    signals[SIGNAL_SAVE] = g_signal_new("save", G_TYPE_FROM_CLASS(klass), G_SIGNAL_RUN_FIRST, 0, nullptr,
                                        nullptr, nullptr, G_TYPE_NONE, 0);
}

static void ov_component_gui_editor_window_init(OvComponentGuiEditorWindow *) {}

GtkWidget *ov_component_gui_editor_window_new(const char *program_title, const char *file_path,
                                              gboolean is_new)
{
    auto *self = OV_COMPONENT_GUI_EDITOR_WINDOW(
        g_object_new(OV_TYPE_COMPONENT_GUI_EDITOR_WINDOW, "type", GTK_WINDOW_TOPLEVEL, nullptr));
    self->program_title = program_title;
    self->file_path = file_path;
    self->file_has_been_modified = is_new;
    self->history = ov_undo_history_new();
    if (!is_new)
        ov_undo_history_mark_saved(self->history);
    self->history_handler = g_signal_connect(self->history, "changed", G_CALLBACK(on_history_changed), self);
    update_title(self);
    ov_gui_set_default_surrounding_margin(GTK_WIDGET(self));

    g_signal_connect(self, "delete-event", G_CALLBACK(on_delete), self);
    g_signal_connect(self, "focus-out-event", G_CALLBACK(on_focus_out), self);
    g_signal_connect(self, "key-press-event", G_CALLBACK(on_key_press), self);
    g_signal_connect(self, "key-release-event", G_CALLBACK(on_key_release), self);

    GtkWidget *vbox = ov_gui_add_vbox(GTK_CONTAINER(self), TRUE);
    GtkWidget *bar = ov_gui_pack_hbox(GTK_BOX(vbox), FALSE, FALSE);
    self->file_menu_button = GTK_WIDGET(g_object_ref_sink(ov_gui_pack_menu_button(GTK_BOX(bar), "File")));
    self->file_menu_handler =
        g_signal_connect(self->file_menu_button, "clicked", G_CALLBACK(on_file_menu_clicked), self);
    self->edit_menu_button = GTK_WIDGET(g_object_ref_sink(ov_gui_pack_menu_button(GTK_BOX(bar), "Edit")));
    self->edit_menu_handler =
        g_signal_connect(self->edit_menu_button, "clicked", G_CALLBACK(on_edit_menu_clicked), self);
    // Short notes in the bar, such as the end of a walk through the
    // untranslated texts.
    GtkWidget *spacer = ov_gui_pack_hbox(GTK_BOX(bar), FALSE, FALSE);
    gtk_widget_set_size_request(spacer, ov_gui_get_default_margin(), -1);
    self->note = gtk_label_new("");
    gtk_label_set_ellipsize(GTK_LABEL(self->note), PANGO_ELLIPSIZE_END);
    gtk_label_set_xalign(GTK_LABEL(self->note), 0.0f);
    gtk_widget_set_hexpand(self->note, TRUE);
    gtk_widget_show(self->note);
    gtk_box_pack_start(GTK_BOX(bar), self->note, TRUE, TRUE, 0);
    ov_gui_pack_label(GTK_BOX(bar), "Language:", 0.0f, 0.5f);
    GtkWidget *space = ov_gui_pack_hbox(GTK_BOX(bar), FALSE, FALSE);
    gtk_widget_set_size_request(space, ov_gui_get_default_margin(), -1);
    // Centred and kept from spreading its parts' expansion into the bar.
    GtkWidget *picker = ov_active_locale_picker_new();
    self->picker = picker;
    gtk_widget_set_valign(picker, GTK_ALIGN_CENTER);
    gtk_widget_set_hexpand(picker, FALSE);
    gtk_widget_set_vexpand(picker, FALSE);
    ov_gui_pack_widget(GTK_BOX(bar), picker, FALSE);

    self->contents_container = GTK_WIDGET(g_object_ref_sink(ov_gui_pack_frame(GTK_BOX(vbox), TRUE, nullptr)));
    gtk_frame_set_shadow_type(GTK_FRAME(self->contents_container), GTK_SHADOW_NONE);
    return GTK_WIDGET(self);
}

GtkWidget *ov_component_gui_editor_window_get_contents_container(OvComponentGuiEditorWindow *window)
{
    g_return_val_if_fail(OV_IS_COMPONENT_GUI_EDITOR_WINDOW(window), nullptr);
    return window->contents_container;
}

gboolean ov_component_gui_editor_window_get_file_has_been_modified(OvComponentGuiEditorWindow *window)
{
    g_return_val_if_fail(OV_IS_COMPONENT_GUI_EDITOR_WINDOW(window), FALSE);
    return window->file_has_been_modified;
}

void ov_component_gui_editor_window_set_file_has_been_modified(OvComponentGuiEditorWindow *window,
                                                               gboolean modified)
{
    g_return_if_fail(OV_IS_COMPONENT_GUI_EDITOR_WINDOW(window));
    window->unrecorded_change = modified ? TRUE : FALSE;
    if (!modified)
        ov_undo_history_mark_saved(window->history);
    set_modified(window, window->unrecorded_change || !ov_undo_history_is_at_saved(window->history));
}

OvUndoHistory *ov_component_gui_editor_window_get_undo_history(OvComponentGuiEditorWindow *window)
{
    g_return_val_if_fail(OV_IS_COMPONENT_GUI_EDITOR_WINDOW(window), nullptr);
    return window->history;
}

void ov_component_gui_editor_window_notify_file_has_been_modified(OvComponentGuiEditorWindow *window)
{
    ov_component_gui_editor_window_set_file_has_been_modified(window, TRUE);
}

int ov_component_gui_file_menu_run(GtkWidget *anchor)
{
    int result = OV_COMPONENT_GUI_FILE_MENU_CANCELLED;
    GtkWidget *menu = gtk_menu_new();
    const GdkModifierType primary = ov_gui_menu_get_primary_accelerator_modifier();
    struct Item {
        const char *label;
        int number;
        guint key;
    };
    for (const Item &item : {Item{"Close", OV_COMPONENT_GUI_FILE_MENU_CLOSE, GDK_KEY_w},
                             Item{"Save", OV_COMPONENT_GUI_FILE_MENU_SAVE, GDK_KEY_s}}) {
        GtkWidget *widget = ov_gui_menu_append_item_with_activate_callback(
            GTK_MENU_SHELL(menu), item.label, GINT_TO_POINTER(item.number), 0, on_file_menu_item, &result);
        ov_gui_menu_set_item_label_accel(widget, item.key, primary);
    }
    ov_gui_menu_append_separator(GTK_MENU_SHELL(menu));
    GtkWidget *shortcuts = ov_gui_menu_append_item_with_activate_callback(
        GTK_MENU_SHELL(menu), "Keyboard shortcuts", GINT_TO_POINTER(OV_COMPONENT_GUI_FILE_MENU_SHORTCUTS), 0,
        on_file_menu_item, &result);
    ov_gui_menu_set_item_label_accel(shortcuts, GDK_KEY_question, primary);
    ov_gui_menu_run_and_destroy(GTK_MENU(menu), anchor);
    return result;
}

void ov_component_gui_editor_window_set_translation_stats(OvComponentGuiEditorWindow *window,
                                                          const OvTranslationStats *stats)
{
    g_return_if_fail(OV_IS_COMPONENT_GUI_EDITOR_WINDOW(window));
    // The languages the document has come first in the picker's menu.
    OvLocalePicker *picker = OV_LOCALE_PICKER(window->picker);
    ov_locale_picker_clear_primary_locales(picker);
    if (stats != nullptr)
        for (const OvTranslationStatsLocale *record : stats->locales)
            ov_locale_picker_insert_primary_locale(picker, record->locale);
    ov_locale_picker_set_translation_stats(picker, stats);
}

GtkWidget *ov_component_gui_editor_window_get_locale_picker(OvComponentGuiEditorWindow *window)
{
    g_return_val_if_fail(OV_IS_COMPONENT_GUI_EDITOR_WINDOW(window), nullptr);
    return window->picker;
}

void ov_component_gui_editor_window_show_note(OvComponentGuiEditorWindow *window, const char *text)
{
    g_return_if_fail(OV_IS_COMPONENT_GUI_EDITOR_WINDOW(window) && text != nullptr);
    gtk_label_set_text(GTK_LABEL(window->note), text);
    g_clear_handle_id(&window->note_timeout, g_source_remove);
    window->note_timeout = g_timeout_add_seconds(6, hide_note, window);
}

const char *ov_component_gui_editor_window_get_note(OvComponentGuiEditorWindow *window)
{
    g_return_val_if_fail(OV_IS_COMPONENT_GUI_EDITOR_WINDOW(window), nullptr);
    return gtk_label_get_text(GTK_LABEL(window->note));
}

int ov_component_gui_edit_menu_run(GtkWidget *anchor, OvUndoHistory *history)
{
    int result = OV_COMPONENT_GUI_EDIT_MENU_CANCELLED;
    GtkWidget *menu = gtk_menu_new();
    const GdkModifierType primary = ov_gui_menu_get_primary_accelerator_modifier();
    struct Item {
        const char *verb;
        const char *what;
        int number;
        GdkModifierType modifiers;
    };
    for (const Item &item :
         {Item{"Undo", ov_undo_history_get_undo_text(history), OV_COMPONENT_GUI_EDIT_MENU_UNDO, primary},
          Item{"Redo", ov_undo_history_get_redo_text(history), OV_COMPONENT_GUI_EDIT_MENU_REDO,
               GdkModifierType(primary | GDK_SHIFT_MASK)}}) {
        const ov::GStr label = ov::gstr(item.what != nullptr ? g_strdup_printf("%s %s", item.verb, item.what)
                                                             : g_strdup(item.verb));
        GtkWidget *widget = ov_gui_menu_append_item_with_activate_callback(
            GTK_MENU_SHELL(menu), label.get(), GINT_TO_POINTER(item.number), item.what == nullptr ? 1 : 0,
            on_file_menu_item, &result);
        ov_gui_menu_set_item_label_accel(widget, GDK_KEY_z, item.modifiers);
    }
    ov_gui_menu_run_and_destroy(GTK_MENU(menu), anchor);
    return result;
}
