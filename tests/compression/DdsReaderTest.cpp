#include "compression/DdsReader.h"

#include "compression/Codes.h"
#include "compression/DdsPixels.h"
#include "tests/compression/ChainRecorder.h"
#include "tests/compression/DdsFileBuilder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace compression {
namespace {

using testing::Bytes;
using testing::code_format;
using testing::DdsFile;
using testing::PixelFormat;
using testing::random_bytes;
using testing::read_back;
using testing::ReadResult;

const PixelFormat a8r8g8b8{32, 0x41, 0, 32, 0xFF0000, 0xFF00, 0xFF, 0xFF000000};
const PixelFormat l8{32, 0x20000, 0, 8, 0xFF};
const std::uint32_t dxt1 = four_cc('D', 'X', 'T', '1');
const std::uint32_t dxt5 = four_cc('D', 'X', 'T', '5');

struct FormatCase {
    const char* name;
    PixelFormat format;
    Bytes body; ///< one pixel
    Bytes pixel;
    std::uint32_t d3d_format;
    std::uint32_t library_format;
    std::int32_t channels;
    std::int32_t bits_per_channel;
};

void PrintTo(const FormatCase& format_case, std::ostream* out) {
    *out << format_case.name;
}

class DdsFormats : public ::testing::TestWithParam<FormatCase> {};

TEST_P(DdsFormats, are_told_and_decoded) {
    const FormatCase& c = GetParam();
    const ReadResult result = read_back(DdsFile::plain(c.format, 1, 1, c.body).bytes());
    ASSERT_EQ(result.code, OK);
    EXPECT_EQ(result.info.images.at(0).pixels, c.pixel);
    EXPECT_EQ(result.info.d3d_format, c.d3d_format);
    EXPECT_EQ(result.info.library_format, c.library_format);
    EXPECT_EQ(result.info.channels, c.channels);
    EXPECT_EQ(result.info.bits_per_channel, c.bits_per_channel);
    EXPECT_EQ(result.info.compressed, 0);
    EXPECT_EQ(result.info.pixel_format, c.format);
    EXPECT_EQ(result.consumed, 128 + c.body.size());
}

const FormatCase format_cases[] = {
    {"A8R8G8B8", a8r8g8b8, {1, 2, 3, 4}, {3, 2, 1, 4}, 21, 7, 4, 8},
    {"X8R8G8B8", {32, 0x40, 0, 32, 0xFF0000, 0xFF00, 0xFF}, {1, 2, 3, 4}, {3, 2, 1, 4}, 22, 25, 4, 8},
    {"G16R16", {32, 0x40, 0, 32, 0xFFFF, 0xFFFF0000}, {0xFF, 0xFF, 0, 0x80}, {255, 128, 0, 0}, 34, 27, 4, 8},
    {"R8G8B8", {32, 0x40, 0, 24}, {1, 2, 3}, {3, 2, 1, 0}, 20, 8, 3, 8},
    // 10000 000001 00100: 16 << 3 | 4, 1 << 2, 4 << 3 | 1
    {"R5G6B5", {32, 0x40, 0, 16, 0, 0x7E0}, {0x24, 0x80}, {132, 4, 33, 0}, 23, 6, 3, 8},
    {"X1R5G5B5", {32, 0x40, 0, 16, 0, 0x3E0}, {0x24, 0x40}, {132, 8, 33, 255}, 24, 9, 3, 8},
    {"A1R5G5B5 clear", {32, 0x41, 0, 16, 0, 0, 0, 0x8000}, {0x24, 0x40}, {132, 8, 33, 0}, 25, 5, 4, 8},
    {"A1R5G5B5 set", {32, 0x41, 0, 16, 0, 0, 0, 0x8000}, {0x24, 0xC0}, {132, 8, 33, 255}, 25, 5, 4, 8},
    {"A4R4G4B4", {32, 0x41, 0, 16, 0, 0, 0, 0xF000}, {0x23, 0x81}, {0x11, 0x22, 0x33, 0x88}, 26, 4, 4, 8},
    {"V16U16", {32, 0x80000, 0, 32, 0xFFFF, 0xFFFF0000}, {0xFF, 0x7F, 0, 0x80}, {255, 0, 255, 0}, 64, 26, 2, 8},
    {"V8U8", {32, 0x80000, 0, 16}, {127, 0x80}, {255, 0, 255, 0}, 60, 11, 2, 8},
    {"V8U8 half", {32, 0x80000, 0, 16}, {64, 0xFF}, {129, 0, 255, 0}, 60, 11, 2, 8},
    {"A8", {32, 2, 0, 8}, {77}, {0, 0, 0, 77}, 28, 13, 1, 8},
    {"A8L8", {32, 0x20001, 0, 16}, {77, 88}, {77, 77, 77, 88}, 51, 16, 2, 8},
    {"L8", l8, {77}, {77, 77, 77, 0}, 50, 20, 1, 8},
    {"R16F", code_format(111), {0x00, 0x38}, {128, 128, 128, 255}, 111, 23, 1, 16},
    {"G16R16F", code_format(112), {0, 0x3C, 0, 0xBC}, {255, 0, 0, 0}, 112, 28, 2, 16},
    {"A16B16G16R16F", code_format(113), {0, 0x34, 0, 0x7C, 0, 0x7E, 0, 0x38}, {64, 255, 0, 128}, 113, 19, 4, 16},
    {"R32F", code_format(114), {0, 0, 0, 0x3F}, {128, 128, 128, 255}, 114, 17, 1, 32},
    {"R32F NaN", code_format(114), {0, 0, 0xC0, 0x7F}, {0, 0, 0, 255}, 114, 17, 1, 32},
    {"A32B32G32R32F",
     code_format(116),
     {0, 0, 0x80, 0x3E, 0, 0, 0x80, 0xBF, 0xFF, 0xFF, 0x7F, 0x7F, 0, 0, 0x80, 0x3F},
     {64, 0, 255, 255},
     116,
     18,
     4,
     32},
};

INSTANTIATE_TEST_SUITE_P(All, DdsFormats, ::testing::ValuesIn(format_cases));

TEST(DdsReader, reads_palettes_before_level_0) {
    Bytes body = random_bytes(1024);
    const Bytes palette = body;
    body.insert(body.end(), {0, 255, 7, 9});
    const ReadResult result = read_back(DdsFile::plain({32, 0x20, 0, 8}, 2, 1, body).mips(2).bytes());
    ASSERT_EQ(result.code, OK);
    EXPECT_EQ(result.info.palette_entries, 256);
    EXPECT_TRUE(std::equal(palette.begin() + 255 * 4, palette.end(), result.info.images[0].pixels.begin() + 4));
    EXPECT_TRUE(std::equal(palette.begin() + 28, palette.begin() + 32, result.info.images[1].pixels.begin()));
}

TEST(DdsReader, reads_half_byte_indices_low_nibble_first_and_drops_the_last_of_an_odd_row) {
    Bytes body;
    for (std::uint8_t i = 0; i < 64; ++i)
        body.push_back(i);
    body.insert(body.end(), {0x21, 0xF3, 0x54, 0xF6}); // rows 1 2 3 and 4 5 6
    const ReadResult result = read_back(DdsFile::plain({32, 0x8, 0, 4}, 3, 2, body).bytes());
    ASSERT_EQ(result.code, OK);
    EXPECT_EQ(result.info.library_format, 22u);
    ASSERT_EQ(result.info.images[0].pixels.size(), 24u);
    for (std::size_t i = 0; i < 6; ++i)
        EXPECT_EQ(result.info.images[0].pixels[i * 4], (i + 1) * 4);
}

TEST(DdsReader, converts_every_half_float) {
    for (int half = 0; half < 0x10000; ++half) {
        const int exponent = half >> 10 & 31;
        const int mantissa = half & 1023;
        const float value = half_to_float(static_cast<std::uint16_t>(half));
        if (exponent == 31) {
            EXPECT_EQ(std::isnan(value), mantissa != 0);
            EXPECT_EQ(std::isinf(value), mantissa == 0);
            continue;
        }
        const double magnitude =
            exponent == 0 ? std::ldexp(mantissa, -24) : std::ldexp(1024 + mantissa, exponent - 15 - 10);
        EXPECT_EQ(static_cast<double>(value), half >= 0x8000 ? -magnitude : magnitude);
    }
}

TEST(DdsReader, decodes_blocks_as_the_literal_form_does) {
    struct BlockCase {
        std::uint32_t code;
        int kind;
    };
    const BlockCase cases[] = {
        {dxt1, 1}, {four_cc('D', 'X', 'T', '2'), 3}, {four_cc('D', 'X', 'T', '3'), 3}, {four_cc('D', 'X', 'T', '4'), 5},
        {dxt5, 5}, {four_cc('A', 'T', 'I', '2'), 2}};
    const int sizes[][2] = {{64, 64}, {1, 1}, {2, 3}, {5, 9}, {13, 4}, {3, 17}};
    for (const BlockCase& c : cases)
        for (const auto& size : sizes) {
            const auto blocks = static_cast<std::size_t>((size[0] + 3) / 4 * ((size[1] + 3) / 4));
            Bytes body = random_bytes(blocks * (c.kind == 1 ? 8 : 16), c.code);
            for (std::size_t i = 0; i + 16 <= body.size(); i += 48) // equal end values
                std::copy_n(&body[i], 2, &body[i + 2]);
            const auto file = DdsFile::plain(code_format(c.code), static_cast<std::uint32_t>(size[0]),
                                             static_cast<std::uint32_t>(size[1]), body);
            const ReadResult result = read_back(file.bytes());
            ASSERT_EQ(result.code, OK);
            EXPECT_EQ(result.info.compressed, 1);
            EXPECT_EQ(result.info.images[0].pixels, testing::literal_blocks(body, c.kind, size[0], size[1]))
                << c.kind << " " << size[0] << "x" << size[1];
        }
}

TEST(DdsReader, decodes_every_pair_of_end_values) {
    // Red and blue walk all pairs of 5 bits, green all pairs of 6; indices 0 1 2 3 in each row.
    Bytes body;
    for (unsigned a = 0; a < 64; ++a)
        for (unsigned b = 0; b < 64; ++b) {
            const unsigned words[2] = {(a & 31) << 11 | a << 5 | (b & 31), (b & 31) << 11 | b << 5 | (a & 31)};
            for (const unsigned word : words)
                body.insert(body.end(), {static_cast<std::uint8_t>(word), static_cast<std::uint8_t>(word >> 8)});
            body.insert(body.end(), 4, 0xE4);
        }
    const ReadResult result = read_back(DdsFile::plain(code_format(dxt1), 256, 256, body).bytes());
    ASSERT_EQ(result.code, OK);
    EXPECT_EQ(result.info.images[0].pixels, testing::literal_blocks(body, 1, 256, 256));
}

TEST(DdsReader, gives_black_transparent_in_dxt1_and_the_alpha_half_in_dxt5) {
    const Bytes half{0x34, 0x12, 0x34, 0x12, 0xFF, 0xFF, 0xFF, 0xFF};
    const auto transparent = read_back(DdsFile::plain(code_format(dxt1), 1, 1, half).bytes());
    EXPECT_EQ(transparent.info.images.at(0).pixels, (Bytes{0, 0, 0, 0}));
    Bytes block{200, 100, 0, 0, 0, 0, 0, 0};
    block.insert(block.end(), half.begin(), half.end());
    const auto black = read_back(DdsFile::plain(code_format(dxt5), 1, 1, block).bytes());
    EXPECT_EQ(black.info.images.at(0).pixels, (Bytes{0, 0, 0, 200}));
    EXPECT_EQ(black.consumed, 144u);
}

struct LevelsCase {
    std::uint32_t mip_flag_count; ///< 0: no flag
    std::uint32_t limit;
    std::uint32_t file_levels;
    std::uint32_t levels;
};

TEST(DdsReader, counts_levels_by_flag_size_and_limit) {
    const LevelsCase cases[] = {{0, 0, 1, 1}, {4, 0, 4, 4}, {4, 1, 4, 1}, {4, 3, 4, 3}, {3, 9, 3, 3}, {7, 0, 7, 4}};
    for (const LevelsCase& c : cases) {
        DdsFile file = DdsFile::plain(l8, 8, 4, random_bytes(32 + 8 + 2 + 1 + 1 + 1 + 1));
        file.header.mip_count = 5;
        if (c.mip_flag_count != 0)
            file.mips(c.mip_flag_count);
        const ReadResult result = read_back(file.bytes(), c.limit);
        ASSERT_EQ(result.code, OK);
        EXPECT_EQ(result.info.file_levels, c.file_levels);
        EXPECT_EQ(result.info.levels, c.levels);
        EXPECT_EQ(result.info.images.size(), c.levels);
        EXPECT_EQ(result.info.images.back().width, 8 >> (c.levels - 1));
        const std::size_t level_bytes[] = {32, 40, 42, 43, 44, 45, 46};
        EXPECT_EQ(result.consumed, 128 + level_bytes[c.file_levels - 1]);
    }
}

TEST(DdsReader, reads_six_faces_and_all_slices) {
    DdsFile cube = DdsFile::plain(l8, 2, 2, random_bytes(6 * 5)).mips(2);
    cube.header.caps2 = 0x200 | 0x400; // one face named, six stored
    const ReadResult faces = read_back(cube.bytes());
    ASSERT_EQ(faces.code, OK);
    EXPECT_EQ(faces.info.kind, 1);
    EXPECT_EQ(faces.info.cube_bits, 0x600u);
    EXPECT_EQ(faces.info.faces[5].at(1).pixels[0], cube.body[29]);

    DdsFile volume = DdsFile::plain(l8, 4, 2, random_bytes(5 * 8 + 2 * 2 + 1)).mips(3);
    volume.header.flags |= 0x800000;
    volume.header.depth = 5;
    volume.header.caps2 = 0x200;
    const ReadResult slices = read_back(volume.bytes());
    ASSERT_EQ(slices.code, OK);
    EXPECT_EQ(slices.info.kind, 2);
    EXPECT_EQ(slices.info.depth, 5u);
    ASSERT_EQ(slices.info.slices.size(), 3u);
    EXPECT_EQ(slices.info.slices[0].size(), 5u);
    EXPECT_EQ(slices.info.slices[1].size(), 2u);
    EXPECT_EQ(slices.info.slices[2].at(0).pixels[0], volume.body.back());
    EXPECT_EQ(slices.consumed, 128u + 45);
}

TEST(DdsReader, fails_at_every_place_where_a_file_can_end) {
    Bytes bytes = DdsFile::plain(l8, 4, 4, random_bytes(21)).mips(3).bytes();
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        const Bytes cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_EQ(read_back(cut).code, UNSUPPORTED_FILE) << size;
        EXPECT_EQ(read_back(cut, 1).code, UNSUPPORTED_FILE) << size;
    }
    EXPECT_EQ(read_back(bytes).code, OK);
    bytes[3] = 'X';
    EXPECT_EQ(read_back(bytes).code, UNSUPPORTED_FILE);
}

