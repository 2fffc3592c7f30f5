// GUI construction helpers, menus, styles and the spacifying entry and text view on a real display.
#include "widgets/widget_test_util.h"

#include "core/error.h"
#include "gui/menu.h"
#include "gui/spacifying_entry.h"
#include "gui/spacifying_text_view.h"
#include "gui/style.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>
#include <utility>

using namespace ov::test;

// Beeps and CSS texts loaded into providers are counted: the test program's
// definitions take the place of the toolkit's.
static int beeps = 0;
static int css_loads = 0;
extern "C" void gdk_display_beep(GdkDisplay *)
{
    ++beeps;
}
extern "C" gboolean gtk_css_provider_load_from_data(GtkCssProvider *provider, const gchar *data,
                                                    gssize length, GError **error)
{
    using Load = gboolean (*)(GtkCssProvider *, const gchar *, gssize, GError **);
    static const auto real = reinterpret_cast<Load>(dlsym(RTLD_NEXT, "gtk_css_provider_load_from_data"));
    ++css_loads;
    return real(provider, data, length, error);
}

namespace
{

std::string padding_of(GtkWidget *widget) // "top right bottom left"
{
    GtkStyleContext *context = gtk_widget_get_style_context(widget);
    GtkBorder b{};
    gtk_style_context_get_padding(context, gtk_style_context_get_state(context), &b);
    return ov::GStr(g_strdup_printf("%d %d %d %d", b.top, b.right, b.bottom, b.left)).get();
}

gpointer chosen = nullptr;
int first = 1, second = 2;

GtkWidget *build_menu()
{
    GtkWidget *menu = gtk_menu_new();
    auto *shell = GTK_MENU_SHELL(menu);
    auto choose = [](GtkMenuItem *item, gpointer) { chosen = ov_gui_menu_get_item_data(GTK_WIDGET(item)); };
    ov_gui_menu_append_item_with_activate_callback(shell, "Edit row header", &first, 0, choose, nullptr);
    ov_gui_menu_append_separator(shell);
    ov_gui_menu_append_latin1_item_with_activate_callback(shell, "Kr\xe4kelyr", &second, 0, choose, nullptr);
    ov_gui_menu_append_item_with_activate_callback(shell, "Locked", &first, 1, choose, nullptr);
    ov_gui_menu_append_check_item_with_toggled_callback(
        shell, "Show codes", nullptr, 0, TRUE,
        [](GtkCheckMenuItem *, gpointer) { ADD_FAILURE() << "toggled"; }, nullptr);
    return menu;
}

// A window with a spacifying entry, a compact one and a text view.
struct EntryWindow : TestWindow {
    GtkWidget *entry = pack(ov_spacifying_entry_new(FALSE));
    GtkWidget *compact = pack(ov_spacifying_entry_new(TRUE));
    GtkWidget *view = pack(ov_spacifying_text_view_new(), TRUE);
    EntryWindow()
    {
        show();
        beeps = 0;
    }
    std::string text() const { return gtk_entry_get_text(GTK_ENTRY(entry)); }
    std::string view_text() const
    {
        GtkTextIter start, end;
        gtk_text_buffer_get_bounds(gtk_text_view_get_buffer(GTK_TEXT_VIEW(view)), &start, &end);
        return ov::GStr(gtk_text_iter_get_slice(&start, &end)).get();
    }
};

} // namespace

