#pragma once

#include "driver/records/AtlasSetDefinition.h"

#include <string>
#include <vector>

namespace mosaicer {

/// The files of one atlas that holds a texture: its image, its database and, as RunFlags say, its extra bitmap.
std::vector<std::string> atlas_outputs(const std::string& output_root, const std::string& atlas_name,
                                       TextureFileFormat file_format);

/// The images of a texture set and its database. A cube map's copy keeps its own extension.
std::vector<std::string> texture_set_outputs(const AtlasSetDefinition& set, const std::string& output_root);

} // namespace mosaicer
