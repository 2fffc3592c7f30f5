// Locale pickers, the language menu, the string picker, the list control panel and the dropdown's placement.
#include "widgets/widget_test_util.h"

#include "gui/menu.h"
#include "lang/translation_stats.h"
#include "widgets/dropdown_panel.h"
#include "widgets/list_control_panel.h"
#include "widgets/locale_list_menu.h"
#include "widgets/locale_picker.h"
#include "widgets/picker.h"

#include <gtest/gtest.h>

using namespace ov::test;

namespace
{

using StatsPtr = ov::Owned<OvTranslationStats, ov_translation_stats_destroy>;

// Statistics from "sv:10 da:10" over total texts.
StatsPtr stats_of(const char *records, gint32 total)
{
    StatsPtr stats(ov_translation_stats_new());
    stats->total = total;
    std::istringstream words(records);
    for (std::string word; words >> word;) {
        std::size_t colon = word.find(':');
        ov_translation_stats_add_locale(stats.get(),
                                        ov_translation_stats_locale_new(locale(word.substr(0, colon).c_str()),
                                                                        std::stoi(word.substr(colon + 1))));
    }
    return stats;
}

std::string picked;

// A locale picker in a (hidden) window that logs its "picked" signal as "sv da".
OvLocalePicker *logged_picker(TestWindow &w)
{
    picked.clear();
    GtkWidget *picker = w.pack(ov_locale_picker_new());
    g_signal_connect(picker, "picked", G_CALLBACK(+[](GtkWidget *, const OvLocale *l, gpointer) {
                         picked += (picked.empty() ? "" : " ") + std::string(l->tag);
                     }),
                     nullptr);
    return OV_LOCALE_PICKER(picker);
}

// A list of "a b c" rows in a tree view with its control panel.
struct ListWindow : TestWindow {
    GtkListStore *store = gtk_list_store_new(1, G_TYPE_STRING);
    GtkWidget *view = gtk_tree_view_new_with_model(GTK_TREE_MODEL(store));
    GtkWidget *panel = pack(ov_list_control_panel_new(store, GTK_TREE_VIEW(view)));
    GtkTreeSelection *selection = gtk_tree_view_get_selection(GTK_TREE_VIEW(view));
    ListWindow()
    {
        for (const char *name : {"a", "b", "c"})
            gtk_list_store_insert_with_values(store, nullptr, -1, 0, name, -1);
        gtk_tree_view_insert_column_with_attributes(GTK_TREE_VIEW(view), -1, "", gtk_cell_renderer_text_new(),
                                                    "text", 0, nullptr);
        pack(view, TRUE);
        show();
        gtk_tree_selection_unselect_all(selection); // a shown view selects its cursor row
    }
    ~ListWindow() { g_object_unref(store); }
    std::string select(int index)
    {
        ov::Owned<GtkTreePath, gtk_tree_path_free> path(gtk_tree_path_new_from_indices(index, -1));
        gtk_tree_selection_select_path(selection, path.get());
        return state();
    }
    std::string press(const char *label)
    {
        click_button_in(panel, label);
        return state();
    }
    // The rows, then whether "Move up", "Move down", "Remove" are sensitive ("-": missing): "b a c 01-".
    std::string state() const
    {
        std::string text;
        GtkTreeIter iter;
        for (gboolean ok = gtk_tree_model_get_iter_first(GTK_TREE_MODEL(store), &iter); ok;
             ok = gtk_tree_model_iter_next(GTK_TREE_MODEL(store), &iter)) {
            char *name = nullptr;
            gtk_tree_model_get(GTK_TREE_MODEL(store), &iter, 0, &name, -1);
            text += std::string(name) + " ";
            g_free(name);
        }
        for (GtkWidget *button :
             {find_button(panel, "Move up"), find_button(panel, "Move down"), find_button(panel, "Remove")})
            text += button == nullptr ? "-" : gtk_widget_get_sensitive(button) ? "1" : "0";
        return text;
    }
};

} // namespace