TEST(GuiHelpers, MainWindowTitleLabelsMarginsAndEmojiFollowTheHouseRules)
{
    auto title = [](const char *document, gboolean modified) {
        return std::string(
            ov::GStr(ov_gui_generate_main_window_title("Orvane Template Editor", document, modified)).get());
    };
    EXPECT_EQ(title("Jar", FALSE), "Jar - Orvane Template Editor 3.3.0");
    EXPECT_EQ(title("Jar", TRUE), "*Jar - Orvane Template Editor 3.3.0");
    EXPECT_EQ(title(nullptr, TRUE), "Orvane Template Editor 3.3.0");

    TestWindow w;
    EXPECT_STREQ(gtk_label_get_label(GTK_LABEL(ov_gui_pack_input_field_label(GTK_BOX(w.box), "A & B", TRUE))),
                 "A &amp; B: <span style=\"italic\" alpha=\"50%\">(Required)</span>");
    // Containers take the margin as border width, other widgets as margins.
    GtkWidget *tight = ov_gui_pack_hbox(GTK_BOX(w.box), FALSE, FALSE),
              *view = w.pack(ov_gui_create_text_view());
    ov_gui_set_default_surrounding_margin(tight);
    ov_gui_set_default_surrounding_margin(view);
    EXPECT_EQ(gtk_container_get_border_width(GTK_CONTAINER(tight)), 8u);
    EXPECT_EQ(gtk_container_get_border_width(GTK_CONTAINER(view)), 0u);
    EXPECT_EQ(gtk_widget_get_margin_start(view), 8);

    GtkWidget *entry = w.pack(ov_gui_create_entry("Jar", TRUE));
    EXPECT_EQ(gtk_entry_get_input_hints(GTK_ENTRY(entry)) & (GTK_INPUT_HINT_NO_EMOJI | GTK_INPUT_HINT_EMOJI),
              GTK_INPUT_HINT_NO_EMOJI);
    gtk_text_view_set_input_hints(GTK_TEXT_VIEW(view), GTK_INPUT_HINT_EMOJI);
    ov_gui_disable_emojis_in_text_view(GTK_TEXT_VIEW(view));
    EXPECT_EQ(gtk_text_view_get_input_hints(GTK_TEXT_VIEW(view)), GTK_INPUT_HINT_NO_EMOJI);
}

TEST(GuiMenus, ItemsCarryDataAndRunReturnsAfterTheMenuClosed)
{
    auto *menu = GTK_MENU(g_object_ref_sink(build_menu()));
    EXPECT_EQ(menu_labels(menu), "Edit row header|-|Kräkelyr|Locked|Show codes");
    GtkWidget *locked = find_menu_item(menu, "Locked");
    EXPECT_FALSE(gtk_widget_get_sensitive(locked));
    EXPECT_EQ(ov_gui_menu_get_item_data(locked), &first);
    EXPECT_TRUE(gtk_check_menu_item_get_active(GTK_CHECK_MENU_ITEM(find_menu_item(menu, "Show codes"))));
    ov_gui_menu_set_item_label_accel(locked, GDK_KEY_s, ov_gui_menu_get_primary_accelerator_modifier());
    guint key = 0;
    GdkModifierType mods{};
    gtk_accel_label_get_accel(GTK_ACCEL_LABEL(gtk_bin_get_child(GTK_BIN(locked))), &key, &mods);
    EXPECT_TRUE(key == GDK_KEY_s && mods == GDK_CONTROL_MASK) << key << " " << mods;
    gtk_widget_destroy(GTK_WIDGET(menu));
    g_object_unref(menu);

    // At the pointer, or below the anchor and as wide as it; chosen or dismissed.
    TestWindow w;
    GtkWidget *anchor = ov_gui_pack_button(GTK_BOX(w.box), "A rather wide language button", FALSE);
    w.show();
    GtkAllocation a;
    gtk_widget_get_allocation(anchor, &a);
    for (int run = 0; run < 4; ++run) {
        const bool at_anchor = run & 1, escape = run & 2;
        chosen = nullptr;
        int menu_width = 0, menu_y = 0, anchor_y = 0;
        Script script;
        script.when_menu([&] {
            GtkWidget *open = GTK_WIDGET(open_menu());
            menu_width = gtk_widget_get_allocated_width(open);
            gdk_window_get_origin(gtk_widget_get_window(gtk_widget_get_toplevel(open)), nullptr, &menu_y);
            gdk_window_get_origin(gtk_widget_get_window(anchor), nullptr, &anchor_y);
            escape ? dismiss_menu() : activate_menu_item("Kräkelyr");
        });
        ov_gui_menu_run_and_destroy(GTK_MENU(build_menu()), at_anchor ? anchor : nullptr);
        EXPECT_TRUE(script.done() && !menu_shown()) << run;
        EXPECT_EQ(chosen, escape ? nullptr : &second) << run;
        EXPECT_TRUE(!at_anchor || (menu_width == a.width && menu_y == anchor_y + a.y + a.height)) << run;
    }
}

