// Multilingual labels, displays, status icons and the langstr editor and window.
#include "widgets/widget_test_util.h"

#include "core/error.h"
#include "widgets/active_locale_picker.h"
#include "widgets/langstr_display.h"
#include "widgets/langstr_editor.h"
#include "widgets/langstr_entry.h"
#include "widgets/langstr_label.h"
#include "widgets/langstr_status_icon.h"
#include "widgets/langstr_window.h"
#include "widgets/locale_picker.h"
#include "widgets/translation_entry.h"

#include <gtest/gtest.h>

using namespace ov::test;

namespace
{

constexpr const char *title = "Enter multilingual text";

using Langstr = GuiTest;

// The text a display shows (without its anchored children).
std::string shown_text(GtkWidget *display)
{
    GtkTextBuffer *buffer =
        gtk_text_view_get_buffer(ov_langstr_display_get_text_view(OV_LANGSTR_DISPLAY(display)));
    GtkTextIter start, end;
    gtk_text_buffer_get_bounds(buffer, &start, &end);
    return ov::GStr(gtk_text_buffer_get_text(buffer, &start, &end, FALSE)).get();
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
    auto texts = [&] { return label_texts(w.box) + "|" + shown_text(display); };
    set_active("da");
    EXPECT_EQ(texts(), "Colour||House|Danish|Danish|Colour  ");
    // Picking in one active locale picker switches them all.
    Script script;
    script.when_menu([] { activate_menu_item("Swedish/Sweden"); });
    click(pickers[0]);
    EXPECT_EQ(texts(), "F\xc3\xa4rg||Hus|Swedish (Sweden)|Swedish (Sweden)|F\xc3\xa4rg  ");

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

TEST_F(Langstr, StatusIconDestroyedWithItsCentringPendingLeavesNothingBehind)
{
    TestWindow w;
    GtkWidget *icon = w.pack(ov_langstr_status_icon_new(langstr_of("en-uk=Colour sv=F\xe4rg").get()));
    gtk_widget_set_size_request(icon, -1, 31);
    w.show();
    // Destroyed with the centring pending: a source left behind would touch the freed icon.
    gtk_widget_queue_resize(icon);
    GdkRectangle allocation = {0, 0, 20, 20};
    gtk_widget_size_allocate(icon, &allocation);
    gtk_widget_destroy(icon);
    wait_ms(30);
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

// A step that keeps the texts of the message box on top, then closes it.
Script::Action take_message(std::string &texts)
{
    return [&texts] {
        texts = label_texts(GTK_WIDGET(top_window()));
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

gboolean run_window(LangstrPtr &value, gboolean allow_empty = FALSE, const char *label = nullptr)
{
    langstr *ls = value.release();
    gboolean ok = ov_langstr_window_run(OV_LANGSTR_MODE_SINGLE_LINE, &ls, nullptr, nullptr, 0, allow_empty,
                                        nullptr, label, nullptr, allow_empty ? "Rename" : nullptr);
    value.reset(ls);
    return ok;
}

} // namespace

TEST_F(Langstr, WindowRefusesEmptyOrRepeatedTextsAndKeepsTheValueOnCancelOrClose)
{
    LangstrPtr value;
    std::string message, labels, order, menu;
    Script empty;
    empty.when_window(title, [&] {
        EXPECT_EQ(gtk_window_get_focus(top_window()), translation_field(0));
        click_button("OK");
    });
    empty.when_window("Error", take_message(message)).when_window(title, [] {
        type_text(translation_field(0), "Colour");
        click_button("OK");
    });
    EXPECT_TRUE(run_window(value));
    EXPECT_TRUE(contains(message, "You haven't entered anything.")) << message;
    EXPECT_EQ(describe(value.get()), "en-uk=Colour");

    value = langstr_of("en-uk=Colour sv=F\xe4rg");
    Script repeated;
    repeated.when_window(
        title, [&] { click(ov_translation_entry_get_picker(entries_of(top_langstr_editor())[0])); });
    repeated.when_menu([&] {
        menu = menu_labels(open_menu());
        activate_menu_item("All languages/Swedish/Sweden");
    });
    repeated.when(window_with_entries(2), [&] {
        order = describe_entries(top_langstr_editor());
        click_button("OK");
    });
    repeated.when_window("Error", take_message(message)).when_window(title, [] { click_button("Cancel"); });
    EXPECT_FALSE(run_window(value));
    // Only the entry's own locale and the active one are offered first; the
    // changed entry moves behind the other Swedish one.
    EXPECT_EQ(menu, "English (United Kingdom)|-|All languages >");
    EXPECT_EQ(order, "sv=F\xe4rg|sv=Colour");
    const char *twice = "Each language may only appear once. Swedish (Sweden) appears several times.";
    EXPECT_TRUE(contains(message, twice)) << message;
    EXPECT_EQ(describe(value.get()), "en-uk=Colour sv=F\xe4rg");

    // With empty text allowed a cleared editor gives nothing.
    Script allowed;
    allowed.when_window(title, [&labels] {
        labels = label_texts(GTK_WIDGET(top_window()));
        ov_langstr_editor_clear(top_langstr_editor());
        click_button("Rename");
    });
    EXPECT_TRUE(run_window(value, TRUE, "Report type"));
    EXPECT_TRUE(contains(labels, "Report type:") && !contains(labels, "Required")) << labels;
    EXPECT_EQ(value, nullptr);
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
                 // A locked text that is not there.
                 {"en-uk=Colour", "en-uk=Color", "en-uk=Colour", true}};
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
    auto *editor = OV_LANGSTR_EDITOR(
        w.pack(ov_langstr_editor_new(OV_LANGSTR_MODE_SINGLE_LINE, value.get(), locked.get(), nullptr, TRUE)));
    int shrunk = 0;
    count_signal(editor, "shrunk", shrunk);
    EXPECT_EQ(describe_entries(editor), "en-uk=|sv=Hus|=Casa#");
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
}
