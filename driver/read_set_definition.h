#pragma once

#include "driver/records/AtlasSetDefinition.h"

#include <functional>
#include <string>

namespace kst {
class XMLNode;
}

namespace mosaicer {

class TextureIndex;

/// What becomes of a finished set. The reader knows three roads; each gets the definition with all fields final and the
/// output root.
struct SetMakers {
    std::function<void(AtlasSetDefinition&, const std::string&)> create_atlas;
    std::function<void(const AtlasSetDefinition&, const std::string&)> create_split_atlas;
    std::function<void(const AtlasSetDefinition&, const std::string&)> create_texture_set;
};

/// What stays the same over the walk of one definition file.
struct DefinitionWalk {
    TextureIndex& index;
    const std::string& output_root;
    const std::string& pattern; ///< only sets whose full name contains it are made; empty: all
    const SetMakers& makers;
};

/// Reads the element `node` over its parent's settings. A set is made at once; the children of any other element are
/// read in turn, in the order of the file. Throws std::runtime_error for an unknown keyword, a bad rotation or a
/// texture that is not in the index, and lets the makers' exceptions pass; sets made before stay on disk.
///
/// What the walk leaves behind are `position` and `used_by` on the index's textures. The index's root slots are put
/// back at the end of each element, without dropping records: a later set without roots of its own sees the textures of
/// the last walk.
void read_set_definition(const AtlasSetDefinition& parent, const kst::XMLNode& node, const DefinitionWalk& walk);

} // namespace mosaicer
