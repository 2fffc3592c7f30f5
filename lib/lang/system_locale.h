// The locale the user interface starts in, from the environment.
#pragma once

#include "lang/locale.h"

// "ORVANE_USER_LOCALE" first, then GLib's language names in order of
// preference; null when nothing maps (start-up then takes UK English).
const OvLocale *ov_platform_get_system_locale();

// Maps one system locale name ("sv_SE", "de_AT.UTF-8", "nb") to a locale,
// or null with the error buffer set.
const OvLocale *ov_platform_map_system_locale_name(const char *name);
