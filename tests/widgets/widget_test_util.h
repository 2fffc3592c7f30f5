// Short forms shared by the widget tests.
#pragma once

#include "lang/lang_test_util.h"
#include "support/gui_driver.h"
#include "support/test_support.h"

#include "core/raii.h"
#include "frame/window_stack.h"
#include "gui/gui.h"
#include "lang/active_locale.h"
#include "widgets/langstr_editor.h"
#include "widgets/translation_entry.h"

#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace ov::test
{

// A window holding a vertical box, destroyed with the scope.
struct TestWindow {
    GtkWidget *window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    GtkWidget *box = ov_gui_add_vbox(GTK_CONTAINER(window), TRUE);
    GtkWidget *pack(GtkWidget *widget, gboolean expand = FALSE)
    {
        return ov_gui_pack_widget(GTK_BOX(box), widget, expand);
    }
    void show() { show_and_wait(window); }
    ~TestWindow()
    {
        gtk_widget_destroy(window);
        flush_events();
    }
};

// Keeps the process-wide system and active locales as they were.
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

inline void set_active(const char *tag)
{
    ov_ovinternal_set_active_locale(ov_locale_get_by_tag(tag));
}

inline bool contains(const std::string &s, const char *part)
{
    return s.find(part) != std::string::npos;
}

// Lets the main loop run until every step of the script ran.
inline void finish(const Script &script)
{
    while (!script.done())
        wait_ms(20);
}

// Does action with the steps answers adds to a script of its own (the
// windows and menus it opens answered), and waits until they all ran.
inline void answered(const std::function<void(Script &)> &answers, const std::function<void()> &action)
{
    Script script;
    answers(script);
    action();
    finish(script);
}

// The first shown top-level window that matches, or null.
inline GtkWidget *shown_toplevel(const std::function<bool(GtkWidget *)> &matches)
{
    GList *all = gtk_window_list_toplevels();
    GtkWidget *found = nullptr;
    for (GList *l = all; l != nullptr && found == nullptr; l = l->next)
        if (matches(GTK_WIDGET(l->data)) && gtk_widget_get_visible(GTK_WIDGET(l->data)))
            found = GTK_WIDGET(l->data);
    g_list_free(all);
    return found;
}

// Counts the signals of that name the instance emits.
inline void count_signal(gpointer instance, const char *signal, int &count)
{
    g_signal_connect_swapped(instance, signal, G_CALLBACK(+[](int *n) { ++*n; }), &count);
}

// The langstr editor of the window on top (the multilingual text window), or null.
inline OvLangstrEditor *top_langstr_editor()
{
    return OV_LANGSTR_EDITOR(
        find_widget(GTK_WIDGET(top_window()), [](GtkWidget *w) { return OV_IS_LANGSTR_EDITOR(w); }));
}

inline std::vector<OvTranslationEntry *> entries_of(OvLangstrEditor *editor)
{
    std::vector<OvTranslationEntry *> result;
    GList *entries = editor != nullptr ? ov_langstr_editor_get_entries(editor) : nullptr;
    for (GList *l = entries; l != nullptr; l = l->next)
        result.push_back(OV_TRANSLATION_ENTRY(l->data));
    g_list_free(entries);
    return result;
}

// The text field of the nth translation in the window on top, or null.
inline GtkWidget *translation_field(std::size_t n)
{
    const std::vector<OvTranslationEntry *> entries = entries_of(top_langstr_editor());
    return n < entries.size() ? ov_translation_entry_get_text_widget(entries[n]) : nullptr;
}

// UK English active, the window stack ready, the error buffer empty.
struct GuiTest : ErrorCleared {
    LocaleState keep_;
    void SetUp() override
    {
        ErrorCleared::SetUp();
        set_active("en-uk");
        ov_window_stack_init();
    }
    void TearDown() override
    {
        ov_window_stack_clean_up();
        flush_events();
        ErrorCleared::TearDown();
    }
};

} // namespace ov::test
