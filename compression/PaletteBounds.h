#pragma once

#include "compression/BlockContext.h"
#include "compression/SimdLevel.h"

#include <array>
#include <span>

namespace compression {

/// A value per pixel of a block; 0 beyond the block's pixels.
using PixelRow = std::array<float, 16>;

/// A byte per palette entry, and a row per palette entry.
using EntryBytes = std::array<int, 4>;
using EntryRows = std::array<PixelRow, 4>;

/// The weighted distances of a block's pixels to every byte value. Pixels stand in an order of their own.
struct DistanceTables {
    alignas(64) std::array<std::array<PixelRow, 256>, 3> squared; ///< (weight * (255 * colour - byte)) squared
    alignas(64) std::array<PixelRow, 3> bytes{};                  ///< 255 * colour
    PixelRow to_black;
    std::array<float, 3> weights{};
    std::size_t pixel_count = 0;
    bool offers_black = false; ///< as a fourth entry of three-colour palettes

    explicit DistanceTables(const BlockContext& block);
};

/// What the two ends of a walk may be, by the stored value of the main channel.
struct WalkEnds {
    std::size_t main = 0;
    int count = 0; ///< stored values of the main channel
    /// Bytes per channel, `low` equal to `high` on the main channel.
    std::array<std::array<int, 64>, 3> low{};
    std::array<std::array<int, 64>, 3> high{};
    /// Least squared distance per pixel, then stored value.
    alignas(64) std::array<std::array<float, 64>, 16> distance{};
};

/// Bounds of all pairs (i, j) of one i, by j from i + 1 on; what stands below is of no meaning.
struct PairBounds {
    alignas(64) std::array<float, 64> three;
    alignas(64) std::array<float, 64> four;
};

/// The highest bound of a candidate whose error could be at most `best`. The single-precision rounding of a sum E
/// stays below 1e-5 E + 2e-4 sqrt(E).
inline float reach_limit(double best) {
    return static_cast<float>(best * (1 + 1e-4) + 0.01);
}

inline bool may_reach(float bound, double best) {
    return bound <= reach_limit(best);
}

/// Single-precision kernels of one instruction set. Their last bits are free: they only tell what to skip.
struct PaletteBoundKernels {
    SimdLevel level;
    void (*fill)(DistanceTables& tables);
    /// Bounds each pair of ends, whatever the derived channels of its ends are within their intervals. Stops with a
    /// part of the sum where that is above `limit`.
    void (*bound_pairs)(const DistanceTables& tables, const WalkEnds& ends, int i, float limit, PairBounds& bounds);
    /// Adds each entry's squared distance to an interval of bytes of one channel.
    void (*add_boxes)(const DistanceTables& tables, std::size_t channel, const EntryBytes& low, const EntryBytes& high,
                      EntryRows& rows);
    /// For each choice of bytes of one channel: the sum over pixels of the least entry of `rows` plus the channel.
    void (*sum_least)(const DistanceTables& tables, std::size_t channel, const EntryRows& rows,
                      std::span<const EntryBytes> choices, float* sums);
};

/// The kernels that this processor runs, slowest first; the last is what the search uses.
std::span<const PaletteBoundKernels> palette_bound_kernels();

} // namespace compression
