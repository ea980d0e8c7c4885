#include "compression/DistinctColours.h"

namespace compression {

DistinctColours::DistinctColours(const BlockContext& block) : pixel_count(static_cast<std::size_t>(block.count)) {
    const std::size_t pixels = pixel_count;
    const auto divisor = static_cast<double>(block.count);
    std::array<Vector3, 16> p{};
    for (std::size_t c = 0; c < 3; ++c) {
        for (std::size_t i = 0; i < pixels; ++i) {
            p[i][c] = block.colours[i][c] * block.weights[c];
            mean[c] += p[i][c];
        }
        mean[c] /= divisor;
        for (std::size_t i = 0; i < pixels; ++i)
            centred_pixels[i][c] = p[i][c] - mean[c];
    }
    std::array<int, 16> occurrences{};
    for (std::size_t i = 0; i < pixels; ++i) {
        std::size_t k = 0;
        while (k < count && centred[k] != centred_pixels[i])
            ++k;
        if (k == count) {
            weighted[k] = p[i];
            centred[k] = centred_pixels[i];
            ++count;
        }
        ++occurrences[k];
        of_pixel[i] = static_cast<std::uint8_t>(k);
    }
    for (std::size_t k = 0; k < count; ++k) {
        frequency[k] = occurrences[k] / divisor;
        for (std::size_t c = 0; c < 3; ++c)
            scaled[k][c] = centred[k][c] * frequency[k];
    }
}

} // namespace compression
