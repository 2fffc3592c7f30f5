#include "gui/gui.h"

#include "core/error.h"
#include "core/raii.h"
#include "core/util.h"
#include "gui/spacifying_entry.h"
#include "gui/spacifying_text_view.h"

namespace
{

constexpr int default_margin = 8;
constexpr const char *version_text = " 3.3.0";
constexpr const char *alignment_child_key = "orvane_alignment_child";

GtkWidget *shown(GtkWidget *widget)
{
    gtk_widget_show(widget);
    return widget;
}

GtkWidget *added(GtkContainer *container, GtkWidget *widget)
{
    gtk_container_add(container, shown(widget));
    return widget;
}

GtkWidget *packed(GtkBox *box, GtkWidget *widget, gboolean expand)
{
    gtk_box_pack_start(box, shown(widget), expand, expand, 0);
    return widget;
}

GtkWidget *attached(GtkGrid *grid, GtkWidget *widget, int left, int top, int width, int height)
{
    gtk_grid_attach(grid, shown(widget), left, top, width, height);
    return widget;
}

GtkAlign align_for(float align, float scale)
{
    if (scale >= 1.0f)
        return GTK_ALIGN_FILL;
    if (align < 0.25f)
        return GTK_ALIGN_START;
    if (align > 0.75f)
        return GTK_ALIGN_END;
    return GTK_ALIGN_CENTER;
}

void set_label_alignment(GtkWidget *label, float x_align, float y_align)
{
    gtk_label_set_xalign(GTK_LABEL(label), x_align);
    gtk_label_set_yalign(GTK_LABEL(label), y_align);
}

// The alignment's child takes the alignment values when it is added.
void place_alignment_child(GtkContainer *container, GtkWidget *child, gpointer)
{
    auto *values = static_cast<float *>(g_object_get_data(G_OBJECT(container), "orvane_alignment_values"));
    gtk_widget_set_halign(child, align_for(values[0], values[2]));
    gtk_widget_set_valign(child, align_for(values[1], values[3]));
    gtk_widget_set_hexpand(child, TRUE);
    gtk_widget_set_vexpand(child, TRUE);
    g_object_set_data(G_OBJECT(container), alignment_child_key, child);
}

void forget_alignment_child(GtkContainer *container, GtkWidget *child, gpointer)
{
    if (g_object_get_data(G_OBJECT(container), alignment_child_key) == child)
        g_object_set_data(G_OBJECT(container), alignment_child_key, nullptr);
}

} // namespace

int ov_gui_get_default_margin()
{
    return default_margin;
}

void ov_gui_set_surrounding_margin(GtkWidget *widget, int pixels)
{
    g_return_if_fail(GTK_IS_WIDGET(widget));
    if (GTK_IS_CONTAINER(widget) && !GTK_IS_TEXT_VIEW(widget)) {
        gtk_container_set_border_width(GTK_CONTAINER(widget), pixels);
        return;
    }
    ov_gui_set_margins(widget, pixels, pixels, pixels, pixels);
}

void ov_gui_set_default_surrounding_margin(GtkWidget *widget)
{
    ov_gui_set_surrounding_margin(widget, default_margin);
}

void ov_gui_set_margins(GtkWidget *widget, int top, int right, int bottom, int left)
{
    g_return_if_fail(GTK_IS_WIDGET(widget));
    gtk_widget_set_margin_top(widget, top);
    gtk_widget_set_margin_end(widget, right);
    gtk_widget_set_margin_bottom(widget, bottom);
    gtk_widget_set_margin_start(widget, left);
}

void ov_gui_set_sensitivity(GtkWidget *widget, int state)
{
    g_return_if_fail(GTK_IS_WIDGET(widget));
    gtk_widget_set_sensitive(widget, state == 0);
}

