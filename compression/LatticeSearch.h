#pragma once

#include "compression/DistinctColours.h"

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

} // namespace compression
