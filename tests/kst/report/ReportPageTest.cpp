#include "tools/kst/report/Page.h"

#include "tests/support/TemporaryDirectory.h"
#include "tests/support/tga_bytes.h"
#include "tests/texture/support/TestImages.h"
#include "tools/kst/report/collect_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace kst::tool::report {
namespace {

using mosaicer::Bitmap;
using mosaicer::test::dds_file;
using mosaicer::test::from_rows;
using mosaicer::test::Rows;
using mosaicer::test::rows_of;
using mosaicer::test::solid;
using test_support::TemporaryDirectory;
using testing::ElementsAre;
using testing::HasSubstr;

/// What a PNG in memory shows.
Rows decoded(const std::vector<std::uint8_t>& png) {
    const TemporaryDirectory dir;
    const std::string path = dir.write("a.png", std::string(png.begin(), png.end()));
    return rows_of(Bitmap::load(path, mosaicer::BitmapFormat::png).value());
}

/// A chain down to 1 by 1, each level in one colour.
mosaicer::MipChain chain(std::size_t side) {
    mosaicer::MipChain levels;
    for (std::uint32_t level = 0; side >> level > 0; ++level)
        levels.push_back(from_rows(solid(side >> level, side >> level, 0xFF000000u + level)));
    return levels;
}

TEST(EncodePictures, keeps_the_colour_of_transparent_texels) {
    mosaicer::MipChain levels;
    levels.push_back(from_rows({{0x00112233, 0x80445566}, {0xFF778899, 0x01000000}}));
    const ImagePictures shown = encode_pictures(std::move(levels), 64);
    ASSERT_EQ(shown.pictures.size(), 1u);
    EXPECT_EQ(decoded(shown.pictures[0].colour_png), (Rows{{0xFF112233, 0xFF445566}, {0xFF778899, 0xFF000000}}));
    EXPECT_EQ(decoded(shown.pictures[0].alpha_png), (Rows{{0xFF000000, 0xFF808080}, {0xFFFFFFFF, 0xFF010101}}));
}

TEST(EncodePictures, shows_levels_that_are_too_large_by_one_that_fits) {
    const struct {
        std::size_t side;
        std::int32_t max_side;
        std::vector<std::size_t> pictures; ///< of the first four levels
        std::int32_t thumbnail;            ///< its side
    } cases[] = {{64, 64, {0, 1, 2, 3}, 64}, {64, 16, {0, 0, 0, 1}, 16}, {1024, 2048, {0, 1, 2, 3}, 256}};
    for (const auto& c : cases) {
        const ImagePictures shown = encode_pictures(chain(c.side), c.max_side);
        for (std::size_t level = 0; level < 4; ++level) {
            EXPECT_EQ(shown.levels[level].picture, c.pictures[level]) << c.side << " " << level;
            EXPECT_EQ(shown.levels[level].width, static_cast<std::int32_t>(c.side >> level));
        }
        EXPECT_EQ(shown.pictures[shown.thumbnail].width, c.thumbnail);
        EXPECT_TRUE(shown.pictures[0].alpha_png.empty());
    }
}

TEST(EncodePictures, halves_what_has_no_level_that_fits) {
    mosaicer::MipChain one_level;
    one_level.push_back(from_rows(solid(600, 20, 0xFF336699)));
    const ImagePictures shown = encode_pictures(std::move(one_level), 512);
    ASSERT_EQ(shown.levels.size(), 1u);
    EXPECT_EQ(shown.levels[0].width, 600);
    ASSERT_EQ(shown.pictures.size(), 2u);
    EXPECT_EQ(decoded(shown.pictures[0].colour_png), solid(300, 10, 0xFF336699));
    EXPECT_EQ(decoded(shown.pictures[shown.thumbnail].colour_png), solid(150, 5, 0xFF336699));
}

TEST(DecodeImage, opens_a_cube_into_a_cross) {
    const TemporaryDirectory dir;
    std::string file = dds_file({solid(1, 1, 0xFF000000)}, 0xFE00);
    for (const int face : {1, 2, 3, 4, 5})
        file += {static_cast<char>(face), 0, 0, static_cast<char>(0xFF)};
    const ImageRecord record{
        .path = dir.write("a.dds", file), .file = "a.dds", .bytes = 1, .width = 1, .height = 1, .is_cube = true};
    const DecodedImage image = decode_image(record);
    EXPECT_EQ(image.format, "A8R8G8B8");
    ASSERT_EQ(image.levels.size(), 1u);
    constexpr std::uint32_t o = 0xFF000000;
    EXPECT_EQ(rows_of(image.levels[0]), (Rows{{0, o + 2, 0, 0}, {o + 1, o + 4, o, o + 5}, {0, o + 3, 0, 0}}));
}

TEST(DecodeImage, shows_formats_without_alpha_as_opaque_and_names_what_fails) {
    const TemporaryDirectory dir;
    std::string grey = dds_file({solid(2, 1, 0)}).substr(0, 128) + std::string("\x20\x40", 2);
    grey[80] = 0;
    grey[82] = 2; // flags 0x20000, luminance
    grey[88] = 8;
    ImageRecord record{.path = dir.write("a.dds", grey), .file = "x/a.dds", .bytes = 1, .width = 2, .height = 1};
    const DecodedImage image = decode_image(record);
    EXPECT_EQ(image.format, "L8");
    EXPECT_EQ(rows_of(image.levels[0]), (Rows{{0xFF202020, 0xFF404040}}));
    for (const auto& [name, bytes, fault] :
         {std::tuple{"b.dds", std::string("DDS "), "x/f: the pixels cannot be decoded"},
          {"b.png", "PNG", "x/f: the pixels cannot be decoded"},
          {"c.dds", dds_file({solid(1, 1, 0)}, 0x200000, /*depth=*/1),
           "x/f: a volume texture, which has no picture"}}) {
        record.path = dir.write(name, bytes);
        record.file = "x/f";
        EXPECT_EQ(mosaicer::test::failure_text([&] { decode_image(record); }), fault);
    }
}

TEST(ChooseMaxSide, lets_large_runs_in_with_smaller_pictures) {
    const auto run_of = [](std::size_t count, std::int32_t side, bool is_cube) {
        RunRecord run;
        run.atlases.resize(count);
        for (Atlas& atlas : run.atlases)
            atlas.image = {.path = "", .file = "", .bytes = 0, .width = side, .height = side, .is_cube = is_cube};
        return run;
    };
    // 2^27 texels are 32 pictures of 2048 by 2048, and 512 of 512 by 512.
    EXPECT_EQ(choose_max_side(run_of(32, 2048, false)), 2048);
    EXPECT_EQ(choose_max_side(run_of(33, 2048, false)), 1024);
    EXPECT_EQ(choose_max_side(run_of(500, 1024, false)), 512);
    EXPECT_EQ(choose_max_side(run_of(100'000, 16384, false)), 256);
    EXPECT_EQ(choose_max_side(run_of(100'000, 16, false)), 2048);
    // Opened, 512 by 512 has 2048 by 1536 texels.
    EXPECT_EQ(choose_max_side(run_of(42, 512, true)), 2048);
    EXPECT_EQ(choose_max_side(run_of(43, 512, true)), 1024);
}

constexpr const char* hostile_name = "</script><!-- & \" \\ {{js}} \xC3\xBC \xF0\x9F\x90\xBB";

RunRecord hostile_run(const TemporaryDirectory& dir) {
    dir.write("a/atlas.tga", test_support::tga_bytes(4, 4, 0x80112233));
    dir.write("a/tdb_atlas_set.xml", "<atlas_set/>");
    dir.write("b/tdb_texture_set.xml", "<texture_set><image name=\"gone\"/></texture_set>");
    RunRecord run = collect_run(dir.path().string());
    run.atlases[0].textures.resize(1);
    run.atlases[0].textures[0].name = hostile_name;
    run.atlases[0].textures[0].inner = {0, 0, 2, 4};
    return run;
}

TEST(BuildPage, tells_the_run_in_ascii_that_cannot_end_its_element) {
    const TemporaryDirectory dir;
    const Page page = build_page(hostile_run(dir), 512);
    for (const char c : page.run_json)
        ASSERT_TRUE(c >= 32 && c < 127 && c != '<') << page.run_json;
    const auto json = nlohmann::json::parse(page.run_json);
    EXPECT_EQ(json["maxSide"], 512);
    const auto& atlas = json["atlases"][0];
    EXPECT_EQ(atlas["textures"][0]["name"], hostile_name);
    EXPECT_EQ(atlas["textures"][0]["rect"], (nlohmann::json{0, 0, 2, 4}));
    EXPECT_EQ(atlas["areas"], (nlohmann::json{8, 0, 16}));
    EXPECT_EQ(atlas["image"]["thumbnail"], (nlohmann::json{0, 4, 4, 1}));
    EXPECT_EQ(atlas["image"]["levels"][0]["size"], (nlohmann::json{4, 4}));
    EXPECT_FALSE(json["sets"][0]["images"][0]["image"].contains("levels"));
    EXPECT_THAT(page.faults, ElementsAre(HasSubstr("b/gone: there is no image")));
}

TEST(WritePage, gives_the_same_bytes_and_puts_thumbnails_ahead) {
    const TemporaryDirectory dir;
    Page page = build_page(hostile_run(dir), 512);
    page.pictures.push_back({1, 1, {'M', 'a', 'n', 'y'}, {}});
    page.pictures.push_back({1, 1, {'M', 'a'}, {'l', 'i', 'g'}});
    page.thumbnails = {2};
    const std::int64_t size = write_page(page, dir / "1.html");
    write_page(page, dir / "2.html");
    const std::string text = dir.read("1.html");
    EXPECT_EQ(static_cast<std::int64_t>(text.size()), size);
    EXPECT_EQ(text, dir.read("2.html"));
    const std::size_t thumbnail = text.find("<script type=\"text/plain\" id=\"c2\">TWE=</script>");
    const std::size_t alpha = text.find("<script type=\"text/plain\" id=\"a2\">bGln</script>");
    const std::size_t run = text.find("id=\"run\"");
    const std::size_t script = text.find("'use strict'");
    const std::size_t picture = text.find("<script type=\"text/plain\" id=\"c1\">TWFueQ==</script>");
    EXPECT_LT(thumbnail, alpha);
    EXPECT_LT(alpha, run);
    EXPECT_LT(run, script);
    EXPECT_LT(script, picture);
    EXPECT_LT(picture, text.size());
    EXPECT_THAT(text, HasSubstr("default-src 'none'")) << "the browser is told to fetch nothing";
    EXPECT_EQ(mosaicer::test::failure_text([&] { write_page(page, dir / "none/1.html"); }),
              "cannot write " + dir / "none/1.html");
}

} // namespace
} // namespace kst::tool::report
