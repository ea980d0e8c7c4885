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

template <int quality>
Blocks encode_ours(const Picture& picture, std::int32_t format) {
    Blocks blocks = make_blocks(picture, format);
    compression::CompressionOptions options;
    options.g_quality = quality;
    options.g_texture_format = format;
    compression::encode_blocks(picture.floats, options, blocks.data());
    return blocks;
}

template <int fit>
Blocks encode_squish(const Picture& picture, std::int32_t format) {
    Blocks blocks = make_blocks(picture, format);
    const int flag = format == compression::FORMAT_DXT1   ? squish::kDxt1
                     : format == compression::FORMAT_DXT3 ? squish::kDxt3
                                                          : squish::kDxt5;
    // libsquish writes transparent DXT1 pixels unless all are opaque.
    compression::LevelImage image = picture.bytes;
    if (format == compression::FORMAT_DXT1)
        for (std::size_t i = 3; i < image.pixels.size(); i += 4)
            image.pixels[i] = 255;
    squish::CompressImage(image.pixels.data(), image.width, image.height, blocks.data(), flag | fit);
    return blocks;
}

template <int mode>
Blocks encode_stb(const Picture& picture, std::int32_t format) {
    Blocks blocks = make_blocks(picture, format);
    const bool alpha = format != compression::FORMAT_DXT1;
    std::array<std::uint8_t, 64> tile{};
    std::uint8_t* output = blocks.data();
    const auto pitch = static_cast<std::size_t>(picture.bytes.width) * 4;
    for (int y = 0; y < picture.bytes.height; y += 4)
        for (int x = 0; x < picture.bytes.width; x += 4, output += alpha ? 16 : 8) {
            for (std::size_t row = 0; row < 4; ++row)
                std::memcpy(&tile[row * 16],
                            &picture.bytes
                                 .pixels[(static_cast<std::size_t>(y) + row) * pitch + static_cast<std::size_t>(x) * 4],
                            16);
            stb_compress_dxt_block(output, tile.data(), alpha ? 1 : 0, mode);
        }
    return blocks;
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
