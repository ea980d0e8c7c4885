#pragma once

#include "texture/Bitmap.h"
#include "tools/kst/report/RunRecord.h"

#include <cstdint>
#include <vector>

namespace kst::tool::report {

/// Texels around a texture, on each side.
struct Padding {
    std::int32_t u = 0;
    std::int32_t v = 0;

    bool operator==(const Padding&) const = default;
};

/// Texels of an atlas by what covers them; what is left of the picture is free.
struct AtlasAreas {
    std::int64_t textures = 0;
    std::int64_t padding = 0;
    std::int64_t total = 0;
};

/// The padding of each texture, measured on the picture: databases do not tell it. Baking repeats a texture's outermost
/// texels into its padding, so the frame goes on as long as they repeat. A neighbour of odd size may share one column or
/// row of it, so the longer of the two sides counts.
///
/// A plain texture on a plain ground seems to go on for ever; so nothing is believed above the value that most textures
/// of the atlas show on both sides, nor above 64. `lossy`: block compression has mixed a little of the neighbours in, and some
/// difference is allowed. A tiled direction has no padding.
std::vector<Padding> measure_paddings(const std::vector<PlacedTexture>& textures, const mosaicer::Bitmap& picture,
                                      bool lossy);

/// What a texture covers without its padding: a tiled one repeats across the whole atlas.
Rectangle covered_rectangle(const PlacedTexture& texture, std::int32_t width, std::int32_t height);

/// `paddings` belong to `textures`. A texel that two textures cover counts once, and as texture rather than padding.
AtlasAreas measure_areas(const std::vector<PlacedTexture>& textures, const std::vector<Padding>& paddings,
                         std::int32_t width, std::int32_t height);

} // namespace kst::tool::report
