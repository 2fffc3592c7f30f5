#include "widgets/langstr_editor.h"

#include "core/error.h"
#include "core/raii.h"
#include "frame/message.h"
#include "gui/gui.h"
#include "lang/active_locale.h"
#include "widgets/locale_list_menu.h"
#include "widgets/translation_entry.h"

#include <cstring>

struct _OvLangstrEditor {
    GtkBox parent_instance;
    OvLangstrMode mode;
    OvLocaleList *primary_locales; // owned clone or null
    gboolean compact;
    OvLocaleList *add_locales; // owned
    GtkWidget *entries_box;
    GtkWidget *add_button;
    GtkSizeGroup *picker_sizes; // gives every locale picker one width
    gboolean locked_texts_failed;
};

enum { SIGNAL_SHRUNK, N_SIGNALS };

G_DEFINE_TYPE(OvLangstrEditor, ov_langstr_editor, GTK_TYPE_BOX)

static guint signals[N_SIGNALS];

namespace
{

constexpr const char *ui_error = "An error occured with the user interface.";

OvTranslationEntry *as_entry(GtkWidget *widget)
{
    return OV_TRANSLATION_ENTRY(widget);
}

// Moves the entry in front of the first other entry whose locale sorts
// after its own, or to the end.
void place_sorted(OvLangstrEditor *editor, GtkWidget *entry)
{
    const OvLocale *own = ov_translation_entry_get_locale(as_entry(entry));
    GList *children = gtk_container_get_children(GTK_CONTAINER(editor->entries_box));
    int position = -1;
    int index = 0;
    for (GList *l = children; l != nullptr; l = l->next) {
        auto *other = static_cast<GtkWidget *>(l->data);
        if (other == entry)
            continue;
        if (ov_locale_compare_by_language_name_and_territory(ov_translation_entry_get_locale(as_entry(other)),
                                                             own) > 0) {
            position = index;
            break;
        }
        ++index;
    }
    g_list_free(children);
    gtk_box_reorder_child(GTK_BOX(editor->entries_box), entry, position);
}

void on_entry_delete(OvTranslationEntry *entry, gpointer editor);

void on_entry_locale_changed(OvTranslationEntry *entry, gpointer editor)
{
    place_sorted(OV_LANGSTR_EDITOR(editor), GTK_WIDGET(entry));
}

GtkWidget *append_entry(OvLangstrEditor *editor, const OvLocale *locale, const char *latin1_text)
{
    GtkWidget *entry =
        ov_translation_entry_new(editor->mode, locale, latin1_text, editor->primary_locales, editor->compact);
    ov_gui_pack_widget(GTK_BOX(editor->entries_box), entry, editor->mode == OV_LANGSTR_MODE_MULTI_LINE);
    gtk_size_group_add_widget(editor->picker_sizes, ov_translation_entry_get_picker(as_entry(entry)));
    g_signal_connect(entry, "delete", G_CALLBACK(on_entry_delete), editor);
    g_signal_connect(entry, "locale-changed", G_CALLBACK(on_entry_locale_changed), editor);
    return entry;
}

GtkWidget *add_sorted_entry(OvLangstrEditor *editor, const OvLocale *locale)
{
    GtkWidget *entry = append_entry(editor, locale, nullptr);
    place_sorted(editor, entry);
    return entry;
}

bool has_entries(OvLangstrEditor *editor)
{
    GList *children = gtk_container_get_children(GTK_CONTAINER(editor->entries_box));
    bool any = children != nullptr;
    g_list_free(children);
    return any;
}

void shrunk(OvLangstrEditor *editor)
{
    if (editor->mode == OV_LANGSTR_MODE_SINGLE_LINE)
        g_signal_emit(editor, signals[SIGNAL_SHRUNK], 0);
}

void on_entry_delete(OvTranslationEntry *entry, gpointer data)
{
    auto *editor = OV_LANGSTR_EDITOR(data);
    gtk_widget_destroy(GTK_WIDGET(entry));
    if (!has_entries(editor)) {
        if (const OvLocale *active = ov_ovinternal_get_active_locale())
            ov_translation_entry_focus_text(as_entry(add_sorted_entry(editor, active)));
    }
    shrunk(editor);
}

void on_add_toggled(GtkToggleButton *button, gpointer data)
{
    if (!gtk_toggle_button_get_active(button))
        return;
    auto *editor = OV_LANGSTR_EDITOR(data);
    const OvLocale *chosen =
        ov_locale_list_menu_run(editor->add_locales, nullptr, TRUE, nullptr, GTK_WIDGET(button));
    if (chosen != nullptr)
        ov_translation_entry_focus_text(as_entry(add_sorted_entry(editor, chosen)));
    gtk_toggle_button_set_active(button, FALSE);
}

bool text_equals(OvTranslationEntry *entry, const char *text)
{
    ov::GStr shown(ov_translation_entry_get_text(entry));
    return shown && strcmp(shown.get(), text) == 0;
}

// The first entry whose text is not yet locked, with that text and (unless
// any_locale) that locale.
OvTranslationEntry *find_unlocked(GList *entries, const OvLocale *locale, const char *text, bool any_locale)
{
    for (GList *l = entries; l != nullptr; l = l->next) {
        OvTranslationEntry *entry = as_entry(static_cast<GtkWidget *>(l->data));
        if (ov_translation_entry_is_text_locked(entry))
            continue;
        if (!any_locale && ov_translation_entry_get_locale(entry) != locale)
            continue;
        if (text_equals(entry, text))
            return entry;
    }
    return nullptr;
}

// Locks the entries of the locked texts; false when one cannot be matched.
bool lock_texts(OvLangstrEditor *editor, const langstr *locked)
{
    GList *entries = gtk_container_get_children(GTK_CONTAINER(editor->entries_box));
    const langstr *pending = nullptr;
    bool ok = true;
    for (const langstr *t = locked; t != nullptr && ok; t = t->next) {
        OvTranslationEntry *entry = find_unlocked(entries, t->locale, t->text, false);
        if (entry != nullptr) {
            ov_translation_entry_lock_text(entry);
            if (!ov_locale_is_undefined(t->locale))
                ov_translation_entry_lock_locale(entry);
        } else if (ov_locale_is_undefined(t->locale) && pending == nullptr) {
            pending = t;
        } else {
            ok = false;
        }
    }
    if (ok && pending != nullptr) {
        OvTranslationEntry *entry = find_unlocked(entries, nullptr, pending->text, true);
        if (entry != nullptr)
            ov_translation_entry_lock_text(entry);
        else
            ok = false;
    }
    g_list_free(entries);
    return ok;
}

void build_add_locales(OvLangstrEditor *editor)
{
    editor->add_locales = ov_locale_list_new();
    auto add_once = [editor](const OvLocale *locale) {
        if (locale != nullptr && ov_locale_list_find(editor->add_locales, locale) == nullptr)
            ov_locale_list_add_sorted_by_language_name_and_territory(editor->add_locales, locale);
    };
    add_once(ov_ovinternal_get_active_locale());
    if (editor->primary_locales != nullptr)
        for (const OvLocaleListLink *link : *editor->primary_locales)
            add_once(link->locale);
}

} // namespace

