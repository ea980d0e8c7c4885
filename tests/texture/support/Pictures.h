#pragma once

#include "texture/Bitmap.h"

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

/// Pictures for the filters.
namespace mosaicer::pictures {

inline Bitmap flat(std::int32_t width, std::int32_t height, std::uint8_t byte) {
    Bitmap bitmap(width, height);
    for (std::uint8_t& value : bitmap.pixels())
        value = byte;
    return bitmap;
}

inline std::vector<std::uint8_t> bytes(const Bitmap& bitmap) {
    return {bitmap.pixels().begin(), bitmap.pixels().end()};
}

inline Bitmap noise(std::int32_t width, std::int32_t height, std::uint32_t seed = 1) {
    Bitmap bitmap(width, height);
    std::mt19937 random(seed);
    for (std::uint8_t& value : bitmap.pixels())
        value = static_cast<std::uint8_t>(random());
    return bitmap;
}

/// Black and white texels at random: the greatest overshoot at both ends.
inline Bitmap hard_edges(std::int32_t width, std::int32_t height) {
    Bitmap bitmap(width, height);
    std::mt19937 random(2);
    for (std::uint8_t& value : bitmap.pixels())
        value = (random() & 1) != 0 ? std::uint8_t{255} : std::uint8_t{0};
    return bitmap;
}

/// Smooth waves with a grain, and an opaque alpha.
inline Bitmap photo(std::int32_t width, std::int32_t height) {
    Bitmap bitmap = noise(width, height, 3);
    for (std::int32_t y = 0; y < height; ++y)
        for (std::int32_t x = 0; x < width * 4; ++x) {
            std::uint8_t& value = bitmap.row(y)[x];
            const double wave = std::sin((x % 4 + 1) * (x / 4) / 37.0) * std::cos(y / 53.0);
            const auto colour = static_cast<std::uint8_t>(120 + 100 * wave + value / 8);
            value = x % 4 == 3 ? std::uint8_t{255} : colour;
        }
    return bitmap;
}

} // namespace mosaicer::pictures
