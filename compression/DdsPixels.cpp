#include "compression/DdsPixels.h"

#include "compression/ByteFloat.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>

namespace compression {
namespace {

// Bytes go straight to bytes: byte / 255 would come back from the floats as the same byte.

struct Pixel {
    std::uint8_t red;
    std::uint8_t green;
    std::uint8_t blue;
    std::uint8_t alpha;
};

template <std::size_t BytesPerPixel, class Decode>
void decode_each(const std::uint8_t* bytes, const DecodedRows& rows, Decode decode) {
    std::uint8_t* out = rows.pixels;
    const std::size_t count = rows.byte_count() / 4;
    for (std::size_t i = 0; i < count; ++i, bytes += BytesPerPixel, out += 4) {
        const Pixel pixel = decode(bytes);
        out[0] = pixel.red;
        out[1] = pixel.green;
        out[2] = pixel.blue;
        out[3] = pixel.alpha;
    }
}

std::uint16_t word_at(const std::uint8_t* bytes) {
    return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

float float_at(const std::uint8_t* bytes) {
    return std::bit_cast<float>(std::uint32_t{bytes[0]} | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 |
                                std::uint32_t{bytes[3]} << 24);
}

/// Widens `bits` bits to 8 by repeating the top ones: 5 bits abcde become abcdeabc.
std::uint8_t widen(int value, int shift, int bits) {
    const int cut = value >> shift & ((1 << bits) - 1);
    return static_cast<std::uint8_t>(cut << (8 - bits) | cut >> (2 * bits - 8));
}

Pixel five_bit_pixel(const std::uint8_t* bytes, std::uint8_t alpha) {
    const int word = word_at(bytes);
    return {widen(word, 10, 5), widen(word, 5, 5), widen(word, 0, 5), alpha};
}

/// -128, which 127 does not reach, counts as -127; all that is negative ends as 0 anyway.
std::uint8_t signed_to_byte(int value, int largest) {
    return float_to_byte(static_cast<float>(std::max(value, -largest)) / static_cast<float>(largest));
}

std::uint8_t half_byte(const std::uint8_t* bytes) {
    return float_to_byte(half_to_float(word_at(bytes)));
}

} // namespace

float half_to_float(std::uint16_t half) {
    const std::uint32_t sign = std::uint32_t{half} >> 15 << 31;
    const std::uint32_t exponent = half >> 10 & 31;
    const std::uint32_t mantissa = half & 1023;
    if (exponent == 0) {
        // Subnormal: mantissa units of 2^-24, exact in single precision.
        const float magnitude = static_cast<float>(mantissa) * 0x1p-24f;
        return sign != 0 ? -magnitude : magnitude;
    }
    const std::uint32_t wide_exponent = exponent == 31 ? 255 : exponent + 127 - 15;
    return std::bit_cast<float>(sign | wide_exponent << 23 | mantissa << 13);
}

void decode_a8r8g8b8(const std::uint8_t* bytes, const std::uint8_t*, const DecodedRows& rows) {
    // Whole pixels as numbers, red and blue exchanged: a form that compilers turn into wide instructions.
    std::uint8_t* out = rows.pixels;
    const std::size_t size = rows.byte_count();
    for (std::size_t i = 0; i < size; i += 4) {
        std::uint32_t pixel;
        std::memcpy(&pixel, bytes + i, 4);
        pixel = (pixel & 0xFF00FF00) | (pixel >> 16 & 0xFF) | (pixel & 0xFF) << 16;
        std::memcpy(out + i, &pixel, 4);
    }
}

void decode_r8g8b8(const std::uint8_t* bytes, const std::uint8_t*, const DecodedRows& rows) {
    decode_each<3>(bytes, rows, [](const std::uint8_t* b) { return Pixel{b[2], b[1], b[0], 0}; });
}

void decode_r5g6b5(const std::uint8_t* bytes, const std::uint8_t*, const DecodedRows& rows) {
    decode_each<2>(bytes, rows, [](const std::uint8_t* b) {
        const int word = word_at(b);
        return Pixel{widen(word, 11, 5), widen(word, 5, 6), widen(word, 0, 5), 0};
    });
}

void decode_x1r5g5b5(const std::uint8_t* bytes, const std::uint8_t*, const DecodedRows& rows) {
    decode_each<2>(bytes, rows, [](const std::uint8_t* b) { return five_bit_pixel(b, 255); });
}

void decode_a1r5g5b5(const std::uint8_t* bytes, const std::uint8_t*, const DecodedRows& rows) {
    decode_each<2>(bytes, rows, [](const std::uint8_t* b) { return five_bit_pixel(b, (b[1] & 0x80) != 0 ? 255 : 0); });
}

void decode_a4r4g4b4(const std::uint8_t* bytes, const std::uint8_t*, const DecodedRows& rows) {
    decode_each<2>(bytes, rows, [](const std::uint8_t* b) {
        const int word = word_at(b);
        return Pixel{widen(word, 8, 4), widen(word, 4, 4), widen(word, 0, 4), widen(word, 12, 4)};
    });
}

void decode_palette_8(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows) {
    decode_each<1>(bytes, rows, [palette](const std::uint8_t* b) {
        const std::uint8_t* entry = palette + std::size_t{*b} * 4;
        return Pixel{entry[0], entry[1], entry[2], entry[3]};
    });
}

void decode_palette_4(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows) {
    const auto width = static_cast<std::size_t>(rows.width);
    const std::size_t row_bytes = (width + 1) / 2;
    std::uint8_t* out = rows.pixels;
    for (std::int32_t y = 0; y < rows.height; ++y, bytes += row_bytes)
        for (std::size_t x = 0; x < width; ++x, out += 4) {
            const int index = bytes[x / 2] >> (x % 2 * 4) & 15;
            std::copy_n(palette + index * 4, 4, out);
        }
}

void decode_a8(const std::uint8_t* bytes, const std::uint8_t*, const DecodedRows& rows) {
    decode_each<1>(bytes, rows, [](const std::uint8_t* b) { return Pixel{0, 0, 0, *b}; });
}

void decode_l8(const std::uint8_t* bytes, const std::uint8_t*, const DecodedRows& rows) {
    decode_each<1>(bytes, rows, [](const std::uint8_t* b) { return Pixel{*b, *b, *b, 0}; });
}

void decode_a8l8(const std::uint8_t* bytes, const std::uint8_t*, const DecodedRows& rows) {
    decode_each<2>(bytes, rows, [](const std::uint8_t* b) { return Pixel{b[0], b[0], b[0], b[1]}; });
}

void decode_v8u8(const std::uint8_t* bytes, const std::uint8_t*, const DecodedRows& rows) {
    const auto channel = [](std::uint8_t byte) { return signed_to_byte(static_cast<std::int8_t>(byte), 127); };
    decode_each<2>(bytes, rows, [&](const std::uint8_t* b) { return Pixel{channel(b[0]), channel(b[1]), 255, 0}; });
}

void decode_v16u16(const std::uint8_t* bytes, const std::uint8_t*, const DecodedRows& rows) {
    const auto channel = [](const std::uint8_t* b) {
        return signed_to_byte(static_cast<std::int16_t>(word_at(b)), 32767);
    };
    decode_each<4>(bytes, rows, [&](const std::uint8_t* b) { return Pixel{channel(b), channel(b + 2), 255, 0}; });
}

void decode_g16r16(const std::uint8_t* bytes, const std::uint8_t*, const DecodedRows& rows) {
    const auto channel = [](const std::uint8_t* b) { return float_to_byte(static_cast<float>(word_at(b)) / 65535.0f); };
    decode_each<4>(bytes, rows, [&](const std::uint8_t* b) { return Pixel{channel(b), channel(b + 2), 0, 0}; });
}

void decode_r16f(const std::uint8_t* bytes, const std::uint8_t*, const DecodedRows& rows) {
    decode_each<2>(bytes, rows, [](const std::uint8_t* b) {
        const std::uint8_t value = half_byte(b);
        return Pixel{value, value, value, 255};
    });
}

void decode_g16r16f(const std::uint8_t* bytes, const std::uint8_t*, const DecodedRows& rows) {
    decode_each<4>(bytes, rows, [](const std::uint8_t* b) { return Pixel{half_byte(b), half_byte(b + 2), 0, 0}; });
}

void decode_a16b16g16r16f(const std::uint8_t* bytes, const std::uint8_t*, const DecodedRows& rows) {
    decode_each<8>(bytes, rows, [](const std::uint8_t* b) {
        return Pixel{half_byte(b), half_byte(b + 2), half_byte(b + 4), half_byte(b + 6)};
    });
}

void decode_r32f(const std::uint8_t* bytes, const std::uint8_t*, const DecodedRows& rows) {
    decode_each<4>(bytes, rows, [](const std::uint8_t* b) {
        const std::uint8_t value = float_to_byte(float_at(b));
        return Pixel{value, value, value, 255};
    });
}

void decode_a32b32g32r32f(const std::uint8_t* bytes, const std::uint8_t*, const DecodedRows& rows) {
    const auto channel = [](const std::uint8_t* b) { return float_to_byte(float_at(b)); };
    decode_each<16>(bytes, rows, [&](const std::uint8_t* b) {
        return Pixel{channel(b), channel(b + 4), channel(b + 8), channel(b + 12)};
    });
}

} // namespace compression
