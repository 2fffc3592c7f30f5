// Multilingual labels, displays, status symbols, spell checking and the langstr editor, window and entry.
#include "widgets/widget_test_util.h"

#include "core/error.h"
#include "widgets/active_locale_picker.h"
#include "widgets/dropdown_panel.h"
#include "widgets/gfx_text.h"
#include "widgets/langstr_display.h"
#include "widgets/langstr_editor.h"
#include "widgets/langstr_entry.h"
#include "widgets/langstr_label.h"
#include "widgets/langstr_status_icon.h"
#include "widgets/langstr_status_icon_symbol.h"
#include "widgets/langstr_window.h"
#include "widgets/locale_picker.h"
#include "widgets/spell_check.h"
#include "widgets/translation_entry.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

using namespace ov::test;

namespace
{

constexpr const char *title = "Enter multilingual text";

using Langstr = GuiTest;

// Runs of equally tagged text: "[header]Danish:\n[inset]Farve"; an anchored child is "<child>".
std::string tagged_runs(GtkWidget *display)
{
    GtkTextIter it;
    gtk_text_buffer_get_start_iter(
        gtk_text_view_get_buffer(ov_langstr_display_get_text_view(OV_LANGSTR_DISPLAY(display))), &it);
    std::string result, current = "?";
    for (; !gtk_text_iter_is_end(&it); gtk_text_iter_forward_char(&it)) {
        GSList *list = gtk_text_iter_get_tags(&it); // at most one here
        char *name = nullptr;
        if (list != nullptr)
            g_object_get(list->data, "name", &name, nullptr);
        g_slist_free(list);
        if (ov::GStr owned(name); (name != nullptr ? name : "") != current)
            result += "[" + (current = name != nullptr ? name : "") + "]";
        char utf8[8] = {};
        g_unichar_to_utf8(gtk_text_iter_get_char(&it), utf8);
        result += gtk_text_iter_get_char(&it) == 0xFFFC ? "<child>" : utf8;
    }
    return result;
}

// The symbol's colour at each point: Y yellow, G grey, . clear, else its ARGB in hex.
std::string draw_symbol(const langstr *ls, double opacity)
{
    ov::CairoSurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 20, 12));
    ov_gfx_text_draw_langstr_status_icon(ov::CairoPtr(cairo_create(surface.get())).get(), 3, 2, ls, opacity);
    cairo_surface_flush(surface.get());
    const unsigned char *data = cairo_image_surface_get_data(surface.get());
    std::string result;
    // Frame corners, inside the first and second squares, the gap, outside.
    for (auto [x, y] : {std::pair(3, 2), {15, 9}, {5, 4}, {10, 4}, {9, 4}, {2, 2}, {16, 9}}) {
        guint32 v = *reinterpret_cast<const guint32 *>(
            data + y * cairo_image_surface_get_stride(surface.get()) + x * 4);
        const char *known = v == 0xffeeee00 ? "Y" : v == 0xffdddddd ? "G" : v == 0 ? "." : nullptr;
        result += known != nullptr ? known : ov::GStr(g_strdup_printf("%08x", v)).get();
    }
    return result;
}

// The display in the dropdown panel on screen, or null.
GtkWidget *dropdown_display()
{
    return find_widget(shown_toplevel([](GtkWidget *w) { return OV_IS_DROPDOWN_PANEL(w); }),
                       [](GtkWidget *d) { return OV_IS_LANGSTR_DISPLAY(d); });
}

} // namespace

