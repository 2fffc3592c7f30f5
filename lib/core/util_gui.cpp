// The one helper of util.h that calls GTK, in a file of its own so that a
// program using only the rest does not load GTK's libraries.
#include "core/util.h"

#include <gtk/gtk.h>

void ov_util_let_through_gtk_events()
{
    while (gtk_events_pending())
        gtk_main_iteration();
}
