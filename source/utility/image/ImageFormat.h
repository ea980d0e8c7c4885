#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace kst {

/// The numbers of pixel formats. The digits in a name are the bits of its channels, highest first; a pixel is a
/// little-endian number.
enum ImageFormat : std::uint32_t {
    FORMAT_LUMINANCE_8 = 0,
    FORMAT_ALPHA_8 = 1,
    FORMAT_RGB_332 = 2,
    FORMAT_RGB_565 = 3,
    FORMAT_RGB_555 = 4,
    FORMAT_ARGB_1555 = 5,
    FORMAT_RGB_444 = 6,
    FORMAT_ARGB_4444 = 7,
    FORMAT_ARGB_8332 = 8,
    FORMAT_RGB_888 = 9,
    FORMAT_XRGB_8888 = 10,
    FORMAT_ARGB_8888 = 11,
    FORMAT_PALETTE_8 = 12,
    FORMAT_PALETTE_ALPHA_88 = 13,
    FORMAT_ALPHA_RED_88 = 14,
    FORMAT_GREEN_BLUE_88 = 15,
    FORMAT_OTHER_32 = 16,
    FORMAT_ARGB_16 = 17,
    FORMAT_ARGB_FLOAT = 18,
    FORMAT_OTHER_8888 = 19,
    FORMAT_DXT1 = 20,
    FORMAT_OTHER_21 = 21,
    FORMAT_DXT2 = 22,
    FORMAT_DXT3 = 23,
    FORMAT_DXT4 = 24,
    FORMAT_DXT5 = 25,
    FORMAT_OTHER_26 = 26,
};

constexpr std::uint32_t image_format_count = 27;

/// What a pixel is; pairs of kinds decide a conversion. Formats from 20 on have none.
enum class ImageKind : std::uint8_t { luminance, alpha, colour, colour_alpha, palette, other, none };

/// Where a channel lies in a pixel. No levels: the format has no such channel.
struct ImageChannel {
    std::uint32_t levels = 0;
    std::uint32_t shift = 0;
};

struct ImageFormatInfo {
    std::uint32_t bytes_per_pixel;
    ImageKind kind;
    std::array<ImageChannel, 4> channels; ///< alpha, red, green, blue; the one channel of luminance stands as alpha
};

/// Of a number below `image_format_count`.
const ImageFormatInfo& image_format_info(std::uint32_t format);

constexpr bool is_compressed_format(std::uint32_t format) {
    return format >= FORMAT_DXT1 && format <= FORMAT_DXT5;
}

/// What an image is, or what a reader wants it to be.
struct ImageDescription {
    std::uint32_t format = 0;
    std::uint32_t width = 0;  ///< pixels
    std::uint32_t height = 0; ///< pixels

    bool operator==(const ImageDescription&) const = default;
};

// Byte counts of an image with its rows packed. The largest number instead of one that does not fit.

/// Width times height times the format's bytes a pixel, which is 1 in the compressed formats.
std::uint64_t pixel_byte_count(const ImageDescription& description);

/// The same, but whole blocks of 4 by 4 pixels in the compressed formats.
std::uint64_t stored_byte_count(const ImageDescription& description);

/// What a reader may need of the caller: the larger of the two.
std::uint64_t image_byte_count(const ImageDescription& description);

} // namespace kst
