// The langstr editor, window and entry driven as a user would.
#include "support/gui_driver.h"
#include "support/test_support.h"

#include "core/error.h"
#include "core/raii.h"
#include "frame/window_stack.h"
#include "lang/active_locale.h"
#include "widgets/dropdown_panel.h"
#include "widgets/langstr_display.h"
#include "widgets/langstr_editor.h"
#include "widgets/langstr_entry.h"
#include "widgets/langstr_label.h"
#include "widgets/langstr_status_icon.h"
#include "widgets/langstr_window.h"
#include "widgets/locale_picker.h"
#include "widgets/spacifying_text_view.h"
#include "widgets/spell_check.h"
#include "widgets/translation_entry.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>

namespace {

using namespace ov::test;
using Translations = std::initializer_list<std::pair<const char *, const char *>>;

langstr *make_ls(Translations translations)
{
    langstr *ls = nullptr;
    for (const auto &[tag, text] : translations)
        ov_langstr_set_translation(&ls, ov_locale_get_by_tag(tag), text);
    return ls;
}

// "en-uk=Colour sv=F\xe4rg" in chain order (texts Latin-1).
std::string describe(const langstr *ls)
{
    std::string result;
    for (const langstr *t = ls; t != nullptr; t = t->next)
        result += std::string(result.empty() ? "" : " ") + t->locale->tag + "=" + t->text;
    return result;
}

OvLocaleList *make_list(std::initializer_list<const char *> tags)
{
    OvLocaleList *list = ov_locale_list_new();
    for (const char *tag : tags)
        ov_locale_list_add_last(list, ov_locale_get_by_tag(tag));
    return list;
}

std::string entry_text(OvTranslationEntry *entry)
{
    ov::GStr text(ov_translation_entry_get_text(entry));
    return text ? text.get() : "<null>";
}

// Each entry as "Locale name=text", with "#" after a locked text and "@"
// after a locked locale.
std::string describe_entries(OvLangstrEditor *editor)
{
    std::string result;
    GList *entries = ov_langstr_editor_get_entries(editor);
    for (GList *l = entries; l != nullptr; l = l->next) {
        auto *entry = OV_TRANSLATION_ENTRY(l->data);
        ov::GStr name(ov_locale_format_ui_string(ov_translation_entry_get_locale(entry)));
        result += std::string(result.empty() ? "" : "|") + name.get() + "=" + entry_text(entry);
        if (ov_translation_entry_is_text_locked(entry))
            result += "#";
        if (!gtk_widget_get_sensitive(ov_translation_entry_get_picker(entry)))
            result += "@";
    }
    g_list_free(entries);
    return result;
}

OvTranslationEntry *nth_entry(OvLangstrEditor *editor, guint n)
{
    GList *entries = ov_langstr_editor_get_entries(editor);
    auto *entry = OV_TRANSLATION_ENTRY(g_list_nth_data(entries, n));
    g_list_free(entries);
    return entry;
}

OvLangstrEditor *editor_in(GtkWindow *window)
{
    return OV_LANGSTR_EDITOR(find_widget(GTK_WIDGET(window), [](GtkWidget *w) { return OV_IS_LANGSTR_EDITOR(w); }));
}

// The texts of the message box on top, then closes it.
std::string take_message()
{
    GtkWindow *box = top_window();
    std::string texts = label_texts(GTK_WIDGET(box));
    click_button_in(GTK_WIDGET(box), "_Close");
    return texts;
}

class LangstrWindow : public ::testing::Test {
protected:
    void SetUp() override
    {
        saved_ = ov_ovinternal_get_active_locale();
        ov_ovinternal_set_active_locale(ov_locale_get_uk_english());
        ov_window_stack_init();
        ov_error_clear();
    }
    void TearDown() override
    {
        ov_window_stack_clean_up();
        flush_events();
        if (saved_ != nullptr)
            ov_ovinternal_set_active_locale(saved_);
        ov_error_clear();
    }
    const OvLocale *saved_ = nullptr;
};

constexpr const char *title = "Enter multilingual text";

guint entry_count(OvLangstrEditor *editor)
{
    GList *entries = ov_langstr_editor_get_entries(editor);
    guint count = g_list_length(entries);
    g_list_free(entries);
    return count;
}

// The langstr window on top, no menu open, every toggle button (pickers,
// "Add translation") released and that many entries shown.
Script::Condition window_with_entries(guint count)
{
    return [count] {
        if (!window_shown(title) || menu_shown())
            return false;
        OvLangstrEditor *editor = editor_in(top_window());
        if (editor == nullptr || entry_count(editor) != count)
            return false;
        return find_widget(GTK_WIDGET(editor), [](GtkWidget *w) {
                   return GTK_IS_TOGGLE_BUTTON(w) && gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(w));
               }) == nullptr;
    };
}

