#include "texture/PlaneFilter.h"

#include "texture/GammaCurve.h"

#include <algorithm>
#include <cassert>
#include <memory>
#include <vector>

namespace mosaicer {
namespace {

constexpr std::size_t most_group_rows = 16; ///< 2,048 columns of 16 doubles take half of a usual second-level cache

/// The rows of a group in turned order: sample (x, row) at [x * rows + row].
struct RowGroup {
    std::size_t rows; ///< lanes, a power of two; those beyond the picture hold zeros
    std::vector<double> samples;
};

/// Doubles of the decoded floats.
std::array<double, 256> decoding_table() {
    std::array<double, 256> table{};
    std::copy(decoded_bytes.begin(), decoded_bytes.end(), table.begin());
    return table;
}

void decode_rows(const std::uint8_t* pixels, std::size_t width, std::size_t rows, RowGroup& group) {
    static const std::array<double, 256> decoded = decoding_table();
    double* sample = group.samples.data();
    for (std::size_t x = 0; x < width; ++x, sample += group.rows, pixels += 4)
        for (std::size_t row = 0; row < rows; ++row)
            sample[row] = decoded[pixels[row * width * 4]];
}

/// Sweeps a group along x: outputs[j * group.rows + row] for all outputs of the filter.
class RowFilter {
public:
    RowFilter(const AxisFilter& axis, const RowGroup& group, const DownsampleKernels& kernels, float* outputs)
        : axis_(axis), group_(group), kernels_(kernels), outputs_(outputs) {}

    void run() {
        const std::size_t segments = axis_.segments;
        const std::size_t blocks = axis_.outputs + segments - 1;
        for (std::size_t b = 0; b < blocks;) {
            const std::size_t oldest = b + 1 < segments ? 0 : b + 1 - segments;
            const std::size_t youngest = std::min(b, axis_.outputs - 1);
            // Between the first and the last output the picture is the same for every block.
            const bool steady = youngest - oldest + 1 == segments;
            const std::size_t count = steady ? axis_.outputs - oldest : 1;
            sweep(b, count, oldest, youngest);
            b += count;
        }
    }

private:
    void sweep(std::size_t first_block, std::size_t blocks, std::size_t oldest, std::size_t youngest) {
        const std::size_t active = youngest - oldest + 1;
        const bool completes = first_block - oldest + 1 == axis_.segments;
        // Few sums leave the adders waiting for each other, so then more rows go at once.
        const std::size_t vectors = std::min<std::size_t>(active <= 2 ? 4 : 2, group_.rows / kernels_.lanes);
        const auto run = kernels_.sweep_rows[active - 1][vectors / 2];
        for (std::size_t row = 0; row < group_.rows; row += vectors * kernels_.lanes)
            run({.samples = group_.samples.data() + row,
                 .group_rows = group_.rows,
                 .positions = axis_.positions.data() + first_block * axis_.block,
                 .taps = axis_.taps.data() + (first_block - youngest),
                 .segments = axis_.segments,
                 .block = axis_.block,
                 .blocks = blocks,
                 .completes = completes,
                 .sums = sums_.data() + row,
                 .outputs = outputs_ + oldest * group_.rows + row});
    }

