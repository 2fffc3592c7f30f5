// A label showing a multilingual text in the active locale; it relabels
// itself whenever the active locale changes.
#pragma once

#include <gtk/gtk.h>

#include "lang/langstr.h"

G_BEGIN_DECLS
#define OV_TYPE_LANGSTR_LABEL (ov_langstr_label_get_type())
G_DECLARE_FINAL_TYPE(OvLangstrLabel, ov_langstr_label, OV, LANGSTR_LABEL, GtkLabel)
G_END_DECLS

// Keeps a clone of ls (null shows an empty label).
GtkWidget *ov_langstr_label_new(const langstr *ls);
void ov_langstr_label_set_content(OvLangstrLabel *label, const langstr *ls);
// The label's own clone (borrowed).
const langstr *ov_langstr_label_get_content(OvLangstrLabel *label);
