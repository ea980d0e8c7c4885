#include "tests/compression/BlockBuilders.h"

#include <algorithm>
#include <cmath>

namespace compression {

FloatImage flat_level(std::int32_t width, std::int32_t height, const Rgba& pixel) {
    FloatImage level{width, height, std::vector<float>(static_cast<std::size_t>(width * height) * 4)};
    for (int i = 0; i < width * height; ++i)
        set_pixel(level, i, pixel);
    return level;
}

void set_pixel(FloatImage& level, int place, const Rgba& pixel) {
    std::transform(pixel.begin(), pixel.end(), level.pixels.begin() + place * 4,
                   [](std::uint8_t byte) { return static_cast<float>(byte) / 255.0f; });
}

Bytes to_bytes(const FloatImage& level) {
    Bytes bytes;
    for (const float value : level.pixels)
        bytes.push_back(static_cast<std::uint8_t>(std::lround(value * 255.0f)));
    return bytes;
}

Bytes encode(const FloatImage& level, std::int32_t format, int quality) {
    CompressionOptions options;
    options.g_texture_format = format;
    options.g_quality = quality;
    const bool dxt1 = format == FORMAT_DXT1 || format == FORMAT_DXT1_ALPHA;
    // Exactly sized, so that the sanitizer sees one byte too many.
    Bytes blocks(static_cast<std::size_t>((level.width + 3) / 4 * ((level.height + 3) / 4) * (dxt1 ? 8 : 16)));
    encode_blocks(level, options, blocks.data());
    return blocks;
}

namespace {

using Tile = std::array<Rgba, 16>;

Rgba unpack(int word) {
    const int r = word >> 11;
    const int g = word >> 5 & 63;
    const int b = word & 31;
    return {static_cast<std::uint8_t>(r << 3 | r >> 2), static_cast<std::uint8_t>(g << 2 | g >> 4),
            static_cast<std::uint8_t>(b << 3 | b >> 2), 255};
}

void decode_colours(const std::uint8_t* half, bool four_always, Tile& tile) {
    const int c0 = half[0] | half[1] << 8;
    const int c1 = half[2] | half[3] << 8;
    const bool four = four_always || c0 > c1;
    std::array<Rgba, 4> palette{unpack(c0), unpack(c1), Rgba{0, 0, 0, 255}, Rgba{0, 0, 0, 0}};
    for (std::size_t c = 0; c < 3; ++c) {
        const int a = palette[0][c];
        const int b = palette[1][c];
        palette[2][c] = static_cast<std::uint8_t>(four ? (2 * a + b) / 3 : (a + b) / 2);
        palette[3][c] = static_cast<std::uint8_t>(four ? (a + 2 * b) / 3 : 0);
    }
    palette[3][3] = four ? 255 : 0;
    for (std::size_t i = 0; i < 16; ++i)
        tile[i] = palette[static_cast<std::size_t>(half[4 + i / 4] >> (i % 4 * 2) & 3)];
}

int ramp_value(int alpha0, int alpha1, int code) {
    if (code < 2)
        return code == 0 ? alpha0 : alpha1;
    if (alpha0 > alpha1)
        return ((8 - code) * alpha0 + (code - 1) * alpha1 + 3) / 7;
    if (code >= 6)
        return code == 6 ? 0 : 255;
    return ((6 - code) * alpha0 + (code - 1) * alpha1 + 2) / 5;
}

void decode_alpha(const std::uint8_t* half, bool ramp, Tile& tile) {
    std::uint64_t word = 0;
    for (int byte = 7; byte >= 0; --byte)
        word = word << 8 | half[byte];
    for (std::size_t i = 0; i < 16; ++i) {
        const int code = static_cast<int>(ramp ? word >> (16 + 3 * i) & 7 : word >> (4 * i) & 15);
        tile[i][3] = static_cast<std::uint8_t>(ramp ? ramp_value(half[0], half[1], code) : code * 17);
    }
}

} // namespace

Bytes decode(const Bytes& blocks, std::int32_t format, std::int32_t width, std::int32_t height) {
    const bool dxt1 = format == FORMAT_DXT1 || format == FORMAT_DXT1_ALPHA;
    Bytes pixels(static_cast<std::size_t>(width * height) * 4);
    const std::uint8_t* block = blocks.data();
    for (std::int32_t y = 0; y < height; y += 4)
        for (std::int32_t x = 0; x < width; x += 4, block += dxt1 ? 8 : 16) {
            Tile tile{};
            decode_colours(block + (dxt1 ? 0 : 8), !dxt1, tile);
            if (!dxt1)
                decode_alpha(block, format == FORMAT_DXT5, tile);
            else if (format == FORMAT_DXT1)
                for (Rgba& pixel : tile)
                    pixel[3] = 255;
            for (int cell = 0; cell < 16; ++cell)
                if (x + cell % 4 < width && y + cell / 4 < height)
                    std::copy(tile[static_cast<std::size_t>(cell)].begin(), tile[static_cast<std::size_t>(cell)].end(),
                              pixels.begin() + ((y + cell / 4) * width + x + cell % 4) * 4);
        }
    return pixels;
}

} // namespace compression
