#pragma once

#include "texture/Bitmap.h"

#include <cstdint>
#include <string>

namespace mosaicer {

/// What the header of an image file promises.
struct PromisedPicture {
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::int64_t bits = 0; ///< of a decoded pixel
};

/// False when the file is too short for the picture, or is a run-length TGA file whose runs are not exactly its pixels:
/// the decoder would take memory for nothing, or write past its end. True says nothing about the rest of the file.
bool file_can_hold(const std::string& path, BitmapFormat format, const PromisedPicture& picture);

} // namespace mosaicer
