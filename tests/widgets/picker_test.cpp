// Locale pickers and the language menu, the generic and string pickers, the
// list control panel and the dropdown panel, on a real display.
#include "support/gui_driver.h"
#include "support/test_support.h"

#include "core/raii.h"
#include "lang/active_locale.h"
#include "lang/locale_list.h"
#include "lang/translation_stats.h"
#include "widgets/active_locale_picker.h"
#include "widgets/dropdown_panel.h"
#include "widgets/gui.h"
#include "widgets/list_control_panel.h"
#include "widgets/locale_list_menu.h"
#include "widgets/menu.h"
#include "widgets/locale_picker.h"
#include "widgets/picker.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

const OvLocale *tag(const char *text)
{
    return ov_locale_get_by_tag(text);
}

// Statistics from "sv:10 da:10" over total texts.
OvTranslationStats *stats_of(const char *records, gint32 total)
{
    OvTranslationStats *stats = ov_translation_stats_new();
    stats->total = total;
    ov::GStrv parts(g_strsplit(records, " ", -1));
    for (char **part = parts.get(); *part != nullptr; ++part) {
        if (**part == '\0')
            continue;
        ov::GStrv pair(g_strsplit(*part, ":", 2));
        ov_translation_stats_add_locale(stats, ov_translation_stats_locale_new(tag(pair.get()[0]),
                                                                               atoi(pair.get()[1])));
    }
    return stats;
}

// Keeps the process-wide locales as they were.
struct LocaleState {
    const OvLocale *system = ov_get_system_locale();
    const OvLocale *active = ov_ovinternal_get_active_locale();
    ~LocaleState()
    {
        ov_ovinternal_set_system_locale(system);
        if (active != nullptr)
            ov_ovinternal_set_active_locale(active);
    }
};

// A shown window holding a vertical box; destroyed at the end of the scope.
struct TestWindow {
    GtkWidget *window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    GtkWidget *box = ov_gui_add_vbox(GTK_CONTAINER(window), TRUE);
    void show() { ov::test::show_and_wait(window); }
    ~TestWindow()
    {
        gtk_widget_destroy(window);
        ov::test::flush_events();
    }
};

std::vector<const OvLocale *> picked_log;
void log_picked(GtkWidget *, gpointer locale, gpointer)
{
    picked_log.push_back(static_cast<const OvLocale *>(locale));
}

} // namespace

TEST(LocalePicker, LabelFollowsSelectionAndStatistics)
{
    GtkWidget *picker = g_object_ref_sink(ov_locale_picker_new());
    auto *p = OV_LOCALE_PICKER(picker);
    picked_log.clear();
    g_signal_connect(picker, "picked", G_CALLBACK(log_picked), nullptr);
    EXPECT_STREQ(ov_locale_picker_get_label_text(p), "");

    ov_locale_picker_select(p, tag("en-us"), TRUE);
    EXPECT_STREQ(ov_locale_picker_get_label_text(p), "English (United States)");
    ov_locale_picker_select(p, tag("en-us"), TRUE); // already selected: no signal
    ov_locale_picker_select(p, tag("da"), FALSE);
    EXPECT_EQ(picked_log, std::vector<const OvLocale *>{tag("en-us")});

    OvTranslationStats *stats = stats_of("da:1 sv:3", 4);
    ov_locale_picker_set_translation_stats(p, stats);
    ov_translation_stats_destroy(stats); // the picker keeps its own copy
    EXPECT_STREQ(ov_locale_picker_get_label_text(p), "Danish [25%]");
    ov_locale_picker_set_translation_stats(p, nullptr);
    EXPECT_STREQ(ov_locale_picker_get_label_text(p), "Danish");

    // The arrow icon sits beside the label.
    EXPECT_NE(ov::test::find_widget(picker, [](GtkWidget *w) { return GTK_IS_IMAGE(w); }), nullptr);
    gtk_widget_destroy(picker);
    g_object_unref(picker);
}

