#pragma once

#include <array>
#include <cstdint>
#include <set>
#include <string>

namespace mosaicer {

/// What the header of a source file tells. Pixels never live here: a load hands out a value of its own, so that one
/// record can serve several entries and sets, and the size stays that of the file.
struct TextureImage {
    std::string file_path;   ///< the path that the file is opened under
    std::int32_t width = 0;  ///< texels of level 0 in the file
    std::int32_t height = 0; ///< texels of level 0 in the file
    bool is_cube = false;    ///< a DDS file that holds a cube map
};

/// One indexed texture, owned by the texture index and shared by all sets and entries that name it.
struct SourceTexture {
    std::string name; ///< the index's key: base name without extension, in lower case
    TextureImage image;
    bool is_bump = false;            ///< the name ends in "_bm"
    bool tile_u = false;             ///< the name says that the texture repeats along u
    bool tile_v = false;             ///< the name says that the texture repeats along v
    std::array<float, 3> position{}; ///< x, y, z of a lightmap positions file, else 0
    std::set<std::int32_t> used_by;  ///< groups that use the texture
};

} // namespace mosaicer
