// Construction helpers that fix the program's look: one default margin, one
// box spacing, one way of labelling input fields.
//
// Families: ov_gui_create_<widget> makes and shows the widget;
// ov_gui_add_<widget> also adds it to a plain container; ov_gui_pack_<widget>
// also packs it at the start of a box (one flag for expand and fill, no
// padding); ov_gui_attach_<widget> attaches it to a grid cell. Every helper
// returns the new widget, already shown.
#pragma once

#include <gtk/gtk.h>

// 8 pixels.
int ov_gui_get_default_margin();

// Margins and sizes.
// A container other than a text view gets the border width, any other
// widget the four widget margins.
void ov_gui_set_surrounding_margin(GtkWidget *widget, int pixels);
void ov_gui_set_default_surrounding_margin(GtkWidget *widget);
void ov_gui_set_margins(GtkWidget *widget, int top, int right, int bottom, int left);
// 0 makes the widget sensitive, any other state insensitive.
void ov_gui_set_sensitivity(GtkWidget *widget, int state);
void ov_gui_resize_window_to_minimum_unless_maximized(GtkWindow *window, gboolean width_too);
void ov_gui_disable_emojis_in_entry(GtkEntry *entry);
void ov_gui_disable_emojis_in_text_view(GtkTextView *view);

// For widgets with an input-output window of their own over their allocation:
// realising makes the window, receiving exposures, the widget's events and
// extra_events; allocating moves the window along.
void ov_gui_realize_own_window(GtkWidget *widget, int extra_events);
void ov_gui_allocate_own_window(GtkWidget *widget, GtkAllocation *allocation);
// "[*]document - " when a document is given, then "app_name 3.3.0".
char *ov_gui_generate_main_window_title(const char *app_name, const char *document_name, gboolean modified);

// Windows and dialogs.
GtkWidget *ov_gui_create_window(const char *title);
// A dialog with the buttons of a GTK message dialog of that button set:
// OK, Close, Cancel, Yes/No or OK/Cancel with the matching responses.
GtkWidget *ov_gui_create_dialog(const char *title, GtkButtonsType buttons);
// Index of the new page, or -1 with "Error when adding notebook page.".
int ov_gui_notebook_append_page(GtkNotebook *notebook, GtkWidget *child, GtkWidget *tab_label,
                                GtkWidget *menu_label);

// Boxes: never homogeneous; spacing 0, or the default margin when asked.
GtkWidget *ov_gui_create_box(GtkOrientation orientation, gboolean spacing);
GtkWidget *ov_gui_create_hbox(gboolean spacing);
GtkWidget *ov_gui_create_vbox(gboolean spacing);
GtkWidget *ov_gui_add_hbox(GtkContainer *container, gboolean spacing);
GtkWidget *ov_gui_add_vbox(GtkContainer *container, gboolean spacing);
GtkWidget *ov_gui_pack_hbox(GtkBox *box, gboolean expand, gboolean spacing);
GtkWidget *ov_gui_pack_vbox(GtkBox *box, gboolean expand, gboolean spacing);
GtkWidget *ov_gui_attach_hbox(GtkGrid *grid, gboolean spacing, int left, int top, int width, int height);
GtkWidget *ov_gui_attach_vbox(GtkGrid *grid, gboolean spacing, int left, int top, int width, int height);

// Alignments: a box that places its single child by the alignment values
// (0 start, 0.5 centre, 1 end) and stretches it where the scale is 1.
GtkWidget *ov_gui_create_alignment(float x_align, float y_align, float x_scale, float y_scale);
GtkWidget *ov_gui_pack_alignment(GtkBox *box, gboolean expand, float x_align, float y_align, float x_scale,
                                 float y_scale);
// The child of an alignment made above.
GtkWidget *ov_gui_alignment_get_child(GtkWidget *alignment);
// Wrappers: pack the widget inside a new alignment, frame or expander and
// return the wrapper.
GtkWidget *ov_gui_pack_widget_in_alignment(GtkBox *box, GtkWidget *widget, gboolean expand, float x_align,
                                           float y_align, float x_scale, float y_scale);
GtkWidget *ov_gui_pack_widget_in_frame(GtkBox *box, GtkWidget *widget, gboolean expand, const char *label);
GtkWidget *ov_gui_pack_widget_in_expander(GtkBox *box, GtkWidget *widget, gboolean expand, const char *label);
// Shows and packs an existing widget.
GtkWidget *ov_gui_pack_widget(GtkBox *box, GtkWidget *widget, gboolean expand);
GtkWidget *ov_gui_attach_widget(GtkGrid *grid, GtkWidget *widget, int left, int top, int width, int height);

