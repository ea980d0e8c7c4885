#pragma once

#include "compression/LevelImage.h"

#include <cstdint>

namespace compression {

/// Writes the alpha halves, 8 bytes each, of the row of blocks whose top pixels have row `y` into the first half of
/// every 16 bytes from `output` on. `format` is FORMAT_DXT3 or FORMAT_DXT5.
void write_alpha_halves(const FloatImage& level, std::int32_t y, std::int32_t format, std::uint8_t* output);

} // namespace compression