TEST(LocalePicker, BestStatisticsPreferTheUsersLanguageThenUkEnglishThenAnyEnglish)
{
    struct Case {
        const char *system;
        const char *records;
        const char *expected;
    };
    const Case cases[] = {
        {"da", "sv:10 da:10", "da"},
        {"de-de", "sv:10 da:10", "sv"},
        {"de-de", "sv:10 da:10 en-us:10", "en-us"},
        {"de-de", "sv:10 en-uk:10 en-us:10", "en-uk"},
        {"de-de", "en-us:10 en-uk:10", "en-uk"},
        {"de-de", "en-uk:10 en-us:10", "en-uk"},
        {"da", "en-uk:10 da:10", "da"},
        {"da", "da:10 en-uk:10", "da"},
        {"de-de", "sv:3 da:10 fi:10", "da"},
        {"de-de", "fi:1 de-de:2", "de-de"},
        {"sv", "sv:4 da:9", "da"},
    };
    LocaleState keep;
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(c.system) + " / " + c.records);
        ov_ovinternal_set_system_locale(tag(c.system));
        GtkWidget *picker = g_object_ref_sink(ov_locale_picker_new());
        auto *p = OV_LOCALE_PICKER(picker);
        picked_log.clear();
        g_signal_connect(picker, "picked", G_CALLBACK(log_picked), nullptr);
        OvTranslationStats *stats = stats_of(c.records, 10);
        ov_locale_picker_set_translation_stats(p, stats);
        ov_translation_stats_destroy(stats);
        ov_locale_picker_select_locale_with_best_stats(p, TRUE);
        EXPECT_EQ(ov_locale_picker_get_selected(p), tag(c.expected));
        EXPECT_EQ(picked_log.size(), 1u);
        gtk_widget_destroy(picker);
        g_object_unref(picker);
    }

    // Without statistics, or with none recorded, nothing is selected.
    GtkWidget *picker = g_object_ref_sink(ov_locale_picker_new());
    ov_locale_picker_select_locale_with_best_stats(OV_LOCALE_PICKER(picker), TRUE);
    OvTranslationStats *empty = ov_translation_stats_new();
    ov_locale_picker_set_translation_stats(OV_LOCALE_PICKER(picker), empty);
    ov_translation_stats_destroy(empty);
    ov_locale_picker_select_locale_with_best_stats(OV_LOCALE_PICKER(picker), TRUE);
    EXPECT_EQ(ov_locale_picker_get_selected(OV_LOCALE_PICKER(picker)), nullptr);
    gtk_widget_destroy(picker);
    g_object_unref(picker);
}

TEST(LanguageMenu, ListedLocalesThenAllLanguagesGroupedByLanguage)
{
    OvLocaleList *list = ov_locale_list_new();
    ov_locale_list_add_last(list, tag("sv"));
    ov_locale_list_add_last(list, tag("da"));
    OvTranslationStats *stats = stats_of("sv:2 da:1", 4);
    const OvLocale *result = nullptr;

    GtkWidget *menu = g_object_ref_sink(ov_locale_list_menu_build(list, stats, TRUE, tag("nl-be"), &result));
    EXPECT_EQ(ov::test::menu_labels(GTK_MENU(menu)), "Swedish (Sweden) [50%]|Danish [25%]|-|All languages >");
    GtkWidget *all = ov::test::find_menu_item(GTK_MENU(menu), "All languages");
    auto *table = GTK_MENU(gtk_menu_item_get_submenu(GTK_MENU_ITEM(all)));
    EXPECT_EQ(ov::test::menu_labels(table),
              "Afrikaans|Albanian|Basque|Catalan|Danish|Dutch >|English >|Faroese|Finnish|French >|German >|"
              "Icelandic|Irish|Italian >|Norwegian Bokmål|Norwegian Nynorsk|Portuguese >|Rhaeto-Romance|"
              "Scots Gaelic|Spanish >|Swahili|Swedish >");
    auto submenu = [&](const char *language) {
        return GTK_MENU(gtk_menu_item_get_submenu(GTK_MENU_ITEM(ov::test::find_menu_item(table, language))));
    };
    EXPECT_EQ(ov::test::menu_labels(submenu("Dutch")), "Belgium|Netherlands");
    EXPECT_EQ(ov::test::menu_labels(submenu("Swedish")), "Finland|Sweden");
    EXPECT_EQ(ov::test::menu_labels(submenu("Italian")), "Italy|Switzerland");
    GtkWidget *belgium = ov::test::find_menu_item(submenu("Dutch"), "Belgium");
    EXPECT_EQ(ov_gui_menu_get_item_data(belgium), tag("nl-be"));
    // The current locale's item is drawn as selected.
    GdkRGBA *background = nullptr;
    GtkStyleContext *context = gtk_widget_get_style_context(belgium);
    gtk_style_context_get(context, gtk_style_context_get_state(context), "background-color", &background, nullptr);
    ASSERT_NE(background, nullptr);
    EXPECT_NEAR(background->red, 128 / 255.0, 0.01);
    gdk_rgba_free(background);
    gtk_widget_destroy(menu);
    g_object_unref(menu);

    // Without show_all only the list; with an empty list the table on top.
    menu = g_object_ref_sink(ov_locale_list_menu_build(list, nullptr, FALSE, nullptr, &result));
    EXPECT_EQ(ov::test::menu_labels(GTK_MENU(menu)), "Swedish (Sweden)|Danish");
    gtk_widget_destroy(menu);
    g_object_unref(menu);
    ov_locale_list_clear(list);
    menu = g_object_ref_sink(ov_locale_list_menu_build(list, nullptr, TRUE, nullptr, &result));
    EXPECT_EQ(ov::test::menu_labels(GTK_MENU(menu)).substr(0, 18), "Afrikaans|Albanian");
    gtk_widget_destroy(menu);
    g_object_unref(menu);
    ov_locale_list_destroy(list);
    ov_translation_stats_destroy(stats);
}

