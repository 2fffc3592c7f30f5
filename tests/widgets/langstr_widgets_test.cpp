// Multilingual labels, displays and status symbols, and spell checking.
#include "support/gui_driver.h"
#include "support/test_support.h"

#include "core/raii.h"
#include "lang/active_locale.h"
#include "lang/event_bus.h"
#include "widgets/gfx_text.h"
#include "widgets/langstr_display.h"
#include "widgets/langstr_label.h"
#include "widgets/langstr_status_icon.h"
#include "widgets/langstr_status_icon_symbol.h"
#include "widgets/spell_check.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>

namespace {

using Translations = std::initializer_list<std::pair<const char *, const char *>>;

langstr *make_ls(Translations translations)
{
    langstr *ls = nullptr;
    for (const auto &[tag, text] : translations)
        ov_langstr_set_translation(&ls, ov_locale_get_by_tag(tag), text);
    return ls;
}

struct LangstrPtr {
    langstr *ls;
    explicit LangstrPtr(Translations t) : ls(make_ls(t)) {}
    ~LangstrPtr() { ov_langstr_free(ls); }
    operator const langstr *() const { return ls; }
};

void set_active(const char *tag)
{
    ov_ovinternal_set_active_locale(ov_locale_get_by_tag(tag));
}

// Every test starts with UK English active and a shown window holding a box.
class LangstrWidgets : public ::testing::Test {
protected:
    void SetUp() override
    {
        saved_ = ov_ovinternal_get_active_locale();
        set_active("en-uk");
        window_ = gtk_window_new(GTK_WINDOW_TOPLEVEL);
        box_ = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
        gtk_container_add(GTK_CONTAINER(window_), box_);
        gtk_widget_show(box_);
    }
    void TearDown() override
    {
        gtk_widget_destroy(window_);
        ov::test::flush_events();
        if (saved_ != nullptr)
            ov_ovinternal_set_active_locale(saved_);
    }
    GtkWidget *pack(GtkWidget *widget)
    {
        gtk_box_pack_start(GTK_BOX(box_), widget, FALSE, FALSE, 0);
        gtk_widget_show(widget);
        return widget;
    }
    void show() { ov::test::show_and_wait(window_); }

    const OvLocale *saved_ = nullptr;
    GtkWidget *window_ = nullptr;
    GtkWidget *box_ = nullptr;
};

// The colour of one pixel as "r g b a" (0-255, premultiplied as stored).
std::string pixel(cairo_surface_t *surface, int x, int y)
{
    cairo_surface_flush(surface);
    const unsigned char *data = cairo_image_surface_get_data(surface);
    guint32 value = *reinterpret_cast<const guint32 *>(data + y * cairo_image_surface_get_stride(surface) + x * 4);
    return std::to_string((value >> 16) & 0xff) + " " + std::to_string((value >> 8) & 0xff) + " " +
           std::to_string(value & 0xff) + " " + std::to_string(value >> 24);
}

std::string draw_symbol(const langstr *ls, double opacity, std::initializer_list<std::pair<int, int>> points)
{
    cairo_surface_t *surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 20, 12);
    cairo_t *cr = cairo_create(surface);
    ov_gfx_text_draw_langstr_status_icon(cr, 3, 2, ls, opacity);
    cairo_destroy(cr);
    std::string result;
    for (auto [x, y] : points)
        result += (result.empty() ? "" : "|") + pixel(surface, x, y);
    cairo_surface_destroy(surface);
    return result;
}

constexpr const char *yellow = "238 238 0 255";
constexpr const char *grey = "221 221 221 255";
constexpr const char *clear = "0 0 0 0";

