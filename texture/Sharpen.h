#pragma once

#include "texture/Bitmap.h"

#include <array>
#include <cstdint>
#include <span>

namespace mosaicer {

/// A matrix of whole weights, row after row from the first stored row of the picture, both sides odd. The weighted sum
/// is divided by `divisor`. Weights and sides are so small that the sums of 255s fit 16 bits.
struct SharpenKernel {
    std::int32_t width;
    std::int32_t height;
    std::int32_t divisor;
    std::span<const std::int16_t> weights;
};

namespace detail {
inline constexpr std::array<std::int16_t, 25> soft_weights{
    -1, -1, -1, -1, -1, //
    -1, 2,  2,  2,  -1, //
    -1, 2,  8,  2,  -1, //
    -1, 2,  2,  2,  -1, //
    -1, -1, -1, -1, -1,
};
inline constexpr std::array<std::int16_t, 9> hard_weights{
    -1, -1, -1, //
    -1, 9,  -1, //
    -1, -1, -1,
};
} // namespace detail

inline constexpr SharpenKernel soft_sharpen{5, 5, 8, detail::soft_weights};
inline constexpr SharpenKernel hard_sharpen{3, 3, 1, detail::hard_weights};

/// A copy in which each of the four bytes of a pixel, alpha included, is the weighted sum of its neighbours' bytes of
/// that channel, divided, truncated toward zero and clamped to a byte. Past an edge the edge's pixel repeats.
Bitmap sharpen(const Bitmap& source, const SharpenKernel& kernel);

} // namespace mosaicer