TEST(LanguageMenu, ChoosingFromASubmenuOrDismissingWithEscape)
{
    ov::test::Script script;
    script.when_menu([] { ov::test::activate_menu_item("Swedish/Finland"); });
    EXPECT_EQ(ov_locale_list_menu_run(nullptr, nullptr, TRUE, nullptr, nullptr), tag("sv-fi"));

    ov::test::Script dismiss;
    dismiss.when_menu([] { ov::test::dismiss_menu(); });
    EXPECT_EQ(ov_locale_list_menu_run(nullptr, nullptr, TRUE, nullptr, nullptr), nullptr);
}

TEST(LocalePicker, PressingOpensTheMenuAtThePickerAndPicksTheChoice)
{
    TestWindow w;
    GtkWidget *picker = ov_locale_picker_new();
    ov_gui_pack_widget(GTK_BOX(w.box), picker, FALSE);
    w.show();
    auto *p = OV_LOCALE_PICKER(picker);
    ov_locale_picker_insert_primary_locale(p, tag("sv"));
    ov_locale_picker_insert_primary_locale(p, tag("da"));
    ov_locale_picker_insert_primary_locale(p, tag("sv-fi"));
    ov_locale_picker_insert_primary_locale(p, tag("da"));
    ov_locale_picker_select(p, tag("da"), FALSE);
    picked_log.clear();
    g_signal_connect(picker, "picked", G_CALLBACK(log_picked), nullptr);

    std::string labels;
    bool pressed_while_open = false;
    ov::test::Script script;
    script.when_menu([&] {
        labels = ov::test::menu_labels(ov::test::open_menu());
        pressed_while_open = gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(picker));
        ov::test::activate_menu_item("Swedish (Finland)");
    });
    ov::test::click(picker);
    EXPECT_TRUE(script.done());
    EXPECT_EQ(labels, "Danish|Swedish (Finland)|Swedish (Sweden)|-|All languages >");
    EXPECT_TRUE(pressed_while_open);
    EXPECT_FALSE(gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(picker)));
    EXPECT_EQ(ov_locale_picker_get_selected(p), tag("sv-fi"));
    EXPECT_EQ(picked_log, std::vector<const OvLocale *>{tag("sv-fi")});

    // Without all languages and with the menu dismissed nothing changes.
    ov_locale_picker_set_all_languages_enabled(p, FALSE);
    ov::test::Script dismiss;
    dismiss.when_menu([&] {
        labels = ov::test::menu_labels(ov::test::open_menu());
        ov::test::dismiss_menu();
    });
    ov::test::click(picker);
    EXPECT_EQ(labels, "Danish|Swedish (Finland)|Swedish (Sweden)");
    EXPECT_EQ(ov_locale_picker_get_selected(p), tag("sv-fi"));
    EXPECT_FALSE(gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(picker)));
    ov_locale_picker_clear_primary_locales(p);
}

