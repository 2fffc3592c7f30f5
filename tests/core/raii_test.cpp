#include "core/raii.h"

#include <gio/gio.h>
#include <gtest/gtest.h>

namespace
{

// The guard disconnects its handler, leaves alone a handler the object
// dropped on dispose, and lets go of an object finalised while guarded.
TEST(Raii, SignalGuardDisconnectsOnlyWhatIsStillConnected)
{
    int calls = 0;
    GSimpleAction *action = g_simple_action_new("a", nullptr);
    auto connect = [&] {
        return g_signal_connect_swapped(action, "activate", G_CALLBACK(+[](int *n) { ++*n; }), &calls);
    };
    {
        ov::SignalGuard guard(action, connect());
        g_action_activate(G_ACTION(action), nullptr);
    }
    g_action_activate(G_ACTION(action), nullptr);
    EXPECT_EQ(calls, 1);
    {
        ov::SignalGuard guard(action, connect());
        g_object_run_dispose(G_OBJECT(action));
    }
    {
        ov::SignalGuard guard(action, connect());
        guard.reset(action, connect());
        g_action_activate(G_ACTION(action), nullptr);
        g_object_unref(action);
    }
    EXPECT_EQ(calls, 2);
}

} // namespace
