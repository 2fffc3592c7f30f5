#include "widgets/locale_picker.h"

#include "core/raii.h"
#include "gui/gui.h"
#include "lang/active_locale.h"
#include "lang/locale_list.h"
#include "widgets/locale_list_menu.h"

struct OvLocalePickerPrivate {
    gboolean all_languages_enabled;
    const OvLocale *selected;
    OvLocaleList *primary_locales;
    OvTranslationStats *stats;
    GtkWidget *label;
};

enum { SIGNAL_PICKED, N_SIGNALS };

G_DEFINE_TYPE_WITH_PRIVATE(OvLocalePicker, ov_locale_picker, GTK_TYPE_TOGGLE_BUTTON)

static guint signals[N_SIGNALS];

namespace
{

OvLocalePickerPrivate *priv_of(OvLocalePicker *picker)
{
    return static_cast<OvLocalePickerPrivate *>(ov_locale_picker_get_instance_private(picker));
}

void relabel(OvLocalePicker *picker)
{
    OvLocalePickerPrivate *priv = priv_of(picker);
    ov::GStr text;
    if (priv->selected != nullptr)
        text.reset(priv->stats != nullptr
                       ? ov_translation_stats_format_locale_ui_string(priv->stats, priv->selected)
                       : ov_locale_format_ui_string(priv->selected));
    gtk_label_set_text(GTK_LABEL(priv->label), text ? text.get() : "");
}

// Whether the candidate replaces the best of equally counted records: the
// system locale first, then UK English, then any English.
bool candidate_wins_tie(const OvLocale *best, const OvLocale *candidate)
{
    const OvLocale *system = ov_get_system_locale();
    if (best == system)
        return false;
    if (candidate == system)
        return true;
    if (ov_locale_is_uk_english(best))
        return false;
    return ov_locale_is_some_english(candidate);
}

} // namespace

static void ov_locale_picker_clicked(GtkButton *button)
{
    GTK_BUTTON_CLASS(ov_locale_picker_parent_class)->clicked(button);
    if (!gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(button)))
        return;
    auto *picker = OV_LOCALE_PICKER(button);
    OvLocalePickerPrivate *priv = priv_of(picker);
    // The menu runs a nested loop in which the window holding the picker
    // may be closed: then the picker keeps only our reference and is left
    // alone.
    g_object_ref(picker);
    bool destroyed = false;
    ov::SignalGuard on_destroy(picker, g_signal_connect_swapped(picker, "destroy",
                                                                G_CALLBACK(+[](bool *flag) { *flag = true; }),
                                                                &destroyed));
    const OvLocale *chosen = ov_locale_list_menu_run(
        priv->primary_locales, priv->stats, priv->all_languages_enabled, priv->selected, GTK_WIDGET(picker));
    on_destroy.reset();
    if (!destroyed) {
        if (chosen != nullptr)
            ov_locale_picker_select(picker, chosen, TRUE);
        gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(picker), FALSE);
    }
    g_object_unref(picker);
}

static void ov_locale_picker_finalize(GObject *object)
{
    OvLocalePickerPrivate *priv = priv_of(OV_LOCALE_PICKER(object));
    ov_locale_list_destroy(priv->primary_locales);
    ov_translation_stats_destroy(priv->stats);
    G_OBJECT_CLASS(ov_locale_picker_parent_class)->finalize(object);
}

static void ov_locale_picker_class_init(OvLocalePickerClass *klass)
{
    G_OBJECT_CLASS(klass)->finalize = ov_locale_picker_finalize;
    GTK_BUTTON_CLASS(klass)->clicked = ov_locale_picker_clicked;
    signals[SIGNAL_PICKED] = g_signal_new("picked", G_TYPE_FROM_CLASS(klass), G_SIGNAL_RUN_FIRST, 0, nullptr,
                                          nullptr, nullptr, G_TYPE_NONE, 1, G_TYPE_POINTER);
}

