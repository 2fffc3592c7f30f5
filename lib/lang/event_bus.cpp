#include "lang/event_bus.h"

#include <array>
#include <cstdint>

#include "core/list.h"

struct OvEventBusHandler {
    OvEventBusCallback callback;
    gpointer user_data;
    std::uint64_t last_trigger;
    OvEventBusHandler *previous;
    OvEventBusHandler *next;
};

namespace
{

struct Bus {
    ov::SentinelList<OvEventBusHandler> handlers;
    std::uint64_t trigger_count = 0;
};

// Created at the first connection to an event.
std::array<Bus *, OV_EVENT_COUNT> buses{};

bool valid_event(int event)
{
    return event >= 0 && event < OV_EVENT_COUNT;
}

} // namespace

OvEventBusHandler *ov_event_bus_connect(int event, OvEventBusCallback callback, gpointer user_data)
{
    g_return_val_if_fail(valid_event(event) && callback != nullptr, nullptr);
    Bus *&bus = buses[event];
    if (bus == nullptr) {
        bus = new Bus{};
        ov::list_init(bus->handlers);
    }
    auto *handler = new OvEventBusHandler{callback, user_data, 0, nullptr, nullptr};
    ov::list_append(bus->handlers, handler);
    return handler;
}

void ov_event_bus_disconnect(OvEventBusHandler *handler)
{
    g_return_if_fail(handler != nullptr);
    ov::list_unlink(handler);
    delete handler;
}

// Each call moves the front handler to the back before calling it, so the
// handlers already called this round sit behind the ones still due, and a
// handler connected meanwhile lands behind them all. The loop stops at the
// first handler whose number is current. A nested trigger raises the
// number, calls everyone once more, and leaves the outer loop nothing to do.
void ov_event_bus_trigger(int event)
{
    g_return_if_fail(valid_event(event));
    Bus *bus = buses[event];
    if (bus == nullptr)
        return;
    const std::uint64_t number = ++bus->trigger_count;
    for (;;) {
        OvEventBusHandler *front = bus->handlers.first();
        if (front == nullptr || front->last_trigger >= bus->trigger_count)
            break;
        ov::list_unlink(front);
        ov::list_append(bus->handlers, front);
        front->last_trigger = number;
        front->callback(front->user_data);
    }
}

guint ov_event_bus_count_handlers(int event)
{
    g_return_val_if_fail(valid_event(event), 0);
    return buses[event] != nullptr ? ov::list_count(buses[event]->handlers) : 0;
}

void ov_event_bus_clean_up()
{
    for (Bus *&bus : buses) {
        if (bus == nullptr)
            continue;
        // Handlers still connected belong to their owners; only detach them.
        for (OvEventBusHandler *handler = bus->handlers.head->next; handler != bus->handlers.tail;) {
            OvEventBusHandler *next = handler->next;
            handler->previous = nullptr;
            handler->next = nullptr;
            handler = next;
        }
        delete bus->handlers.head;
        delete bus->handlers.tail;
        delete bus;
        bus = nullptr;
    }
}
