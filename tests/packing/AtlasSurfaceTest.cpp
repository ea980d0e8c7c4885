#include "packing/AtlasSurface.h"
#include "tests/packing/PackingFixtures.h"

#include <gtest/gtest.h>

#include <limits>

namespace mosaicer {
namespace {

using testing_support::TextureShelf;
using testing_support::thrown_text;

bool insert_by_texel(AtlasSurface& surface, const SetTextureEntry& entry) {
    return surface.insert(entry, /*pixel_step=*/true, /*expanding_square=*/false);
}

/// Tiles as its letters say: "u", "v", "uv" or "".
SetTextureEntry tiled(SetTextureEntry entry, std::string_view axes) {
    entry.texture->tile_u = axes.find('u') != std::string_view::npos;
    entry.texture->tile_v = axes.find('v') != std::string_view::npos;
    return entry;
}

SetTextureEntry padded(SetTextureEntry entry, std::int32_t u, std::int32_t v) {
    entry.pad_texels_u = u;
    entry.pad_texels_v = v;
    return entry;
}

SetTextureEntry rotated(SetTextureEntry entry, std::int32_t rotation) {
    entry.rotation = rotation;
    return entry;
}

TEST(AtlasSurface, takes_what_is_as_large_as_itself_and_nothing_larger) {
    TextureShelf shelf;
    for (const bool pixel_step : {true, false}) {
        AtlasSurface surface(256, 64);
        EXPECT_FALSE(surface.insert(shelf.entry(257, 64), pixel_step, false));
        EXPECT_FALSE(surface.insert(shelf.entry(256, 65), pixel_step, false));
        EXPECT_TRUE(surface.entries().empty() && surface.textures().empty());
        surface.reset();
        EXPECT_TRUE(surface.insert(shelf.entry(256, 64), pixel_step, false));
        EXPECT_FALSE(surface.insert(shelf.entry(2, 2), pixel_step, false));
    }
}

TEST(AtlasSurface, without_width_or_height_takes_nothing) {
    TextureShelf shelf;
    for (const auto& [width, height] : {std::pair{0, 64}, {64, 0}, {-1, 64}, {64, -8}, {-4, -4}}) {
        AtlasSurface surface(width, height);
        for (const bool flag : {false, true})
            EXPECT_FALSE(surface.insert(shelf.entry(1, 1), flag, flag));
        EXPECT_FALSE(insert_by_texel(surface, tiled(shelf.entry(4, 4), "uv")));
        EXPECT_EQ(surface.usage(), 0.0f);
    }
}

struct SizeCase {
    SetTextureEntry entry;
    std::int32_t width, height;
    bool tiled_u, tiled_v;
};

TEST(AtlasSurface, sizes_entries_by_rotation_padding_tiling_and_forced_size) {
    TextureShelf shelf;
    SetTextureEntry forced = shelf.entry(32, 64);
    forced.width = 20;
    const SizeCase cases[]{
        {padded(rotated(shelf.entry(32, 64), 90), 2, 0), 68, 32, false, false},
        {padded(rotated(shelf.entry(32, 64), 180), 2, 0), 36, 64, false, false},
        {rotated(forced, 270), 64, 20, false, false},
        {padded(shelf.entry(32, 64), -1, 3), 30, 70, false, false},
        {tiled(shelf.entry(32, 64), "u"), 512, 64, true, false},
        {padded(rotated(tiled(shelf.entry(32, 64), "u"), 90), 2, 0), 68, 256, false, true},
        {tiled(shelf.entry(32, 64), "uv"), 512, 256, true, true},
    };
    for (const SizeCase& c : cases) {
        AtlasSurface surface(512, 256);
        ASSERT_TRUE(insert_by_texel(surface, c.entry));
        const AtlasEntry& placed = surface.entries().front();
        EXPECT_EQ(std::tie(placed.width, placed.height, placed.tiled_u, placed.tiled_v),
                  std::tie(c.width, c.height, c.tiled_u, c.tiled_v));
    }
}

TEST(AtlasSurface, refuses_cubes_and_padding_that_contradicts) {
    TextureShelf shelf;
    SetTextureEntry cube = shelf.entry(8, 8, "sky");
    cube.texture->image.is_cube = true;
    const std::string same_direction = " is tiled and has padding texels in the same direction";
    const std::string nothing_left = " has no texels left between its padding texels";
    const std::pair<SetTextureEntry, std::string> cases[]{
        {cube, "Unable to insert cube texture in atlas; tex/sky.png"},
        {padded(tiled(shelf.entry(8, 8, "a"), "u"), 2, 0), "Texture a" + same_direction},
        {padded(tiled(shelf.entry(8, 8, "b"), "v"), 0, -2), "Texture b" + same_direction},
        {padded(rotated(tiled(shelf.entry(8, 8, "c"), "u"), 90), 0, 2), "Texture c" + same_direction},
        {padded(shelf.entry(8, 8, "d"), -4, 0), "Texture d" + nothing_left},
        {padded(shelf.entry(8, 8, "e"), 0, -90), "Texture e" + nothing_left},
        {shelf.entry(0, 8, "f"), "Texture f" + nothing_left},
    };
    for (const auto& [entry, text] : cases) {
        AtlasSurface surface(64, 64);
        const auto& refused = entry;
        EXPECT_EQ(thrown_text([&] { surface.insert(refused, false, false); }), text);
        EXPECT_TRUE(surface.entries().empty());
    }
}

TEST(AtlasSurface, takes_sizes_beyond_32_bits_for_too_large) {
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    TextureShelf shelf;
    AtlasSurface surface(most, most);
    EXPECT_FALSE(insert_by_texel(surface, padded(shelf.entry(most, 1), 1, 0)));
    EXPECT_FALSE(insert_by_texel(surface, padded(shelf.entry(1, 1), 0, most)));
    EXPECT_TRUE(surface.insert(shelf.entry(most, most), true, false));
    EXPECT_EQ(surface.tight_area(), std::int64_t{most} * most);
}

TEST(AtlasSurface, counts_a_texture_placed_twice_once) {
    TextureShelf shelf;
    AtlasSurface surface(64, 64);
    const SetTextureEntry entry = shelf.entry(8, 8);
    EXPECT_TRUE(insert_by_texel(surface, entry) && insert_by_texel(surface, entry));
    EXPECT_EQ(surface.entries().size(), 2u);
    EXPECT_EQ(surface.textures().size(), 1u);
}

TEST(AtlasSurface, narrows_tiled_entries_to_the_content_and_shrinks_by_halves) {
    TextureShelf shelf;
    AtlasSurface surface(1024, 1024);
    ASSERT_TRUE(insert_by_texel(surface, tiled(shelf.entry(64, 100), "u")));
    ASSERT_TRUE(insert_by_texel(surface, shelf.entry(256, 50)));
    EXPECT_EQ(surface.placed_area(), 64u * 100 + 256 * 50);
    EXPECT_EQ(surface.tight_area(), 256 * 256);
    EXPECT_EQ(surface.entries()[0].width, 1024);
    EXPECT_EQ(surface.width(), 1024);

    surface.adjust_tiling();
    EXPECT_EQ(surface.entries()[0].width, 256);
    surface.shrink();
    EXPECT_EQ(surface.width(), 256);
    EXPECT_EQ(surface.height(), 256);
    EXPECT_EQ(surface.entries()[0].width, 256);

    surface.reset();
    EXPECT_EQ(surface.width(), 1024);
    EXPECT_EQ(surface.tight_area(), 2 * 2);
}

TEST(AtlasSurface, lets_an_entry_that_tiles_both_ways_follow_the_width_alone) {
    TextureShelf shelf;
    AtlasSurface surface(256, 128);
    ASSERT_TRUE(insert_by_texel(surface, tiled(shelf.entry(30, 20), "uv")));
    surface.adjust_tiling();
    EXPECT_EQ(surface.entries()[0].width, 30);
    EXPECT_EQ(surface.entries()[0].height, 128);
    surface.shrink();
    EXPECT_EQ(surface.width(), 32);
    EXPECT_EQ(surface.height(), 128);
    EXPECT_EQ(surface.entries()[0].width, 32);
}

TEST(AtlasSurface, halves_no_side_below_two) {
    TextureShelf shelf;
    for (const auto& [side, left] : {std::pair{2, 2}, {3, 3}, {4, 2}, {5, 2}, {12, 3}, {64, 2}}) {
        AtlasSurface surface(side, 64);
        ASSERT_TRUE(insert_by_texel(surface, shelf.entry(2, 64)));
        surface.shrink();
        EXPECT_EQ(surface.width(), left) << side;
        EXPECT_EQ(surface.height(), 64);
    }
}

} // namespace
} // namespace mosaicer
