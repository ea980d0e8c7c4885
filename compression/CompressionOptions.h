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

/// Values of `g_mip_map_type`.
constexpr std::int32_t MIP_MAPS_GENERATE = 30;   ///< the levels that were not supplied are made from level 0
constexpr std::int32_t MIP_MAPS_SUPPLIED = 31;   ///< the levels are used as they stand
constexpr std::int32_t MIP_MAPS_NONE = 32;       ///< level 0 alone
constexpr std::int32_t MIP_MAPS_REGENERATE = 33; ///< every level but 0 is made from level 0

/// Values of `rescale_mode`.
constexpr std::int32_t RESCALE_OFF = 0;
constexpr std::int32_t RESCALE_BY_FACTOR = 1; ///< each side times its factor, rounded, held in 1 to its limit

/// The named options of the library; a fresh record holds the defaults. Fields with `g_` are the keys of a profile,
/// which OptionKeys.h lists; the others have no key. An option that the library knows by name only makes
/// compress_mip_chain return UNSUPPORTED_OPTION when it is switched on; OptionKeys.h tells which.
struct CompressionOptions {
    // Encoding.
    std::int32_t g_quality = 71;        ///< 68 the fastest to 72 the best
    float rms_error_threshold = 400.0f; ///< block error above which quality 72 searches exhaustively
    std::int32_t g_weighttype = 0;      ///< 0: `colour_weights` as they stand
    std::array<float, 3> colour_weights{0.3086f, 0.6094f, 0.0820f}; ///< red, green, blue
    std::int32_t g_mip_map_type = MIP_MAPS_GENERATE;
    std::int32_t g_specified_mip_maps = 0;   ///< number of levels to be made; 0: down to 1 by 1
    std::int32_t g_mip_filter_type = 2;      ///< index into `resampling_filters`
    float g_binary_alpha_threshold_f = 0.5f; ///< alpha at or below which a pixel of format 1 is transparent
    std::int32_t g_texturemap_type = 0;      ///< 0: plain two-dimensional texture, the only kind
    std::int32_t g_texture_format = FORMAT_DXT1;

    // Scale and bias: value * scale + bias, channels in 0.0 to 1.0; input before levels are made, output before
    // encoding.
    float g_inscale_r = 1.0f;
    float g_inscale_g = 1.0f;
    float g_inscale_b = 1.0f;
    float g_inscale_a = 1.0f;
    float g_inbias_r = 0.0f;
    float g_inbias_g = 0.0f;
    float g_inbias_b = 0.0f;
    float g_inbias_a = 0.0f;
    float g_outscale_r = 1.0f;
    float g_outscale_g = 1.0f;
    float g_outscale_b = 1.0f;
    float g_outscale_a = 1.0f;
    float g_outbias_r = 0.0f;
    float g_outbias_g = 0.0f;
    float g_outbias_b = 0.0f;
    float g_outbias_a = 0.0f;

    // Borders.
    bool g_b_border = false;
    bool g_b_alpha_border = false;
    std::int32_t g_border_color_r = 0;
    std::int32_t g_border_color_g = 0;
    std::int32_t g_border_color_b = 0;

    // Fades over the levels.
    bool g_b_fade_color = false;
    bool g_b_fade_alpha = false;
    std::int32_t g_fade_to_color_r = 0;
    std::int32_t g_fade_to_color_g = 0;
    std::int32_t g_fade_to_color_b = 0;
    float g_fade_to_alpha_f = 0.0f;
    std::int32_t g_fade_to_delay = 0;
    float g_fade_amount_f = 0.15f;
    bool g_user_specified_fading_amounts = false;

    // Sharpening.
    std::int32_t g_sharpen_method = 0;
    float g_unsharp_radius = 5.0f;
    float g_unsharp_amount = 0.5f;
    float g_unsharp_threshold = 0.0f;
    float g_xsharp_strength_f = 1.0f;
    float g_xsharp_threshold_f = 1.0f;
    float g_custom_filter_dev = 3.0f;
    float g_custom_filter_bias = 0.0f;

    // Filtering of generated levels.
    bool g_enable_filter_gamma = false;
    float g_filter_gamma = 2.2f;
    float g_filter_blur = 1.0f; ///< in place of the filter's own under `g_override_filter_width`
    bool g_override_filter_width = false;
    float g_filter_width = 10.0f; ///< support in place of the filter's own, likewise

    // Pixel handling.
    bool g_b_binary_alpha = false;
    bool g_b_premodulate = false;
    bool g_b_filter_modulate = false; ///< resampling weighs each colour by its pixel's alpha
    bool g_b_calc_luminance = false;  ///< luminance of A8L8: 0.299 red + 0.701 green, in place of red
    bool g_output_wrap = false;

    // Error diffusion.
    bool g_b_error_diffusion = false;
    std::int32_t g_error_diffusion_width = 1;

    // Dither: for 16-bit formats, so without effect on the formats that are written.
    bool g_b_dither_color = false;
    bool g_b_dither_mip0 = false;

    // Normal maps.
    bool g_normal_map_conversion = false;
    std::int32_t g_normalmap_cnv = 0;
    std::int32_t g_normalmap_filter = 0;
    std::int32_t g_normalmap_alpha = 0;
    bool g_normalmap_bwrap = false;
    bool g_normalmap_binvertx = false;
    bool g_normalmap_binverty = false;
    bool g_normalmap_binvertz = false;
    bool g_normalmap_bAddHeightMap = false;
    bool g_normalmap_bNormalMapSwapRGB = false;
    float g_normalmap_scale = 1.0f;
    float g_normalmap_minz = 0.0f;

    // Rescaling of the input, before any other step. No keys.
    std::int32_t rescale_mode = RESCALE_OFF;
    std::int32_t rescale_filter = 4; ///< index into `resampling_filters`
    float rescale_factor_x = 1.0f;
    float rescale_factor_y = 1.0f;
    float rescale_limit_x = 4096.0f; ///< pixels
    float rescale_limit_y = 4096.0f;
};

} // namespace compression