TEST(ActiveLocalePicker, PickingInOnePickerUpdatesTheActiveLocaleAndEveryOtherPicker)
{
    LocaleState keep;
    ov_ovinternal_set_active_locale(tag("en-uk"));
    TestWindow w;
    GtkWidget *first = ov_active_locale_picker_new();
    GtkWidget *second = ov_active_locale_picker_new();
    ov_gui_pack_widget(GTK_BOX(w.box), first, FALSE);
    ov_gui_pack_widget(GTK_BOX(w.box), second, FALSE);
    w.show();
    EXPECT_EQ(ov_locale_picker_get_selected(OV_LOCALE_PICKER(first)), tag("en-uk"));

    ov::test::Script script;
    script.when_menu([] { ov::test::activate_menu_item("German/Austria"); });
    ov::test::click(first);
    EXPECT_EQ(ov_ovinternal_get_active_locale(), tag("de-at"));
    EXPECT_EQ(ov_locale_picker_get_selected(OV_LOCALE_PICKER(second)), tag("de-at"));
    EXPECT_STREQ(ov_locale_picker_get_label_text(OV_LOCALE_PICKER(second)), "German (Austria)");

    // A destroyed picker no longer listens.
    gtk_widget_destroy(second);
    ov_ovinternal_set_active_locale(tag("fi"));
    EXPECT_EQ(ov_locale_picker_get_selected(OV_LOCALE_PICKER(first)), tag("fi"));
}

namespace {

int destroyed_options = 0;

char *number_text(gconstpointer option, gpointer)
{
    return g_strdup_printf("Option %d", *static_cast<const int *>(option));
}

void count_destroyed(gpointer option)
{
    ++destroyed_options;
    g_free(option);
}

int *number(int value)
{
    return static_cast<int *>(g_memdup2(&value, sizeof value));
}

} // namespace

TEST(Picker, OptionsAreShownThroughTheTextCallbackAndFreedWithThePicker)
{
    TestWindow w;
    destroyed_options = 0;
    GtkWidget *widget = ov_picker_new(number_text, nullptr, count_destroyed, "(none)");
    ov_gui_pack_widget(GTK_BOX(w.box), widget, FALSE);
    w.show();
    auto *picker = OV_PICKER(widget);
    EXPECT_STREQ(ov_picker_get_label_text(picker), "(none)");
    ov_picker_append_option(picker, number(1));
    ov_picker_append_separator(picker);
    int *two = number(2);
    ov_picker_append_option(picker, two);
    EXPECT_EQ(ov_picker_get_option_count(picker), 2u);
    EXPECT_EQ(ov_picker_get_option(picker, 1), two);

    std::string labels;
    ov::test::Script script;
    script.when_menu([&] {
        labels = ov::test::menu_labels(ov::test::open_menu());
        ov::test::activate_menu_item("Option 2");
    });
    ov::test::click(widget);
    EXPECT_EQ(labels, "Option 1|-|Option 2");
    EXPECT_EQ(ov_picker_get_selected(picker), two);
    EXPECT_STREQ(ov_picker_get_label_text(picker), "Option 2");

    ov_picker_clear_options(picker);
    EXPECT_EQ(destroyed_options, 2);
    EXPECT_STREQ(ov_picker_get_label_text(picker), "(none)");
    ov_picker_append_option(picker, number(3));
    gtk_widget_destroy(widget);
    EXPECT_EQ(destroyed_options, 3);
}

TEST(StringPicker, SelectsByIndexAndKeepsItsOwnCopies)
{
    GtkWidget *widget = g_object_ref_sink(ov_string_picker_new("Nothing"));
    auto *picker = OV_PICKER(widget);
    std::string text = "Codeset A";
    ov_string_picker_append(picker, text.c_str());
    text = "changed";
    ov_string_picker_append(picker, "Codeset B");
    EXPECT_EQ(ov_string_picker_get_selected_index(picker), -1);
    ov_string_picker_select_index(picker, 1, FALSE);
    EXPECT_STREQ(ov_string_picker_get_selected_text(picker), "Codeset B");
    EXPECT_EQ(ov_string_picker_get_selected_index(picker), 1);
    ov_string_picker_select_index(picker, 0, FALSE);
    EXPECT_STREQ(ov_picker_get_label_text(picker), "Codeset A");
    ov_string_picker_select_index(picker, -1, FALSE);
    EXPECT_STREQ(ov_picker_get_label_text(picker), "Nothing");
    gtk_widget_destroy(widget);
    g_object_unref(widget);
}