void ov_gui_resize_window_to_minimum_unless_maximized(GtkWindow *window, gboolean width_too)
{
    g_return_if_fail(GTK_IS_WINDOW(window));
    GdkWindow *gdk_window = gtk_widget_get_window(GTK_WIDGET(window));
    if (gdk_window != nullptr &&
        (gdk_window_get_state(gdk_window) & (GDK_WINDOW_STATE_MAXIMIZED | GDK_WINDOW_STATE_FULLSCREEN)) != 0)
        return;
    if (gtk_window_is_maximized(window))
        return;
    int width = 1;
    if (!width_too)
        gtk_window_get_size(window, &width, nullptr);
    gtk_window_resize(window, width, 1);
}

void ov_gui_disable_emojis_in_entry(GtkEntry *entry)
{
    g_return_if_fail(GTK_IS_ENTRY(entry));
    if (g_object_class_find_property(G_OBJECT_GET_CLASS(entry), "show-emoji-icon") != nullptr)
        g_object_set(entry, "show-emoji-icon", FALSE, nullptr);
    GtkInputHints hints = gtk_entry_get_input_hints(entry);
    gtk_entry_set_input_hints(entry,
                              GtkInputHints((hints & ~GTK_INPUT_HINT_EMOJI) | GTK_INPUT_HINT_NO_EMOJI));
}

void ov_gui_disable_emojis_in_text_view(GtkTextView *view)
{
    g_return_if_fail(GTK_IS_TEXT_VIEW(view));
    GtkInputHints hints = gtk_text_view_get_input_hints(view);
    gtk_text_view_set_input_hints(view,
                                  GtkInputHints((hints & ~GTK_INPUT_HINT_EMOJI) | GTK_INPUT_HINT_NO_EMOJI));
}

char *ov_gui_generate_main_window_title(const char *app_name, const char *document_name, gboolean modified)
{
    g_return_val_if_fail(app_name != nullptr, nullptr);
    if (document_name == nullptr)
        return g_strconcat(app_name, version_text, nullptr);
    return g_strconcat(modified ? "*" : "", document_name, " - ", app_name, version_text, nullptr);
}

GtkWidget *ov_gui_create_window(const char *title)
{
    GtkWidget *window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    if (title != nullptr)
        gtk_window_set_title(GTK_WINDOW(window), title);
    return window;
}

GtkWidget *ov_gui_create_dialog(const char *title, GtkButtonsType buttons)
{
    GtkWidget *dialog = gtk_dialog_new();
    if (title != nullptr)
        gtk_window_set_title(GTK_WINDOW(dialog), title);
    GtkDialog *d = GTK_DIALOG(dialog);
    switch (buttons) {
    case GTK_BUTTONS_OK:
        gtk_dialog_add_button(d, "_OK", GTK_RESPONSE_OK);
        break;
    case GTK_BUTTONS_CLOSE:
        gtk_dialog_add_button(d, "_Close", GTK_RESPONSE_CLOSE);
        break;
    case GTK_BUTTONS_CANCEL:
        gtk_dialog_add_button(d, "_Cancel", GTK_RESPONSE_CANCEL);
        break;
    case GTK_BUTTONS_YES_NO:
        gtk_dialog_add_button(d, "_No", GTK_RESPONSE_NO);
        gtk_dialog_add_button(d, "_Yes", GTK_RESPONSE_YES);
        break;
    case GTK_BUTTONS_OK_CANCEL:
        gtk_dialog_add_button(d, "_Cancel", GTK_RESPONSE_CANCEL);
        gtk_dialog_add_button(d, "_OK", GTK_RESPONSE_OK);
        break;
    case GTK_BUTTONS_NONE:
        break;
    }
    return dialog;
}

int ov_gui_notebook_append_page(GtkNotebook *notebook, GtkWidget *child, GtkWidget *tab_label,
                                GtkWidget *menu_label)
{
    g_return_val_if_fail(GTK_IS_NOTEBOOK(notebook), -1);
    int index = gtk_notebook_append_page_menu(notebook, child, tab_label, menu_label);
    if (index < 0)
        ov_error_set("Error when adding notebook page.");
    return index;
}

// Boxes.

