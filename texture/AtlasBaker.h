#pragma once

#include "packing/AtlasSurface.h"
#include "packing/BakeAtlas.h"
#include "texture/TextureLoader.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace mosaicer {

/// The textures of one atlas, one for each entry in order, and the plain mean of their average colours.
struct AtlasTextures {
    std::vector<LoadedTexture> textures;
    std::array<float, 3> mean_colour{}; ///< red, green, blue, 0 to 1
};

/// Loads what each entry places, with its own forced size, rotation and filter in the options. Throws what load_image
/// throws. A texture that two entries place is loaded for each of them.
AtlasTextures load_textures(std::span<const AtlasEntry> entries, LoadOptions options);

/// Turns a packed surface into an image file, its database and, if asked for, a BMP beside it. Nothing is written for
/// an empty surface. This is a packing driver's BakeAtlas.
///
/// Changes the surface: its size shrinks for good, and each entry ends with the size of one copy of its texture with
/// padding. Of the pixels the textures of this one atlas are in memory together, each until it has been copied, and
/// the atlas's own levels. Progress goes to Report.debug and Report.verbose, a line of figures to Report.statistics.
///
/// Throws what load_image and save_image throw; files that were finished before stay. A TGA, PNG or BMP file or a
/// database that cannot be written is passed over in silence.
void bake_atlas(AtlasSurface& surface, const BakeRequest& request);

} // namespace mosaicer
