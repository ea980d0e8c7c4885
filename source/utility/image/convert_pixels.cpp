#include "source/utility/image/convert_pixels.h"

#include <algorithm>
#include <array>
#include <bit>

namespace kst {
namespace {

enum Channel : std::size_t { alpha, red, green, blue };

/// How one channel of the source becomes a part of the target's pixel.
class ChannelMap {
public:
    ChannelMap() = default;

    /// In 32 bits on purpose: 131072 levels << 16 wraps to 0, and the step becomes the one of 65536 levels, so that 255
    /// maps to 65535 and fills the 16 bits of such a channel.
    ChannelMap(const ImageChannel& source, const ImageChannel& target)
        : source_shift_(source.shift), source_mask_(source.levels - 1) {
        if (source.levels < 2 || target.levels == 0) {
            source_mask_ = 0;
            return;
        }
        const std::uint32_t step = ((target.levels << 16) - 0x10000) / (source.levels - 1);
        for (std::uint32_t level = 0; level < source.levels; ++level)
            parts_[level] = std::uint64_t{(level * step) >> 16} << target.shift;
    }

    std::uint64_t operator()(std::uint32_t pixel) const { return parts_[pixel >> source_shift_ & source_mask_]; }

private:
    std::uint32_t source_shift_ = 0;
    std::uint32_t source_mask_ = 0;
    std::array<std::uint64_t, 256> parts_{};
};

std::uint32_t load_pixel(const std::uint8_t* bytes, std::size_t count) {
    std::uint32_t pixel = 0;
    for (std::size_t i = 0; i < count; ++i)
        pixel |= std::uint32_t{bytes[i]} << (8 * i);
    return pixel;
}

void store_pixel(std::uint8_t* bytes, std::size_t count, std::uint64_t pixel) {
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<std::uint8_t>(pixel >> (8 * i));
}

/// One map per channel of the target, and bits that every pixel gets.
struct PixelMap {
    std::array<ChannelMap, 4> channels;
    std::uint64_t fixed_bits = 0;
};

PixelMap make_map(const ImageFormatInfo& source, const ImageFormatInfo& target) {
    PixelMap map;
    const bool from_luminance = source.kind == ImageKind::luminance;
    for (std::size_t c = alpha; c <= blue; ++c)
        map.channels[c] = ChannelMap(source.channels[from_luminance ? std::size_t{alpha} : c], target.channels[c]);
    const ImageChannel& target_alpha = target.channels[alpha];
    if (source.kind == ImageKind::colour && target.kind == ImageKind::colour_alpha)
        map.fixed_bits = std::uint64_t{target_alpha.levels - 1} << target_alpha.shift;
    return map;
}

void convert_levels(const std::uint8_t* source, const ImageFormatInfo& from, std::size_t count,
                    const ImageFormatInfo& to, std::uint8_t* target) {
    const PixelMap map = make_map(from, to);
    for (std::size_t i = 0; i < count; ++i, source += from.bytes_per_pixel, target += to.bytes_per_pixel) {
        const std::uint32_t pixel = load_pixel(source, from.bytes_per_pixel);
        std::uint64_t result = map.fixed_bits;
        for (const ChannelMap& channel : map.channels)
            result |= channel(pixel);
        store_pixel(target, to.bytes_per_pixel, result);
    }
}

void convert_to_floats(const std::uint8_t* source, const ImageFormatInfo& from, std::size_t count,
                       const ImageFormatInfo& to, std::uint8_t* target) {
    for (std::size_t i = 0; i < count; ++i, source += from.bytes_per_pixel, target += to.bytes_per_pixel) {
        const std::uint32_t pixel = load_pixel(source, from.bytes_per_pixel);
        for (std::size_t c = alpha; c <= blue; ++c) {
            const std::uint32_t highest = from.channels[c].levels - 1;
            const std::uint32_t level = pixel >> from.channels[c].shift & highest;
            const float value = static_cast<float>(level) / static_cast<float>(highest);
            store_pixel(target + to.channels[c].shift / 8, 4, std::bit_cast<std::uint32_t>(value));
        }
    }
}

} // namespace

void convert_pixels(const std::uint8_t* source, std::uint32_t source_format, std::size_t count,
                    std::uint32_t target_format, std::uint8_t* target) {
    using enum ImageKind;
    const ImageFormatInfo& from = image_format_info(source_format);
    const ImageFormatInfo& to = image_format_info(target_format);
    const std::size_t target_bytes = count * to.bytes_per_pixel;
    if (to.kind == ImageKind::alpha && (from.kind == luminance || from.kind == colour)) {
        std::fill_n(target, target_bytes, std::uint8_t{255});
    } else if (from.kind == ImageKind::alpha && to.kind == colour) {
        std::fill_n(target, target_bytes, std::uint8_t{0});
    } else if (from.kind == colour_alpha && target_format == FORMAT_ARGB_FLOAT) {
        convert_to_floats(source, from, count, to, target);
    } else if ((from.kind == luminance && to.kind == colour) ||
               (from.kind == colour && (to.kind == colour || to.kind == colour_alpha)) ||
               (from.kind == colour_alpha &&
                (to.kind == colour || to.kind == colour_alpha || to.kind == palette || to.kind == other))) {
        convert_levels(source, from, count, to, target);
    }
}

} // namespace kst
