#pragma once

#include "driver/records/SourceTexture.h"
#include "texture/ImageReader.h"

#include <cstddef>
#include <optional>
#include <string>

namespace mosaicer {

/// The answer of read_image_info, of every format from the header alone. Damage in the pixels of a ".bmp" or ".png"
/// file, which that one finds by decoding, goes unseen here unless the file ends too early. Throws alike.
std::optional<ImageInfo> read_image_header(const std::string& path);

/// make_source_texture on that answer, with its errors.
SourceTexture make_source_texture_from_header(std::string name, std::string path);

/// What a file says of its pixels without their being read.
struct PixelOutlook {
    std::string fault; ///< why load_image will fail, to stand behind the file's name; empty if nothing speaks for it
    std::size_t levels = 1; ///< that load_image will find; of a DDS file
};

/// Of a file whose header has been read, and that holds no cube map.
PixelOutlook pixel_outlook(const std::string& path);

} // namespace mosaicer
