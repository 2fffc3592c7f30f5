#include "core/raii.h"

#include <gio/gio.h>
#include <gtest/gtest.h>

namespace
{

TEST(Raii, ObjectRefCountsReferences)
{
    GObject *object = G_OBJECT(g_object_new(G_TYPE_OBJECT, nullptr));
    bool finalized = false;
    g_object_weak_ref(
        object, [](gpointer flag, GObject *) { *static_cast<bool *>(flag) = true; }, &finalized);
    {
        auto owner = ov::ObjectRef<GObject>::adopt(object);
        auto second = ov::ObjectRef<GObject>::ref(object);
        auto third = second;
        EXPECT_EQ(object->ref_count, 3u);
        third = ov::ObjectRef<GObject>();
        EXPECT_EQ(object->ref_count, 2u);
        auto moved = std::move(second);
        EXPECT_EQ(object->ref_count, 2u);
        EXPECT_FALSE(second);
    }
    EXPECT_TRUE(finalized);
}

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
