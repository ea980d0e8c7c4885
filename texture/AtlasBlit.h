#pragma once

#include "packing/AtlasSurface.h"
#include "texture/Bitmap.h"
#include "texture/TextureLoader.h"

#include <array>
#include <cstdint>
#include <span>

namespace mosaicer {

/// The levels of an atlas, all pixels of one colour (red, green, blue, 0 to 1) with alpha 0. Level L has the surface's
/// sides shifted right by L, at least 1.
MipChain filled_chain(std::int32_t width, std::int32_t height, std::int32_t levels, const std::array<float, 3>& colour);

enum class CornerTags { none, red };

/// Copies each level of the texture into the atlas level of the same number, at the entry's place inside its padding:
/// repeated if the entry's inner size is a multiple of the texture's, else stretched. Levels that one of the chains
/// lacks are left alone. Red corner tags go on level 0 of each copy.
///
/// Afterwards the entry's size is that of one copy of the texture with padding.
void blit_entry(MipChain& atlas, AtlasEntry& entry, const LoadedTexture& texture, CornerTags tags);

/// Repeats the outermost pixels of each entry into its padding, on every level, entries in order. The padding of a
/// level is the top level's over the level's scale, rounded down, so it ends at the level where that gives 0.
void dilate(MipChain& atlas, std::span<const AtlasEntry> entries);

} // namespace mosaicer