static void ov_langstr_editor_dispose(GObject *object)
{
    g_clear_object(&OV_LANGSTR_EDITOR(object)->picker_sizes);
    G_OBJECT_CLASS(ov_langstr_editor_parent_class)->dispose(object);
}

static void ov_langstr_editor_finalize(GObject *object)
{
    auto *editor = OV_LANGSTR_EDITOR(object);
    ov_locale_list_destroy(editor->primary_locales);
    ov_locale_list_destroy(editor->add_locales);
    G_OBJECT_CLASS(ov_langstr_editor_parent_class)->finalize(object);
}

static void ov_langstr_editor_class_init(OvLangstrEditorClass *klass)
{
    G_OBJECT_CLASS(klass)->dispose = ov_langstr_editor_dispose;
    G_OBJECT_CLASS(klass)->finalize = ov_langstr_editor_finalize;
    signals[SIGNAL_SHRUNK] = g_signal_new("shrunk", G_TYPE_FROM_CLASS(klass), G_SIGNAL_RUN_FIRST, 0, nullptr,
                                          nullptr, nullptr, G_TYPE_NONE, 0);
}

static void ov_langstr_editor_init(OvLangstrEditor *editor)
{
    gtk_orientable_set_orientation(GTK_ORIENTABLE(editor), GTK_ORIENTATION_VERTICAL);
    gtk_box_set_spacing(GTK_BOX(editor), ov_gui_get_default_margin());
    editor->picker_sizes = gtk_size_group_new(GTK_SIZE_GROUP_HORIZONTAL);
}

