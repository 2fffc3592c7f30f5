// The spacifying entry and text view: what typing, pasting and the Latin-1
// accessors make of white space and characters outside Latin-1.
#include "support/gui_driver.h"
#include "support/test_support.h"

#include "core/raii.h"
#include "widgets/spacifying_entry.h"
#include "widgets/spacifying_text_view.h"

#include <gtest/gtest.h>

#include <string>

// Counts the beeps instead of sounding them: the program's own definition
// takes the place of the toolkit's.
static int beeps = 0;
extern "C" void gdk_display_beep(GdkDisplay *)
{
    ++beeps;
}

namespace {

struct FilterCase {
    const char *input;
    gboolean keep_line_feeds;
    bool needs_fixing;
    const char *fixed; // null: cannot be fixed
};

// A window with a spacifying entry, a text view and a button behind them.
struct EntryWindow {
    GtkWidget *window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    GtkWidget *box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    GtkWidget *button = gtk_button_new_with_label("Before");
    GtkWidget *entry;
    GtkWidget *view = ov_spacifying_text_view_new();
    explicit EntryWindow(gboolean compact = FALSE) : entry(ov_spacifying_entry_new(compact))
    {
        gtk_container_add(GTK_CONTAINER(window), box);
        gtk_box_pack_start(GTK_BOX(box), button, FALSE, FALSE, 0);
        gtk_box_pack_start(GTK_BOX(box), entry, FALSE, FALSE, 0);
        gtk_box_pack_start(GTK_BOX(box), view, TRUE, TRUE, 0);
        gtk_widget_show_all(window);
        ov::test::show_and_wait(window);
        beeps = 0;
    }
    ~EntryWindow()
    {
        gtk_widget_destroy(window);
        ov::test::flush_events();
    }
    std::string view_text() const
    {
        GtkTextBuffer *buffer = gtk_text_view_get_buffer(GTK_TEXT_VIEW(view));
        GtkTextIter start, end;
        gtk_text_buffer_get_bounds(buffer, &start, &end);
        ov::GStr text(gtk_text_buffer_get_text(buffer, &start, &end, TRUE));
        return text.get();
    }
};

std::string latin1_of(char *text)
{
    ov::GStr owned(text);
    return owned ? std::string(owned.get()) : std::string("(null)");
}

} // namespace

TEST(SpacifyingFilter, WhiteSpaceBecomesSpacesAndNonLatin1CharactersGo)
{
    const FilterCase cases[] = {
        {"plain words", FALSE, false, "plain words"},
        {"", FALSE, false, ""},
        {"caf\xc3\xa9 \xc3\xbf", FALSE, false, "caf\xc3\xa9 \xc3\xbf"},  // Latin-1 letters pass
        {"a\tb", FALSE, true, "a b"},
        {"a\r\nb", FALSE, true, "a  b"},
        {"a\r\nb", TRUE, true, "a \nb"},
        {"line\nfeed", TRUE, false, "line\nfeed"},
        {"5 \xe2\x82\xac", FALSE, true, "5 "},                      // euro sign
        {"x\xf0\x9f\x98\x80y", FALSE, true, "xy"},                  // emoji
        {"no\xc2\xa0" "break", FALSE, true, "no break"},            // no-break space
        {"thin\xe2\x80\x89space", FALSE, true, "thin space"},       // multi-byte space shrinks
        {"bad\xff", FALSE, true, nullptr},
        {"bad\xc3", TRUE, true, nullptr},
    };
    for (const FilterCase &c : cases) {
        SCOPED_TRACE(c.input);
        EXPECT_EQ(bool(ov_spacifying_text_needs_fixing(c.input, -1, c.keep_line_feeds)), c.needs_fixing);
        ov::GStr fixed(ov_spacifying_text_fix(c.input, -1, c.keep_line_feeds));
        if (c.fixed == nullptr)
            EXPECT_EQ(fixed, nullptr);
        else
            EXPECT_STREQ(fixed.get(), c.fixed);
    }
    // The length bounds the text; a NUL ends it early.
    EXPECT_FALSE(ov_spacifying_text_needs_fixing("ab\tc", 2, FALSE));
    EXPECT_FALSE(ov_spacifying_text_needs_fixing("ab\0\t", 4, FALSE));
    ov::GStr cut(ov_spacifying_text_fix("a\tb\tc", 3, FALSE));
    EXPECT_STREQ(cut.get(), "a b");
}

TEST(SpacifyingEntry, PastingTabsAndEuroSignsInsertsTheFixedTextAndBeeps)
{
    EntryWindow w;
    ov::test::paste_text(w.entry, "Jar\twith \xe2\x82\xac" "5");
    EXPECT_STREQ(gtk_entry_get_text(GTK_ENTRY(w.entry)), "Jar with 5");
    EXPECT_EQ(beeps, 1);

    ov::test::paste_text(w.entry, "\xf0\x9f\x98\x80");
    EXPECT_STREQ(gtk_entry_get_text(GTK_ENTRY(w.entry)), "Jar with 5");
    EXPECT_EQ(beeps, 2);

    // Invalid UTF-8 cannot be fixed: nothing goes in, the beep still sounds.
    int position = 0;
    gtk_editable_insert_text(GTK_EDITABLE(w.entry), "\xff\xfe", 2, &position);
    EXPECT_STREQ(gtk_entry_get_text(GTK_ENTRY(w.entry)), "Jar with 5");
    EXPECT_EQ(beeps, 3);
}

