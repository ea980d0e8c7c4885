#pragma once

#include "compression/LevelImage.h"

#include <cstddef>
#include <cstdint>

namespace compression {

/// The part of a level that one block covers. The level is not owned.
struct BlockWindow {
    const FloatImage& level;
    std::int32_t x; ///< of the top left pixel
    std::int32_t y;

    /// The four channels of a cell, 0 to 15 row by row. Null outside the level.
    const float* pixel(int cell) const {
        const std::int32_t column = x + cell % 4;
        const std::int32_t row = y + cell / 4;
        if (column >= level.width || row >= level.height)
            return nullptr;
        return &level.pixels[(static_cast<std::size_t>(row) * static_cast<std::size_t>(level.width) +
                              static_cast<std::size_t>(column)) *
                             4];
    }
};

} // namespace compression
