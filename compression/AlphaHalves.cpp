#include "compression/AlphaHalves.h"

#include "compression/AlphaRamp.h"
#include "compression/BlockWindow.h"
#include "compression/ColourLattice.h"
#include "compression/CompressionOptions.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace compression {
namespace {

void write_dxt3_alpha(const BlockWindow& window, std::uint8_t* output) {
    for (int row = 0; row < 4; ++row) {
        unsigned bits = 0;
        for (int column = 3; column >= 0; --column) {
            const float* pixel = window.pixel(row * 4 + column);
            const int alpha = pixel == nullptr ? 0 : std::clamp(round_half_up(pixel[3] * 15.0f), 0, 15);
            bits = bits << 4 | static_cast<unsigned>(alpha);
        }
        output[2 * row] = static_cast<std::uint8_t>(bits & 255);
        output[2 * row + 1] = static_cast<std::uint8_t>(bits >> 8);
    }
}

// What code `i` becomes when the ends change places.
int mirrored_code(int code, int steps) {
    if (code < 2)
        return 1 - code;
    if (steps == 8)
        return 9 - code;
    return code < 6 ? 7 - code : code;
}

void gather_alpha(const BlockWindow& window, AlphaContext& alpha) {
    alpha.count = 0;
    for (int cell = 0; cell < 16; ++cell)
        if (const float* pixel = window.pixel(cell))
            alpha.samples[static_cast<std::size_t>(alpha.count++)] = pixel[3];
}

void write_dxt5_alpha(const BlockWindow& window, AlphaContext& alpha, std::uint8_t* output) {
    if (alpha.alpha0 == alpha.alpha1) {
        ++alpha.alpha1;
        alpha.codes.fill(0);
        alpha.steps = 6;
    }
    // A decoder reads alpha0 > alpha1 as eight steps.
    const bool swapped = (alpha.alpha1 < alpha.alpha0) == (alpha.steps == 6);
    if (swapped)
        std::swap(alpha.alpha0, alpha.alpha1);
    output[0] = static_cast<std::uint8_t>(std::clamp(alpha.alpha0, 0, 255));
    output[1] = static_cast<std::uint8_t>(std::clamp(alpha.alpha1, 0, 255));
    std::uint64_t word = 0;
    auto sample = static_cast<std::size_t>(alpha.count);
    for (int cell = 15; cell >= 0; --cell) {
        int code = 0;
        if (window.pixel(cell) != nullptr) {
            code = alpha.codes[--sample];
            if (swapped)
                code = mirrored_code(code, alpha.steps);
        }
        word = word << 3 | static_cast<unsigned>(code);
    }
    for (int byte = 0; byte < 6; ++byte)
        output[2 + byte] = static_cast<std::uint8_t>(word >> (8 * byte) & 255);
}

} // namespace

void write_alpha_halves(const FloatImage& level, std::int32_t y, std::int32_t format, std::uint8_t* output) {
    const std::int32_t blocks = (level.width + 3) / 4;
    if (format == FORMAT_DXT3) {
        for (std::int32_t block = 0; block < blocks; ++block)
            write_dxt3_alpha({level, 4 * block, y}, output + std::ptrdiff_t{16} * block);
        return;
    }
    std::array<AlphaContext, alpha_batch> alphas;
    for (std::int32_t first = 0; first < blocks; first += static_cast<std::int32_t>(alpha_batch)) {
        const std::int32_t end = std::min(blocks, first + static_cast<std::int32_t>(alpha_batch));
        const std::span batch(alphas.data(), static_cast<std::size_t>(end - first));
        for (std::int32_t block = first; block < end; ++block)
            gather_alpha({level, 4 * block, y}, batch[static_cast<std::size_t>(block - first)]);
        solve_alpha(batch); // a block covers at least one pixel of its level
        for (std::int32_t block = first; block < end; ++block)
            write_dxt5_alpha({level, 4 * block, y}, batch[static_cast<std::size_t>(block - first)],
                             output + std::ptrdiff_t{16} * block);
    }
}

} // namespace compression
