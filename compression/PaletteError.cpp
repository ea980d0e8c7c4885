#include "compression/PaletteError.h"

#include "compression/ColourLattice.h"

namespace compression {

Palette make_palette(const std::array<int, 3>& end0, const std::array<int, 3>& end1, int colour_count, int format) {
    Palette palette;
    palette.size = colour_count == 3 && format != 0 ? 3 : 4;
    for (std::size_t c = 0; c < 3; ++c) {
        const int p0 = expand_bits(end0[c], channel_bits[c]);
        const int p1 = expand_bits(end1[c], channel_bits[c]);
        const bool three = colour_count == 3;
        palette.entries[0][c] = p0;
        palette.entries[1][c] = p1;
        palette.entries[2][c] = three ? (p0 + p1) / 2 : (2 * p0 + p1) / 3;
        palette.entries[3][c] = three ? 0 : (p0 + 2 * p1) / 3;
    }
    return palette;
}

namespace {

// By channel and pixel, 255 times the colours.
using ByteRows = std::array<std::array<double, 16>, 3>;

// An entry's error to every pixel, the channels added in order.
void add_entry_errors(const BlockContext& block, const ByteRows& bytes, const std::array<int, 3>& entry,
                      std::array<double, 16>& errors) {
    for (std::size_t i = 0; i < 16; ++i) {
        const double r = block.weights[0] * (bytes[0][i] - entry[0]);
        const double g = block.weights[1] * (bytes[1][i] - entry[1]);
        const double b = block.weights[2] * (bytes[2][i] - entry[2]);
        errors[i] = r * r + g * g + b * b;
    }
}

} // namespace

double evaluate_palette(BlockContext& block) {
    const Palette palette = make_palette(block.end0, block.end1, block.colour_count, block.format);
    ByteRows bytes;
    for (std::size_t c = 0; c < 3; ++c)
        for (std::size_t i = 0; i < 16; ++i)
            bytes[c][i] = block.colours[i][c] * 255.0;
    std::array<double, 16> best;
    std::array<std::int64_t, 16> indices{}; // as wide as the errors, so that both select in the same registers
    add_entry_errors(block, bytes, palette.entries[0], best);
    for (std::size_t entry = 1; entry < static_cast<std::size_t>(palette.size); ++entry) {
        std::array<double, 16> errors;
        add_entry_errors(block, bytes, palette.entries[entry], errors);
        for (std::size_t i = 0; i < 16; ++i) {
            const bool nearer = errors[i] < best[i];
            indices[i] = nearer ? static_cast<std::int64_t>(entry) : indices[i];
            best[i] = nearer ? errors[i] : best[i];
        }
    }
    double sum = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(block.count); ++i) {
        sum += best[i];
        block.indices[i] = static_cast<std::uint8_t>(indices[i]);
    }
    return sum;
}

} // namespace compression
