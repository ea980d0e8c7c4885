// Positions of the four walks: worked out by hand, and equal to the literal walk on random and awkward input.

#include "packing/AtlasSurface.h"
#include "packing/InsertionStrategies.h"
#include "tests/packing/LiteralSurface.h"
#include "tests/packing/PackingFixtures.h"

#include <gtest/gtest.h>

#include <random>

namespace mosaicer {
namespace {

using testing_support::LiteralRect;
using testing_support::LiteralSurface;
using testing_support::TextureShelf;

std::vector<LiteralRect> rects_of(const AtlasSurface& surface) {
    std::vector<LiteralRect> rects;
    for (const AtlasEntry& entry : surface.entries())
        rects.push_back({entry.x, entry.y, entry.width, entry.height});
    return rects;
}

struct WalkCase {
    InsertionStrategy strategy;
    std::vector<LiteralRect> placed;
};

TEST(Walk, takes_the_first_free_position) {
    const WalkCase cases[]{
        {InsertionStrategy::PIXEL_STEP, {{0, 0, 100, 100}, {100, 0, 60, 60}, {160, 0, 40, 40}, {0, 100, 200, 20}}},
        {InsertionStrategy::PIXEL_STEP_EXPANDING_SQUARE,
         {{0, 0, 100, 100}, {100, 0, 60, 60}, {100, 60, 40, 40}, {0, 100, 200, 20}}},
        {InsertionStrategy::SMALL_STEP, {{0, 0, 100, 100}, {120, 0, 60, 60}, {200, 0, 40, 40}, {0, 100, 200, 20}}},
        {InsertionStrategy::SMALL_STEP_EXPANDING_SQUARE,
         {{0, 0, 100, 100}, {120, 0, 60, 60}, {120, 80, 40, 40}, {0, 120, 200, 20}}},
    };
    for (const WalkCase& c : cases) {
        const auto& info = insertion_strategy_info(c.strategy);
        SCOPED_TRACE(info.text);
        TextureShelf shelf;
        AtlasSurface surface(256, 256);
        for (const auto& entry : shelf.sized({{100, 100}, {60, 60}, {40, 40}, {200, 20}}))
            EXPECT_TRUE(surface.insert(entry, info.pixel_step, info.expanding_square));
        EXPECT_EQ(rects_of(surface), c.placed);
    }
}

TEST(Walk, sees_an_odd_size_as_the_next_smaller_even_one) {
    TextureShelf shelf;
    AtlasSurface surface(64, 64);
    for (const auto& entry : shelf.sized({{3, 3}, {3, 3}, {1, 1}, {1, 1}, {62, 1}}))
        EXPECT_TRUE(surface.insert(entry, /*pixel_step=*/true, /*expanding_square=*/false));
    // Points are never seen by each other, and a line is hindered by nothing that it does not cross.
    const std::vector<LiteralRect> placed{{0, 0, 3, 3}, {2, 0, 3, 3}, {0, 0, 1, 1}, {0, 0, 1, 1}, {0, 0, 62, 1}};
    EXPECT_EQ(rects_of(surface), placed);
}

TEST(Walk, ends_an_expanding_walk_when_both_sides_have_passed_the_surface) {
    TextureShelf shelf;
    AtlasSurface surface(256, 256);
    // Regions of 32 and then 272, which is past both sides: 256 is never walked.
    EXPECT_FALSE(surface.insert(shelf.entry(240, 240), true, true));
    surface.reset();
    // Regions of 32, 64, and so on up to 256.
    EXPECT_TRUE(surface.insert(shelf.entry(32, 32), true, true));
    EXPECT_TRUE(surface.insert(shelf.entry(256, 32), true, true));
    EXPECT_EQ(surface.entries().back().y, 32);
}

/// A surface and its literal twin, fed alike.
class Twins {
public:
    Twins(std::int32_t width, std::int32_t height) : fast_(width, height), literal_(width, height) {}

    void insert(std::int32_t width, std::int32_t height, const InsertionStrategyInfo& info) {
        const bool placed = fast_.insert(shelf_.entry(width, height), info.pixel_step, info.expanding_square);
        EXPECT_EQ(placed, literal_.insert({0, 0, width, height}, info.pixel_step, info.expanding_square));
    }

    void reset() {
        fast_.reset();
        literal_.reset();
    }

    bool agree() const { return rects_of(fast_) == literal_.entries(); }

private:
    TextureShelf shelf_;
    AtlasSurface fast_;
    LiteralSurface literal_;
};

struct RandomCase {
    std::int32_t width;
    std::int32_t height;
    std::int32_t largest;
};

class WalkTwins : public testing::TestWithParam<RandomCase> {};

TEST_P(WalkTwins, place_everything_alike) {
    const RandomCase& c = GetParam();
    SCOPED_TRACE(testing::Message() << c.width << " x " << c.height << ", sizes up to " << c.largest);
    std::mt19937 random(7);
    const auto size = [&](std::int32_t most) {
        return 1 + static_cast<std::int32_t>(random() % static_cast<std::uint32_t>(most));
    };
    Twins twins(c.width, c.height);
    for (int run = 0; run < 24; ++run) {
        const auto& info = insertion_strategies[static_cast<std::size_t>(run) % insertion_strategies.size()];
        for (int i = 0; i < 40; ++i) {
            // Now and then a stripe across the surface, as a tiled entry makes it, or a line of one texel.
            const bool stripe = random() % 16 == 0;
            const bool line = random() % 16 == 0;
            twins.insert(stripe ? c.width : line ? 1 : size(c.largest), size(c.largest), info);
            // The strategy may change from one entry to the next.
            if (run >= 16 && i % 8 == 0)
                twins.insert(size(c.largest), 1, insertion_strategies[random() % insertion_strategies.size()]);
        }
        ASSERT_TRUE(twins.agree()) << info.text << ", run " << run;
        twins.reset();
    }
}

TEST(Walk, agrees_with_its_twin_by_small_steps_on_large_surfaces) {
    std::mt19937 random(11);
    for (const auto& [width, height] : {std::pair{1024, 1024}, {1000, 1022}, {2047, 515}}) {
        Twins twins(width, height);
        for (int i = 0; i < 300; ++i)
            twins.insert(16 + static_cast<std::int32_t>(random() % 80), 16 + static_cast<std::int32_t>(random() % 80),
                         insertion_strategies[2 + random() % 2]);
        EXPECT_TRUE(twins.agree()) << width << " x " << height;
    }
}

INSTANTIATE_TEST_SUITE_P(Surfaces, WalkTwins,
                         testing::Values(RandomCase{64, 64, 17}, RandomCase{64, 64, 40}, RandomCase{128, 32, 30},
                                         RandomCase{100, 60, 21}, RandomCase{127, 63, 20}, RandomCase{63, 127, 9},
                                         RandomCase{61, 47, 13}, RandomCase{30, 30, 9}, RandomCase{15, 15, 6},
                                         RandomCase{16, 7, 5}, RandomCase{9, 4, 4}, RandomCase{8, 4, 4},
                                         RandomCase{7, 3, 4}, RandomCase{4, 60, 5}, RandomCase{60, 2, 9},
                                         RandomCase{3, 3, 4}, RandomCase{2, 50, 3}, RandomCase{1, 20, 3},
                                         RandomCase{20, 1, 5}, RandomCase{1, 1, 2}));

} // namespace
} // namespace mosaicer
