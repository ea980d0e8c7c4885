#pragma once

#include "driver/records/AtlasSetDefinition.h"
#include "packing/AtlasSurface.h"

#include <string>

namespace mosaicer {

/// Where a texture stands on an atlas, in texture coordinates from the atlas's top left: left edge, bottom edge, width
/// and height, each over the atlas's side, pulled in by the entry's sampling offset.
struct TextureMapping {
    float u_off = 0;
    float v_off = 0;
    float u_scale = 0;
    float v_scale = 0;
};

/// The mapping of an entry whose size the bake has set to one copy of its texture with padding. In single precision.
TextureMapping texture_mapping(const AtlasSurface& surface, const AtlasEntry& entry);

/// The text of tdb_atlas_set.xml: a head, a line for each entry in order of placement, an end. Nothing is escaped.
std::string atlas_database_text(const AtlasSurface& surface, const std::string& atlas_name, const std::string& category,
                                bool allow_autoload);

/// Writes that text, in place of a file that was there. Silent about a failure, which leaves no half-written file.
void write_atlas_database(const AtlasSurface& surface, const std::string& path, const std::string& atlas_name,
                          const std::string& category, bool allow_autoload);

/// The three kinds of line of tdb_texture_set.xml, newline included.
std::string texture_set_head(const AtlasSetDefinition& definition);
std::string texture_set_line(const SetTextureEntry& entry);
std::string texture_set_end();

/// The name that the engine finds the entry under: its new name, else its texture's.
const std::string& output_name(const SetTextureEntry& entry);

} // namespace mosaicer
