#pragma once

#include "compression/SimdLevel.h"

#include <array>
#include <cstddef>
#include <span>

// The walk over all divisions of an ordered line of colours into groups 0, 1, 2, 3.
//
// Running sums go from (i, j, k) to its neighbours, so each (i, j) heads a chain of its own. Chains of neighbouring i
// with the same j take in the same colours and run in the lanes of a register, each lane through the operations of the
// plain walk in their order.
//
// The plain walk compares fractions pair by pair, in order, the later of two equals winning. Rounding can move its
// winner away from the best score by at most four units in the last place per comparison, 4e-13 in all of them. So the
// splits that come within 1e-10 of the best score hold the winner, and comparing those alone in the walk's order finds
// it: any of them replaces whatever stood before the first of them.

namespace compression {

/// Places [0, i) form group 0, [i, j) group 1, [j, k) group 2, [k, count) group 3.
struct Split {
    std::size_t i = 0;
    std::size_t j = 0;
    std::size_t k = 0;
};

/// The colours of a line by place.
struct SplitLine {
    std::size_t count = 0;
    int step_limit = 3; ///< 2: no group 3
    std::array<double, 16> frequency{};
    std::array<std::array<double, 16>, 3> scaled{}; ///< by channel: centred, times frequency
};

/// A split and its score, -numerator / denominator, in the bits of the plain walk.
struct ScoredSplit {
    Split split;
    double numerator;
    double denominator;
};

struct NearBestSplits {
    std::size_t count = 0;
    std::array<ScoredSplit, 64> splits;
};

/// The walk in one instruction set. False: more splits are near the best than the list holds.
struct SplitWalkKernel {
    SimdLevel level;
    bool (*walk)(const SplitLine& line, NearBestSplits& splits);
};

/// The kernels that this processor runs, slowest first.
std::span<const SplitWalkKernel> split_walk_kernels();

} // namespace compression