TEST(GuiStyles, StylesAreMadeOnceAndImageButtonsTakeThePlainButtonsPaddingInTheirOrder)
{
    // Paddings would otherwise move to their new values in a transition.
    GtkSettings *settings = gtk_settings_get_default();
    gboolean animations = TRUE;
    g_object_get(settings, "gtk-enable-animations", &animations, nullptr);
    g_object_set(settings, "gtk-enable-animations", FALSE, nullptr);
    TestWindow w;
    // Each style's provider is made once, and again after a clean-up.
    ov_gui_style_clean_up();
    const int before = css_loads;
    for (int round = 1; round <= 2; ++round) {
        for (int i = 0; i < 3; ++i)
            ov_gui_style_selected_menu_item(ov_gui_pack_label(GTK_BOX(w.box), "x", 0.0f, 0.0f));
        EXPECT_EQ(css_loads - before, round);
        ov_gui_style_clean_up();
    }

    GtkWidget *plain = ov_gui_pack_button(GTK_BOX(w.box), "Dummy", FALSE);
    w.show();
    std::string t, r;
    std::istringstream(padding_of(plain)) >> t >> r;
    // Image buttons take the plain button's top padding, beside a label its right one too.
    const struct {
        GtkWidget *widget;
        void (*style)(GtkWidget *);
        std::string padding;
    } cases[] = {{gtk_label_new("Jar"), ov_gui_style_boxed_label, "4 8 4 8"},
                 {gtk_button_new_with_label("Zero"), ov_gui_style_zero_button_padding, "0 0 0 0"},
                 {ov_gui_create_icon_button("edit-delete-symbolic", "Delete"),
                  ov_gui_style_normalize_button_padding, t + " " + r + " " + t + " " + t},
                 {ov_gui_create_icon_button("edit-delete-symbolic", nullptr),
                  ov_gui_style_normalize_button_padding, t + " " + t + " " + t + " " + t}};
    for (const auto &c : cases)
        c.style(w.pack(c.widget));
    wait_ms(30); // styles are recomputed with the next frame
    for (const auto &c : cases)
        EXPECT_EQ(padding_of(c.widget), c.padding);
    g_object_set(settings, "gtk-enable-animations", animations, nullptr);

    ov_error_clear();
    EXPECT_EQ(ov_css_create_provider("label { color: "), nullptr);
    EXPECT_TRUE(contains(ov_error_get(), "Couldn't load the style"));
    ov_error_clear();
}

TEST(SpacifyingFilter, WhiteSpaceBecomesSpacesAndNonLatin1CharactersGo)
{
    const struct {
        const char *input;
        gboolean keep_line_feeds;
        const char *fixed; // null: cannot be fixed
    } cases[] = {{"plain \xc3\xa9 \xc3\xbf", FALSE, "plain \xc3\xa9 \xc3\xbf"},
                 {"", FALSE, ""},
                 {"a\tb\r\nc", FALSE, "a b  c"},
                 {"a\r\nb", TRUE, "a \nb"},
                 {"bad\xff", FALSE, nullptr},
                 {"line\nfeed", TRUE, "line\nfeed"},
                 {"bad\xc3", TRUE, nullptr},
                 {"5 \xe2\x82\xac x\xf0\x9f\x98\x80y", FALSE, "5  xy"},
                 {"no\xc2\xa0thin\xe2\x80\x89space", FALSE, "no thin space"}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.input);
        ov::GStr fixed(ov_spacifying_text_fix(c.input, -1, c.keep_line_feeds));
        EXPECT_EQ(fixed ? std::string(fixed.get()) : "(null)", c.fixed ? c.fixed : "(null)");
        EXPECT_EQ(bool(ov_spacifying_text_needs_fixing(c.input, -1, c.keep_line_feeds)),
                  c.fixed == nullptr || strcmp(c.fixed, c.input) != 0);
    }
    // The length bounds the text; a NUL ends it early.
    EXPECT_FALSE(ov_spacifying_text_needs_fixing("ab\tc", 2, FALSE));
    EXPECT_FALSE(ov_spacifying_text_needs_fixing("ab\0\t", 4, FALSE));
    EXPECT_STREQ(ov::GStr(ov_spacifying_text_fix("a\tb\tc", 3, FALSE)).get(), "a b");
}

