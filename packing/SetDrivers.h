#pragma once

#include "driver/records/AtlasSetDefinition.h"
#include "packing/BakeAtlas.h"

#include <string>

namespace mosaicer {

/// Makes one atlas, textures placed one texel at a time in list order, and bakes it under the set's name.
///
/// A negative padding of a texture is completed from the set's, in the definition itself. A texture that doesn't fit is
/// told on `Report.errors`; what was placed before it is baked. Throws what `AtlasSurface::insert` and `bake` throw.
void create_atlas(AtlasSetDefinition& definition, const std::string& output_root, const BakeAtlas& bake);

/// Makes as many atlases as it takes, by the set's strategies, and bakes them as NAME/atlas0, NAME/atlas1 and so on.
///
/// Textures leave the list of the atlas in work, one at a time, until the rest can be placed at the required usage;
/// they are what the next atlas is made from. An atlas number may stay without an atlas: `bake` is then called with an
/// empty surface.
///
/// Throws std::runtime_error for FURTHEST without position data, for BY_PRECOOK without precooking, for textures that
/// can never be placed (named, each with the reason), and what `AtlasSurface::insert`, the removal strategies and
/// `bake` throw.
void create_split_atlas(const AtlasSetDefinition& definition, const std::string& output_root, const BakeAtlas& bake);

} // namespace mosaicer
