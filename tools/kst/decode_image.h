#pragma once

#include "texture/Bitmap.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kst::tool {

/// One level of an image file.
struct ImageChoice {
    std::string file; ///< .dds, .tga, .mip, .png or .bmp, in any case
    std::uint32_t level = 0;
    std::uint32_t face = 0; ///< of a cube map, or the slice of a volume texture
};

/// What the headers tell.
struct ImageFacts {
    std::uint32_t format =
        0; ///< the engine's number; that of 8-bit blue, green, red, alpha for what it has no number of
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t levels = 1;
    std::uint32_t faces = 1;
};

/// DDS, TARGA and .mip files are opened by the engine's parsers. What those refuse, and PNG and BMP, is read as the atlas
/// tool reads pixels: a parser's error is thrown only if that fails too. Throws CommandFailure for any other name.
ImageFacts image_facts(const std::string& file);

/// Throws CommandFailure naming the file for a level or face that it has not, and what the readers throw.
mosaicer::Bitmap decode_image(const ImageChoice& choice);

/// Whether the path ends in the extension, given in lower case, in any case.
bool has_extension(std::string_view path, std::string_view extension);

} // namespace kst::tool
