#pragma once

#include "texture/FilterKernel.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace mosaicer {

/// Folds an index back into a row. The edges differ on purpose: low skips the border sample, high repeats it.
///   size 4:  index -2 -1 | 0 1 2 3 | 4 5   reads  2 1 | 0 1 2 3 | 3 2
/// Reflecting at both edges is a shift by 2 size - 1, so far indices cost no more than near ones.
constexpr std::int64_t mirror(std::int64_t index, std::int64_t size) {
    const std::int64_t period = 2 * size - 1;
    const std::int64_t folded = (index < 0 ? -index : index) % period;
    return folded < size ? folded : period - folded;
}
static_assert(mirror(-2, 4) == 2 && mirror(4, 4) == 3 && mirror(5, 4) == 2 && mirror(-7, 1) == 0);

/// One axis of one level: which samples meet which taps.
///
/// A level of `outputs` samples is read from `size` source samples in steps of size / outputs whole samples. Output j
/// is centred on x = step / 2 + j step, and tap k reads sample mirror(x - n / 2 + k), with n taps.
///
/// Windows of neighbours overlap: a Kaiser window is five steps wide. So the line of samples is cut into blocks of one
/// step, and the kernel into as many segments; block b meets segment b - j of output j. A sweep loads each sample once
/// for up to five outputs, and each output still sees its taps in ascending order:
///
///     block      0    1    2    3    4    5  ...
///     output 0   s0   s1   s2   s3   s4
///     output 1        s0   s1   s2   s3   s4
///     output 2             s0   s1   s2   s3  ...
///
/// A kernel that is no multiple of the step ends in taps of 0, which change no sum.
struct AxisFilter {
    enum class Layout {
        shared_blocks,    ///< as drawn
        separate_windows, ///< one segment; every output has a block of its own, the whole window
    };

    /// `outputs` is max(size >> level, 1) for some level; then no output lies outside the source.
    AxisFilter(std::int32_t size, std::int32_t outputs, const FilterKernel& kernel, Layout layout);

    std::size_t outputs;
    std::size_t segments;
    std::size_t block;                   ///< samples of a block, taps of a segment
    std::vector<std::int32_t> positions; ///< source sample of each place of each block, outputs + segments - 1 blocks
    std::vector<double> taps;            ///< taps[p * segments + g] is the tap of place p in segment g
};

/// The most segments that a kernel of mip_kernel() is cut into: a step is never below 2^level.
constexpr std::size_t max_segments = 5;

} // namespace mosaicer
