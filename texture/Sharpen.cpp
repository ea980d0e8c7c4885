#include "texture/Sharpen.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <vector>

namespace mosaicer {
namespace {

/// Copies a row of `width` pixels and repeats its first and last pixel `margin` times beside it.
void widen_row(const std::uint8_t* row, std::int32_t width, std::int32_t margin, std::uint8_t* widened) {
    const auto row_bytes = static_cast<std::size_t>(width) * 4;
    const auto margin_bytes = static_cast<std::size_t>(margin) * 4;
    std::memcpy(widened + margin_bytes, row, row_bytes);
    for (std::size_t i = 0; i < margin_bytes; i += 4) {
        std::memcpy(widened + i, row, 4);
        std::memcpy(widened + margin_bytes + row_bytes + i, row + row_bytes - 4, 4);
    }
}

/// Adds `weight` times every byte to the sums beside it.
void add_weighted(std::vector<std::int16_t>& sums, const std::uint8_t* bytes, std::int16_t weight) {
    for (std::size_t i = 0; i < sums.size(); ++i)
        sums[i] = static_cast<std::int16_t>(sums[i] + weight * bytes[i]);
}

} // namespace

Bitmap sharpen(const Bitmap& source, const SharpenKernel& kernel) {
    assert(kernel.weights.size() == static_cast<std::size_t>(kernel.width * kernel.height));
    const std::int32_t margin = kernel.width / 2;
    const auto row_bytes = static_cast<std::size_t>(source.width()) * 4;
    const auto source_row = [&](std::int32_t y) {
        return source.pixels().data() + static_cast<std::size_t>(std::clamp(y, 0, source.height() - 1)) * row_bytes;
    };
    Bitmap result(source.width(), source.height());
    std::uint8_t* target = result.pixels().data();
    std::vector<std::uint8_t> widened(row_bytes + static_cast<std::size_t>(margin) * 8);
    std::vector<std::int16_t> sums(row_bytes);
    for (std::int32_t y = 0; y < source.height(); ++y, target += row_bytes) {
        std::fill(sums.begin(), sums.end(), std::int16_t{0});
        const std::int16_t* weight = kernel.weights.data();
        for (std::int32_t j = 0; j < kernel.height; ++j) {
            widen_row(source_row(y + j - kernel.height / 2), source.width(), margin, widened.data());
            for (std::int32_t i = 0; i < kernel.width; ++i)
                add_weighted(sums, widened.data() + static_cast<std::size_t>(i) * 4, *weight++);
        }
        for (std::size_t i = 0; i < row_bytes; ++i)
            target[i] = static_cast<std::uint8_t>(std::clamp(sums[i] / kernel.divisor, 0, 255));
    }
    return result;
}

} // namespace mosaicer
