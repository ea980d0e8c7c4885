#pragma once

#include "driver/records/Keywords.h"

#include <cstdint>
#include <functional>
#include <string>

namespace mosaicer {

class AtlasSurface;

/// What a packing driver tells the baker about one finished atlas.
struct BakeRequest {
    std::string output_root;
    std::string atlas_name; ///< path of the atlas below the output root
    std::string category;
    std::int32_t nr_mips = 0; ///< 0: all levels
    TexelFormat texel_format = TexelFormat::AF_A8R8G8B8;
    TextureFileFormat file_format = TextureFileFormat::DDS;
    bool extra_bitmap = false;
    std::string extra_bitmap_path;
    bool allow_autoload = true;
};

/// Turns a packed surface into files. Packing knows no pixel: the bake is handed in from above.
using BakeAtlas = std::function<void(AtlasSurface&, const BakeRequest&)>;

} // namespace mosaicer
