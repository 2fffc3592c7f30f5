// Locale pickers, the list control panel and the dropdown's placement.
#include "widgets/widget_test_util.h"

#include "lang/translation_stats.h"
#include "widgets/dropdown_panel.h"
#include "widgets/list_control_panel.h"
#include "widgets/locale_picker.h"

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

} // namespace

TEST(LocalePicker, BestStatisticsPreferTheUsersLanguageThenUkEnglishThenAnyEnglish)
{
    const struct {
        const char *system, *records, *expected; // records null: no statistics; expected "": none
    } cases[] = {{"da", "sv:10 da:10", "da"},
                 {"de-de", "sv:10 en-us:10", "en-us"},
                 {"de-de", "en-us:10 en-uk:10", "en-uk"},
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
    for (const char *tag : {"sv", "da", "sv-fi", "da"})
        ov_locale_picker_insert_primary_locale(p, locale(tag));
    std::string labels;
    Script script;
    script.when_menu([&] {
        labels = menu_labels(open_menu());
        activate_menu_item("Swedish (Finland) [0%]");
    });
    click(GTK_WIDGET(p));
    EXPECT_EQ(labels, "Danish [25%]|Swedish (Finland) [0%]|Swedish (Sweden) [75%]|-|All languages >");
    EXPECT_EQ(picked, "en-us sv-fi");
}

// Regression: the window holding a picker closed while its menu was still
// returning a choice made the picker relabel destroyed widgets.
TEST(LocalePicker, WindowClosedWhileTheMenuReturnsLeavesThePickerAlone)
{
    auto *w = new TestWindow;
    GtkWidget *picker = w->pack(ov_locale_picker_new());
    ov_locale_picker_insert_primary_locale(OV_LOCALE_PICKER(picker), locale("sv"));
    w->show();
    Script script;
    script.when_menu([&] {
        activate_menu_item("Swedish (Sweden)");
        delete w;
    });
    click(picker);
    EXPECT_TRUE(script.done());
}

TEST(ListControlPanel, ButtonStatesFollowTheSelectionMovesAndRemoval)
{
    TestWindow w;
    auto store = ov::ObjectRef<GtkListStore>::adopt(gtk_list_store_new(1, G_TYPE_STRING));
    for (const char *name : {"a", "b", "c"})
        gtk_list_store_insert_with_values(store.get(), nullptr, -1, 0, name, -1);
    GtkWidget *view = gtk_tree_view_new_with_model(GTK_TREE_MODEL(store.get()));
    gtk_tree_view_insert_column_with_attributes(GTK_TREE_VIEW(view), -1, "", gtk_cell_renderer_text_new(),
                                                "text", 0, nullptr);
    GtkWidget *panel = w.pack(ov_list_control_panel_new(store.get(), GTK_TREE_VIEW(view)));
    w.pack(view, TRUE);
    gboolean allowed = FALSE;
    ov_list_control_panel_pack_remove_button(
        OV_LIST_CONTROL_PANEL(panel), "Remove",
        [](OvListControlPanel *, GtkTreeIter *, gpointer a) { return *static_cast<gboolean *>(a); },
        &allowed);
    w.show();
    // The rows, then whether "Move up", "Move down", "Remove" are sensitive: "b a c 01 1".
    auto state = [&] {
        std::string text = list_rows(view) + " ";
        for (const char *button : {"Move up", "Move down", "Remove"})
            text += gtk_widget_get_sensitive(find_button(panel, button)) ? "1" : "0";
        return text;
    };
    auto press = [&](const char *label) {
        click_button_in(panel, label);
        return state();
    };
    GtkTreeSelection *selection = gtk_tree_view_get_selection(GTK_TREE_VIEW(view));
    gtk_tree_selection_unselect_all(selection); // a shown view selects its cursor row
    EXPECT_EQ(state(), "a|b|c 000");
    ov::Owned<GtkTreePath, gtk_tree_path_free> second(gtk_tree_path_new_from_indices(1, -1));
    gtk_tree_selection_select_path(selection, second.get());
    EXPECT_EQ(state(), "a|b|c 111");
    EXPECT_EQ(press("Move up"), "b|a|c 011");
    press("Move down");
    EXPECT_EQ(press("Move down"), "a|c|b 101");
    EXPECT_EQ(press("Remove"), "a|c|b 101"); // refused by the callback
    allowed = TRUE;
    EXPECT_EQ(press("Remove"), "a|c 000");
}

TEST(DropdownPanel, PlacementOpensLeftOrUpWhereTheScreenEnds)
{
    const struct {
        int pointer, extent, screen, expected;
    } cases[] = {{824, 200, 1024, 824}, {825, 200, 1024, 626}, {150, 200, 240, 0}};
    for (const auto &c : cases)
        EXPECT_EQ(ov_dropdown_panel_place(c.pointer, c.extent, c.screen), c.expected)
            << c.pointer << " " << c.extent;
}
