#include "objects/image/GeneralImageParser.h"
#include "objects/image/ImageParserRegistry.h"
#include "source/utility/Errors.h"
#include "source/utility/filesystem/DiskFileSystem.h"
#include "tests/objects/stream_support.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/tga_bytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

namespace kst {
namespace {

TEST(GeneralImageParserTest, TakesTheFirstExtensionThatHasAFile) {
    register_standard_image_parsers();
    register_standard_image_parsers();
    EXPECT_THAT(image_parser_extensions(), testing::ElementsAre(".tga", ".dds", ".mip"));
    EXPECT_THROW(register_image_parser(".jpeg", nullptr), std::invalid_argument);

    const test_support::TemporaryDirectory folder;
    folder.write("both.tga", test_support::tga_bytes(4, 2, 0x80112233u));
    folder.write("both.mip", "not asked for");
    folder.write("bad.mip", "no such form");
    DiskFileSystem files(folder.path().string());
    GeneralImageParser parser("both");
    parser.set_file_system(&files);
    EXPECT_THROW(parser.mip_count(), AssertionException);
    EXPECT_EQ(parser.file_name(), "both");
    parser.open();
    EXPECT_EQ(parser.file_name(), "both.tga");
    ImageDescription image;
    parser.get_format(image);
    EXPECT_EQ(image.width, 4u);
    EXPECT_EQ(parser.face_count(), 1u);
    std::array<std::uint32_t, 8> pixels{};
    parser.read(pixels.data(), nullptr, image);
    EXPECT_EQ(pixels[5], 0x80112233u);
    parser.close();

    parser.set_file_name("bad");
    EXPECT_THROW(parser.open(), ErrorWithCStack);
    parser.set_file_name("none");
    parser.open();
    parser.get_format(image);
    EXPECT_EQ((std::array{image.format, image.width, image.height}), (std::array{10u, 8u, 8u}));
    EXPECT_EQ(parser.file_name(), "");
    EXPECT_EQ(parser.bare_name(), "none");
    // Two by two, so that each quadrant is a pixel.
    image.width = image.height = 2;
    parser.read(pixels.data(), nullptr, image);
    EXPECT_EQ(pixels[0], 0x00FFFF00u);
    EXPECT_EQ(pixels[1], 0x000000FFu);
    EXPECT_EQ(pixels[3], 0x00FFFF00u);
}

TEST(GeneralImageParserTest, StoresTheBareName) {
    const test_support::Creators creators;
    using test_support::StreamBytes;
    const std::string bytes =
        StreamBytes().u32(1).object(0x2CB20689, 1, StreamBytes().text("poster").text("images\\poster")).bytes;
    ObjectDatabase database;
    test_support::load(database, bytes);
    const auto& parser = dynamic_cast<GeneralImageParser&>(*database.objects.at(0));
    EXPECT_EQ(parser.file_name(), "images\\poster");
    for (const std::uint32_t base : {0x3E134044u, 0x2CB20689u, 0x2EB43C77u, 0x63BE3013u})
        EXPECT_TRUE(parser.is_a(base));
    EXPECT_EQ(test_support::saved(database), bytes);
}

} // namespace
} // namespace kst
