// GUI construction helpers, menus and styles on a real display.
#include "support/gui_driver.h"
#include "support/test_support.h"

#include "core/error.h"
#include "core/raii.h"
#include "widgets/gui.h"
#include "widgets/menu.h"
#include "widgets/style.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string title(const char *app, const char *document, gboolean modified)
{
    ov::GStr text(ov_gui_generate_main_window_title(app, document, modified));
    return text.get();
}

// A shown window holding a vertical box; destroyed at the end of the scope.
struct TestWindow {
    GtkWidget *window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    GtkWidget *box = ov_gui_add_vbox(GTK_CONTAINER(window), TRUE);
    TestWindow() { ov::test::show_and_wait(window); }
    ~TestWindow()
    {
        gtk_widget_destroy(window);
        ov::test::flush_events();
    }
};

GtkBorder padding_of(GtkWidget *widget)
{
    ov::test::wait_ms(30); // styles are recomputed with the next frame
    GtkStyleContext *context = gtk_widget_get_style_context(widget);
    GtkBorder padding{};
    gtk_style_context_get_padding(context, gtk_style_context_get_state(context), &padding);
    return padding;
}

std::string border_text(GtkBorder b)
{
    return std::to_string(b.top) + " " + std::to_string(b.right) + " " + std::to_string(b.bottom) + " " +
           std::to_string(b.left);
}

} // namespace

TEST(GuiHelpers, MainWindowTitleNamesDocumentModificationAndVersion)
{
    EXPECT_EQ(title("Orvane Template Editor", "Jar", FALSE), "Jar - Orvane Template Editor 3.3.0");
    EXPECT_EQ(title("Orvane Template Editor", "Jar", TRUE), "*Jar - Orvane Template Editor 3.3.0");
    EXPECT_EQ(title("Orvane Template Editor", nullptr, TRUE), "Orvane Template Editor 3.3.0");
}

TEST(GuiHelpers, BoxesLabelsButtonsAndMarginsFollowTheHouseRules)
{
    TestWindow w;
    EXPECT_EQ(ov_gui_get_default_margin(), 8);
    EXPECT_EQ(gtk_box_get_spacing(GTK_BOX(w.box)), 8);
    GtkWidget *tight = ov_gui_pack_hbox(GTK_BOX(w.box), FALSE, FALSE);
    EXPECT_EQ(gtk_box_get_spacing(GTK_BOX(tight)), 0);
    EXPECT_FALSE(gtk_box_get_homogeneous(GTK_BOX(tight)));

    GtkWidget *label = ov_gui_pack_label(GTK_BOX(w.box), "Name", 0.0f, 1.0f);
    gboolean expand = TRUE;
    gtk_container_child_get(GTK_CONTAINER(w.box), label, "expand", &expand, nullptr);
    EXPECT_FALSE(expand);
    EXPECT_FLOAT_EQ(gtk_label_get_yalign(GTK_LABEL(label)), 1.0f);
    EXPECT_TRUE(gtk_widget_get_visible(label));

    GtkWidget *required = ov_gui_pack_input_field_label(GTK_BOX(w.box), "A & B", TRUE);
    EXPECT_STREQ(gtk_label_get_label(GTK_LABEL(required)),
                 "A &amp; B: <span style=\"italic\" alpha=\"50%\">(Required)</span>");
    EXPECT_STREQ(gtk_label_get_text(GTK_LABEL(ov_gui_create_input_field_label("Text", FALSE))), "Text:");

    GtkWidget *ok = ov_gui_pack_button(GTK_BOX(w.box), "OK", TRUE);
    EXPECT_TRUE(gtk_widget_has_default(ok));
    GtkWidget *empty = ov_gui_pack_button(GTK_BOX(w.box), nullptr, FALSE);
    EXPECT_EQ(gtk_button_get_label(GTK_BUTTON(empty)), nullptr);

    // Containers take the border width, text views and plain widgets margins.
    GtkWidget *view = ov_gui_pack_text_view(GTK_BOX(w.box), TRUE);
    ov_gui_set_default_surrounding_margin(view);
    ov_gui_set_default_surrounding_margin(tight);
    ov_gui_set_default_surrounding_margin(label);
    EXPECT_EQ(gtk_container_get_border_width(GTK_CONTAINER(tight)), 8u);
    EXPECT_EQ(gtk_container_get_border_width(GTK_CONTAINER(view)), 0u);
    EXPECT_EQ(gtk_widget_get_margin_start(view), 8);
    EXPECT_EQ(gtk_widget_get_margin_bottom(label), 8);
    ov_gui_set_margins(label, 1, 2, 3, 4);
    EXPECT_EQ(gtk_widget_get_margin_top(label), 1);
    EXPECT_EQ(gtk_widget_get_margin_end(label), 2);
    EXPECT_EQ(gtk_widget_get_margin_bottom(label), 3);
    EXPECT_EQ(gtk_widget_get_margin_start(label), 4);

    ov_gui_set_sensitivity(ok, 1);
    EXPECT_FALSE(gtk_widget_get_sensitive(ok));
    ov_gui_set_sensitivity(ok, 0);
    EXPECT_TRUE(gtk_widget_get_sensitive(ok));
}

