#include "texture/MipFilters.h"

#include "texture/Sharpen.h"

#include <array>
#include <cstring>
#include <optional>
#include <stdexcept>

namespace mosaicer {
namespace {

enum class Sharpening { none, before_soft, before_hard, after_soft };

struct BitmapFilter {
    MipFilter filter;
    RescaleFilter rescale;
    Sharpening sharpening = Sharpening::none;
};

constexpr std::array bitmap_filters{
    BitmapFilter{MipFilter::BOX, RescaleFilter::box},
    BitmapFilter{MipFilter::BILINEAR, RescaleFilter::bilinear},
    BitmapFilter{MipFilter::BSPLINE, RescaleFilter::bspline},
    BitmapFilter{MipFilter::BICUBIC, RescaleFilter::bicubic},
    BitmapFilter{MipFilter::CATMULLROM, RescaleFilter::catmull_rom},
    BitmapFilter{MipFilter::CATMULLROM_SHARPEN, RescaleFilter::catmull_rom, Sharpening::after_soft},
    BitmapFilter{MipFilter::CATMULLROM_PRESHARPEN, RescaleFilter::catmull_rom, Sharpening::before_soft},
    BitmapFilter{MipFilter::CATMULLROM_PRESHARPEN_HARD, RescaleFilter::catmull_rom, Sharpening::before_hard},
};

const BitmapFilter& bitmap_filter(MipFilter filter) {
    for (const auto& entry : bitmap_filters)
        if (entry.filter == filter)
            return entry;
    throw std::runtime_error("Unrecognized free image filter");
}

/// Takes the first pixel, in stored order, of each block.
Bitmap point_sample(const Bitmap& base, std::int32_t width, std::int32_t height) {
    const auto step_x = static_cast<std::size_t>(base.width() / width);
    const auto step_y = static_cast<std::size_t>(base.height() / height);
    const auto source_pitch = static_cast<std::size_t>(base.width()) * 4;
    Bitmap result(width, height);
    std::uint8_t* target = result.pixels().data();
    for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y) {
        const std::uint8_t* source = base.pixels().data() + y * step_y * source_pitch;
        for (std::size_t x = 0; x < static_cast<std::size_t>(width); ++x, target += 4)
            std::memcpy(target, source + x * step_x * 4, 4);
    }
    return result;
}

/// What the levels are rescaled from: level 0, or a sharpened copy of it.
std::optional<Bitmap> sharpened_base(const Bitmap& base, Sharpening sharpening) {
    switch (sharpening) {
    case Sharpening::before_soft:
        return sharpen(base, soft_sharpen);
    case Sharpening::before_hard:
        return sharpen(base, hard_sharpen);
    default:
        return std::nullopt;
    }
}

Bitmap rescale_level(std::size_t level, const Bitmap& base, const BitmapFilter& filter) {
    Bitmap result = base.rescale(level_side(base.width(), level), level_side(base.height(), level), filter.rescale);
    return filter.sharpening == Sharpening::after_soft ? sharpen(result, soft_sharpen) : std::move(result);
}

} // namespace

void filter_mips(MipChain& chain, MipFilter filter) {
    const std::size_t levels = full_level_count(chain.front().width(), chain.front().height());
    chain.erase(chain.begin() + 1, chain.end());
    if (levels == 1)
        return;
    chain.reserve(levels);
    if (filter == MipFilter::NEAREST_NEIGHBOUR) {
        for (std::size_t level = 1; level < levels; ++level)
            chain.push_back(resample_level(level, chain.front(), filter));
        return;
    }
    // The sharpened copy is the same for every level, so it is made once.
    const BitmapFilter& way = bitmap_filter(filter);
    const std::optional<Bitmap> sharpened = sharpened_base(chain.front(), way.sharpening);
    for (std::size_t level = 1; level < levels; ++level)
        chain.push_back(rescale_level(level, sharpened ? *sharpened : chain.front(), way));
}

Bitmap resample_level(std::size_t level, const Bitmap& base, MipFilter filter) {
    if (filter == MipFilter::NEAREST_NEIGHBOUR)
        return point_sample(base, level_side(base.width(), level), level_side(base.height(), level));
    const BitmapFilter& way = bitmap_filter(filter);
    const std::optional<Bitmap> sharpened = sharpened_base(base, way.sharpening);
    return rescale_level(level, sharpened ? *sharpened : base, way);
}

} // namespace mosaicer
