#pragma once

#include "compression/DecodedRows.h"

#include <cstdint>

namespace compression {

// Decoders (DdsDecoder) of the formats that store blocks of 4 by 4 pixels, in rows from the top. Cells outside of the
// level are dropped. A block:
//
//   colour half, 8 bytes   two 16-bit colours 5:6:5, then sixteen 2-bit indices, cell 0 lowest. With colour 0 above
//   colour 1
//                          the entries between are their thirds; otherwise entry 2 is their half and entry 3 is black
//   dxt1                   a colour half; entry 3 of the second kind is transparent, all else opaque
//   dxt3                   sixteen 4-bit alphas, then a colour half; also DXT2
//   dxt5                   two alphas, sixteen 3-bit codes, then a colour half; also DXT4
//   ati2                   two such alpha halves, green and red as 2 * value - 1; blue completes a vector of length 1
//
// The entries between are not rounded before they become bytes: (int)(value * 255 + 0.5) of single-precision values.

void decode_dxt1(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);
void decode_dxt3(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);
void decode_dxt5(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);
void decode_ati2(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);

} // namespace compression
