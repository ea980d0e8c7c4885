#include "texture/AtlasBlit.h"

#include "tests/texture/support/TestImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>

namespace mosaicer {
namespace {

using namespace test;

AtlasEntry placed(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height, std::int32_t pad_u = 0,
                  std::int32_t pad_v = 0) {
    AtlasEntry entry;
    entry.x = x;
    entry.y = y;
    entry.width = width;
    entry.height = height;
    entry.source.pad_texels_u = pad_u;
    entry.source.pad_texels_v = pad_v;
    return entry;
}

LoadedTexture texture_of(const Rows& rows) {
    LoadedTexture texture;
    texture.mips.push_back(from_rows(rows));
    texture.width = texture.mips[0].width();
    texture.height = texture.mips[0].height();
    return texture;
}

/// The dilation as strips that are cut out and pasted again.
void dilate_by_strips(Bitmap& level, const AtlasEntry& entry, std::int32_t d) {
    const std::int32_t pu = entry.source.pad_texels_u;
    const std::int32_t pv = entry.source.pad_texels_v;
    const std::int32_t x0 = (entry.x + pu) / d;
    const std::int32_t y0 = (entry.y + pv) / d;
    const std::int32_t px = pu / d;
    const std::int32_t py = pv / d;
    const std::int32_t x1 = x0 + (entry.width - 2 * pu) / d;
    const std::int32_t y1 = y0 + (entry.height - 2 * pv) / d;
    const auto paste = [&](const std::optional<Bitmap>& strip, std::int32_t x, std::int32_t y) {
        if (strip)
            level.paste(*strip, x, y);
    };
    const auto left = level.copy(x0, y0, x0 + 1, y1);
    const auto right = level.copy(x1 - 1, y0, x1, y1);
    const auto top = level.copy(x0, y0, x1, y0 + 1);
    const auto bottom = level.copy(x0, y1 - 1, x1, y1);
    for (std::int32_t k = 0; k < px; ++k) {
        paste(left, x0 - 1 - k, y0);
        paste(right, x1 + k, y0);
    }
    for (std::int32_t k = 0; k < py; ++k) {
        paste(top, x0, y0 - 1 - k);
        paste(bottom, x0, y1 + k);
    }
    const auto top_left = level.copy(x0, y0, x0 + 1, y0 + 1);
    const auto top_right = level.copy(x1 - 1, y0, x1, y0 + 1);
    const auto bottom_left = level.copy(x0, y1 - 1, x0 + 1, y1);
    const auto bottom_right = level.copy(x1 - 1, y1 - 1, x1, y1);
    for (std::int32_t a = 0; a < px; ++a)
        for (std::int32_t b = 0; b < py; ++b) {
            paste(top_left, x0 - 1 - a, y0 - 1 - b);
            paste(top_right, x1 + a, y0 - 1 - b);
            paste(bottom_left, x0 - 1 - a, y1 + b);
            paste(bottom_right, x1 + a, y1 + b);
        }
}

TEST(Dilate, equals_the_pasted_strips_for_any_place_size_and_padding_on_every_level) {
    std::mt19937 random(11);
    const auto number = [&](int low, int high) { return std::uniform_int_distribution(low, high)(random); };
    for (int round = 0; round < 3000; ++round) {
        const std::int32_t width = number(1, 40);
        const std::int32_t height = number(1, 40);
        MipChain chain = filled_chain(width, height, 6, {});
        MipChain expected;
        for (Bitmap& level : chain) {
            level = noise(level.width(), level.height(), random);
            expected.push_back(level.rotate(0));
        }
        // Small textures in wide frames have levels without an inner rectangle; negative paddings come from
        // definitions.
        std::vector<AtlasEntry> entries;
        for (int i = 0; i < 3; ++i) {
            const std::int32_t pad_u = number(-2, 9);
            const std::int32_t pad_v = number(-2, 9);
            entries.push_back(placed(number(0, width), number(0, height), number(1, 9) + 2 * pad_u,
                                     number(1, 9) + 2 * pad_v, pad_u, pad_v));
        }
        dilate(chain, entries);
        for (std::size_t n = 0; n < expected.size(); ++n) {
            for (const AtlasEntry& entry : entries)
                dilate_by_strips(expected[n], entry, 1 << n);
            ASSERT_EQ(rows_of(chain[n]), rows_of(expected[n])) << "round " << round << " level " << n;
        }
    }
}

TEST(Dilate, ends_with_a_padding_that_is_far_larger_than_the_picture) {
    MipChain chain = filled_chain(8, 8, 4, {});
    chain[0].set_pixel(4, 4, std::array<std::uint8_t, 4>{1, 2, 3, 4});
    AtlasEntry entry = placed(0, 0, 1, 1, 1 << 30, 1 << 30);
    entry.x = entry.y = 4 - (1 << 30);
    entry.width = entry.height = std::numeric_limits<std::int32_t>::min() + 1; // 1 + 2 << 30, wrapped
    dilate(chain, std::span(&entry, 1));
    SUCCEED();
}

TEST(FilledChain, truncates_the_mean_to_bytes_and_is_transparent) {
    const MipChain chain = filled_chain(4, 2, 3, {0.25f, 0.5f, 1.0f});
    ASSERT_EQ(chain.size(), 3u);
    EXPECT_EQ(rows_of(chain[0]), solid(4, 2, 0x003F7FFF));
    EXPECT_EQ(rows_of(chain[1]), solid(2, 1, 0x003F7FFF));
    EXPECT_EQ(rows_of(chain[2]), solid(1, 1, 0x003F7FFF));
}

TEST(BlitEntry, repeats_a_texture_that_divides_its_slot) {
    MipChain atlas = filled_chain(8, 4, 1, {});
    AtlasEntry entry = placed(0, 1, 8, 2);
    blit_entry(atlas, entry, texture_of({{1, 2}, {3, 4}}), CornerTags::none);
    EXPECT_EQ(
        rows_of(atlas[0]),
        (Rows{{0, 0, 0, 0, 0, 0, 0, 0}, {1, 2, 1, 2, 1, 2, 1, 2}, {3, 4, 3, 4, 3, 4, 3, 4}, {0, 0, 0, 0, 0, 0, 0, 0}}));
    EXPECT_EQ(entry.width, 2) << "one copy";
    EXPECT_EQ(entry.height, 2);
}

TEST(BlitEntry, stretches_a_texture_that_does_not) {
    MipChain atlas = filled_chain(8, 1, 1, {});
    AtlasEntry entry = placed(0, 0, 8, 1);
    LoadedTexture texture = texture_of({{0xFF000000, 0xFF808080, 0xFFFFFFFF}});
    const Rows stretched = rows_of(texture.mips[0].rescale(8, 1, RescaleFilter::bicubic));
    blit_entry(atlas, entry, texture, CornerTags::none);
    EXPECT_EQ(rows_of(atlas[0]), stretched);
    EXPECT_EQ(entry.width, 3);
}

TEST(BlitEntry, puts_level_on_level_and_leaves_levels_past_the_end_of_either_chain) {
    MipChain atlas = filled_chain(8, 8, 3, {});
    LoadedTexture texture = texture_of(solid(2, 2, 5));
    texture.mips.push_back(from_rows({{6}}));
    AtlasEntry entry = placed(2, 2, 4, 4, 1, 1);
    blit_entry(atlas, entry, texture, CornerTags::none);
    EXPECT_EQ(rows_of(atlas[0])[3], (std::vector<std::uint32_t>{0, 0, 0, 5, 5, 0, 0, 0}));
    EXPECT_EQ(rows_of(atlas[1]), (Rows{{0, 0, 0, 0}, {0, 6, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}}));
    EXPECT_EQ(rows_of(atlas[2]), solid(2, 2, 0));
    EXPECT_EQ(entry.width, 4) << "padding stays part of the size";
}

TEST(BlitEntry, tags_the_corners_of_each_copy_on_the_top_level_alone) {
    MipChain atlas = filled_chain(6, 3, 2, {});
    LoadedTexture texture = texture_of(solid(3, 3, 1));
    texture.mips.push_back(from_rows({{2}}));
    AtlasEntry entry = placed(0, 0, 6, 3);
    blit_entry(atlas, entry, texture, CornerTags::red);
    const std::uint32_t r = 0xFFFF0000;
    EXPECT_EQ(rows_of(atlas[0]), (Rows{{r, 1, r, r, 1, r}, {1, 1, 1, 1, 1, 1}, {r, 1, r, r, 1, r}}));
    EXPECT_EQ(rows_of(atlas[1]), (Rows{{2, 2, 2}}));
}

} // namespace
} // namespace mosaicer
