#pragma once

#include <array>
#include <cstdint>

namespace compression {

/// Values of `g_texture_format` that the library writes.
constexpr std::int32_t FORMAT_DXT1 = 0;
constexpr std::int32_t FORMAT_DXT1_ALPHA = 1; ///< DXT1 with one-bit alpha
constexpr std::int32_t FORMAT_DXT3 = 2;
constexpr std::int32_t FORMAT_DXT5 = 3;
constexpr std::int32_t FORMAT_A8R8G8B8 = 7;
constexpr std::int32_t FORMAT_A8L8 = 16;

/// The named options of the library; a fresh record holds the defaults.
struct CompressionOptions {
    std::int32_t g_quality = 71;        ///< 68 the fastest to 72 the best
    float rms_error_threshold = 400.0f; ///< block error above which quality 72 searches exhaustively
    std::int32_t g_weighttype = 0;
    std::array<float, 3> colour_weights{0.3086f, 0.6094f, 0.0820f}; ///< red, green, blue
    std::int32_t g_mip_map_type = 30; ///< 30 generate, 31 as supplied, 32 one level, 33 regenerate from level 0
    std::int32_t g_specified_mip_maps = 0;
    std::int32_t g_mip_filter_type = 2;
    float g_binary_alpha_threshold_f = 0.5f; ///< alpha at or below which a pixel of format 1 is transparent
    std::int32_t g_texturemap_type = 0;
    std::int32_t g_texture_format = FORMAT_DXT1;
};

} // namespace compression