TEST_F(LangstrWidgets, StatusSymbolShowsCountAndActiveLanguage)
{
    LangstrPtr none({});
    LangstrPtr one_swedish({{"sv", "Hus"}});
    LangstrPtr one_english({{"en-us", "House"}});
    LangstrPtr two({{"sv", "Hus"}, {"en-uk", "House"}});
    // Frame corners (3,2) (15,9), inside the first square (5,4), inside the
    // second (10,4), the gap between them (9,4), outside (2,2) and (16,9).
    auto points = {std::pair(3, 2), std::pair(15, 9), std::pair(5, 4), std::pair(10, 4), std::pair(9, 4),
                   std::pair(2, 2), std::pair(16, 9)};
    struct Case {
        const langstr *ls;
        std::string expected;
    } cases[] = {
        {none, std::string(yellow) + "|" + yellow + "|" + clear + "|" + clear + "|" + clear + "|" + clear + "|" + clear},
        {one_swedish, std::string(yellow) + "|" + yellow + "|" + yellow + "|" + clear + "|" + clear + "|" + clear +
                          "|" + clear},
        // Another English counts as the active language.
        {one_english, std::string(grey) + "|" + grey + "|" + grey + "|" + clear + "|" + clear + "|" + clear + "|" +
                          clear},
        {two, std::string(grey) + "|" + grey + "|" + grey + "|" + grey + "|" + clear + "|" + clear + "|" + clear},
    };
    for (const Case &c : cases)
        EXPECT_EQ(draw_symbol(c.ls, 1.0, points), c.expected);
    // The opacity scales the colour.
    EXPECT_EQ(draw_symbol(two, 0.5, {std::pair(3, 2)}), "110 110 110 128");
}

TEST_F(LangstrWidgets, LabelsFollowTheActiveLocaleTogether)
{
    LangstrPtr colour({{"en-uk", "Colour"}, {"sv", "F\xe4rg"}, {"de-de", "Farbe"}});
    LangstrPtr house({{"sv", "Hus"}, {"en-us", "House"}});
    GtkWidget *a = pack(ov_langstr_label_new(colour));
    GtkWidget *b = pack(ov_langstr_label_new(house));
    GtkWidget *empty = pack(ov_langstr_label_new(nullptr));
    auto texts = [&] {
        return std::string(gtk_label_get_text(GTK_LABEL(a))) + "|" + gtk_label_get_text(GTK_LABEL(b)) + "|" +
               gtk_label_get_text(GTK_LABEL(empty));
    };
    EXPECT_EQ(texts(), "Colour|House|");
    set_active("sv");
    EXPECT_EQ(texts(), "F\xc3\xa4rg|Hus|");
    set_active("de-de");
    EXPECT_EQ(texts(), "Farbe|House|");

    // New content is cloned and shown at once.
    LangstrPtr tree({{"de-de", "Baum"}});
    ov_langstr_label_set_content(OV_LANGSTR_LABEL(b), tree);
    ov_langstr_free(tree.ls);
    tree.ls = nullptr;
    EXPECT_EQ(texts(), "Farbe|Baum|");
    EXPECT_STREQ(ov_langstr_get_text(ov_langstr_label_get_content(OV_LANGSTR_LABEL(b)), nullptr), "Baum");
}

TEST_F(LangstrWidgets, DestroyedWidgetsLeaveTheEventBus)
{
    LangstrPtr colour({{"en-uk", "Colour"}, {"sv", "F\xe4rg"}});
    GtkWidget *label = pack(ov_langstr_label_new(colour));
    GtkWidget *symbol = pack(ov_langstr_status_icon_symbol_new(colour));
    GtkWidget *display = pack(ov_langstr_display_new(1, 200, 50));
    int finalized = 0;
    for (GtkWidget *w : {label, symbol, display})
        g_object_weak_ref(G_OBJECT(w), [](gpointer count, GObject *) { ++*static_cast<int *>(count); }, &finalized);
    gtk_widget_destroy(label);
    gtk_widget_destroy(symbol);
    gtk_widget_destroy(display);
    ov::test::flush_events();
    EXPECT_EQ(finalized, 3);
    // A handler left behind would touch freed widgets here.
    set_active("sv");
    set_active("en-uk");
}

std::string buffer_text(GtkTextView *view)
{
    GtkTextBuffer *buffer = gtk_text_view_get_buffer(view);
    GtkTextIter start, end;
    gtk_text_buffer_get_bounds(buffer, &start, &end);
    ov::GStr text(gtk_text_buffer_get_slice(buffer, &start, &end, TRUE));
    return text.get();
}

