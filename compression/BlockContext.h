#pragma once

#include <array>
#include <cstdint>

namespace compression {

/// Red, green, blue.
using Vector3 = std::array<double, 3>;

/// Whether a block's palette size is free. Any value but the two named ones lets the solver choose.
constexpr int COLOUR_MODE_THREE = 0;
constexpr int COLOUR_MODE_FOUR = 1;
constexpr int COLOUR_MODE_FREE = 2;

/// What the block loop hands to the colour solver for one block, and what comes back. Fixed size, filled anew per
/// block.
struct BlockContext {
    int format = 0; ///< the run's `g_texture_format`
    int colour_mode = COLOUR_MODE_FREE;
    int quality = 0;                        ///< the run's `g_quality`
    float rms_error_threshold = 0;          ///< error above which quality 72 searches exhaustively
    int count = 0;                          ///< pixels gathered, 0 to 16
    std::array<Vector3, 16> colours{};      ///< of each gathered pixel, 0.0 to 1.0
    Vector3 weights{};                      ///< of the colour error
    int colour_count = 4;                   ///< result: 3 or 4
    std::array<int, 3> end0{};              ///< result: 5, 6 and 5 bits
    std::array<int, 3> end1{};              ///< result: 5, 6 and 5 bits
    std::array<std::uint8_t, 16> indices{}; ///< result: 0 `end0`, 1 `end1`, 2 and 3 the entries between
};

/// True if every gathered pixel has the colour of the first, bit for bit.
bool is_single_colour(const BlockContext& block);

} // namespace compression
