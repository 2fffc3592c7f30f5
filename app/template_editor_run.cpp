#include "app/template_editor_run.h"

#include "app/app_icon.h"
#include "app/app_version.h"
#include "app/component_gui_editor_window.h"
#include "app/component_gui_metadata_editor.h"
#include "core/error.h"
#include "core/file_type.h"
#include "core/fs_utils.h"
#include "core/raii.h"
#include "docs/template.h"
#include "docs/template_io.h"
#include "frame/file_dialog.h"
#include "frame/message.h"
#include "frame/user_session.h"
#include "frame/window_stack.h"
#include "gui/gui.h"

#include <memory>

namespace
{

constexpr int default_width = 640;
constexpr int default_height = 480;

using TemplatePtr = ov::Owned<ov_template, ov_template_destroy>;

// The window's state while it runs: the template it edits and where to.
struct EditingWindow {
    const char *path;
    ov_template *tmpl;
    OvComponentGuiEditorWindow *window;
    OvComponentGuiMetadataEditor *metadata;
};

void show_error_buffer()
{
    ov_message_show_error(ov_error_get());
    ov_error_clear();
}

void on_save(OvComponentGuiEditorWindow *, gpointer data)
{
    auto *self = static_cast<EditingWindow *>(data);
    if (!ov_component_gui_metadata_editor_replace_metadata(self->metadata, &self->tmpl->name,
                                                           &self->tmpl->author, &self->tmpl->version)) {
        show_error_buffer();
        return;
    }
    if (!ov_template_io_write_to_file(self->tmpl, self->path)) {
        show_error_buffer();
        return;
    }
    ov_component_gui_editor_window_set_file_has_been_modified(self->window, FALSE);
}

// The template at path, or a new one when there is no such file; null after
// telling the user why it cannot be read.
ov_template *load_template(const char *path, gboolean *out_is_new)
{
    OvFileInfo info;
    if (!ov_fs_utils_get_info(path, &info)) {
        ov_error_clear();
        ov_message_show_error_utf8_printf("Something went wrong when accessing the template file:\n\n%s",
                                          path);
        return nullptr;
    }
    *out_is_new = !info.exists;
    if (!info.exists)
        return ov_template_new();
    ov_template *tmpl = ov_template_io_read_from_file(path);
    if (tmpl == nullptr) {
        ov_error_append_utf8_printf("Error when loading the template file:\n\n%s", path);
        show_error_buffer();
    }
    return tmpl;
}

} // namespace

void ov_template_editor_run_editing_window(const char *path)
{
    gboolean is_new = FALSE;
    const TemplatePtr tmpl(load_template(path, &is_new));
    if (!tmpl)
        return;
    EditingWindow self{path, tmpl.get(), nullptr, nullptr};
    GtkWidget *window = ov_component_gui_editor_window_new(ov_app_name, path, is_new);
    self.window = OV_COMPONENT_GUI_EDITOR_WINDOW(window);
    gtk_window_set_default_size(GTK_WINDOW(window), default_width, default_height);

    GtkWidget *box = ov_gui_add_vbox(
        GTK_CONTAINER(ov_component_gui_editor_window_get_contents_container(self.window)), TRUE);
    GtkWidget *metadata = ov_component_gui_pack_metadata_editor(GTK_BOX(box), "Template name");
    self.metadata = OV_COMPONENT_GUI_METADATA_EDITOR(metadata);
    ov_component_gui_metadata_editor_set_author(self.metadata, tmpl->author);
    ov_component_gui_metadata_editor_set_name(self.metadata, tmpl->name);
    ov_component_gui_metadata_editor_set_version(self.metadata, tmpl->version);
    g_signal_connect_swapped(metadata, "changed",
                             G_CALLBACK(ov_component_gui_editor_window_notify_file_has_been_modified),
                             window);
    g_signal_connect(window, "save", G_CALLBACK(on_save), &self);

    ov_window_stack_run_window(GTK_WINDOW(window), OV_WINDOW_STACK_POSITION_CENTER, nullptr, nullptr,
                               nullptr);
}

void ov_template_editor_run(int argc, char **argv)
{
    gtk_window_set_default_icon_name(ov_app_icon_name);
    ov_window_stack_init();
    if (ov_user_session_start()) {
        ov::GStr path;
        if (argc < 2) {
            path.reset(ov_file_dialog_get_file_path_for_reading("Select a template file to open", nullptr,
                                                                OV_FILE_TYPE_TEMPLATE));
        } else {
            path.reset(ov_fs_utils_convert_osfsenc_to_utf8(argv[1]));
            if (!path)
                show_error_buffer();
        }
        if (path)
            ov_template_editor_run_editing_window(path.get());
        ov_user_session_end();
    }
    ov_window_stack_clean_up();
}