TEST_F(LangstrWindow, EmptyTextIsRefusedUnlessAllowed)
{
    langstr *value = nullptr;
    std::string message;
    std::string labels;
    Script script;
    script.when_window(title, [&] {
        labels = label_texts(GTK_WIDGET(top_window()));
        // The field has the keyboard focus.
        OvLangstrEditor *editor = editor_in(top_window());
        EXPECT_EQ(gtk_window_get_focus(top_window()), ov_translation_entry_get_text_widget(nth_entry(editor, 0)));
        click_button("OK");
    });
    script.when_window("Error", [&] { message = take_message(); });
    script.when_window(title, [&] {
        OvLangstrEditor *editor = editor_in(top_window());
        EXPECT_EQ(describe_entries(editor), "English (United Kingdom)=");
        type_text(ov_translation_entry_get_text_widget(nth_entry(editor, 0)), "Colour");
        click_button("OK");
    });
    EXPECT_TRUE(ov_langstr_window_run(0, &value, nullptr, nullptr, 0, FALSE, nullptr, nullptr, nullptr, nullptr));
    EXPECT_TRUE(script.done());
    EXPECT_NE(labels.find("Text: (Required)"), std::string::npos) << labels;
    EXPECT_NE(message.find("You haven't entered anything."), std::string::npos) << message;
    EXPECT_EQ(describe(value), "en-uk=Colour");
    ov_langstr_free(value);

    // Allowed: OK on nothing gives nothing, and the label is not marked.
    value = make_ls({{"sv", "Hus"}});
    Script allowed;
    allowed.when_window("Name it", [&] {
        labels = label_texts(GTK_WIDGET(top_window()));
        OvLangstrEditor *editor = editor_in(top_window());
        ov_langstr_editor_clear(editor);
        EXPECT_EQ(describe_entries(editor), "");
        click_button("Rename");
    });
    EXPECT_TRUE(ov_langstr_window_run(0, &value, nullptr, nullptr, 0, TRUE, "Name it", "Report type", nullptr,
                                      "Rename"));
    EXPECT_TRUE(allowed.done());
    EXPECT_NE(labels.find("Report type:"), std::string::npos) << labels;
    EXPECT_EQ(labels.find("Required"), std::string::npos) << labels;
    EXPECT_EQ(value, nullptr);
}

TEST_F(LangstrWindow, TranslationsAreAddedSortedAndDeleted)
{
    langstr *value = make_ls({{"en-uk", "Colour"}});
    OvLocaleList *primary = make_list({"sv", "de-de"});
    std::string order_after_adding;
    Script script;
    script.when_window(title, [&] { click(ov_langstr_editor_get_add_button(editor_in(top_window()))); });
    script.when_menu([&] {
        EXPECT_EQ(menu_labels(open_menu()),
                  "English (United Kingdom)|German (Germany)|Swedish (Sweden)|-|All languages >");
        activate_menu_item("Swedish (Sweden)");
    });
    script.when(window_with_entries(2), [&] {
        GtkWidget *focus = gtk_window_get_focus(top_window());
        type_text(focus, "F\xc3\xa4rg");
        click(ov_langstr_editor_get_add_button(editor_in(top_window())));
    });
    script.when_menu([&] { activate_menu_item("All languages/Danish"); });
    script.when(window_with_entries(3), [&] {
        type_text(gtk_window_get_focus(top_window()), "Farve");
        OvLangstrEditor *editor = editor_in(top_window());
        order_after_adding = describe_entries(editor);
        EXPECT_FALSE(gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(ov_langstr_editor_get_add_button(editor))));
        // Delete the English one.
        click(ov_translation_entry_get_delete_button(nth_entry(editor, 1)));
    });
    script.when(window_with_entries(2), [&] { click_button("OK"); });
    EXPECT_TRUE(ov_langstr_window_run(0, &value, nullptr, primary, 0, FALSE, nullptr, nullptr, nullptr, nullptr));
    EXPECT_TRUE(script.done());
    EXPECT_EQ(order_after_adding, "Danish=Farve|English (United Kingdom)=Colour|Swedish (Sweden)=F\xe4rg");
    EXPECT_EQ(describe(value), "da=Farve sv=F\xe4rg");
    ov_langstr_free(value);
    ov_locale_list_destroy(primary);
}

