#include "widgets/picker.h"

#include "core/raii.h"
#include "gui/gui.h"
#include "gui/menu.h"
#include "gui/style.h"

#include <new>
#include <string>
#include <vector>

struct _OvPicker {
    GtkToggleButton parent_instance;
    struct Impl {
        OvPickerTextCallback text_callback = nullptr;
        gpointer user_data = nullptr;
        OvPickerOptionDestroyCallback destroy_callback = nullptr;
        std::string empty_text;
        // A null option is a separator.
        std::vector<gpointer> options;
        gpointer selected = nullptr;
        GtkWidget *label = nullptr;
    } * impl;
};

enum { SIGNAL_PICKED, N_SIGNALS };

G_DEFINE_TYPE(OvPicker, ov_picker, GTK_TYPE_TOGGLE_BUTTON)

static guint signals[N_SIGNALS];

namespace
{

std::string option_text(OvPicker *picker, gconstpointer option)
{
    ov::GStr text(picker->impl->text_callback != nullptr
                      ? picker->impl->text_callback(option, picker->impl->user_data)
                      : nullptr);
    return text ? std::string(text.get()) : std::string();
}

void relabel(OvPicker *picker)
{
    const auto *impl = picker->impl;
    std::string text = impl->selected != nullptr ? option_text(picker, impl->selected) : impl->empty_text;
    gtk_label_set_text(GTK_LABEL(impl->label), text.c_str());
}

void store_choice(GtkMenuItem *item, gpointer result)
{
    *static_cast<gpointer *>(result) = ov_gui_menu_get_item_data(GTK_WIDGET(item));
}

void destroy_options(OvPicker *picker)
{
    auto *impl = picker->impl;
    std::vector<gpointer> options;
    options.swap(impl->options);
    impl->selected = nullptr;
    if (impl->destroy_callback != nullptr)
        for (gpointer option : options)
            if (option != nullptr)
                impl->destroy_callback(option);
}

char *string_text(gconstpointer option, gpointer)
{
    return g_strdup(static_cast<const char *>(option));
}

} // namespace

static void ov_picker_clicked(GtkButton *button)
{
    GTK_BUTTON_CLASS(ov_picker_parent_class)->clicked(button);
    if (!gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(button)))
        return;
    auto *picker = OV_PICKER(button);
    g_object_ref(picker);
    gpointer chosen = nullptr;
    GtkWidget *menu = gtk_menu_new();
    if (picker->impl->options.empty())
        ov_gui_menu_append_item(GTK_MENU_SHELL(menu), picker->impl->empty_text.c_str(), nullptr, 1);
    for (gpointer option : picker->impl->options) {
        if (option == nullptr) {
            ov_gui_menu_append_separator(GTK_MENU_SHELL(menu));
            continue;
        }
        GtkWidget *item = ov_gui_menu_append_item_with_activate_callback(
            GTK_MENU_SHELL(menu), option_text(picker, option).c_str(), option, 0, store_choice, &chosen);
        if (option == picker->impl->selected)
            ov_gui_style_selected_menu_item(item);
    }
    ov_gui_menu_run_and_destroy(GTK_MENU(menu), GTK_WIDGET(picker));
    if (chosen != nullptr)
        ov_picker_select(picker, chosen, TRUE);
    gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(picker), FALSE);
    g_object_unref(picker);
}

static void ov_picker_finalize(GObject *object)
{
    auto *picker = OV_PICKER(object);
    destroy_options(picker);
    picker->impl->~Impl();
    g_free(picker->impl);
    G_OBJECT_CLASS(ov_picker_parent_class)->finalize(object);
}

static void ov_picker_class_init(OvPickerClass *klass)
{
    G_OBJECT_CLASS(klass)->finalize = ov_picker_finalize;
    GTK_BUTTON_CLASS(klass)->clicked = ov_picker_clicked;
    signals[SIGNAL_PICKED] = g_signal_new("picked", G_TYPE_FROM_CLASS(klass), G_SIGNAL_RUN_FIRST, 0, nullptr,
                                          nullptr, nullptr, G_TYPE_NONE, 1, G_TYPE_POINTER);
}

