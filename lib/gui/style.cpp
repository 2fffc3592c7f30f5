#include "gui/style.h"

#include "core/error.h"
#include "core/raii.h"
#include "gui/gui.h"

#include <array>

namespace
{

constexpr guint style_priority = GTK_STYLE_PROVIDER_PRIORITY_APPLICATION;

enum StyleId : int {
    BOXED_LABEL,
    GROUPING_PANEL,
    GROUPING_PANEL_HEADER,
    HEADER_MENU_ITEM,
    HSCALE,
    LANGSTR_ENTRY_BUTTON,
    LANGSTR_ENTRY_BUTTON_ACTIVE,
    SELECTED_MENU_ITEM,
    TRANSPARENT_IMAGE,
    ZERO_BUTTON_PADDING,
    IMAGE_AND_LABEL_BUTTON,
    IMAGE_ONLY_BUTTON,
    STYLE_COUNT
};

// The shared providers, made on first use.
std::array<GtkCssProvider *, STYLE_COUNT> providers{};

GtkCssProvider *make_provider(StyleId id);

GtkCssProvider *provider_for(StyleId id)
{
    if (providers[id] == nullptr)
        providers[id] = make_provider(id);
    return providers[id];
}

GtkCssProvider *provider_from_printf(const char *format, ...) G_GNUC_PRINTF(1, 2);
GtkCssProvider *provider_from_printf(const char *format, ...)
{
    va_list args;
    va_start(args, format);
    ov::GStr text(g_strdup_vprintf(format, args));
    va_end(args);
    return ov_css_create_provider(text.get());
}

// The padding of a plain button, read once from a throw-away button.
GtkBorder plain_button_padding()
{
    GtkWidget *dummy = gtk_button_new_with_label("Dummy");
    g_object_ref_sink(dummy);
    GtkStyleContext *context = gtk_widget_get_style_context(dummy);
    GtkBorder padding{};
    gtk_style_context_get_padding(context, gtk_style_context_get_state(context), &padding);
    gtk_widget_destroy(dummy);
    g_object_unref(dummy);
    return padding;
}

GtkCssProvider *make_provider(StyleId id)
{
    const int m = ov_gui_get_default_margin();
    switch (id) {
    case BOXED_LABEL:
        return provider_from_printf(
            ".orvane-boxed-label { background-color: #ffffff; border: 1px solid #cdc7c2; "
            "padding: %dpx %dpx %dpx %dpx; }",
            m / 2, m, m / 2, m);
    case GROUPING_PANEL:
        return provider_from_printf(
            ".orvane-grouping-panel { background-color: rgba( 0, 0, 0, 0.05 ); "
            "border: 1px solid rgba( 0, 0, 0, 0.15 ); padding: %dpx %dpx %dpx %dpx; }",
            m, m, m, m);
    case GROUPING_PANEL_HEADER:
        return provider_from_printf(".orvane-grouping-panel-header { background-color: rgba( 0, 0, 0, 0.1 ); "
                                    "border: 1px solid rgba( 0, 0, 0, 0.15 ); border-bottom: none; "
                                    "padding: %dpx %dpx %dpx %dpx; }",
                                    m, m, m, m);
    case HEADER_MENU_ITEM:
        return ov_css_create_provider("menuitem { font-size: larger; font-weight: bold; }");
    case HSCALE:
        return ov_css_create_provider(
            "scale { padding: 0px 8px 0px 5px; } contents { padding: 0px 0px 0px 10px; }");
    case LANGSTR_ENTRY_BUTTON:
        return ov_css_create_provider(
            "button:not(:backdrop):not(:disabled) { background-color: #ffffff; background-image: none; "
            "border-bottom-color: #cdc7c2; box-shadow: inset 0 0 0 1px rgba(53, 132, 228, 0); color: black; "
            "text-shadow: none; }");
    case LANGSTR_ENTRY_BUTTON_ACTIVE:
        return ov_css_create_provider("button:active { border-color: #3584e4; box-shadow: inset 0 0 0 1px "
                                      "#3584e4; outline-style: none; }");
    case SELECTED_MENU_ITEM:
        return ov_css_create_provider("menuitem { background-color: #808080; color: #ffffff; }");
    case TRANSPARENT_IMAGE:
        return ov_css_create_provider("image { opacity: 0.5; }");
    case ZERO_BUTTON_PADDING:
        return ov_css_create_provider("button { padding: 0; }");
    case IMAGE_AND_LABEL_BUTTON: {
        const GtkBorder p = plain_button_padding();
        // The order of the values (top, right, top, top) is deliberate.
        return provider_from_printf(".orvane-image-and-label-button { padding: %dpx %dpx %dpx %dpx; "
                                    "-GtkButton-image-spacing: %dpx; }",
                                    p.top, p.right, p.top, p.top, p.right - 3);
    }
    case IMAGE_ONLY_BUTTON:
        return provider_from_printf(".orvane-image-only-button { padding: %dpx; }",
                                    plain_button_padding().top);
    case STYLE_COUNT:
        break;
    }
    return nullptr;
}

void style(GtkWidget *widget, StyleId id, const char *class_name = nullptr)
{
    g_return_if_fail(GTK_IS_WIDGET(widget));
    ov_css_style_widget_with_provider(widget, provider_for(id));
    if (class_name != nullptr)
        ov_css_add_class_to_widget(widget, class_name);
}

} // namespace