TEST(SpacifyingEntry, TypingPlainLettersNeitherBeepsNorChangesThem)
{
    EntryWindow w;
    ov::test::type_text(w.entry, "Kr\xc3\xa4k y");
    EXPECT_STREQ(gtk_entry_get_text(GTK_ENTRY(w.entry)), "Kr\xc3\xa4k y");
    EXPECT_EQ(beeps, 0);
}

TEST(SpacifyingEntry, Latin1InAndOutStripsAndSpacifiesByCompactness)
{
    struct Case {
        gboolean compact;
        const char *shown; // UTF-8 put into the entry as the user would
        const char *latin1_out;
    };
    const Case cases[] = {
        {FALSE, "  two   words  ", "two   words"},
        {TRUE, "  two   words  ", "two words"},
        {FALSE, "caf\xc3\xa9", "caf\xe9"},
        {TRUE, "", ""},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.shown);
        EntryWindow w(c.compact);
        gtk_entry_set_text(GTK_ENTRY(w.entry), c.shown);
        EXPECT_EQ(latin1_of(ov_spacifying_entry_get_text(OV_SPACIFYING_ENTRY(w.entry))), c.latin1_out);
    }

    EntryWindow plain(FALSE);
    ov_spacifying_entry_set_text(OV_SPACIFYING_ENTRY(plain.entry), " \t\xc5" "ke \t Jar\n");
    EXPECT_STREQ(gtk_entry_get_text(GTK_ENTRY(plain.entry)), "\xc3\x85ke   Jar");
    EntryWindow compact(TRUE);
    ov_spacifying_entry_set_text(OV_SPACIFYING_ENTRY(compact.entry), " \t\xc5" "ke \t Jar\n");
    EXPECT_STREQ(gtk_entry_get_text(GTK_ENTRY(compact.entry)), "\xc3\x85ke Jar");
    EXPECT_EQ(latin1_of(ov_spacifying_entry_get_text(OV_SPACIFYING_ENTRY(compact.entry))), "\xc5ke Jar");
}

TEST(SpacifyingTextView, PastedLinesKeepTheirLineFeedButLoseCarriageReturns)
{
    EntryWindow w;
    ov::test::paste_text(w.view, "first\nsecond\tline");
    EXPECT_EQ(w.view_text(), "first\nsecond line");
    EXPECT_EQ(beeps, 1);
    ov::test::paste_text(w.view, "\nthird");
    EXPECT_EQ(w.view_text(), "first\nsecond line\nthird");
    EXPECT_EQ(beeps, 1);
    // The clipboard turns CR LF into LF; a dropped or committed text keeps
    // the carriage return, which becomes a space.
    GtkTextBuffer *buffer = gtk_text_view_get_buffer(GTK_TEXT_VIEW(w.view));
    gtk_text_buffer_insert_interactive_at_cursor(buffer, "\r\nfourth", -1, TRUE);
    EXPECT_EQ(w.view_text(), "first\nsecond line\nthird \nfourth");
    EXPECT_EQ(beeps, 2);
}

TEST(SpacifyingTextView, Latin1InAndOutStripsAndDetabifies)
{
    EntryWindow w;
    ov_spacifying_text_view_set_text(OV_SPACIFYING_TEXT_VIEW(w.view), "\n  Cr\xe4\tck\nlines \n");
    EXPECT_EQ(w.view_text(), "Cr\xc3\xa4 ck\nlines");
    EXPECT_EQ(latin1_of(ov_spacifying_text_view_get_text(OV_SPACIFYING_TEXT_VIEW(w.view))), "Cr\xe4 ck\nlines");
}

TEST(SpacifyingTextView, TabKeysMoveTheFocusInsteadOfInserting)
{
    EntryWindow w;
    gtk_widget_grab_focus(w.view);
    ov::test::press_key(w.view, GDK_KEY_ISO_Left_Tab, GDK_SHIFT_MASK);
    EXPECT_TRUE(gtk_widget_is_focus(w.entry));
    EXPECT_EQ(w.view_text(), "");

    // (The keypad Tab is not on the test display's keyboard map.)
    gtk_widget_grab_focus(w.entry);
    ov::test::press_key(w.entry, GDK_KEY_Tab);
    ASSERT_TRUE(gtk_widget_is_focus(w.view));
    ov::test::press_key(w.view, GDK_KEY_Tab);
    EXPECT_FALSE(gtk_widget_is_focus(w.view));
    EXPECT_EQ(w.view_text(), "");
    // Other keys still type.
    ov::test::type_text(w.view, "ok");
    EXPECT_EQ(w.view_text(), "ok");
}
