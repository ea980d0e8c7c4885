#include "packing/RemovalStrategy.h"
#include "tests/packing/PackingFixtures.h"

#include <gtest/gtest.h>

namespace mosaicer {
namespace {

using testing_support::TextureShelf;
using testing_support::thrown_text;

struct Member {
    std::int32_t width, height;
    std::array<float, 3> position{};
    std::set<std::int32_t> groups{};
    bool tiles = false;
};

TextureList list_of(TextureShelf& shelf, const std::vector<Member>& members) {
    TextureList list;
    for (const Member& member : members) {
        SetTextureEntry entry = shelf.entry(member.width, member.height, std::to_string(list.size()));
        entry.texture->position = member.position;
        entry.texture->used_by = member.groups;
        entry.texture->tile_v = member.tiles;
        list.push_back(entry);
    }
    return list;
}

/// The order in which one kind takes out a whole list, as names; "-" where it finds no candidate.
std::string removal_order(RemovalKind kind, const std::vector<Member>& members) {
    TextureShelf shelf;
    TextureList list = list_of(shelf, members);
    const auto strategy = make_removal_strategy(kind);
    std::string order;
    while (!list.empty()) {
        const TexturePick pick = strategy->pick_texture_to_remove(list);
        if (pick == list.end())
            return order + "-";
        order += pick->texture->name;
        list.erase(pick);
    }
    return order;
}

struct RemovalCase {
    RemovalKind kind;
    std::vector<Member> members;
    const char* order;
};

TEST(RemovalStrategy, takes_out_in_its_order) {
    const RemovalCase cases[]{
        {RemovalKind::BIGGEST, {{4, 4}, {2, 8}, {8, 8}, {1, 16}}, "2013"},
        {RemovalKind::BIGGEST, {{0, 4}, {2, 8}}, "1-"},
        {RemovalKind::SMALLEST, {{4, 4}, {2, 8}, {8, 8}, {1, 15}}, "3012"},
        {RemovalKind::SMALLEST, {{2147483647, 1}}, "-"},
        // Distances from (10, tiny, 3) are about 10.44, 3 and 6; without the first one from the same corner.
        {RemovalKind::FURTHEST, {{1, 1, {0, 0, 0}}, {1, 1, {10, 0, 0}}, {1, 1, {4, 0, 3}}}, "021"},
        {RemovalKind::FURTHEST, {{1, 1}, {2, 2}, {3, 3}}, "210"},
        // A corner that starts near 0, not at the greatest of negative coordinates.
        {RemovalKind::FURTHEST, {{1, 1, {-2, 0, 0}}, {1, 1, {-9, 0, 0}}, {1, 1, {-3, 0, 0}}}, "120"},
        {RemovalKind::TILING, {{4, 4, {}, {}, true}, {9, 9}, {8, 8, {}, {}, true}}, "20-"},
        // Groups 1: three members, 2: one, 5: one.
        {RemovalKind::SMALLEST_FROM_SMALLEST_GROUP,
         {{2, 2, {}, {1}}, {9, 9, {}, {1, 5}}, {3, 3, {}, {1}}, {4, 4, {}, {2}}},
         "3120"},
        {RemovalKind::SMALLEST_FROM_SMALLEST_GROUP, {{2, 2}, {3, 3}, {1, 1}}, "102"},
        {RemovalKind::SMALLEST_FROM_SMALLEST_GROUP, {{2, 2, {}, {-1}}, {9, 9}, {4, 4, {}, {-1}}}, "201"},
    };
    for (const RemovalCase& c : cases)
        EXPECT_EQ(removal_order(c.kind, c.members), c.order) << make_removal_strategy(c.kind)->describe();
}

TEST(RemovalStrategy, judges_by_forced_size) {
    TextureShelf shelf;
    TextureList list = list_of(shelf, {{8, 8}, {4, 4}});
    list[1].width = 100;
    EXPECT_EQ(RemoveBiggest().pick_texture_to_remove(list), list.begin() + 1);
}

TEST(RemovalStrategy, fails_on_a_selection_without_area) {
    const std::string text = "RemoveBiggestItv: Failed finding biggest texture";
    EXPECT_EQ(thrown_text([] { removal_order(RemovalKind::TILING, {{0, 4, {}, {}, true}}); }), text);
    EXPECT_EQ(thrown_text([] { removal_order(RemovalKind::SMALLEST_FROM_SMALLEST_GROUP, {{0, 4, {}, {7}}}); }), text);
    EXPECT_EQ(thrown_text([] { make_removal_strategy(static_cast<RemovalKind>(5)); }), "Unrecognized removal strategy");
}

TEST(CompoundStrategy, asks_in_turn_and_never_finds_nothing) {
    TextureShelf shelf;
    TextureList list = list_of(shelf, {{9, 9, {}, {3}}, {2, 2, {}, {}, true}});
    CompoundStrategy compound;
    const std::string all_failed = "CompoundStrategy::pick_texture_to_remove; all strategies failed finding candidate";
    EXPECT_EQ(thrown_text([&] { compound.pick_texture_to_remove(list); }), all_failed);
    compound.add(make_removal_strategy(RemovalKind::TILING));
    compound.add(make_removal_strategy(RemovalKind::SMALLEST_FROM_SMALLEST_GROUP));
    EXPECT_EQ(compound.describe(), "CompoundStrategy:\n\t#0 - RemoveTiling\n\t#1 - RemoveFromSmallestGroup\n");
    EXPECT_EQ(compound.pick_texture_to_remove(list), list.begin() + 1);
    list.pop_back();
    EXPECT_EQ(compound.pick_texture_to_remove(list), list.begin());
    list.clear();
    EXPECT_EQ(thrown_text([&] { compound.pick_texture_to_remove(list); }), all_failed);
}

} // namespace
} // namespace mosaicer
