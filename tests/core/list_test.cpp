#include "core/list.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

struct Node {
    int value = 0;
    Node *previous = nullptr;
    Node *next = nullptr;
};

int destroyed = 0;

void destroy_node(Node *node)
{
    ov::list_unlink(node);
    ++destroyed;
    delete node;
}

// The list as "v1 v2 v3", checked in both directions.
std::string contents(const ov::SentinelList<Node> &list)
{
    std::string forward, backward;
    for (Node *node : list)
        forward += (forward.empty() ? "" : " ") + std::to_string(node->value);
    for (Node *node = list.tail->previous; node != list.head; node = node->previous)
        backward = std::to_string(node->value) + (backward.empty() ? "" : " ") + backward;
    EXPECT_EQ(forward, backward) << "links disagree";
    return forward;
}

struct ListTest : ::testing::Test {
    ov::SentinelList<Node> list;
    Node *nodes[3] = {};
    void SetUp() override
    {
        destroyed = 0;
        ov::list_init(list);
        for (int i = 0; i < 3; ++i) {
            nodes[i] = new Node{i + 1};
            ov::list_append(list, nodes[i]);
        }
    }
    void TearDown() override { ov::list_destroy(list, destroy_node); }
};

TEST_F(ListTest, InsertBeforeAndAfterEveryPosition)
{
    ov::list_insert_before(new Node{10}, nodes[0]);
    ov::list_insert_after(new Node{11}, nodes[0]);
    ov::list_insert_before(new Node{12}, nodes[2]);
    ov::list_insert_after(new Node{13}, nodes[2]);
    ov::list_prepend(list, new Node{14});
    EXPECT_EQ(contents(list), "14 10 1 11 2 12 3 13");
    EXPECT_EQ(ov::list_nth(list, 2)->value, 1);
    EXPECT_EQ(ov::list_nth(list, 8), nullptr);
    EXPECT_EQ(ov::list_index(nodes[2]), 6u);
    EXPECT_EQ(ov::list_count(list), 8u);
}

TEST_F(ListTest, MovesRefuseAtTheEndsAndNeverWrap)
{
    EXPECT_FALSE(ov::list_move_up(nodes[0]));
    EXPECT_FALSE(ov::list_move_down(nodes[2]));
    EXPECT_EQ(contents(list), "1 2 3");
    EXPECT_TRUE(ov::list_move_up(nodes[2]));
    EXPECT_EQ(contents(list), "1 3 2");
    ov::list_unlink(nodes[0]);
    ov::list_unlink(nodes[1]);
    EXPECT_TRUE(nodes[0]->previous == nullptr && nodes[0]->next == nullptr);
    EXPECT_FALSE(ov::list_move_up(nodes[2]) || ov::list_move_down(nodes[2])); // the only node
    delete nodes[0];
    delete nodes[1];
}

TEST_F(ListTest, DestroyFreesFromTheFrontAndCloneIsDeepAndOrdered)
{
    ov::SentinelList<Node> copy;
    ov::list_init(copy);
    EXPECT_TRUE(ov::list_clone_into(copy, list, [](const Node *n) { return new Node{n->value * 10}; }));
    EXPECT_EQ(contents(copy), "10 20 30");

    int calls = 0;
    EXPECT_FALSE(ov::list_clone_into(
        copy, list, [&](const Node *n) -> Node * { return ++calls == 2 ? nullptr : new Node{n->value}; }));
    EXPECT_EQ(contents(copy), "10 20 30 1");

    ov::list_destroy(copy, destroy_node);
    EXPECT_EQ(destroyed, 4);
    EXPECT_EQ(contents(list), "1 2 3");
}

} // namespace
