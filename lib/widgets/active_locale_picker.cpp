#include "widgets/active_locale_picker.h"

#include "lang/active_locale.h"
#include "lang/event_bus.h"

struct _OvActiveLocalePicker {
    OvLocalePicker parent_instance;
    OvEventBusHandler *active_locale_handler;
};

G_DEFINE_TYPE(OvActiveLocalePicker, ov_active_locale_picker, OV_TYPE_LOCALE_PICKER)

namespace
{

void follow_active_locale(gpointer picker)
{
    ov_locale_picker_select(OV_LOCALE_PICKER(picker), ov_ovinternal_get_active_locale(), FALSE);
}

void on_picked(OvLocalePicker *, gpointer locale, gpointer)
{
    ov_ovinternal_set_active_locale(static_cast<const OvLocale *>(locale));
}

} // namespace

static void ov_active_locale_picker_dispose(GObject *object)
{
    auto *picker = OV_ACTIVE_LOCALE_PICKER(object);
    g_clear_pointer(&picker->active_locale_handler, ov_event_bus_disconnect);
    G_OBJECT_CLASS(ov_active_locale_picker_parent_class)->dispose(object);
}

static void ov_active_locale_picker_class_init(OvActiveLocalePickerClass *klass)
{
    G_OBJECT_CLASS(klass)->dispose = ov_active_locale_picker_dispose;
}

static void ov_active_locale_picker_init(OvActiveLocalePicker *picker)
{
    ov_locale_picker_select(OV_LOCALE_PICKER(picker), ov_ovinternal_get_active_locale(), FALSE);
    picker->active_locale_handler =
        ov_event_bus_connect(OV_EVENT_ACTIVE_LOCALE_CHANGED, follow_active_locale, picker);
    g_signal_connect(picker, "picked", G_CALLBACK(on_picked), nullptr);
}

GtkWidget *ov_active_locale_picker_new()
{
    return GTK_WIDGET(g_object_new(OV_TYPE_ACTIVE_LOCALE_PICKER, nullptr));
}