GtkWidget *ov_gui_create_box(GtkOrientation orientation, gboolean spacing)
{
    return shown(gtk_box_new(orientation, spacing ? default_margin : 0));
}

GtkWidget *ov_gui_create_hbox(gboolean spacing)
{
    return ov_gui_create_box(GTK_ORIENTATION_HORIZONTAL, spacing);
}
GtkWidget *ov_gui_create_vbox(gboolean spacing)
{
    return ov_gui_create_box(GTK_ORIENTATION_VERTICAL, spacing);
}
GtkWidget *ov_gui_add_hbox(GtkContainer *c, gboolean spacing)
{
    return added(c, ov_gui_create_hbox(spacing));
}
GtkWidget *ov_gui_add_vbox(GtkContainer *c, gboolean spacing)
{
    return added(c, ov_gui_create_vbox(spacing));
}
GtkWidget *ov_gui_pack_hbox(GtkBox *box, gboolean expand, gboolean spacing)
{
    return packed(box, ov_gui_create_hbox(spacing), expand);
}
GtkWidget *ov_gui_pack_vbox(GtkBox *box, gboolean expand, gboolean spacing)
{
    return packed(box, ov_gui_create_vbox(spacing), expand);
}
GtkWidget *ov_gui_attach_hbox(GtkGrid *grid, gboolean spacing, int left, int top, int width, int height)
{
    return attached(grid, ov_gui_create_hbox(spacing), left, top, width, height);
}
GtkWidget *ov_gui_attach_vbox(GtkGrid *grid, gboolean spacing, int left, int top, int width, int height)
{
    return attached(grid, ov_gui_create_vbox(spacing), left, top, width, height);
}

// Alignments.

GtkWidget *ov_gui_create_alignment(float x_align, float y_align, float x_scale, float y_scale)
{
    GtkWidget *box = ov_gui_create_box(GTK_ORIENTATION_HORIZONTAL, FALSE);
    auto *values = g_new(float, 4);
    values[0] = x_align;
    values[1] = y_align;
    values[2] = x_scale;
    values[3] = y_scale;
    g_object_set_data_full(G_OBJECT(box), "orvane_alignment_values", values, g_free);
    g_signal_connect(box, "add", G_CALLBACK(place_alignment_child), nullptr);
    g_signal_connect(box, "remove", G_CALLBACK(forget_alignment_child), nullptr);
    return box;
}

GtkWidget *ov_gui_pack_alignment(GtkBox *box, gboolean expand, float x_align, float y_align, float x_scale,
                                 float y_scale)
{
    return packed(box, ov_gui_create_alignment(x_align, y_align, x_scale, y_scale), expand);
}

GtkWidget *ov_gui_alignment_get_child(GtkWidget *alignment)
{
    g_return_val_if_fail(GTK_IS_WIDGET(alignment), nullptr);
    return static_cast<GtkWidget *>(g_object_get_data(G_OBJECT(alignment), alignment_child_key));
}

GtkWidget *ov_gui_pack_widget_in_alignment(GtkBox *box, GtkWidget *widget, gboolean expand, float x_align,
                                           float y_align, float x_scale, float y_scale)
{
    GtkWidget *alignment = ov_gui_pack_alignment(box, expand, x_align, y_align, x_scale, y_scale);
    added(GTK_CONTAINER(alignment), widget);
    return alignment;
}

GtkWidget *ov_gui_pack_widget_in_frame(GtkBox *box, GtkWidget *widget, gboolean expand, const char *label)
{
    GtkWidget *frame = ov_gui_pack_frame(box, expand, label);
    added(GTK_CONTAINER(frame), widget);
    return frame;
}

GtkWidget *ov_gui_pack_widget_in_expander(GtkBox *box, GtkWidget *widget, gboolean expand, const char *label)
{
    GtkWidget *expander = ov_gui_pack_expander(box, expand, label, FALSE);
    added(GTK_CONTAINER(expander), widget);
    return expander;
}

