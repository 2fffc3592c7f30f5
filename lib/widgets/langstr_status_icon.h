// A status icon symbol in a fixed container that keeps it vertically
// centred in whatever height the container is given.
#pragma once

#include <gtk/gtk.h>

#include "lang/langstr.h"

G_BEGIN_DECLS
#define OV_TYPE_LANGSTR_STATUS_ICON (ov_langstr_status_icon_get_type())
G_DECLARE_FINAL_TYPE(OvLangstrStatusIcon, ov_langstr_status_icon, OV, LANGSTR_STATUS_ICON, GtkFixed)
G_END_DECLS

GtkWidget *ov_langstr_status_icon_new(const langstr *ls);
void ov_langstr_status_icon_update(OvLangstrStatusIcon *icon, const langstr *ls);
// The symbol inside (an OvLangstrStatusIconSymbol), or null.
GtkWidget *ov_langstr_status_icon_get_symbol(OvLangstrStatusIcon *icon);
