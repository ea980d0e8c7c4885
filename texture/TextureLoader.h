#pragma once

#include "driver/records/Keywords.h"
#include "driver/records/SourceTexture.h"
#include "texture/MipChain.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace mosaicer {

/// The pixels of one texture, ready for use. They live here and not on the record, so that one texture can be placed
/// twice, and a load leaves nothing behind.
struct LoadedTexture {
    std::int32_t width = 0;                ///< texels of level 0 as it stands: forced size and rotation applied
    std::int32_t height = 0;               ///< texels of level 0 as it stands: forced size and rotation applied
    std::array<float, 4> average_colour{}; ///< red, green, blue, alpha of level 0, each 0 to 1
    MipChain mips;                         ///< empty for a cube map, whose pixels are never read
};

struct LoadOptions {
    bool with_mips = true; ///< false: level 0 alone, unless a forced size asks for more
    /// The caller has no use for levels below the top one: those that would have to be filtered may be missing from the
    /// result. All else, errors and warnings included, is as without it.
    bool top_level_only = false;
    std::int32_t forced_width = -1;
    std::int32_t forced_height = -1; ///< sizes of 0 or less: the file's own; else a level of the full chain
    std::int32_t rotation = 0;       ///< clockwise, in degrees; the size follows 90 and 270 alone
    MipFilter mip_filter = MipFilter::KAISER_GAMMA;
};

/// Reads the file, makes its levels by the filter (BOX in draft mode), drops levels down to the forced size, and
/// rotates. KEEP takes the file's levels if they are complete; otherwise it warns on Report.warnings and goes on as
/// BOX_GAMMA.
///
/// Throws std::runtime_error, each text with the file's path: "Failure loading texture ", "Texture resizing must be
/// specified for both width and height; ", "Texture resizing must maintain aspect ratio of original image; ", "Only
/// texture downsizing is allowed; ", "Unable to resize texture " PATH " to specified width/height".
LoadedTexture load_image(const TextureImage& image, const LoadOptions& options);

/// How many levels of a full chain stand above the one of a forced size; 0 if either forced side is 0, or both are
/// below. Throws the texts of load_image about resizing.
std::size_t levels_to_drop(std::int32_t width, std::int32_t height, std::int32_t wanted_width,
                           std::int32_t wanted_height, const std::string& path);

/// Red, green, blue, alpha, 0 to 1: single-precision sums over the pixels in stored order.
std::array<float, 4> average_colour(const Bitmap& bitmap);

} // namespace mosaicer