static void ov_picker_init(OvPicker *picker)
{
    picker->impl = new (g_malloc(sizeof(_OvPicker::Impl))) _OvPicker::Impl();
    GtkWidget *box = ov_gui_add_hbox(GTK_CONTAINER(picker), TRUE);
    picker->impl->label = ov_gui_create_label("", 0.0f, 0.5f);
    gtk_widget_set_margin_start(picker->impl->label, 3);
    ov_gui_pack_widget(GTK_BOX(box), picker->impl->label, FALSE);
    GtkWidget *alignment = ov_gui_pack_alignment(GTK_BOX(box), TRUE, 1.0f, 0.5f, 0.0f, 0.0f);
    gtk_container_add(GTK_CONTAINER(alignment),
                      ov_gui_create_image_from_icon_name("pan-down-symbolic", GTK_ICON_SIZE_BUTTON));
}

GtkWidget *ov_picker_new(OvPickerTextCallback text_callback, gpointer user_data,
                         OvPickerOptionDestroyCallback destroy_callback, const char *empty_text)
{
    auto *picker = OV_PICKER(g_object_new(OV_TYPE_PICKER, nullptr));
    picker->impl->text_callback = text_callback;
    picker->impl->user_data = user_data;
    picker->impl->destroy_callback = destroy_callback;
    picker->impl->empty_text = empty_text != nullptr ? empty_text : "";
    relabel(picker);
    return GTK_WIDGET(picker);
}

void ov_picker_append_option(OvPicker *picker, gpointer option)
{
    g_return_if_fail(OV_IS_PICKER(picker));
    g_return_if_fail(option != nullptr);
    picker->impl->options.push_back(option);
}

void ov_picker_append_separator(OvPicker *picker)
{
    g_return_if_fail(OV_IS_PICKER(picker));
    picker->impl->options.push_back(nullptr);
}

void ov_picker_clear_options(OvPicker *picker)
{
    g_return_if_fail(OV_IS_PICKER(picker));
    destroy_options(picker);
    relabel(picker);
}

guint ov_picker_get_option_count(OvPicker *picker)
{
    g_return_val_if_fail(OV_IS_PICKER(picker), 0);
    guint count = 0;
    for (gpointer option : picker->impl->options)
        count += option != nullptr ? 1 : 0;
    return count;
}

gpointer ov_picker_get_option(OvPicker *picker, guint index)
{
    g_return_val_if_fail(OV_IS_PICKER(picker), nullptr);
    for (gpointer option : picker->impl->options)
        if (option != nullptr && index-- == 0)
            return option;
    return nullptr;
}

gpointer ov_picker_get_selected(OvPicker *picker)
{
    g_return_val_if_fail(OV_IS_PICKER(picker), nullptr);
    return picker->impl->selected;
}

void ov_picker_select(OvPicker *picker, gpointer option, gboolean emit)
{
    g_return_if_fail(OV_IS_PICKER(picker));
    if (option == picker->impl->selected)
        return;
    picker->impl->selected = option;
    relabel(picker);
    if (emit)
        g_signal_emit(picker, signals[SIGNAL_PICKED], 0, option);
}

const char *ov_picker_get_label_text(OvPicker *picker)
{
    g_return_val_if_fail(OV_IS_PICKER(picker), nullptr);
    return gtk_label_get_text(GTK_LABEL(picker->impl->label));
}

GtkWidget *ov_string_picker_new(const char *empty_text)
{
    return ov_picker_new(string_text, nullptr, g_free, empty_text);
}

void ov_string_picker_append(OvPicker *picker, const char *text)
{
    g_return_if_fail(text != nullptr);
    ov_picker_append_option(picker, g_strdup(text));
}

int ov_string_picker_get_selected_index(OvPicker *picker)
{
    g_return_val_if_fail(OV_IS_PICKER(picker), -1);
    int index = 0;
    for (gpointer option : picker->impl->options) {
        if (option == nullptr)
            continue;
        if (option == picker->impl->selected)
            return index;
        ++index;
    }
    return -1;
}

const char *ov_string_picker_get_selected_text(OvPicker *picker)
{
    return static_cast<const char *>(ov_picker_get_selected(picker));
}

void ov_string_picker_select_index(OvPicker *picker, int index, gboolean emit)
{
    ov_picker_select(picker, index >= 0 ? ov_picker_get_option(picker, guint(index)) : nullptr, emit);
}