GtkWidget *ov_langstr_editor_new(int mode, const langstr *value, const langstr *locked,
                                 const OvLocaleList *primary_locales, gboolean compact)
{
    auto *editor = static_cast<OvLangstrEditor *>(g_object_new(OV_TYPE_LANGSTR_EDITOR, nullptr));
    editor->mode = OvLangstrMode(mode);
    editor->primary_locales = primary_locales != nullptr ? ov_locale_list_clone(primary_locales) : nullptr;
    editor->compact = compact;
    editor->entries_box = ov_gui_pack_vbox(GTK_BOX(editor), editor->mode == OV_LANGSTR_MODE_MULTI_LINE, TRUE);

    for (const langstr *t = value; t != nullptr; t = t->next)
        append_entry(editor, t->locale, t->text);
    const OvLocale *active = ov_ovinternal_get_active_locale();
    if (active != nullptr && ov_langstr_get_text_for_locale(value, active) == nullptr)
        add_sorted_entry(editor, active);

    if (!lock_texts(editor, locked)) {
        editor->locked_texts_failed = TRUE;
        ov_message_show_error(ui_error);
    }

    build_add_locales(editor);
    GtkWidget *row = ov_gui_pack_hbox(GTK_BOX(editor), FALSE, FALSE);
    editor->add_button = gtk_toggle_button_new_with_label("Add translation");
    gtk_button_set_image(GTK_BUTTON(editor->add_button),
                         gtk_image_new_from_icon_name("list-add-symbolic", GTK_ICON_SIZE_BUTTON));
    gtk_button_set_always_show_image(GTK_BUTTON(editor->add_button), TRUE);
    gtk_box_pack_end(GTK_BOX(row), editor->add_button, FALSE, FALSE, 0);
    gtk_widget_show(editor->add_button);
    g_signal_connect(editor->add_button, "toggled", G_CALLBACK(on_add_toggled), editor);
    return GTK_WIDGET(editor);
}

gboolean ov_langstr_editor_get_value(OvLangstrEditor *editor, langstr **value)
{
    g_return_val_if_fail(OV_IS_LANGSTR_EDITOR(editor), FALSE);
    g_return_val_if_fail(value != nullptr, FALSE);
    if (editor->locked_texts_failed) {
        ov_error_set(ui_error);
        return FALSE;
    }
    langstr *result = nullptr;
    gboolean ok = TRUE;
    GList *entries = gtk_container_get_children(GTK_CONTAINER(editor->entries_box));
    for (GList *l = entries; l != nullptr; l = l->next) {
        OvTranslationEntry *entry = as_entry(static_cast<GtkWidget *>(l->data));
        ov::GStr text(ov_translation_entry_get_text(entry));
        if (!text || *text.get() == '\0')
            continue;
        const OvLocale *locale = ov_translation_entry_get_locale(entry);
        if (ov_langstr_get_text_for_locale(result, locale) != nullptr) {
            ov::GStr name(ov_locale_format_ui_string(locale));
            ov_error_set_utf8_printf("Each language may only appear once. %s appears several times.",
                                     name.get());
            ok = FALSE;
            break;
        }
        ov_langstr_set_translation(&result, locale, text.get());
    }
    g_list_free(entries);
    if (!ok) {
        ov_langstr_free(result);
        return FALSE;
    }
    *value = result;
    return TRUE;
}

gboolean ov_langstr_editor_has_locked_texts(OvLangstrEditor *editor)
{
    g_return_val_if_fail(OV_IS_LANGSTR_EDITOR(editor), FALSE);
    GList *entries = gtk_container_get_children(GTK_CONTAINER(editor->entries_box));
    gboolean any = FALSE;
    for (GList *l = entries; l != nullptr && !any; l = l->next)
        any = ov_translation_entry_is_text_locked(as_entry(static_cast<GtkWidget *>(l->data)));
    g_list_free(entries);
    return any;
}

void ov_langstr_editor_clear(OvLangstrEditor *editor)
{
    g_return_if_fail(OV_IS_LANGSTR_EDITOR(editor));
    GList *entries = gtk_container_get_children(GTK_CONTAINER(editor->entries_box));
    for (GList *l = entries; l != nullptr; l = l->next) {
        auto *widget = static_cast<GtkWidget *>(l->data);
        if (!ov_translation_entry_is_text_locked(as_entry(widget)))
            gtk_widget_destroy(widget);
    }
    g_list_free(entries);
    shrunk(editor);
}

GList *ov_langstr_editor_get_entries(OvLangstrEditor *editor)
{
    g_return_val_if_fail(OV_IS_LANGSTR_EDITOR(editor), nullptr);
    return gtk_container_get_children(GTK_CONTAINER(editor->entries_box));
}

GtkWidget *ov_langstr_editor_get_add_button(OvLangstrEditor *editor)
{
    g_return_val_if_fail(OV_IS_LANGSTR_EDITOR(editor), nullptr);
    return editor->add_button;
}

const OvLocaleList *ov_langstr_editor_get_add_translation_locales(OvLangstrEditor *editor)
{
    g_return_val_if_fail(OV_IS_LANGSTR_EDITOR(editor), nullptr);
    return editor->add_locales;
}
