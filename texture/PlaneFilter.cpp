#include "texture/PlaneFilter.h"

#include "texture/GammaCurve.h"

#include <algorithm>
#include <cassert>
#include <vector>

namespace mosaicer {
namespace {

constexpr std::size_t most_group_rows = 16; ///< 2,048 columns of 16 doubles take half of a usual second-level cache

/// Pixels that are turned together. The rows of a picture often lie a power of two apart and so share a few cache sets;
/// turned pixel by pixel, 16 of them would push each other out.
constexpr std::size_t tile = 16;

/// The rows of a group in turned order: sample (x, row) at [x * rows + row].
struct RowGroup {
    std::size_t rows; ///< lanes, a power of two; those beyond the picture hold any numbers
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
    for (std::size_t left = 0; left < width; left += tile) {
        const std::size_t right = std::min(left + tile, width);
        for (std::size_t row = 0; row < rows; ++row) {
            const std::uint8_t* source = pixels + row * width * 4;
            double* target = group.samples.data() + row;
            for (std::size_t x = left; x < right; ++x)
                target[x * group.rows] = decoded[source[x * 4]];
        }
    }
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

/// Turns a group's outputs back into rows of a level.
void store_rows(const std::vector<float>& outputs, std::size_t group_rows, std::size_t rows, std::size_t width,
                float* target, std::size_t pitch) {
    for (std::size_t left = 0; left < width; left += tile) {
        const std::size_t right = std::min(left + tile, width);
        for (std::size_t row = 0; row < rows; ++row)
            for (std::size_t x = left; x < right; ++x)
                target[row * pitch + x] = outputs[x * group_rows + row];
    }
}

/// The number of floats between rows of a level behind its x axis.
std::size_t pitch_of(const LevelFilter& filter) {
    return (filter.x.outputs + 3) / 4 * 4;
}

} // namespace

LevelFilter::LevelFilter(const Bitmap& base, std::int32_t level_width, std::int32_t level_height,
                         const FilterKernel& kernel)
    : width(level_width),
      height(level_height),
      x(base.width(), level_width, kernel, AxisFilter::Layout::shared_blocks),
      y(base.height(), level_height, kernel, AxisFilter::Layout::separate_windows) {}

PlaneFilter::PlaneFilter(const Bitmap& base, std::span<const LevelFilter> filters, const DownsampleKernels& kernels)
    : base_(base),
      filters_(filters),
      kernels_(kernels),
      group_rows_(base.height() > 8   ? most_group_rows
                  : base.height() > 4 ? 8u
                                      : 4u) {
    const auto width = static_cast<std::size_t>(base.width());
    std::size_t most_floats = 0;
    for (std::size_t first = 0; first < filters.size();) {
        std::size_t columns = 0;
        std::size_t last = first;
        while (last < filters.size() && (last == first || columns < width + tile))
            columns += pitch_of(filters[last++]);
        batches_.push_back(filters.subspan(first, last - first));
        most_floats = std::max(most_floats, columns * static_cast<std::size_t>(base.height()));
        first = last;
    }
    // Columns between a level's width and its pitch are summed with the others and never stored, but must hold numbers.
    half_filtered_.resize(most_floats);
}

void PlaneFilter::run(std::size_t channel, std::span<Bitmap> targets) {
    assert(filters_.size() == targets.size());
    for (const auto batch : batches_) {
        filter_rows(channel, batch);
        const float* rows = half_filtered_.data();
        for (const LevelFilter& filter : batch) {
            filter_columns(filter, rows, channel, targets.front());
            rows += pitch_of(filter) * static_cast<std::size_t>(base_.height());
            targets = targets.subspan(1);
        }
    }
}

void PlaneFilter::filter_rows(std::size_t channel, std::span<const LevelFilter> batch) {
    const auto width = static_cast<std::size_t>(base_.width());
    const auto height = static_cast<std::size_t>(base_.height());
    RowGroup group{group_rows_, std::vector<double>(width * group_rows_)};
    std::vector<float> outputs(batch.front().x.outputs * group_rows_);
    for (std::size_t y = 0; y < height; y += group_rows_) {
        const std::size_t rows = std::min(group_rows_, height - y);
        decode_rows(base_.pixels().data() + y * width * 4 + channel, width, rows, group);
        float* target = half_filtered_.data();
        for (const LevelFilter& filter : batch) {
            const std::size_t pitch = pitch_of(filter);
            RowFilter(filter.x, group, kernels_, outputs.data()).run();
            store_rows(outputs, group_rows_, rows, filter.x.outputs, target + y * pitch, pitch);
            target += pitch * height;
        }
    }
}

void PlaneFilter::filter_columns(const LevelFilter& filter, const float* rows, std::size_t channel, Bitmap& target) {
    const AxisFilter& axis = filter.y;
    std::vector<float> row(pitch_of(filter));
    std::uint8_t* pixel = target.pixels().data() + channel;
    for (std::size_t y = 0; y < axis.outputs; ++y) {
        kernels_.sweep_columns({.rows = rows,
                                .pitch = row.size(),
                                .positions = axis.positions.data() + y * axis.block,
                                .taps = axis.taps.data(),
                                .tap_count = axis.block,
                                .outputs = row.data()});
        for (std::size_t x = 0; x < filter.x.outputs; ++x, pixel += 4)
            *pixel = encoded_byte(row[x]);
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
