#pragma once

#include "compression/DistinctColours.h"
#include "compression/SimdLevel.h"

#include <span>

namespace compression {

/// The best pair of lattice points around two free ends.
struct LatticeResult {
    double error = 0; ///< per pixel, in weighted coordinates
    int levels = 0;
    std::array<int, 3> end0{};
    std::array<int, 3> end1{};
    std::array<std::uint8_t, 16> indices{}; ///< per distinct colour
};

/// Tries the two stored values nearest to each channel of each end, 64 pairs of ends in all, with palettes of `levels`
/// (3 or 4) colours. `end0` and `end1` are weighted, 0 to the weight, and may lie outside.
LatticeResult lattice_search(const DistinctColours& colours, const Vector3& weights, int levels, const Vector3& end0,
                             const Vector3& end1);

/// What the 64 pairs of ends are judged by: a colour's squared distance to each level, times its frequency.
struct LatticeTerms {
    std::size_t colour_count = 0;
    std::size_t levels = 0;
    /// By level, colour and combination of red.
    alignas(32) std::array<std::array<std::array<double, 4>, 16>, 4> red;
    /// By green or blue, combination, level and colour.
    std::array<std::array<std::array<std::array<double, 16>, 4>, 4>, 2> others;
};

/// The best of 64 pairs: bits 0-1 red's combination, 2-3 green's, 4-5 blue's.
struct LatticeWinner {
    double error;
    std::size_t combination;
};

/// The walk over the 64 pairs, in one instruction set. All give the same bits. `guess` is a pair that is likely good.
struct LatticeKernel {
    SimdLevel level;
    LatticeWinner (*walk)(const LatticeTerms& terms, std::size_t guess);
};

/// The kernels that this processor runs, slowest first.
std::span<const LatticeKernel> lattice_kernels();

/// `lattice_search` with a given kernel, for tests.
LatticeResult lattice_search(const DistinctColours& colours, const Vector3& weights, int levels, const Vector3& end0,
                             const Vector3& end1, const LatticeKernel& kernel);

} // namespace compression
