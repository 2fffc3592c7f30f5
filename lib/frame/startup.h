// The start-up module shared by the suite's tools: the program's entry, its
// process-wide state and resources, and the handlers of the application
// object's signals. Each tool supplies only its configuration record.
#pragma once

#include "gui/image.h"

#include <cairo.h>
#include <gtk/gtk.h>

struct OvApplicationConfiguration;

// Called once, on the first "activate", with the process's arguments; when it
// returns the tool's work is done.
typedef void (*OvApplicationRunFunction)(int argc, char **argv);
// Called on every later "activate".
typedef void (*OvApplicationReactivateFunction)(GtkApplication *application,
                                                OvApplicationConfiguration *configuration);

struct OvApplicationConfiguration {
    const char *application_id; // reverse-domain form
    OvApplicationRunFunction run;
    OvApplicationReactivateFunction reactivate; // may be null
    // Frees the text drawing module's caches at shutdown; it lives in a
    // library above this one. May be null.
    void (*clean_up_text_drawing)();
};

// Supplied by each tool (beside its main): fills the record.
void ov_init_application_configuration(OvApplicationConfiguration *configuration);

// The program's entry: stores the arguments, settles the locales, forces the
// theme, runs a non-unique application that handles its own command line,
// and returns the application's exit status.
int ov_main(int argc, char **argv);

// Process-wide resources, present between a successful start-up and shutdown.
// The checkbox images come from "checkbox_on.png" (checked) and
// "checkbox_off.png", the tab menu image from "text_tab_menu.png".
OvImage *ov_get_checkbox_icon_image(gboolean checked);
OvImage *ov_get_text_tab_menu_icon_image();
// "LiberationSans-Bold.ttf" from the "fonts" folder beside the executable.
cairo_font_face_t *ov_get_view_font_face();

// The "startup" handler's work: FreeType, the screen resolution, the stale
// temporary files, the resource archive, the icon images and the view font.
// Stops at the first failure, with the reason in the error buffer; TRUE when
// everything is ready. Tools that run no application object (and tests)
// call it directly.
gboolean ov_startup_prepare();
// TRUE once ov_startup_prepare has succeeded.
gboolean ov_startup_is_successful();
// The "shutdown" handler's work: releases everything ov_startup_prepare made
// (and tolerates what it never made). The record may be null.
void ov_startup_release(const OvApplicationConfiguration *configuration);

// The resources step alone: opens the archive and loads the three icons.
gboolean ov_startup_load_icon_images();

// The resolution to use for a screen of the given dots per inch: screens of
// 144 and more are halved.
double ov_startup_adjust_resolution(double dpi);

// Deletes the suite's stale temporary files ("orvane-<pid>.<stamp>.odt" or
// ".out") in the folder: those whose writing process is gone or now runs a
// program file of another size than the stamp. FALSE when the folder cannot
// be read.
gboolean ov_startup_clean_up_temp_files_in(const char *folder);
