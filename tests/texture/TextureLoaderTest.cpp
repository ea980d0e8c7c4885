#include "texture/TextureLoader.h"

#include "tests/support/TemporaryDirectory.h"
#include "tests/texture/support/TestImages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace mosaicer {
namespace {

using namespace test;
using test_support::TemporaryDirectory;

std::string noise_png(const TemporaryDirectory& dir, std::int32_t width, std::int32_t height) {
    std::mt19937 random(5);
    const std::string path = dir / "noise.png";
    EXPECT_TRUE(noise(width, height, random).save(path, BitmapFormat::png));
    return path;
}

LoadOptions forced_to(std::int32_t width, std::int32_t height) {
    return {.with_mips = false, .forced_width = width, .forced_height = height, .mip_filter = MipFilter::BOX};
}

struct ForcedCase {
    std::int32_t width, height;               ///< of the file
    std::int32_t forced_width, forced_height; ///< as asked
    const char* text;                         ///< of the failure, "PATH" for the path; null if it ends well
    std::size_t dropped;                      ///< levels
};

TEST(LoadImage, serves_a_forced_size_by_a_level_of_the_full_chain) {
    const char* both = "Texture resizing must be specified for both width and height; PATH";
    const char* aspect = "Texture resizing must maintain aspect ratio of original image; PATH";
    const char* down = "Only texture downsizing is allowed; PATH";
    const char* unable = "Unable to resize texture PATH to specified width/height";
    const TemporaryDirectory dir;
    for (const ForcedCase& c : {ForcedCase{64, 64, 16, 16, nullptr, 2}, ForcedCase{64, 64, 64, 50, nullptr, 0},
                                ForcedCase{64, 64, 50, 64, nullptr, 0}, ForcedCase{64, 16, 4, 1, nullptr, 4},
                                ForcedCase{64, 3, 1, 1, aspect, 0}, ForcedCase{64, 64, 1, 1, nullptr, 6},
                                ForcedCase{64, 64, 25, 25, unable, 0}, ForcedCase{16, 16, 32, 32, down, 0},
                                ForcedCase{64, 64, 32, 16, aspect, 0}, ForcedCase{16, 16, 8, -1, both, 0},
                                ForcedCase{16, 16, -1, 8, both, 0}, ForcedCase{16, 16, 8, 0, nullptr, 0},
                                ForcedCase{16, 16, -1, -1, nullptr, 0}, ForcedCase{33, 33, 16, 16, nullptr, 1}}) {
        const std::string path = noise_png(dir, c.width, c.height);
        std::string wanted = c.text != nullptr ? c.text : "";
        if (const std::size_t at = wanted.find("PATH"); at != std::string::npos)
            wanted.replace(at, 4, path);

        LoadedTexture texture;
        const TextureImage image{path, c.width, c.height};
        EXPECT_EQ(failure_text([&] { texture = load_image(image, forced_to(c.forced_width, c.forced_height)); }),
                  wanted);
        if (c.text != nullptr)
            continue;
        const LoadedTexture whole = load_image(image, {.mip_filter = MipFilter::BOX});
        EXPECT_EQ(rows_of(texture.mips[0]), rows_of(whole.mips[c.dropped]));
        EXPECT_EQ(texture.width, whole.mips[c.dropped].width());
        EXPECT_EQ(texture.height, whole.mips[c.dropped].height());
        const bool full_chain = c.forced_width > 0 || c.forced_height > 0;
        EXPECT_EQ(texture.mips.size(), full_chain ? whole.mips.size() - c.dropped : 1u);
    }
}

TEST(LoadImage, keeps_the_levels_of_a_complete_file_and_warns_once_about_any_other) {
    const TemporaryDirectory dir;
    const ReportCapture report;
    const LoadOptions keep{.mip_filter = MipFilter::KEEP};
    dir.write("full.dds", dds_file({solid(2, 2, 0xFF000000), {{0x12345678}}}));
    EXPECT_EQ(rows_of(load_image({dir / "full.dds", 2, 2}, keep).mips[1]), (Rows{{0x12345678}}));
    EXPECT_EQ(report.warnings.str(), "");

    dir.write("short.dds", dds_file({solid(2, 2, 0xFFFFFFFF)}));
    const LoadedTexture made = load_image({dir / "short.dds", 2, 2}, keep);
    ASSERT_EQ(made.mips.size(), 2u);
    EXPECT_EQ(rows_of(made.mips[1]), (Rows{{0xFFFFFFFF}}));
    EXPECT_EQ(report.warnings.str(), "KEEP specified as mip filter for " + dir / "short.dds" +
                                         ", but no mips were present. BOX_GAMMA used instead.\n");

    RunFlags.draft_mode = true;
    EXPECT_EQ(rows_of(load_image({dir / "full.dds", 2, 2}, keep).mips[1]), (Rows{{0xFF000000}})) << "BOX in draft mode";
}

TEST(LoadImage, makes_no_levels_for_a_caller_who_uses_the_top_one_but_warns_and_drops_as_ever) {
    const TemporaryDirectory dir;
    const ReportCapture report;
    const TextureImage image{noise_png(dir, 16, 16), 16, 16};
    EXPECT_EQ(load_image(image, {.top_level_only = true, .mip_filter = MipFilter::KEEP}).mips.size(), 1u);
    EXPECT_THAT(report.warnings.str(), testing::StartsWith("KEEP specified"));
    LoadOptions forced = forced_to(4, 4);
    const LoadedTexture whole = load_image(image, forced);
    forced.top_level_only = true;
    EXPECT_EQ(rows_of(load_image(image, forced).mips[0]), rows_of(whole.mips[0]));
}

TEST(LoadImage, rotates_every_level_clockwise_after_the_forced_size) {
    const TemporaryDirectory dir;
    dir.write("a.dds", dds_file({solid(4, 4, 9), {{1, 2}, {3, 4}}, {{7}}}));
    LoadOptions options{.forced_width = 2, .forced_height = 2, .rotation = 90, .mip_filter = MipFilter::KEEP};
    EXPECT_EQ(rows_of(load_image({dir / "a.dds", 4, 4}, options).mips[0]), (Rows{{3, 1}, {4, 2}}));

    const std::string wide = noise_png(dir, 8, 4);
    const LoadedTexture turned = load_image({wide, 8, 4}, {.rotation = 270, .mip_filter = MipFilter::BOX});
    EXPECT_EQ(turned.width, 4);
    EXPECT_EQ(turned.height, 8);
    EXPECT_EQ(turned.mips[1].width(), 2);
    EXPECT_EQ(turned.mips[1].height(), 4);
}

TEST(LoadImage, turns_the_pixels_but_not_the_size_by_a_negative_rotation) {
    const TemporaryDirectory dir;
    const std::string wide = noise_png(dir, 8, 4);
    const LoadedTexture back = load_image({wide, 8, 4}, {.rotation = -90, .mip_filter = MipFilter::BOX});
    EXPECT_EQ(back.width, 8);
    EXPECT_EQ(back.height, 4);
    const LoadedTexture turned = load_image({wide, 8, 4}, {.rotation = 270, .mip_filter = MipFilter::BOX});
    EXPECT_EQ(rows_of(back.mips[0]), rows_of(turned.mips[0]));
}

TEST(LoadImage, leaves_the_record_as_it_was_and_cubes_unread) {
    const TemporaryDirectory dir;
    const TextureImage image{noise_png(dir, 8, 8), 8, 8};
    load_image(image, forced_to(2, 2));
    EXPECT_EQ(load_image(image, {}).width, 8);
    EXPECT_TRUE(load_image({"/no/such/cube.dds", 8, 8, /*is_cube=*/true}, {}).mips.empty());
}

TEST(LoadImage, fails_with_the_path_for_missing_corrupt_and_volume_files) {
    const TemporaryDirectory dir;
    dir.write("volume.dds", dds_file({solid(2, 2, 1)}, 0x200000, /*depth=*/2) + std::string(16, '\0'));
    dir.write("corrupt.png", "\x89PNG\r\n\x1A\n");
    for (const char* name : {"volume.dds", "corrupt.png", "missing.tga", "missing.dds"})
        EXPECT_EQ(failure_text([&] { load_image({dir / name, 2, 2}, {}); }), "Failure loading texture " + dir / name);
}

TEST(AverageColour, sums_in_single_precision_in_stored_order) {
    const Bitmap two = from_rows({{0xFF800000, 0xFF000040}});
    const std::array<float, 4> mean = average_colour(two);
    EXPECT_FLOAT_EQ(mean[0], 128.0f / 510);
    EXPECT_FLOAT_EQ(mean[1], 0.0f);
    EXPECT_FLOAT_EQ(mean[2], 64.0f / 510);
    EXPECT_FLOAT_EQ(mean[3], 1.0f);

    // From 2^25 on a step of 255 rounds to 256, so a large white picture is whiter than white: the plain sum tells.
    const Bitmap large = from_rows(solid(512, 512, 0xFFFFFFFF));
    volatile float sum = 0;
    for (int i = 0; i < 512 * 512; ++i)
        sum = sum + 255.0f;
    EXPECT_EQ(average_colour(large)[0], sum * (1.0f / (512 * 512 * 255.0f)));
    EXPECT_GT(average_colour(large)[0], 1.0f);
}

} // namespace
} // namespace mosaicer
