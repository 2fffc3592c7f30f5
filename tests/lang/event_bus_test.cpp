#include "lang/event_bus.h"

#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <string>
#include <utility>

#include "lang/active_locale.h"

namespace
{

// Handlers named by one letter run a scripted action on each call; a
// round records the calls as "aba".
struct EventBus : ::testing::Test {
    struct Handler {
        char name;
        std::function<void(Handler &)> action;
        OvEventBusHandler *handle = nullptr;
    };
    std::list<Handler> handlers;
    static inline std::string calls;

    static void on_event(gpointer user_data)
    {
        auto &handler = *static_cast<Handler *>(user_data);
        calls += handler.name;
        if (handler.action)
            handler.action(handler);
    }
    Handler &connect(char name, std::function<void(Handler &)> action = {})
    {
        Handler &handler = handlers.emplace_back(Handler{name, std::move(action)});
        handler.handle = ov_event_bus_connect(OV_EVENT_ACTIVE_LOCALE_CHANGED, on_event, &handler);
        return handler;
    }
    void disconnect(Handler &handler) { ov_event_bus_disconnect(std::exchange(handler.handle, nullptr)); }
    static void fire() { ov_event_bus_trigger(OV_EVENT_ACTIVE_LOCALE_CHANGED); }
    std::string round()
    {
        calls.clear();
        fire();
        return calls;
    }
    void TearDown() override
    {
        for (Handler &handler : handlers)
            if (handler.handle != nullptr)
                disconnect(handler);
    }
};

TEST_F(EventBus, NestedTriggerCallsEveryoneOnceMore)
{
    connect('a');
    connect('b', [&, nested = false](Handler &) mutable {
        if (!std::exchange(nested, true))
            fire();
    });
    connect('c');
    // c's one call comes from the nested trigger; the outer one finds nobody due.
    EXPECT_EQ(round(), "abcab");
    EXPECT_EQ(round(), "cab");
}

TEST_F(EventBus, HandlerConnectedDuringTriggerWaitsForTheNext)
{
    connect('a', [&, done = false](Handler &) mutable {
        if (!std::exchange(done, true))
            connect('n');
    });
    connect('b');
    EXPECT_EQ(round(), "ab");
    EXPECT_EQ(round(), "anb");
}

TEST_F(EventBus, DisconnectingInsideCallbacks)
{
    connect('a', [&](Handler &self) { disconnect(self); });
    connect('b', [&](Handler &) {
        if (handlers.back().handle != nullptr)
            disconnect(handlers.back());
    });
    connect('c');
    connect('d');
    EXPECT_EQ(round(), "abc"); // b removes d before its turn
    EXPECT_EQ(round(), "bc");
}

// The last handler leaves and triggers again from inside its call.
TEST_F(EventBus, LastHandlerDisconnectsItselfAndTriggersAgain)
{
    connect('o', [&](Handler &self) { disconnect(self), fire(); });
    EXPECT_EQ(round(), "o");
}

TEST_F(EventBus, ActiveLocaleChangeTriggersOnlyOnARealChange)
{
    const OvLocale *saved = ov_ovinternal_get_active_locale();
    connect('p');
    calls.clear();
    ov_ovinternal_set_active_locale(ov_locale_get_by_tag("da"));
    ov_ovinternal_set_active_locale(ov_locale_get_by_tag("da"));
    EXPECT_EQ(calls, "p");
    ov_ovinternal_set_active_locale(saved);
}

TEST_F(EventBus, CleanUpLeavesConnectedHandlersToTheirOwners)
{
    Handler &kept = connect('k');
    ov_event_bus_clean_up();
    EXPECT_EQ(round(), ""); // the bus is gone
    disconnect(kept);       // still a valid handle
    connect('g');
    EXPECT_EQ(round(), "g");
}

} // namespace
