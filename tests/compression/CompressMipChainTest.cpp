#include "compression/compress_mip_chain.h"

#include "compression/ByteFloat.h"
#include "compression/DdsHeader.h"
#include "compression/LevelSize.h"
#include "tests/compression/ChainRecorder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>

namespace compression {
namespace {

using testing::ChainRecorder;
using testing::patterned_level;
using testing::supplied;

TEST(ByteFloat, returns_every_byte_unchanged) {
    for (int byte = 0; byte < 256; ++byte) {
        const float value = static_cast<float>(byte) / 255.0f;
        EXPECT_EQ(static_cast<int>(value * 255.0f + 0.5f), byte);
        EXPECT_EQ(float_to_byte(byte_to_float(static_cast<std::uint8_t>(byte))), byte);
    }
}

TEST(ByteFloat, cuts_what_no_byte_holds) {
    const float infinity = std::numeric_limits<float>::infinity();
    const std::map<float, int> cases{{-1e30f, 0}, {-0.01f, 0},  {0.0019f, 0}, {0.002f, 1},     {0.5f, 128},
                                     {1.0f, 255}, {1.01f, 255}, {3e38f, 255}, {infinity, 255}, {-infinity, 0}};
    for (const auto& [value, byte] : cases)
        EXPECT_EQ(float_to_byte(value), byte) << value;
    EXPECT_EQ(float_to_byte(std::nanf("")), 0);
}

TEST(CompressMipChain, writes_magic_header_and_each_level) {
    ChainRecorder recorder;
    const std::vector<LevelImage> levels{patterned_level(6, 4), patterned_level(3, 2), patterned_level(1, 1)};
    ASSERT_EQ(recorder.compress(levels, supplied(FORMAT_A8R8G8B8)), OK);
    ASSERT_EQ(recorder.pieces.size(), 5u);
    EXPECT_EQ(recorder.pieces[0], (std::vector<std::uint8_t>{'D', 'D', 'S', ' '}));
    const std::map<std::size_t, std::uint32_t> header{
        {4, 124},     {8, 0x000A1007}, {12, 4},           {16, 6},          {20, 96}, {24, 0},
        {28, 3},      {76, 32},        {80, 0x41},        {84, 0},          {88, 32}, {92, 0xFF0000},
        {96, 0xFF00}, {100, 0xFF},     {104, 0xFF000000}, {108, 0x00401008}};
    for (std::size_t offset = 4; offset < 128; offset += 4)
        EXPECT_EQ(recorder.word(offset), header.count(offset) ? header.at(offset) : 0) << offset;
    EXPECT_EQ(recorder.records[2].level, 2);
    EXPECT_EQ(recorder.records[1].width, 3);
    EXPECT_EQ(recorder.records[1].height, 2);
    EXPECT_EQ(recorder.file().size(), 128u + 96 + 24 + 4);
}

TEST(CompressMipChain, moves_channels_into_the_formats_order) {
    const LevelImage level{2, 1, {200, 100, 50, 255, 1, 2, 3, 4}};
    ChainRecorder colour;
    ASSERT_EQ(colour.compress({level}, supplied(FORMAT_A8R8G8B8)), OK);
    EXPECT_EQ(colour.level(0), (std::vector<std::uint8_t>{50, 100, 200, 255, 3, 2, 1, 4}));
    ChainRecorder luminance;
    ASSERT_EQ(luminance.compress({level}, supplied(FORMAT_A8L8)), OK);
    EXPECT_EQ(luminance.level(0), (std::vector<std::uint8_t>{200, 255, 1, 4}));
    EXPECT_EQ(luminance.word(80), 0x20001u);
    EXPECT_EQ(luminance.word(88), 16u);
    EXPECT_EQ(luminance.word(92), 0xFFu);
    EXPECT_EQ(luminance.word(104), 0xFF00u);
}

TEST(CompressMipChain, computes_luminance_on_request) {
    CompressionOptions options = supplied(FORMAT_A8L8);
    options.g_b_calc_luminance = true;
    ChainRecorder recorder;
    ASSERT_EQ(recorder.compress({{1, 1, {200, 100, 50, 9}}}, options), OK);
    // 0.299 * 200 + 0.701 * 100 = 129.9
    EXPECT_EQ(recorder.level(0), (std::vector<std::uint8_t>{130, 9}));
}

TEST(CompressMipChain, gives_equal_bytes_by_way_of_floats) {
    // A scale of 0.5 in and 2 out is exact in floats, but takes the road through them.
    CompressionOptions options = supplied(FORMAT_A8R8G8B8);
    for (auto scale : {&CompressionOptions::g_inscale_r, &CompressionOptions::g_inscale_g,
                       &CompressionOptions::g_inscale_b, &CompressionOptions::g_inscale_a})
        options.*scale = 0.5f;
    for (auto scale : {&CompressionOptions::g_outscale_r, &CompressionOptions::g_outscale_g,
                       &CompressionOptions::g_outscale_b, &CompressionOptions::g_outscale_a})
        options.*scale = 2.0f;
    ChainRecorder by_floats;
    ChainRecorder by_bytes;
    ASSERT_EQ(by_floats.compress({patterned_level(16, 16)}, options), OK);
    ASSERT_EQ(by_bytes.compress({patterned_level(16, 16)}, supplied(FORMAT_A8R8G8B8)), OK);
    EXPECT_EQ(by_floats.file(), by_bytes.file());
}

TEST(CompressMipChain, applies_scale_and_bias_a_channel) {
    CompressionOptions options = supplied(FORMAT_A8R8G8B8);
    options.g_inscale_r = 0.5f;
    options.g_inbias_g = 0.2f; // + 51
    options.g_outscale_b = 3.0f;
    options.g_outbias_a = -1.0f;
    ChainRecorder recorder;
    ASSERT_EQ(recorder.compress({{1, 1, {100, 100, 100, 200}}}, options), OK);
    EXPECT_EQ(recorder.level(0), (std::vector<std::uint8_t>{255, 151, 50, 0}));
}

struct RefusedCase {
    std::vector<LevelImage> levels;
    std::int32_t format;
    std::int32_t code;
};

TEST(CompressMipChain, refuses_before_anything_is_written) {
    const RefusedCase cases[] = {
        {{}, FORMAT_A8R8G8B8, EMPTY_IMAGE},
        {{{0, 4, {}}}, FORMAT_A8R8G8B8, EMPTY_IMAGE},
        {{{4, -1, {}}}, FORMAT_A8R8G8B8, EMPTY_IMAGE},
        {{{2, 2, {1, 2, 3, 4}}}, FORMAT_A8R8G8B8, EMPTY_IMAGE},
        {{{0x7FFFFFFF, 0x7FFFFFFF, {1, 2, 3, 4}}}, FORMAT_A8R8G8B8, EMPTY_IMAGE},
        {{patterned_level(4, 4), {0, 0, {}}}, FORMAT_A8R8G8B8, EMPTY_IMAGE},
        {{patterned_level(6, 4)}, FORMAT_DXT1, IMAGE_NOT_MULT4},
        {{patterned_level(4, 3)}, FORMAT_DXT5, IMAGE_NOT_MULT4},
        {{patterned_level(4, 4)}, 4, UNSUPPORTED_FILE},
        {{patterned_level(4, 4)}, 29, UNSUPPORTED_FILE},
    };
    for (const RefusedCase& refused : cases) {
        ChainRecorder recorder;
        EXPECT_EQ(recorder.compress(refused.levels, supplied(refused.format)), refused.code);
        EXPECT_TRUE(recorder.pieces.empty());
    }
}

TEST(CompressMipChain, takes_block_sides_of_1_2_and_multiples_of_4) {
    const std::pair<std::int32_t, std::int32_t> sizes[] = {{2, 4}, {1, 1}, {12, 12}, {8, 1}};
    for (const auto& [width, height] : sizes)
        EXPECT_NE(ChainRecorder().compress({patterned_level(width, height)}, supplied(FORMAT_DXT1)), IMAGE_NOT_MULT4);
}

TEST(LevelSize, counts_the_bytes_of_whole_blocks) {
    EXPECT_EQ(level_byte_count(FORMAT_DXT5, 1, 1), 16u);
    EXPECT_EQ(level_byte_count(FORMAT_A8R8G8B8, 1, 1), 4u);
    EXPECT_EQ(level_byte_count(FORMAT_DXT1, 6, 6), 32u);
    EXPECT_EQ(level_byte_count(FORMAT_DXT1_ALPHA, 5, 4), 16u);
    EXPECT_EQ(level_byte_count(FORMAT_A8L8, 3, 5), 30u);
    std::size_t chain = 0;
    for (std::int32_t side = 512; side >= 1; side /= 2)
        chain += level_byte_count(FORMAT_DXT5, side, side);
    EXPECT_EQ(chain, 349680u - 128);
    EXPECT_EQ(full_level_count(512, 3), 10);
}

TEST(DdsHeader, names_block_formats_by_their_code) {
    const std::pair<std::int32_t, char> codes[] = {{0, '1'}, {1, '1'}, {2, '3'}, {3, '5'}};
    for (const auto& [format, digit] : codes) {
        const DdsHeader header = make_dds_header(format, 8, 4, 9);
        EXPECT_EQ(header.pixel_format,
                  (std::array<std::uint32_t, 8>{32, 4, 0x00545844U | static_cast<std::uint32_t>(digit) << 24}));
        EXPECT_EQ(header.linear_size, digit == '1' ? 16u : 32u);
        EXPECT_EQ(header.mip_count, 4u); // no more than a full chain has
    }
}

TEST(CompressMipChain, stops_where_the_callback_fails) {
    const std::map<std::size_t, std::size_t> bytes_by_failing_call{{0, 0}, {1, 4}, {2, 128}, {3, 128 + 64}};
    for (const auto& [failing_call, bytes] : bytes_by_failing_call) {
        ChainRecorder recorder;
        recorder.failing_call = failing_call;
        EXPECT_EQ(recorder.compress({patterned_level(4, 4), patterned_level(2, 2)}, supplied(FORMAT_A8R8G8B8)), -77);
        EXPECT_EQ(recorder.file().size(), bytes);
    }
}

TEST(CompressMipChain, takes_the_levels_that_the_mip_map_type_names) {
    struct TypeCase {
        std::int32_t type;
        std::int32_t specified;
        std::vector<std::size_t> level_bytes;
    };
    // Two levels of 8 by 2 are supplied; a full chain has four.
    const TypeCase cases[] = {{MIP_MAPS_GENERATE, 0, {64, 16, 8, 4}},  {MIP_MAPS_GENERATE, 3, {64, 16, 8}},
                              {MIP_MAPS_GENERATE, 1, {64, 16}},        {MIP_MAPS_GENERATE, 99, {64, 16, 8, 4}},
                              {MIP_MAPS_SUPPLIED, 2, {64, 16}},        {MIP_MAPS_NONE, 0, {64}},
                              {MIP_MAPS_REGENERATE, 0, {64, 16, 8, 4}}};
    for (const TypeCase& type_case : cases) {
        CompressionOptions options = supplied(FORMAT_A8R8G8B8);
        options.g_mip_map_type = type_case.type;
        options.g_specified_mip_maps = type_case.specified;
        ChainRecorder recorder;
        ASSERT_EQ(recorder.compress({patterned_level(8, 2), patterned_level(4, 1)}, options), OK);
        ASSERT_EQ(recorder.pieces.size(), type_case.level_bytes.size() + 2) << type_case.type;
        for (std::size_t i = 0; i < type_case.level_bytes.size(); ++i)
            EXPECT_EQ(recorder.level(i).size(), type_case.level_bytes[i]);
        EXPECT_EQ(recorder.word(28), type_case.level_bytes.size());
    }
}

TEST(CompressMipChain, makes_levels_from_level_0_by_the_chosen_filter) {
    CompressionOptions options = supplied(FORMAT_A8R8G8B8);
    options.g_mip_filter_type = 1; // box
    const LevelImage top{4, 1, {0, 0, 0, 0, 100, 0, 0, 0, 200, 0, 0, 0, 240, 0, 0, 0}};
    const LevelImage second{2, 1, {9, 9, 9, 9, 9, 9, 9, 9}};
    options.g_mip_map_type = MIP_MAPS_REGENERATE;
    ChainRecorder regenerated;
    ASSERT_EQ(regenerated.compress({top, second}, options), OK);
    EXPECT_EQ(regenerated.level(1), (std::vector<std::uint8_t>{0, 0, 50, 0, 0, 0, 220, 0}));
    EXPECT_EQ(regenerated.level(2), (std::vector<std::uint8_t>{0, 0, 135, 0}));
    options.g_mip_map_type = MIP_MAPS_GENERATE;
    ChainRecorder generated;
    ASSERT_EQ(generated.compress({top, second}, options), OK);
    EXPECT_EQ(generated.level(1), (std::vector<std::uint8_t>{9, 9, 9, 9, 9, 9, 9, 9}));
    EXPECT_EQ(generated.level(2), (std::vector<std::uint8_t>{0, 0, 135, 0}));
}

TEST(CompressMipChain, resamples_a_level_that_does_not_fit_the_chain) {
    CompressionOptions options = supplied(FORMAT_A8R8G8B8);
    options.g_mip_filter_type = 1;
    ChainRecorder recorder;
    const LevelImage misfit{2, 2, {10, 0, 0, 0, 20, 0, 0, 0, 30, 0, 0, 0, 40, 0, 0, 0}};
    ASSERT_EQ(recorder.compress({patterned_level(2, 2), misfit}, options), OK);
    EXPECT_EQ(recorder.level(1), (std::vector<std::uint8_t>{0, 0, 25, 0}));
    EXPECT_EQ(recorder.records[1].width, 1);
}

TEST(CompressMipChain, rescales_the_input_by_factor_and_limit) {
    CompressionOptions options = supplied(FORMAT_A8R8G8B8);
    options.rescale_mode = RESCALE_BY_FACTOR;
    options.rescale_factor_x = 0.5f;
    options.rescale_factor_y = 8.0f;
    options.rescale_limit_y = 5.0f;
    ChainRecorder recorder;
    ASSERT_EQ(recorder.compress({patterned_level(12, 2)}, options), OK);
    EXPECT_EQ(recorder.records[0].width, 6);
    EXPECT_EQ(recorder.records[0].height, 5);
    EXPECT_EQ(recorder.word(16), 6u);
    EXPECT_EQ(recorder.level(0).size(), 6u * 5 * 4);
}

TEST(CompressMipChain, forces_the_texture_map_type_and_nothing_else) {
    CompressionOptions options = supplied(FORMAT_A8L8);
    options.g_texturemap_type = 3;
    options.g_specified_mip_maps = 7;
    ChainRecorder recorder;
    const std::vector<LevelImage> levels{patterned_level(1, 1)};
    ASSERT_EQ(compress_mip_chain(levels, options, ChainRecorder::write, &recorder), OK);
    EXPECT_EQ(options.g_texturemap_type, 0);
    EXPECT_EQ(options.g_specified_mip_maps, 7);
}

} // namespace
} // namespace compression