TEST(DdsReader, fails_on_unknown_formats_and_tells_their_code) {
    const ReadResult code = read_back(DdsFile::plain(code_format(four_cc('D', 'X', '1', '0')), 1, 1).bytes());
    EXPECT_EQ(code.code, UNSUPPORTED_FILE);
    EXPECT_EQ(code.info.d3d_format, four_cc('D', 'X', '1', '0'));
    for (const PixelFormat& format : {PixelFormat{32, 0x40, 0, 32, 1}, PixelFormat{32, 0x41, 0, 24}, PixelFormat{}}) {
        const ReadResult masks = read_back(DdsFile::plain(format, 1, 1, random_bytes(64)).bytes());
        EXPECT_EQ(masks.code, UNSUPPORTED_FILE);
        EXPECT_EQ(masks.info.d3d_format, 0u);
        EXPECT_EQ(masks.info.channels, 0);
    }
}

TEST(DdsReader, takes_no_memory_for_what_a_header_promises) {
    struct HugeCase {
        std::uint32_t width;
        std::uint32_t height;
        std::uint32_t depth;
        std::uint32_t mip_count;
    };
    const std::uint32_t most = std::numeric_limits<std::uint32_t>::max();
    const HugeCase cases[] = {{most, most, 0, 1}, {1 << 24, 1 << 24, 0, 25}, {0, 4, 0, 1},    {4, 0, most, 1},
                              {1, 1, most, 1},    {1, 1, 0, most},           {65536, 1, 7, 3}};
    for (const HugeCase& c : cases)
        for (const std::uint32_t code : {dxt1, 116U}) {
            DdsFile file = DdsFile::plain(code_format(code), c.width, c.height, random_bytes(100)).mips(c.mip_count);
            file.header.flags |= 0x800000;
            file.header.depth = c.depth;
            EXPECT_EQ(read_back(file.bytes()).code, UNSUPPORTED_FILE);
        }
}

TEST(DdsReader, refuses_more_slices_than_a_volume_has) {
    DdsFile file = DdsFile::plain(l8, 1, 1, Bytes(65537));
    file.header.flags |= 0x800000;
    file.header.depth = 65536;
    EXPECT_EQ(read_back(file.bytes()).code, OK);
    file.header.depth = 65537;
    EXPECT_EQ(read_back(file.bytes()).code, UNSUPPORTED_FILE);
}

TEST(DdsReader, returns_what_the_front_has_written) {
    testing::ChainRecorder recorder;
    const std::vector<LevelImage> levels{testing::patterned_level(6, 2), testing::patterned_level(3, 1),
                                         testing::patterned_level(1, 1)};
    ASSERT_EQ(recorder.compress(levels, testing::supplied(FORMAT_A8R8G8B8)), OK);
    const ReadResult result = read_back(recorder.file());
    ASSERT_EQ(result.code, OK);
    ASSERT_EQ(result.info.images.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(result.info.images[i].pixels, levels[i].pixels);
}

} // namespace
} // namespace compression
