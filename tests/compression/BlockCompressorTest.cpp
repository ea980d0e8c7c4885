#include "compression/BlockCompressor.h"

#include "tests/compression/BlockBuilders.h"

#include <gtest/gtest.h>

namespace compression {
namespace {

Bytes colour_half(int c0, int c1, std::uint32_t indices) {
    Bytes bytes;
    for (const std::uint32_t word : {static_cast<std::uint32_t>(c0 | c1 << 16), indices})
        for (unsigned shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<std::uint8_t>(word >> shift));
    return bytes;
}

Bytes alpha_half(const FloatImage& level, std::int32_t format) {
    Bytes block = encode(level, format, 72);
    block.resize(8);
    return block;
}

constexpr std::uint32_t every_index(std::uint32_t index) {
    return index * 0x55555555U;
}

TEST(ColourHalf, of_one_grey_is_the_row_of_its_table) {
    // Grey 127: free blocks mix black and white; three colours stand in rising order, and index 2 stays.
    EXPECT_EQ(encode(flat_level(4, 4, {127, 127, 127, 255}), FORMAT_DXT1, 72), colour_half(0, 0xFFFF, every_index(2)));
    // Four colours: ends (0, 16, 0) and (23, 39, 23), the higher word first, so that 2 and 3 change places.
    const Bytes forced = encode(flat_level(4, 4, {127, 127, 127, 255}), FORMAT_DXT3, 72);
    EXPECT_EQ(Bytes(forced.begin() + 8, forced.end()), colour_half(23 << 11 | 39 << 5 | 23, 16 << 5, every_index(2)));
}

TEST(ColourHalf, of_a_colour_on_the_lattice_puts_its_word_second_beside_the_next_one) {
    const FloatImage level = flat_level(4, 4, {255, 0, 0, 255});
    EXPECT_EQ(encode(level, FORMAT_DXT1, 72), colour_half(0xF801, 0xF800, every_index(1)));
    EXPECT_EQ(encode(level, FORMAT_DXT1, 68), colour_half(0xF801, 0xF800, every_index(1)));
    // One-bit alpha turns it into a three-colour block.
    EXPECT_EQ(encode(level, FORMAT_DXT1_ALPHA, 72), colour_half(0xF800, 0xF801, 0));
}

TEST(ColourHalf, of_white_wraps_and_still_decodes_to_white) {
    EXPECT_EQ(encode(flat_level(4, 4, {255, 255, 255, 255}), FORMAT_DXT1, 68), colour_half(0xFFFF, 0, 0));
    EXPECT_EQ(encode(flat_level(4, 4, {255, 255, 255, 255}), FORMAT_DXT1_ALPHA, 68),
              colour_half(0, 0xFFFF, every_index(1)));
}

TEST(ColourHalf, of_two_colours_on_the_lattice_reproduces_both) {
    FloatImage level = flat_level(4, 4, {255, 0, 0, 255});
    for (int i = 8; i < 16; ++i)
        set_pixel(level, i, {0, 0, 255, 255});
    for (const int quality : {68, 69, 70, 71, 72})
        for (const std::int32_t format : {FORMAT_DXT1, FORMAT_DXT1_ALPHA, FORMAT_DXT3, FORMAT_DXT5})
            EXPECT_EQ(decode(encode(level, format, quality), format, 4, 4), to_bytes(level))
                << quality << ' ' << format;
}

TEST(ColourHalf, gives_transparent_pixels_of_one_bit_alpha_the_last_code) {
    FloatImage level = flat_level(4, 4, {255, 0, 0, 255});
    set_pixel(level, 5, {0, 255, 0, 127});
    EXPECT_EQ(encode(level, FORMAT_DXT1_ALPHA, 72), colour_half(0xF800, 0xF801, 3U << 10));
    EXPECT_EQ(encode(flat_level(4, 4, {9, 9, 9, 0}), FORMAT_DXT1_ALPHA, 72), colour_half(0, 1, every_index(3)));
}

struct EdgeCase {
    std::int32_t width, height;
    std::uint32_t outside; ///< code of the cells outside the first block's part of the image
};
class Edges : public testing::TestWithParam<EdgeCase> {};

TEST_P(Edges, repeat_in_levels_of_one_or_two_and_stay_unused_in_ragged_ones) {
    const auto [width, height, outside] = GetParam();
    const Bytes bytes = encode(flat_level(width, height, {255, 0, 0, 255}), FORMAT_DXT1, 72);
    std::uint32_t word = 0;
    for (int cell = 15; cell >= 0; --cell)
        word = word << 2 | (cell % 4 < width && cell / 4 < height ? 1 : outside);
    EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 8), colour_half(0xF801, 0xF800, word));
    EXPECT_EQ(bytes.size(), static_cast<std::size_t>((width + 3) / 4 * ((height + 3) / 4) * 8));
}

