#include "texture/LevelConversion.h"

#include <bit>
#include <cstring>

namespace mosaicer {
namespace {

static_assert(std::endian::native == std::endian::little, "pixels are exchanged as little-endian words");

/// Exchanges red and blue in a row of `count` pixels. The loop is plain enough for the compiler to make it vectors.
void exchange_red_and_blue(const std::uint8_t* from, std::uint8_t* to, std::size_t count, std::uint32_t set_bits) {
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t pixel;
        std::memcpy(&pixel, from + 4 * i, 4);
        pixel = (pixel & 0xFF00FF00u) | ((pixel & 0xFFu) << 16) | ((pixel >> 16) & 0xFFu) | set_bits;
        std::memcpy(to + 4 * i, &pixel, 4);
    }
}

} // namespace

compression::LevelImage to_level_image(const Bitmap& bitmap, LevelAlpha alpha) {
    compression::LevelImage level{bitmap.width(), bitmap.height(), {}};
    level.pixels.resize(bitmap.pixels().size());
    const std::size_t width = static_cast<std::size_t>(bitmap.width());
    const std::uint32_t set_bits = alpha == LevelAlpha::opaque ? 0xFF000000u : 0;
    for (std::int32_t y = 0; y < bitmap.height(); ++y)
        exchange_red_and_blue(bitmap.row(y), level.pixels.data() + static_cast<std::size_t>(y) * width * 4, width,
                              set_bits);
    return level;
}

Bitmap to_bitmap(const compression::LevelImage& level) {
    Bitmap bitmap(level.width, level.height);
    const std::size_t width = static_cast<std::size_t>(level.width);
    for (std::int32_t y = 0; y < level.height; ++y)
        exchange_red_and_blue(level.pixels.data() + static_cast<std::size_t>(y) * width * 4, bitmap.row(y), width, 0);
    return bitmap;
}

} // namespace mosaicer
