#include "compression/DdsFormats.h"

#include "compression/DdsBlocks.h"
#include "compression/DdsHeader.h"
#include "compression/DdsPixels.h"
#include "compression/LevelSize.h"

#include <algorithm>
#include <optional>

namespace compression {
namespace {

struct CodeRow {
    std::uint32_t code;
    DdsFormat format;
};

constexpr DdsFormat block_format(std::uint32_t code, std::uint32_t library_format, std::int32_t channels,
                                 std::int32_t block_bytes, DdsDecoder decode) {
    return {.d3d_format = code,
            .library_format = library_format,
            .channels = channels,
            .block_bytes = block_bytes,
            .decode = decode};
}

constexpr CodeRow block_row(std::uint32_t code, std::uint32_t library_format, std::int32_t channels,
                            std::int32_t block_bytes, DdsDecoder decode) {
    return {code, block_format(code, library_format, channels, block_bytes, decode)};
}

/// A float format: the code in the file is the format's number itself.
constexpr CodeRow float_row(std::uint32_t code, std::uint32_t library_format, std::int32_t channels,
                            std::int32_t bits_per_channel, DdsDecoder decode) {
    return {code, DdsFormat{.d3d_format = code,
                            .library_format = library_format,
                            .channels = channels,
                            .bits_per_channel = bits_per_channel,
                            .bits_per_pixel = channels * bits_per_channel,
                            .decode = decode}};
}

/// Formats with a four character code, which decides alone.
constexpr std::array code_rows{
    block_row(four_cc('D', 'X', 'T', '1'), 0, 4, 8, decode_dxt1),
    block_row(four_cc('D', 'X', 'T', '2'), 2, 4, 16, decode_dxt3),
    block_row(four_cc('D', 'X', 'T', '3'), 2, 4, 16, decode_dxt3),
    block_row(four_cc('D', 'X', 'T', '4'), 3, 4, 16, decode_dxt5),
    block_row(four_cc('D', 'X', 'T', '5'), 3, 4, 16, decode_dxt5),
    block_row(four_cc('A', 'T', 'I', '2'), 29, 3, 16, decode_ati2),
    float_row(111, 23, 1, 16, decode_r16f),
    float_row(112, 28, 2, 16, decode_g16r16f),
    float_row(113, 19, 4, 16, decode_a16b16g16r16f),
    float_row(114, 17, 1, 32, decode_r32f),
    float_row(116, 18, 4, 32, decode_a32b32g32r32f),
};

using Word = std::optional<std::uint32_t>;

/// A format without a code: an absent word fits anything.
struct MaskRow {
    std::uint32_t flags;
    Word bits;
    Word red;
    Word green;
    Word blue;
    Word alpha;
    DdsFormat format;

    bool fits(const std::array<std::uint32_t, 8>& pixel_format) const {
        const auto same = [](const Word& wanted, std::uint32_t word) { return !wanted || *wanted == word; };
        return flags == pixel_format[1] && same(bits, pixel_format[3]) && same(red, pixel_format[4]) &&
               same(green, pixel_format[5]) && same(blue, pixel_format[6]) && same(alpha, pixel_format[7]);
    }
};

constexpr DdsFormat plain(std::uint32_t d3d_format, std::uint32_t library_format, std::int32_t channels,
                          std::int32_t bits_per_pixel, DdsDecoder decode, std::int32_t palette_entries = 0) {
    return {.d3d_format = d3d_format,
            .library_format = library_format,
            .channels = channels,
            .palette_entries = palette_entries,
            .bits_per_pixel = bits_per_pixel,
            .decode = decode};
}

constexpr Word any;

/// The first row that fits decides. The first number of each format is its published D3DFORMAT number.
constexpr std::array mask_rows{
    MaskRow{0x41, 32, any, any, any, 0xFF000000, plain(21, 7, 4, 32, decode_a8r8g8b8)},
    MaskRow{0x40, 32, 0xFFFF, 0xFFFF0000, any, any, plain(34, 27, 4, 32, decode_g16r16)},
    MaskRow{0x40, 32, 0xFF0000, 0xFF00, 0xFF, any, plain(22, 25, 4, 32, decode_a8r8g8b8)}, // X8R8G8B8
    MaskRow{0x40, 24, any, any, any, any, plain(20, 8, 3, 24, decode_r8g8b8)},
    MaskRow{0x40, 16, any, 0x3E0, any, any, plain(24, 9, 3, 16, decode_x1r5g5b5)},
    MaskRow{0x40, 16, any, 0x7E0, any, any, plain(23, 6, 3, 16, decode_r5g6b5)},
    MaskRow{0x41, 16, any, any, any, 0x8000, plain(25, 5, 4, 16, decode_a1r5g5b5)},
    MaskRow{0x41, 16, any, any, any, 0xF000, plain(26, 4, 4, 16, decode_a4r4g4b4)},
    MaskRow{0x20, any, any, any, any, any, plain(41, 21, 4, 8, decode_palette_8, 256)},
    MaskRow{0x8, any, any, any, any, any, plain(41, 22, 4, 4, decode_palette_4, 16)},
    MaskRow{0x80000, 32, 0xFFFF, 0xFFFF0000, any, any, plain(64, 26, 2, 32, decode_v16u16)},
    MaskRow{0x80000, any, any, any, any, any, plain(60, 11, 2, 16, decode_v8u8)},
    MaskRow{0x2, any, any, any, any, any, plain(28, 13, 1, 8, decode_a8)},
    MaskRow{0x20001, any, any, any, any, any, plain(51, 16, 2, 16, decode_a8l8)},
    MaskRow{0x20000, any, any, any, any, any, plain(50, 20, 1, 8, decode_l8)},
};

} // namespace

std::size_t DdsFormat::stored_byte_count(std::int32_t width, std::int32_t height) const {
    if (block_bytes != 0)
        return block_count(width, height) * static_cast<std::size_t>(block_bytes);
    const std::size_t row_bits = static_cast<std::size_t>(width) * static_cast<std::size_t>(bits_per_pixel);
    return (row_bits + 7) / 8 * static_cast<std::size_t>(height);
}

DdsFormat identify_dds_format(const std::array<std::uint32_t, 8>& pixel_format) {
    const std::uint32_t code = pixel_format[2];
    if (code != 0) {
        const auto row =
            std::find_if(code_rows.begin(), code_rows.end(), [&](const auto& r) { return r.code == code; });
        return row != code_rows.end() ? row->format : DdsFormat{.d3d_format = code};
    }
    const auto row =
        std::find_if(mask_rows.begin(), mask_rows.end(), [&](const auto& r) { return r.fits(pixel_format); });
    return row != mask_rows.end() ? row->format : DdsFormat{};
}

} // namespace compression