// The buffer as runs of equally tagged text: "[header]Danish:\n" etc.
std::string tagged_runs(GtkTextView *view)
{
    GtkTextBuffer *buffer = gtk_text_view_get_buffer(view);
    GtkTextIter it;
    gtk_text_buffer_get_start_iter(buffer, &it);
    std::string result;
    std::string current_tags = "?";
    while (!gtk_text_iter_is_end(&it)) {
        std::string tags;
        GSList *list = gtk_text_iter_get_tags(&it);
        for (GSList *l = list; l != nullptr; l = l->next) {
            char *name = nullptr;
            g_object_get(l->data, "name", &name, nullptr);
            tags += std::string(tags.empty() ? "" : ",") + name;
            g_free(name);
        }
        g_slist_free(list);
        if (tags != current_tags) {
            result += "[" + tags + "]";
            current_tags = tags;
        }
        gunichar c = gtk_text_iter_get_char(&it);
        char utf8[8] = {};
        g_unichar_to_utf8(c, utf8);
        result += c == 0xFFFC ? "<child>" : utf8;
        gtk_text_iter_forward_char(&it);
    }
    return result;
}

TEST_F(LangstrWidgets, DisplayListsEveryTranslationInModeZero)
{
    GtkWidget *display = pack(ov_langstr_display_new(0, 500, 140));
    GtkTextView *view = ov_langstr_display_get_text_view(OV_LANGSTR_DISPLAY(display));
    int width = 0, height = 0;
    gtk_widget_get_size_request(display, &width, &height);
    EXPECT_EQ(width, 500);
    EXPECT_EQ(height, 140);
    EXPECT_FALSE(gtk_text_view_get_editable(view));

    EXPECT_EQ(tagged_runs(view), "[message]Empty");
    LangstrPtr colour({{"sv", "F\xe4rg"}, {"en-uk", "Colour"}});
    ov_langstr_display_update_content(OV_LANGSTR_DISPLAY(display), colour);
    EXPECT_EQ(tagged_runs(view), "[header]Swedish (Sweden):\n[inset]F\xc3\xa4rg[]\n\n"
                                 "[header]English (United Kingdom):\n[inset]Colour");
    // Chain order stays whatever the active locale.
    set_active("sv");
    EXPECT_EQ(buffer_text(view), "Swedish (Sweden):\nF\xc3\xa4rg\n\nEnglish (United Kingdom):\nColour");
    ov_langstr_display_update_content(OV_LANGSTR_DISPLAY(display), nullptr);
    EXPECT_EQ(tagged_runs(view), "[message]Empty");

    // The tags' looks.
    GtkTextTagTable *table = gtk_text_buffer_get_tag_table(gtk_text_view_get_buffer(view));
    int pixels_below = 0, weight = 0, left_margin = 0;
    PangoStyle style = PANGO_STYLE_NORMAL;
    GdkRGBA *foreground = nullptr;
    g_object_get(gtk_text_tag_table_lookup(table, "header"), "pixels-below-lines", &pixels_below, "weight", &weight,
                 nullptr);
    g_object_get(gtk_text_tag_table_lookup(table, "inset"), "left-margin", &left_margin, nullptr);
    g_object_get(gtk_text_tag_table_lookup(table, "message"), "style", &style, "foreground-rgba", &foreground,
                 nullptr);
    EXPECT_EQ(pixels_below, 4);
    EXPECT_EQ(weight, 700);
    EXPECT_EQ(left_margin, 24);
    EXPECT_EQ(style, PANGO_STYLE_ITALIC);
    ov::GStr colour_text(gdk_rgba_to_string(foreground));
    EXPECT_STREQ(colour_text.get(), "rgb(170,170,170)");
    gdk_rgba_free(foreground);
}

TEST_F(LangstrWidgets, DisplayShowsTheActiveTextWithStatusIconInModeOne)
{
    GtkWidget *display = pack(ov_langstr_display_new(1, 300, 60));
    GtkTextView *view = ov_langstr_display_get_text_view(OV_LANGSTR_DISPLAY(display));
    LangstrPtr colour({{"sv", "F\xe4rg"}, {"en-uk", "Colour"}});
    ov_langstr_display_update_content(OV_LANGSTR_DISPLAY(display), colour);
    EXPECT_EQ(tagged_runs(view), "[]Colour  <child>");
    set_active("sv");
    EXPECT_EQ(tagged_runs(view), "[]F\xc3\xa4rg  <child>");
    set_active("de-de"); // falls back to UK English
    EXPECT_EQ(tagged_runs(view), "[]Colour  <child>");

    // The anchored child is a status icon showing the same string.
    GtkTextIter it;
    gtk_text_buffer_get_end_iter(gtk_text_view_get_buffer(view), &it);
    gtk_text_iter_backward_char(&it);
    GtkTextChildAnchor *anchor = gtk_text_iter_get_child_anchor(&it);
    ASSERT_NE(anchor, nullptr);
    GList *children = gtk_text_child_anchor_get_widgets(anchor);
    ASSERT_EQ(g_list_length(children), 1u);
    ASSERT_TRUE(OV_IS_LANGSTR_STATUS_ICON(children->data));
    GtkWidget *symbol = ov_langstr_status_icon_get_symbol(OV_LANGSTR_STATUS_ICON(children->data));
    g_list_free(children);
    EXPECT_TRUE(ov_langstr_is_identical(
        ov_langstr_status_icon_symbol_get_content(OV_LANGSTR_STATUS_ICON_SYMBOL(symbol)), colour));

    ov_langstr_display_update_content(OV_LANGSTR_DISPLAY(display), nullptr);
    EXPECT_EQ(tagged_runs(view), "[]  <child>");
}