TEST(GuiHelpers, EntriesAndTextViewsRefuseEmojiInput)
{
    GtkWidget *entry = g_object_ref_sink(ov_gui_create_entry("Jar", TRUE));
    EXPECT_STREQ(gtk_entry_get_text(GTK_ENTRY(entry)), "Jar");
    EXPECT_TRUE(gtk_entry_get_activates_default(GTK_ENTRY(entry)));
    gboolean icon = TRUE;
    g_object_get(entry, "show-emoji-icon", &icon, nullptr);
    EXPECT_FALSE(icon);
    GtkInputHints hints = gtk_entry_get_input_hints(GTK_ENTRY(entry));
    EXPECT_TRUE(hints & GTK_INPUT_HINT_NO_EMOJI);
    EXPECT_FALSE(hints & GTK_INPUT_HINT_EMOJI);

    GtkWidget *view = g_object_ref_sink(ov_gui_create_text_view());
    gtk_text_view_set_input_hints(GTK_TEXT_VIEW(view), GTK_INPUT_HINT_EMOJI);
    ov_gui_disable_emojis_in_text_view(GTK_TEXT_VIEW(view));
    EXPECT_EQ(gtk_text_view_get_input_hints(GTK_TEXT_VIEW(view)), GTK_INPUT_HINT_NO_EMOJI);
    gtk_widget_destroy(entry);
    gtk_widget_destroy(view);
    g_object_unref(entry);
    g_object_unref(view);
}

TEST(GuiHelpers, AlignmentPlacesItsChildAndWrappersHoldTheWidget)
{
    TestWindow w;
    GtkWidget *button = gtk_button_new_with_label("Abort");
    GtkWidget *alignment = ov_gui_pack_widget_in_alignment(GTK_BOX(w.box), button, TRUE, 1.0f, 0.5f, 0.0f, 1.0f);
    EXPECT_EQ(ov_gui_alignment_get_child(alignment), button);
    EXPECT_EQ(gtk_widget_get_halign(button), GTK_ALIGN_END);
    EXPECT_EQ(gtk_widget_get_valign(button), GTK_ALIGN_FILL);
    EXPECT_TRUE(gtk_widget_get_visible(button));

    GtkWidget *inner = gtk_label_new("inside");
    GtkWidget *frame = ov_gui_pack_widget_in_frame(GTK_BOX(w.box), inner, FALSE, "Fields in this row");
    EXPECT_EQ(gtk_bin_get_child(GTK_BIN(frame)), inner);
    EXPECT_STREQ(gtk_frame_get_label(GTK_FRAME(frame)), "Fields in this row");
}

TEST(GuiHelpers, NotebookPagesAreAppendedOrReportTheFailure)
{
    TestWindow w;
    GtkWidget *notebook = ov_gui_pack_notebook(GTK_BOX(w.box), TRUE);
    GtkWidget *page = ov_gui_create_vbox(FALSE);
    EXPECT_EQ(ov_gui_notebook_append_page(GTK_NOTEBOOK(notebook), page, gtk_label_new("Basic data"), nullptr), 0);
    EXPECT_EQ(ov_gui_notebook_append_page(GTK_NOTEBOOK(notebook), ov_gui_create_vbox(FALSE), nullptr, nullptr), 1);
}

TEST(GuiHelpers, ShrinkingKeepsTheWidthUnlessAskedAndSparesMaximisedWindows)
{
    GtkWidget *window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_default_size(GTK_WINDOW(window), 300, 200);
    gtk_widget_show(window);
    ov::test::flush_events();
    ov_gui_resize_window_to_minimum_unless_maximized(GTK_WINDOW(window), FALSE);
    ov::test::wait_ms(50);
    int width = 0;
    int height = 0;
    gtk_window_get_size(GTK_WINDOW(window), &width, &height);
    EXPECT_EQ(width, 300);
    EXPECT_LT(height, 200);
    ov_gui_resize_window_to_minimum_unless_maximized(GTK_WINDOW(window), TRUE);
    ov::test::wait_ms(50);
    gtk_window_get_size(GTK_WINDOW(window), &width, &height);
    EXPECT_LT(width, 300);
    gtk_widget_destroy(window);
}