TEST(LocalePicker, BestStatisticsPreferTheUsersLanguageThenUkEnglishThenAnyEnglish)
{
    const struct {
        const char *system, *records, *expected; // records null: no statistics; expected "": none
    } cases[] = {{"da", "sv:10 da:10", "da"},
                 {"de-de", "sv:10 da:10", "sv"},
                 {"sv", "sv:4 da:9", "da"},
                 {"de-de", "sv:10 da:10 en-us:10", "en-us"},
                 {"de-de", "sv:10 en-uk:10 en-us:10", "en-uk"},
                 {"de-de", "en-us:10 en-uk:10", "en-uk"},
                 {"da", "en-uk:10 da:10", "da"},
                 {"da", "da:10 en-uk:10", "da"},
                 {"de-de", "sv:3 da:10 fi:10", "da"},
                 {"de-de", "fi:1 de-de:2", "de-de"},
                 {"sv", "", ""},
                 {"sv", nullptr, ""}};
    LocaleState keep;
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.system) + " / " + (c.records ? c.records : "none"));
        ov_ovinternal_set_system_locale(locale(c.system));
        TestWindow w;
        OvLocalePicker *p = logged_picker(w);
        if (c.records != nullptr)
            ov_locale_picker_set_translation_stats(p, stats_of(c.records, 10).get());
        ov_locale_picker_select_locale_with_best_stats(p, TRUE);
        EXPECT_EQ(picked, c.expected);
    }
}

TEST(LanguageMenu, ListedLocalesThenAllLanguagesGroupedByLanguage)
{
    LocaleListPtr list = list_of("sv da");
    const OvLocale *result = nullptr;
    auto build = [&](const OvTranslationStats *stats, gboolean show_all, const OvLocale *current) {
        return GTK_MENU(
            g_object_ref_sink(ov_locale_list_menu_build(list.get(), stats, show_all, current, &result)));
    };
    auto submenu = [](GtkMenu *menu, const char *label) {
        return GTK_MENU(gtk_menu_item_get_submenu(GTK_MENU_ITEM(find_menu_item(menu, label))));
    };
    GtkMenu *menu = build(stats_of("sv:2 da:1", 4).get(), TRUE, locale("nl-be"));
    EXPECT_EQ(menu_labels(menu), "Swedish (Sweden) [50%]|Danish [25%]|-|All languages >");
    GtkMenu *table = submenu(menu, "All languages");
    EXPECT_EQ(menu_labels(table),
              "Afrikaans|Albanian|Basque|Catalan|Danish|Dutch >|English >|Faroese|Finnish|French >|German >|"
              "Icelandic|Irish|Italian >|Norwegian Bokmål|Norwegian Nynorsk|Portuguese >|Rhaeto-Romance|"
              "Scots Gaelic|Spanish >|Swahili|Swedish >");
    EXPECT_EQ(menu_labels(submenu(table, "Dutch")), "Belgium|Netherlands");
    EXPECT_EQ(menu_labels(submenu(table, "Swedish")), "Finland|Sweden");
    EXPECT_EQ(ov_gui_menu_get_item_data(find_menu_item(submenu(table, "Dutch"), "Belgium")), locale("nl-be"));

    // Without show_all only the list; with an empty list the table on top.
    GtkMenu *listed = build(nullptr, FALSE, nullptr);
    EXPECT_EQ(menu_labels(listed), "Swedish (Sweden)|Danish");
    ov_locale_list_clear(list.get());
    GtkMenu *top = build(nullptr, TRUE, nullptr);
    EXPECT_EQ(menu_labels(top).substr(0, 18), "Afrikaans|Albanian");
    for (GtkMenu *m : {menu, listed, top}) {
        gtk_widget_destroy(GTK_WIDGET(m));
        g_object_unref(m);
    }
}

TEST(LocalePicker, LabelShowsTheSelectionAndPressingPicksFromTheMenuAtThePicker)
{
    TestWindow w;
    OvLocalePicker *p = logged_picker(w);
    w.show();
    ov_locale_picker_select(p, locale("en-us"), TRUE);
    ov_locale_picker_select(p, locale("en-us"), TRUE); // already selected: no signal
    ov_locale_picker_select(p, locale("da"), FALSE);
    EXPECT_EQ(picked, "en-us");
    ov_locale_picker_set_translation_stats(p, stats_of("da:1 sv:3", 4).get());
    EXPECT_STREQ(ov_locale_picker_get_label_text(p), "Danish [25%]");
    ov_locale_picker_set_translation_stats(p, nullptr);
    EXPECT_STREQ(ov_locale_picker_get_label_text(p), "Danish");
    for (const char *tag : {"sv", "da", "sv-fi", "da"})
        ov_locale_picker_insert_primary_locale(p, locale(tag));
    for (gboolean all : {1, 0}) {
        std::string labels;
        bool pressed_while_open = false;
        Script script;
        script.when_menu([&] {
            labels = menu_labels(open_menu());
            pressed_while_open = gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(p));
            all ? activate_menu_item("Swedish (Finland)") : dismiss_menu();
        });
        ov_locale_picker_set_all_languages_enabled(p, all);
        click(GTK_WIDGET(p));
        EXPECT_TRUE(script.done());
        EXPECT_EQ(labels, all ? "Danish|Swedish (Finland)|Swedish (Sweden)|-|All languages >"
                              : "Danish|Swedish (Finland)|Swedish (Sweden)");
        EXPECT_TRUE(pressed_while_open);
        EXPECT_FALSE(gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(p)));
        EXPECT_EQ(picked, "en-us sv-fi");
    }
}

