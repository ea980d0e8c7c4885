#include "bench/compression/Encoders.h"

#include "compression/BlockCompressor.h"

#include <array>
#include <cstring>
#include <squish.h>

#define STB_DXT_IMPLEMENTATION // needs <cstring> above it
#include <stb_dxt.h>

namespace mosaicer::bench {
namespace {

using Blocks = std::vector<std::uint8_t>;

Blocks make_blocks(const Picture& picture, std::int32_t format) {
    const auto count = static_cast<std::size_t>(picture.bytes.width / 4 * (picture.bytes.height / 4));
    return Blocks(count * (format == compression::FORMAT_DXT1 ? 8 : 16));
}

int squish_format(std::int32_t format) {
    if (format == compression::FORMAT_DXT1)
        return squish::kDxt1;
    return format == compression::FORMAT_DXT3 ? squish::kDxt3 : squish::kDxt5;
}

template <int quality>
Blocks encode_ours(const Picture& picture, std::int32_t format) {
    Blocks blocks = make_blocks(picture, format);
    compression::CompressionOptions options;
    options.g_quality = quality;
    options.g_texture_format = format;
    compression::encode_blocks(picture.floats, options, blocks.data());
    return blocks;
}

// Gives each block's 64 bytes to an encoder of one block: libraries on one thread, like ours.
template <typename EncodeTile>
Blocks encode_tiles(const Picture& picture, std::int32_t format, const EncodeTile& encode_tile) {
    Blocks blocks = make_blocks(picture, format);
    std::array<std::uint8_t, 64> tile{};
    std::uint8_t* output = blocks.data();
    const auto pitch = static_cast<std::size_t>(picture.bytes.width) * 4;
    for (std::size_t y = 0; y < static_cast<std::size_t>(picture.bytes.height); y += 4)
        for (std::size_t x = 0; x < static_cast<std::size_t>(picture.bytes.width); x += 4) {
            for (std::size_t row = 0; row < 4; ++row)
                std::memcpy(&tile[row * 16], &picture.bytes.pixels[(y + row) * pitch + x * 4], 16);
            // Without alpha the libraries would still make transparent pixels of it.
            if (format == compression::FORMAT_DXT1)
                for (std::size_t i = 3; i < tile.size(); i += 4)
                    tile[i] = 255;
            encode_tile(tile.data(), output);
            output += format == compression::FORMAT_DXT1 ? 8 : 16;
        }
    return blocks;
}

template <int fit>
Blocks encode_squish(const Picture& picture, std::int32_t format) {
    return encode_tiles(picture, format, [&](const std::uint8_t* tile, std::uint8_t* output) {
        squish::CompressMasked(tile, 0xFFFF, output, squish_format(format) | fit);
    });
}

template <int mode>
Blocks encode_stb(const Picture& picture, std::int32_t format) {
    return encode_tiles(picture, format, [&](const std::uint8_t* tile, std::uint8_t* output) {
        stb_compress_dxt_block(output, tile, format == compression::FORMAT_DXT1 ? 0 : 1, mode);
    });
}

constexpr std::array table{
    Encoder{"quality 68", encode_ours<68>},
    Encoder{"quality 69", encode_ours<69>},
    Encoder{"quality 70", encode_ours<70>},
    Encoder{"quality 71", encode_ours<71>},
    Encoder{"quality 72", encode_ours<72>},
    Encoder{"squish range", encode_squish<squish::kColourRangeFit>},
    Encoder{"squish cluster", encode_squish<squish::kColourClusterFit>},
    Encoder{"squish iterative", encode_squish<squish::kColourIterativeClusterFit>},
    Encoder{"stb normal", encode_stb<STB_DXT_NORMAL>, false},
    Encoder{"stb high", encode_stb<STB_DXT_HIGHQUAL>, false},
};

} // namespace

std::span<const Encoder> encoders() {
    return table;
}

} // namespace mosaicer::bench