namespace {

struct MenuRecord {
    gpointer chosen = nullptr;
    int toggles = 0;
};

void remember_choice(GtkMenuItem *item, gpointer record)
{
    static_cast<MenuRecord *>(record)->chosen = ov_gui_menu_get_item_data(GTK_WIDGET(item));
}

void count_toggle(GtkCheckMenuItem *, gpointer record)
{
    static_cast<MenuRecord *>(record)->toggles++;
}

GtkWidget *build_menu(MenuRecord &record, int *first, int *second)
{
    GtkWidget *menu = gtk_menu_new();
    GtkMenuShell *shell = GTK_MENU_SHELL(menu);
    ov_gui_menu_append_item_with_activate_callback(shell, "Edit row header", first, 0, remember_choice, &record);
    ov_gui_menu_append_separator(shell);
    ov_gui_menu_append_latin1_item_with_activate_callback(shell, "Kr\xe4kelyr", second, 0, remember_choice,
                                                          &record);
    ov_gui_menu_append_item_with_activate_callback(shell, "Locked", first, 1, remember_choice, &record);
    ov_gui_menu_append_check_item_with_toggled_callback(shell, "Show codes", nullptr, 0, TRUE, count_toggle,
                                                        &record);
    return menu;
}

} // namespace

TEST(GuiMenus, ItemsCarryDataSensitivityAndLatin1Labels)
{
    MenuRecord record;
    int first = 1;
    int second = 2;
    GtkWidget *menu = g_object_ref_sink(build_menu(record, &first, &second));
    EXPECT_EQ(ov::test::menu_labels(GTK_MENU(menu)), "Edit row header|-|Kräkelyr|Locked|Show codes");
    GtkWidget *locked = ov::test::find_menu_item(GTK_MENU(menu), "Locked");
    EXPECT_FALSE(gtk_widget_get_sensitive(locked));
    EXPECT_EQ(ov_gui_menu_get_item_data(locked), &first);
    GtkWidget *check = ov::test::find_menu_item(GTK_MENU(menu), "Show codes");
    EXPECT_TRUE(gtk_check_menu_item_get_active(GTK_CHECK_MENU_ITEM(check)));
    EXPECT_EQ(record.toggles, 0); // setting the initial state is no toggle
    ov_gui_menu_set_item_label_accel(locked, GDK_KEY_s, ov_gui_menu_get_primary_accelerator_modifier());
    guint key = 0;
    GdkModifierType mods{};
    gtk_accel_label_get_accel(GTK_ACCEL_LABEL(gtk_bin_get_child(GTK_BIN(locked))), &key, &mods);
    EXPECT_EQ(key, guint(GDK_KEY_s));
    EXPECT_EQ(mods, GDK_CONTROL_MASK);
    gtk_widget_destroy(menu);
    g_object_unref(menu);
}

TEST(GuiMenus, RunReturnsAfterTheChosenItemsCallbackAtPointerAndAtAnchor)
{
    TestWindow w;
    GtkWidget *anchor = ov_gui_pack_button(GTK_BOX(w.box), "Language", FALSE);
    ov::test::wait_ms(30);
    for (GtkWidget *at : {static_cast<GtkWidget *>(nullptr), anchor}) {
        MenuRecord record;
        int first = 1;
        int second = 2;
        GtkWidget *menu = build_menu(record, &first, &second);
        ov::test::Script script;
        script.when_menu([] { ov::test::activate_menu_item("Kräkelyr"); });
        ov_gui_menu_run_and_destroy(GTK_MENU(menu), at);
        EXPECT_EQ(record.chosen, &second);
        EXPECT_TRUE(script.done());
        EXPECT_FALSE(ov::test::menu_shown());
    }
}

TEST(GuiMenus, MenuAtAnchorIsAsWideAsTheAnchorAndBelowIt)
{
    TestWindow w;
    GtkWidget *anchor = ov_gui_pack_button(GTK_BOX(w.box), "A rather wide language button", FALSE);
    ov::test::wait_ms(30);
    MenuRecord record;
    int first = 1;
    int second = 2;
    GtkWidget *menu = build_menu(record, &first, &second);
    int menu_width = 0;
    int menu_y = 0;
    int anchor_bottom = 0;
    ov::test::Script script;
    script.when_menu([&] {
        GtkMenu *open = ov::test::open_menu();
        menu_width = gtk_widget_get_allocated_width(GTK_WIDGET(open));
        gdk_window_get_origin(gtk_widget_get_window(gtk_widget_get_toplevel(GTK_WIDGET(open))), nullptr, &menu_y);
        int x = 0;
        gdk_window_get_origin(gtk_widget_get_window(anchor), &x, &anchor_bottom);
        GtkAllocation a;
        gtk_widget_get_allocation(anchor, &a);
        anchor_bottom += a.y + a.height;
        ov::test::dismiss_menu();
    });
    ov_gui_menu_run_and_destroy(GTK_MENU(menu), anchor);
    EXPECT_EQ(menu_width, gtk_widget_get_allocated_width(anchor));
    EXPECT_EQ(menu_y, anchor_bottom);
}