TEST_F(Langstr, SwitchingTheActiveLocaleRelabelsEveryWidgetAtOnce)
{
    LangstrPtr ls = langstr_of("en-uk=Colour sv=F\xe4rg de-de=Farbe");
    TestWindow w;
    GtkWidget *label = w.pack(ov_langstr_label_new(ls.get()));
    w.pack(ov_langstr_label_new(nullptr)); // stays empty
    GtkWidget *entry = w.pack(ov_langstr_entry_new()),
              *display = w.pack(ov_langstr_display_new(OV_LANGSTR_MODE_MULTI_LINE, 300, 60));
    GtkWidget *pickers[] = {w.pack(ov_active_locale_picker_new()), w.pack(ov_active_locale_picker_new())};
    ov_langstr_entry_set_value(OV_LANGSTR_ENTRY(entry), langstr_of("sv=Hus en-us=House").get(), nullptr);
    ov_langstr_display_update_content(OV_LANGSTR_DISPLAY(display), ls.get());
    w.show();
    auto texts = [&] { return label_texts(w.box) + "|" + tagged_runs(display); };
    const char *swedish = "F\xc3\xa4rg||Hus|Swedish (Sweden)|Swedish (Sweden)|[]F\xc3\xa4rg  <child>";
    for (auto [tag, expected] : {std::pair("sv", swedish),
                                 {"de-de", "Farbe||House|German (Germany)|German (Germany)|[]Farbe  <child>"},
                                 {"da", "Colour||House|Danish|Danish|[]Colour  <child>"}}) {
        set_active(tag);
        EXPECT_EQ(texts(), expected);
    }
    // Picking in one active locale picker switches them all.
    Script script;
    script.when_menu([] { activate_menu_item("Swedish/Sweden"); });
    click(pickers[0]);
    EXPECT_EQ(texts(), swedish);

    // Destroyed widgets leave the event bus: a handler left behind would touch freed widgets.
    int finalized = 0;
    for (GtkWidget *widget : {label, entry, display, pickers[1]}) {
        g_object_weak_ref(
            G_OBJECT(widget), [](gpointer n, GObject *) { ++*static_cast<int *>(n); }, &finalized);
        gtk_widget_destroy(widget);
    }
    flush_events();
    EXPECT_EQ(finalized, 4);
    set_active("en-uk");
    EXPECT_STREQ(ov_locale_picker_get_label_text(OV_LOCALE_PICKER(pickers[0])), "English (United Kingdom)");
}

TEST_F(Langstr, StatusIconDrawsCountAndActiveLanguageCentredAndShowsTheDropdown)
{
    for (auto [ls, expected] : {std::pair("", "YY....."),
                                {"sv=Hus", "YYY...."},
                                {"en-us=House", "GGG...."},
                                {"sv=Hus en-uk=House", "GGGG..."}})
        EXPECT_EQ(draw_symbol(langstr_of(ls).get(), 1.0), expected) << ls;
    EXPECT_EQ(draw_symbol(langstr_of("en-uk=House").get(), 0.5).substr(0, 8), "806e6e6e");
    for (auto [colour, opacity] : {std::pair(GdkRGBA{0, 0, 0, 1}, 1.0),
                                   {{1, 0, 0, 1}, 0.701},
                                   {{0, 1, 0, 1}, 0.413},
                                   {{0, 0, 1, 1}, 0.886}})
        EXPECT_NEAR(ov_langstr_status_icon_symbol_opacity_for(&colour), opacity, 1e-9);

    TestWindow w;
    GtkWidget *icon = w.pack(ov_langstr_status_icon_new(langstr_of("en-uk=Colour sv=F\xe4rg").get()));
    gtk_widget_set_size_request(icon, -1, 31);
    ov_window_stack_push_window(GTK_WINDOW(w.window), OV_WINDOW_STACK_POSITION_CENTER);
    w.show();
    wait_ms(50);
    GtkWidget *symbol = ov_langstr_status_icon_get_symbol(OV_LANGSTR_STATUS_ICON(icon));
    int y = -1;
    gtk_container_child_get(GTK_CONTAINER(icon), symbol, "y", &y, nullptr);
    EXPECT_EQ(y, (31 - 8) / 2);
    std::string shown;
    set_active("sv"); // the dropdown keeps the chain order
    Script script;
    script.then([&] { click(symbol); })
        .when([] { return dropdown_display() != nullptr; },
              [&] {
                  shown = tagged_runs(dropdown_display());
                  click(w.box);
              });
    finish(script);
    EXPECT_EQ(dropdown_display(), nullptr);
    EXPECT_EQ(shown, "[header]English (United Kingdom):\n[inset]Colour[]\n\n"
                     "[header]Swedish (Sweden):\n[inset]F\xc3\xa4rg");
    ov_window_stack_pop_window();

    // Destroyed with the centring pending: a source left behind would touch the freed icon.
    gtk_widget_queue_resize(icon);
    GdkRectangle allocation = {0, 0, 20, 20};
    gtk_widget_size_allocate(icon, &allocation);
    gtk_widget_destroy(icon);
    wait_ms(30);
}

