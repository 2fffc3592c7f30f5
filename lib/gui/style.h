// The program's CSS styles. Each style's provider is made on first use and
// shared by every widget that gets it; providers are added at priority 600.
#pragma once

#include <gtk/gtk.h>

// Null (and the error buffer set) when the text does not parse.
GtkCssProvider *ov_css_create_provider(const char *text);
void ov_css_style_widget_with_provider(GtkWidget *widget, GtkCssProvider *provider);
// A provider for this one widget.
void ov_css_style_widget(GtkWidget *widget, const char *text);
void ov_css_add_class_to_widget(GtkWidget *widget, const char *class_name);

void ov_gui_style_boxed_label(GtkWidget *widget);
void ov_gui_style_grouping_panel(GtkWidget *widget);
void ov_gui_style_grouping_panel_header(GtkWidget *widget);
void ov_gui_style_header_menu_item(GtkWidget *widget);
void ov_gui_style_hscale(GtkWidget *widget);
void ov_gui_style_langstr_entry_button(GtkWidget *widget);
void ov_gui_style_selected_menu_item(GtkWidget *widget);
void ov_gui_style_transparent_image(GtkWidget *widget);
void ov_gui_style_zero_button_padding(GtkWidget *widget);
// Only for buttons with an image: the paddings of a plain button applied
// evenly, with a separate rule for buttons without a label text.
void ov_gui_style_normalize_button_padding(GtkWidget *button);

// Releases the shared providers (at shutdown).
void ov_gui_style_clean_up();