// Labels.
GtkWidget *ov_gui_create_label(const char *text, float x_align, float y_align);
GtkWidget *ov_gui_add_label(GtkContainer *container, const char *text, float x_align, float y_align);
GtkWidget *ov_gui_pack_label(GtkBox *box, const char *text, float x_align, float y_align);
GtkWidget *ov_gui_attach_label(GtkGrid *grid, const char *text, float x_align, float y_align, int left,
                               int top, int width, int height);
GtkWidget *ov_gui_create_markup_label(const char *markup, float x_align, float y_align);
GtkWidget *ov_gui_pack_markup_label(GtkBox *box, const char *markup, float x_align, float y_align);
GtkWidget *ov_gui_attach_markup_label(GtkGrid *grid, const char *markup, float x_align, float y_align,
                                      int left, int top, int width, int height);
// "label:" with " (Required)" in light italics for a required field.
GtkWidget *ov_gui_create_input_field_label(const char *label, gboolean required);
GtkWidget *ov_gui_pack_input_field_label(GtkBox *box, const char *label, gboolean required);
GtkWidget *ov_gui_attach_input_field_label(GtkGrid *grid, const char *label, gboolean required, int left,
                                           int top, int width, int height);

// Buttons. A null label makes an empty button.
GtkWidget *ov_gui_create_button(const char *label);
GtkWidget *ov_gui_add_button(GtkContainer *container, const char *label);
// Not expanding; with is_default the window's default button.
GtkWidget *ov_gui_pack_button(GtkBox *box, const char *label, gboolean is_default);
GtkWidget *ov_gui_attach_button(GtkGrid *grid, const char *label, int left, int top, int width, int height);
// A button with an icon (button size) and an optional label.
GtkWidget *ov_gui_create_icon_button(const char *icon_name, const char *label);
GtkWidget *ov_gui_pack_icon_button(GtkBox *box, const char *icon_name, const char *label);
// A flat button without relief that opens a menu when clicked.
GtkWidget *ov_gui_create_menu_button(const char *label);
GtkWidget *ov_gui_pack_menu_button(GtkBox *box, const char *label);
GtkWidget *ov_gui_create_check_button(const char *label, gboolean active);
GtkWidget *ov_gui_pack_check_button(GtkBox *box, const char *label, gboolean active);
GtkWidget *ov_gui_attach_check_button(GtkGrid *grid, const char *label, gboolean active, int left, int top,
                                      int width, int height);
// group_member: a radio button of the group to join, or null for a new group.
GtkWidget *ov_gui_create_radio_button(GtkRadioButton *group_member, const char *label);
GtkWidget *ov_gui_pack_radio_button(GtkBox *box, GtkRadioButton *group_member, const char *label);
GtkWidget *ov_gui_create_toggle_button(const char *label, gboolean active);
GtkWidget *ov_gui_pack_toggle_button(GtkBox *box, const char *label, gboolean active);
GtkWidget *ov_gui_create_switch(gboolean active);
GtkWidget *ov_gui_pack_switch(GtkBox *box, gboolean active);

// Entries and text views (emoji input disabled).
GtkWidget *ov_gui_create_entry(const char *text, gboolean activates_default);
GtkWidget *ov_gui_add_entry(GtkContainer *container, const char *text, gboolean activates_default);
GtkWidget *ov_gui_pack_entry(GtkBox *box, gboolean expand, const char *text, gboolean activates_default);
GtkWidget *ov_gui_attach_entry(GtkGrid *grid, const char *text, gboolean activates_default, int left, int top,
                               int width, int height);
GtkWidget *ov_gui_create_text_view();
GtkWidget *ov_gui_add_text_view(GtkContainer *container);
GtkWidget *ov_gui_pack_text_view(GtkBox *box, gboolean expand);
// Spacifying widgets; texts are Latin-1 (null for none).
GtkWidget *ov_gui_create_spacifying_entry(gboolean compact, const char *latin1_text,
                                          gboolean activates_default);
GtkWidget *ov_gui_pack_spacifying_entry(GtkBox *box, gboolean expand, gboolean compact,
                                        const char *latin1_text, gboolean activates_default);
GtkWidget *ov_gui_attach_spacifying_entry(GtkGrid *grid, gboolean compact, const char *latin1_text,
                                          gboolean activates_default, int left, int top, int width,
                                          int height);
GtkWidget *ov_gui_create_spacifying_text_view(const char *latin1_text);
GtkWidget *ov_gui_add_spacifying_text_view(GtkContainer *container, const char *latin1_text);

