#include "widgets/translation_entry.h"

#include "gui/gui.h"
#include "gui/spacifying_entry.h"
#include "gui/spacifying_text_view.h"
#include "lang/active_locale.h"
#include "widgets/locale_picker.h"
#include "widgets/spell_check.h"

struct _OvTranslationEntry {
    GtkBox parent_instance;
    OvLangstrMode mode;
    GtkWidget *picker;
    GtkWidget *text_widget; // OvSpacifyingEntry or OvSpacifyingTextView
    GtkWidget *delete_button;
};

enum { SIGNAL_DELETE, SIGNAL_LOCALE_CHANGED, N_SIGNALS };

G_DEFINE_TYPE(OvTranslationEntry, ov_translation_entry, GTK_TYPE_BOX)

static guint signals[N_SIGNALS];

namespace
{

constexpr int entry_width_chars = 68;
constexpr int text_view_width = 400;
constexpr int text_view_height = 100;

void apply_spell_checking(OvTranslationEntry *entry)
{
    const OvLocale *locale = ov_translation_entry_get_locale(entry);
    if (entry->mode == OV_LANGSTR_MODE_MULTI_LINE)
        ov_spell_check_apply_locale_to_text_view(GTK_TEXT_VIEW(entry->text_widget), locale);
    else
        ov_spell_check_apply_locale_to_entry(GTK_ENTRY(entry->text_widget), locale);
}

void on_picked(OvLocalePicker *, const OvLocale *, gpointer data)
{
    auto *entry = OV_TRANSLATION_ENTRY(data);
    g_signal_emit(entry, signals[SIGNAL_LOCALE_CHANGED], 0);
    ov_translation_entry_focus_text(entry);
    apply_spell_checking(entry);
}

void on_delete_clicked(GtkButton *, gpointer entry)
{
    g_signal_emit(entry, signals[SIGNAL_DELETE], 0);
}

GtkWidget *make_picker(const OvLocale *locale, const OvLocaleList *primary_locales)
{
    GtkWidget *picker = ov_locale_picker_new();
    auto *p = OV_LOCALE_PICKER(picker);
    ov_locale_picker_insert_primary_locale(p, locale);
    if (const OvLocale *active = ov_ovinternal_get_active_locale())
        ov_locale_picker_insert_primary_locale(p, active);
    if (primary_locales != nullptr)
        for (const OvLocaleListLink *link : *primary_locales)
            ov_locale_picker_insert_primary_locale(p, link->locale);
    ov_locale_picker_select(p, locale, FALSE);
    return picker;
}

} // namespace

static void ov_translation_entry_class_init(OvTranslationEntryClass *klass)
{
    signals[SIGNAL_DELETE] = g_signal_new("delete", G_TYPE_FROM_CLASS(klass), G_SIGNAL_RUN_FIRST, 0, nullptr,
                                          nullptr, nullptr, G_TYPE_NONE, 0);
    signals[SIGNAL_LOCALE_CHANGED] =
        g_signal_new("locale-changed", G_TYPE_FROM_CLASS(klass), G_SIGNAL_RUN_FIRST, 0, nullptr, nullptr,
                     nullptr, G_TYPE_NONE, 0);
}

static void ov_translation_entry_init(OvTranslationEntry *entry)
{
    gtk_orientable_set_orientation(GTK_ORIENTABLE(entry), GTK_ORIENTATION_HORIZONTAL);
    gtk_box_set_spacing(GTK_BOX(entry), ov_gui_get_default_margin());
}