GtkWidget *ov_gui_pack_widget(GtkBox *box, GtkWidget *widget, gboolean expand)
{
    return packed(box, widget, expand);
}

GtkWidget *ov_gui_attach_widget(GtkGrid *grid, GtkWidget *widget, int left, int top, int width, int height)
{
    return attached(grid, widget, left, top, width, height);
}

// Labels.

GtkWidget *ov_gui_create_label(const char *text, float x_align, float y_align)
{
    GtkWidget *label = gtk_label_new(text);
    set_label_alignment(label, x_align, y_align);
    return shown(label);
}

GtkWidget *ov_gui_add_label(GtkContainer *c, const char *text, float x_align, float y_align)
{
    return added(c, ov_gui_create_label(text, x_align, y_align));
}

GtkWidget *ov_gui_pack_label(GtkBox *box, const char *text, float x_align, float y_align)
{
    return packed(box, ov_gui_create_label(text, x_align, y_align), FALSE);
}

GtkWidget *ov_gui_attach_label(GtkGrid *grid, const char *text, float x_align, float y_align, int left,
                               int top, int width, int height)
{
    return attached(grid, ov_gui_create_label(text, x_align, y_align), left, top, width, height);
}

GtkWidget *ov_gui_create_markup_label(const char *markup, float x_align, float y_align)
{
    GtkWidget *label = gtk_label_new(nullptr);
    gtk_label_set_markup(GTK_LABEL(label), markup != nullptr ? markup : "");
    set_label_alignment(label, x_align, y_align);
    return shown(label);
}

GtkWidget *ov_gui_pack_markup_label(GtkBox *box, const char *markup, float x_align, float y_align)
{
    return packed(box, ov_gui_create_markup_label(markup, x_align, y_align), FALSE);
}

GtkWidget *ov_gui_attach_markup_label(GtkGrid *grid, const char *markup, float x_align, float y_align,
                                      int left, int top, int width, int height)
{
    return attached(grid, ov_gui_create_markup_label(markup, x_align, y_align), left, top, width, height);
}

GtkWidget *ov_gui_create_input_field_label(const char *label, gboolean required)
{
    ov::GStr markup(ov_util_format_input_field_label_markup(label != nullptr ? label : "", required));
    return ov_gui_create_markup_label(markup.get(), 0.0f, 0.5f);
}

GtkWidget *ov_gui_pack_input_field_label(GtkBox *box, const char *label, gboolean required)
{
    return packed(box, ov_gui_create_input_field_label(label, required), FALSE);
}

GtkWidget *ov_gui_attach_input_field_label(GtkGrid *grid, const char *label, gboolean required, int left,
                                           int top, int width, int height)
{
    return attached(grid, ov_gui_create_input_field_label(label, required), left, top, width, height);
}

// Buttons.

GtkWidget *ov_gui_create_button(const char *label)
{
    return shown(label != nullptr ? gtk_button_new_with_label(label) : gtk_button_new());
}

GtkWidget *ov_gui_add_button(GtkContainer *c, const char *label)
{
    return added(c, ov_gui_create_button(label));
}

GtkWidget *ov_gui_pack_button(GtkBox *box, const char *label, gboolean is_default)
{
    GtkWidget *button = packed(box, ov_gui_create_button(label), FALSE);
    if (is_default) {
        gtk_widget_set_can_default(button, TRUE);
        gtk_widget_grab_default(button);
    }
    return button;
}

GtkWidget *ov_gui_attach_button(GtkGrid *grid, const char *label, int left, int top, int width, int height)
{
    return attached(grid, ov_gui_create_button(label), left, top, width, height);
}

GtkWidget *ov_gui_create_icon_button(const char *icon_name, const char *label)
{
    GtkWidget *button = gtk_button_new_from_icon_name(icon_name, GTK_ICON_SIZE_BUTTON);
    if (label != nullptr) {
        gtk_button_set_label(GTK_BUTTON(button), label);
        gtk_button_set_always_show_image(GTK_BUTTON(button), TRUE);
    }
    return shown(button);
}