// Combo boxes with text items.
GtkWidget *ov_gui_create_combo_box_text();
GtkWidget *ov_gui_pack_combo_box_text(GtkBox *box, gboolean expand);
GtkWidget *ov_gui_attach_combo_box_text(GtkGrid *grid, int left, int top, int width, int height);

// Scrolled windows.
GtkWidget *ov_gui_create_scrolled_window(GtkPolicyType h_policy, GtkPolicyType v_policy,
                                         GtkShadowType shadow);
GtkWidget *ov_gui_add_scrolled_window(GtkContainer *container, GtkPolicyType h_policy, GtkPolicyType v_policy,
                                      GtkShadowType shadow);
GtkWidget *ov_gui_pack_scrolled_window(GtkBox *box, gboolean expand, GtkPolicyType h_policy,
                                       GtkPolicyType v_policy, GtkShadowType shadow);

// Frames: plain (label or null), sunken (inset shadow, no label), with a
// markup label, or with an input-field label.
GtkWidget *ov_gui_create_frame(const char *label);
GtkWidget *ov_gui_add_frame(GtkContainer *container, const char *label);
GtkWidget *ov_gui_pack_frame(GtkBox *box, gboolean expand, const char *label);
GtkWidget *ov_gui_create_sunken_frame();
GtkWidget *ov_gui_pack_sunken_frame(GtkBox *box, gboolean expand);
GtkWidget *ov_gui_create_markup_frame(const char *markup);
GtkWidget *ov_gui_pack_markup_frame(GtkBox *box, gboolean expand, const char *markup);
GtkWidget *ov_gui_create_input_field_frame(const char *label, gboolean required);
GtkWidget *ov_gui_pack_input_field_frame(GtkBox *box, gboolean expand, const char *label, gboolean required);

// Grids with the box spacing in both directions when asked.
GtkWidget *ov_gui_create_grid(gboolean spacing);
GtkWidget *ov_gui_add_grid(GtkContainer *container, gboolean spacing);
GtkWidget *ov_gui_pack_grid(GtkBox *box, gboolean expand, gboolean spacing);

// Notebooks, paned, stacks, overlays, event boxes, drawing areas.
GtkWidget *ov_gui_create_notebook();
GtkWidget *ov_gui_add_notebook(GtkContainer *container);
GtkWidget *ov_gui_pack_notebook(GtkBox *box, gboolean expand);
GtkWidget *ov_gui_create_paned(GtkOrientation orientation);
GtkWidget *ov_gui_pack_paned(GtkBox *box, gboolean expand, GtkOrientation orientation);
GtkWidget *ov_gui_create_stack();
GtkWidget *ov_gui_pack_stack(GtkBox *box, gboolean expand);
GtkWidget *ov_gui_create_stack_sidebar(GtkStack *stack);
GtkWidget *ov_gui_pack_stack_sidebar(GtkBox *box, gboolean expand, GtkStack *stack);
GtkWidget *ov_gui_create_overlay();
GtkWidget *ov_gui_add_overlay(GtkContainer *container);
GtkWidget *ov_gui_pack_overlay(GtkBox *box, gboolean expand);
GtkWidget *ov_gui_create_event_box();
GtkWidget *ov_gui_add_event_box(GtkContainer *container);
GtkWidget *ov_gui_pack_event_box(GtkBox *box, gboolean expand);
// A size request of width by height; -1 leaves a direction free.
GtkWidget *ov_gui_create_drawing_area(int width, int height);
GtkWidget *ov_gui_add_drawing_area(GtkContainer *container, int width, int height);
GtkWidget *ov_gui_pack_drawing_area(GtkBox *box, gboolean expand, int width, int height);

// Images, separators, spaces, expanders.
GtkWidget *ov_gui_create_image_from_icon_name(const char *icon_name, GtkIconSize size);
GtkWidget *ov_gui_pack_image_from_icon_name(GtkBox *box, const char *icon_name, GtkIconSize size);
GtkWidget *ov_gui_create_separator(GtkOrientation orientation);
GtkWidget *ov_gui_pack_separator(GtkBox *box, GtkOrientation orientation);
// An empty widget of the given size.
GtkWidget *ov_gui_create_space(int width, int height);
GtkWidget *ov_gui_pack_space(GtkBox *box, int width, int height);
GtkWidget *ov_gui_create_expander(const char *label, gboolean expanded);
GtkWidget *ov_gui_pack_expander(GtkBox *box, gboolean expand, const char *label, gboolean expanded);
