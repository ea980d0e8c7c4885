#include "texture/ImageOutput.h"

#include "compression/compress_mip_chain.h"
#include "driver/records/Report.h"
#include "driver/records/RunFlags.h"
#include "texture/LevelConversion.h"
#include "texture/OutputFile.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace mosaicer {
namespace {

/// How the compression library is asked for a texel format.
struct CompressedForm {
    TexelFormat format;
    std::int32_t library_format;
    LevelAlpha alpha;
};
constexpr std::array compressed_forms{
    CompressedForm{TexelFormat::AF_A8R8G8B8, compression::FORMAT_A8R8G8B8, LevelAlpha::as_it_stands},
    // Opaque, so that the encoder never spends a block's fourth colour on transparency.
    CompressedForm{TexelFormat::AF_DXT1, compression::FORMAT_DXT1, LevelAlpha::opaque},
    CompressedForm{TexelFormat::AF_DXT3, compression::FORMAT_DXT3, LevelAlpha::as_it_stands},
    CompressedForm{TexelFormat::AF_DXT5, compression::FORMAT_DXT5, LevelAlpha::as_it_stands},
    CompressedForm{TexelFormat::AF_BUMP_A8L8, compression::FORMAT_A8L8, LevelAlpha::as_it_stands},
    CompressedForm{TexelFormat::AF_BUMP_DXT5, compression::FORMAT_DXT5, LevelAlpha::as_it_stands},
};

/// Replaces every pixel, a word of alpha, red, green, blue from the top byte down, by `move` of it.
template <class Move>
void move_channels(MipChain& chain, Move move) {
    for (Bitmap& level : chain) {
        const std::span<std::uint8_t> bytes = level.pixels();
        for (std::size_t i = 0; i < bytes.size(); i += 4) {
            std::uint32_t pixel;
            std::memcpy(&pixel, &bytes[i], 4);
            pixel = move(pixel);
            std::memcpy(&bytes[i], &pixel, 4);
        }
    }
}

void prepare_bump_channels(MipChain& chain, TexelFormat format) {
    if (format == TexelFormat::AF_BUMP_DXT5) {
        *Report.verbose << "Compressed format specified for image containing bumpmaps; r->a, r->0 and b->0"
                        << std::endl;
        if (chain.empty())
            throw std::runtime_error("Zero-size mipchain");
        move_channels(chain, [](std::uint32_t p) { return ((p & 0x00FF0000u) << 8) | (p & 0x0000FF00u); });
    }
    if (format == TexelFormat::AF_BUMP_A8L8)
        move_channels(
            chain, [](std::uint32_t p) { return ((p & 0x0000FF00u) << 16) | (p & 0x00FFFF00u) | ((p >> 16) & 0xFFu); });
}

std::int32_t write_piece(const void* bytes, std::size_t count, const compression::LevelRecord* /*level*/, void* user) {
    auto& file = *static_cast<OutputFile*>(user);
    file.write(bytes, count);
    *Report.debug << "*";
    // Flushed, so that a full disk stops the work at the level that met it.
    return file.flush() ? 0 : -1;
}

void save_dds(const MipChain& chain, TexelFormat texel_format, const std::string& path) {
    *Report.verbose << "Using dxt lib for DXT compression" << std::endl;
    *Report.debug << "Converting atlas to dxt image... ";
    const auto form = std::ranges::find(compressed_forms, texel_format, &CompressedForm::format);
    if (form == compressed_forms.end())
        throw std::runtime_error("Unhandled texture format in save of texture");

    compression::CompressionOptions options;
    options.g_quality = RunFlags.draft_mode ? 0x44 : 0x48;
    options.g_mip_map_type = 31; // the levels as they are given
    options.g_specified_mip_maps = static_cast<std::int32_t>(chain.size());
    options.g_texture_format = form->library_format;

    OutputFile file(path);
    std::vector<compression::LevelImage> levels;
    levels.reserve(chain.size());
    for (const Bitmap& level : chain)
        levels.push_back(to_level_image(level, form->alpha));
    *Report.debug << "done." << std::endl << "Compressing using dxt lib... ";

    const std::int32_t result = compression::compress_mip_chain(levels, options, write_piece, &file);
    if (result != compression::OK || !file.close()) {
        file.discard();
        throw std::runtime_error("Error saving image to file " + path);
    }
    *Report.debug << " done." << std::endl;
}

std::optional<BitmapFormat> bitmap_format(TextureFileFormat format) {
    switch (format) {
    case TextureFileFormat::TGA:
        return BitmapFormat::tga;
    case TextureFileFormat::PNG:
        return BitmapFormat::png;
    case TextureFileFormat::BMP:
        return BitmapFormat::bmp;
    case TextureFileFormat::DDS:
        break;
    }
    return std::nullopt;
}

} // namespace

bool save_image(MipChain& chain, TexelFormat texel_format, TextureFileFormat file_format, const std::string& path) {
    prepare_bump_channels(chain, texel_format);
    if (file_format == TextureFileFormat::DDS) {
        save_dds(chain, texel_format, path);
        return true;
    }
    if (texel_format != TexelFormat::AF_A8R8G8B8)
        throw std::runtime_error("Invalid combination of file format and texel format specified");
    const std::optional<BitmapFormat> format = bitmap_format(file_format);
    if (!format)
        throw std::runtime_error("Unhandled image format");
    return !chain.empty() && chain.front().save(path, *format);
}

void create_directories(const std::string& path) {
    std::string host_path = path;
    std::ranges::replace(host_path, '\\', '/');
    std::error_code ignored;
    for (std::size_t slash = host_path.find('/', 1); slash != std::string::npos; slash = host_path.find('/', slash + 1))
        std::filesystem::create_directory(host_path.substr(0, slash), ignored);
    std::filesystem::create_directory(host_path, ignored);
}

} // namespace mosaicer