    const AxisFilter& axis_;
    const RowGroup& group_;
    const DownsampleKernels& kernels_;
    float* outputs_;
    std::array<double, max_segments * most_group_rows> sums_{};
};

/// One level behind its x axis, as many rows as the source.
struct HalfFiltered {
    const LevelFilter* filter;
    Bitmap* target;
    std::size_t pitch; ///< floats
    std::unique_ptr<float[]> samples;
};

HalfFiltered half_filtered(const LevelFilter& filter, Bitmap& target, std::size_t source_rows) {
    const std::size_t pitch = (filter.x.outputs + 3) / 4 * 4;
    // Columns beyond the level are summed with the others and never stored, but they must hold numbers.
    return {&filter, &target, pitch, std::make_unique<float[]>(pitch * source_rows)};
}

/// Turns a group's outputs back into rows of the level.
void store_rows(const std::vector<float>& outputs, std::size_t group_rows, std::size_t rows, std::size_t first_row,
                HalfFiltered& level) {
    for (std::size_t row = 0; row < rows; ++row) {
        float* target = level.samples.get() + (first_row + row) * level.pitch;
        for (std::size_t x = 0; x < level.filter->x.outputs; ++x)
            target[x] = outputs[x * group_rows + row];
    }
}

void filter_rows(const Bitmap& base, std::size_t channel, std::span<HalfFiltered> levels,
                 const DownsampleKernels& kernels) {
    const auto width = static_cast<std::size_t>(base.width());
    const auto height = static_cast<std::size_t>(base.height());
    RowGroup group{height > 8 ? most_group_rows : height > 4 ? 8u : 4u, {}};
    group.samples.resize(width * group.rows);
    std::vector<float> outputs(levels.front().filter->x.outputs * group.rows);
    for (std::size_t y = 0; y < height; y += group.rows) {
        const std::size_t rows = std::min(group.rows, height - y);
        decode_rows(base.pixels().data() + y * width * 4 + channel, width, rows, group);
        for (HalfFiltered& level : levels) {
            RowFilter(level.filter->x, group, kernels, outputs.data()).run();
            store_rows(outputs, group.rows, rows, y, level);
        }
    }
}

void filter_columns(const HalfFiltered& level, std::size_t channel, const DownsampleKernels& kernels) {
    const AxisFilter& axis = level.filter->y;
    std::vector<float> row(level.pitch);
    std::uint8_t* pixel = level.target->pixels().data() + channel;
    for (std::size_t y = 0; y < axis.outputs; ++y) {
        kernels.sweep_columns({.rows = level.samples.get(),
                               .pitch = level.pitch,
                               .positions = axis.positions.data() + y * axis.block,
                               .taps = axis.taps.data(),
                               .tap_count = axis.block,
                               .outputs = row.data()});
        for (std::size_t x = 0; x < level.filter->x.outputs; ++x, pixel += 4)
            *pixel = encoded_byte(row[x]);
    }
}

} // namespace

LevelFilter::LevelFilter(const Bitmap& base, std::int32_t level_width, std::int32_t level_height,
                         const FilterKernel& kernel)
    : width(level_width),
      height(level_height),
      x(base.width(), level_width, kernel, AxisFilter::Layout::shared_blocks),
      y(base.height(), level_height, kernel, AxisFilter::Layout::separate_windows) {}

void filter_plane(const Bitmap& base, std::size_t channel, std::span<const LevelFilter> filters,
                  std::span<Bitmap> targets, const DownsampleKernels& kernels) {
    assert(filters.size() == targets.size());
    const auto width = static_cast<std::size_t>(base.width());
    const auto height = static_cast<std::size_t>(base.height());
    // The levels of a usual picture go in one batch, being half as wide each time. In a narrow and high one they stop
    // at one column while more levels follow; batches bound what they hold.
    for (std::size_t i = 0; i < filters.size();) {
        std::vector<HalfFiltered> batch;
        for (std::size_t columns = 0; i < filters.size() && (batch.empty() || columns < width + 16); ++i) {
            batch.push_back(half_filtered(filters[i], targets[i], height));
            columns += batch.back().pitch;
        }
        filter_rows(base, channel, batch, kernels);
        for (const HalfFiltered& level : batch)
            filter_columns(level, channel, kernels);
    }
}

std::uint8_t filter_constant(std::uint8_t byte, const FilterKernel& kernel) {
    float sample = decoded_bytes[byte];
    for (int axis = 0; axis < 2; ++axis) {
        double sum = 0;
        for (const float tap : kernel.taps())
            sum += static_cast<double>(sample) * static_cast<double>(tap);
        sample = static_cast<float>(sum);
    }
    return encoded_byte(sample);
}

} // namespace mosaicer
