#include "source/utility/image/convert_pixels.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <vector>

namespace kst {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes converted(const Bytes& source, std::uint32_t from, std::uint32_t to) {
    const std::size_t count = source.size() / image_format_info(from).bytes_per_pixel;
    Bytes target(count * image_format_info(to).bytes_per_pixel, 0xEE);
    convert_pixels(source.data(), from, count, to, target.data());
    return target;
}

struct ConversionCase {
    std::uint32_t from;
    std::uint32_t to;
    Bytes source;
    Bytes target;
};

TEST(ConvertPixels, follows_the_table_of_kinds) {
    const ConversionCase cases[] = {
        {0, 1, {7, 8}, {255, 255}},
        {0, 9, {7}, {7, 7, 7}},
        // The step of 256 to 32 levels is 7967, and 255 * 7967 / 65536 = 30.999: white falls one short. Green is 62.
        {0, 3, {255}, {0xDE, 0xF7}},
        {0, 3, {128}, {0xEF, 0x7B}}, // 15 and 31
        {1, 9, {7}, {0, 0, 0}},
        {9, 1, {1, 2, 3}, {255}},
        {9, 10, {1, 2, 3}, {1, 2, 3, 0}},
        {9, 11, {1, 2, 3}, {1, 2, 3, 255}},
        {9, 5, {255, 0, 255}, {0x1E, 0xF8}}, // alpha at its highest
        {3, 9, {0xFF, 0xFF}, {254, 254, 254}},
        {3, 9, {0x01, 0x08}, {8, 0, 8}},
        {2, 9, {0xFF}, {255, 254, 254}}, // 3 steps of 85 are exact
        {11, 9, {1, 2, 3, 4}, {1, 2, 3}},
        {11, 5, {255, 255, 255, 255}, {0xDE, 0x7B}},     // the step to two levels is 257: no alpha reaches 1
        {11, 7, {0xFF, 0x80, 0x00, 0x7F}, {0x7E, 0x70}}, // step 3855: 14, 7, 0, 7
        {7, 11, {0x7F, 0x70}, {255, 119, 0, 119}},
        {8, 11, {0xFF, 0x40}, {255, 254, 254, 64}},
        {11, 12, {1, 2, 3, 4}, {4}},
        {11, 13, {1, 2, 3, 4}, {3, 4}},
        {11, 14, {1, 2, 3, 4}, {3, 4}},
        {11, 15, {1, 2, 3, 4}, {1, 2}},
        {11, 16, {1, 2, 3, 4}, {0, 0, 0, 0}},
        {11, 17, {255, 1, 0, 128}, {255, 255, 1, 1, 0, 0, 128, 128}},
        {11, 19, {1, 2, 3, 4}, {1, 2, 3, 4}},
    };
    for (const ConversionCase& c : cases)
        EXPECT_EQ(converted(c.source, c.from, c.to), c.target) << c.from << " to " << c.to;
}

TEST(ConvertPixels, leaves_the_target_alone_for_any_other_pair) {
    const std::pair<std::uint32_t, std::uint32_t> pairs[] = {{0, 11}, {1, 11}, {12, 9}, {14, 11}, {9, 14},
                                                             {11, 0}, {11, 1}, {9, 20}, {19, 11}, {18, 11}};
    for (const auto& [from, to] : pairs)
        for (const std::uint8_t byte : converted(Bytes(16, 1), from, to))
            EXPECT_EQ(byte, 0xEE) << from << " to " << to;
}

TEST(ConvertPixels, spreads_channels_over_floats) {
    const Bytes target = converted({255, 0, 51, 102}, 11, 18);
    float values[4];
    std::memcpy(values, target.data(), sizeof(values));
    EXPECT_EQ(values[0], 1.0f); // blue lies lowest
    EXPECT_EQ(values[1], 0.0f);
    EXPECT_EQ(values[2], 0.2f);
    EXPECT_EQ(values[3], 0.4f);
}

TEST(ImageFormats, have_room_for_their_channels) {
    for (std::uint32_t format = 0; format < image_format_count; ++format) {
        const ImageFormatInfo& info = image_format_info(format);
        std::uint64_t used = 0;
        for (const ImageChannel& channel : info.channels) {
            if (channel.levels == 0)
                continue;
            const std::uint64_t mask = std::uint64_t{std::min(channel.levels, 65536U) - 1} << channel.shift;
            EXPECT_EQ(used & mask, 0u) << format;
            used |= mask;
        }
        EXPECT_LE(std::bit_width(used), static_cast<int>(info.bytes_per_pixel * 8)) << format;
    }
}

} // namespace
} // namespace kst
