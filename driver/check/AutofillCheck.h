#pragma once

namespace kst {
class XMLNode;
}

namespace mosaicer {

struct AtlasSetDefinition;
class Findings;
class TextureIndex;

/// fill_from_directory, with what it passes over told at the set's element: a directory that is not there or holds no
/// texture, textures of directories that merely begin alike, and records of lightmap_positions.xml, at their own lines,
/// that place no texture.
void fill_and_check(AtlasSetDefinition& set, TextureIndex& index, const kst::XMLNode& node, Findings& findings);

} // namespace mosaicer
