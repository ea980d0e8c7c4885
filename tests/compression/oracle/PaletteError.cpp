#include "tests/compression/oracle/Searches.h"

#include "compression/PaletteError.h"

namespace compression::oracle {

namespace {

double entry_error(const BlockContext& block, std::size_t pixel, const std::array<int, 3>& entry) {
    double error = 0;
    for (std::size_t c = 0; c < 3; ++c) {
        const double difference = block.weights[c] * (block.colours[pixel][c] * 255.0 - entry[c]);
        error += difference * difference;
    }
    return error;
}

} // namespace

double evaluate_palette(BlockContext& block) {
    const Palette palette = make_palette(block.end0, block.end1, block.colour_count, block.format);
    double sum = 0;
    for (std::size_t pixel = 0; pixel < static_cast<std::size_t>(block.count); ++pixel) {
        double best = entry_error(block, pixel, palette.entries[0]);
        block.indices[pixel] = 0;
        for (std::size_t entry = 1; entry < static_cast<std::size_t>(palette.size); ++entry) {
            const double error = entry_error(block, pixel, palette.entries[entry]);
            if (error < best) {
                best = error;
                block.indices[pixel] = static_cast<std::uint8_t>(entry);
            }
        }
        sum += best;
    }
    return sum;
}

} // namespace compression::oracle
