#include "driver/plan/edge_groups.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

namespace mosaicer {

void PrintTo(const EdgeGroup& group, std::ostream* out) {
    *out << testing::PrintToString(group.sets) << " by " << testing::PrintToString(group.patterns);
}

bool operator==(const EdgeGroup& a, const EdgeGroup& b) {
    return a.sets == b.sets && a.patterns == b.patterns;
}

namespace {

using Groups = std::vector<EdgeGroup>;

struct GroupCase {
    const char* why;
    std::vector<SetNaming> sets;
    std::vector<NestedSet> nested;
    Groups groups;
};

class GroupSets : public testing::TestWithParam<GroupCase> {};

TEST_P(GroupSets, divides_as_the_pattern_switch_allows) {
    EXPECT_EQ(group_sets(GetParam().sets, GetParam().nested), GetParam().groups) << GetParam().why;
}

const GroupCase group_cases[] = {
    {"nothing to make", {}, {}, {}},
    {"names apart", {{"sky", {}}, {"ui", {}}}, {}, {{{0}, {"sky"}}, {{1}, {"ui"}}}},
    {"a prefix of another", {{"ui/hud", {}}, {"ui", {}}, {"sky", {}}}, {}, {{{0, 1}, {"ui"}}, {{2}, {"sky"}}}},
    {"case counts", {{"UI", {}}, {"ui/hud", {}}}, {}, {{{0}, {"UI"}}, {{1}, {"ui/hud"}}}},
    {"the same name twice", {{"a", {}}, {"b", {}}, {"a", {}}}, {}, {{{0, 2}, {"a"}}, {{1}, {"b"}}}},
    {"no pattern makes just these three",
     {{"a", {}}, {"b", {}}, {"ab", {}}, {"z", {}}},
     {},
     {{{0, 1, 2}, {"a", "b"}}, {{3}, {"z"}}}},
    {"a chain", {{"abc", {}}, {"ab", {}}, {"b", {}}, {"bd", {}}}, {}, {{{0, 1, 2, 3}, {"b"}}}},
    {"no name at all selects everything", {{"", {}}, {"a", {}}}, {}, {{{0, 1}, {""}}}},
    {"a part that both names share",
     {{"lm/north", {}}, {"lm/south", {0}}, {"sky", {}}},
     {},
     {{{0, 1}, {"lm/"}}, {{2}, {"sky"}}}},
    {"the shared part also selects a third, which joins",
     {{"lm/north", {}}, {"lm/south", {0}}, {"lm/", {}}},
     {},
     {{{0, 1, 2}, {"lm/"}}}},
    {"what needs what needs", {{"x1", {}}, {"x2", {0}}, {"x3", {1}}}, {}, {{{0, 1, 2}, {"x"}}}},
    {"names with nothing in common", {{"ab", {}}, {"cd", {0}}, {"ef", {}}}, {}, {{{0, 1, 2}, {""}}}},
    {"a nested set must not wake up", {{"walls", {}}, {"ui", {}}, {"sky", {}}}, {{"walls/ui", 0}}, {{{0, 1, 2}, {""}}}},
    {"a nested set that sleeps with its owner", {{"w", {}}, {"ui", {}}}, {{"w/x", 0}}, {{{0}, {"w"}}, {{1}, {"ui"}}}},
};

INSTANTIATE_TEST_SUITE_P(Cases, GroupSets, testing::ValuesIn(group_cases));

/// The rules in their plainest form.
void expect_sound(const std::vector<SetNaming>& sets, const std::vector<NestedSet>& nested, const Groups& groups) {
    std::multiset<std::size_t> all;
    for (const EdgeGroup& group : groups) {
        std::set<std::size_t> made;
        for (const std::string& pattern : group.patterns) {
            const auto selects = [&](std::size_t i) { return sets[i].name.find(pattern) != std::string::npos; };
            for (std::size_t i = 0; i < sets.size(); ++i) {
                if (!selects(i))
                    continue;
                made.insert(i);
                EXPECT_TRUE(std::ranges::all_of(sets[i].needs, selects)) << pattern << " lacks what it needs";
            }
            for (const NestedSet& inner : nested)
                EXPECT_TRUE(inner.name.find(pattern) == std::string::npos || selects(inner.owner)) << pattern;
        }
        EXPECT_EQ(made, std::set(group.sets.begin(), group.sets.end())) << testing::PrintToString(group);
        all.insert(group.sets.begin(), group.sets.end());
    }
    EXPECT_EQ(all.size(), sets.size());
    EXPECT_EQ(std::set(all.begin(), all.end()).size(), sets.size()) << "every set is in one group";
}

TEST(GroupSetsAtRandom, makes_every_set_in_one_group_with_all_that_it_needs) {
    std::mt19937 random(11);
    const auto below = [&](std::size_t bound) { return random() % bound; };
    for (int round = 0; round < 2000; ++round) {
        std::vector<SetNaming> sets(1 + below(8));
        for (std::size_t i = 0; i < sets.size(); ++i) {
            for (std::size_t size = below(5); size > 0; --size)
                sets[i].name += static_cast<char>('a' + below(4));
            if (i > 0 && below(4) == 0)
                sets[i].needs.push_back(below(i));
        }
        std::vector<NestedSet> nested;
        if (below(3) == 0) {
            const std::size_t owner = below(sets.size());
            nested.push_back({sets[owner].name + "/" + sets[below(sets.size())].name, owner});
        }
        expect_sound(sets, nested, group_sets(sets, nested));
    }
}

} // namespace
} // namespace mosaicer
