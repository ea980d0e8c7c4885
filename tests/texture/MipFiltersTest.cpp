#include "texture/MipFilters.h"

#include "tests/texture/support/Pictures.h"
#include "texture/Sharpen.h"
#include "texture/TagMips.h"

#include <gmock/gmock.h>

#include <cmath>

namespace mosaicer {
namespace {

using testing::Each;
using testing::ElementsAre;

Bitmap copy_of(const Bitmap& bitmap) {
    return *bitmap.copy(0, 0, bitmap.width(), bitmap.height());
}

MipChain chain_of(Bitmap base, MipFilter filter) {
    MipChain chain;
    chain.push_back(std::move(base));
    filter_mips(chain, filter);
    return chain;
}

/// The sums of the rules in floats, a pixel at a time.
std::vector<std::uint8_t> sharpened_by_rules(const Bitmap& source, const SharpenKernel& kernel, float scale) {
    const auto at = [&](int x, int y, int c) {
        x = std::clamp(x, 0, source.width() - 1);
        y = std::clamp(y, 0, source.height() - 1);
        return source.pixels()[static_cast<std::size_t>((y * source.width() + x) * 4 + c)];
    };
    std::vector<std::uint8_t> result;
    for (int y = 0; y < source.height(); ++y)
        for (int x = 0; x < source.width(); ++x)
            for (int c = 0; c < 4; ++c) {
                float sum = 0;
                for (int j = 0; j < kernel.height; ++j)
                    for (int i = 0; i < kernel.width; ++i)
                        sum += static_cast<float>(at(x + i - kernel.width / 2, y + j - kernel.height / 2, c)) *
                               static_cast<float>(kernel.weights[static_cast<std::size_t>(j * kernel.width + i)]);
                result.push_back(static_cast<std::uint8_t>(std::clamp(std::trunc(sum * scale), 0.0f, 255.0f)));
            }
    return result;
}

TEST(PointSampling, takes_the_first_stored_pixel_of_each_block) {
    Bitmap base(5, 4);
    for (std::size_t i = 0; i < 20; ++i)
        for (std::size_t c = 0; c < 4; ++c)
            base.pixels()[i * 4 + c] = static_cast<std::uint8_t>(10 * i + c);
    const MipChain chain = chain_of(std::move(base), MipFilter::NEAREST_NEIGHBOUR);
    ASSERT_EQ(chain.size(), 3u);
    EXPECT_THAT(pictures::bytes(chain[1]),
                ElementsAre(0, 1, 2, 3, 20, 21, 22, 23, 100, 101, 102, 103, 120, 121, 122, 123));
    EXPECT_THAT(pictures::bytes(chain[2]), ElementsAre(0, 1, 2, 3));
}

struct Way {
    MipFilter filter;
    RescaleFilter rescale;
};

class Rescaling : public testing::TestWithParam<Way> {};

TEST_P(Rescaling, makes_every_level_from_level_0) {
    const MipChain chain = chain_of(pictures::noise(40, 25), GetParam().filter);
    ASSERT_EQ(chain.size(), 6u);
    for (std::size_t level = 1; level < chain.size(); ++level) {
        const Bitmap expected = chain[0].rescale(40 >> level, std::max(25 >> level, 1), GetParam().rescale);
        EXPECT_EQ(pictures::bytes(chain[level]), pictures::bytes(expected)) << level;
        EXPECT_EQ(pictures::bytes(resample_level(level, chain[0], GetParam().filter)), pictures::bytes(expected))
            << level;
    }
}

INSTANTIATE_TEST_SUITE_P(Ways, Rescaling,
                         testing::Values(Way{MipFilter::BOX, RescaleFilter::box},
                                         Way{MipFilter::BILINEAR, RescaleFilter::bilinear},
                                         Way{MipFilter::BSPLINE, RescaleFilter::bspline},
                                         Way{MipFilter::BICUBIC, RescaleFilter::bicubic},
                                         Way{MipFilter::CATMULLROM, RescaleFilter::catmull_rom}));

TEST(Sharpening, stands_before_or_behind_the_rescaling) {
    const Bitmap base = pictures::noise(24, 16);
    const MipChain after = chain_of(copy_of(base), MipFilter::CATMULLROM_SHARPEN);
    const MipChain before = chain_of(copy_of(base), MipFilter::CATMULLROM_PRESHARPEN);
    const MipChain hard = chain_of(copy_of(base), MipFilter::CATMULLROM_PRESHARPEN_HARD);
    for (std::size_t level = 1; level < after.size(); ++level) {
        const auto rescale = [&](const Bitmap& from) {
            return from.rescale(24 >> level, std::max(16 >> level, 1), RescaleFilter::catmull_rom);
        };
        EXPECT_EQ(pictures::bytes(after[level]), pictures::bytes(sharpen(rescale(base), soft_sharpen)));
        EXPECT_EQ(pictures::bytes(before[level]), pictures::bytes(rescale(sharpen(base, soft_sharpen))));
        EXPECT_EQ(pictures::bytes(hard[level]), pictures::bytes(rescale(sharpen(base, hard_sharpen))));
    }
    EXPECT_EQ(pictures::bytes(before[0]), pictures::bytes(base)) << "level 0 stays as it was";
}

TEST(Sharpening, follows_the_matrices_up_to_the_edges) {
    for (const auto& [width, height] : {std::pair{1, 1}, {2, 3}, {9, 1}, {1, 6}, {17, 12}})
        for (const Bitmap& source : {pictures::noise(width, height), pictures::hard_edges(width, height)}) {
            EXPECT_EQ(pictures::bytes(sharpen(source, soft_sharpen)), sharpened_by_rules(source, soft_sharpen, 0.125f));
            EXPECT_EQ(pictures::bytes(sharpen(source, hard_sharpen)), sharpened_by_rules(source, hard_sharpen, 1.0f));
        }
}

// Soft: the middle is 8 * 9 - 0, / 8 = 9; beside it 2 * 9 / 8 = 2.25; two away -9 / 8, clamped.
TEST(Sharpening, spreads_a_lone_pixel_by_the_weights) {
    Bitmap base(7, 7);
    for (std::size_t c = 0; c < 4; ++c)
        base.pixels()[static_cast<std::size_t>(3 * 7 + 3) * 4 + c] = 9;
    const Bitmap soft = sharpen(base, soft_sharpen);
    const auto byte = [&](std::size_t x, std::size_t y) { return soft.pixels()[(y * 7 + x) * 4]; };
    EXPECT_EQ(byte(3, 3), 9);
    EXPECT_EQ(byte(2, 3), 2);
    EXPECT_EQ(byte(4, 4), 2);
    EXPECT_EQ(byte(1, 3), 0);
    EXPECT_EQ(sharpen(base, hard_sharpen).pixels()[(3 * 7 + 3) * 4], 81);
}

TEST(FilterMips, keep_flat_pictures_flat) {
    for (const auto& [word, filter] : KeywordTable<MipFilter>::entries)
        for (const std::uint8_t byte : {std::uint8_t{0}, std::uint8_t{255}}) {
            if (mip_way(filter) != MipWay::bitmap)
                continue;
            for (const Bitmap& level : chain_of(pictures::flat(20, 6, byte), filter))
                EXPECT_THAT(pictures::bytes(level), Each(byte)) << word;
        }
}

TEST(FilterMips, refuse_filters_of_another_way) {
    for (const MipFilter filter : {MipFilter::KEEP, MipFilter::BOX_GAMMA, static_cast<MipFilter>(13)})
        try {
            chain_of(pictures::flat(4, 4, 1), filter);
            ADD_FAILURE() << static_cast<int>(filter);
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "Unrecognized free image filter");
        }
    EXPECT_EQ(chain_of(pictures::flat(1, 1, 1), MipFilter::KEEP).size(), 1u) << "nothing to make";
}

// 1 - 0.8f is a little under a fifth, so 10 over tint 0 is 1.9999999; over tint 255 the sum with 204 is rounded to 206.
TEST(TagMips, tint_levels_in_turn_and_spare_level_0_and_alpha) {
    MipChain chain;
    for (int level = 0; level < 12; ++level)
        chain.push_back(pictures::flat(1, 1, 10));
    tag_mip_levels(chain);
    EXPECT_THAT(pictures::bytes(chain[0]), Each(10));
    EXPECT_THAT(pictures::bytes(chain[1]), ElementsAre(1, 1, 206, 10)) << "red";
    EXPECT_THAT(pictures::bytes(chain[2]), ElementsAre(1, 206, 1, 10)) << "green";
    EXPECT_THAT(pictures::bytes(chain[3]), ElementsAre(206, 1, 1, 10)) << "blue";
    EXPECT_THAT(pictures::bytes(chain[4]), ElementsAre(199, 83, 196, 10)) << "243, 102, 247";
    EXPECT_THAT(pictures::bytes(chain[10]), ElementsAre(206, 1, 206, 10));
    EXPECT_THAT(pictures::bytes(chain[11]), ElementsAre(1, 1, 206, 10)) << "the table starts anew";
}

TEST(TagMips, lose_nothing_to_rounding_at_the_ends) {
    MipChain chain;
    for (int level = 0; level < 3; ++level)
        chain.push_back(pictures::flat(2, 2, 255));
    tag_mip_levels(chain);
    EXPECT_EQ(chain[1].pixels()[2], 255);
    EXPECT_EQ(chain[1].pixels()[0], 50) << "255 * 0.19999999 is below 51";
}

} // namespace
} // namespace mosaicer
