// The GUI suite runs real windows on a real (virtual) display.
#include "support/test_support.h"

#include "core/raii.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>

TEST(GtkDisplay, EntryInWindowIsRealisedMappedAndTakesText)
{
    GtkWidget *window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    GtkWidget *entry = gtk_entry_new();
    gtk_container_add(GTK_CONTAINER(window), entry);
    gtk_widget_show_all(window);
    ov::test::flush_events();

    EXPECT_TRUE(gtk_widget_get_realized(entry));
    EXPECT_TRUE(gtk_widget_get_mapped(entry));
    EXPECT_NE(gtk_widget_get_window(entry), nullptr);

    gtk_entry_set_text(GTK_ENTRY(entry), "Craquelure");
    EXPECT_STREQ(gtk_entry_get_text(GTK_ENTRY(entry)), "Craquelure");

    gtk_widget_destroy(window);
    ov::test::flush_events();
}