GtkWidget *ov_translation_entry_new(int mode, const OvLocale *locale, const char *latin1_text,
                                    const OvLocaleList *primary_locales, gboolean compact)
{
    g_return_val_if_fail(locale != nullptr, nullptr);
    auto *entry = static_cast<OvTranslationEntry *>(g_object_new(OV_TYPE_TRANSLATION_ENTRY, nullptr));
    entry->mode = OvLangstrMode(mode);
    GtkBox *box = GTK_BOX(entry);

    entry->picker = make_picker(locale, primary_locales);
    gtk_widget_set_valign(entry->picker,
                          entry->mode == OV_LANGSTR_MODE_MULTI_LINE ? GTK_ALIGN_START : GTK_ALIGN_CENTER);
    ov_gui_pack_widget(box, entry->picker, FALSE);

    if (entry->mode == OV_LANGSTR_MODE_MULTI_LINE) {
        GtkWidget *scrolled =
            ov_gui_pack_scrolled_window(box, TRUE, GTK_POLICY_NEVER, GTK_POLICY_AUTOMATIC, GTK_SHADOW_IN);
        gtk_widget_set_size_request(scrolled, text_view_width, text_view_height);
        entry->text_widget = ov_gui_add_spacifying_text_view(GTK_CONTAINER(scrolled), latin1_text);
        gtk_text_view_set_wrap_mode(GTK_TEXT_VIEW(entry->text_widget), GTK_WRAP_WORD_CHAR);
        ov_spell_check_set_up_text_view(GTK_TEXT_VIEW(entry->text_widget));
    } else {
        entry->text_widget = ov_gui_pack_spacifying_entry(box, TRUE, compact, latin1_text, TRUE);
        gtk_entry_set_width_chars(GTK_ENTRY(entry->text_widget), entry_width_chars);
        ov_spell_check_set_up_entry(GTK_ENTRY(entry->text_widget));
    }
    apply_spell_checking(entry);

    entry->delete_button = ov_gui_pack_icon_button(box, "edit-delete-symbolic", nullptr);
    gtk_widget_set_valign(entry->delete_button,
                          entry->mode == OV_LANGSTR_MODE_MULTI_LINE ? GTK_ALIGN_START : GTK_ALIGN_CENTER);
    gtk_widget_set_tooltip_text(entry->delete_button, "Delete");

    g_signal_connect(entry->picker, "picked", G_CALLBACK(on_picked), entry);
    g_signal_connect(entry->delete_button, "clicked", G_CALLBACK(on_delete_clicked), entry);
    return GTK_WIDGET(entry);
}

const OvLocale *ov_translation_entry_get_locale(OvTranslationEntry *entry)
{
    g_return_val_if_fail(OV_IS_TRANSLATION_ENTRY(entry), nullptr);
    const OvLocale *locale =
        entry->picker != nullptr ? ov_locale_picker_get_selected(OV_LOCALE_PICKER(entry->picker)) : nullptr;
    return locale != nullptr ? locale : ov_locale_get_undefined();
}

char *ov_translation_entry_get_text(OvTranslationEntry *entry)
{
    g_return_val_if_fail(OV_IS_TRANSLATION_ENTRY(entry), nullptr);
    if (entry->mode == OV_LANGSTR_MODE_MULTI_LINE)
        return ov_spacifying_text_view_get_text(OV_SPACIFYING_TEXT_VIEW(entry->text_widget));
    return ov_spacifying_entry_get_text(OV_SPACIFYING_ENTRY(entry->text_widget));
}

gboolean ov_translation_entry_is_text_locked(OvTranslationEntry *entry)
{
    g_return_val_if_fail(OV_IS_TRANSLATION_ENTRY(entry), FALSE);
    return !gtk_widget_get_sensitive(entry->text_widget);
}

void ov_translation_entry_lock_text(OvTranslationEntry *entry)
{
    g_return_if_fail(OV_IS_TRANSLATION_ENTRY(entry));
    gtk_widget_set_sensitive(entry->text_widget, FALSE);
    gtk_widget_set_sensitive(entry->delete_button, FALSE);
}

void ov_translation_entry_lock_locale(OvTranslationEntry *entry)
{
    g_return_if_fail(OV_IS_TRANSLATION_ENTRY(entry));
    gtk_widget_set_sensitive(entry->picker, FALSE);
}

void ov_translation_entry_focus_text(OvTranslationEntry *entry)
{
    g_return_if_fail(OV_IS_TRANSLATION_ENTRY(entry));
    if (GTK_IS_ENTRY(entry->text_widget))
        gtk_entry_grab_focus_without_selecting(GTK_ENTRY(entry->text_widget));
    else
        gtk_widget_grab_focus(entry->text_widget);
}

GtkWidget *ov_translation_entry_get_picker(OvTranslationEntry *entry)
{
    g_return_val_if_fail(OV_IS_TRANSLATION_ENTRY(entry), nullptr);
    return entry->picker;
}

GtkWidget *ov_translation_entry_get_text_widget(OvTranslationEntry *entry)
{
    g_return_val_if_fail(OV_IS_TRANSLATION_ENTRY(entry), nullptr);
    return entry->text_widget;
}

GtkWidget *ov_translation_entry_get_delete_button(OvTranslationEntry *entry)
{
    g_return_val_if_fail(OV_IS_TRANSLATION_ENTRY(entry), nullptr);
    return entry->delete_button;
}
