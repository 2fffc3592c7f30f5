// The framed block of a document's name, author and version. The name is
// required; "changed" is emitted whenever one of the three fields changes.
#pragma once

#include "docs_gui/undo_history.h"
#include "lang/langstr.h"

#include <gtk/gtk.h>

G_BEGIN_DECLS
#define OV_TYPE_COMPONENT_GUI_METADATA_EDITOR (ov_component_gui_metadata_editor_get_type())
G_DECLARE_FINAL_TYPE(OvComponentGuiMetadataEditor, ov_component_gui_metadata_editor, OV,
                     COMPONENT_GUI_METADATA_EDITOR, GtkFrame)
G_END_DECLS

// The name label ("Template name") heads the name field and names it in the
// error when it is left empty.
GtkWidget *ov_component_gui_metadata_editor_new(const char *name_label);
// The same, shown.
GtkWidget *ov_component_gui_create_metadata_editor(const char *name_label);
// Created, shown and packed at the start of the box without expanding.
GtkWidget *ov_component_gui_pack_metadata_editor(GtkBox *box, const char *name_label);

// New multilingual strings, or null for an empty field.
langstr *ov_component_gui_metadata_editor_get_name(OvComponentGuiMetadataEditor *editor);
langstr *ov_component_gui_metadata_editor_get_author(OvComponentGuiMetadataEditor *editor);
void ov_component_gui_metadata_editor_set_name(OvComponentGuiMetadataEditor *editor, const langstr *name);
void ov_component_gui_metadata_editor_set_author(OvComponentGuiMetadataEditor *editor, const langstr *author);
// The version as a new Latin-1 text, null when the field is empty.
gboolean ov_component_gui_metadata_editor_get_version(OvComponentGuiMetadataEditor *editor,
                                                      char **out_version);
// Null shows an empty field.
void ov_component_gui_metadata_editor_set_version(OvComponentGuiMetadataEditor *editor, const char *version);

// Replaces the three slots with the fields' values. Fails with "%s field must
// not be empty." (the name label filled in) when the name is empty, and then
// leaves every slot as it was.
gboolean ov_component_gui_metadata_editor_replace_metadata(OvComponentGuiMetadataEditor *editor,
                                                           langstr **name, langstr **author, char **version);

// From now on the user's edits of the three fields are steps of the history
// (borrowed; it must end before the editor).
void ov_component_gui_metadata_editor_record_edits(OvComponentGuiMetadataEditor *editor,
                                                   OvUndoHistory *history);
