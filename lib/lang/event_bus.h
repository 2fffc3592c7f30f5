// A minimal publish/subscribe bus keyed by event number. Each handler is
// called at most once per trigger; callbacks may connect, disconnect
// (themselves included) and trigger again.
#pragma once

#include <glib.h>

enum : int { OV_EVENT_ACTIVE_LOCALE_CHANGED = 0, OV_EVENT_COUNT };

typedef void (*OvEventBusCallback)(gpointer user_data);

struct OvEventBusHandler;

// The returned record is the handle for disconnecting.
OvEventBusHandler *ov_event_bus_connect(int event, OvEventBusCallback callback, gpointer user_data);
// Unlinks and frees a live handler.
void ov_event_bus_disconnect(OvEventBusHandler *handler);
void ov_event_bus_trigger(int event);
// How many handlers are connected to the event.
guint ov_event_bus_count_handlers(int event);
// At shutdown: frees the buses; handlers still connected are not freed.
void ov_event_bus_clean_up();
