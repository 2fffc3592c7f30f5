#include "widgets/langstr_label.h"

#include "core/raii.h"
#include "core/strings.h"
#include "lang/event_bus.h"

struct _OvLangstrLabel {
    GtkLabel parent_instance;
    langstr *content;
    OvEventBusHandler *active_locale_handler;
};

G_DEFINE_TYPE(OvLangstrLabel, ov_langstr_label, GTK_TYPE_LABEL)

namespace
{

void relabel(OvLangstrLabel *label)
{
    const char *text = ov_langstr_get_text(label->content, nullptr);
    ov::GStr utf8(ov_convert_latin1_to_utf8(text != nullptr ? text : ""));
    gtk_label_set_text(GTK_LABEL(label), utf8 ? utf8.get() : "");
}

void on_active_locale_changed(gpointer label)
{
    relabel(OV_LANGSTR_LABEL(label));
}

} // namespace

static void ov_langstr_label_destroy(GtkWidget *widget)
{
    auto *label = OV_LANGSTR_LABEL(widget);
    g_clear_pointer(&label->active_locale_handler, ov_event_bus_disconnect);
    GTK_WIDGET_CLASS(ov_langstr_label_parent_class)->destroy(widget);
}

static void ov_langstr_label_finalize(GObject *object)
{
    auto *label = OV_LANGSTR_LABEL(object);
    ov_langstr_free(label->content);
    G_OBJECT_CLASS(ov_langstr_label_parent_class)->finalize(object);
}

static void ov_langstr_label_class_init(OvLangstrLabelClass *klass)
{
    G_OBJECT_CLASS(klass)->finalize = ov_langstr_label_finalize;
    GTK_WIDGET_CLASS(klass)->destroy = ov_langstr_label_destroy;
}

static void ov_langstr_label_init(OvLangstrLabel *label)
{
    label->active_locale_handler =
        ov_event_bus_connect(OV_EVENT_ACTIVE_LOCALE_CHANGED, on_active_locale_changed, label);
}

GtkWidget *ov_langstr_label_new(const langstr *ls)
{
    auto *label = static_cast<OvLangstrLabel *>(g_object_new(OV_TYPE_LANGSTR_LABEL, nullptr));
    label->content = ov_langstr_clone(ls);
    relabel(label);
    return GTK_WIDGET(label);
}

void ov_langstr_label_set_content(OvLangstrLabel *label, const langstr *ls)
{
    g_return_if_fail(OV_IS_LANGSTR_LABEL(label));
    langstr *old = label->content;
    label->content = ov_langstr_clone(ls);
    ov_langstr_free(old);
    relabel(label);
}

const langstr *ov_langstr_label_get_content(OvLangstrLabel *label)
{
    g_return_val_if_fail(OV_IS_LANGSTR_LABEL(label), nullptr);
    return label->content;
}
