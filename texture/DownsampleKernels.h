#pragma once

#include "compression/SimdLevel.h"
#include "texture/AxisFilter.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace mosaicer {

/// The inner loops of the filters in linear light, once for each SIMD level. A lane is one sample's sum and nothing
/// crosses lanes: every level adds the same double products in the same order and gives the same floats.

/// A run of blocks along the x axis, over some of the rows of a group. A group holds `group_rows` rows in turned order:
/// sample (x, row) at samples[x * group_rows + row].
struct RowSweep {
    const double* samples;         ///< from the first row to sweep
    std::size_t group_rows;        ///< 4 or 8
    const std::int32_t* positions; ///< of the first block
    const double* taps;            ///< of the youngest output's segment
    std::size_t segments;
    std::size_t block;
    std::size_t blocks;
    bool completes; ///< the oldest output is complete behind each block, and the next output starts
    double* sums;   ///< running sums, oldest output first: sums[a * group_rows + row]
    float* outputs; ///< completed outputs: outputs[i * group_rows + row]
};

/// A row of outputs of the y axis: outputs[c] = sum over k of rows[positions[k] * pitch + c] * taps[k].
struct ColumnSweep {
    const float* rows;
    std::size_t pitch; ///< of `rows` and `outputs`; a multiple of 4
    const std::int32_t* positions;
    const double* taps;
    std::size_t tap_count;
    float* outputs;
};

struct DownsampleKernels {
    using SweepRows = void (*)(const RowSweep&);

    /// For `a` outputs at once, `sweep_rows[a - 1][i]` takes lanes << i rows at once.
    std::array<std::array<SweepRows, 3>, max_segments> sweep_rows;
    std::size_t lanes;
    void (*sweep_columns)(const ColumnSweep&);
};

const DownsampleKernels& downsample_kernels(compression::SimdLevel level);

} // namespace mosaicer
