// A generic picker: a toggle button showing the selected option's text with
// a down arrow; pressing it opens a menu of the options. Options are opaque
// pointers shown through a text callback; a null option is a separator.
// Signal "picked" (gpointer option).
#pragma once

#include <gtk/gtk.h>

G_BEGIN_DECLS

#define OV_TYPE_PICKER (ov_picker_get_type())
G_DECLARE_FINAL_TYPE(OvPicker, ov_picker, OV, PICKER, GtkToggleButton)

G_END_DECLS

// A new UTF-8 text for an option.
typedef char *(*OvPickerTextCallback)(gconstpointer option, gpointer user_data);
typedef void (*OvPickerOptionDestroyCallback)(gpointer option);

// empty_text is shown when nothing is selected; destroy_callback (or null)
// frees options when they are cleared or the picker is destroyed.
GtkWidget *ov_picker_new(OvPickerTextCallback text_callback, gpointer user_data,
                         OvPickerOptionDestroyCallback destroy_callback, const char *empty_text);
void ov_picker_append_option(OvPicker *picker, gpointer option);
void ov_picker_append_separator(OvPicker *picker);
// Frees every option; the selection goes.
void ov_picker_clear_options(OvPicker *picker);
guint ov_picker_get_option_count(OvPicker *picker);
gpointer ov_picker_get_option(OvPicker *picker, guint index);
gpointer ov_picker_get_selected(OvPicker *picker);
// Emits "picked" when asked and the selection changes.
void ov_picker_select(OvPicker *picker, gpointer option, gboolean emit);
const char *ov_picker_get_label_text(OvPicker *picker);

// The string picker: a picker whose options are owned copies of UTF-8 texts.
GtkWidget *ov_string_picker_new(const char *empty_text);
void ov_string_picker_append(OvPicker *picker, const char *text);
// -1 when nothing is selected.
int ov_string_picker_get_selected_index(OvPicker *picker);
const char *ov_string_picker_get_selected_text(OvPicker *picker);
void ov_string_picker_select_index(OvPicker *picker, int index, gboolean emit);
