#pragma once

#include "driver/records/Keywords.h"
#include "texture/Bitmap.h"

#include <string>

namespace mosaicer {

/// Writes a chain as one image file. DDS holds every level, through the compression library; TGA, PNG and BMP hold
/// level 0 and take AF_A8R8G8B8 alone.
///
/// The bump formats move channels in every level of `chain` first, and the chain stays so:
///   AF_BUMP_A8L8  alpha := green, blue := red
///   AF_BUMP_DXT5  alpha := red, red := 0, blue := 0
///
/// False only when a TGA, PNG or BMP file could not be written. Throws std::runtime_error "Zero-size mipchain"
/// (AF_BUMP_DXT5 without levels), "Invalid combination of file format and texel format specified", "Unhandled image
/// format", "Unhandled texture format in save of texture", or "Error saving image to file " + path for a DDS file. A
/// file that could not be finished is removed. Progress goes to Report.verbose and Report.debug.
bool save_image(MipChain& chain, TexelFormat texel_format, TextureFileFormat file_format, const std::string& path);

/// Makes the directory and all above it. Slashes and backslashes separate. A failure shows when a file is opened in it.
void create_directories(const std::string& path);

} // namespace mosaicer
