#pragma once

#include "texture/AxisFilter.h"
#include "texture/Bitmap.h"
#include "texture/DownsampleKernels.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace mosaicer {

/// What makes one level: its kernel along x and along y.
struct LevelFilter {
    LevelFilter(const Bitmap& base, std::int32_t width, std::int32_t height, const FilterKernel& kernel);

    std::int32_t width;
    std::int32_t height;
    AxisFilter x;
    AxisFilter y;
};

/// Filters one channel (0 to 3) of `base` in linear light into that channel of `targets`, one for each filter and of
/// its size. Sums are doubles, stored as floats behind each axis, x first.
///
/// Level 0 is not held as floats: 16 rows at a time are decoded and turned, and swept for all levels while they are in
/// the cache. What stays until all rows are done is each level behind its x axis, about 4 bytes a pixel of `base`.
void filter_plane(const Bitmap& base, std::size_t channel, std::span<const LevelFilter> filters,
                  std::span<Bitmap> targets, const DownsampleKernels& kernels);

/// The byte of every pixel of a level that a channel of nothing but `byte` gives.
std::uint8_t filter_constant(std::uint8_t byte, const FilterKernel& kernel);

} // namespace mosaicer
