#pragma once

#include "texture/AxisFilter.h"
#include "texture/Bitmap.h"
#include "texture/DownsampleKernels.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace mosaicer {

/// What makes one level: its kernel along x and along y.
struct LevelFilter {
    LevelFilter(const Bitmap& base, std::int32_t width, std::int32_t height, const FilterKernel& kernel);

    std::int32_t width;
    std::int32_t height;
    AxisFilter x;
    AxisFilter y;
};

/// Filters the channels of a picture in linear light, one at a time. Sums are doubles, stored as floats behind each
/// axis, x first.
///
/// Level 0 is not held as floats: 16 rows at a time are decoded and turned, and swept for all levels while they are in
/// the cache. What stays until all rows are done is each level behind its x axis, about 4 bytes a pixel of the picture.
class PlaneFilter {
public:
    /// Holds on to all three.
    PlaneFilter(const Bitmap& base, std::span<const LevelFilter> filters, const DownsampleKernels& kernels);

    /// Writes one channel (0 to 3) of the levels; `targets` has one for each filter, of its size.
    void run(std::size_t channel, std::span<Bitmap> targets);

private:
    void filter_rows(std::size_t channel, std::span<const LevelFilter> batch);
    void filter_columns(const LevelFilter& filter, const float* rows, std::size_t channel, Bitmap& target);

    const Bitmap& base_;
    std::span<const LevelFilter> filters_;
    const DownsampleKernels& kernels_;
    std::size_t group_rows_;
    /// The levels of a usual picture go in one batch, being half as wide each time. In a narrow and high one they stop
    /// at one column while more levels follow; batches bound what is held.
    std::vector<std::span<const LevelFilter>> batches_;
    std::vector<float> half_filtered_; ///< the levels of a batch behind their x axis, one after the other
};

/// The byte of every pixel of a level that a channel of nothing but `byte` gives.
std::uint8_t filter_constant(std::uint8_t byte, const FilterKernel& kernel);

} // namespace mosaicer
