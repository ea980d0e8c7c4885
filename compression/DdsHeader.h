#pragma once

#include "compression/CompressionOptions.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace compression {

// The head of a DDS file, all fields 32 bits, little-endian. Offsets are those of the file.
//
//   0  magic "DDS "        28  mip count             104  alpha mask
//   4  header size, 124    32  11 reserved words     108  caps
//   8  flags               76  pixel format size, 32 112  caps 2
//  12  height              80  pixel format flags    116  3 reserved words
//  16  width               84  four character code
//  20  linear size         88  bits a pixel
//  24  depth               92  red, green, blue masks

constexpr std::size_t dds_magic_size = 4;
constexpr std::size_t dds_header_size = 124;

using DdsMagic = std::array<std::uint8_t, dds_magic_size>;
using DdsHeaderBytes = std::array<std::uint8_t, dds_header_size>;

constexpr DdsMagic dds_magic{'D', 'D', 'S', ' '};

/// A code of four characters as its field holds it, first character lowest.
constexpr std::uint32_t four_cc(char a, char b, char c, char d) {
    const auto byte = [](char character) { return std::uint32_t{static_cast<std::uint8_t>(character)}; };
    return byte(a) | byte(b) << 8 | byte(c) << 16 | byte(d) << 24;
}

/// The fields that say what the file holds.
struct DdsHeader {
    std::uint32_t flags = 0;
    std::uint32_t height = 0;
    std::uint32_t width = 0;
    std::uint32_t linear_size = 0; ///< bytes of level 0
    std::uint32_t depth = 0;
    std::uint32_t mip_count = 0;
    std::array<std::uint32_t, 8> pixel_format{}; ///< size, flags, code, bits, then the red, green, blue, alpha masks
    std::uint32_t caps = 0;
    std::uint32_t caps2 = 0;
};

/// The header of a plain texture in one of the formats that the library writes.
DdsHeader make_dds_header(std::int32_t format, std::int32_t width, std::int32_t height, std::size_t level_count);

DdsHeaderBytes encode_dds_header(const DdsHeader& header);
DdsHeader decode_dds_header(const DdsHeaderBytes& bytes);

} // namespace compression
