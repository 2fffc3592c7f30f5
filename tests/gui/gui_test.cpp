// Menus and the spacifying entry and text view on a real display.
#include "widgets/widget_test_util.h"

#include "gui/menu.h"
#include "gui/spacifying_entry.h"
#include "gui/spacifying_text_view.h"

#include <gtest/gtest.h>

using namespace ov::test;

// Beeps are counted: the test program's definition takes the place of the toolkit's.
static int beeps = 0;
extern "C" void gdk_display_beep(GdkDisplay *)
{
    ++beeps;
}

namespace
{

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

} // namespace

TEST(GuiMenus, ItemsCarryDataAndRunReturnsAfterTheMenuClosed)
{
    // At the pointer, or below the anchor and as wide as it; chosen or dismissed.
    TestWindow w;
    GtkWidget *anchor = ov_gui_pack_button(GTK_BOX(w.box), "A rather wide language button", FALSE);
    w.show();
    GtkAllocation a;
    gtk_widget_get_allocation(anchor, &a);
    for (int run : {0, 3}) {
        const bool at_anchor = run & 1, escape = run & 2;
        chosen = nullptr;
        int menu_width = 0, menu_y = 0, anchor_y = 0;
        Script script;
        script.when_menu([&] {
            GtkWidget *open = GTK_WIDGET(open_menu());
            EXPECT_EQ(menu_labels(GTK_MENU(open), true), "Edit row header|-|Kräkelyr|Locked(off)|Show codes");
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

TEST(SpacifyingEntry, TypedAndPastedTextIsFilteredWithABeepAndLatin1GoesInAndOutAlsoInTheTextView)
{
    TestWindow w;
    GtkWidget *entry = w.pack(ov_spacifying_entry_new(FALSE)),
              *compact = w.pack(ov_spacifying_entry_new(TRUE)),
              *view = w.pack(ov_spacifying_text_view_new(), TRUE);
    w.show();
    beeps = 0;
    auto text = [&] { return std::string(gtk_entry_get_text(GTK_ENTRY(entry))); };
    auto view_text = [&] {
        GtkTextIter start, end;
        gtk_text_buffer_get_bounds(gtk_text_view_get_buffer(GTK_TEXT_VIEW(view)), &start, &end);
        return std::string(ov::GStr(gtk_text_iter_get_slice(&start, &end)).get());
    };
    type_text(entry, "Kr\xc3\xa4k y");
    EXPECT_EQ(beeps, 0);
    paste_text(entry, "\tb\xe2\x82\xacz");
    EXPECT_EQ(text(), "Kr\xc3\xa4k y bz");
    EXPECT_EQ(beeps, 1);
    // Invalid UTF-8 cannot be fixed: nothing goes in, the beep still sounds.
    int position = 0;
    gtk_editable_insert_text(GTK_EDITABLE(entry), "\xff\xfe", 2, &position);
    EXPECT_EQ(text(), "Kr\xc3\xa4k y bz");
    EXPECT_EQ(beeps, 2);

    // Latin-1 in and out, stripped, with runs of white space kept or compacted.
    for (GtkWidget *e : {entry, compact})
        ov_spacifying_entry_set_text(OV_SPACIFYING_ENTRY(e), " \t\xc5ke \t Jar\n");
    EXPECT_EQ(text(), "\xc3\x85ke   Jar");
    EXPECT_STREQ(gtk_entry_get_text(GTK_ENTRY(compact)), "\xc3\x85ke Jar");
    EXPECT_STREQ(ov::GStr(ov_spacifying_entry_get_text(OV_SPACIFYING_ENTRY(entry))).get(), "\xc5ke   Jar");

    // The text view keeps pasted line feeds; a committed carriage return becomes a space.
    paste_text(view, "first\nsecond\tline");
    EXPECT_EQ(beeps, 3);
    gtk_text_buffer_insert_interactive_at_cursor(gtk_text_view_get_buffer(GTK_TEXT_VIEW(view)), "\r\nthird",
                                                 -1, TRUE);
    EXPECT_EQ(view_text(), "first\nsecond line \nthird");

    ov_spacifying_text_view_set_text(OV_SPACIFYING_TEXT_VIEW(view), "\n  Cr\xe4\tck\nlines \n");
    EXPECT_EQ(view_text(), "Cr\xc3\xa4 ck\nlines");
    EXPECT_STREQ(ov::GStr(ov_spacifying_text_view_get_text(OV_SPACIFYING_TEXT_VIEW(view))).get(),
                 "Cr\xe4 ck\nlines");
    gtk_widget_grab_focus(view); // Tab moves the focus
    press_key(view, GDK_KEY_Tab);
    EXPECT_FALSE(gtk_widget_is_focus(view));
    EXPECT_EQ(view_text(), "Cr\xc3\xa4 ck\nlines");
}