TEST_F(LangstrWindow, RepeatedLanguageKeepsTheWindowOpenAndCancelKeepsTheValue)
{
    langstr *value = make_ls({{"en-uk", "Colour"}, {"sv", "F\xe4rg"}});
    std::string message;
    std::string order;
    Script script;
    script.when_window(title, [&] {
        click(ov_translation_entry_get_picker(nth_entry(editor_in(top_window()), 0)));
    });
    script.when_menu([&] {
        // Only the entry's own locale and the active one are offered first.
        EXPECT_EQ(menu_labels(open_menu()), "English (United Kingdom)|-|All languages >");
        activate_menu_item("All languages/Swedish/Sweden");
    });
    script.when(window_with_entries(2), [&] {
        order = describe_entries(editor_in(top_window()));
        click_button("OK");
    });
    script.when_window("Error", [&] { message = take_message(); });
    script.when_window(title, [&] { click_button("Cancel"); });
    EXPECT_FALSE(ov_langstr_window_run(0, &value, nullptr, nullptr, 0, FALSE, nullptr, nullptr, nullptr, nullptr));
    EXPECT_TRUE(script.done());
    // The changed entry moved behind the other Swedish one.
    EXPECT_EQ(order, "Swedish (Sweden)=F\xe4rg|Swedish (Sweden)=Colour");
    EXPECT_NE(message.find("Each language may only appear once. Swedish (Sweden) appears several times."),
              std::string::npos)
        << message;
    EXPECT_EQ(describe(value), "en-uk=Colour sv=F\xe4rg");

    // Closing with the window's close button is a cancel too.
    Script closing;
    closing.when_window(title, [&] {
        type_text(ov_translation_entry_get_text_widget(nth_entry(editor_in(top_window()), 0)), "X");
        close_window(top_window());
    });
    EXPECT_FALSE(ov_langstr_window_run(0, &value, nullptr, nullptr, 0, FALSE, nullptr, nullptr, nullptr, nullptr));
    EXPECT_TRUE(closing.done());
    EXPECT_EQ(describe(value), "en-uk=Colour sv=F\xe4rg");
    ov_langstr_free(value);
}

TEST_F(LangstrWindow, InsensitiveStateShowsTheNoteAndOkJustCloses)
{
    langstr *value = make_ls({{"en-uk", "Colour"}});
    langstr *before = ov_langstr_clone(value);
    std::string labels;
    bool sensitive = true;
    Script script;
    script.when_window(title, [&] {
        labels = label_texts(GTK_WIDGET(top_window()));
        sensitive = gtk_widget_get_sensitive(GTK_WIDGET(editor_in(top_window())));
        click_button("OK");
    });
    EXPECT_TRUE(ov_langstr_window_run(0, &value, nullptr, nullptr, 1, FALSE, nullptr, nullptr, "Read only here.",
                                      nullptr));
    EXPECT_TRUE(script.done());
    EXPECT_FALSE(sensitive);
    EXPECT_NE(labels.find("Read only here."), std::string::npos) << labels;
    EXPECT_TRUE(ov_langstr_is_identical(value, before));

    // State 0 without locked texts hides the note.
    Script hidden;
    hidden.when_window(title, [&] {
        labels = label_texts(GTK_WIDGET(top_window()));
        click_button("Cancel");
    });
    EXPECT_FALSE(ov_langstr_window_run(0, &value, nullptr, nullptr, 0, FALSE, nullptr, nullptr, "Read only here.",
                                       nullptr));
    EXPECT_EQ(labels.find("Read only here."), std::string::npos) << labels;
    ov_langstr_free(value);
    ov_langstr_free(before);
}