TEST_F(Langstr, SpellCheckingFollowsTheLocaleWithRealDictionaries)
{
    const struct {
        const char *tag, *code, *words; // code "": no dictionary; words "+accepted -rejected"
    } cases[] = {{"en-uk", "en_GB", "+colour +scratched -recieve -scrached"},
                 {"en-us", "en_US", "+color"},
                 {"sv", "sv_SE", "+f\xc3\xa4rg +repa -colour"},
                 {"de-de", "de_DE", "+Kratzer -Kratzr"},
                 {"fr-fr", "fr", ""},
                 {"es-mx", "es_ES", ""},
                 {"fr-be", "", ""},
                 {"", "", ""}};
    TestWindow w;
    auto *entry = GTK_ENTRY(w.pack(gtk_entry_new()));
    auto *view = GTK_TEXT_VIEW(w.pack(gtk_text_view_new()));
    ov_spell_check_set_up_entry(entry);
    ov_spell_check_set_up_text_view(view);
    GspellChecker *checker = ov_spell_check_get_entry_checker(entry);
    for (const auto &c : cases) {
        SCOPED_TRACE(c.tag);
        const OvLocale *l = ov_locale_get_by_tag(c.tag);
        const bool exists = *c.code != '\0';
        const GspellLanguage *language = ov_spell_check_get_language(l);
        EXPECT_STREQ(language != nullptr ? gspell_language_get_code(language) : "", c.code);
        EXPECT_EQ(bool(ov_spell_check_apply_locale_to_entry(entry, l)), exists);
        EXPECT_EQ(bool(gspell_entry_get_inline_spell_checking(gspell_entry_get_from_gtk_entry(entry))),
                  exists);
        EXPECT_EQ(bool(ov_spell_check_apply_locale_to_text_view(view, l)), exists);
        std::istringstream words(c.words);
        for (std::string word; words >> word;)
            EXPECT_EQ(gspell_checker_check_word(checker, &word[1], -1, nullptr), word[0] == '+') << word;
    }
}

namespace
{

// Each entry as "tag=text", with "#" after a locked text and "@" after a locked locale.
std::string describe_entries(OvLangstrEditor *editor)
{
    std::string result;
    for (OvTranslationEntry *entry : entries_of(editor)) {
        ov::GStr text(ov_translation_entry_get_text(entry));
        result += (result.empty() ? "" : "|") + std::string(ov_translation_entry_get_locale(entry)->tag) +
                  "=" + text.get() + (ov_translation_entry_is_text_locked(entry) ? "#" : "") +
                  (gtk_widget_get_sensitive(ov_translation_entry_get_picker(entry)) ? "" : "@");
    }
    return result;
}

std::string top_labels()
{
    return label_texts(GTK_WIDGET(top_window()));
}

// A step that keeps the texts of the message box on top, then closes it.
Script::Action take_message(std::string &texts)
{
    return [&texts] {
        texts = top_labels();
        click_button("_Close");
    };
}

// The langstr window on top with that many entries, no menu open and every
// toggle button (pickers, "Add translation") released.
Script::Condition window_with_entries(std::size_t count)
{
    return [count] {
        return window_shown(title) && !menu_shown() && entries_of(top_langstr_editor()).size() == count &&
               find_widget(GTK_WIDGET(top_langstr_editor()), [](GtkWidget *w) {
                   return GTK_IS_TOGGLE_BUTTON(w) && gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(w));
               }) == nullptr;
    };
}

struct WindowOptions {
    int state = 0;
    gboolean allow_empty = FALSE;
    const char *title = nullptr, *label = nullptr, *note = nullptr, *ok = nullptr;
};

gboolean run_window(LangstrPtr &value, const WindowOptions &o = {})
{
    langstr *ls = value.release();
    gboolean ok = ov_langstr_window_run(OV_LANGSTR_MODE_SINGLE_LINE, &ls, nullptr, nullptr, o.state,
                                        o.allow_empty, o.title, o.label, o.note, o.ok);
    value.reset(ls);
    return ok;
}

} // namespace

