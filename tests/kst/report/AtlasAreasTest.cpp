#include "tools/kst/report/AtlasAreas.h"

#include "tests/texture/support/TestImages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace kst::tool::report {
namespace {

using mosaicer::Bitmap;
using testing::ElementsAre;

PlacedTexture placed(const Rectangle& inner, bool tiled_u = false, bool tiled_v = false) {
    PlacedTexture texture;
    texture.inner = inner;
    texture.tiled_u = tiled_u;
    texture.tiled_v = tiled_v;
    return texture;
}

/// Noise on a ground of one colour, its edges repeated outwards as baking does it.
void paint(Bitmap& atlas, const Rectangle& inner, Padding padding, std::mt19937& random) {
    const Bitmap texture = mosaicer::test::noise(inner.width, inner.height, random);
    for (std::int32_t y = -padding.v; y < inner.height + padding.v; ++y)
        for (std::int32_t x = -padding.u; x < inner.width + padding.u; ++x) {
            const std::uint8_t* texel =
                texture.row(std::clamp(y, 0, inner.height - 1)) + std::ptrdiff_t{std::clamp(x, 0, inner.width - 1)} * 4;
            atlas.set_pixel(inner.x + x, inner.y + y, std::span<const std::uint8_t, 4>(texel, 4));
        }
}

void change_every_byte(Bitmap& bitmap, int most, std::mt19937& random) {
    for (std::uint8_t& byte : bitmap.pixels()) {
        const int change = static_cast<int>(random() % static_cast<unsigned>(2 * most + 1)) - most;
        byte = static_cast<std::uint8_t>(std::clamp(int{byte} + change, 0, 255));
    }
}

TEST(MeasurePaddings, finds_how_far_edges_are_repeated) {
    std::mt19937 random(1);
    Bitmap atlas(64, 64);
    const std::vector<PlacedTexture> textures = {placed({3, 2, 16, 10}), placed({25, 2, 10, 10}),
                                                 placed({3, 20, 20, 8}), placed({0, 0, 0, 0})};
    for (std::size_t i = 0; i < 3; ++i)
        paint(atlas, textures[i].inner, {3, 2}, random);
    EXPECT_THAT(measure_paddings(textures, atlas, /*lossy=*/false),
                ElementsAre(Padding{3, 2}, Padding{3, 2}, Padding{3, 2}, Padding{0, 0}));
    change_every_byte(atlas, 6, random);
    EXPECT_THAT(measure_paddings(textures, atlas, /*lossy=*/true),
                ElementsAre(Padding{3, 2}, Padding{3, 2}, Padding{3, 2}, Padding{0, 0}));
    EXPECT_THAT(measure_paddings(textures, atlas, /*lossy=*/false),
                ElementsAre(Padding{0, 0}, Padding{0, 0}, Padding{0, 0}, Padding{0, 0}));
}

TEST(MeasurePaddings, does_not_take_a_plain_ground_or_a_lost_column_for_truth) {
    std::mt19937 random(2);
    Bitmap atlas(64, 64);
    const std::vector<PlacedTexture> textures = {placed({2, 2, 10, 10}), placed({16, 2, 10, 10}),
                                                 placed({2, 16, 11, 10}), placed({16, 16, 10, 10}),
                                                 placed({40, 40, 8, 8})}; // stays empty, like all around it
    for (std::size_t i = 0; i < 4; ++i)
        paint(atlas, textures[i].inner, {2, 2}, random);
    // Odd sizes overlap by a column: the last texture has painted over the third one's.
    const std::vector<Padding> found = measure_paddings(textures, atlas, /*lossy=*/false);
    EXPECT_THAT(found, testing::Each(Padding{2, 2}));
}

TEST(MeasurePaddings, knows_no_padding_along_a_tiled_direction) {
    std::mt19937 random(3);
    Bitmap atlas(32, 32);
    paint(atlas, {0, 4, 16, 8}, {0, 3}, random);
    paint(atlas, {16, 4, 16, 8}, {0, 3}, random);
    EXPECT_THAT(measure_paddings({placed({0, 4, 16, 8}, /*tiled_u=*/true)}, atlas, false), ElementsAre(Padding{0, 3}));
}

TEST(MeasureAreas, counts_each_texel_once) {
    const auto areas = [](const std::vector<PlacedTexture>& textures, const std::vector<Padding>& paddings) {
        const AtlasAreas measured = measure_areas(textures, paddings, 16, 8);
        return std::array<std::int64_t, 3>{measured.textures, measured.padding, measured.total};
    };
    EXPECT_THAT(areas({}, {}), ElementsAre(0, 0, 128));
    EXPECT_THAT(areas({placed({2, 2, 4, 3})}, {{1, 2}}), ElementsAre(12, 6 * 7 - 12, 128));
    // Overlap by a column, and a frame that lies half on the neighbour and half beside the atlas.
    EXPECT_THAT(areas({placed({0, 0, 4, 8}), placed({3, 0, 4, 8})}, {{0, 0}, {1, 1}}), ElementsAre(56, 8, 128));
    EXPECT_THAT(areas({placed({4, 2, 4, 3}, true, false)}, {{0, 1}}), ElementsAre(48, 32, 128));
    EXPECT_THAT(areas({placed({4, 2, 4, 3}, true, true)}, {{0, 0}}), ElementsAre(128, 0, 128));
    EXPECT_THAT(areas({placed({0, 0, 0, 0})}, {{3, 3}}), ElementsAre(0, 0, 128));
}

TEST(MeasureAreas, equals_painting_the_rectangles) {
    std::mt19937 random(4);
    for (int round = 0; round < 50; ++round) {
        std::vector<PlacedTexture> textures;
        std::vector<Padding> paddings;
        std::array<std::array<int, 32>, 32> painted{};
        const auto below = [&random](int limit) { return static_cast<std::int32_t>(random() % unsigned(limit)); };
        for (int i = below(8); i >= 0; --i) {
            const Rectangle r{below(24), below(24), 1 + below(8), 1 + below(8)};
            textures.push_back(placed(r));
            paddings.push_back({below(4), below(4)});
            const auto& [u, v] = paddings.back();
            for (std::int32_t y = std::max(r.y - v, 0); y < std::min(r.y + r.height + v, 32); ++y)
                for (std::int32_t x = std::max(r.x - u, 0); x < std::min(r.x + r.width + u, 32); ++x) {
                    const bool inside = x >= r.x && y >= r.y && x < r.x + r.width && y < r.y + r.height;
                    int& texel = painted[std::size_t(y)][std::size_t(x)];
                    texel = std::max(texel, inside ? 2 : 1);
                }
        }
        std::array<std::int64_t, 3> counts{};
        for (const auto& row : painted)
            for (const int texel : row)
                ++counts[std::size_t(texel)];
        const AtlasAreas areas = measure_areas(textures, paddings, 32, 32);
        EXPECT_EQ(areas.textures, counts[2]);
        EXPECT_EQ(areas.padding, counts[1]);
    }
}

} // namespace
} // namespace kst::tool::report
