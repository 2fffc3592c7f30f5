// A read-only text view showing a multilingual text: in single-line mode
// every translation under its language name, in multi-line mode the text in
// the active locale followed by a status icon.
#pragma once

#include <gtk/gtk.h>

#include "lang/langstr.h"
#include "widgets/langstr_mode.h"

G_BEGIN_DECLS
#define OV_TYPE_LANGSTR_DISPLAY (ov_langstr_display_get_type())
G_DECLARE_FINAL_TYPE(OvLangstrDisplay, ov_langstr_display, OV, LANGSTR_DISPLAY, GtkBox)
G_END_DECLS

// mode is an OvLangstrMode.
GtkWidget *ov_langstr_display_new(int mode, int width, int height);
void ov_langstr_display_update_content(OvLangstrDisplay *display, const langstr *ls);
GtkTextView *ov_langstr_display_get_text_view(OvLangstrDisplay *display);

// Shows the text in a dropdown panel at the pointer until a click outside
// closes it.
void ov_langstr_display_dropdown_run(const langstr *ls);
