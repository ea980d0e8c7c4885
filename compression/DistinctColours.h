#pragma once

#include "compression/BlockContext.h"

namespace compression {

inline double dot(const Vector3& a, const Vector3& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

/// The colours that occur in a block, in order of first appearance, in weighted coordinates.
struct DistinctColours {
    std::size_t count = 0;
    std::array<Vector3, 16> weighted{};      ///< colour times weight
    std::array<Vector3, 16> centred{};       ///< weighted, less `mean`
    std::array<Vector3, 16> scaled{};        ///< centred, times frequency
    std::array<double, 16> frequency{};      ///< share of the block's pixels
    std::array<std::uint8_t, 16> of_pixel{}; ///< which colour a pixel has
    std::size_t pixel_count = 0;
    std::array<Vector3, 16> centred_pixels{}; ///< of each pixel
    Vector3 mean{};                           ///< of the pixels, weighted

    explicit DistinctColours(const BlockContext& block);
};

} // namespace compression
