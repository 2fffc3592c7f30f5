// The process-wide active and system locales. Both start unset (null); the
// start-up code sets both before any window is shown.
#pragma once

#include "lang/locale.h"

// Makes locale active and triggers OV_EVENT_ACTIVE_LOCALE_CHANGED, unless it
// is active already.
void ov_ovinternal_set_active_locale(const OvLocale *locale);
const OvLocale *ov_ovinternal_get_active_locale();

// Stores the locale found at start-up (no event).
void ov_ovinternal_set_system_locale(const OvLocale *locale);
const OvLocale *ov_get_system_locale();