// Regression: the window holding a picker closed while its menu was still
// returning a choice made the picker relabel destroyed widgets.
TEST(LocalePicker, WindowClosedWhileTheMenuReturnsLeavesThePickerAlone)
{
    GtkWidget *window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    GtkWidget *picker = ov_locale_picker_new();
    ov_locale_picker_insert_primary_locale(OV_LOCALE_PICKER(picker), locale("sv"));
    gtk_container_add(GTK_CONTAINER(window), picker);
    gtk_widget_show(picker);
    show_and_wait(window);
    Script script;
    script.when_menu([&] {
        activate_menu_item("Swedish (Sweden)");
        gtk_widget_destroy(window);
    });
    click(picker);
    EXPECT_TRUE(script.done());
    flush_events();
}

TEST(Picker, StringPickerKeepsItsOwnCopiesAndPicksOnAClick)
{
    TestWindow w;
    auto *picker = OV_PICKER(w.pack(ov_string_picker_new("Nothing")));
    w.show();
    std::string text = "Codeset A";
    ov_string_picker_append(picker, text.c_str());
    text = "changed";
    ov_picker_append_separator(picker);
    ov_string_picker_append(picker, "Codeset B");
    std::string labels;
    Script script;
    script.when_menu([&] {
        labels = menu_labels(open_menu());
        activate_menu_item("Codeset B");
    });
    click(GTK_WIDGET(picker));
    EXPECT_EQ(labels, "Codeset A|-|Codeset B");
    EXPECT_EQ(ov_string_picker_get_selected_index(picker), 1);
    EXPECT_STREQ(ov_picker_get_label_text(picker), "Codeset B");
    ov_picker_clear_options(picker);
    EXPECT_STREQ(ov_picker_get_label_text(picker), "Nothing");
}

TEST(ListControlPanel, ButtonStatesFollowTheSelectionMovesAndRemoval)
{
    ListWindow f;
    EXPECT_EQ(f.state(), "a b c 00-");
    gboolean allowed = FALSE;
    auto *panel = OV_LIST_CONTROL_PANEL(f.panel);
    ov_list_control_panel_pack_remove_button(
        panel, "Remove",
        [](OvListControlPanel *, GtkTreeIter *, gpointer a) { return *static_cast<gboolean *>(a); },
        &allowed);
    ov_list_control_panel_pack_remove_button(panel, "Remove again", nullptr, nullptr);
    EXPECT_EQ(find_button(f.panel, "Remove again"), nullptr);
    EXPECT_EQ(f.state(), "a b c 000");
    EXPECT_EQ(f.select(0), "a b c 011");
    EXPECT_EQ(f.select(2), "a b c 101");
    EXPECT_EQ(f.select(1), "a b c 111");
    EXPECT_EQ(f.press("Move up"), "b a c 011");
    f.press("Move down");
    EXPECT_EQ(f.press("Move down"), "a c b 101");
    EXPECT_EQ(f.press("Remove"), "a c b 101"); // refused by the callback
    allowed = TRUE;
    EXPECT_EQ(f.press("Remove"), "a c 000");
}

TEST(DropdownPanel, PlacementOpensLeftOrUpWhereTheScreenEnds)
{
    const struct {
        int pointer, extent, screen, expected;
    } cases[] = {{100, 200, 1024, 100},  {824, 200, 1024, 824}, {825, 200, 1024, 626},
                 {1014, 200, 1024, 815}, {150, 200, 240, 0},    {0, 2000, 1024, 0}};
    for (const auto &c : cases)
        EXPECT_EQ(ov_dropdown_panel_place(c.pointer, c.extent, c.screen), c.expected)
            << c.pointer << " " << c.extent;
}
