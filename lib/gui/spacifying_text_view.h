// A multi-line text view with the spacifying entry's input filter that also
// keeps line feeds. Tab keys move the keyboard focus instead of inserting.
#pragma once

#include <gtk/gtk.h>

G_BEGIN_DECLS

#define OV_TYPE_SPACIFYING_TEXT_VIEW (ov_spacifying_text_view_get_type())
G_DECLARE_FINAL_TYPE(OvSpacifyingTextView, ov_spacifying_text_view, OV, SPACIFYING_TEXT_VIEW, GtkTextView)

G_END_DECLS

GtkWidget *ov_spacifying_text_view_new();
void ov_spacifying_text_view_set_text(OvSpacifyingTextView *view, const char *latin1_text);
// A new Latin-1 string, stripped and detabified, or null.
char *ov_spacifying_text_view_get_text(OvSpacifyingTextView *view);
