// Short forms shared by the widget tests.
#pragma once

#include "lang/lang_test_util.h"
#include "support/gui_driver.h"
#include "support/test_support.h"

#include "core/raii.h"
#include "gui/gui.h"
#include "lang/active_locale.h"

#include <sstream>
#include <string>

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

// A list from tags: "sv da".
inline LocaleListPtr list_of(const char *tags)
{
    LocaleListPtr list(ov_locale_list_new());
    std::istringstream words(tags);
    for (std::string tag; words >> tag;)
        ov_locale_list_add_last(list.get(), locale(tag.c_str()));
    return list;
}

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

// Counts the signals of that name the instance emits.
inline void count_signal(gpointer instance, const char *signal, int &count)
{
    g_signal_connect_swapped(instance, signal, G_CALLBACK(+[](int *n) { ++*n; }), &count);
}

} // namespace ov::test
