#include "texture/ImageOutput.h"

#include "tests/support/TemporaryDirectory.h"
#include "tests/texture/support/TestImages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace mosaicer {
namespace {

using namespace test;
using test_support::TemporaryDirectory;

MipChain two_levels() {
    MipChain chain;
    chain.push_back(from_rows({{0xFFC86432, 0x01020304}, {0x11121314, 0x21222324}}));
    chain.push_back(from_rows({{0xA0B0C0D0}}));
    return chain;
}

std::uint32_t word_at(const std::string& bytes, std::size_t offset) {
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i)
        word |= std::uint32_t{static_cast<std::uint8_t>(bytes.at(offset + i))} << (8 * i);
    return word;
}

TEST(SaveImage, writes_a_dds_head_and_every_level_top_row_first) {
    const TemporaryDirectory dir;
    const ReportCapture report;
    MipChain chain = two_levels();
    EXPECT_TRUE(save_image(chain, TexelFormat::AF_A8R8G8B8, TextureFileFormat::DDS, dir / "a.dds"));
    EXPECT_EQ(dir.read("a.dds"), dds_file({{{0xFFC86432, 0x01020304}, {0x11121314, 0x21222324}}, {{0xA0B0C0D0}}}));
    EXPECT_EQ(report.progress.str(), "Using dxt lib for DXT compression\n"
                                     "Converting atlas to dxt image... done.\n"
                                     "Compressing using dxt lib... **** done.\n");
}

TEST(SaveImage, keeps_red_and_green_of_a_bump_map_in_two_bytes) {
    const TemporaryDirectory dir;
    MipChain chain = two_levels();
    EXPECT_TRUE(save_image(chain, TexelFormat::AF_BUMP_A8L8, TextureFileFormat::DDS, dir / "a.dds"));
    const std::string bytes = dir.read("a.dds");
    EXPECT_THAT(bytes.substr(128), testing::ElementsAreArray({'\xC8', '\x64', '\x02', '\x03', '\x12', '\x13', '\x22',
                                                              '\x23', '\xB0', '\xC0'}));
    const struct {
        std::size_t offset;
        std::uint32_t value;
    } head[] = {{20, 8},    {28, 2}, {76, 32}, {80, 0x20001}, {84, 0},          {88, 16},
                {92, 0xFF}, {96, 0}, {100, 0}, {104, 0xFF00}, {108, 0x00401008}};
    for (const auto& field : head)
        EXPECT_EQ(word_at(bytes, field.offset), field.value) << "at " << field.offset;
    EXPECT_EQ(rows_of(chain[0])[0][0], 0x64C864C8u) << "alpha := green, blue := red, and the chain stays so";
}

TEST(SaveImage, moves_red_of_a_bump_map_into_alpha_before_it_looks_at_the_format) {
    const ReportCapture report;
    MipChain chain = two_levels();
    EXPECT_EQ(failure_text([&] { save_image(chain, TexelFormat::AF_BUMP_DXT5, TextureFileFormat::PNG, "x.png"); }),
              "Invalid combination of file format and texel format specified");
    EXPECT_EQ(rows_of(chain[0]), (Rows{{0xC8006400, 0x02000300}, {0x12001300, 0x22002300}}));
    EXPECT_EQ(rows_of(chain[1]), (Rows{{0xB000C000}}));
    EXPECT_EQ(report.progress.str(),
              "Compressed format specified for image containing bumpmaps; r->a, r->0 and b->0\n");
}

struct RefusedCase {
    TexelFormat texel_format;
    TextureFileFormat file_format;
    const char* path;
    std::size_t levels;
    const char* text;
};

TEST(SaveImage, refuses_with_a_text) {
    const auto no_texel = static_cast<TexelFormat>(17);
    const auto no_file = static_cast<TextureFileFormat>(17);
    for (const RefusedCase& c :
         {RefusedCase{TexelFormat::AF_BUMP_DXT5, TextureFileFormat::DDS, "x", 0, "Zero-size mipchain"},
          RefusedCase{TexelFormat::AF_DXT5, TextureFileFormat::TGA, "x", 1,
                      "Invalid combination of file format and texel format specified"},
          RefusedCase{TexelFormat::AF_A8R8G8B8, no_file, "x", 1, "Unhandled image format"},
          RefusedCase{no_texel, TextureFileFormat::DDS, "x", 1, "Unhandled texture format in save of texture"},
          RefusedCase{TexelFormat::AF_A8R8G8B8, TextureFileFormat::DDS, "/dev/full", 1,
                      "Error saving image to file /dev/full"},
          RefusedCase{TexelFormat::AF_A8R8G8B8, TextureFileFormat::DDS, "/none/x", 1,
                      "Error saving image to file /none/x"}}) {
        MipChain chain;
        if (c.levels > 0)
            chain.push_back(from_rows({{1}}));
        EXPECT_EQ(failure_text([&] { save_image(chain, c.texel_format, c.file_format, c.path); }), c.text);
    }
    EXPECT_TRUE(std::filesystem::exists("/dev/full"));
}

TEST(SaveImage, leaves_no_file_behind_that_was_not_finished) {
    const TemporaryDirectory dir;
    const std::string path = dir.write("a.dds", "of an earlier run");
    MipChain chain; // no levels: the library refuses before the first byte
    EXPECT_EQ(failure_text([&] { save_image(chain, TexelFormat::AF_A8R8G8B8, TextureFileFormat::DDS, path); }),
              "Error saving image to file " + path);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_FALSE(save_image(chain, TexelFormat::AF_A8R8G8B8, TextureFileFormat::PNG, path));
}

TEST(CreateDirectories, makes_every_part_with_its_case_kept_and_lets_existing_ones_pass) {
    const TemporaryDirectory dir;
    create_directories(dir / "Aa/b c\\\xC3\xA4");
    create_directories(dir / "Aa/b c\\\xC3\xA4");
    create_directories(dir / "Aa/x/");
    EXPECT_TRUE(std::filesystem::is_directory(dir / "Aa/b c/\xC3\xA4"));
    EXPECT_TRUE(std::filesystem::is_directory(dir / "Aa/x"));
    create_directories("/dev/null/x");
    create_directories("");
}

} // namespace
} // namespace mosaicer
