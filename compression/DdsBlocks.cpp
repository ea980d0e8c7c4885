#include "compression/DdsBlocks.h"

#include "compression/ByteFloat.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <memory>

// A channel of an entry between two colours depends on nothing but the two stored values of that channel, 5 or 6 bits
// each. So the float arithmetic is done once, at compile time, for every pair; a block then costs twelve look-ups and
// sixteen stores. A pixel is one 32-bit number in memory order red, green, blue, alpha.

namespace compression {
namespace {

constexpr int widen(int value, int bits) {
    return value << (8 - bits) | value >> (2 * bits - 8);
}

/// The bytes of the entries between colours 0 and 1, at [channel of 0][channel of 1].
template <int Bits>
struct BetweenTables {
    static constexpr std::size_t values = std::size_t{1} << Bits;
    using Table = std::array<std::array<std::uint8_t, values>, values>;

    Table third{}; ///< (2 c0 + c1) / 3; with its arguments exchanged (c0 + 2 c1) / 3
    Table half{};  ///< (c0 + c1) / 2

    constexpr BetweenTables() {
        for (std::size_t i = 0; i < values; ++i)
            for (std::size_t j = 0; j < values; ++j) {
                const float c0 = byte_to_float(static_cast<std::uint8_t>(widen(static_cast<int>(i), Bits)));
                const float c1 = byte_to_float(static_cast<std::uint8_t>(widen(static_cast<int>(j), Bits)));
                third[i][j] = float_to_byte((2.0f * c0 + c1) / 3.0f);
                half[i][j] = float_to_byte((c0 + c1) / 2.0f);
            }
    }
};

constexpr BetweenTables<5> between_5;
constexpr BetweenTables<6> between_6;

constexpr std::uint32_t opaque = 0xFF000000;
constexpr std::uint32_t colour_bits = 0x00FFFFFF;

constexpr std::uint32_t pixel(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    return red | green << 8 | blue << 16 | opaque;
}

struct Colour {
    std::size_t red;
    std::size_t green;
    std::size_t blue;

    explicit Colour(unsigned word) : red(word >> 11), green(word >> 5 & 63), blue(word & 31) {}

    std::uint32_t widened() const {
        const auto byte = [](std::size_t value, int bits) {
            return static_cast<std::uint32_t>(widen(static_cast<int>(value), bits));
        };
        return pixel(byte(red, 5), byte(green, 6), byte(blue, 5));
    }
};

using Entries = std::array<std::uint32_t, 4>;

std::uint32_t third_between(const Colour& near, const Colour& far) {
    return pixel(between_5.third[near.red][far.red], between_6.third[near.green][far.green],
                 between_5.third[near.blue][far.blue]);
}

Entries make_entries(const std::uint8_t* half) {
    const unsigned word0 = half[0] | static_cast<unsigned>(half[1]) << 8;
    const unsigned word1 = half[2] | static_cast<unsigned>(half[3]) << 8;
    const Colour c0(word0);
    const Colour c1(word1);
    if (word0 > word1)
        return {c0.widened(), c1.widened(), third_between(c0, c1), third_between(c1, c0)};
    const std::uint32_t middle =
        pixel(between_5.half[c0.red][c1.red], between_6.half[c0.green][c1.green], between_5.half[c0.blue][c1.blue]);
    return {c0.widened(), c1.widened(), middle, 0};
}

using AlphaTable = std::array<std::uint8_t, 8>;

/// The eight values of an alpha half, rounded in integers.
AlphaTable make_alphas(unsigned a0, unsigned a1) {
    AlphaTable table{static_cast<std::uint8_t>(a0), static_cast<std::uint8_t>(a1)};
    const unsigned steps = a0 > a1 ? 7 : 5;
    for (unsigned i = 1; i < steps; ++i)
        table[i + 1] = static_cast<std::uint8_t>(((steps - i) * a0 + i * a1 + steps / 2) / steps);
    if (steps == 5)
        table[7] = 255; // and table[6] is 0
    return table;
}

std::uint64_t alpha_codes(const std::uint8_t* half) {
    std::uint64_t codes = 0;
    for (int i = 0; i < 6; ++i)
        codes |= std::uint64_t{half[2 + i]} << (8 * i);
    return codes;
}

/// The top left pixel of a block in an image: pixels go straight to their place.
struct Target {
    std::uint8_t* pixels;
    std::size_t row_bytes;

    /// The byte order of a pixel in memory is that of its number, as on every machine that the files are made for.
    void set(std::size_t x, std::size_t y, std::uint32_t value) const {
        std::memcpy(pixels + y * row_bytes + x * 4, &value, 4);
    }
};

struct Dxt1 {
    static constexpr std::size_t block_bytes = 8;