TEST_F(LangstrWindow, MultiLineWindowKeepsLineFeeds)
{
    langstr *value = make_ls({{"en-uk", "First line"}});
    Script script;
    script.when_window(title, [&] {
        GtkWidget *view = ov_translation_entry_get_text_widget(nth_entry(editor_in(top_window()), 0));
        EXPECT_TRUE(GTK_IS_TEXT_VIEW(view));
        GtkTextBuffer *buffer = gtk_text_view_get_buffer(GTK_TEXT_VIEW(view));
        GtkTextIter end;
        gtk_text_buffer_get_end_iter(buffer, &end);
        gtk_text_buffer_place_cursor(buffer, &end);
        press_key(view, GDK_KEY_Return);
        paste_text(view, "Second\tline");
        click_button("OK");
    });
    EXPECT_TRUE(ov_langstr_window_run(1, &value, nullptr, nullptr, 0, FALSE, nullptr, nullptr, nullptr, nullptr));
    EXPECT_TRUE(script.done());
    EXPECT_EQ(describe(value), "en-uk=First line\nSecond line");
    ov_langstr_free(value);
}

// Locked texts: value, locked, the entries afterwards, and whether the
// matching failed.
struct LockCase {
    Translations value;
    Translations locked;
    const char *entries;
    bool fails;
};

TEST_F(LangstrWindow, LockedTextsAreMatchedToEntries)
{
    const LockCase cases[] = {
        // A defined locked text locks text and locale.
        {{{"en-uk", "Colour"}, {"sv", "F\xe4rg"}},
         {{"sv", "F\xe4rg"}},
         "English (United Kingdom)=Colour|Swedish (Sweden)=F\xe4rg#@",
         false},
        // An undefined one locks only the text and may match any locale.
        {{{"sv", "Hus"}},
         {{"", "Hus"}},
         "English (United Kingdom)=|Swedish (Sweden)=Hus#",
         false},
        {{{"en-uk", "House"}, {"", "Hus"}},
         {{"", "Hus"}, {"en-uk", "House"}},
         "English (United Kingdom)=House#@|Undefined language=Hus#",
         false},
        // A text that is not there, or a second pending undefined text.
        {{{"en-uk", "Colour"}}, {{"sv", "F\xe4rg"}}, "English (United Kingdom)=Colour", true},
        {{{"en-uk", "Colour"}}, {{"en-uk", "Color"}}, "English (United Kingdom)=Colour", true},
        {{{"en-uk", "A"}, {"sv", "B"}}, {{"", "A"}, {"", "B"}}, "English (United Kingdom)=A|Swedish (Sweden)=B",
         true},
        {{{"en-uk", "A"}}, {{"", "Z"}}, "English (United Kingdom)=A", true},
    };
    for (const LockCase &c : cases) {
        langstr *value = make_ls(c.value);
        langstr *locked = make_ls(c.locked);
        SCOPED_TRACE(describe(value) + " / " + describe(locked));
        std::string message;
        Script script;
        if (c.fails)
            script.when_window("Error", [&] { message = take_message(); });
        GtkWidget *editor = ov_langstr_editor_new(0, value, locked, nullptr, FALSE);
        g_object_ref_sink(editor);
        EXPECT_TRUE(script.done());
        EXPECT_EQ(describe_entries(OV_LANGSTR_EDITOR(editor)), c.entries);
        langstr *read = nullptr;
        EXPECT_EQ(bool(ov_langstr_editor_get_value(OV_LANGSTR_EDITOR(editor), &read)), !c.fails);
        if (c.fails) {
            EXPECT_NE(message.find("An error occured with the user interface."), std::string::npos);
            EXPECT_STREQ(ov_error_get(), "An error occured with the user interface.");
            ov_error_clear();
        } else {
            EXPECT_TRUE(ov_langstr_editor_has_locked_texts(OV_LANGSTR_EDITOR(editor)));
        }
        ov_langstr_free(read);
        gtk_widget_destroy(editor);
        g_object_unref(editor);
        ov_langstr_free(value);
        ov_langstr_free(locked);
    }
}