GtkWidget *ov_gui_pack_icon_button(GtkBox *box, const char *icon_name, const char *label)
{
    return packed(box, ov_gui_create_icon_button(icon_name, label), FALSE);
}

GtkWidget *ov_gui_create_menu_button(const char *label)
{
    GtkWidget *button = ov_gui_create_button(label);
    gtk_button_set_relief(GTK_BUTTON(button), GTK_RELIEF_NONE);
    gtk_widget_set_focus_on_click(button, FALSE);
    return button;
}

GtkWidget *ov_gui_pack_menu_button(GtkBox *box, const char *label)
{
    return packed(box, ov_gui_create_menu_button(label), FALSE);
}

GtkWidget *ov_gui_create_check_button(const char *label, gboolean active)
{
    GtkWidget *button = label != nullptr ? gtk_check_button_new_with_label(label) : gtk_check_button_new();
    gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(button), active);
    return shown(button);
}

GtkWidget *ov_gui_pack_check_button(GtkBox *box, const char *label, gboolean active)
{
    return packed(box, ov_gui_create_check_button(label, active), FALSE);
}

GtkWidget *ov_gui_attach_check_button(GtkGrid *grid, const char *label, gboolean active, int left, int top,
                                      int width, int height)
{
    return attached(grid, ov_gui_create_check_button(label, active), left, top, width, height);
}

GtkWidget *ov_gui_create_radio_button(GtkRadioButton *group_member, const char *label)
{
    return shown(gtk_radio_button_new_with_label_from_widget(group_member, label != nullptr ? label : ""));
}

GtkWidget *ov_gui_pack_radio_button(GtkBox *box, GtkRadioButton *group_member, const char *label)
{
    return packed(box, ov_gui_create_radio_button(group_member, label), FALSE);
}

GtkWidget *ov_gui_create_toggle_button(const char *label, gboolean active)
{
    GtkWidget *button = label != nullptr ? gtk_toggle_button_new_with_label(label) : gtk_toggle_button_new();
    gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(button), active);
    return shown(button);
}

GtkWidget *ov_gui_pack_toggle_button(GtkBox *box, const char *label, gboolean active)
{
    return packed(box, ov_gui_create_toggle_button(label, active), FALSE);
}

GtkWidget *ov_gui_create_switch(gboolean active)
{
    GtkWidget *button = gtk_switch_new();
    gtk_switch_set_active(GTK_SWITCH(button), active);
    return shown(button);
}

GtkWidget *ov_gui_pack_switch(GtkBox *box, gboolean active)
{
    return packed(box, ov_gui_create_switch(active), FALSE);
}

// Entries and text views.

GtkWidget *ov_gui_create_entry(const char *text, gboolean activates_default)
{
    GtkWidget *entry = gtk_entry_new();
    ov_gui_disable_emojis_in_entry(GTK_ENTRY(entry));
    if (text != nullptr)
        gtk_entry_set_text(GTK_ENTRY(entry), text);
    gtk_entry_set_activates_default(GTK_ENTRY(entry), activates_default);
    return shown(entry);
}

GtkWidget *ov_gui_add_entry(GtkContainer *c, const char *text, gboolean activates_default)
{
    return added(c, ov_gui_create_entry(text, activates_default));
}

GtkWidget *ov_gui_pack_entry(GtkBox *box, gboolean expand, const char *text, gboolean activates_default)
{
    return packed(box, ov_gui_create_entry(text, activates_default), expand);
}

GtkWidget *ov_gui_attach_entry(GtkGrid *grid, const char *text, gboolean activates_default, int left, int top,
                               int width, int height)
{
    return attached(grid, ov_gui_create_entry(text, activates_default), left, top, width, height);
}

GtkWidget *ov_gui_create_text_view()
{
    GtkWidget *view = gtk_text_view_new();
    ov_gui_disable_emojis_in_text_view(GTK_TEXT_VIEW(view));
    return shown(view);
}

