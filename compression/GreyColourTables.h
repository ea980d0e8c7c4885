#pragma once

#include <array>
#include <cstdint>

namespace compression {

/// The best way to code a block of one grey.
struct GreyRow {
    std::array<std::uint8_t, 3> end0{};
    std::array<std::uint8_t, 3> end1{};
    std::uint8_t colour_count = 4;
    std::uint8_t index = 0; ///< that every pixel takes
};

/// A row per grey byte: for blocks that may choose their palette size, and for blocks forced to four colours.
struct GreyColourTables {
    std::array<GreyRow, 256> free{};
    std::array<GreyRow, 256> four{};

    /// Built at first use, thread-safe, then constant.
    static const GreyColourTables& instance();
};

} // namespace compression
