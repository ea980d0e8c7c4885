#pragma once

#include "compression/CompressionOptions.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace compression {

/// Blocks of 4 by 4 pixels that cover a level.
constexpr std::size_t block_count(std::int32_t width, std::int32_t height) {
    return (static_cast<std::size_t>(width) + 3) / 4 * ((static_cast<std::size_t>(height) + 3) / 4);
}

/// The side of the next level.
constexpr std::int32_t half_side(std::int32_t side) {
    return std::max(1, side / 2);
}

/// Levels of a full chain, down to 1 by 1: 1 for 1 by 1, 10 for 512 by 512.
constexpr std::int32_t full_level_count(std::int32_t width, std::int32_t height) {
    return static_cast<std::int32_t>(std::bit_width(static_cast<std::uint32_t>(std::max(width, height))));
}

constexpr bool is_block_format(std::int32_t format) {
    return format >= FORMAT_DXT1 && format <= FORMAT_DXT5;
}

/// Bytes of an encoded level; 0 for a format that the library does not write.
constexpr std::size_t level_byte_count(std::int32_t format, std::int32_t width, std::int32_t height) {
    const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    switch (format) {
    case FORMAT_DXT1:
    case FORMAT_DXT1_ALPHA:
        return block_count(width, height) * 8;
    case FORMAT_DXT3:
    case FORMAT_DXT5:
        return block_count(width, height) * 16;
    case FORMAT_A8R8G8B8:
        return pixels * 4;
    case FORMAT_A8L8:
        return pixels * 2;
    default:
        return 0;
    }
}

} // namespace compression