static void ov_locale_picker_init(OvLocalePicker *picker)
{
    OvLocalePickerPrivate *priv = priv_of(picker);
    priv->all_languages_enabled = TRUE;
    priv->primary_locales = ov_locale_list_new();
    GtkWidget *box = ov_gui_add_hbox(GTK_CONTAINER(picker), TRUE);
    priv->label = ov_gui_create_label("", 0.0f, 0.5f);
    gtk_widget_set_valign(priv->label, GTK_ALIGN_CENTER);
    gtk_widget_set_margin_start(priv->label, 3);
    ov_gui_pack_widget(GTK_BOX(box), priv->label, FALSE);
    GtkWidget *alignment = ov_gui_pack_alignment(GTK_BOX(box), TRUE, 1.0f, 0.5f, 0.0f, 0.0f);
    gtk_container_add(GTK_CONTAINER(alignment),
                      ov_gui_create_image_from_icon_name("pan-down-symbolic", GTK_ICON_SIZE_BUTTON));
}

GtkWidget *ov_locale_picker_new()
{
    return GTK_WIDGET(g_object_new(OV_TYPE_LOCALE_PICKER, nullptr));
}

void ov_locale_picker_insert_primary_locale(OvLocalePicker *picker, const OvLocale *locale)
{
    g_return_if_fail(OV_IS_LOCALE_PICKER(picker));
    g_return_if_fail(locale != nullptr);
    OvLocaleList *list = priv_of(picker)->primary_locales;
    if (ov_locale_list_find(list, locale) == nullptr)
        ov_locale_list_add_sorted_by_language_name_and_territory(list, locale);
}

void ov_locale_picker_clear_primary_locales(OvLocalePicker *picker)
{
    g_return_if_fail(OV_IS_LOCALE_PICKER(picker));
    ov_locale_list_clear(priv_of(picker)->primary_locales);
}

void ov_locale_picker_set_all_languages_enabled(OvLocalePicker *picker, gboolean enabled)
{
    g_return_if_fail(OV_IS_LOCALE_PICKER(picker));
    priv_of(picker)->all_languages_enabled = enabled;
}

void ov_locale_picker_set_translation_stats(OvLocalePicker *picker, const OvTranslationStats *stats)
{
    g_return_if_fail(OV_IS_LOCALE_PICKER(picker));
    OvLocalePickerPrivate *priv = priv_of(picker);
    ov_translation_stats_destroy(priv->stats);
    priv->stats = stats != nullptr ? ov_translation_stats_clone(stats) : nullptr;
    relabel(picker);
}

const OvLocale *ov_locale_picker_get_selected(OvLocalePicker *picker)
{
    g_return_val_if_fail(OV_IS_LOCALE_PICKER(picker), nullptr);
    return priv_of(picker)->selected;
}

void ov_locale_picker_select(OvLocalePicker *picker, const OvLocale *locale, gboolean emit)
{
    g_return_if_fail(OV_IS_LOCALE_PICKER(picker));
    OvLocalePickerPrivate *priv = priv_of(picker);
    if (locale == priv->selected)
        return;
    priv->selected = locale;
    relabel(picker);
    if (emit)
        g_signal_emit(picker, signals[SIGNAL_PICKED], 0, locale);
}

void ov_locale_picker_select_locale_with_best_stats(OvLocalePicker *picker, gboolean emit)
{
    g_return_if_fail(OV_IS_LOCALE_PICKER(picker));
    const OvTranslationStats *stats = priv_of(picker)->stats;
    if (stats == nullptr || stats->locales.is_empty())
        return;
    const OvTranslationStatsLocale *best = stats->locales.first();
    for (OvTranslationStatsLocale *record : stats->locales) {
        if (record->count > best->count ||
            (record->count == best->count && candidate_wins_tie(best->locale, record->locale)))
            best = record;
    }
    ov_locale_picker_select(picker, best->locale, emit);
}

const char *ov_locale_picker_get_label_text(OvLocalePicker *picker)
{
    g_return_val_if_fail(OV_IS_LOCALE_PICKER(picker), nullptr);
    return gtk_label_get_text(GTK_LABEL(priv_of(picker)->label));
}
