#include "frame/workspace_gui.h"

#include "core/error.h"
#include "core/fs_utils.h"
#include "core/raii.h"
#include "frame/file_dialog.h"
#include "frame/message.h"
#include "frame/window_stack.h"
#include "frame/workspace.h"
#include "gui/gui.h"

#include <gtk/gtk.h>

namespace
{

constexpr const char *window_title = "Orvane";
constexpr const char *page_title = "Orvane Workspace Setup";
constexpr const char *workspace_folder_name = "Orvane Workspace";

constexpr const char *introduction_format =
    "Before you can start using Orvane we need to create a workspace for you. This is a personal\n"
    "folder on the computer where the following things are stored:\n\n"
    "- The object files you are working with\n"
    "- Your remark codesets\n"
    "- Your object file templates\n"
    "- Your print layouts\n"
    "- Your personal program settings\n\n"
    "The typical place for the workspace is in a folder named \"%s\" in \"My Documents\",\n"
    "but this guide will let you choose a different location should you want to.\n\n"
    "Click [Next] to continue.";

constexpr const char *confirmation_text =
    "Please make sure that the workspace is located in a folder which can always be reached from\n"
    "this computer. For instance, if this is a portable computer then you should not put it on a server on\n"
    "the network. This is because when you bring your computer with you into the field, you will want\n"
    "to also bring the material you are working with.\n\n"
    "Click [Apply] to create your workspace.";

constexpr const char *summary_text =
    "Your workspace was successfully created, and you can now start using Orvane.\n\n"
    "Click [Close] to continue.";

enum : int { INTRODUCTION_PAGE = 0, CONFIRMATION_PAGE = 1, SUMMARY_PAGE = 2 };

struct Assistant {
    GtkWidget *location_entry;
    gboolean created;
};

void add_page(GtkAssistant *assistant, GtkWidget *page, GtkAssistantPageType type)
{
    ov_gui_set_default_surrounding_margin(page);
    gtk_widget_show_all(page);
    gtk_assistant_append_page(assistant, page);
    gtk_assistant_set_page_title(assistant, page, page_title);
    gtk_assistant_set_page_type(assistant, page, type);
    gtk_assistant_set_page_complete(assistant, page, TRUE);
}

void on_browse_clicked(GtkButton *, gpointer data)
{
    auto *self = static_cast<Assistant *>(data);
    const ov::GStr parent =
        ov::gstr(ov_file_dialog_get_folder_path("Select a parent folder for your workspace"));
    if (!parent)
        return;
    const ov::GStr path =
        ov::gstr(ov_fs_utils_create_path_in_folder(parent.get(), workspace_folder_name, nullptr));
    gtk_entry_set_text(GTK_ENTRY(self->location_entry), path.get());
}

// Creates the workspace at the entered location; TRUE on success. Every
// failure has been shown to the user.
gboolean create_at_entered_location(Assistant *self)
{
    ov::GStr path = ov::gstr(g_strstrip(g_strdup(gtk_entry_get_text(GTK_ENTRY(self->location_entry)))));
    ov_fs_utils_strip_ending_path_delimiters(path.get());
    OvFileInfo info;
    ov_error_clear();
    if (!ov_fs_utils_get_info(path.get(), &info)) {
        ov_error_append("Cannot access the specified location.");
        ov_message_show_error(ov_error_get());
        ov_error_clear();
        return FALSE;
    }
    if (info.exists) {
        ov_message_show_error(
            "There is already a folder or a file with that name.\n\nPlease choose a new location.");
        return FALSE;
    }
    if (!ov_workspace_create(path.get())) {
        ov_error_append("Creating a workspace at the chosen location failed.");
        ov_message_show_error(ov_error_get());
        ov_error_clear();
        return FALSE;
    }
    return TRUE;
}

void on_apply(GtkAssistant *, gpointer data)
{
    auto *self = static_cast<Assistant *>(data);
    self->created = create_at_entered_location(self);
}

// Only asked when moving forward: after Apply the summary follows a created
// workspace, and the introduction a failure.
int next_page(int current, gpointer data)
{
    const auto *self = static_cast<const Assistant *>(data);
    switch (current) {
    case INTRODUCTION_PAGE:
        return CONFIRMATION_PAGE;
    case CONFIRMATION_PAGE:
        return self->created ? SUMMARY_PAGE : INTRODUCTION_PAGE;
    default:
        return -1;
    }
}

// The assistant names itself after the current page; the window keeps the
// program's name.
void keep_window_title(GObject *object, GParamSpec *, gpointer)
{
    if (g_strcmp0(gtk_window_get_title(GTK_WINDOW(object)), window_title) != 0)
        gtk_window_set_title(GTK_WINDOW(object), window_title);
}

void destroy_assistant(GtkAssistant *assistant, gpointer)
{
    gtk_widget_destroy(GTK_WIDGET(assistant));
}

GtkWidget *create_confirmation_page(Assistant *self)
{
    GtkWidget *page = ov_gui_create_vbox(TRUE);
    ov_gui_pack_input_field_label(GTK_BOX(page), "Workspace location", FALSE);
    GtkWidget *row = ov_gui_pack_hbox(GTK_BOX(page), FALSE, TRUE);
    const ov::GStr default_path = ov::gstr(ov_workspace_get_default_folder_path());
    self->location_entry =
        ov_gui_pack_entry(GTK_BOX(row), TRUE, default_path ? default_path.get() : "", FALSE);
    GtkWidget *browse = ov_gui_pack_button(GTK_BOX(row), "Browse...", FALSE);
    g_signal_connect(browse, "clicked", G_CALLBACK(on_browse_clicked), self);
    GtkWidget *text = ov_gui_pack_label(GTK_BOX(page), confirmation_text, 0.0f, 0.0f);
    gtk_widget_set_margin_top(text, ov_gui_get_default_margin());
    return page;
}

} // namespace

gboolean ov_workspace_gui_create_workspace()
{
    Assistant self{};
    GtkWidget *widget = gtk_assistant_new();
    auto *assistant = GTK_ASSISTANT(widget);
    gtk_window_set_title(GTK_WINDOW(widget), window_title);

    const ov::GStr introduction = ov::gstr(g_strdup_printf(introduction_format, workspace_folder_name));
    add_page(assistant, ov_gui_create_label(introduction.get(), 0.0f, 0.0f), GTK_ASSISTANT_PAGE_INTRO);
    add_page(assistant, create_confirmation_page(&self), GTK_ASSISTANT_PAGE_CONFIRM);
    add_page(assistant, ov_gui_create_label(summary_text, 0.0f, 0.0f), GTK_ASSISTANT_PAGE_SUMMARY);

    gtk_assistant_set_forward_page_func(assistant, next_page, &self, nullptr);
    g_signal_connect(widget, "apply", G_CALLBACK(on_apply), &self);
    g_signal_connect(widget, "cancel", G_CALLBACK(destroy_assistant), nullptr);
    g_signal_connect(widget, "close", G_CALLBACK(destroy_assistant), nullptr);
    g_signal_connect(widget, "notify::title", G_CALLBACK(keep_window_title), nullptr);
    ov_window_stack_run_window(GTK_WINDOW(widget), OV_WINDOW_STACK_POSITION_CENTER, nullptr, nullptr,
                               nullptr);
    return self.created;
}
