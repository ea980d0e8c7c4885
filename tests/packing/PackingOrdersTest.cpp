#include "packing/PackingOrders.h"
#include "tests/packing/PackingFixtures.h"

#include <gtest/gtest.h>

namespace mosaicer {
namespace {

using testing_support::TextureShelf;
using testing_support::thrown_text;

struct OrderCase {
    PrecookStrategy precook;
    PackingOrder order;
    const char* names;
};

std::string sorted_names(std::span<const SetTextureEntry> list, PackingOrder order) {
    std::string names;
    for (const SetTextureEntry* entry : in_packing_order(list, order))
        names += entry->texture->name;
    return names;
}

TEST(PackingOrder, sorts_by_natural_size_and_keeps_ties_in_list_order) {
    constexpr auto none = PrecookStrategy::NO_PRECOOKING;
    for (const OrderCase& c : {OrderCase{none, PackingOrder::DESC_DIM, "t2t0t1t3"},
                               OrderCase{none, PackingOrder::DESC_UDIM_ASC_VDIM, "t0t2t1t3"},
                               OrderCase{none, PackingOrder::DESC_VDIM_ASC_UDIM, "t3t1t2t0"},
                               OrderCase{PrecookStrategy::MAJOR_UDIM, PackingOrder::BY_PRECOOK, "t3t0t1t2"},
                               OrderCase{PrecookStrategy::MAJOR_VDIM, PackingOrder::BY_PRECOOK, "t3t0t1t2"},
                               OrderCase{PrecookStrategy::MAJOR_VDIM, PackingOrder::DESC_UDIM_ASC_VDIM, "t2t0t1t3"}}) {
        TextureShelf shelf;
        auto list = shelf.sized({{64, 32}, {32, 64}, {64, 64}, {16, 128}});
        precook(list, c.precook);
        EXPECT_EQ(sorted_names(list, resolve_packing_order(c.order, c.precook)), c.names);
    }
}

TEST(PackingOrder, keeps_ties_in_long_lists_and_wraps_the_area_in_32_bits) {
    TextureShelf shelf;
    std::vector<SetTextureEntry> list(1000, shelf.entry(8, 8));
    list[500] = shelf.entry(65536, 32768); // area -2^31
    list[501] = shelf.entry(9, 9);
    const auto sorted = in_packing_order(list, PackingOrder::DESC_DIM);
    EXPECT_EQ(sorted.front(), &list[501]);
    EXPECT_EQ(sorted.back(), &list[500]);
    EXPECT_TRUE(std::is_sorted(sorted.begin() + 1, sorted.end() - 1));
}

TEST(Precook, sets_the_rotation_of_what_lies_the_wrong_way) {
    struct Case {
        PrecookStrategy strategy;
        std::int32_t width, height, rotation, after;
    };
    TextureShelf shelf;
    for (const Case& c :
         {Case{PrecookStrategy::MAJOR_UDIM, 32, 64, 0, 90}, Case{PrecookStrategy::MAJOR_UDIM, 64, 32, 0, 0},
          Case{PrecookStrategy::MAJOR_VDIM, 64, 128, 90, 90}, Case{PrecookStrategy::MAJOR_VDIM, 64, 128, 270, 90},
          Case{PrecookStrategy::MAJOR_VDIM, 128, 64, 180, 90}, Case{PrecookStrategy::MAJOR_UDIM, 64, 64, 180, 180},
          Case{PrecookStrategy::NO_PRECOOKING, 32, 64, 0, 0}}) {
        SetTextureEntry entry = shelf.entry(1, 1);
        entry.width = c.width; // a forced size counts, not the texture's own
        entry.height = c.height;
        entry.rotation = c.rotation;
        precook({&entry, 1}, c.strategy);
        EXPECT_EQ(entry.rotation, c.after) << c.width << " x " << c.height << " at " << c.rotation;
    }
}

TEST(PackingOrder, refuses_what_is_no_order) {
    const std::string no_precooking = "No precooking set but packing order is set to by precooking order";
    EXPECT_EQ(thrown_text([] { resolve_packing_order(PackingOrder::BY_PRECOOK, PrecookStrategy::NO_PRECOOKING); }),
              no_precooking);
    EXPECT_EQ(thrown_text([] { in_packing_order({}, PackingOrder::BY_PRECOOK); }), "Unknown packing order");
    EXPECT_EQ(thrown_text([] { packing_order_text(static_cast<PackingOrder>(4)); }), "Unknown packing order");
}

} // namespace
} // namespace mosaicer