TEST_F(LangstrWindow, EditorDeletesClearsAndReads)
{
    langstr *value = make_ls({{"sv", "Hus"}, {"", "Casa"}});
    langstr *locked = make_ls({{"", "Casa"}});
    OvLocaleList *primary = make_list({"da", "sv", "en-uk"});
    GtkWidget *editor_widget = g_object_ref_sink(ov_langstr_editor_new(0, value, locked, primary, TRUE));
    auto *editor = OV_LANGSTR_EDITOR(editor_widget);
    int shrunk = 0;
    g_signal_connect_swapped(editor, "shrunk", G_CALLBACK(+[](int *count) { ++*count; }), &shrunk);

    // The chain order, and the empty entry for the active locale in its place.
    EXPECT_EQ(describe_entries(editor), "English (United Kingdom)=|Swedish (Sweden)=Hus|Undefined language=Casa#");
    // The add list: the active locale and the primary ones, once each, sorted.
    std::string offered;
    for (const OvLocaleListLink *link : *ov_langstr_editor_get_add_translation_locales(editor))
        offered += std::string(offered.empty() ? "" : " ") + link->locale->tag;
    EXPECT_EQ(offered, "da en-uk sv");

    // An undefined text equal to a defined one is dropped when read.
    gtk_entry_set_text(GTK_ENTRY(ov_translation_entry_get_text_widget(nth_entry(editor, 0))), "  Casa ");
    langstr *read = nullptr;
    ASSERT_TRUE(ov_langstr_editor_get_value(editor, &read));
    EXPECT_EQ(describe(read), "en-uk=Casa sv=Hus");
    ov_langstr_free(read);

    // Deleting the Swedish one, then clearing: the locked text stays.
    gtk_button_clicked(GTK_BUTTON(ov_translation_entry_get_delete_button(nth_entry(editor, 1))));
    EXPECT_EQ(shrunk, 1);
    EXPECT_EQ(describe_entries(editor), "English (United Kingdom)=Casa|Undefined language=Casa#");
    ov_langstr_editor_clear(editor);
    EXPECT_EQ(shrunk, 2);
    EXPECT_EQ(describe_entries(editor), "Undefined language=Casa#");
    read = nullptr;
    ASSERT_TRUE(ov_langstr_editor_get_value(editor, &read));
    EXPECT_EQ(describe(read), "=Casa");
    ov_langstr_free(read);
    gtk_widget_destroy(editor_widget);
    g_object_unref(editor_widget);

    // Deleting the only entry leaves a new empty one for the active locale.
    ov_ovinternal_set_active_locale(ov_locale_get_by_tag("sv"));
    editor_widget = g_object_ref_sink(ov_langstr_editor_new(1, nullptr, nullptr, nullptr, FALSE));
    editor = OV_LANGSTR_EDITOR(editor_widget);
    g_signal_connect_swapped(editor, "shrunk", G_CALLBACK(+[](int *count) { ++*count; }), &shrunk);
    ov_spacifying_text_view_set_text(
        OV_SPACIFYING_TEXT_VIEW(ov_translation_entry_get_text_widget(nth_entry(editor, 0))), "Hus");
    gtk_button_clicked(GTK_BUTTON(ov_translation_entry_get_delete_button(nth_entry(editor, 0))));
    EXPECT_EQ(describe_entries(editor), "Swedish (Sweden)=");
    EXPECT_EQ(shrunk, 2); // multi-line editors never shrink
    langstr *old = make_ls({{"sv", "old"}});
    read = old; // an out value: overwritten, not freed
    ASSERT_TRUE(ov_langstr_editor_get_value(editor, &read));
    EXPECT_EQ(read, nullptr);
    ov_langstr_free(old);
    gtk_widget_destroy(editor_widget);
    g_object_unref(editor_widget);

    ov_langstr_free(value);
    ov_langstr_free(locked);
    ov_locale_list_destroy(primary);
}

