#pragma once

#include "compression/DdsHeader.h"
#include "compression/DdsReader.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace compression::testing {

using Bytes = std::vector<std::uint8_t>;
using PixelFormat = std::array<std::uint32_t, 8>;

inline PixelFormat code_format(std::uint32_t code) {
    return {32, 4, code};
}

/// A DDS file in memory: head, then whatever bytes a test appends.
struct DdsFile {
    DdsHeader header;
    Bytes body;

    static DdsFile plain(const PixelFormat& format, std::uint32_t width, std::uint32_t height, Bytes body = {}) {
        DdsFile file;
        file.header.flags = 0x1007;
        file.header.width = width;
        file.header.height = height;
        file.header.pixel_format = format;
        file.body = std::move(body);
        return file;
    }

    DdsFile& mips(std::uint32_t count) {
        header.flags |= 0x20000;
        header.mip_count = count;
        return *this;
    }

    Bytes bytes() const {
        Bytes all(dds_magic.begin(), dds_magic.end());
        const DdsHeaderBytes head = encode_dds_header(header);
        all.insert(all.end(), head.begin(), head.end());
        all.insert(all.end(), body.begin(), body.end());
        return all;
    }
};

struct MemoryStream {
    const std::uint8_t* data;
    std::size_t size;
    std::size_t position = 0;

    static std::size_t read(void* destination, std::size_t count, void* user) {
        auto& self = *static_cast<MemoryStream*>(user);
        const std::size_t given = std::min(count, self.size - self.position);
        if (given > 0)
            std::memcpy(destination, self.data + self.position, given);
        self.position += given;
        return given;
    }
};

struct ReadResult {
    std::int32_t code;
    DdsInfo info;
    std::size_t consumed; ///< bytes of the file
};

inline ReadResult read_back(const Bytes& bytes, std::uint32_t level_limit = 0) {
    MemoryStream stream{bytes.data(), bytes.size()};
    ReadResult result;
    result.code = read_dds(result.info, 0, level_limit, MemoryStream::read, &stream);
    result.consumed = stream.position;
    return result;
}

inline Bytes random_bytes(std::size_t count, unsigned seed = 1) {
    std::mt19937 random(seed);
    Bytes bytes(count);
    for (auto& byte : bytes)
        byte = static_cast<std::uint8_t>(random());
    return bytes;
}

/// The literal decoder of a block format: every pixel on its own, all in floats. `codes` as in the file.
inline std::uint8_t cut_to_byte(float value) {
    const int whole = static_cast<int>(value * 255.0f + 0.5f);
    return static_cast<std::uint8_t>(whole < 0 ? 0 : whole > 255 ? 255 : whole);
}

inline void literal_colour(const std::uint8_t* half, int cell, float* rgba) {
    const int words[2] = {half[0] | half[1] << 8, half[2] | half[3] << 8};
    float c[2][3];
    for (int i = 0; i < 2; ++i) {
        const int r = words[i] >> 11;
        const int g = words[i] >> 5 & 63;
        const int b = words[i] & 31;
        c[i][0] = static_cast<float>(r << 3 | r >> 2) / 255.0f;
        c[i][1] = static_cast<float>(g << 2 | g >> 4) / 255.0f;
        c[i][2] = static_cast<float>(b << 3 | b >> 2) / 255.0f;
    }
    const int index = half[4 + cell / 4] >> (cell % 4 * 2) & 3;
    rgba[3] = 1.0f;
    for (int k = 0; k < 3; ++k) {
        if (index < 2)
            rgba[k] = c[index][k];
        else if (words[0] > words[1])
            rgba[k] = index == 2 ? (2.0f * c[0][k] + c[1][k]) / 3.0f : (c[0][k] + 2.0f * c[1][k]) / 3.0f;
        else
            rgba[k] = index == 2 ? (c[0][k] + c[1][k]) / 2.0f : 0.0f;
    }
    if (words[0] <= words[1] && index == 3)
        rgba[3] = 0.0f;
}

inline float literal_alpha(const std::uint8_t* half, int cell) {
    const int a0 = half[0];
    const int a1 = half[1];
    const int wide[8] = {a0,
                         a1,
                         (6 * a0 + a1 + 3) / 7,
                         (5 * a0 + 2 * a1 + 3) / 7,
                         (4 * a0 + 3 * a1 + 3) / 7,
                         (3 * a0 + 4 * a1 + 3) / 7,
                         (2 * a0 + 5 * a1 + 3) / 7,
                         (a0 + 6 * a1 + 3) / 7};
    const int narrow[8] = {
        a0, a1, (4 * a0 + a1 + 2) / 5, (3 * a0 + 2 * a1 + 2) / 5, (2 * a0 + 3 * a1 + 2) / 5, (a0 + 4 * a1 + 2) / 5,
        0,  255};
    const std::uint8_t* group = half + 2 + cell / 8 * 3;
    const int codes = group[0] | group[1] << 8 | group[2] << 16;
    const int code = codes >> (cell % 8 * 3) & 7;
    return static_cast<float>(a0 > a1 ? wide[code] : narrow[code]) / 255.0f;
}

/// `kind` 1, 3, 5 for DXT1, DXT3, DXT5, 2 for ATI2.
inline Bytes literal_blocks(const Bytes& stored, int kind, int width, int height) {
    Bytes pixels;
    const std::size_t block_bytes = kind == 1 ? 8 : 16;
    const int blocks_a_row = (width + 3) / 4;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const auto index = static_cast<std::size_t>(y / 4 * blocks_a_row + x / 4);
            const std::uint8_t* block = &stored[index * block_bytes];
            const int cell = y % 4 * 4 + x % 4;
            float rgba[4];
            if (kind == 2) {
                rgba[1] = literal_alpha(block, cell) * 2.0f - 1.0f;
                rgba[0] = literal_alpha(block + 8, cell) * 2.0f - 1.0f;
                const float rest = 1.0f - rgba[0] * rgba[0] - rgba[1] * rgba[1];
                rgba[2] = rest < 0.0f ? 0.0f : std::sqrt(rest);
                rgba[3] = 1.0f;
            } else {
                literal_colour(block + block_bytes - 8, cell, rgba);
                if (kind == 3)
                    rgba[3] = static_cast<float>(block[cell / 2] >> (cell % 2 * 4) & 15) / 15.0f;
                if (kind == 5)
                    rgba[3] = literal_alpha(block, cell);
            }
            for (const float channel : rgba)
                pixels.push_back(cut_to_byte(channel));
        }
    return pixels;
}

} // namespace compression::testing
