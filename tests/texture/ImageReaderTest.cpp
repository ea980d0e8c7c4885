#include "texture/ImageReader.h"

#include "tests/support/TemporaryDirectory.h"
#include "tests/texture/support/TestImages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace mosaicer {
namespace {

using namespace test;
using test_support::TemporaryDirectory;

TEST(MakeSourceTexture, reads_flags_from_the_name_and_the_size_from_the_file) {
    const TemporaryDirectory dir;
    ASSERT_TRUE(from_rows(solid(5, 3, 1)).save(dir / "a.png", BitmapFormat::png));
    const struct {
        const char* name;
        bool bump, tile_u, tile_v;
    } cases[] = {{"rock", false, false, false},  {"rock_bm", true, false, false}, {"rock_bm_d", false, false, false},
                 {"a_x_d", false, true, false},  {"a_y_d", false, false, true},   {"a_x_b_y_d", false, true, false},
                 {"a_xy_d", false, true, true},  {"a_yx_bm", true, true, true},   {"a_x", false, false, false},
                 {"_y__xy_", false, false, true}};
    for (const auto& c : cases) {
        const SourceTexture texture = make_source_texture(c.name, dir / "a.png");
        EXPECT_EQ(texture.name, c.name);
        EXPECT_EQ(texture.is_bump, c.bump) << c.name;
        EXPECT_EQ(texture.tile_u, c.tile_u) << c.name;
        EXPECT_EQ(texture.tile_v, c.tile_v) << c.name;
        EXPECT_EQ(texture.image.width, 5);
        EXPECT_EQ(texture.image.height, 3);
        EXPECT_EQ(texture.image.file_path, dir / "a.png");
    }
}

TEST(ReadImageInfo, tells_the_size_of_every_format_and_which_dds_is_a_cube) {
    const TemporaryDirectory dir;
    const Bitmap picture = from_rows(solid(6, 2, 0xFF112233));
    ASSERT_TRUE(picture.save(dir / "a.png", BitmapFormat::png));
    ASSERT_TRUE(picture.save(dir / "a.bmp", BitmapFormat::bmp));
    ASSERT_TRUE(picture.save(dir / "a.tga", BitmapFormat::tga));
    dir.write("a.dds", dds_file({solid(6, 2, 1)}));
    dir.write("cube.dds", dds_file({solid(6, 2, 1)}, 0xFE00));
    for (const char* name : {"a.png", "a.bmp", "a.tga", "a.dds", "cube.dds"}) {
        const std::optional<ImageInfo> info = read_image_info(dir / name);
        ASSERT_TRUE(info.has_value()) << name;
        EXPECT_EQ(info->width, 6) << name;
        EXPECT_EQ(info->height, 2) << name;
        EXPECT_EQ(info->is_cube, name == std::string("cube.dds"));
    }
}

TEST(ReadImageInfo, names_the_file_in_every_failure) {
    const TemporaryDirectory dir;
    for (const char* name : {"bad.dds", "bad.tga", "bad.png", "bad.bmp"})
        dir.write(name, "this is no image at all");
    for (const char* name : {"bad.dds", "bad.tga", "none.dds", "none.tga"})
        EXPECT_THAT(failure_text([&] { make_source_texture("a", dir / name); }), testing::HasSubstr(dir / name));
    for (const char* name : {"bad.png", "bad.bmp", "none.png", "none.bmp"})
        EXPECT_EQ(failure_text([&] { make_source_texture("a", dir / name); }),
                  "Failure getting info for file " + dir / name);
    EXPECT_EQ(failure_text([&] { read_image_info("a.jpg"); }), "Unhandled image format for a.jpg");
    EXPECT_EQ(failure_text([&] { read_image_file("a.DDS", FileLevels::all); }), "Unhandled image format for a.DDS");
}

TEST(ReadImageFile, gives_dds_levels_with_the_first_stored_row_at_the_bottom) {
    const TemporaryDirectory dir;
    const Rows top{{0x11223344, 0x55667788}, {0x99AABBCC, 0xDDEEFF00}, {1, 2}, {3, 4}};
    dir.write("a.dds", dds_file({top, {{7}, {8}}, {{9}}}));
    const std::optional<ImageFile> all = read_image_file(dir / "a.dds", FileLevels::all);
    ASSERT_TRUE(all.has_value());
    ASSERT_EQ(all->mips.size(), 3u);
    EXPECT_EQ(rows_of(all->mips[0]), top);
    EXPECT_EQ(rows_of(all->mips[1]), (Rows{{7}, {8}}));
    EXPECT_EQ(rows_of(all->mips[2]), (Rows{{9}}));
    EXPECT_EQ(read_image_file(dir / "a.dds", FileLevels::first)->mips.size(), 1u);

    dir.write("volume.dds", dds_file({top}, 0x200000, /*depth=*/2) + std::string(32, '\0'));
    const std::optional<ImageFile> volume = read_image_file(dir / "volume.dds", FileLevels::all);
    ASSERT_TRUE(volume.has_value());
    EXPECT_TRUE(volume->is_cube);
    EXPECT_TRUE(volume->mips.empty());
}

} // namespace
} // namespace mosaicer
