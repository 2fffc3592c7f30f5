#include "gui/spacifying_text_view.h"

#include "core/raii.h"
#include "core/strings.h"
#include "gui/gui.h"
#include "gui/spacifying_entry.h"

struct _OvSpacifyingTextView {
    GtkTextView parent_instance;
};

G_DEFINE_TYPE(OvSpacifyingTextView, ov_spacifying_text_view, GTK_TYPE_TEXT_VIEW)

namespace
{

void on_insert_text(GtkTextBuffer *buffer, GtkTextIter *location, const char *text, int length,
                    gpointer widget)
{
    if (!ov_spacifying_text_needs_fixing(text, length, TRUE))
        return;
    ov::GStr fixed(ov_spacifying_text_fix(text, length, TRUE));
    g_signal_stop_emission_by_name(buffer, "insert-text");
    // The insertion revalidates location, so it stays usable for the caller.
    if (fixed && *fixed.get() != '\0')
        gtk_text_buffer_insert(buffer, location, fixed.get(), -1);
    gdk_display_beep(gtk_widget_get_display(GTK_WIDGET(widget)));
}

bool is_tab_key(guint keyval)
{
    return keyval == GDK_KEY_Tab || keyval == GDK_KEY_KP_Tab || keyval == GDK_KEY_ISO_Left_Tab ||
           keyval == GDK_KEY_3270_BackTab;
}

// Tab keys skip the text view's own handling (which would insert a tab) and
// go to the handler of the class above it, so that they move the focus.
gboolean key_press_event(GtkWidget *widget, GdkEventKey *event)
{
    if (is_tab_key(event->keyval)) {
        auto *grand_parent = GTK_WIDGET_CLASS(g_type_class_peek(g_type_parent(GTK_TYPE_TEXT_VIEW)));
        if (grand_parent == nullptr || grand_parent->key_press_event == nullptr)
            return TRUE;
        return grand_parent->key_press_event(widget, event);
    }
    return GTK_WIDGET_CLASS(ov_spacifying_text_view_parent_class)->key_press_event(widget, event);
}

} // namespace

static void ov_spacifying_text_view_class_init(OvSpacifyingTextViewClass *klass)
{
    GTK_WIDGET_CLASS(klass)->key_press_event = key_press_event;
}

static void ov_spacifying_text_view_init(OvSpacifyingTextView *view)
{
    ov_gui_disable_emojis_in_text_view(GTK_TEXT_VIEW(view));
    g_signal_connect(gtk_text_view_get_buffer(GTK_TEXT_VIEW(view)), "insert-text", G_CALLBACK(on_insert_text),
                     view);
}

GtkWidget *ov_spacifying_text_view_new()
{
    return GTK_WIDGET(g_object_new(OV_TYPE_SPACIFYING_TEXT_VIEW, nullptr));
}

void ov_spacifying_text_view_set_text(OvSpacifyingTextView *view, const char *latin1_text)
{
    g_return_if_fail(OV_IS_SPACIFYING_TEXT_VIEW(view));
    ov::GStr text(ov_convert_latin1_to_utf8(latin1_text != nullptr ? latin1_text : ""));
    if (!text)
        return;
    gtk_text_buffer_set_text(gtk_text_view_get_buffer(GTK_TEXT_VIEW(view)),
                             ov_strip_surrounding_and_detabify_within_original_for_utf8(text.get()), -1);
}

char *ov_spacifying_text_view_get_text(OvSpacifyingTextView *view)
{
    g_return_val_if_fail(OV_IS_SPACIFYING_TEXT_VIEW(view), nullptr);
    GtkTextBuffer *buffer = gtk_text_view_get_buffer(GTK_TEXT_VIEW(view));
    GtkTextIter start;
    GtkTextIter end;
    gtk_text_buffer_get_bounds(buffer, &start, &end);
    ov::GStr text(gtk_text_buffer_get_text(buffer, &start, &end, TRUE));
    if (ov_spacifying_text_needs_fixing(text.get(), -1, TRUE)) {
        text.reset(ov_spacifying_text_fix(text.get(), -1, TRUE));
        if (!text)
            return nullptr;
    }
    ov::GStr latin1(ov_convert_utf8_to_latin1(text.get()));
    if (!latin1)
        return nullptr;
    return ov_strip_surrounding_and_detabify_in_new_for_latin1(latin1.get());
}
