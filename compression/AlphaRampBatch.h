#pragma once

#include "compression/SimdLevel.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace compression {

/// Ramps that are fitted side by side, one per lane.
constexpr std::size_t ramp_lanes = 4;

using RampLane = std::array<double, ramp_lanes>;

/// Four sets of samples. A lane that is not needed repeats another one.
struct RampBatch {
    alignas(16) std::array<std::array<float, ramp_lanes>, 16> samples; ///< 0.0 to 1.0, spare ones repeat the first
    alignas(32) RampLane count;                                        ///< samples, 1 to 16
    alignas(32) RampLane steps;                                        ///< levels of the ramp, 8 or 6
};

struct RampBatchResult {
    alignas(32) RampLane alpha0;      ///< byte of code 0
    alignas(32) RampLane alpha1;      ///< byte of code 1
    alignas(32) RampLane error;       ///< sum of squared differences in bytes, each sample at its nearest level
    alignas(32) RampLane least_error; ///< the same if every byte were a level: no ramp has less
    alignas(32) std::array<std::int64_t, ramp_lanes> zero; ///< not 0: some sample is 0.0
    alignas(32) std::array<std::int64_t, ramp_lanes> one;  ///< not 0: some sample is 1.0
    /// The nearest levels, of equally near ones the lowest: 3 bits a sample, the first lowest, 0 for spare samples.
    alignas(32) std::array<std::uint64_t, ramp_lanes> codes;
};

/// The kernel of one instruction set. All give the same bits.
struct RampBatchKernel {
    SimdLevel level;
    void (*fit)(const RampBatch& batch, RampBatchResult& result);
};

/// The kernels that this processor runs, slowest first.
std::span<const RampBatchKernel> ramp_batch_kernels();

} // namespace compression
