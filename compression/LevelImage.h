#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace compression {

/// One level as bytes: four a pixel, red, green, blue, alpha, rows packed, first row at the top.
struct LevelImage {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<std::uint8_t> pixels; ///< width * height * 4 bytes
};

/// The library's working form of a level: red, green, blue, alpha as byte / 255, first row at the top.
struct FloatImage {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<float> pixels; ///< width * height * 4 floats
};

} // namespace compression
