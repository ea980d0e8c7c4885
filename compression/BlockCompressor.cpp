#include "compression/BlockCompressor.h"

#include "compression/AlphaHalves.h"
#include "compression/BlockContext.h"
#include "compression/BlockWindow.h"
#include "compression/ColourLattice.h"
#include "compression/ColourSolver.h"
#include "compression/FastFitBatch.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace compression {
namespace {

/// Per cell of a block, row by row: the place of its pixel among the gathered ones, or -1.
using CellMap = std::array<int, 16>;

// Takes the place of every cell from the nearest cell of the level in its row or column, so that the cells beyond an
// edge repeat it. Only where a level is narrower than a block and has no ragged edge beside that.
void repeat_edges(const BlockWindow& window, CellMap& cells) {
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
bool gather(const BlockWindow& window, const CompressionOptions& options, BlockContext& block, CellMap& cells) {
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

// The two colours of a block and its cells' codes, 2 bits each, cell 0 lowest.
struct ColourHalf {
    int c0 = 0;
    int c1 = 0;
    int colour_count = 4;
    std::uint32_t codes = 0;
    std::uint32_t unused = 0; ///< code 3 in each cell without a pixel
};

void write_colour_half(ColourHalf half, std::int32_t format, std::uint8_t* output) {
    constexpr std::uint32_t every_1 = 0x55555555U;
    // Equal colours are made to differ, and every pixel points at the one that stays.
    if (half.c0 == half.c1 && format == FORMAT_DXT1_ALPHA) {
        half.c1 = (half.c1 + 1) & 0xFFFF;
        half.colour_count = 3;
        half.codes = 0;
    } else if (half.c0 == half.c1) {
        half.c0 = (half.c0 + 1) & 0xFFFF;
        half.codes = every_1;
    }
    // A decoder reads c0 <= c1 as three colours, c0 > c1 as four. Codes 0 and 1 change places with the ends, and of
    // four colours also 2 and 3.
    if ((half.c1 < half.c0) == (half.colour_count == 3)) {
        std::swap(half.c0, half.c1);
        half.codes ^= half.colour_count == 3 ? ~(half.codes >> 1) & every_1 : every_1;
    }
    half.codes |= half.unused;
    put_16(output, half.c0);
    put_16(output + 2, half.c1);
    put_16(output + 4, static_cast<int>(half.codes & 0xFFFF));
    put_16(output + 6, static_cast<int>(half.codes >> 16));
}

ColourHalf colour_half(const BlockContext& block, const CellMap& cells) {
    ColourHalf half{pack_565(block.end0), pack_565(block.end1), block.colour_count, 0, 0};
    for (std::size_t cell = 16; cell-- > 0;) {
        const bool used = cells[cell] >= 0;
        half.codes = half.codes << 2 | (used ? block.indices[static_cast<std::size_t>(cells[cell])] : 0U);
        half.unused = half.unused << 2 | (used ? 0U : 3U);
    }
    return half;
}

// The colour half of a block.
void encode_block(const BlockWindow& window, const CompressionOptions& options, std::uint8_t* output) {
    BlockContext block;
    block.format = options.g_texture_format;
    block.quality = options.g_quality;
    block.rms_error_threshold = options.rms_error_threshold;
    std::copy(options.colour_weights.begin(), options.colour_weights.end(), block.weights.begin());
    CellMap cells{};
    const bool dropped = gather(window, options, block, cells);
    block.colour_mode = colour_mode(block.format, dropped);
    if (block.count > 0)
        solve_colours(block);
    repeat_edges(window, cells);
    write_colour_half(colour_half(block, cells), block.format, output);
}

int bytes_of_block(std::int32_t format) {
    return format == FORMAT_DXT1 || format == FORMAT_DXT1_ALPHA ? 8 : 16;
}

// The colour halves of whole blocks side by side, at the fastest quality. Not for one-bit alpha, whose blocks may lack
// pixels.
void encode_fast_batch(const BlockWindow& first, std::size_t blocks, const CompressionOptions& options,
                       FastBatch& batch, std::uint8_t* output) {
    const std::size_t pitch = static_cast<std::size_t>(first.level.width) * 4;
    const float* origin = first.pixel(0);
    for (std::size_t lane = 0; lane < batch_lanes; ++lane)
        for (std::size_t i = 0; i < 16; ++i) {
            const float* pixel = origin + (lane < blocks ? lane * 16 : 0) + i / 4 * pitch + i % 4 * 4;
            for (std::size_t c = 0; c < 3; ++c)
                batch.colours[c][i][lane] = pixel[c];
        }
    FastBatchResult result;
    fast_batch_kernels().back().solve(batch, result);
    for (std::size_t lane = 0; lane < blocks; ++lane) {
        write_colour_half({result.word0[lane], result.word1[lane], result.colour_count[lane], result.indices[lane], 0},
                          options.g_texture_format, output);
        output += bytes_of_block(options.g_texture_format);
    }
}

} // namespace

void encode_blocks(const FloatImage& level, const CompressionOptions& options, std::uint8_t* output) {
    const std::int32_t format = options.g_texture_format;
    const int block_bytes = bytes_of_block(format);
    FastBatch batch;
    batch.weights = options.colour_weights;
    batch.may_choose = batch.offers_black = format == FORMAT_DXT1;
    const bool batches = options.g_quality <= 68 && format != FORMAT_DXT1_ALPHA;
    for (std::int32_t y = 0; y < level.height; y += 4) {
        if (block_bytes == 16)
            write_alpha_halves(level, y, format, output);
        for (std::int32_t x = 0; x < level.width;) {
            const BlockWindow window{level, x, y};
            const std::int32_t whole =
                batches && level.height - y >= 4 ? std::min((level.width - x) / 4, std::int32_t{batch_lanes}) : 0;
            std::uint8_t* const colours = output + block_bytes - 8;
            if (whole > 0)
                encode_fast_batch(window, static_cast<std::size_t>(whole), options, batch, colours);
            else
                encode_block(window, options, colours);
            const std::int32_t done = std::max(whole, 1);
            x += 4 * done;
            output += done * block_bytes;
        }
    }
}

} // namespace compression
