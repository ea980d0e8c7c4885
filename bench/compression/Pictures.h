#pragma once

#include "compression/LevelImage.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace mosaicer::bench {

/// A picture as the encoders take it.
struct Picture {
    std::string name;               ///< path below the folder
    compression::LevelImage bytes;  ///< red, green, blue, alpha
    compression::FloatImage floats; ///< the same over 255
};

Picture make_picture(std::string name, compression::LevelImage bytes);

/// Every picture below a folder that FreeImage reads, in the order of the names; sides are cut to multiples of 4 and
/// pictures below 4 by 4 left out.
std::vector<Picture> load_pictures(const std::filesystem::path& folder);

/// A made-up photograph: soft light, detail of all sizes, some hard edges, sensor noise. Alpha falls off radially.
Picture photograph(int width, int height);

/// An encoder's blocks of one of the formats DXT1, DXT3 and DXT5, as red, green, blue, alpha.
std::vector<std::uint8_t> decode_blocks(const std::vector<std::uint8_t>& blocks, std::int32_t format, int width,
                                        int height);

} // namespace mosaicer::bench