TEST_F(LangstrWindow, TranslationEntrySpellChecksInItsLanguage)
{
    GtkWidget *window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    ov_window_stack_push_window(GTK_WINDOW(window), OV_WINDOW_STACK_POSITION_CENTER);
    GtkWidget *entry_widget = ov_translation_entry_new(0, ov_locale_get_uk_english(), "A scrached frame", nullptr, FALSE);
    gtk_container_add(GTK_CONTAINER(window), entry_widget);
    gtk_widget_show(entry_widget);
    show_and_wait(window);
    auto *entry = OV_TRANSLATION_ENTRY(entry_widget);
    auto *field = GTK_ENTRY(ov_translation_entry_get_text_widget(entry));
    EXPECT_EQ(gtk_entry_get_width_chars(field), 68);
    GspellChecker *checker = ov_spell_check_get_entry_checker(field);
    ASSERT_NE(checker, nullptr);
    EXPECT_TRUE(gspell_entry_get_inline_spell_checking(gspell_entry_get_from_gtk_entry(field)));
    EXPECT_STREQ(gspell_language_get_code(gspell_checker_get_language(checker)), "en_GB");
    EXPECT_FALSE(gspell_checker_check_word(checker, "scrached", -1, nullptr));
    EXPECT_TRUE(gspell_checker_check_word(checker, "frame", -1, nullptr));

    // The picker offers the entry's own locale and the active one; picking
    // another language re-applies spell checking and focuses the field.
    int changed = 0;
    g_signal_connect_swapped(entry, "locale-changed", G_CALLBACK(+[](int *count) { ++*count; }), &changed);
    Script script;
    script.then([&] { click(ov_translation_entry_get_picker(entry)); });
    script.when_menu([&] { activate_menu_item("All languages/Swedish/Sweden"); });
    while (!script.done())
        wait_ms(20);
    EXPECT_EQ(changed, 1);
    EXPECT_EQ(ov_translation_entry_get_locale(entry), ov_locale_get_by_tag("sv"));
    EXPECT_STREQ(gspell_language_get_code(gspell_checker_get_language(checker)), "sv_SE");
    EXPECT_EQ(gtk_window_get_focus(GTK_WINDOW(window)), GTK_WIDGET(field));
    // A language without a dictionary turns inline checking off.
    ov_locale_picker_select(OV_LOCALE_PICKER(ov_translation_entry_get_picker(entry)),
                            ov_locale_get_by_tag("fr-be"), TRUE);
    EXPECT_FALSE(gspell_entry_get_inline_spell_checking(gspell_entry_get_from_gtk_entry(field)));

    // Locking.
    ov_translation_entry_lock_text(entry);
    ov_translation_entry_lock_locale(entry);
    EXPECT_TRUE(ov_translation_entry_is_text_locked(entry));
    EXPECT_FALSE(gtk_widget_get_sensitive(ov_translation_entry_get_delete_button(entry)));
    EXPECT_FALSE(gtk_widget_get_sensitive(ov_translation_entry_get_picker(entry)));
    ov_window_stack_pop_window();
    gtk_widget_destroy(window);
}

TEST_F(LangstrWindow, LangstrEntryOpensTheWindowAndFollowsTheLocale)
{
    GtkWidget *window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    ov_window_stack_push_window(GTK_WINDOW(window), OV_WINDOW_STACK_POSITION_CENTER);
    GtkWidget *box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_container_add(GTK_CONTAINER(window), box);
    GtkWidget *entry_widget = ov_langstr_entry_new();
    auto *entry = OV_LANGSTR_ENTRY(entry_widget);
    langstr *value = make_ls({{"en-uk", "Colour"}});
    ov_langstr_entry_set_value(entry, nullptr, nullptr);
    GtkWidget *label = ov_langstr_entry_get_label(entry);
    EXPECT_FALSE(gtk_widget_get_visible(label));
    ov_langstr_entry_set_value(entry, value, nullptr);
    EXPECT_TRUE(gtk_widget_get_visible(label));
    OvLocaleList *additional = make_list({"sv"});
    ov_langstr_entry_set_additional_locales(entry, additional);
    ov_locale_list_destroy(additional);
    // A second label elsewhere; both relabel at once.
    GtkWidget *other = ov_langstr_label_new(value);
    gtk_box_pack_start(GTK_BOX(box), entry_widget, FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(box), other, FALSE, FALSE, 0);
    gtk_widget_show_all(box);
    show_and_wait(window);
    int changed = 0;
    g_signal_connect_swapped(entry, "changed", G_CALLBACK(+[](int *count) { ++*count; }), &changed);

    Script script;
    script.then([&] { click(entry_widget); });
    script.when_window(title, [&] { click(ov_langstr_editor_get_add_button(editor_in(top_window()))); });
    script.when_menu([&] { activate_menu_item("Swedish (Sweden)"); });
    script.when(window_with_entries(2), [&] {
        type_text(gtk_window_get_focus(top_window()), "F\xc3\xa4rg");
        click_button("OK");
    });
    while (!script.done())
        wait_ms(20);
    EXPECT_EQ(changed, 1);
    langstr *got = ov_langstr_entry_get_value(entry);
    EXPECT_EQ(describe(got), "en-uk=Colour sv=F\xe4rg");
    ov_langstr_free(got);
    EXPECT_STREQ(gtk_label_get_text(GTK_LABEL(label)), "Colour");
    ov_ovinternal_set_active_locale(ov_locale_get_by_tag("sv"));
    EXPECT_STREQ(gtk_label_get_text(GTK_LABEL(label)), "F\xc3\xa4rg");
    ov_ovinternal_set_active_locale(ov_locale_get_by_tag("da"));
    EXPECT_STREQ(gtk_label_get_text(GTK_LABEL(label)), "Colour");
    EXPECT_STREQ(gtk_label_get_text(GTK_LABEL(other)), "Colour");
    ov_window_stack_pop_window();
    gtk_widget_destroy(window);
    ov_langstr_free(value);
}

