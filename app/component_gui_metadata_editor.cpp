#include "app/component_gui_metadata_editor.h"

#include "app/entry_undo.h"
#include "core/error.h"
#include "core/raii.h"
#include "gui/gui.h"
#include "gui/spacifying_entry.h"
#include "widgets/langstr_entry.h"

#include <string>

struct _OvComponentGuiMetadataEditor {
    GtkFrame parent_instance;
    char *name_label;
    GtkWidget *name_entry;
    GtkWidget *author_entry;
    GtkWidget *version_entry;
    gulong name_changed_handler;
    gulong author_changed_handler;
    gulong version_changed_handler;
};

G_DEFINE_TYPE(OvComponentGuiMetadataEditor, ov_component_gui_metadata_editor, GTK_TYPE_FRAME)

enum { SIGNAL_CHANGED, N_SIGNALS };
static guint signals[N_SIGNALS];

namespace
{

void emit_changed(OvComponentGuiMetadataEditor *self)
{
    g_signal_emit(self, signals[SIGNAL_CHANGED], 0);
}

void release_entry(GtkWidget **entry, gulong *handler)
{
    if (*entry != nullptr)
        g_clear_signal_handler(handler, *entry);
    g_clear_object(entry);
}

} // namespace

static void ov_component_gui_metadata_editor_dispose(GObject *object)
{
    auto *self = OV_COMPONENT_GUI_METADATA_EDITOR(object);
    release_entry(&self->name_entry, &self->name_changed_handler);
    release_entry(&self->author_entry, &self->author_changed_handler);
    release_entry(&self->version_entry, &self->version_changed_handler);
    G_OBJECT_CLASS(ov_component_gui_metadata_editor_parent_class)->dispose(object);
}

static void ov_component_gui_metadata_editor_finalize(GObject *object)
{
    g_free(OV_COMPONENT_GUI_METADATA_EDITOR(object)->name_label);
    G_OBJECT_CLASS(ov_component_gui_metadata_editor_parent_class)->finalize(object);
}

static void ov_component_gui_metadata_editor_class_init(OvComponentGuiMetadataEditorClass *klass)
{
    G_OBJECT_CLASS(klass)->dispose = ov_component_gui_metadata_editor_dispose;
    G_OBJECT_CLASS(klass)->finalize = ov_component_gui_metadata_editor_finalize;
    signals[SIGNAL_CHANGED] = g_signal_new("changed", G_TYPE_FROM_CLASS(klass), G_SIGNAL_RUN_FIRST, 0,
                                           nullptr, nullptr, nullptr, G_TYPE_NONE, 0);
}

static void ov_component_gui_metadata_editor_init(OvComponentGuiMetadataEditor *) {}

GtkWidget *ov_component_gui_metadata_editor_new(const char *name_label)
{
    g_return_val_if_fail(name_label != nullptr, nullptr);
    auto *self =
        OV_COMPONENT_GUI_METADATA_EDITOR(g_object_new(OV_TYPE_COMPONENT_GUI_METADATA_EDITOR, nullptr));
    gtk_frame_set_shadow_type(GTK_FRAME(self), GTK_SHADOW_IN);
    self->name_label = g_strdup(name_label);

    GtkWidget *box = ov_gui_add_vbox(GTK_CONTAINER(self), FALSE);
    ov_gui_set_default_surrounding_margin(box);
    ov_gui_pack_input_field_label(GTK_BOX(box), name_label, TRUE);
    self->name_entry =
        GTK_WIDGET(g_object_ref_sink(ov_gui_pack_widget(GTK_BOX(box), ov_langstr_entry_new(), FALSE)));
    ov_gui_pack_input_field_label(GTK_BOX(box), "Author", FALSE);
    self->author_entry =
        GTK_WIDGET(g_object_ref_sink(ov_gui_pack_widget(GTK_BOX(box), ov_langstr_entry_new(), FALSE)));
    ov_gui_pack_input_field_label(GTK_BOX(box), "Version", FALSE);
    self->version_entry =
        GTK_WIDGET(g_object_ref_sink(ov_gui_pack_spacifying_entry(GTK_BOX(box), TRUE, TRUE, nullptr, FALSE)));

    self->name_changed_handler =
        g_signal_connect_swapped(self->name_entry, "changed", G_CALLBACK(emit_changed), self);
    self->author_changed_handler =
        g_signal_connect_swapped(self->author_entry, "changed", G_CALLBACK(emit_changed), self);
    self->version_changed_handler =
        g_signal_connect_swapped(self->version_entry, "changed", G_CALLBACK(emit_changed), self);
    return GTK_WIDGET(self);
}

