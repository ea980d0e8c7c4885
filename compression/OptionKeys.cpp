#include "compression/OptionKeys.h"

#include <algorithm>
#include <array>

namespace compression {
namespace {

constexpr std::array keys{
    OptionKey{"g_quality", &CompressionOptions::g_quality, OptionUse::used},
    OptionKey{"g_weighttype", &CompressionOptions::g_weighttype, OptionUse::refused},
    OptionKey{"g_mip_map_type", &CompressionOptions::g_mip_map_type, OptionUse::used},
    OptionKey{"g_specified_mip_maps", &CompressionOptions::g_specified_mip_maps, OptionUse::used},
    OptionKey{"g_mip_filter_type", &CompressionOptions::g_mip_filter_type, OptionUse::used},
    OptionKey{"g_binary_alpha_threshold_f", &CompressionOptions::g_binary_alpha_threshold_f, OptionUse::used},
    OptionKey{"g_texturemap_type", &CompressionOptions::g_texturemap_type, OptionUse::used},
    OptionKey{"g_texture_format", &CompressionOptions::g_texture_format, OptionUse::used},
    OptionKey{"g_inscale_r", &CompressionOptions::g_inscale_r, OptionUse::used},
    OptionKey{"g_inscale_g", &CompressionOptions::g_inscale_g, OptionUse::used},
    OptionKey{"g_inscale_b", &CompressionOptions::g_inscale_b, OptionUse::used},
    OptionKey{"g_inscale_a", &CompressionOptions::g_inscale_a, OptionUse::used},
    OptionKey{"g_inbias_r", &CompressionOptions::g_inbias_r, OptionUse::used},
    OptionKey{"g_inbias_g", &CompressionOptions::g_inbias_g, OptionUse::used},
    OptionKey{"g_inbias_b", &CompressionOptions::g_inbias_b, OptionUse::used},
    OptionKey{"g_inbias_a", &CompressionOptions::g_inbias_a, OptionUse::used},
    OptionKey{"g_outscale_r", &CompressionOptions::g_outscale_r, OptionUse::used},
    OptionKey{"g_outscale_g", &CompressionOptions::g_outscale_g, OptionUse::used},
    OptionKey{"g_outscale_b", &CompressionOptions::g_outscale_b, OptionUse::used},
    OptionKey{"g_outscale_a", &CompressionOptions::g_outscale_a, OptionUse::used},
    OptionKey{"g_outbias_r", &CompressionOptions::g_outbias_r, OptionUse::used},
    OptionKey{"g_outbias_g", &CompressionOptions::g_outbias_g, OptionUse::used},
    OptionKey{"g_outbias_b", &CompressionOptions::g_outbias_b, OptionUse::used},
    OptionKey{"g_outbias_a", &CompressionOptions::g_outbias_a, OptionUse::used},
    OptionKey{"g_b_border", &CompressionOptions::g_b_border, OptionUse::refused},
    OptionKey{"g_b_alpha_border", &CompressionOptions::g_b_alpha_border, OptionUse::refused},
    OptionKey{"g_border_color_r", &CompressionOptions::g_border_color_r, OptionUse::idle},
    OptionKey{"g_border_color_g", &CompressionOptions::g_border_color_g, OptionUse::idle},
    OptionKey{"g_border_color_b", &CompressionOptions::g_border_color_b, OptionUse::idle},
    OptionKey{"g_b_fade_color", &CompressionOptions::g_b_fade_color, OptionUse::refused},
    OptionKey{"g_b_fade_alpha", &CompressionOptions::g_b_fade_alpha, OptionUse::refused},
    OptionKey{"g_fade_to_color_r", &CompressionOptions::g_fade_to_color_r, OptionUse::idle},
    OptionKey{"g_fade_to_color_g", &CompressionOptions::g_fade_to_color_g, OptionUse::idle},
    OptionKey{"g_fade_to_color_b", &CompressionOptions::g_fade_to_color_b, OptionUse::idle},
    OptionKey{"g_fade_to_alpha_f", &CompressionOptions::g_fade_to_alpha_f, OptionUse::idle},
    OptionKey{"g_fade_to_delay", &CompressionOptions::g_fade_to_delay, OptionUse::idle},
    OptionKey{"g_fade_amount_f", &CompressionOptions::g_fade_amount_f, OptionUse::idle},
    OptionKey{"g_user_specified_fading_amounts", &CompressionOptions::g_user_specified_fading_amounts,
              OptionUse::refused},
    OptionKey{"g_sharpen_method", &CompressionOptions::g_sharpen_method, OptionUse::refused},
    OptionKey{"g_unsharp_radius", &CompressionOptions::g_unsharp_radius, OptionUse::idle},
    OptionKey{"g_unsharp_amount", &CompressionOptions::g_unsharp_amount, OptionUse::idle},
    OptionKey{"g_unsharp_threshold", &CompressionOptions::g_unsharp_threshold, OptionUse::idle},
    OptionKey{"g_xsharp_strength_f", &CompressionOptions::g_xsharp_strength_f, OptionUse::idle},
    OptionKey{"g_xsharp_threshold_f", &CompressionOptions::g_xsharp_threshold_f, OptionUse::idle},
    OptionKey{"g_custom_filter_dev", &CompressionOptions::g_custom_filter_dev, OptionUse::idle},
    OptionKey{"g_custom_filter_bias", &CompressionOptions::g_custom_filter_bias, OptionUse::idle},
    OptionKey{"g_enable_filter_gamma", &CompressionOptions::g_enable_filter_gamma, OptionUse::used},
    OptionKey{"g_filter_gamma", &CompressionOptions::g_filter_gamma, OptionUse::used},
    OptionKey{"g_filter_blur", &CompressionOptions::g_filter_blur, OptionUse::used},
    OptionKey{"g_override_filter_width", &CompressionOptions::g_override_filter_width, OptionUse::used},
    OptionKey{"g_filter_width", &CompressionOptions::g_filter_width, OptionUse::used},
    OptionKey{"g_b_binary_alpha", &CompressionOptions::g_b_binary_alpha, OptionUse::refused},
    OptionKey{"g_b_premodulate", &CompressionOptions::g_b_premodulate, OptionUse::refused},
    OptionKey{"g_b_filter_modulate", &CompressionOptions::g_b_filter_modulate, OptionUse::used},
    OptionKey{"g_b_calc_luminance", &CompressionOptions::g_b_calc_luminance, OptionUse::used},
    OptionKey{"g_output_wrap", &CompressionOptions::g_output_wrap, OptionUse::refused},
    OptionKey{"g_b_error_diffusion", &CompressionOptions::g_b_error_diffusion, OptionUse::refused},
    OptionKey{"g_error_diffusion_width", &CompressionOptions::g_error_diffusion_width, OptionUse::idle},
    OptionKey{"g_b_dither_color", &CompressionOptions::g_b_dither_color, OptionUse::idle},
    OptionKey{"g_b_dither_mip0", &CompressionOptions::g_b_dither_mip0, OptionUse::idle},
    OptionKey{"g_normal_map_conversion", &CompressionOptions::g_normal_map_conversion, OptionUse::refused},
    OptionKey{"g_normalmap_cnv", &CompressionOptions::g_normalmap_cnv, OptionUse::idle},
    OptionKey{"g_normalmap_filter", &CompressionOptions::g_normalmap_filter, OptionUse::idle},
    OptionKey{"g_normalmap_alpha", &CompressionOptions::g_normalmap_alpha, OptionUse::idle},
    OptionKey{"g_normalmap_bwrap", &CompressionOptions::g_normalmap_bwrap, OptionUse::idle},
    OptionKey{"g_normalmap_binvertx", &CompressionOptions::g_normalmap_binvertx, OptionUse::idle},
    OptionKey{"g_normalmap_binverty", &CompressionOptions::g_normalmap_binverty, OptionUse::idle},
    OptionKey{"g_normalmap_binvertz", &CompressionOptions::g_normalmap_binvertz, OptionUse::idle},
    OptionKey{"g_normalmap_bAddHeightMap", &CompressionOptions::g_normalmap_bAddHeightMap, OptionUse::idle},
    OptionKey{"g_normalmap_bNormalMapSwapRGB", &CompressionOptions::g_normalmap_bNormalMapSwapRGB, OptionUse::idle},
    OptionKey{"g_normalmap_scale", &CompressionOptions::g_normalmap_scale, OptionUse::idle},
    OptionKey{"g_normalmap_minz", &CompressionOptions::g_normalmap_minz, OptionUse::idle},
};

} // namespace

std::span<const OptionKey> option_keys() {
    return keys;
}

bool options_are_supported(const CompressionOptions& options) {
    static const CompressionOptions defaults;
    return std::all_of(keys.begin(), keys.end(), [&](const OptionKey& key) {
        const auto at_default = [&](auto field) { return options.*field == defaults.*field; };
        return key.use != OptionUse::refused || std::visit(at_default, key.field);
    });
}

} // namespace compression
