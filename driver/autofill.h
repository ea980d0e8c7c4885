#pragma once

#include "driver/records/AtlasSetDefinition.h"

namespace mosaicer {

class TextureIndex;

/// An entry without a texture that asks for what its set hands down.
SetTextureEntry entry_of_set(const AtlasSetDefinition& set);

/// Adds an entry for every indexed texture whose path begins with the set's `autofill` directory below one of the
/// roots, in ascending order of name. The test is on the text of the path: "maps/a" also takes what lies in "maps/ab".
/// Builds the index. Reads each root's lightmap_positions.xml in that directory, if there is one, into the textures'
/// `position` and sets `has_positions`. Throws what the XML reader throws.
void fill_from_directory(AtlasSetDefinition& set, TextureIndex& index);

} // namespace mosaicer