TEST_F(LangstrWidgets, SymbolOpacityFollowsTheForegroundBrightness)
{
    struct Case {
        GdkRGBA colour;
        double opacity;
    } cases[] = {
        {{0, 0, 0, 1}, 1.0},
        {{1, 1, 1, 1}, 0.0},
        {{1, 0, 0, 1}, 0.701},
        {{0, 1, 0, 1}, 0.413},
        {{0, 0, 1, 1}, 0.886},
        {{0.5, 0.5, 0.5, 1}, 0.5},
    };
    for (const Case &c : cases)
        EXPECT_NEAR(ov_langstr_status_icon_symbol_opacity_for(&c.colour), c.opacity, 1e-9);
}

TEST_F(LangstrWidgets, StatusIconKeepsItsSymbolCentred)
{
    LangstrPtr colour({{"en-uk", "Colour"}});
    GtkWidget *icon = ov_langstr_status_icon_new(colour);
    GtkWidget *symbol = ov_langstr_status_icon_get_symbol(OV_LANGSTR_STATUS_ICON(icon));
    gtk_widget_show(icon);
    int minimum = 0, natural = 0;
    gtk_widget_get_preferred_width(symbol, &minimum, &natural);
    EXPECT_EQ(minimum, 13);
    EXPECT_EQ(natural, 13);
    gtk_widget_get_preferred_height(icon, &minimum, &natural);
    EXPECT_EQ(minimum, 8);
    EXPECT_EQ(natural, 8);

    // In a row of 31 pixels the symbol moves down to (31 - 8) / 2 = 11.
    GtkWidget *row = pack(gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0));
    GtkWidget *tall = gtk_label_new(nullptr);
    gtk_widget_set_size_request(tall, 10, 31);
    gtk_box_pack_start(GTK_BOX(row), tall, FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(row), icon, FALSE, FALSE, 0);
    gtk_widget_show_all(row);
    show();
    ov::test::wait_ms(50);
    int y = -1;
    gtk_container_child_get(GTK_CONTAINER(icon), symbol, "y", &y, nullptr);
    EXPECT_EQ(gtk_widget_get_allocated_height(icon), 31);
    EXPECT_EQ(y, 11);

    // Sensitive: the default cursor; insensitive: the parent's.
    GdkWindow *window = gtk_widget_get_window(symbol);
    ASSERT_NE(window, nullptr);
    ASSERT_NE(gdk_window_get_cursor(window), nullptr);
    EXPECT_EQ(gdk_cursor_get_cursor_type(gdk_window_get_cursor(window)), GDK_CURSOR_IS_PIXMAP);
    gtk_widget_set_sensitive(icon, FALSE);
    EXPECT_EQ(gdk_window_get_cursor(window), nullptr);
    gtk_widget_set_sensitive(icon, TRUE);
    EXPECT_NE(gdk_window_get_cursor(window), nullptr);

    // Updating reaches the symbol, which keeps its own clone.
    LangstrPtr other({{"sv", "Hus"}});
    ov_langstr_status_icon_update(OV_LANGSTR_STATUS_ICON(icon), other);
    EXPECT_TRUE(ov_langstr_is_identical(
        ov_langstr_status_icon_symbol_get_content(OV_LANGSTR_STATUS_ICON_SYMBOL(symbol)), other));
}

TEST_F(LangstrWidgets, StatusIconDestroyedWithPendingCentring)
{
    GtkWidget *icon = pack(ov_langstr_status_icon_new(nullptr));
    show();
    gtk_widget_queue_resize(icon);
    GdkRectangle allocation = {0, 0, 20, 20};
    gtk_widget_size_allocate(icon, &allocation); // schedules the centring
    gtk_widget_destroy(icon);
    ov::test::wait_ms(30); // a source left behind would touch the freed icon
}