namespace {

// A list of "a b c" rows with a tree view and its control panel.
struct ListFixture {
    TestWindow w;
    GtkListStore *store = gtk_list_store_new(1, G_TYPE_STRING);
    GtkWidget *view;
    GtkWidget *panel;
    explicit ListFixture(const char *rows)
    {
        ov::GStrv names(g_strsplit(rows, " ", -1));
        for (char **name = names.get(); *name != nullptr; ++name)
            gtk_list_store_insert_with_values(store, nullptr, -1, 0, *name, -1);
        view = gtk_tree_view_new_with_model(GTK_TREE_MODEL(store));
        gtk_tree_view_insert_column_with_attributes(GTK_TREE_VIEW(view), -1, "Contents",
                                                    gtk_cell_renderer_text_new(), "text", 0, nullptr);
        GtkWidget *row = ov_gui_pack_hbox(GTK_BOX(w.box), TRUE, TRUE);
        ov_gui_pack_widget(GTK_BOX(row), view, TRUE);
        panel = ov_list_control_panel_new(store, GTK_TREE_VIEW(view));
        ov_gui_pack_widget(GTK_BOX(row), panel, FALSE);
        w.show();
    }
    ~ListFixture() { g_object_unref(store); }
    std::string rows() const
    {
        std::string text;
        GtkTreeIter iter;
        for (gboolean ok = gtk_tree_model_get_iter_first(GTK_TREE_MODEL(store), &iter); ok;
             ok = gtk_tree_model_iter_next(GTK_TREE_MODEL(store), &iter)) {
            char *name = nullptr;
            gtk_tree_model_get(GTK_TREE_MODEL(store), &iter, 0, &name, -1);
            text += std::string(text.empty() ? "" : " ") + name;
            g_free(name);
        }
        return text;
    }
    void select(int index)
    {
        GtkTreePath *path = gtk_tree_path_new_from_indices(index, -1);
        gtk_tree_selection_select_path(gtk_tree_view_get_selection(GTK_TREE_VIEW(view)), path);
        gtk_tree_path_free(path);
    }
    // "up down remove" sensitivity as "1 0 1"; "-" for a missing button.
    std::string states() const
    {
        std::string text;
        for (const char *label : {"Move up", "Move down", "Remove"}) {
            GtkWidget *button = ov::test::find_button(panel, label);
            text += std::string(text.empty() ? "" : " ") +
                    (button == nullptr ? "-" : gtk_widget_get_sensitive(button) ? "1" : "0");
        }
        return text;
    }
};

gboolean allow_removal(OvListControlPanel *, GtkTreeIter *, gpointer allowed)
{
    return *static_cast<gboolean *>(allowed);
}

} // namespace

TEST(ListControlPanel, ButtonStatesFollowTheSelection)
{
    ListFixture f("a b c");
    // A shown tree view puts its cursor, and so the selection, on a row.
    gtk_tree_selection_unselect_all(gtk_tree_view_get_selection(GTK_TREE_VIEW(f.view)));
    EXPECT_EQ(f.states(), "0 0 -");
    ov_list_control_panel_pack_remove_button(OV_LIST_CONTROL_PANEL(f.panel), "Remove", nullptr, nullptr);
    EXPECT_EQ(f.states(), "0 0 0");
    const char *expected[] = {"0 1 1", "1 1 1", "1 0 1"};
    for (int index = 0; index < 3; ++index) {
        f.select(index);
        EXPECT_EQ(f.states(), expected[index]) << index;
    }
    gtk_tree_selection_unselect_all(gtk_tree_view_get_selection(GTK_TREE_VIEW(f.view)));
    EXPECT_EQ(f.states(), "0 0 0");
}

