// A locale picker bound to the process-wide active locale: it follows every
// change of it, and picking a locale makes that locale active.
#pragma once

#include "widgets/locale_picker.h"

G_BEGIN_DECLS

#define OV_TYPE_ACTIVE_LOCALE_PICKER (ov_active_locale_picker_get_type())
G_DECLARE_FINAL_TYPE(OvActiveLocalePicker, ov_active_locale_picker, OV, ACTIVE_LOCALE_PICKER, OvLocalePicker)

G_END_DECLS

GtkWidget *ov_active_locale_picker_new();
