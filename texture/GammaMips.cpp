#include "texture/GammaMips.h"

#include "texture/PlaneFilter.h"

#include <cassert>
#include <optional>
#include <span>
#include <vector>

namespace mosaicer {
namespace {

constexpr std::size_t channels = 4;

bool is_constant(std::span<const std::uint8_t> pixels, std::size_t channel) {
    for (std::size_t i = channel; i < pixels.size(); i += channels)
        if (pixels[i] != pixels[channel])
            return false;
    return true;
}

/// An earlier channel with the same bytes throughout, as a grey picture has.
std::optional<std::size_t> earlier_twin(std::span<const std::uint8_t> pixels, std::size_t channel) {
    for (std::size_t twin = 0; twin < channel; ++twin) {
        std::size_t i = 0;
        while (i < pixels.size() && pixels[i + twin] == pixels[i + channel])
            i += channels;
        if (i >= pixels.size())
            return twin;
    }
    return std::nullopt;
}

void fill_channel(Bitmap& level, std::size_t channel, std::uint8_t byte) {
    const auto pixels = level.pixels();
    for (std::size_t i = channel; i < pixels.size(); i += channels)
        pixels[i] = byte;
}

void copy_channel(Bitmap& level, std::size_t from, std::size_t to) {
    const auto pixels = level.pixels();
    for (std::size_t i = 0; i < pixels.size(); i += channels)
        pixels[i + to] = pixels[i + from];
}

} // namespace

void filter_mips_gamma(MipChain& chain, MipFilter filter, compression::SimdLevel simd) {
    assert(mip_way(filter) == MipWay::linear_light);
    const std::size_t level_count = full_level_count(chain.front().width(), chain.front().height());
    chain.erase(chain.begin() + 1, chain.end());
    chain.reserve(level_count); // so that `base` stays where it is
    const Bitmap& base = chain.front();

    std::vector<FilterKernel> kernels;
    std::vector<LevelFilter> filters;
    for (std::size_t level = 1; level < level_count; ++level) {
        const std::int32_t width = level_side(base.width(), level);
        const std::int32_t height = level_side(base.height(), level);
        kernels.push_back(mip_kernel(filter, level));
        filters.emplace_back(base, width, height, kernels.back());
        chain.emplace_back(width, height);
    }

    const std::span<Bitmap> levels = std::span(chain).subspan(1);
    PlaneFilter plane_filter(base, filters, downsample_kernels(simd));
    for (std::size_t channel = 0; channel < channels; ++channel) {
        const auto pixels = chain.front().pixels();
        // Every window over equal samples adds the same numbers in the same order.
        if (is_constant(pixels, channel)) {
            for (std::size_t i = 0; i < levels.size(); ++i)
                fill_channel(levels[i], channel, filter_constant(pixels[channel], kernels[i]));
        } else if (const auto twin = earlier_twin(pixels, channel)) {
            for (Bitmap& level : levels)
                copy_channel(level, *twin, channel);
        } else {
            plane_filter.run(channel, levels);
        }
    }
}

} // namespace mosaicer