TEST(GuiMenus, EscapeLeavesTheResultEmpty)
{
    MenuRecord record;
    int first = 1;
    int second = 2;
    GtkWidget *menu = build_menu(record, &first, &second);
    ov::test::Script script;
    script.when_menu([] { ov::test::dismiss_menu(); });
    ov_gui_menu_run_and_destroy(GTK_MENU(menu), nullptr);
    EXPECT_EQ(record.chosen, nullptr);
    EXPECT_TRUE(script.done());
}

TEST(GuiStyles, StylesApplyTheirCssAndClasses)
{
    // Paddings would otherwise move to their new values in a transition.
    GtkSettings *settings = gtk_settings_get_default();
    gboolean animations = TRUE;
    g_object_get(settings, "gtk-enable-animations", &animations, nullptr);
    g_object_set(settings, "gtk-enable-animations", FALSE, nullptr);
    TestWindow w;
    GtkWidget *boxed = ov_gui_pack_label(GTK_BOX(w.box), "Jar", 0.0f, 0.5f);
    ov_gui_style_boxed_label(boxed);
    EXPECT_TRUE(gtk_style_context_has_class(gtk_widget_get_style_context(boxed), "orvane-boxed-label"));
    EXPECT_EQ(border_text(padding_of(boxed)), "4 8 4 8");

    GtkWidget *panel = ov_gui_pack_vbox(GTK_BOX(w.box), FALSE, FALSE);
    ov_gui_style_grouping_panel(panel);
    EXPECT_EQ(border_text(padding_of(panel)), "8 8 8 8");
    GtkWidget *header = ov_gui_pack_vbox(GTK_BOX(w.box), FALSE, FALSE);
    ov_gui_style_grouping_panel_header(header);
    EXPECT_TRUE(gtk_style_context_has_class(gtk_widget_get_style_context(header), "orvane-grouping-panel-header"));

    GtkWidget *zero = ov_gui_pack_button(GTK_BOX(w.box), "Zero", FALSE);
    ov_gui_style_zero_button_padding(zero);
    EXPECT_EQ(border_text(padding_of(zero)), "0 0 0 0");

    // Buttons with images: the plain button's top padding everywhere but on
    // the right, which keeps the right padding.
    const GtkBorder plain = padding_of(ov_gui_pack_button(GTK_BOX(w.box), "Dummy", FALSE));
    GtkWidget *with_label = ov_gui_create_icon_button("edit-delete-symbolic", "Delete");
    ov_gui_pack_widget(GTK_BOX(w.box), with_label, FALSE);
    ov_gui_style_normalize_button_padding(with_label);
    GtkWidget *image_only = ov_gui_create_icon_button("edit-delete-symbolic", nullptr);
    ov_gui_pack_widget(GTK_BOX(w.box), image_only, FALSE);
    ov_gui_style_normalize_button_padding(image_only);
    GtkStyleContext *labelled = gtk_widget_get_style_context(with_label);
    EXPECT_TRUE(gtk_style_context_has_class(labelled, "orvane-image-and-label-button"));
    EXPECT_TRUE(gtk_style_context_has_class(gtk_widget_get_style_context(image_only), "orvane-image-only-button"));
    const std::string t = std::to_string(plain.top);
    EXPECT_EQ(border_text(padding_of(with_label)), t + " " + std::to_string(plain.right) + " " + t + " " + t);
    EXPECT_EQ(border_text(padding_of(image_only)), t + " " + t + " " + t + " " + t);
    int spacing = 0;
    gtk_widget_style_get(with_label, "image-spacing", &spacing, nullptr);
    EXPECT_EQ(spacing, plain.right - 3);
    g_object_set(settings, "gtk-enable-animations", animations, nullptr);
}

TEST(GuiStyles, OneStyleServesManyWidgetsAndCleanUpAllowsANewStart)
{
    TestWindow w;
    for (int i = 0; i < 50; ++i)
        ov_gui_style_selected_menu_item(ov_gui_pack_label(GTK_BOX(w.box), "x", 0.0f, 0.0f));
    ov_gui_style_clean_up();
    GtkWidget *label = ov_gui_pack_label(GTK_BOX(w.box), "Jar", 0.0f, 0.5f);
    ov_gui_style_boxed_label(label);
    EXPECT_EQ(border_text(padding_of(label)), "4 8 4 8");
    ov_gui_style_clean_up();
    ov_gui_style_clean_up();
}

TEST(GuiStyles, BrokenCssIsReportedNotApplied)
{
    ov_error_clear();
    GtkCssProvider *provider = ov_css_create_provider("label { color: ");
    EXPECT_EQ(provider, nullptr);
    EXPECT_NE(std::string(ov_error_get()).find("Couldn't load the style"), std::string::npos);
    ov_error_clear();
}
