// The modal window in which a multilingual text is entered.
#pragma once

#include <gtk/gtk.h>

#include "lang/langstr.h"
#include "lang/locale_list.h"
#include "widgets/langstr_mode.h"

// Edits *value in a window, laid out by mode (an OvLangstrMode), with OK and Cancel; TRUE when the user
// confirmed. *value is replaced only on a successful OK. A non-zero state
// makes the editor insensitive and OK just closes. Null texts take the
// defaults "Enter multilingual text", "Text" and "OK"; the note is shown
// when state is 1 or some texts are locked.
gboolean ov_langstr_window_run(int mode, langstr **value, const langstr *locked,
                               const OvLocaleList *primary_locales, int state, gboolean allow_empty,
                               const char *title, const char *field_label, const char *note,
                               const char *ok_label);
