#include "texture/Bitmap.h"

#include "tests/support/TemporaryDirectory.h"
#include "tests/texture/support/TestImages.h"

#include <FreeImage.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <sys/stat.h>

namespace mosaicer {
namespace {

using namespace test;

FIBITMAP* library_twin(const Bitmap& bitmap) {
    FIBITMAP* twin = FreeImage_Allocate(bitmap.width(), bitmap.height(), 32, 0, 0, 0);
    std::memcpy(FreeImage_GetBits(twin), bitmap.pixels().data(), bitmap.pixels().size());
    return twin;
}

bool equal(const Bitmap& bitmap, FIBITMAP* twin) {
    return static_cast<unsigned>(bitmap.width()) == FreeImage_GetWidth(twin) &&
           static_cast<unsigned>(bitmap.height()) == FreeImage_GetHeight(twin) &&
           std::memcmp(bitmap.pixels().data(), FreeImage_GetBits(twin), bitmap.pixels().size()) == 0;
}

TEST(Bitmap, copies_and_pastes_as_the_library_does_inside_and_outside_the_picture) {
    std::mt19937 random(7);
    const auto number = [&](int low, int high) { return std::uniform_int_distribution(low, high)(random); };
    int accepted = 0;
    for (int round = 0; round < 2000; ++round) {
        Bitmap target = noise(number(1, 9), number(1, 9), random);
        FIBITMAP* twin = library_twin(target);
        const int left = number(-2, 9);
        const int top = number(-2, 9);
        const int right = left + number(0, 5);
        const int bottom = top + number(0, 5);

        const std::optional<Bitmap> part = target.copy(left, top, right, bottom);
        FIBITMAP* part_twin = FreeImage_Copy(twin, left, top, right, bottom);
        ASSERT_EQ(part.has_value(), part_twin != nullptr) << left << " " << top << " " << right << " " << bottom;
        if (part) {
            ASSERT_TRUE(equal(*part, part_twin));
            FreeImage_Unload(part_twin);
        }

        const Bitmap source = noise(number(1, 5), number(1, 5), random);
        FIBITMAP* source_twin = library_twin(source);
        const bool pasted = target.paste(source, left, top);
        ASSERT_EQ(pasted, FreeImage_Paste(twin, source_twin, left, top, 256) == TRUE) << left << " " << top;
        ASSERT_TRUE(equal(target, twin));
        accepted += pasted ? 1 : 0;
        FreeImage_Unload(source_twin);
        FreeImage_Unload(twin);
    }
    EXPECT_GT(accepted, 100);
}

TEST(Bitmap, turns_clockwise) {
    const Bitmap picture = from_rows({{1, 2, 3}, {4, 5, 6}});
    EXPECT_EQ(rows_of(picture.rotate(90)), (Rows{{4, 1}, {5, 2}, {6, 3}}));
    EXPECT_EQ(rows_of(picture.rotate(180)), (Rows{{6, 5, 4}, {3, 2, 1}}));
    EXPECT_EQ(rows_of(picture.rotate(270)), (Rows{{3, 6}, {2, 5}, {1, 4}}));
}

TEST(Bitmap, keeps_all_four_channels_through_every_file_format) {
    const test_support::TemporaryDirectory dir;
    std::mt19937 random(3);
    const Bitmap picture = noise(13, 7, random);
    const struct {
        BitmapFormat format;
        const char* name;
        FREE_IMAGE_FORMAT number;
    } cases[] = {{BitmapFormat::png, "a.png", FIF_PNG},
                 {BitmapFormat::tga, "a \xC3\xA4.tga", FIF_TARGA},
                 {BitmapFormat::bmp, "a.bmp", FIF_BMP}};
    for (const auto& c : cases) {
        const std::string path = dir / c.name;
        ASSERT_TRUE(picture.save(path, c.format));
        const std::optional<Bitmap> back = Bitmap::load(path, c.format);
        ASSERT_TRUE(back.has_value()) << c.name;
        EXPECT_EQ(rows_of(*back), rows_of(picture)) << c.name;

        FIBITMAP* twin = library_twin(picture);
        ASSERT_TRUE(FreeImage_Save(c.number, twin, (dir / "twin").c_str(), 0));
        FreeImage_Unload(twin);
        EXPECT_EQ(read_file(path), read_file(dir / "twin")) << "own output differs from the library's: " << c.name;

        EXPECT_FALSE(picture.save("/dev/full", c.format)) << "a full disk must show";
        EXPECT_TRUE(std::filesystem::exists("/dev/full"));
        EXPECT_FALSE(picture.save(dir / "no such folder/a", c.format));

        // A prefix either fails or is at least whole in size; nothing may crash or hang.
        const std::string bytes = read_file(path);
        for (std::size_t size = 0; size < bytes.size() - 30; size += 5) {
            write_file(dir / "cut", bytes.substr(0, size));
            EXPECT_FALSE(Bitmap::load(dir / "cut", c.format).has_value()) << c.name << " cut to " << size;
        }
    }
    EXPECT_FALSE(Bitmap::load(dir / "missing.png", BitmapFormat::png).has_value());
    EXPECT_FALSE(Bitmap::load(dir.path().string(), BitmapFormat::png).has_value()) << "a folder is no image";
}

TEST(Bitmap, refuses_sizes_that_the_file_cannot_hold) {
    const test_support::TemporaryDirectory dir;
    std::mt19937 random(4);
    const Bitmap picture = noise(8, 8, random);
    ASSERT_TRUE(picture.save(dir / "a.bmp", BitmapFormat::bmp));
    ASSERT_TRUE(picture.save(dir / "a.tga", BitmapFormat::tga));

    std::string bmp = read_file(dir / "a.bmp");
    bmp.replace(18, 8, std::string("\x00\x40\0\0\x00\x40\0\0", 8)); // 16,384 squared
    write_file(dir / "a.bmp", bmp);
    EXPECT_FALSE(Bitmap::load(dir / "a.bmp", BitmapFormat::bmp).has_value());

    std::string tga = read_file(dir / "a.tga");
    tga.replace(12, 4, std::string("\xFF\x3F\xFF\x3F", 4)); // 16,383 squared
    write_file(dir / "a.tga", tga);
    EXPECT_FALSE(Bitmap::load(dir / "a.tga", BitmapFormat::tga).has_value());
}

TEST(Bitmap, does_not_wait_at_a_pipe_that_is_named_like_a_picture) {
    const test_support::TemporaryDirectory dir;
    ASSERT_EQ(::mkfifo((dir / "pipe").c_str(), 0600), 0);
    for (const BitmapFormat format : {BitmapFormat::bmp, BitmapFormat::png, BitmapFormat::tga})
        EXPECT_FALSE(Bitmap::load(dir / "pipe", format));
}

TEST(Bitmap, reads_run_length_files_but_only_with_exactly_the_runs_of_their_pixels) {
    const test_support::TemporaryDirectory dir;
    // 3 by 2, 32 bits, rows from the top: a run of two, one single pixel, a run of three.
    const std::string head("\0\0\x0A\0\0\0\0\0\0\0\0\0\x03\0\x02\0\x20\x28", 18);
    const std::string start = head + "\x81" + "abcd" + std::string("\0", 1) + "efgh";
    dir.write("whole.tga", start + "\x82" + "ijkl");
    const std::optional<Bitmap> whole = Bitmap::load(dir / "whole.tga", BitmapFormat::tga);
    ASSERT_TRUE(whole.has_value());
    const std::uint32_t first = 0x64636261;
    const std::uint32_t last = 0x6C6B6A69;
    EXPECT_EQ(rows_of(*whole), (Rows{{first, first, 0x68676665}, {last, last, last}}));

    dir.write("long.tga", start + "\x83" + "ijkl");
    EXPECT_FALSE(Bitmap::load(dir / "long.tga", BitmapFormat::tga).has_value());
    dir.write("short.tga", start + "\x81" + "ijkl");
    EXPECT_FALSE(Bitmap::load(dir / "short.tga", BitmapFormat::tga).has_value());
}

TEST(Bitmap, survives_every_flipped_byte) {
    const test_support::TemporaryDirectory dir;
    std::mt19937 random(8);
    const Bitmap picture = noise(5, 3, random);
    for (const BitmapFormat format : {BitmapFormat::bmp, BitmapFormat::png, BitmapFormat::tga}) {
        ASSERT_TRUE(picture.save(dir / "whole", format));
        const std::string bytes = dir.read("whole");
        for (std::size_t i = 0; i < bytes.size(); ++i)
            for (const char value : {'\0', '\x7F', '\xFF'}) {
                std::string flipped = bytes;
                flipped[i] = value;
                dir.write("flipped", flipped);
                const std::optional<Bitmap> loaded = Bitmap::load(dir / "flipped", format);
                EXPECT_TRUE(!loaded || loaded->width() * loaded->height() <= 1 << 20) << "at " << i;
            }
    }
}

TEST(Bitmap, converts_what_has_a_conversion_and_fails_for_the_rest) {
    const test_support::TemporaryDirectory dir;
    FIBITMAP* grey = FreeImage_Allocate(2, 2, 8, 0, 0, 0); // its palette is the grey ramp
    FreeImage_GetBits(grey)[0] = 77;
    ASSERT_TRUE(FreeImage_Save(FIF_PNG, grey, (dir / "grey.png").c_str(), 0));
    const std::optional<Bitmap> loaded = Bitmap::load(dir / "grey.png", BitmapFormat::png);
    ASSERT_TRUE(loaded.has_value());
    EXPECT_THAT(loaded->pixels().first(8), testing::ElementsAre(77, 77, 77, 255, 0, 0, 0, 255));

    BYTE see_through[] = {0, 128, 255};
    FreeImage_SetTransparencyTable(grey, see_through, 3);
    ASSERT_TRUE(FreeImage_Save(FIF_PNG, grey, (dir / "table.png").c_str(), 0));
    const std::optional<Bitmap> table = Bitmap::load(dir / "table.png", BitmapFormat::png);
    ASSERT_TRUE(table.has_value());
    EXPECT_THAT(table->pixels().first(8), testing::ElementsAre(77, 77, 77, 255, 0, 0, 0, 0));

    FreeImage_Unload(grey);

    FIBITMAP* deep_grey = FreeImage_AllocateT(FIT_UINT16, 2, 2, 16, 0, 0, 0);
    ASSERT_TRUE(FreeImage_Save(FIF_PNG, deep_grey, (dir / "deep.png").c_str(), 0));
    FreeImage_Unload(deep_grey);
    EXPECT_FALSE(Bitmap::load(dir / "deep.png", BitmapFormat::png).has_value());
}

} // namespace
} // namespace mosaicer
