#pragma once

#include "compression/BlockCompressor.h"

#include <array>
#include <cstdint>
#include <vector>

namespace compression {

using Bytes = std::vector<std::uint8_t>;
using Rgba = std::array<std::uint8_t, 4>;

FloatImage flat_level(std::int32_t width, std::int32_t height, const Rgba& pixel);

/// `place` counts pixels row by row.
void set_pixel(FloatImage& level, int place, const Rgba& pixel);

/// The level's pixels as bytes, four a pixel.
Bytes to_bytes(const FloatImage& level);

/// The blocks of a level under the default weights.
Bytes encode(const FloatImage& level, std::int32_t format, int quality);

/// A plain decoder of the published block layouts, four bytes a pixel. Colours between the ends are cut.
Bytes decode(const Bytes& blocks, std::int32_t format, std::int32_t width, std::int32_t height);

} // namespace compression