TEST_F(Langstr, WindowRefusesEmptyOrRepeatedTextsAndKeepsTheValueOnCancelOrClose)
{
    LangstrPtr value;
    std::string message, labels, order, menu, spelling;
    Script empty;
    empty.when_window(title, [&] {
        labels = top_labels();
        EXPECT_EQ(gtk_window_get_focus(top_window()), translation_field(0));
        click_button("OK");
    });
    empty.when_window("Error", take_message(message)).when_window(title, [] {
        type_text(translation_field(0), "Colour");
        click_button("OK");
    });
    EXPECT_TRUE(run_window(value));
    EXPECT_TRUE(contains(labels, "Text: (Required)")) << labels;
    EXPECT_TRUE(contains(message, "You haven't entered anything.")) << message;
    EXPECT_EQ(describe(value.get()), "en-uk=Colour");

    value = langstr_of("en-uk=Colour sv=F\xe4rg");
    auto spell_language = [] {
        return gspell_language_get_code(
            gspell_checker_get_language(ov_spell_check_get_entry_checker(GTK_ENTRY(translation_field(0)))));
    };
    Script repeated;
    repeated.when_window(title, [&] {
        spelling = spell_language();
        click(ov_translation_entry_get_picker(entries_of(top_langstr_editor())[0]));
    });
    repeated.when_menu([&] {
        menu = menu_labels(open_menu());
        activate_menu_item("All languages/Swedish/Sweden");
    });
    repeated.when(window_with_entries(2), [&] {
        order = describe_entries(top_langstr_editor());
        spelling += std::string(" ") + spell_language();
        click_button("OK");
    });
    repeated.when_window("Error", take_message(message)).when_window(title, [] { click_button("Cancel"); });
    EXPECT_FALSE(run_window(value));
    // Only the entry's own locale and the active one are offered first; the
    // changed entry moves behind the other Swedish one and spell checks in Swedish.
    EXPECT_EQ(menu, "English (United Kingdom)|-|All languages >");
    EXPECT_EQ(order, "sv=F\xe4rg|sv=Colour");
    EXPECT_EQ(spelling, "en_GB sv_SE");
    const char *twice = "Each language may only appear once. Swedish (Sweden) appears several times.";
    EXPECT_TRUE(contains(message, twice)) << message;

    Script closing;
    closing.when_window(title, [] {
        type_text(translation_field(0), "X");
        close_window(top_window());
    });
    EXPECT_FALSE(run_window(value));
    EXPECT_EQ(describe(value.get()), "en-uk=Colour sv=F\xe4rg");

    // Insensitive, the note shows and OK just closes; with empty text allowed a cleared editor gives nothing.
    auto clear_and_press = [&labels](const char *button) {
        return [&labels, button] {
            labels = top_labels() +
                     (gtk_widget_get_sensitive(GTK_WIDGET(top_langstr_editor())) ? "" : "|insensitive");
            ov_langstr_editor_clear(top_langstr_editor());
            click_button(button);
        };
    };
    Script insensitive;
    insensitive.when_window(title, clear_and_press("OK"));
    EXPECT_TRUE(run_window(value, {.state = 1, .note = "Read only here."}));
    EXPECT_TRUE(contains(labels, "Read only here.") && contains(labels, "|insensitive")) << labels;
    EXPECT_EQ(describe(value.get()), "en-uk=Colour sv=F\xe4rg");
    Script allowed;
    allowed.when_window("Name it", clear_and_press("Rename"));
    EXPECT_TRUE(run_window(value, {0, TRUE, "Name it", "Report type", nullptr, "Rename"}));
    EXPECT_TRUE(contains(labels, "Report type:") && !contains(labels, "Required")) << labels;
    EXPECT_EQ(value, nullptr);
}

TEST_F(Langstr, LangstrEntryOpensTheWindowThatAddsSortsAndDeletesTranslations)
{
    TestWindow w;
    ov_window_stack_push_window(GTK_WINDOW(w.window), OV_WINDOW_STACK_POSITION_CENTER);
    auto *entry = OV_LANGSTR_ENTRY(w.pack(ov_langstr_entry_new()));
    ov_langstr_entry_set_value(entry, langstr_of("en-uk=Colour").get(), nullptr);
    ov_langstr_entry_set_additional_locales(entry, list_of("sv de-de").get());
    w.show();
    int changed = 0;
    count_signal(entry, "changed", changed);
    std::string order, menu;
    auto add = [] { click(ov_langstr_editor_get_add_button(top_langstr_editor())); };
    Script script;
    script.then([&] { click(GTK_WIDGET(entry)); }).when_window(title, add).when_menu([&] {
        menu = menu_labels(open_menu());
        activate_menu_item("Swedish (Sweden)");
    });
    script.when(window_with_entries(2), [&] {
        type_text(gtk_window_get_focus(top_window()), "F\xc3\xa4rg");
        add();
    });
    script.when_menu([] { activate_menu_item("All languages/Danish"); }).when(window_with_entries(3), [&] {
        type_text(gtk_window_get_focus(top_window()), "Farve");
        order = describe_entries(top_langstr_editor());
        click(ov_translation_entry_get_delete_button(entries_of(top_langstr_editor())[1]));
    });
    script.when(window_with_entries(2), [] { click_button("OK"); });
    finish(script);
    EXPECT_EQ(menu, "English (United Kingdom)|German (Germany)|Swedish (Sweden)|-|All languages >");
    EXPECT_EQ(order, "da=Farve|en-uk=Colour|sv=F\xe4rg");
    EXPECT_EQ(changed, 1);
    EXPECT_EQ(describe(LangstrPtr(ov_langstr_entry_get_value(entry)).get()), "da=Farve sv=F\xe4rg");
    ov_window_stack_pop_window();
}

