#pragma once

#include "compression/DecodedRows.h"

#include <cstdint>

namespace compression {

// Decoders (DdsDecoder) of the formats that store pixels one by one. Words are little-endian. What each channel
// becomes:
//
//   a8r8g8b8, r8g8b8   bytes blue, green, red and, in the first, alpha; also X8R8G8B8, whose fourth byte is taken as it
//   is r5g6b5 and others  bits of a 16-bit word, red highest, widened to 8 by repeating their top bits; alpha 0 in
//   r5g6b5,
//                      255 in x1r5g5b5, all or nothing in a1r5g5b5
//   palette_8, _4      an entry of the palette; the low nibble comes first
//   a8, l8, a8l8       alpha with black; luminance in red, green and blue with alpha 0; both
//   v8u8, v16u16       signed, over 127 or 32767, in red and green; what is negative ends as 0; blue 255, alpha 0
//   g16r16             over 65535, red first; blue and alpha 0
//   r16f, r32f         one value in red, green and blue, alpha 255
//   g16r16f            red, green; blue and alpha 0
//   a16b16g16r16f, a32b32g32r32f   red, green, blue, alpha
//
// Values that are no bytes go through floats: (int)(value * 255 + 0.5), cut to 0..255, not-a-number 0.

void decode_a8r8g8b8(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);
void decode_r8g8b8(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);
void decode_r5g6b5(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);
void decode_x1r5g5b5(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);
void decode_a1r5g5b5(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);
void decode_a4r4g4b4(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);
void decode_palette_8(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);
void decode_palette_4(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);
void decode_a8(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);
void decode_l8(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);
void decode_a8l8(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);
void decode_v8u8(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);
void decode_v16u16(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);
void decode_g16r16(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);
void decode_r16f(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);
void decode_g16r16f(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);
void decode_a16b16g16r16f(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);
void decode_r32f(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);
void decode_a32b32g32r32f(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);

/// The value of an IEEE half float; subnormals, infinities and not-a-number included.
float half_to_float(std::uint16_t half);

} // namespace compression
