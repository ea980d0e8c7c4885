#pragma once

#include "compression/BlockContext.h"
#include "compression/SimdLevel.h"

#include <array>
#include <cstdint>
#include <span>

namespace compression {

/// Blocks that are solved side by side, one per lane.
constexpr std::size_t batch_lanes = 8;

template <typename Value>
using PerLane = std::array<Value, batch_lanes>;

/// Eight whole blocks of 16 pixels; spare lanes repeat a block.
struct FastBatch {
    alignas(64) std::array<std::array<PerLane<float>, 16>, 3> colours; ///< by channel and pixel, unweighted
    std::array<float, 3> weights{};
    bool may_choose = false;   ///< three colours as well as four
    bool offers_black = false; ///< as a fourth entry of three-colour palettes
};

/// What `solve_colours` gives at quality 68 for each block.
struct FastBatchResult {
    alignas(32) PerLane<std::int32_t> word0; ///< `end0` as 16-bit colour
    alignas(32) PerLane<std::int32_t> word1;
    alignas(32) PerLane<std::uint32_t> indices; ///< 2 bits a pixel, pixel 0 lowest
    PerLane<std::uint8_t> colour_count;
};

/// The kernel of one instruction set. All give the same bits, those of `fast_fit` and `evaluate_palette`.
struct FastBatchKernel {
    SimdLevel level;
    void (*solve)(const FastBatch& batch, FastBatchResult& result);
};

/// The kernels that this processor runs, slowest first.
std::span<const FastBatchKernel> fast_batch_kernels();

} // namespace compression
