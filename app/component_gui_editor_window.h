// The top-level window of a document editor: the title with the file name
// and a modified mark, a top bar with the "File" menu and the active-language
// picker, a frame for the editor's contents, the save and close shortcuts and
// the "Save before closing?" question. The "Edit" menu and Control+Z,
// Control+Shift+Z and Control+Y undo and redo the steps of the window's undo
// history, which ends with the window; the modified mark follows the history
// back to the state last saved. F8 and Shift+F8 walk through the texts of
// its text sheets that lack the active language, Control+? shows the
// keyboard shortcuts. It saves nothing itself: "save" asks the owner to
// write the file and clear the modified flag.
#pragma once

#include "docs_gui/undo_history.h"
#include "lang/translation_stats.h"

#include <gtk/gtk.h>

G_BEGIN_DECLS
#define OV_TYPE_COMPONENT_GUI_EDITOR_WINDOW (ov_component_gui_editor_window_get_type())
G_DECLARE_FINAL_TYPE(OvComponentGuiEditorWindow, ov_component_gui_editor_window, OV,
                     COMPONENT_GUI_EDITOR_WINDOW, GtkWindow)
G_END_DECLS

// Both texts are borrowed for the window's life. A new file counts as
// modified until it is first saved.
GtkWidget *ov_component_gui_editor_window_new(const char *program_title, const char *file_path,
                                              gboolean is_new);
// The frame the owner fills.
GtkWidget *ov_component_gui_editor_window_get_contents_container(OvComponentGuiEditorWindow *window);
gboolean ov_component_gui_editor_window_get_file_has_been_modified(OvComponentGuiEditorWindow *window);
// FALSE after a save: the history's present state becomes the saved one.
// TRUE for a change the history does not record, which keeps the mark until
// the next save.
void ov_component_gui_editor_window_set_file_has_been_modified(OvComponentGuiEditorWindow *window,
                                                               gboolean modified);
// Marks the file modified; connect to it (swapped) the "changed" of documents
// whose edits the history does not record.
void ov_component_gui_editor_window_notify_file_has_been_modified(OvComponentGuiEditorWindow *window);
// The window's history: record every edit of the document in it, and show
// the place of its "applied" signal.
OvUndoHistory *ov_component_gui_editor_window_get_undo_history(OvComponentGuiEditorWindow *window);

enum : int {
    OV_COMPONENT_GUI_FILE_MENU_CANCELLED = 0,
    OV_COMPONENT_GUI_FILE_MENU_CLOSE = 1,
    OV_COMPONENT_GUI_FILE_MENU_SAVE = 2,
    OV_COMPONENT_GUI_FILE_MENU_SHORTCUTS = 3
};
// Pops up the "File" menu under the anchor; what the user chose.
int ov_component_gui_file_menu_run(GtkWidget *anchor);

// The active-language picker shows each language's share of translated
// texts from these statistics (cloned; null shows plain names). The owner
// gives them anew after every edit.
void ov_component_gui_editor_window_set_translation_stats(OvComponentGuiEditorWindow *window,
                                                          const OvTranslationStats *stats);
GtkWidget *ov_component_gui_editor_window_get_locale_picker(OvComponentGuiEditorWindow *window);
// A short note in the top bar that goes after a few seconds; not modal.
void ov_component_gui_editor_window_show_note(OvComponentGuiEditorWindow *window, const char *text);
const char *ov_component_gui_editor_window_get_note(OvComponentGuiEditorWindow *window);
enum : int {
    OV_COMPONENT_GUI_EDIT_MENU_CANCELLED = 0,
    OV_COMPONENT_GUI_EDIT_MENU_UNDO = 1,
    OV_COMPONENT_GUI_EDIT_MENU_REDO = 2
};
// Pops up the "Edit" menu of the history under the anchor: "Undo <edit>"
// and "Redo <edit>", insensitive when there is none; what the user chose.
int ov_component_gui_edit_menu_run(GtkWidget *anchor, OvUndoHistory *history);
