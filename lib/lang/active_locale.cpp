#include "lang/active_locale.h"

#include "lang/event_bus.h"

namespace
{

const OvLocale *active_locale = nullptr;
const OvLocale *system_locale = nullptr;

} // namespace

void ov_ovinternal_set_active_locale(const OvLocale *locale)
{
    if (locale == active_locale)
        return;
    active_locale = locale;
    ov_event_bus_trigger(OV_EVENT_ACTIVE_LOCALE_CHANGED);
}

const OvLocale *ov_ovinternal_get_active_locale()
{
    return active_locale;
}

void ov_ovinternal_set_system_locale(const OvLocale *locale)
{
    system_locale = locale;
}

const OvLocale *ov_get_system_locale()
{
    return system_locale;
}