// A locale tag, the dictionary's gspell code (or "" for none).
struct SpellCase {
    const char *tag;
    const char *code;
};

constexpr SpellCase spell_cases[] = {
    {"en-uk", "en_GB"}, {"en-us", "en_US"}, {"sv", "sv_SE"}, {"de-de", "de_DE"}, {"fr-fr", "fr"},
    {"es-mx", "es_ES"}, {"da", "da_DK"},    {"nl", "nl_NL"}, {"fr-be", ""},      {"", ""},
};

TEST_F(LangstrWidgets, SpellCheckingFollowsTheLocale)
{
    GtkWidget *entry = pack(gtk_entry_new());
    GtkWidget *view = pack(gtk_text_view_new());
    ov_spell_check_set_up_entry(GTK_ENTRY(entry));
    ov_spell_check_set_up_text_view(GTK_TEXT_VIEW(view));
    GspellEntry *spell_entry = gspell_entry_get_from_gtk_entry(GTK_ENTRY(entry));
    GspellTextView *spell_view = gspell_text_view_get_from_gtk_text_view(GTK_TEXT_VIEW(view));
    EXPECT_FALSE(gspell_text_view_get_enable_language_menu(spell_view));
    for (const SpellCase &c : spell_cases) {
        SCOPED_TRACE(c.tag);
        const OvLocale *locale = ov_locale_get_by_tag(c.tag);
        bool exists = *c.code != '\0';
        const GspellLanguage *language = ov_spell_check_get_language(locale);
        EXPECT_STREQ(language != nullptr ? gspell_language_get_code(language) : "", c.code);
        EXPECT_EQ(bool(ov_spell_check_apply_locale_to_entry(GTK_ENTRY(entry), locale)), exists);
        EXPECT_EQ(bool(gspell_entry_get_inline_spell_checking(spell_entry)), exists);
        EXPECT_EQ(bool(ov_spell_check_apply_locale_to_text_view(GTK_TEXT_VIEW(view), locale)), exists);
        EXPECT_EQ(bool(gspell_text_view_get_inline_spell_checking(spell_view)), exists);
        if (exists) {
            for (GspellChecker *checker : {ov_spell_check_get_entry_checker(GTK_ENTRY(entry)),
                                           ov_spell_check_get_text_view_checker(GTK_TEXT_VIEW(view))})
                EXPECT_STREQ(gspell_language_get_code(gspell_checker_get_language(checker)), c.code);
        }
    }
}

// Whether gspell's checker of the entry accepts each word.
std::string accepted(GspellChecker *checker, std::initializer_list<const char *> words)
{
    std::string result;
    for (const char *word : words) {
        ov::GErrorPtr error;
        gboolean ok = gspell_checker_check_word(checker, word, -1, ov::out(error));
        EXPECT_FALSE(error) << word;
        result += std::string(result.empty() ? "" : " ") + (ok ? "+" : "-") + word;
    }
    return result;
}

TEST_F(LangstrWidgets, RealDictionariesFlagMisspeltWords)
{
    GtkWidget *entry = pack(gtk_entry_new());
    ov_spell_check_set_up_entry(GTK_ENTRY(entry));
    GspellChecker *checker = ov_spell_check_get_entry_checker(GTK_ENTRY(entry));
    ASSERT_NE(checker, nullptr);
    ov_spell_check_apply_locale_to_entry(GTK_ENTRY(entry), ov_locale_get_by_tag("en-uk"));
    EXPECT_EQ(accepted(checker, {"colour", "recieve", "scratched", "scrached"}),
              "+colour -recieve +scratched -scrached");
    ov_spell_check_apply_locale_to_entry(GTK_ENTRY(entry), ov_locale_get_by_tag("sv"));
    EXPECT_EQ(accepted(checker, {"f\xc3\xa4rg", "repa", "colour"}), "+f\xc3\xa4rg +repa -colour");
    ov_spell_check_apply_locale_to_entry(GTK_ENTRY(entry), ov_locale_get_by_tag("de-de"));
    EXPECT_EQ(accepted(checker, {"Kratzer", "Kratzr"}), "+Kratzer -Kratzr");
}

} // namespace