TEST(SpacifyingEntry, TypedAndPastedTextIsFilteredWithABeepAndLatin1GoesInAndOutAlsoInTheTextView)
{
    EntryWindow w;
    type_text(w.entry, "Kr\xc3\xa4k y");
    EXPECT_EQ(beeps, 0);
    paste_text(w.entry, "\tb\xe2\x82\xacz");
    EXPECT_EQ(w.text(), "Kr\xc3\xa4k y bz");
    EXPECT_EQ(beeps, 1);
    // Invalid UTF-8 cannot be fixed: nothing goes in, the beep still sounds.
    int position = 0;
    gtk_editable_insert_text(GTK_EDITABLE(w.entry), "\xff\xfe", 2, &position);
    EXPECT_EQ(w.text(), "Kr\xc3\xa4k y bz");
    EXPECT_EQ(beeps, 2);

    // Latin-1 in and out, stripped, with runs of white space kept or compacted.
    for (GtkWidget *entry : {w.entry, w.compact})
        ov_spacifying_entry_set_text(OV_SPACIFYING_ENTRY(entry), " \t\xc5ke \t Jar\n");
    EXPECT_EQ(w.text(), "\xc3\x85ke   Jar");
    EXPECT_STREQ(gtk_entry_get_text(GTK_ENTRY(w.compact)), "\xc3\x85ke Jar");
    gtk_entry_set_text(GTK_ENTRY(w.compact), "  two   words  ");
    EXPECT_STREQ(ov::GStr(ov_spacifying_entry_get_text(OV_SPACIFYING_ENTRY(w.compact))).get(), "two words");
    EXPECT_STREQ(ov::GStr(ov_spacifying_entry_get_text(OV_SPACIFYING_ENTRY(w.entry))).get(), "\xc5ke   Jar");

    // The text view keeps pasted line feeds; tab keys move the focus.
    paste_text(w.view, "first\nsecond\tline");
    EXPECT_EQ(beeps, 3);
    paste_text(w.view, "\nthird");
    EXPECT_EQ(beeps, 3);
    // A dropped or committed text keeps its carriage return, which becomes a space.
    gtk_text_buffer_insert_interactive_at_cursor(gtk_text_view_get_buffer(GTK_TEXT_VIEW(w.view)),
                                                 "\r\nfourth", -1, TRUE);
    EXPECT_EQ(w.view_text(), "first\nsecond line\nthird \nfourth");
    EXPECT_EQ(beeps, 4);

    ov_spacifying_text_view_set_text(OV_SPACIFYING_TEXT_VIEW(w.view), "\n  Cr\xe4\tck\nlines \n");
    EXPECT_EQ(w.view_text(), "Cr\xc3\xa4 ck\nlines");
    EXPECT_STREQ(ov::GStr(ov_spacifying_text_view_get_text(OV_SPACIFYING_TEXT_VIEW(w.view))).get(),
                 "Cr\xe4 ck\nlines");
    for (auto [key, mods] :
         {std::pair(GDK_KEY_Tab, GdkModifierType(0)), {GDK_KEY_ISO_Left_Tab, GDK_SHIFT_MASK}}) {
        gtk_widget_grab_focus(w.view);
        press_key(w.view, key, mods);
        EXPECT_FALSE(gtk_widget_is_focus(w.view));
    }
    EXPECT_EQ(w.view_text(), "Cr\xc3\xa4 ck\nlines");
}
