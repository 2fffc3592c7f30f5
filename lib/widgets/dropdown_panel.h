// A borderless modal popup panel that opens at the mouse pointer and closes
// when the user clicks outside it. Its single child is the content.
#pragma once

#include <gtk/gtk.h>

G_BEGIN_DECLS

#define OV_TYPE_DROPDOWN_PANEL (ov_dropdown_panel_get_type())
G_DECLARE_FINAL_TYPE(OvDropdownPanel, ov_dropdown_panel, OV, DROPDOWN_PANEL, GtkWindow)

G_END_DECLS

GtkWidget *ov_dropdown_panel_new(gboolean with_margin);
// Places and shows the panel without waiting.
void ov_dropdown_panel_open(OvDropdownPanel *panel);
// Opens the panel and returns when it has been destroyed.
void ov_dropdown_panel_run(OvDropdownPanel *panel);

// One axis of the placement: where a panel of the given extent opens for a
// pointer at position on a screen of screen_extent.
int ov_dropdown_panel_place(int position, int extent, int screen_extent);