GtkWidget *ov_gui_add_text_view(GtkContainer *c)
{
    return added(c, ov_gui_create_text_view());
}
GtkWidget *ov_gui_pack_text_view(GtkBox *box, gboolean expand)
{
    return packed(box, ov_gui_create_text_view(), expand);
}

GtkWidget *ov_gui_create_spacifying_entry(gboolean compact, const char *latin1_text,
                                          gboolean activates_default)
{
    GtkWidget *entry = ov_spacifying_entry_new(compact);
    if (latin1_text != nullptr)
        ov_spacifying_entry_set_text(OV_SPACIFYING_ENTRY(entry), latin1_text);
    gtk_entry_set_activates_default(GTK_ENTRY(entry), activates_default);
    return shown(entry);
}

GtkWidget *ov_gui_pack_spacifying_entry(GtkBox *box, gboolean expand, gboolean compact,
                                        const char *latin1_text, gboolean activates_default)
{
    return packed(box, ov_gui_create_spacifying_entry(compact, latin1_text, activates_default), expand);
}

GtkWidget *ov_gui_attach_spacifying_entry(GtkGrid *grid, gboolean compact, const char *latin1_text,
                                          gboolean activates_default, int left, int top, int width,
                                          int height)
{
    return attached(grid, ov_gui_create_spacifying_entry(compact, latin1_text, activates_default), left, top,
                    width, height);
}

GtkWidget *ov_gui_create_spacifying_text_view(const char *latin1_text)
{
    GtkWidget *view = ov_spacifying_text_view_new();
    if (latin1_text != nullptr)
        ov_spacifying_text_view_set_text(OV_SPACIFYING_TEXT_VIEW(view), latin1_text);
    return shown(view);
}

GtkWidget *ov_gui_add_spacifying_text_view(GtkContainer *c, const char *latin1_text)
{
    return added(c, ov_gui_create_spacifying_text_view(latin1_text));
}

// Combo boxes.

GtkWidget *ov_gui_create_combo_box_text()
{
    return shown(gtk_combo_box_text_new());
}
GtkWidget *ov_gui_pack_combo_box_text(GtkBox *box, gboolean expand)
{
    return packed(box, ov_gui_create_combo_box_text(), expand);
}
GtkWidget *ov_gui_attach_combo_box_text(GtkGrid *grid, int left, int top, int width, int height)
{
    return attached(grid, ov_gui_create_combo_box_text(), left, top, width, height);
}

// Scrolled windows.

GtkWidget *ov_gui_create_scrolled_window(GtkPolicyType h_policy, GtkPolicyType v_policy, GtkShadowType shadow)
{
    GtkWidget *scrolled = gtk_scrolled_window_new(nullptr, nullptr);
    gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scrolled), h_policy, v_policy);
    gtk_scrolled_window_set_shadow_type(GTK_SCROLLED_WINDOW(scrolled), shadow);
    return shown(scrolled);
}

GtkWidget *ov_gui_add_scrolled_window(GtkContainer *c, GtkPolicyType h_policy, GtkPolicyType v_policy,
                                      GtkShadowType shadow)
{
    return added(c, ov_gui_create_scrolled_window(h_policy, v_policy, shadow));
}

GtkWidget *ov_gui_pack_scrolled_window(GtkBox *box, gboolean expand, GtkPolicyType h_policy,
                                       GtkPolicyType v_policy, GtkShadowType shadow)
{
    return packed(box, ov_gui_create_scrolled_window(h_policy, v_policy, shadow), expand);
}

// Frames.

GtkWidget *ov_gui_create_frame(const char *label)
{
    return shown(gtk_frame_new(label));
}
GtkWidget *ov_gui_add_frame(GtkContainer *c, const char *label)
{
    return added(c, ov_gui_create_frame(label));
}
GtkWidget *ov_gui_pack_frame(GtkBox *box, gboolean expand, const char *label)
{
    return packed(box, ov_gui_create_frame(label), expand);
}

