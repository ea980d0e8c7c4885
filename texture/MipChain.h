#pragma once

#include "driver/records/Keywords.h"
#include "texture/Bitmap.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace mosaicer {

/// How the levels of a filter are made.
enum class MipWay {
    none,         ///< the levels of the file stay
    bitmap,       ///< from the bytes of level 0: filter_mips()
    linear_light, ///< from level 0 in linear light: filter_mips_gamma()
};

constexpr MipWay mip_way(MipFilter filter) {
    switch (filter) {
    case MipFilter::KEEP:
        return MipWay::none;
    case MipFilter::BOX_GAMMA:
    case MipFilter::KAISER_GAMMA:
    case MipFilter::KAISER_GAMMA_CRISP:
        return MipWay::linear_light;
    default:
        return MipWay::bitmap;
    }
}

/// A side of level `n` of an image whose level 0 has `side` pixels there.
constexpr std::int32_t level_side(std::int32_t side, std::size_t n) {
    return n < 31 ? std::max(side >> n, 1) : 1;
}

/// How many levels a full chain has, level 0 included: the right shifts that bring the larger side to 0.
constexpr std::size_t full_level_count(std::int32_t width, std::int32_t height) {
    std::size_t count = 0;
    for (std::int32_t side = std::max(width, height); side > 0; side >>= 1)
        ++count;
    return count;
}
static_assert(full_level_count(1, 1) == 1 && full_level_count(256, 100) == 9 && full_level_count(1, 255) == 8);

} // namespace mosaicer
