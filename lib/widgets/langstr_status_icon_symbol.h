// The translation status symbol of a multilingual text as a widget, 13 by 8
// pixels. A click opens the text in all its languages in a dropdown.
#pragma once

#include <gtk/gtk.h>

#include "lang/langstr.h"

G_BEGIN_DECLS
#define OV_TYPE_LANGSTR_STATUS_ICON_SYMBOL (ov_langstr_status_icon_symbol_get_type())
G_DECLARE_FINAL_TYPE(OvLangstrStatusIconSymbol, ov_langstr_status_icon_symbol, OV, LANGSTR_STATUS_ICON_SYMBOL,
                     GtkWidget)
G_END_DECLS

// Keeps a clone of ls.
GtkWidget *ov_langstr_status_icon_symbol_new(const langstr *ls);
void ov_langstr_status_icon_symbol_update(OvLangstrStatusIconSymbol *symbol, const langstr *ls);
const langstr *ov_langstr_status_icon_symbol_get_content(OvLangstrStatusIconSymbol *symbol);
// The symbol's opacity for a foreground colour: dark colours give nearly 1,
// light (insensitive) ones less.
double ov_langstr_status_icon_symbol_opacity_for(const GdkRGBA *foreground);
