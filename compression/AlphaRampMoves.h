#pragma once

#include "compression/BoundedRamp.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace compression {

/// What a move must gain on paper to be worth its exact evaluation, times 1 + tx tx / v: far above the rounding of any
/// sum over 16 samples, far below what matters otherwise.
constexpr double ramp_move_margin = 1e-9;

/// A ramp of `steps` levels fitted to samples that each have their bin, 0 to `steps` - 1.
struct BinnedRamp {
    int steps = 8;
    std::size_t count = 0;
    double mean = 0;
    std::array<double, 16> values{}; ///< less the mean, `count` of them
    std::array<std::uint8_t, 16> bins{};
    double error = 0; ///< of the fit to these bins, less the constant sum of squares
    Ramp ramp;
};

/// Moves the outermost sample of some bin into the next bin, the first such move that lowers the error, and takes over
/// the ramp fitted to it; upwards before downwards, bins from low to high. False: no move does. Needs two bins in use.
bool move_one_sample(BinnedRamp& binned);

} // namespace compression
