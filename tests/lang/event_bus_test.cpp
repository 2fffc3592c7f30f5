#include "lang/event_bus.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "lang/active_locale.h"
#include "lang/locale.h"

namespace
{

// Handlers that run a scripted action on each call and record who was
// called, as "a b a".
struct EventBus : ::testing::Test {
    struct Handler {
        EventBus *test;
        std::string name;
        std::function<void(Handler &)> action;
        OvEventBusHandler *handle = nullptr;
    };
    std::vector<std::unique_ptr<Handler>> handlers;
    std::string calls;

    static void on_event(gpointer user_data)
    {
        auto *handler = static_cast<Handler *>(user_data);
        EventBus *test = handler->test;
        test->calls += (test->calls.empty() ? "" : " ") + handler->name;
        if (handler->action)
            handler->action(*handler);
    }

    Handler &connect(const std::string &name, std::function<void(Handler &)> action = {})
    {
        handlers.push_back(std::make_unique<Handler>(Handler{this, name, std::move(action)}));
        Handler &handler = *handlers.back();
        handler.handle = ov_event_bus_connect(OV_EVENT_ACTIVE_LOCALE_CHANGED, on_event, &handler);
        return handler;
    }

    void disconnect(Handler &handler)
    {
        ov_event_bus_disconnect(handler.handle);
        handler.handle = nullptr;
    }

    void trigger() { ov_event_bus_trigger(OV_EVENT_ACTIVE_LOCALE_CHANGED); }

    void TearDown() override
    {
        for (auto &handler : handlers)
            if (handler->handle != nullptr)
                disconnect(*handler);
    }
};

TEST_F(EventBus, EveryHandlerOncePerTriggerInConnectionOrder)
{
    trigger(); // nobody connected yet: nothing happens
    connect("a");
    connect("b");
    connect("c");
    trigger();
    EXPECT_EQ(calls, "a b c");
    calls.clear();
    trigger();
    EXPECT_EQ(calls, "a b c");
}

TEST_F(EventBus, NestedTriggerCallsEveryoneOnceMore)
{
    connect("a");
    bool nested = false;
    connect("b", [&](Handler &) {
        if (!nested) {
            nested = true;
            trigger();
        }
    });
    connect("c");
    trigger();
    // b's nested trigger calls c, a, b; the outer loop then finds nobody due,
    // so c is called once, by the nested trigger.
    EXPECT_EQ(calls, "a b c a b");
    calls.clear();
    trigger();
    EXPECT_EQ(calls, "c a b");
}

TEST_F(EventBus, HandlerConnectedDuringTriggerWaitsForTheNext)
{
    connect("a", [&](Handler &self) {
        if (self.name == "a") {
            self.name = "a'";
            connect("new");
        }
    });
    connect("b");
    trigger();
    EXPECT_EQ(calls, "a b");
    calls.clear();
    trigger();
    EXPECT_EQ(calls, "a' new b");
}

TEST_F(EventBus, DisconnectingInsideCallbacks)
{
    connect("a", [&](Handler &self) { disconnect(self); });
    Handler *c = nullptr;
    connect("b", [&](Handler &) {
        if (c->handle != nullptr)
            disconnect(*c);
    });
    c = &connect("c");
    connect("d");
    trigger();
    // a leaves on its own call, b removes c before c's turn.
    EXPECT_EQ(calls, "a b d");
    calls.clear();
    trigger();
    EXPECT_EQ(calls, "b d");
}

TEST_F(EventBus, LastHandlerDisconnectsItselfAndTriggersAgain)
{
    connect("only", [&](Handler &self) {
        disconnect(self);
        trigger();
    });
    trigger();
    EXPECT_EQ(calls, "only");
}

TEST_F(EventBus, ActiveLocaleChangeTriggersOnlyOnARealChange)
{
    const OvLocale *saved = ov_ovinternal_get_active_locale();
    connect("picker");
    ov_ovinternal_set_active_locale(ov_locale_get_by_tag("da"));
    ov_ovinternal_set_active_locale(ov_locale_get_by_tag("da"));
    EXPECT_EQ(calls, "picker");
    EXPECT_EQ(ov_ovinternal_get_active_locale(), ov_locale_get_by_tag("da"));
    ov_ovinternal_set_active_locale(ov_locale_get_by_tag("sv"));
    EXPECT_EQ(calls, "picker picker");
    ov_ovinternal_set_active_locale(saved);

    const OvLocale *saved_system = ov_get_system_locale();
    ov_ovinternal_set_system_locale(ov_locale_get_uk_english());
    EXPECT_EQ(ov_get_system_locale(), ov_locale_get_uk_english());
    ov_ovinternal_set_system_locale(saved_system);
}

TEST_F(EventBus, CleanUpLeavesConnectedHandlersToTheirOwners)
{
    Handler &kept = connect("kept");
    ov_event_bus_clean_up();
    trigger(); // the bus is gone: nothing is called
    EXPECT_EQ(calls, "");
    disconnect(kept); // still a valid handle
    connect("again");
    trigger();
    EXPECT_EQ(calls, "again");
}

} // namespace
