#pragma once

#include "compression/AlphaRampBatch.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace compression {

/// The samples of one DXT5 alpha block and what the solver finds for them.
struct AlphaContext {
    int count = 0;                   ///< samples, 0 to 16
    std::array<float, 16> samples{}; ///< 0.0 to 1.0; the solver makes spare ones repeat the first
    int steps = 8;                   ///< result: levels of the ramp, 8, or 6 with fixed 0 and 255
    int alpha0 = 0;                  ///< result: byte of code 0
    int alpha1 = 0;                  ///< result: byte of code 1
    std::uint64_t codes = 0;         ///< result: 3 bits a sample, the first lowest
};

/// Blocks that are best solved in one call: enough that all lanes are busy.
constexpr std::size_t alpha_batch = 32;

/// Fits five ramps to each block (8 levels; 6 levels with and without the samples that the fixed codes 6 for 0.0 and 7
/// for 1.0 cover) and keeps the one of least error, the first at a tie. At most `alpha_batch` blocks, each of at least
/// one sample. A block's result does not depend on the others.
void solve_alpha(std::span<AlphaContext> blocks);

/// The same with a kernel of choice.
void solve_alpha(std::span<AlphaContext> blocks, const RampBatchKernel& kernel);

} // namespace compression
