#include "app/keyboard_shortcuts_window.h"

#include <array>
#include <span>

namespace
{

struct Shortcut {
    const char *accelerator; // in gtk_accelerator_parse's form, several separated by spaces
    const char *title;
};

struct Group {
    const char *title;
    std::span<const Shortcut> shortcuts;
};

constexpr std::array document_keys = {
    Shortcut{"<Primary>s", "Save"},
    Shortcut{"<Primary>w", "Close"},
    Shortcut{"F8", "Next text without a translation"},
    Shortcut{"<Shift>F8", "Previous text without a translation"},
    Shortcut{"<Primary>question", "Keyboard shortcuts"},
};

constexpr std::array moving_keys = {
    Shortcut{"Tab <Shift>Tab", "Into and out of the sheet"},
    Shortcut{"Up Down", "Previous or next title, row or field"},
    Shortcut{"Home End", "First or last"},
    Shortcut{"Page_Up Page_Down", "A page up or down"},
};

constexpr std::array editing_keys = {
    Shortcut{"Menu <Shift>F10", "Menu of the title or row"},
    Shortcut{"Return F2", "Edit the header, label or text"},
    Shortcut{"<Alt>Up <Alt>Down", "Move the segment, block or row"},
    Shortcut{"Insert", "Add a row below"},
    Shortcut{"Delete", "Delete the segment, block or row"},
};

constexpr std::array groups = {
    Group{"Document", document_keys},
    Group{"Moving in the sheet", moving_keys},
    Group{"Editing the sheet", editing_keys},
};

constexpr const char *window_key = "orvane-keyboard-shortcuts-window";

} // namespace

GtkWidget *ov_keyboard_shortcuts_window_new(GtkWindow *parent)
{
    GtkWidget *section = GTK_WIDGET(
        g_object_new(GTK_TYPE_SHORTCUTS_SECTION, "section-name", "editor", "visible", TRUE, nullptr));
    for (const Group &group : groups) {
        GtkWidget *box = GTK_WIDGET(
            g_object_new(GTK_TYPE_SHORTCUTS_GROUP, "title", group.title, "visible", TRUE, nullptr));
        for (const Shortcut &shortcut : group.shortcuts)
            gtk_container_add(
                GTK_CONTAINER(box),
                GTK_WIDGET(g_object_new(GTK_TYPE_SHORTCUTS_SHORTCUT, "accelerator", shortcut.accelerator,
                                        "title", shortcut.title, "visible", TRUE, nullptr)));
        gtk_container_add(GTK_CONTAINER(section), box);
    }
    GtkWidget *window = GTK_WIDGET(g_object_new(GTK_TYPE_SHORTCUTS_WINDOW, "modal", FALSE, nullptr));
    gtk_window_set_title(GTK_WINDOW(window), "Keyboard shortcuts");
    // The window's own header reads "Shortcuts" with a single section.
    GtkWidget *bar = gtk_window_get_titlebar(GTK_WINDOW(window));
    GtkWidget *titles =
        GTK_IS_HEADER_BAR(bar) ? gtk_header_bar_get_custom_title(GTK_HEADER_BAR(bar)) : nullptr;
    GtkWidget *label =
        GTK_IS_STACK(titles) ? gtk_stack_get_child_by_name(GTK_STACK(titles), "title") : nullptr;
    if (GTK_IS_LABEL(label))
        gtk_label_set_text(GTK_LABEL(label), "Keyboard shortcuts");
    gtk_container_add(GTK_CONTAINER(window), section);
    if (parent != nullptr) {
        gtk_window_set_transient_for(GTK_WINDOW(window), parent);
        gtk_window_set_destroy_with_parent(GTK_WINDOW(window), TRUE);
    }
    return window;
}

void ov_keyboard_shortcuts_window_present(GtkWindow *parent)
{
    g_return_if_fail(GTK_IS_WINDOW(parent));
    auto *window = static_cast<GtkWidget *>(g_object_get_data(G_OBJECT(parent), window_key));
    if (window == nullptr) {
        window = ov_keyboard_shortcuts_window_new(parent);
        g_object_set_data(G_OBJECT(parent), window_key, window);
        g_signal_connect_swapped(window, "destroy",
                                 G_CALLBACK(+[](GObject *p) { g_object_set_data(p, window_key, nullptr); }),
                                 parent);
    }
    gtk_window_present(GTK_WINDOW(window));
}
