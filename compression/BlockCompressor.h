#pragma once

#include "compression/CompressionOptions.h"
#include "compression/LevelImage.h"

#include <cstdint>

namespace compression {

/// Encodes a level as DXT1 (`g_texture_format` 0, 1), DXT3 (2) or DXT5 (3) blocks, row by row from the top left.
/// `output` holds ((w + 3) / 4) * ((h + 3) / 4) blocks of 8 bytes for DXT1, of 16 for the others.
///
///   colour half, 8 bytes:  0 first colour, 2 second colour (565, little-endian), 4 sixteen 2-bit indices, cell 0 lowest
///   DXT3 alpha, 8 bytes:   four 16-bit rows of four 4-bit values, leftmost cell lowest
///   DXT5 alpha, 8 bytes:   0 alpha0, 1 alpha1, 2 sixteen 3-bit codes, cell 0 lowest
///
/// Fails on nothing: every value gives a block. Blocks do not depend on each other; calls on several threads are safe.
void encode_blocks(const FloatImage& level, const CompressionOptions& options, std::uint8_t* output);

} // namespace compression
