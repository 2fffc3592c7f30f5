#include "widgets/langstr_entry.h"

#include "gui/gui.h"
#include "gui/style.h"
#include "widgets/langstr_label.h"
#include "widgets/langstr_status_icon.h"
#include "widgets/langstr_window.h"

struct _OvLangstrEntry {
    GtkButton parent_instance;
    langstr *value;                   // owned
    langstr *locked;                  // owned
    OvLocaleList *additional_locales; // owned or null
    GtkWidget *label;
    GtkWidget *status_icon;
};

enum { SIGNAL_CHANGED, N_SIGNALS };

G_DEFINE_TYPE(OvLangstrEntry, ov_langstr_entry, GTK_TYPE_BUTTON)

static guint signals[N_SIGNALS];

static void ov_langstr_entry_clicked(GtkButton *button)
{
    auto *entry = OV_LANGSTR_ENTRY(button);
    langstr *value = ov_langstr_clone(entry->value);
    langstr *locked = ov_langstr_clone(entry->locked);
    if (ov_langstr_window_run(OV_LANGSTR_MODE_SINGLE_LINE, &value, locked, entry->additional_locales, 0, TRUE,
                              nullptr, nullptr, nullptr, nullptr)) {
        ov_langstr_entry_set_value(entry, value, locked);
        g_signal_emit(entry, signals[SIGNAL_CHANGED], 0);
    }
    ov_langstr_free(value);
    ov_langstr_free(locked);
}

static void ov_langstr_entry_finalize(GObject *object)
{
    auto *entry = OV_LANGSTR_ENTRY(object);
    ov_langstr_free(entry->value);
    ov_langstr_free(entry->locked);
    ov_locale_list_destroy(entry->additional_locales);
    G_OBJECT_CLASS(ov_langstr_entry_parent_class)->finalize(object);
}

static void ov_langstr_entry_class_init(OvLangstrEntryClass *klass)
{
    G_OBJECT_CLASS(klass)->finalize = ov_langstr_entry_finalize;
    GTK_BUTTON_CLASS(klass)->clicked = ov_langstr_entry_clicked;
    signals[SIGNAL_CHANGED] = g_signal_new("changed", G_TYPE_FROM_CLASS(klass), G_SIGNAL_RUN_FIRST, 0,
                                           nullptr, nullptr, nullptr, G_TYPE_NONE, 0);
}

static void ov_langstr_entry_init(OvLangstrEntry *entry)
{
    GtkWidget *box = ov_gui_add_hbox(GTK_CONTAINER(entry), TRUE);
    entry->label = ov_langstr_label_new(nullptr);
    gtk_label_set_xalign(GTK_LABEL(entry->label), 0);
    gtk_label_set_ellipsize(GTK_LABEL(entry->label), PANGO_ELLIPSIZE_END);
    gtk_box_pack_start(GTK_BOX(box), entry->label, TRUE, TRUE, 0);
    entry->status_icon = ov_langstr_status_icon_new(nullptr);
    gtk_box_pack_end(GTK_BOX(box), entry->status_icon, FALSE, FALSE, 0);
    gtk_widget_show(entry->status_icon);
    ov_gui_style_langstr_entry_button(GTK_WIDGET(entry));
}

GtkWidget *ov_langstr_entry_new()
{
    return GTK_WIDGET(g_object_new(OV_TYPE_LANGSTR_ENTRY, nullptr));
}

void ov_langstr_entry_set_value(OvLangstrEntry *entry, const langstr *value, const langstr *locked)
{
    g_return_if_fail(OV_IS_LANGSTR_ENTRY(entry));
    langstr *old_value = entry->value;
    langstr *old_locked = entry->locked;
    entry->value = ov_langstr_clone(value);
    entry->locked = ov_langstr_clone(locked);
    ov_langstr_free(old_value);
    ov_langstr_free(old_locked);
    ov_langstr_label_set_content(OV_LANGSTR_LABEL(entry->label), entry->value);
    gtk_widget_set_visible(entry->label, entry->value != nullptr);
    ov_langstr_status_icon_update(OV_LANGSTR_STATUS_ICON(entry->status_icon), entry->value);
}

langstr *ov_langstr_entry_get_value(OvLangstrEntry *entry)
{
    g_return_val_if_fail(OV_IS_LANGSTR_ENTRY(entry), nullptr);
    return ov_langstr_clone(entry->value);
}

void ov_langstr_entry_set_additional_locales(OvLangstrEntry *entry, const OvLocaleList *list)
{
    g_return_if_fail(OV_IS_LANGSTR_ENTRY(entry));
    OvLocaleList *old = entry->additional_locales;
    entry->additional_locales = list != nullptr ? ov_locale_list_clone(list) : nullptr;
    ov_locale_list_destroy(old);
}

GtkWidget *ov_langstr_entry_get_label(OvLangstrEntry *entry)
{
    g_return_val_if_fail(OV_IS_LANGSTR_ENTRY(entry), nullptr);
    return entry->label;
}

GtkWidget *ov_langstr_entry_get_status_icon(OvLangstrEntry *entry)
{
    g_return_val_if_fail(OV_IS_LANGSTR_ENTRY(entry), nullptr);
    return entry->status_icon;
}
