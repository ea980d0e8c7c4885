#include "texture/PlaneFilter.h"

#include "texture/GammaCurve.h"

#include <algorithm>
#include <cassert>
#include <vector>

namespace mosaicer {
namespace {

/// 2,048 columns of 8 doubles take a quarter of a usual second-level cache; 16 rows were no faster.
constexpr std::size_t most_group_rows = 8;

/// Pixels that are turned together. The rows of a picture often lie a power of two apart and so share a few cache sets;
/// turned pixel by pixel, they would push each other out.
constexpr std::size_t tile = 16;

/// Doubles of the decoded floats.
std::array<double, 256> decoding_table() {
    std::array<double, 256> table{};
    std::copy(decoded_bytes.begin(), decoded_bytes.end(), table.begin());
    return table;
}

void decode_rows(const std::uint8_t* pixels, std::size_t width, std::size_t rows, RowGroup& group) {
    static const std::array<double, 256> linear = decoding_table();
    for (std::size_t left = 0; left < width; left += tile) {
        const std::size_t right = std::min(left + tile, width);
        for (std::size_t row = 0; row < rows; ++row) {
            const std::uint8_t* source = pixels + row * width * 4;
            double* target = group.samples.data() + row;
            for (std::size_t x = left; x < right; ++x)
                target[x * group.rows] = linear[source[x * 4]];
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
        // Few sums leave the adders waiting for each other, so then more rows go at once, if the lanes leave any.
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

} // namespace

LevelFilter::LevelFilter(const Bitmap& base, std::int32_t level_width, std::int32_t level_height,
                         const FilterKernel& kernel)
    : width(level_width),
      height(level_height),
      x(base.width(), level_width, kernel, AxisFilter::Layout::shared_blocks),
      y(base.height(), level_height, kernel, AxisFilter::Layout::separate_windows) {}

PlaneFilter::PlaneFilter(const Bitmap& base, std::span<const LevelFilter> filters, const DownsampleKernels& kernels)
    : base_(base), kernels_(kernels), group_{base.height() > 4 ? most_group_rows : 4, {}} {
    const auto width = static_cast<std::size_t>(base.width());
    group_.samples.resize(width * group_.rows);
    for (const LevelFilter& filter : filters)
        levels_.emplace_back(filter, base.width(), group_.rows);
    if (!levels_.empty())
        turned_.resize(filters.front().x.outputs * group_.rows);
}

PlaneFilter::Level::Level(const LevelFilter& level_filter, std::int32_t source_width, std::size_t group_rows)
    : filter(level_filter),
      pitch((level_filter.x.outputs + 3) / 4 * 4),
      slots(level_filter.y.positions),
      ready(level_filter.y.outputs),
      line(pitch) {
    if (const auto size = static_cast<std::size_t>(source_width); FoldedWindow::pays(filter.x, size))
        folded.emplace(filter.x, size);
    std::size_t rows = 0; // behind the x axis when an output is made: whole groups
    for (std::size_t y = 0; y < ready.size(); ++y) {
        const auto window = std::span(slots).subspan(y * filter.y.block, filter.y.block);
        const auto [first, last] = std::minmax_element(window.begin(), window.end());
        rows = std::max(rows, (static_cast<std::size_t>(*last) / group_rows + 1) * group_rows);
        ready[y] = rows;
        capacity = std::max(capacity, rows - static_cast<std::size_t>(*first));
    }
    for (std::int32_t& slot : slots)
        slot = static_cast<std::int32_t>(static_cast<std::size_t>(slot) % capacity);
    ring.resize(capacity * pitch);
}

void PlaneFilter::run(std::size_t channel, std::span<Bitmap> targets) {
    assert(levels_.size() == targets.size());
    const auto width = static_cast<std::size_t>(base_.width());
    const auto height = static_cast<std::size_t>(base_.height());
    for (Level& level : levels_)
        level.next = 0;
    for (std::size_t y = 0; y < height; y += group_.rows) {
        decode_rows(base_.pixels().data() + y * width * 4 + channel, width, std::min(group_.rows, height - y), group_);
        for (std::size_t i = 0; i < levels_.size(); ++i) {
            filter_rows(levels_[i]);
            store_rows(levels_[i], y);
            make_outputs(levels_[i], y + group_.rows, targets[i].pixels().subspan(channel));
        }
    }
}

void PlaneFilter::filter_rows(const Level& level) {
    if (!level.folded)
        return RowFilter(level.filter.x, group_, kernels_, turned_.data()).run();
    for (std::size_t row = 0; row < group_.rows; ++row)
        turned_[row] = level.folded->sum(group_.samples.data() + row, group_.rows);
}

void PlaneFilter::store_rows(Level& level, std::size_t first_row) const {
    const std::size_t width = level.filter.x.outputs;
    for (std::size_t left = 0; left < width; left += tile) {
        const std::size_t right = std::min(left + tile, width);
        for (std::size_t row = 0; row < group_.rows; ++row) {
            float* target = level.ring.data() + (first_row + row) % level.capacity * level.pitch;
            for (std::size_t x = left; x < right; ++x)
                target[x] = turned_[x * group_.rows + row];
        }
    }
}

void PlaneFilter::make_outputs(Level& level, std::size_t rows, std::span<std::uint8_t> channel) const {
    const AxisFilter& axis = level.filter.y;
    const std::size_t width = level.filter.x.outputs;
    for (; level.next < axis.outputs && level.ready[level.next] <= rows; ++level.next) {
        kernels_.sweep_columns({.rows = level.ring.data(),
                                .pitch = level.pitch,
                                .positions = level.slots.data() + level.next * axis.block,
                                .taps = axis.taps.data(),
                                .tap_count = axis.block,
                                .outputs = level.line.data()});
        for (std::size_t x = 0; x < width; ++x)
            channel[(level.next * width + x) * 4] = encoded_byte(level.line[x]);
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