GtkCssProvider *ov_css_create_provider(const char *text)
{
    g_return_val_if_fail(text != nullptr, nullptr);
    GtkCssProvider *provider = gtk_css_provider_new();
    // The handler keeps the first real error; a deprecation (such as the
    // button image spacing that the padding styles set) is no error, and
    // with a handler connected GTK does not warn about it.
    ov::GErrorPtr error;
    g_signal_connect(provider, "parsing-error",
                     G_CALLBACK(+[](GtkCssProvider *, GtkCssSection *, GError *problem, gpointer first) {
                         auto *kept = static_cast<ov::GErrorPtr *>(first);
                         if (!*kept && !g_error_matches(problem, GTK_CSS_PROVIDER_ERROR,
                                                        GTK_CSS_PROVIDER_ERROR_DEPRECATED))
                             kept->reset(g_error_copy(problem));
                     }),
                     &error);
    gtk_css_provider_load_from_data(provider, text, -1, nullptr);
    g_signal_handlers_disconnect_matched(provider, G_SIGNAL_MATCH_DATA, 0, 0, nullptr, nullptr, &error);
    if (error) {
        ov_error_set_utf8_printf("Couldn't load the style: %s", error->message);
        g_object_unref(provider);
        return nullptr;
    }
    return provider;
}

void ov_css_style_widget_with_provider(GtkWidget *widget, GtkCssProvider *provider)
{
    g_return_if_fail(GTK_IS_WIDGET(widget));
    if (provider == nullptr)
        return;
    gtk_style_context_add_provider(gtk_widget_get_style_context(widget), GTK_STYLE_PROVIDER(provider),
                                   style_priority);
}

void ov_css_style_widget(GtkWidget *widget, const char *text)
{
    g_return_if_fail(GTK_IS_WIDGET(widget));
    ov::ObjectRef<GtkCssProvider> provider =
        ov::ObjectRef<GtkCssProvider>::adopt(ov_css_create_provider(text));
    ov_css_style_widget_with_provider(widget, provider.get());
}

void ov_css_add_class_to_widget(GtkWidget *widget, const char *class_name)
{
    g_return_if_fail(GTK_IS_WIDGET(widget));
    gtk_style_context_add_class(gtk_widget_get_style_context(widget), class_name);
}

void ov_gui_style_boxed_label(GtkWidget *widget)
{
    style(widget, BOXED_LABEL, "orvane-boxed-label");
}
void ov_gui_style_grouping_panel(GtkWidget *widget)
{
    style(widget, GROUPING_PANEL, "orvane-grouping-panel");
}
void ov_gui_style_grouping_panel_header(GtkWidget *widget)
{
    style(widget, GROUPING_PANEL_HEADER, "orvane-grouping-panel-header");
}
void ov_gui_style_header_menu_item(GtkWidget *widget)
{
    style(widget, HEADER_MENU_ITEM);
}
void ov_gui_style_hscale(GtkWidget *widget)
{
    style(widget, HSCALE);
}
void ov_gui_style_langstr_entry_button(GtkWidget *widget)
{
    style(widget, LANGSTR_ENTRY_BUTTON);
    style(widget, LANGSTR_ENTRY_BUTTON_ACTIVE);
}
void ov_gui_style_selected_menu_item(GtkWidget *widget)
{
    style(widget, SELECTED_MENU_ITEM);
}
void ov_gui_style_transparent_image(GtkWidget *widget)
{
    style(widget, TRANSPARENT_IMAGE);
}
void ov_gui_style_zero_button_padding(GtkWidget *widget)
{
    style(widget, ZERO_BUTTON_PADDING);
}

void ov_gui_style_normalize_button_padding(GtkWidget *button)
{
    g_return_if_fail(GTK_IS_BUTTON(button));
    // Both providers are made together on first use.
    provider_for(IMAGE_AND_LABEL_BUTTON);
    provider_for(IMAGE_ONLY_BUTTON);
    const char *label = gtk_button_get_label(GTK_BUTTON(button));
    if (label == nullptr || *label == '\0')
        style(button, IMAGE_ONLY_BUTTON, "orvane-image-only-button");
    else
        style(button, IMAGE_AND_LABEL_BUTTON, "orvane-image-and-label-button");
}

void ov_gui_style_clean_up()
{
    for (GtkCssProvider *&provider : providers)
        g_clear_object(&provider);
}