    static void decode(const std::uint8_t* block, const Target& target) {
        const Entries entries = make_entries(block);
        for (std::size_t y = 0; y < 4; ++y)
            for (std::size_t x = 0; x < 4; ++x)
                target.set(x, y, entries[block[4 + y] >> (2 * x) & 3]);
    }
};

/// A colour half behind an alpha half. `alpha` gives the alpha of a cell, shifted to its place in the pixel.
template <class Alpha>
void decode_with_alpha(const std::uint8_t* half, const Target& target, Alpha alpha) {
    Entries entries = make_entries(half);
    for (std::uint32_t& entry : entries)
        entry &= colour_bits;
    for (std::size_t y = 0; y < 4; ++y)
        for (std::size_t x = 0; x < 4; ++x)
            target.set(x, y, entries[half[4 + y] >> (2 * x) & 3] | alpha(4 * y + x));
}

struct Dxt3 {
    static constexpr std::size_t block_bytes = 16;

    static void decode(const std::uint8_t* block, const Target& target) {
        // value / 15 is value * 17 / 255, and so exactly the byte value * 17.
        decode_with_alpha(block + 8, target, [block](std::size_t cell) {
            return ((std::uint32_t{block[cell / 2]} >> (cell % 2 * 4) & 15) * 17) << 24;
        });
    }
};

struct Dxt5 {
    static constexpr std::size_t block_bytes = 16;

    static void decode(const std::uint8_t* block, const Target& target) {
        const AlphaTable bytes = make_alphas(block[0], block[1]);
        std::array<std::uint32_t, 8> alphas;
        for (std::size_t i = 0; i < 8; ++i)
            alphas[i] = std::uint32_t{bytes[i]} << 24;
        const std::uint64_t codes = alpha_codes(block);
        decode_with_alpha(block + 8, target, [&](std::size_t cell) { return alphas[codes >> (3 * cell) & 7]; });
    }
};

float signed_value(std::uint8_t byte) {
    return static_cast<float>(byte) / 255.0f * 2.0f - 1.0f;
}

/// What the bytes of an alpha half become as channels of a normal vector. 64 KiB, made at the first use: a square root
/// a pixel costs many times more.
struct NormalTables {
    std::array<std::uint8_t, 256> channel;
    std::array<std::array<std::uint8_t, 256>, 256> blue; ///< at [byte of red][byte of green]

    NormalTables() {
        for (std::size_t i = 0; i < 256; ++i) {
            const float red = signed_value(static_cast<std::uint8_t>(i));
            channel[i] = float_to_byte(red);
            for (std::size_t j = 0; j < 256; ++j) {
                const float green = signed_value(static_cast<std::uint8_t>(j));
                const float rest = 1.0f - red * red - green * green;
                blue[i][j] = float_to_byte(rest > 0.0f ? std::sqrt(rest) : 0.0f);
            }
        }
    }
};

struct Ati2 {
    static constexpr std::size_t block_bytes = 16;

    static void decode(const std::uint8_t* block, const Target& target) {
        static const auto tables = std::make_unique<const NormalTables>();
        const AlphaTable greens = make_alphas(block[0], block[1]);
        const AlphaTable reds = make_alphas(block[8], block[9]);
        const std::uint64_t green_codes = alpha_codes(block);
        const std::uint64_t red_codes = alpha_codes(block + 8);
        for (std::size_t cell = 0; cell < 16; ++cell) {
            const std::uint8_t red = reds[red_codes >> (3 * cell) & 7];
            const std::uint8_t green = greens[green_codes >> (3 * cell) & 7];
            target.set(cell % 4, cell / 4,
                       pixel(tables->channel[red], tables->channel[green], tables->blue[red][green]));
        }
    }
};

/// Decodes a block that reaches past the level's edge, and keeps the part inside.
template <class Format>
void decode_clipped(const std::uint8_t* block, const Target& target, std::size_t columns, std::size_t lines) {
    std::array<std::uint8_t, 64> cells;
    Format::decode(block, Target{cells.data(), 16});
    for (std::size_t y = 0; y < lines; ++y)
        std::memcpy(target.pixels + y * target.row_bytes, &cells[16 * y], columns * 4);
}

template <class Format>
void decode_blocks(const std::uint8_t* bytes, const DecodedRows& rows) {
    const auto width = static_cast<std::size_t>(rows.width);
    const auto height = static_cast<std::size_t>(rows.height);
    for (std::size_t y = 0; y < height; y += 4)
        for (std::size_t x = 0; x < width; x += 4, bytes += Format::block_bytes) {
            const Target target{rows.pixels + (y * width + x) * 4, width * 4};
            if (x + 4 <= width && y + 4 <= height)
                Format::decode(bytes, target);
            else
                decode_clipped<Format>(bytes, target, std::min<std::size_t>(4, width - x),
                                       std::min<std::size_t>(4, height - y));
        }
}

} // namespace

void decode_dxt1(const std::uint8_t* bytes, const std::uint8_t*, const DecodedRows& rows) {
    decode_blocks<Dxt1>(bytes, rows);
}

void decode_dxt3(const std::uint8_t* bytes, const std::uint8_t*, const DecodedRows& rows) {
    decode_blocks<Dxt3>(bytes, rows);
}

void decode_dxt5(const std::uint8_t* bytes, const std::uint8_t*, const DecodedRows& rows) {
    decode_blocks<Dxt5>(bytes, rows);
}

void decode_ati2(const std::uint8_t* bytes, const std::uint8_t*, const DecodedRows& rows) {
    decode_blocks<Ati2>(bytes, rows);
}

} // namespace compression