INSTANTIATE_TEST_SUITE_P(Sizes, Edges,
                         testing::Values(EdgeCase{1, 1, 1}, EdgeCase{2, 2, 1}, EdgeCase{1, 8, 1}, EdgeCase{2, 6, 1},
                                         EdgeCase{3, 3, 3}, EdgeCase{3, 8, 3}, EdgeCase{1, 3, 3}, EdgeCase{6, 3, 3}));

TEST(ColourHalf, of_a_ragged_last_block_leaves_the_cells_outside_unused) {
    const Bytes bytes = encode(flat_level(6, 4, {255, 0, 0, 255}), FORMAT_DXT1, 72);
    EXPECT_EQ(Bytes(bytes.begin() + 8, bytes.end()), colour_half(0xF801, 0xF800, 0xF5F5F5F5U));
}

TEST(Dxt3Alpha, rounds_to_four_bits_row_by_row) {
    FloatImage level = flat_level(4, 4, {0, 0, 0, 255});
    set_pixel(level, 0, {0, 0, 0, 0});
    set_pixel(level, 1, {0, 0, 0, 8});   // 0.47 of a step
    set_pixel(level, 2, {0, 0, 0, 9});   // 0.53 of a step
    set_pixel(level, 7, {0, 0, 0, 128}); // 7.53
    EXPECT_EQ(alpha_half(level, FORMAT_DXT3), (Bytes{0x00, 0xF1, 0xFF, 0x8F, 0xFF, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(alpha_half(flat_level(2, 1, {0, 0, 0, 255}), FORMAT_DXT3), (Bytes{0xFF, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(Dxt5Alpha, of_one_value_has_six_steps_and_code_0) {
    EXPECT_EQ(alpha_half(flat_level(4, 4, {7, 7, 7, 255}), FORMAT_DXT5), (Bytes{255, 255, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(alpha_half(flat_level(4, 4, {7, 7, 7, 0}), FORMAT_DXT5), (Bytes{0, 1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(alpha_half(flat_level(4, 4, {7, 7, 7, 100}), FORMAT_DXT5), (Bytes{100, 101, 0, 0, 0, 0, 0, 0}));
}

TEST(Dxt5Alpha, of_0_and_1_alone_has_eight_steps_with_the_higher_first) {
    FloatImage level = flat_level(4, 4, {0, 0, 0, 255});
    set_pixel(level, 0, {0, 0, 0, 0});
    // alpha0 0 and alpha1 255 change places, so that 255 has code 0 and 0 has code 1.
    EXPECT_EQ(alpha_half(level, FORMAT_DXT5), (Bytes{255, 0, 1, 0, 0, 0, 0, 0}));
}

TEST(Dxt5Alpha, keeps_0_and_1_exactly_beside_a_narrow_ramp) {
    FloatImage level = flat_level(4, 4, {0, 0, 0, 100});
    const std::array<std::uint8_t, 8> alphas{0, 255, 100, 102, 104, 106, 108, 110};
    for (int i = 0; i < 8; ++i)
        set_pixel(level, i, {0, 0, 0, alphas[static_cast<std::size_t>(i)]});
    EXPECT_EQ(decode(encode(level, FORMAT_DXT5, 68), FORMAT_DXT5, 4, 4),
              decode(encode(level, FORMAT_DXT5, 72), FORMAT_DXT5, 4, 4));
    const auto decoded = decode(encode(level, FORMAT_DXT5, 72), FORMAT_DXT5, 4, 4);
    for (std::size_t i = 0; i < 8; ++i)
        EXPECT_EQ(decoded[i * 4 + 3], alphas[i]);
}

} // namespace
} // namespace compression
