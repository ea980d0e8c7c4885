#pragma once

#include "compression/CompressionOptions.h"
#include "compression/LevelImage.h"

#include <cstdint>

namespace compression {

/// Encodes a level in one of the block formats, `options.g_texture_format` 0 to 3. `output` takes the level's
/// level_byte_count bytes, blocks in rows from the top.
void encode_blocks(const FloatImage& level, const CompressionOptions& options, std::uint8_t* output);

} // namespace compression