GtkWidget *ov_gui_create_sunken_frame()
{
    GtkWidget *frame = ov_gui_create_frame(nullptr);
    gtk_frame_set_shadow_type(GTK_FRAME(frame), GTK_SHADOW_IN);
    return frame;
}

GtkWidget *ov_gui_pack_sunken_frame(GtkBox *box, gboolean expand)
{
    return packed(box, ov_gui_create_sunken_frame(), expand);
}

GtkWidget *ov_gui_create_markup_frame(const char *markup)
{
    GtkWidget *frame = ov_gui_create_frame(nullptr);
    gtk_frame_set_label_widget(GTK_FRAME(frame), ov_gui_create_markup_label(markup, 0.0f, 0.5f));
    return frame;
}

GtkWidget *ov_gui_pack_markup_frame(GtkBox *box, gboolean expand, const char *markup)
{
    return packed(box, ov_gui_create_markup_frame(markup), expand);
}

GtkWidget *ov_gui_create_input_field_frame(const char *label, gboolean required)
{
    GtkWidget *frame = ov_gui_create_frame(nullptr);
    gtk_frame_set_label_widget(GTK_FRAME(frame), ov_gui_create_input_field_label(label, required));
    return frame;
}

GtkWidget *ov_gui_pack_input_field_frame(GtkBox *box, gboolean expand, const char *label, gboolean required)
{
    return packed(box, ov_gui_create_input_field_frame(label, required), expand);
}

// Grids.

GtkWidget *ov_gui_create_grid(gboolean spacing)
{
    GtkWidget *grid = gtk_grid_new();
    if (spacing) {
        gtk_grid_set_row_spacing(GTK_GRID(grid), default_margin);
        gtk_grid_set_column_spacing(GTK_GRID(grid), default_margin);
    }
    return shown(grid);
}

GtkWidget *ov_gui_add_grid(GtkContainer *c, gboolean spacing)
{
    return added(c, ov_gui_create_grid(spacing));
}
GtkWidget *ov_gui_pack_grid(GtkBox *box, gboolean expand, gboolean spacing)
{
    return packed(box, ov_gui_create_grid(spacing), expand);
}

// Containers of other kinds.

GtkWidget *ov_gui_create_notebook()
{
    return shown(gtk_notebook_new());
}
GtkWidget *ov_gui_add_notebook(GtkContainer *c)
{
    return added(c, ov_gui_create_notebook());
}
GtkWidget *ov_gui_pack_notebook(GtkBox *box, gboolean expand)
{
    return packed(box, ov_gui_create_notebook(), expand);
}
GtkWidget *ov_gui_create_paned(GtkOrientation orientation)
{
    return shown(gtk_paned_new(orientation));
}
GtkWidget *ov_gui_pack_paned(GtkBox *box, gboolean expand, GtkOrientation orientation)
{
    return packed(box, ov_gui_create_paned(orientation), expand);
}
GtkWidget *ov_gui_create_stack()
{
    return shown(gtk_stack_new());
}
GtkWidget *ov_gui_pack_stack(GtkBox *box, gboolean expand)
{
    return packed(box, ov_gui_create_stack(), expand);
}
GtkWidget *ov_gui_create_stack_sidebar(GtkStack *stack)
{
    GtkWidget *sidebar = gtk_stack_sidebar_new();
    if (stack != nullptr)
        gtk_stack_sidebar_set_stack(GTK_STACK_SIDEBAR(sidebar), stack);
    return shown(sidebar);
}
GtkWidget *ov_gui_pack_stack_sidebar(GtkBox *box, gboolean expand, GtkStack *stack)
{
    return packed(box, ov_gui_create_stack_sidebar(stack), expand);
}
GtkWidget *ov_gui_create_overlay()
{
    return shown(gtk_overlay_new());
}
GtkWidget *ov_gui_add_overlay(GtkContainer *c)
{
    return added(c, ov_gui_create_overlay());
}
GtkWidget *ov_gui_pack_overlay(GtkBox *box, gboolean expand)
{
    return packed(box, ov_gui_create_overlay(), expand);
}
GtkWidget *ov_gui_create_event_box()
{
    return shown(gtk_event_box_new());
}
GtkWidget *ov_gui_add_event_box(GtkContainer *c)
{
    return added(c, ov_gui_create_event_box());
}
GtkWidget *ov_gui_pack_event_box(GtkBox *box, gboolean expand)
{
    return packed(box, ov_gui_create_event_box(), expand);
}