GtkWidget *ov_component_gui_create_metadata_editor(const char *name_label)
{
    GtkWidget *editor = ov_component_gui_metadata_editor_new(name_label);
    gtk_widget_show(editor);
    return editor;
}

GtkWidget *ov_component_gui_pack_metadata_editor(GtkBox *box, const char *name_label)
{
    g_return_val_if_fail(GTK_IS_BOX(box), nullptr);
    GtkWidget *editor = ov_component_gui_create_metadata_editor(name_label);
    gtk_box_pack_start(box, editor, FALSE, FALSE, 0);
    return editor;
}

langstr *ov_component_gui_metadata_editor_get_name(OvComponentGuiMetadataEditor *editor)
{
    g_return_val_if_fail(OV_IS_COMPONENT_GUI_METADATA_EDITOR(editor), nullptr);
    return ov_langstr_entry_get_value(OV_LANGSTR_ENTRY(editor->name_entry));
}

langstr *ov_component_gui_metadata_editor_get_author(OvComponentGuiMetadataEditor *editor)
{
    g_return_val_if_fail(OV_IS_COMPONENT_GUI_METADATA_EDITOR(editor), nullptr);
    return ov_langstr_entry_get_value(OV_LANGSTR_ENTRY(editor->author_entry));
}

void ov_component_gui_metadata_editor_set_name(OvComponentGuiMetadataEditor *editor, const langstr *name)
{
    g_return_if_fail(OV_IS_COMPONENT_GUI_METADATA_EDITOR(editor));
    ov_langstr_entry_set_value(OV_LANGSTR_ENTRY(editor->name_entry), name, nullptr);
}

void ov_component_gui_metadata_editor_set_author(OvComponentGuiMetadataEditor *editor, const langstr *author)
{
    g_return_if_fail(OV_IS_COMPONENT_GUI_METADATA_EDITOR(editor));
    ov_langstr_entry_set_value(OV_LANGSTR_ENTRY(editor->author_entry), author, nullptr);
}

gboolean ov_component_gui_metadata_editor_get_version(OvComponentGuiMetadataEditor *editor,
                                                      char **out_version)
{
    g_return_val_if_fail(OV_IS_COMPONENT_GUI_METADATA_EDITOR(editor) && out_version != nullptr, FALSE);
    char *version = ov_spacifying_entry_get_text(OV_SPACIFYING_ENTRY(editor->version_entry));
    if (version == nullptr)
        return FALSE;
    if (*version == '\0')
        g_clear_pointer(&version, g_free);
    *out_version = version;
    return TRUE;
}

void ov_component_gui_metadata_editor_set_version(OvComponentGuiMetadataEditor *editor, const char *version)
{
    g_return_if_fail(OV_IS_COMPONENT_GUI_METADATA_EDITOR(editor));
    ov_spacifying_entry_set_text(OV_SPACIFYING_ENTRY(editor->version_entry),
                                 version != nullptr ? version : "");
}

gboolean ov_component_gui_metadata_editor_replace_metadata(OvComponentGuiMetadataEditor *editor,
                                                           langstr **name, langstr **author, char **version)
{
    g_return_val_if_fail(OV_IS_COMPONENT_GUI_METADATA_EDITOR(editor), FALSE);
    g_return_val_if_fail(name != nullptr && author != nullptr && version != nullptr, FALSE);
    char *new_version_text = nullptr;
    if (!ov_component_gui_metadata_editor_get_version(editor, &new_version_text))
        return FALSE;
    ov::GStr new_version(new_version_text);
    langstr *new_name = ov_component_gui_metadata_editor_get_name(editor);
    if (new_name == nullptr) {
        ov_error_set_utf8_printf("%s field must not be empty.", editor->name_label);
        return FALSE;
    }
    ov_langstr_free(*name);
    *name = new_name;
    ov_langstr_free(*author);
    *author = ov_component_gui_metadata_editor_get_author(editor);
    g_free(*version);
    *version = new_version.release();
    return TRUE;
}

void ov_component_gui_metadata_editor_record_edits(OvComponentGuiMetadataEditor *editor,
                                                   OvUndoHistory *history)
{
    g_return_if_fail(OV_IS_COMPONENT_GUI_METADATA_EDITOR(editor));
    // "Edit template name", from the name's label.
    const ov::GStr name = ov::gstr(g_ascii_strdown(editor->name_label, -1));
    const std::string name_step = std::string("Edit ") + name.get();
    ov_entry_undo_track_langstr_entry(OV_LANGSTR_ENTRY(editor->name_entry), history, name_step.c_str());
    ov_entry_undo_track_langstr_entry(OV_LANGSTR_ENTRY(editor->author_entry), history, "Edit author");
    ov_entry_undo_track_text_entry(GTK_ENTRY(editor->version_entry), history, "Edit version");
}
