#include "source/utility/Errors.h"
#include "tests/objects/stream_support.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <deque>

namespace kst {
namespace {

using test_support::Node;

Node& copy_at(const CloneManager& manager, std::uint32_t group, std::size_t index) {
    return dynamic_cast<Node&>(*manager.group(group)[index].object);
}

std::string names_of(const CloneManager& manager, std::uint32_t group) {
    std::string names;
    for (const CloneManager::Member& member : manager.group(group))
        names += idstring_text(dynamic_cast<PersistentObject&>(*member.object).name());
    return names;
}

/// Shared by the copies of what refers to it.
class Shared : public Node {
public:
    using Node::Node;
    std::unique_ptr<Clonable> clone() const override { return nullptr; }
};

TEST(CloneManagerTest, CopiesAllThatIsReachedAndRewiresIt) {
    const int live_before = Node::live;
    Node a("a"), b("b"), c("c"), d("d"), e("e");
    Shared s("s");
    a.references = {&b, &s, &c, nullptr};
    b.references = {&d, &a};
    c.references = {&b, &c};
    s.references = {&e};
    e.references = {&s};
    CloneManager manager;
    const std::uint32_t group = manager.clone(std::array<Clonable*, 4>{&c, nullptr, &a, &c});
    // The inputs first; then what depth first discovery from c met: b, d, a's s and e.
    EXPECT_EQ(names_of(manager, group), "cabdse");
    Node &c2 = copy_at(manager, group, 0), &a2 = copy_at(manager, group, 1), &b2 = copy_at(manager, group, 2),
         &d2 = copy_at(manager, group, 3), &e2 = copy_at(manager, group, 5);
    EXPECT_THAT(a2.references, testing::ElementsAre(&b2, &s, &c2, nullptr));
    EXPECT_THAT(b2.references, testing::ElementsAre(&d2, &a2));
    EXPECT_THAT(c2.references, testing::ElementsAre(&b2, &c2));
    // What is shared is not patched, but what only it reaches is copied all the same.
    EXPECT_FALSE(manager.group(group)[4].owned());
    EXPECT_EQ(manager.group(group)[4].object, &s);
    EXPECT_THAT(s.references, testing::ElementsAre(&e));
    EXPECT_THAT(e2.references, testing::ElementsAre(&s));
    EXPECT_EQ(a2.clones_finished, 1);
    EXPECT_EQ(s.clones_finished, 0);
    EXPECT_EQ(Node::live, live_before + 11);

    const std::uint32_t second = manager.clone(std::array<Clonable*, 1>{&d});
    EXPECT_NE(second, group);
    manager.release(group);
    manager.release(group);
    EXPECT_EQ(Node::live, live_before + 7);
    EXPECT_TRUE(manager.group(group).empty());
    EXPECT_EQ(names_of(manager, second), "d");
    manager.clear();
    EXPECT_EQ(manager.group_count(), 0u);
    EXPECT_EQ(Node::live, live_before + 6);
}

/// Has no `clone` of its own, so its copies would be Nodes.
class Careless : public Node {
public:
    bool is_a(std::uint32_t type_id) const override { return type_id == 0xCA2E1E55 || Node::is_a(type_id); }
    std::uint32_t type_id() const override { return 0xCA2E1E55; }
};

/// Refers to something that it does not name.
class Secretive : public Node {
public:
    std::unique_ptr<Clonable> clone() const override { return std::make_unique<Secretive>(*this); }
    void collect_references(CloneSet&) const override {}
};

std::string refusal(Clonable& object) {
    const int live_before = Node::live;
    CloneManager manager;
    try {
        manager.clone(std::array<Clonable*, 1>{&object});
    } catch (const ErrorWithCStack& error) {
        EXPECT_EQ(Node::live, live_before);
        EXPECT_EQ(manager.group_count(), 0u);
        return error.what();
    }
    return "cloned";
}

TEST(CloneManagerTest, RefusesWhatCannotBeCopiedAndLeavesNothing) {
    Careless careless;
    Node front;
    front.references = {&careless};
    EXPECT_EQ(refusal(front), "[Kestra:CloneManager]Trying to clone a object which does not have cloning mechanism "
                              "implemented");
    Secretive secretive;
    Node target;
    secretive.references = {&target};
    front.references = {&secretive};
    EXPECT_EQ(refusal(front), "[Kestra:CloneMapping] Reference patching failed.");
}

TEST(CloneManagerTest, WalksAChainOfAMillion) {
    std::deque<Node> chain(1'000'000);
    for (std::size_t i = 0; i + 1 < chain.size(); ++i)
        chain[i].references = {&chain[i + 1]};
    CloneManager manager;
    const std::uint32_t group = manager.clone(std::array<Clonable*, 1>{&chain.front()});
    ASSERT_EQ(manager.group(group).size(), chain.size());
    for (std::size_t i = 0; i + 1 < chain.size(); ++i)
        ASSERT_EQ(copy_at(manager, group, i).references[0], &copy_at(manager, group, i + 1));
}

TEST(CloneSetTest, DiscoversInTheOrderOfRecursion) {
    std::deque<Node> nodes(200);
    std::uint32_t state = 1;
    for (Node& node : nodes)
        for (int i = 0; i < 3; ++i)
            node.references.push_back(&nodes[(state = state * 1'664'525 + 1'013'904'223) % nodes.size()]);
    std::vector<Clonable*> expected;
    const auto visit = [&](const auto& self, Node* node) -> void {
        if (std::find(expected.begin(), expected.end(), node) != expected.end())
            return;
        expected.push_back(node);
        for (Node* const next : node->references)
            self(self, next);
    };
    CloneSet set;
    for (std::size_t i = 0; i < 5; ++i) {
        visit(visit, &nodes[i]);
        set.add(&nodes[i]);
    }
    EXPECT_GT(expected.size(), 100u);
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), set.objects().begin(), set.objects().end()));
}

} // namespace
} // namespace kst
