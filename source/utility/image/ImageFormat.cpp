#include "source/utility/image/ImageFormat.h"

#include <algorithm>
#include <cassert>
#include <limits>

namespace kst {
namespace {

using Kind = ImageKind;

constexpr ImageFormatInfo without_kind(std::uint32_t bytes_per_pixel) {
    return {bytes_per_pixel, Kind::none, {}};
}

/// By number. 131072 levels are 16 bits: see ChannelMap.
constexpr std::array<ImageFormatInfo, image_format_count> formats{{
    {1, Kind::luminance, {{{256, 0}, {}, {}, {}}}},
    {1, Kind::alpha, {{{256, 0}, {}, {}, {}}}},
    {1, Kind::colour, {{{}, {8, 5}, {8, 2}, {4, 0}}}},
    {2, Kind::colour, {{{}, {32, 11}, {64, 5}, {32, 0}}}},
    {2, Kind::colour, {{{}, {32, 10}, {32, 5}, {32, 0}}}},
    {2, Kind::colour_alpha, {{{2, 15}, {32, 10}, {32, 5}, {32, 0}}}},
    {2, Kind::colour, {{{}, {16, 8}, {16, 4}, {16, 0}}}},
    {2, Kind::colour_alpha, {{{16, 12}, {16, 8}, {16, 4}, {16, 0}}}},
    {2, Kind::colour_alpha, {{{256, 8}, {8, 5}, {8, 2}, {4, 0}}}},
    {3, Kind::colour, {{{}, {256, 16}, {256, 8}, {256, 0}}}},
    {4, Kind::colour, {{{}, {256, 16}, {256, 8}, {256, 0}}}},
    {4, Kind::colour_alpha, {{{256, 24}, {256, 16}, {256, 8}, {256, 0}}}},
    {1, Kind::palette, {{{256, 0}, {}, {}, {}}}},
    {2, Kind::palette, {{{256, 8}, {256, 0}, {}, {}}}},
    {2, Kind::other, {{{256, 8}, {256, 0}, {}, {}}}},
    {2, Kind::other, {{{}, {}, {256, 8}, {256, 0}}}},
    {4, Kind::other, {}},
    {8, Kind::other, {{{131072, 48}, {131072, 32}, {131072, 16}, {131072, 0}}}},
    {16, Kind::other, {{{0, 96}, {0, 64}, {0, 32}, {0, 0}}}},
    {4, Kind::other, {{{256, 24}, {256, 16}, {256, 8}, {256, 0}}}},
    without_kind(1), // 20
    without_kind(1),
    without_kind(1),
    without_kind(1),
    without_kind(1),
    without_kind(1),
    without_kind(4),
}};

std::uint64_t saturated_product(std::uint64_t a, std::uint64_t b) {
    std::uint64_t product = 0;
    return __builtin_mul_overflow(a, b, &product) ? std::numeric_limits<std::uint64_t>::max() : product;
}

} // namespace

const ImageFormatInfo& image_format_info(std::uint32_t format) {
    assert(format < image_format_count);
    return formats[format];
}

std::uint64_t pixel_byte_count(const ImageDescription& description) {
    const std::uint64_t pixels = std::uint64_t{description.width} * description.height;
    return saturated_product(pixels, image_format_info(description.format).bytes_per_pixel);
}

std::uint64_t stored_byte_count(const ImageDescription& description) {
    if (!is_compressed_format(description.format) || description.format == FORMAT_OTHER_21)
        return pixel_byte_count(description);
    const std::uint64_t columns = (std::uint64_t{description.width} + 3) / 4;
    const std::uint64_t rows = (std::uint64_t{description.height} + 3) / 4;
    return saturated_product(columns * rows, description.format == FORMAT_DXT1 ? 8 : 16);
}

std::uint64_t image_byte_count(const ImageDescription& description) {
    return std::max(pixel_byte_count(description), stored_byte_count(description));
}

} // namespace kst
