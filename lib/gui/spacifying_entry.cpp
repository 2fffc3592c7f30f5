#include "gui/spacifying_entry.h"

#include "core/raii.h"
#include "core/strings.h"
#include "gui/gui.h"

#include <cstring>

struct _OvSpacifyingEntry {
    GtkEntry parent_instance;
    gboolean compact;
};

G_DEFINE_TYPE(OvSpacifyingEntry, ov_spacifying_entry, GTK_TYPE_ENTRY)

namespace
{

bool must_replace(gunichar c, gboolean keep_line_feeds)
{
    return g_unichar_isspace(c) && c != ' ' && !(keep_line_feeds && c == '\n');
}

// The text ends at length bytes or at its NUL, whichever comes first.
gssize text_length(const char *text, gssize length)
{
    return length < 0 ? -1 : gssize(strnlen(text, gsize(length)));
}

// Replaces the insertion with its fixed form when it needs fixing; the
// fixed text passes this handler when it is inserted in turn.
void on_insert_text(GtkEditable *editable, const char *text, int length, int *position, gpointer widget)
{
    if (!ov_spacifying_text_needs_fixing(text, length, FALSE))
        return;
    ov::GStr fixed(ov_spacifying_text_fix(text, length, FALSE));
    g_signal_stop_emission_by_name(editable, "insert-text");
    if (fixed && *fixed.get() != '\0')
        gtk_editable_insert_text(editable, fixed.get(), -1, position);
    gdk_display_beep(gtk_widget_get_display(GTK_WIDGET(widget)));
}

} // namespace

gboolean ov_spacifying_text_needs_fixing(const char *text, gssize length, gboolean keep_line_feeds)
{
    g_return_val_if_fail(text != nullptr, FALSE);
    const char *end = nullptr;
    if (!g_utf8_validate(text, text_length(text, length), &end))
        return TRUE;
    for (const char *p = text; p < end; p = g_utf8_next_char(p)) {
        gunichar c = g_utf8_get_char(p);
        if (c > 255 || must_replace(c, keep_line_feeds))
            return TRUE;
    }
    return FALSE;
}

char *ov_spacifying_text_fix(const char *text, gssize length, gboolean keep_line_feeds)
{
    g_return_val_if_fail(text != nullptr, nullptr);
    const char *end = nullptr;
    if (!g_utf8_validate(text, text_length(text, length), &end))
        return nullptr;
    GString *fixed = g_string_sized_new(end - text);
    for (const char *p = text; p < end;) {
        const char *next = g_utf8_next_char(p);
        gunichar c = g_utf8_get_char(p);
        if (must_replace(c, keep_line_feeds))
            g_string_append_c(fixed, ' ');
        else if (c <= 255)
            g_string_append_len(fixed, p, next - p);
        p = next;
    }
    return g_string_free(fixed, FALSE);
}

static void ov_spacifying_entry_class_init(OvSpacifyingEntryClass *) {}

static void ov_spacifying_entry_init(OvSpacifyingEntry *entry)
{
    ov_gui_disable_emojis_in_entry(GTK_ENTRY(entry));
    g_signal_connect(entry, "insert-text", G_CALLBACK(on_insert_text), entry);
}

GtkWidget *ov_spacifying_entry_new(gboolean compact)
{
    auto *entry = static_cast<OvSpacifyingEntry *>(g_object_new(OV_TYPE_SPACIFYING_ENTRY, nullptr));
    entry->compact = compact != FALSE;
    return GTK_WIDGET(entry);
}

void ov_spacifying_entry_set_text(OvSpacifyingEntry *entry, const char *latin1_text)
{
    g_return_if_fail(OV_IS_SPACIFYING_ENTRY(entry));
    ov::GStr text(ov_convert_latin1_to_utf8(latin1_text != nullptr ? latin1_text : ""));
    if (!text)
        return;
    const char *stripped =
        entry->compact ? ov_strip_surrounding_and_spacify_compactly_within_original_for_utf8(text.get())
                       : ov_strip_surrounding_and_spacify_within_original_for_utf8(text.get());
    gtk_entry_set_text(GTK_ENTRY(entry), stripped);
}

char *ov_spacifying_entry_get_text(OvSpacifyingEntry *entry)
{
    g_return_val_if_fail(OV_IS_SPACIFYING_ENTRY(entry), nullptr);
    const char *shown = gtk_entry_get_text(GTK_ENTRY(entry));
    ov::GStr fixed;
    if (ov_spacifying_text_needs_fixing(shown, -1, FALSE)) {
        fixed.reset(ov_spacifying_text_fix(shown, -1, FALSE));
        if (!fixed)
            return nullptr;
        shown = fixed.get();
    }
    ov::GStr latin1(ov_convert_utf8_to_latin1(shown));
    if (!latin1)
        return nullptr;
    return entry->compact ? ov_strip_surrounding_and_spacify_compactly_in_new_for_latin1(latin1.get())
                          : ov_strip_surrounding_and_spacify_in_new_for_latin1(latin1.get());
}
