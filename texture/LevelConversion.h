#pragma once

#include "compression/LevelImage.h"
#include "texture/Bitmap.h"

namespace mosaicer {

enum class LevelAlpha { as_it_stands, opaque };

/// The compression library's form of a level: red, green, blue, alpha with the top row first. `opaque` gives every
/// pixel alpha 255.
compression::LevelImage to_level_image(const Bitmap& bitmap, LevelAlpha alpha);

/// The bitmap of a level that the compression library has read. The level's sides must be at least 1.
Bitmap to_bitmap(const compression::LevelImage& level);

} // namespace mosaicer
