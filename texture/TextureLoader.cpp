#include "texture/TextureLoader.h"

#include "driver/records/Report.h"
#include "driver/records/RunFlags.h"
#include "texture/GammaMips.h"
#include "texture/ImageReader.h"
#include "texture/MipFilters.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <utility>

namespace mosaicer {
namespace {

MipFilter filter_for_missing_levels(MipFilter filter, const std::string& path) {
    if (filter != MipFilter::KEEP)
        return filter;
    *Report.warnings << "KEEP specified as mip filter for " << path
                     << ", but no mips were present. BOX_GAMMA used instead." << std::endl;
    return MipFilter::BOX_GAMMA;
}

void make_levels(MipChain& mips, MipFilter filter) {
    if (mip_way(filter) == MipWay::linear_light)
        filter_mips_gamma(mips, filter);
    else
        filter_mips(mips, filter);
}

} // namespace

std::size_t levels_to_drop(std::int32_t width, std::int32_t height, std::int32_t wanted_width,
                           std::int32_t wanted_height, const std::string& path) {
    if ((wanted_width > 0 && wanted_height < 0) || (wanted_width < 0 && wanted_height > 0))
        throw std::runtime_error("Texture resizing must be specified for both width and height; " + path);
    if (wanted_width <= 0 || wanted_height <= 0)
        return 0;
    if (width / wanted_width != height / wanted_height)
        throw std::runtime_error("Texture resizing must maintain aspect ratio of original image; " + path);
    if (width / wanted_width == 0)
        throw std::runtime_error("Only texture downsizing is allowed; " + path);

    // One side that fits is enough: a forced 256 by 200 of a 256 squared picture changes nothing.
    std::size_t dropped = 0;
    while (width != wanted_width && height != wanted_height) {
        if (width == 1 && height == 1)
            throw std::runtime_error("Unable to resize texture " + path + " to specified width/height");
        width = std::max(width >> 1, 1);
        height = std::max(height >> 1, 1);
        ++dropped;
    }
    return dropped;
}

std::array<float, 4> average_colour(const Bitmap& bitmap) {
    // The sums round as they grow, so their order is part of the result: pixel after pixel. Four sums that do not wait
    // for each other keep the processor as busy as vectors would.
    float blue = 0;
    float green = 0;
    float red = 0;
    float alpha = 0;
    const std::uint8_t* pixel = bitmap.pixels().data();
    const std::uint8_t* const end = pixel + bitmap.pixels().size();
    for (; pixel != end; pixel += 4) {
        blue += static_cast<float>(pixel[0]);
        green += static_cast<float>(pixel[1]);
        red += static_cast<float>(pixel[2]);
        alpha += static_cast<float>(pixel[3]);
    }
    const std::size_t count = bitmap.pixels().size() / 4;
    const float factor = 1.0f / (static_cast<float>(count) * 255.0f);
    return {red * factor, green * factor, blue * factor, alpha * factor};
}

LoadedTexture load_image(const TextureImage& image, const LoadOptions& options) {
    LoadedTexture texture;
    if (image.is_cube)
        return texture;

    const bool with_mips = options.with_mips || options.forced_width > 0 || options.forced_height > 0;
    std::optional<ImageFile> file = read_image_file(image.file_path, with_mips ? FileLevels::all : FileLevels::first);
    // A volume texture shows as a cube without pixels, because the header's parser knows no volumes.
    if (!file || file->mips.empty())
        throw std::runtime_error("Failure loading texture " + image.file_path);
    MipChain& mips = texture.mips = std::move(file->mips);
    texture.width = mips.front().width();
    texture.height = mips.front().height();

    const MipFilter filter = RunFlags.draft_mode ? MipFilter::BOX : options.mip_filter;
    const bool filtered =
        with_mips && (filter != MipFilter::KEEP || mips.size() != full_level_count(texture.width, texture.height));
    const MipFilter used_filter = filtered ? filter_for_missing_levels(filter, image.file_path) : filter;
    const std::size_t dropped =
        levels_to_drop(texture.width, texture.height, options.forced_width, options.forced_height, image.file_path);
    if (filtered && options.top_level_only && dropped == 0)
        mips.erase(mips.begin() + 1, mips.end());
    else if (filtered)
        make_levels(mips, used_filter);
    mips.erase(mips.begin(), mips.begin() + static_cast<std::ptrdiff_t>(dropped));

    texture.width = mips.front().width();
    texture.height = mips.front().height();
    if (options.rotation != 0)
        for (Bitmap& level : mips)
            level = level.rotate(options.rotation);
    // A negative turn moves the pixels alone: packing has not exchanged the sides for it either.
    if (options.rotation == 90 || options.rotation == 270)
        std::swap(texture.width, texture.height);
    texture.average_colour = average_colour(mips.front());
    return texture;
}

} // namespace mosaicer
