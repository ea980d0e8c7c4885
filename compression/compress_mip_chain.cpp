#include "compression/compress_mip_chain.h"

#include "compression/BlockCompressor.h"
#include "compression/ByteFloat.h"
#include "compression/DdsHeader.h"
#include "compression/LevelSize.h"
#include "compression/LevelSource.h"
#include "compression/OptionKeys.h"
#include "compression/Profile.h"
#include "compression/Resampling.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

namespace compression {
namespace {

std::string& profile_path() {
    static std::string path;
    return path;
}

bool is_filter_index(std::int32_t index) {
    return index >= 0 && static_cast<std::size_t>(index) < resampling_filters().size();
}

std::int32_t check_options(const CompressionOptions& options) {
    const bool known_mip_type =
        options.g_mip_map_type >= MIP_MAPS_GENERATE && options.g_mip_map_type <= MIP_MAPS_REGENERATE;
    const bool known_rescaling = options.rescale_mode == RESCALE_OFF || options.rescale_mode == RESCALE_BY_FACTOR;
    if (!options_are_supported(options) || !known_mip_type || !known_rescaling ||
        !is_filter_index(options.g_mip_filter_type) || !is_filter_index(options.rescale_filter))
        return UNSUPPORTED_OPTION;
    return level_byte_count(options.g_texture_format, 1, 1) > 0 ? OK : UNSUPPORTED_FILE;
}

std::int32_t check_levels(std::span<const LevelImage> levels) {
    const auto has_pixels = [](const LevelImage& level) {
        return level.width >= 1 && level.height >= 1 &&
               level.pixels.size() ==
                   static_cast<std::size_t>(level.width) * static_cast<std::size_t>(level.height) * 4;
    };
    return !levels.empty() && std::all_of(levels.begin(), levels.end(), has_pixels) ? OK : EMPTY_IMAGE;
}

bool side_fits_blocks(std::int32_t side) {
    return side == 1 || side == 2 || side % 4 == 0;
}

std::int32_t check_block_sides(std::int32_t format, std::int32_t width, std::int32_t height) {
    const bool fits = !is_block_format(format) || (side_fits_blocks(width) && side_fits_blocks(height));
    return fits ? OK : IMAGE_NOT_MULT4;
}

// Formats 7 and 16 have two forms: from the bytes of a level that no option touches, and from floats. They agree
// because byte / 255 comes back as the same byte.

/// Whole pixels as numbers, red and blue exchanged: a form that compilers turn into wide instructions.
void move_a8r8g8b8(const std::vector<std::uint8_t>& pixels, std::uint8_t* output) {
    for (std::size_t i = 0; i < pixels.size(); i += 4) {
        std::uint32_t pixel;
        std::memcpy(&pixel, &pixels[i], 4);
        pixel = (pixel & 0xFF00FF00) | (pixel >> 16 & 0xFF) | (pixel & 0xFF) << 16;
        std::memcpy(output + i, &pixel, 4);
    }
}

void move_a8l8(const std::vector<std::uint8_t>& pixels, std::uint8_t* output) {
    for (std::size_t i = 0; i < pixels.size(); i += 4, output += 2) {
        output[0] = pixels[i];
        output[1] = pixels[i + 3];
    }
}

void encode_a8r8g8b8(const std::vector<float>& pixels, std::uint8_t* output) {
    for (std::size_t i = 0; i < pixels.size(); i += 4) {
        output[i] = float_to_byte(pixels[i + 2]);
        output[i + 1] = float_to_byte(pixels[i + 1]);
        output[i + 2] = float_to_byte(pixels[i]);
        output[i + 3] = float_to_byte(pixels[i + 3]);
    }
}

void encode_a8l8(const std::vector<float>& pixels, std::uint8_t* output) {
    for (std::size_t i = 0; i < pixels.size(); i += 4, output += 2) {
        output[0] = float_to_byte(pixels[i]);
        output[1] = float_to_byte(pixels[i + 3]);
    }
}

/// Puts the luminance of two channels into the red one, where A8L8 takes it from.
void set_luminance(FloatImage& image) {
    for (std::size_t i = 0; i + 3 < image.pixels.size(); i += 4)
        image.pixels[i] = 0.299f * image.pixels[i] + 0.701f * image.pixels[i + 1];
}

void encode_floats(FloatImage& level, const CompressionOptions& options, std::uint8_t* output) {
    if (is_block_format(options.g_texture_format))
        return encode_blocks(level, options, output);
    if (options.g_texture_format == FORMAT_A8R8G8B8)
        return encode_a8r8g8b8(level.pixels, output);
    if (options.g_b_calc_luminance)
        set_luminance(level);
    encode_a8l8(level.pixels, output);
}

void encode_level(LevelSource& source, std::size_t level, const CompressionOptions& options, std::uint8_t* output) {
    const LevelImage* bytes = source.untouched(level);
    if (bytes != nullptr && options.g_texture_format == FORMAT_A8R8G8B8)
        return move_a8r8g8b8(bytes->pixels, output);
    if (bytes != nullptr && options.g_texture_format == FORMAT_A8L8 && !options.g_b_calc_luminance)
        return move_a8l8(bytes->pixels, output);
    FloatImage floats = source.prepare(level);
    encode_floats(floats, options, output);
}

std::int32_t write_head(const LevelSource& source, std::int32_t format, WriteCallback write, void* user) {
    if (const std::int32_t result = write(dds_magic.data(), dds_magic.size(), nullptr, user); result != 0)
        return result;
    const DdsHeaderBytes header =
        encode_dds_header(make_dds_header(format, source.width(0), source.height(0), source.level_count()));
    return write(header.data(), header.size(), nullptr, user);
}

std::int32_t write_levels(LevelSource& source, const CompressionOptions& options, WriteCallback write, void* user) {
    const auto byte_count = [&](std::size_t level) {
        return level_byte_count(options.g_texture_format, source.width(level), source.height(level));
    };
    // Level 0 is the largest, and every encoder fills its level whole.
    const auto bytes = std::make_unique_for_overwrite<std::uint8_t[]>(std::max<std::size_t>(byte_count(0), 1));
    for (std::size_t level = 0; level < source.level_count(); ++level) {
        encode_level(source, level, options, bytes.get());
        const LevelRecord record{static_cast<std::int32_t>(level), source.width(level), source.height(level)};
        if (const std::int32_t result = write(bytes.get(), byte_count(level), &record, user); result != 0)
            return result;
    }
    return OK;
}

} // namespace

void set_profile_path(std::string path) {
    profile_path() = std::move(path);
}

std::int32_t compress_mip_chain(std::span<const LevelImage> levels, CompressionOptions& options, WriteCallback write,
                                void* user) {
    CompressionOptions effective = options;
    if (!profile_path().empty())
        if (const std::int32_t code = read_profile_file(profile_path(), effective); code != OK)
            return code;
    if (const std::int32_t code = check_levels(levels); code != OK)
        return code;
    // A side that no block format takes may still be rescaled to one that it takes.
    if (effective.rescale_mode == RESCALE_OFF)
        if (const std::int32_t code = check_block_sides(effective.g_texture_format, levels[0].width, levels[0].height);
            code != OK)
            return code;
    if (const std::int32_t code = check_options(effective); code != OK)
        return code;
    options.g_texturemap_type = effective.g_texturemap_type = 0;

    LevelSource source(levels, effective);
    if (const std::int32_t code = check_block_sides(effective.g_texture_format, source.width(0), source.height(0));
        code != OK)
        return code;
    if (const std::int32_t result = write_head(source, effective.g_texture_format, write, user); result != 0)
        return result;
    return write_levels(source, effective, write, user);
}

} // namespace compression