GtkWidget *ov_gui_create_drawing_area(int width, int height)
{
    GtkWidget *area = gtk_drawing_area_new();
    gtk_widget_set_size_request(area, width, height);
    return shown(area);
}

GtkWidget *ov_gui_add_drawing_area(GtkContainer *c, int width, int height)
{
    return added(c, ov_gui_create_drawing_area(width, height));
}

GtkWidget *ov_gui_pack_drawing_area(GtkBox *box, gboolean expand, int width, int height)
{
    return packed(box, ov_gui_create_drawing_area(width, height), expand);
}

// Images, separators, spaces, expanders.

GtkWidget *ov_gui_create_image_from_icon_name(const char *icon_name, GtkIconSize size)
{
    return shown(gtk_image_new_from_icon_name(icon_name, size));
}

GtkWidget *ov_gui_pack_image_from_icon_name(GtkBox *box, const char *icon_name, GtkIconSize size)
{
    return packed(box, ov_gui_create_image_from_icon_name(icon_name, size), FALSE);
}

GtkWidget *ov_gui_create_separator(GtkOrientation orientation)
{
    return shown(gtk_separator_new(orientation));
}
GtkWidget *ov_gui_pack_separator(GtkBox *box, GtkOrientation orientation)
{
    return packed(box, ov_gui_create_separator(orientation), FALSE);
}

GtkWidget *ov_gui_create_space(int width, int height)
{
    GtkWidget *space = gtk_drawing_area_new();
    gtk_widget_set_size_request(space, width, height);
    return shown(space);
}

GtkWidget *ov_gui_pack_space(GtkBox *box, int width, int height)
{
    return packed(box, ov_gui_create_space(width, height), FALSE);
}

GtkWidget *ov_gui_create_expander(const char *label, gboolean expanded)
{
    GtkWidget *expander = gtk_expander_new(label);
    gtk_expander_set_expanded(GTK_EXPANDER(expander), expanded);
    return shown(expander);
}

GtkWidget *ov_gui_pack_expander(GtkBox *box, gboolean expand, const char *label, gboolean expanded)
{
    return packed(box, ov_gui_create_expander(label, expanded), expand);
}

void ov_gui_realize_own_window(GtkWidget *widget, int extra_events)
{
    GtkAllocation allocation;
    gtk_widget_get_allocation(widget, &allocation);
    GdkWindowAttr attributes = {};
    attributes.window_type = GDK_WINDOW_CHILD;
    attributes.x = allocation.x;
    attributes.y = allocation.y;
    attributes.width = allocation.width;
    attributes.height = allocation.height;
    attributes.wclass = GDK_INPUT_OUTPUT;
    attributes.visual = gtk_widget_get_visual(widget);
    attributes.event_mask = gtk_widget_get_events(widget) | GDK_EXPOSURE_MASK | extra_events;
    GdkWindow *window = gdk_window_new(gtk_widget_get_parent_window(widget), &attributes,
                                       GDK_WA_X | GDK_WA_Y | GDK_WA_VISUAL);
    gtk_widget_register_window(widget, window);
    gtk_widget_set_window(widget, window);
    gtk_widget_set_realized(widget, TRUE);
}

void ov_gui_allocate_own_window(GtkWidget *widget, GtkAllocation *allocation)
{
    gtk_widget_set_allocation(widget, allocation);
    if (gtk_widget_get_realized(widget))
        gdk_window_move_resize(gtk_widget_get_window(widget), allocation->x, allocation->y, allocation->width,
                               allocation->height);
}
