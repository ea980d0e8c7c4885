#include "compression/BlockCompressor.h"

#include "compression/AlphaRamp.h"
#include "compression/BlockContext.h"
#include "compression/ColourLattice.h"
#include "compression/ColourSolver.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace compression {
namespace {

/// Per cell of a block, row by row: the place of its pixel among the gathered ones, or -1.
using CellMap = std::array<int, 16>;

// The part of a level that one block covers.
struct Window {
    const FloatImage& level;
    std::int32_t x;
    std::int32_t y;

    // Null outside the level.
    const float* pixel(int cell) const {
        const std::int32_t column = x + cell % 4;
        const std::int32_t row = y + cell / 4;
        if (column >= level.width || row >= level.height)
            return nullptr;
        return &level.pixels[(static_cast<std::size_t>(row) * static_cast<std::size_t>(level.width) +
                              static_cast<std::size_t>(column)) *
                             4];
    }
};

// Takes the place of every cell from the nearest cell of the level in its row or column, so that the cells beyond an
// edge repeat it. Only where a level is narrower than a block and has no ragged edge beside that.
void repeat_edges(const Window& window, CellMap& cells) {
    const auto whole = [](std::int32_t size) { return size == 1 || size == 2 || size >= 4; };
    const FloatImage& level = window.level;
    if (!whole(level.width) || !whole(level.height) || std::min(level.width, level.height) >= 4)
        return;
    const int columns = std::min(4, level.width - window.x);
    const int rows = std::min(4, level.height - window.y);
    for (int cell = 0; cell < 16; ++cell) {
        const int inside = std::min(cell / 4, rows - 1) * 4 + std::min(cell % 4, columns - 1);
        cells[static_cast<std::size_t>(cell)] = cells[static_cast<std::size_t>(inside)];
    }
}

// Gathers the window's pixels; true if format 1 dropped one for its alpha.
bool gather(const Window& window, const CompressionOptions& options, BlockContext& block, CellMap& cells) {
    cells.fill(-1);
    bool dropped = false;
    for (int cell = 0; cell < 16; ++cell) {
        const float* pixel = window.pixel(cell);
        if (pixel == nullptr)
            continue;
        if (options.g_texture_format == FORMAT_DXT1_ALPHA && pixel[3] <= options.g_binary_alpha_threshold_f) {
            dropped = true;
            continue;
        }
        std::copy(pixel, pixel + 3, block.colours[static_cast<std::size_t>(block.count)].begin());
        cells[static_cast<std::size_t>(cell)] = block.count++;
    }
    return dropped;
}

int colour_mode(std::int32_t format, bool dropped) {
    if (format == FORMAT_DXT3 || format == FORMAT_DXT5)
        return COLOUR_MODE_FOUR;
    return dropped ? COLOUR_MODE_THREE : COLOUR_MODE_FREE;
}

void put_16(std::uint8_t* output, int value) {
    output[0] = static_cast<std::uint8_t>(value & 255);
    output[1] = static_cast<std::uint8_t>(value >> 8 & 255);
}

void write_colour_half(BlockContext& block, const CellMap& cells, std::uint8_t* output) {
    int c0 = pack_565(block.end0);
    int c1 = pack_565(block.end1);
    // Equal colours are made to differ, and every pixel points at the one that stays.
    if (c0 == c1 && block.format == FORMAT_DXT1_ALPHA) {
        c1 = (c1 + 1) & 0xFFFF;
        block.colour_count = 3;
        block.indices.fill(0);
    } else if (c0 == c1) {
        c0 = (c0 + 1) & 0xFFFF;
        block.indices.fill(1);
    }
    // A decoder reads c0 <= c1 as three colours, c0 > c1 as four.
    const bool swapped = (c1 < c0) == (block.colour_count == 3);
    if (swapped)
        std::swap(c0, c1);
    put_16(output, c0);
    put_16(output + 2, c1);
    std::uint32_t word = 0;
    for (std::size_t cell = 16; cell-- > 0;) {
        unsigned code = 3;
        if (cells[cell] >= 0) {
            code = block.indices[static_cast<std::size_t>(cells[cell])];
            if (swapped && (block.colour_count != 3 || code < 2))
                code ^= 1U;
        }
        word = word << 2 | code;
    }
    put_16(output + 4, static_cast<int>(word & 0xFFFF));
    put_16(output + 6, static_cast<int>(word >> 16));
}

void write_dxt3_alpha(const Window& window, std::uint8_t* output) {
    for (int row = 0; row < 4; ++row) {
        int bits = 0;
        for (int column = 3; column >= 0; --column) {
            const float* pixel = window.pixel(row * 4 + column);
            bits = bits << 4 | (pixel == nullptr ? 0 : std::clamp(static_cast<int>(pixel[3] * 15.0f + 0.5f), 0, 15));
        }
        put_16(output + 2 * row, bits);
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

void write_dxt5_alpha(const Window& window, std::uint8_t* output) {
    CellMap cells{};
    AlphaContext alpha;
    for (int cell = 0; cell < 16; ++cell) {
        const float* pixel = window.pixel(cell);
        cells[static_cast<std::size_t>(cell)] = pixel == nullptr ? -1 : alpha.count;
        if (pixel != nullptr)
            alpha.samples[static_cast<std::size_t>(alpha.count++)] = pixel[3];
    }
    solve_alpha(alpha); // a block covers at least one pixel of its level
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
    for (std::size_t cell = 16; cell-- > 0;) {
        int code = 0;
        if (cells[cell] >= 0) {
            code = alpha.codes[static_cast<std::size_t>(cells[cell])];
            if (swapped)
                code = mirrored_code(code, alpha.steps);
        }
        word = word << 3 | static_cast<unsigned>(code);
    }
    for (int byte = 0; byte < 6; ++byte)
        output[2 + byte] = static_cast<std::uint8_t>(word >> (8 * byte) & 255);
}

void encode_block(const Window& window, const CompressionOptions& options, std::uint8_t* output) {
    BlockContext block;
    block.format = options.g_texture_format;
    block.quality = options.g_quality;
    block.rms_error_threshold = options.rms_error_threshold;
    std::copy(options.colour_weights.begin(), options.colour_weights.end(), block.weights.begin());
    CellMap cells{};
    const bool dropped = gather(window, options, block, cells);
    block.colour_mode = colour_mode(block.format, dropped);
    if (block.format == FORMAT_DXT3 || block.format == FORMAT_DXT5) {
        (block.format == FORMAT_DXT3 ? write_dxt3_alpha : write_dxt5_alpha)(window, output);
        output += 8;
    }
    if (block.count > 0)
        solve_colours(block);
    repeat_edges(window, cells);
    write_colour_half(block, cells, output);
}

} // namespace

void encode_blocks(const FloatImage& level, const CompressionOptions& options, std::uint8_t* output) {
    const int block_bytes =
        options.g_texture_format == FORMAT_DXT1 || options.g_texture_format == FORMAT_DXT1_ALPHA ? 8 : 16;
    for (std::int32_t y = 0; y < level.height; y += 4)
        for (std::int32_t x = 0; x < level.width; x += 4) {
            encode_block({level, x, y}, options, output);
            output += block_bytes;
        }
}

} // namespace compression
