#include "widgets/langstr_display.h"

#include "core/raii.h"
#include "core/strings.h"
#include "gui/gui.h"
#include "lang/event_bus.h"
#include "widgets/dropdown_panel.h"
#include "widgets/langstr_status_icon.h"

struct _OvLangstrDisplay {
    GtkBox parent_instance;
    OvLangstrMode mode;
    GtkTextView *view;
    langstr *content;
    OvEventBusHandler *active_locale_handler;
};

G_DEFINE_TYPE(OvLangstrDisplay, ov_langstr_display, GTK_TYPE_BOX)

namespace
{

void insert_latin1(GtkTextBuffer *buffer, GtkTextIter *end, const char *latin1, const char *tag)
{
    ov::GStr utf8(ov_convert_latin1_to_utf8(latin1 != nullptr ? latin1 : ""));
    if (!utf8)
        return;
    if (tag != nullptr)
        gtk_text_buffer_insert_with_tags_by_name(buffer, end, utf8.get(), -1, tag, nullptr);
    else
        gtk_text_buffer_insert(buffer, end, utf8.get(), -1);
}

void fill(OvLangstrDisplay *display)
{
    GtkTextBuffer *buffer = gtk_text_view_get_buffer(display->view);
    gtk_text_buffer_set_text(buffer, "", 0);
    GtkTextIter end;
    gtk_text_buffer_get_end_iter(buffer, &end);
    const langstr *ls = display->content;
    if (display->mode == OV_LANGSTR_MODE_MULTI_LINE) {
        insert_latin1(buffer, &end, ov_langstr_get_text(ls, nullptr), nullptr);
        gtk_text_buffer_insert(buffer, &end, "  ", -1);
        GtkTextChildAnchor *anchor = gtk_text_buffer_create_child_anchor(buffer, &end);
        GtkWidget *icon = ov_langstr_status_icon_new(ls);
        gtk_text_view_add_child_at_anchor(display->view, icon, anchor);
        gtk_widget_show(icon);
        return;
    }
    if (ls == nullptr) {
        gtk_text_buffer_insert_with_tags_by_name(buffer, &end, "Empty", -1, "message", nullptr);
        return;
    }
    for (const langstr *t = ls; t != nullptr; t = t->next) {
        if (t != ls)
            gtk_text_buffer_insert(buffer, &end, "\n\n", -1);
        ov::GStr name(ov_locale_format_ui_string(t->locale));
        ov::GStr header(g_strconcat(name.get(), ":\n", nullptr));
        gtk_text_buffer_insert_with_tags_by_name(buffer, &end, header.get(), -1, "header", nullptr);
        insert_latin1(buffer, &end, t->text, "inset");
    }
}

void on_active_locale_changed(gpointer display)
{
    fill(OV_LANGSTR_DISPLAY(display));
}

} // namespace

static void ov_langstr_display_destroy(GtkWidget *widget)
{
    auto *display = OV_LANGSTR_DISPLAY(widget);
    g_clear_pointer(&display->active_locale_handler, ov_event_bus_disconnect);
    GTK_WIDGET_CLASS(ov_langstr_display_parent_class)->destroy(widget);
}

static void ov_langstr_display_finalize(GObject *object)
{
    ov_langstr_free(OV_LANGSTR_DISPLAY(object)->content);
    G_OBJECT_CLASS(ov_langstr_display_parent_class)->finalize(object);
}

static void ov_langstr_display_class_init(OvLangstrDisplayClass *klass)
{
    G_OBJECT_CLASS(klass)->finalize = ov_langstr_display_finalize;
    GTK_WIDGET_CLASS(klass)->destroy = ov_langstr_display_destroy;
}

static void ov_langstr_display_init(OvLangstrDisplay *display)
{
    gtk_orientable_set_orientation(GTK_ORIENTABLE(display), GTK_ORIENTATION_VERTICAL);
    display->active_locale_handler =
        ov_event_bus_connect(OV_EVENT_ACTIVE_LOCALE_CHANGED, on_active_locale_changed, display);
}

GtkWidget *ov_langstr_display_new(int mode, int width, int height)
{
    auto *display = static_cast<OvLangstrDisplay *>(g_object_new(OV_TYPE_LANGSTR_DISPLAY, nullptr));
    display->mode = OvLangstrMode(mode);
    gtk_widget_set_size_request(GTK_WIDGET(display), width, height);
    display->view = GTK_TEXT_VIEW(ov_gui_pack_text_view(GTK_BOX(display), TRUE));
    ov_gui_set_default_surrounding_margin(GTK_WIDGET(display->view));
    gtk_text_view_set_editable(display->view, FALSE);
    gtk_text_view_set_cursor_visible(display->view, FALSE);
    gtk_text_view_set_wrap_mode(display->view, GTK_WRAP_WORD_CHAR);
    GtkTextBuffer *buffer = gtk_text_view_get_buffer(display->view);
    int margin = ov_gui_get_default_margin();
    gtk_text_buffer_create_tag(buffer, "header", "pixels-below-lines", margin / 2, "weight", 700, nullptr);
    gtk_text_buffer_create_tag(buffer, "inset", "left-margin", 3 * margin, nullptr);
    gtk_text_buffer_create_tag(buffer, "message", "foreground", "#aaaaaa", "style", PANGO_STYLE_ITALIC,
                               nullptr);
    fill(display);
    return GTK_WIDGET(display);
}

void ov_langstr_display_update_content(OvLangstrDisplay *display, const langstr *ls)
{
    g_return_if_fail(OV_IS_LANGSTR_DISPLAY(display));
    langstr *old = display->content;
    display->content = ov_langstr_clone(ls);
    ov_langstr_free(old);
    fill(display);
}

GtkTextView *ov_langstr_display_get_text_view(OvLangstrDisplay *display)
{
    g_return_val_if_fail(OV_IS_LANGSTR_DISPLAY(display), nullptr);
    return display->view;
}

void ov_langstr_display_dropdown_run(const langstr *ls)
{
    GtkWidget *panel = ov_dropdown_panel_new(TRUE);
    GtkWidget *box = ov_gui_add_vbox(GTK_CONTAINER(panel), FALSE);
    GtkWidget *display = ov_langstr_display_new(OV_LANGSTR_MODE_SINGLE_LINE, 500, 140);
    ov_gui_pack_widget(GTK_BOX(box), display, TRUE);
    ov_langstr_display_update_content(OV_LANGSTR_DISPLAY(display), ls);
    ov_dropdown_panel_run(OV_DROPDOWN_PANEL(panel));
}
