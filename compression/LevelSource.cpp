#include "compression/LevelSource.h"

#include "compression/ByteFloat.h"
#include "compression/LevelSize.h"
#include "compression/Resampling.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace compression {
namespace {

/// Value * scale + bias for red, green, blue, alpha.
struct ChannelCurve {
    std::array<float, 4> scale;
    std::array<float, 4> bias;

    bool neutral() const {
        return std::all_of(scale.begin(), scale.end(), [](float s) { return s == 1.0f; }) &&
               std::all_of(bias.begin(), bias.end(), [](float b) { return b == 0.0f; });
    }

    void apply(FloatImage& image) const {
        if (neutral())
            return;
        for (std::size_t i = 0; i < image.pixels.size(); ++i)
            image.pixels[i] = image.pixels[i] * scale[i % 4] + bias[i % 4];
    }
};

ChannelCurve input_curve(const CompressionOptions& o) {
    return {{o.g_inscale_r, o.g_inscale_g, o.g_inscale_b, o.g_inscale_a},
            {o.g_inbias_r, o.g_inbias_g, o.g_inbias_b, o.g_inbias_a}};
}

ChannelCurve output_curve(const CompressionOptions& o) {
    return {{o.g_outscale_r, o.g_outscale_g, o.g_outscale_b, o.g_outscale_a},
            {o.g_outbias_r, o.g_outbias_g, o.g_outbias_b, o.g_outbias_a}};
}

/// No side of an image that can be made is longer; keeps the factor of a hostile profile from asking for more.
constexpr float longest_side = 65536.0f;

std::int32_t rescaled_side(std::int32_t side, float factor, float limit) {
    const float wanted = std::round(static_cast<float>(side) * factor);
    const float held = std::min({wanted, limit, longest_side});
    return held >= 1.0f ? static_cast<std::int32_t>(held) : 1;
}

FloatImage to_floats(const LevelImage& level) {
    FloatImage image{level.width, level.height, std::vector<float>(level.pixels.size())};
    std::transform(level.pixels.begin(), level.pixels.end(), image.pixels.begin(), byte_to_float);
    return image;
}

std::size_t wanted_level_count(std::size_t supplied, std::int32_t width, std::int32_t height,
                               const CompressionOptions& options) {
    const std::int32_t full = full_level_count(width, height);
    const std::int32_t asked = options.g_specified_mip_maps;
    const auto made = static_cast<std::size_t>(asked > 0 ? std::min(asked, full) : full);
    switch (options.g_mip_map_type) {
    case MIP_MAPS_NONE:
        return 1;
    case MIP_MAPS_GENERATE:
        return std::max(supplied, made);
    case MIP_MAPS_REGENERATE:
        return made;
    default:
        return supplied;
    }
}

} // namespace

LevelSource::LevelSource(std::span<const LevelImage> supplied, const CompressionOptions& options)
    : supplied_(supplied), options_(options), width_(supplied[0].width), height_(supplied[0].height) {
    if (options.rescale_mode != RESCALE_OFF) {
        width_ = rescaled_side(width_, options.rescale_factor_x, options.rescale_limit_x);
        height_ = rescaled_side(height_, options.rescale_factor_y, options.rescale_limit_y);
    }
    level_count_ = wanted_level_count(supplied.size(), width_, height_, options);
}

std::int32_t LevelSource::width(std::size_t level) const {
    return level < 31 ? std::max(1, width_ >> level) : 1;
}

std::int32_t LevelSource::height(std::size_t level) const {
    return level < 31 ? std::max(1, height_ >> level) : 1;
}

LevelSource::Origin LevelSource::origin(std::size_t level) const {
    if (level >= supplied_.size() || (level > 0 && options_.g_mip_map_type == MIP_MAPS_REGENERATE))
        return Origin::made;
    const bool fits = supplied_[level].width == width(level) && supplied_[level].height == height(level);
    return fits ? Origin::supplied : Origin::resized;
}

const LevelImage* LevelSource::untouched(std::size_t level) const {
    const bool neutral = input_curve(options_).neutral() && output_curve(options_).neutral();
    return neutral && origin(level) == Origin::supplied ? &supplied_[level] : nullptr;
}

FloatImage LevelSource::prepare_input(std::size_t level) const {
    FloatImage image = to_floats(supplied_[level]);
    if (origin(level) == Origin::resized) {
        FloatImage fitted{width(level), height(level), {}};
        if (level == 0)
            resample_image(image, fitted, /*gamma=*/0.0f, options_.rescale_filter);
        else
            resample_image(image, fitted, mip_filter(options_), mip_settings(options_));
        image = std::move(fitted);
    }
    input_curve(options_).apply(image);
    return image;
}

FloatImage LevelSource::prepare_made(std::size_t level) {
    const ResampleSettings settings = mip_settings(options_);
    if (base_.pixels.empty()) {
        base_ = prepare_input(0);
        raise_for_filter(base_, settings.gamma);
    }
    FloatImage image{width(level), height(level), {}};
    resample_image(base_, image, mip_filter(options_), {.gamma = 0.0f, .weigh_by_alpha = settings.weigh_by_alpha});
    raise_after_filter(image, settings.gamma);
    return image;
}

FloatImage LevelSource::prepare(std::size_t level) {
    FloatImage image = origin(level) == Origin::made ? prepare_made(level) : prepare_input(level);
    output_curve(options_).apply(image);
    return image;
}

} // namespace compression
