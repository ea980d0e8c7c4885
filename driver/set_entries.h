#pragma once

#include "driver/records/AtlasSetDefinition.h"

#include <cstdint>

namespace kst {
class XMLNode;
}

namespace mosaicer {

class TextureIndex;

/// Whether an element of this name is a set: `atlas` or `texture_set`. Any other is a group.
bool is_set_element(const kst::XMLNode& node);

/// What becomes of a set.
enum class SetRoad : std::uint8_t { fixed_atlas, split_atlas, texture_set };

/// Of the set element `node` with its settings read.
SetRoad set_road(const AtlasSetDefinition& set, const kst::XMLNode& node);

/// One child element of a set, read over what the set hands down; `drop_mips` is applied to its size. Throws
/// std::runtime_error for an unknown keyword, a bad rotation or a texture that is not in the index.
SetTextureEntry read_set_entry(const kst::XMLNode& node, const AtlasSetDefinition& set, const TextureIndex& index);

/// Adds the groups of the entry's `used_by` to its texture. A piece that is no number counts as -1.
void add_groups(const kst::XMLNode& node, SourceTexture& texture);

} // namespace mosaicer
