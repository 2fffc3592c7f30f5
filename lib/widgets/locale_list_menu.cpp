#include "widgets/locale_list_menu.h"

#include "core/raii.h"
#include "gui/menu.h"
#include "gui/style.h"

namespace
{

void store_choice(GtkMenuItem *item, gpointer result)
{
    *static_cast<const OvLocale **>(result) =
        static_cast<const OvLocale *>(ov_gui_menu_get_item_data(GTK_WIDGET(item)));
}

GtkWidget *append_locale(GtkMenuShell *menu, const char *label, const OvLocale *locale,
                         const OvLocale *current, const OvLocale **result)
{
    GtkWidget *item = ov_gui_menu_append_item_with_activate_callback(
        menu, label, const_cast<OvLocale *>(locale), 0, store_choice, static_cast<gpointer>(result));
    if (locale == current)
        ov_gui_style_selected_menu_item(item);
    return item;
}

// The whole table: locales with a territory in one submenu per language,
// the others directly by their language name.
void append_full_table(GtkMenuShell *menu, const OvLocale *current, const OvLocale **result)
{
    const OvLanguage *submenu_language = nullptr;
    GtkMenuShell *submenu = nullptr;
    for (guint index = 0; index < ov_locale_get_count(); ++index) {
        const OvLocale *locale = ov_locale_get_by_index(index);
        if (locale->territory == nullptr) {
            append_locale(menu, locale->language->name, locale, current, result);
            continue;
        }
        if (submenu == nullptr || locale->language != submenu_language) {
            submenu_language = locale->language;
            GtkWidget *language_item = ov_gui_menu_append_item(menu, locale->language->name, nullptr, 0);
            submenu = GTK_MENU_SHELL(gtk_menu_new());
            gtk_menu_item_set_submenu(GTK_MENU_ITEM(language_item), GTK_WIDGET(submenu));
        }
        append_locale(submenu, locale->territory, locale, current, result);
    }
}

} // namespace

GtkWidget *ov_locale_list_menu_build(const OvLocaleList *list, const OvTranslationStats *stats,
                                     gboolean show_all, const OvLocale *current, const OvLocale **result)
{
    g_return_val_if_fail(result != nullptr, nullptr);
    GtkWidget *menu = gtk_menu_new();
    GtkMenuShell *shell = GTK_MENU_SHELL(menu);
    bool listed = false;
    if (list != nullptr) {
        for (OvLocaleListLink *link : *list) {
            ov::GStr label(stats != nullptr
                               ? ov_translation_stats_format_locale_ui_string(stats, link->locale)
                               : ov_locale_format_ui_string(link->locale));
            append_locale(shell, label.get(), link->locale, current, result);
            listed = true;
        }
    }
    if (!show_all)
        return menu;
    if (listed) {
        ov_gui_menu_append_separator(shell);
        GtkWidget *all = ov_gui_menu_append_item(shell, "All languages", nullptr, 0);
        GtkWidget *submenu = gtk_menu_new();
        gtk_menu_item_set_submenu(GTK_MENU_ITEM(all), submenu);
        shell = GTK_MENU_SHELL(submenu);
    }
    append_full_table(shell, current, result);
    return menu;
}

const OvLocale *ov_locale_list_menu_run(const OvLocaleList *list, const OvTranslationStats *stats,
                                        gboolean show_all, const OvLocale *current, GtkWidget *anchor)
{
    const OvLocale *result = nullptr;
    GtkWidget *menu = ov_locale_list_menu_build(list, stats, show_all, current, &result);
    ov_gui_menu_run_and_destroy(GTK_MENU(menu), anchor);
    return result;
}