TEST_F(Langstr, EditorMatchesLockedTextsDeletesClearsAndReads)
{
    constexpr const char *ui_error = "An error occured with the user interface.";
    const struct {
        const char *value, *locked, *entries;
        bool fails;
    } cases[] = {// A defined locked text locks text and locale, an undefined one only the text.
                 {"en-uk=Colour sv=F\xe4rg", "sv=F\xe4rg", "en-uk=Colour|sv=F\xe4rg#@", false},
                 {"sv=Hus", "=Hus", "en-uk=|sv=Hus#", false},
                 {"en-uk=House =Hus", "=Hus en-uk=House", "en-uk=House#@|=Hus#", false},
                 // A text that is not there, or a second pending undefined text.
                 {"en-uk=Colour", "en-uk=Color", "en-uk=Colour", true},
                 {"en-uk=A", "=Z", "en-uk=A", true},
                 {"en-uk=A sv=B", "=A =B", "en-uk=A|sv=B", true}};
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.value) + " / " + c.locked);
        std::string message;
        Script script;
        if (c.fails)
            script.when_window("Error", take_message(message));
        TestWindow w;
        LangstrPtr value = langstr_of(c.value), locked = langstr_of(c.locked);
        auto *editor = OV_LANGSTR_EDITOR(w.pack(
            ov_langstr_editor_new(OV_LANGSTR_MODE_SINGLE_LINE, value.get(), locked.get(), nullptr, FALSE)));
        EXPECT_EQ(describe_entries(editor), c.entries);
        LangstrPtr read;
        EXPECT_EQ(bool(ov_langstr_editor_get_value(editor, ov::out(read))), !c.fails);
        EXPECT_EQ(contains(message, ui_error), c.fails);
        EXPECT_STREQ(ov_error_get(), c.fails ? ui_error : "");
        EXPECT_TRUE(c.fails || ov_langstr_editor_has_locked_texts(editor));
        ov_error_clear();
    }

    LangstrPtr value = langstr_of("sv=Hus =Casa"), locked = langstr_of("=Casa");
    TestWindow w;
    auto *editor = OV_LANGSTR_EDITOR(w.pack(ov_langstr_editor_new(
        OV_LANGSTR_MODE_SINGLE_LINE, value.get(), locked.get(), list_of("da sv en-uk").get(), TRUE)));
    int shrunk = 0;
    count_signal(editor, "shrunk", shrunk);
    EXPECT_EQ(describe_entries(editor), "en-uk=|sv=Hus|=Casa#");
    EXPECT_EQ(tags_of(ov_langstr_editor_get_add_translation_locales(editor)), "da en-uk sv");
    // An undefined text equal to a defined one is dropped when read; the out value is overwritten, not freed.
    gtk_entry_set_text(GTK_ENTRY(ov_translation_entry_get_text_widget(entries_of(editor)[0])), "  Casa ");
    LangstrPtr old = langstr_of("sv=old");
    langstr *read = old.get();
    ASSERT_TRUE(ov_langstr_editor_get_value(editor, &read));
    EXPECT_EQ(describe(LangstrPtr(read).get()), "en-uk=Casa sv=Hus");
    gtk_button_clicked(GTK_BUTTON(ov_translation_entry_get_delete_button(entries_of(editor)[1])));
    EXPECT_EQ(describe_entries(editor), "en-uk=Casa|=Casa#");
    ov_langstr_editor_clear(editor);
    EXPECT_EQ(shrunk, 2);
    EXPECT_EQ(describe_entries(editor), "=Casa#");

    // Two filled entries without a language are refused like any repeated language.
    LangstrPtr two = langstr_of("sv=Dos =Uno");
    auto *repeated = OV_LANGSTR_EDITOR(
        w.pack(ov_langstr_editor_new(OV_LANGSTR_MODE_SINGLE_LINE, two.get(), nullptr, nullptr, FALSE)));
    EXPECT_EQ(describe_entries(repeated), "en-uk=|sv=Dos|=Uno");
    ov_locale_picker_select(OV_LOCALE_PICKER(ov_translation_entry_get_picker(entries_of(repeated)[1])),
                            ov_locale_get_undefined(), TRUE);
    EXPECT_EQ(describe_entries(repeated), "en-uk=|=Uno|=Dos");
    LangstrPtr refused;
    EXPECT_FALSE(ov_langstr_editor_get_value(repeated, ov::out(refused)));
    EXPECT_STREQ(ov_error_get(),
                 "Each language may only appear once. Undefined language appears several times.");
    ov_error_clear();
}
