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

constexpr std::uint64_t lowest_bits = 01111'1111'1111'1111; // of 16 codes of 3 bits

// The codes when the ends change places. Of eight steps, 0 and 1 change places and i becomes 9 - i: 1 - i, modulo 8. Of
// six, 0 and 1 change places, i of 2 to 5 becomes 7 - i, and 6 and 7 stay.
constexpr std::uint64_t mirrored_codes(std::uint64_t codes, int steps) {
    const std::uint64_t middle = codes >> 1 & lowest_bits;
    const std::uint64_t high = codes >> 2 & lowest_bits;
    if (steps == 8) // inverted, plus 2 with the carry
        return (codes ^ lowest_bits * 5) ^ (middle ^ lowest_bits) << 2;
    const std::uint64_t ramp = middle ^ high;
    return codes ^ (lowest_bits & ~(middle & high)) ^ ramp << 1 ^ ramp << 2;
}
static_assert(mirrored_codes(076543210, 8) == (023456701 | 01111'1111'0000'0000));
static_assert(mirrored_codes(076543210, 6) == (076234501 | 01111'1111'0000'0000));

bool is_whole(const BlockWindow& window) {
    return window.level.width - window.x >= 4 && window.level.height - window.y >= 4;
}

void gather_alpha(const BlockWindow& window, AlphaContext& alpha) {
    if (is_whole(window)) {
        const float* first = window.pixel(0) + 3;
        const std::size_t pitch = static_cast<std::size_t>(window.level.width) * 4;
        for (std::size_t i = 0; i < 16; ++i)
            alpha.samples[i] = first[i / 4 * pitch + i % 4 * 4];
        alpha.count = 16;
        return;
    }
    alpha.count = 0;
    for (int cell = 0; cell < 16; ++cell)
        if (const float* pixel = window.pixel(cell))
            alpha.samples[static_cast<std::size_t>(alpha.count++)] = pixel[3];
}

// From samples to cells; those outside the level have code 0.
std::uint64_t codes_of_cells(const BlockWindow& window, std::uint64_t codes) {
    if (is_whole(window))
        return codes;
    std::uint64_t word = 0;
    for (int cell = 0; cell < 16; ++cell)
        if (window.pixel(cell) != nullptr) {
            word |= (codes & 7) << (3 * cell);
            codes >>= 3;
        }
    return word;
}

void write_dxt5_alpha(const BlockWindow& window, AlphaContext& alpha, std::uint8_t* output) {
    if (alpha.alpha0 == alpha.alpha1) {
        ++alpha.alpha1;
        alpha.codes = 0;
        alpha.steps = 6;
    }
    // A decoder reads alpha0 > alpha1 as eight steps.
    if ((alpha.alpha1 < alpha.alpha0) == (alpha.steps == 6)) {
        std::swap(alpha.alpha0, alpha.alpha1);
        alpha.codes = mirrored_codes(alpha.codes, alpha.steps);
    }
    output[0] = static_cast<std::uint8_t>(std::clamp(alpha.alpha0, 0, 255));
    output[1] = static_cast<std::uint8_t>(std::clamp(alpha.alpha1, 0, 255));
    const std::uint64_t word = codes_of_cells(window, alpha.codes);
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
