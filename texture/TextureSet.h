#pragma once

#include "driver/records/AtlasSetDefinition.h"
#include "texture/TextureLoader.h"

#include <cstdint>
#include <string>

namespace mosaicer {

/// Makes an image of each texture of the set, and tdb_texture_set.xml, in the folder of the set's name below
/// `output_root`. Paddings, rotations and sampling offsets have no effect here.
///
/// Throws what load_image and write_texture_image throw; the database then ends behind the line of the texture at
/// fault. A database that cannot be written is passed over in silence.
void create_texture_set(const AtlasSetDefinition& definition, const std::string& output_root);

/// Writes one texture. `target` is the path without extension. Levels from `nr_mips` on are dropped from `loaded`; 0
/// keeps all. A cube map's file is copied byte for byte, with its own extension.
///
/// Throws what save_image throws, and std::runtime_error "Failure reading cube texture " + the source's path or
/// "Failure writing cube texture " + the target with its extension. A TGA, PNG or BMP file that cannot be written is
/// passed over in silence.
void write_texture_image(const TextureImage& image, LoadedTexture& loaded, const std::string& target,
                         TextureFileFormat file_format, TexelFormat texel_format, std::int32_t nr_mips);

} // namespace mosaicer