TEST(ListControlPanel, MovesKeepTheSelectionOnTheMovedRow)
{
    ListFixture f("a b c");
    f.select(1);
    ov::test::click_button_in(f.panel, "Move up");
    EXPECT_EQ(f.rows(), "b a c");
    EXPECT_EQ(f.states(), "0 1 -");
    ov::test::click_button_in(f.panel, "Move down");
    ov::test::click_button_in(f.panel, "Move down");
    EXPECT_EQ(f.rows(), "a c b");
    EXPECT_EQ(f.states(), "1 0 -");
}

TEST(ListControlPanel, RemoveAsksTheCallbackAndOnlyOneRemoveButtonIsPacked)
{
    ListFixture f("a b c");
    gboolean allowed = FALSE;
    auto *panel = OV_LIST_CONTROL_PANEL(f.panel);
    ov_list_control_panel_pack_remove_button(panel, "Remove", allow_removal, &allowed);
    ov_list_control_panel_pack_remove_button(panel, "Remove again", nullptr, nullptr);
    EXPECT_EQ(ov::test::find_button(f.panel, "Remove again"), nullptr);
    f.select(2);
    ov::test::click_button_in(f.panel, "Remove");
    EXPECT_EQ(f.rows(), "a b c");
    allowed = TRUE;
    ov::test::click_button_in(f.panel, "Remove");
    EXPECT_EQ(f.rows(), "a b");
    EXPECT_EQ(f.states(), "0 0 0");
}

TEST(ListControlPanel, WithoutAListEveryButtonIsInsensitive)
{
    GtkWidget *panel = g_object_ref_sink(ov_list_control_panel_new(nullptr, nullptr));
    ov_list_control_panel_pack_remove_button(OV_LIST_CONTROL_PANEL(panel), "Remove", nullptr, nullptr);
    for (GtkWidget *button : ov::test::find_widgets(panel, [](GtkWidget *w) { return GTK_IS_BUTTON(w); }))
        EXPECT_FALSE(gtk_widget_get_sensitive(button));
    gtk_widget_destroy(panel);
    g_object_unref(panel);
}

TEST(DropdownPanel, PlacementOpensLeftOrUpWhereTheScreenEnds)
{
    struct Case {
        int pointer, extent, screen, expected;
    };
    const Case cases[] = {
        {100, 200, 1024, 100}, {824, 200, 1024, 824},  {825, 200, 1024, 626},
        {1014, 200, 1024, 815}, {150, 200, 240, 0},    {0, 2000, 1024, 0},
    };
    for (const Case &c : cases)
        EXPECT_EQ(ov_dropdown_panel_place(c.pointer, c.extent, c.screen), c.expected)
            << c.pointer << " " << c.extent << " " << c.screen;
}

TEST(DropdownPanel, OpensAtThePointerAndClosesOnAClickOutside)
{
    TestWindow w;
    gtk_widget_set_size_request(w.window, 300, 200);
    w.show();
    GdkDisplay *display = gdk_display_get_default();
    GdkScreen *screen = gdk_display_get_default_screen(display);
    const int screen_width = gdk_window_get_width(gdk_screen_get_root_window(screen));
    GdkDevice *pointer = gdk_seat_get_pointer(gdk_display_get_default_seat(display));
    gdk_device_warp(pointer, screen, screen_width - 10, 50);
    ov::test::wait_ms(50);

    GtkWidget *panel = ov_dropdown_panel_new(TRUE);
    GtkWidget *content = ov_gui_create_drawing_area(200, 100);
    gtk_container_add(GTK_CONTAINER(panel), content);
    EXPECT_EQ(gtk_container_get_border_width(GTK_CONTAINER(panel)), 8u);
    int x = -1;
    int y = -1;
    ov::test::Script script;
    script.when([&] { return gtk_widget_get_mapped(panel); },
                [&] {
                    gtk_window_get_position(GTK_WINDOW(panel), &x, &y);
                    // A click on the main window is outside the panel.
                    ov::test::click(w.box);
                });
    ov_dropdown_panel_run(OV_DROPDOWN_PANEL(panel));
    EXPECT_TRUE(script.done());
    EXPECT_EQ(x, screen_width - 10 - (200 + 16) + 1);
    EXPECT_EQ(y, 50);
}