GtkWidget *find_dropdown_panel()
{
    GList *toplevels = gtk_window_list_toplevels();
    GtkWidget *found = nullptr;
    for (GList *l = toplevels; l != nullptr && found == nullptr; l = l->next)
        if (OV_IS_DROPDOWN_PANEL(l->data) && gtk_widget_get_visible(GTK_WIDGET(l->data)))
            found = GTK_WIDGET(l->data);
    g_list_free(toplevels);
    return found;
}

// A press of the first button in the panel's own window outside its allocation.
void press_outside(GtkWidget *panel)
{
    GdkEvent *event = gdk_event_new(GDK_BUTTON_PRESS);
    event->button.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(panel)));
    event->button.x = -5;
    event->button.y = -5;
    event->button.button = 1;
    event->button.time = GDK_CURRENT_TIME;
    gdk_event_set_device(event, gdk_seat_get_pointer(gdk_display_get_default_seat(gdk_display_get_default())));
    gtk_main_do_event(event);
    gdk_event_free(event);
}

TEST_F(LangstrWindow, StatusSymbolOpensTheDropdownDisplay)
{
    GtkWidget *window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    ov_window_stack_push_window(GTK_WINDOW(window), OV_WINDOW_STACK_POSITION_CENTER);
    langstr *value = make_ls({{"en-uk", "Colour"}, {"sv", "F\xe4rg"}});
    GtkWidget *icon = ov_langstr_status_icon_new(value);
    gtk_container_add(GTK_CONTAINER(window), icon);
    gtk_widget_show(icon);
    show_and_wait(window);
    std::string shown;
    int width = 0, height = 0;
    Script script;
    script.then([&] { click(ov_langstr_status_icon_get_symbol(OV_LANGSTR_STATUS_ICON(icon))); });
    script.when([] { return find_dropdown_panel() != nullptr; },
                [&] {
                    GtkWidget *panel = find_dropdown_panel();
                    GtkWidget *display =
                        find_widget(panel, [](GtkWidget *w) { return OV_IS_LANGSTR_DISPLAY(w); });
                    ASSERT_NE(display, nullptr);
                    gtk_widget_get_size_request(display, &width, &height);
                    GtkTextBuffer *buffer =
                        gtk_text_view_get_buffer(ov_langstr_display_get_text_view(OV_LANGSTR_DISPLAY(display)));
                    GtkTextIter start, end;
                    gtk_text_buffer_get_bounds(buffer, &start, &end);
                    ov::GStr text(gtk_text_buffer_get_text(buffer, &start, &end, FALSE));
                    shown = text.get();
                    press_outside(panel);
                });
    while (!script.done())
        wait_ms(20);
    EXPECT_EQ(find_dropdown_panel(), nullptr);
    EXPECT_EQ(shown, "English (United Kingdom):\nColour\n\nSwedish (Sweden):\nF\xc3\xa4rg");
    EXPECT_EQ(width, 500);
    EXPECT_EQ(height, 140);
    ov_window_stack_pop_window();
    gtk_widget_destroy(window);
    ov_langstr_free(value);
}

} // namespace
