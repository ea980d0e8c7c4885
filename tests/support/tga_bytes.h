#pragma once

#include <cstdint>
#include <string>

namespace test_support {

/// A TARGA of 32 bits in one colour, top row first.
inline std::string tga_bytes(int width, int height, std::uint32_t argb = 0xFF336699u) {
    std::string bytes(18, '\0');
    bytes[2] = 2;
    bytes[12] = static_cast<char>(width & 255);
    bytes[13] = static_cast<char>(width >> 8);
    bytes[14] = static_cast<char>(height & 255);
    bytes[15] = static_cast<char>(height >> 8);
    bytes[16] = 32;
    bytes[17] = 0x28;
    for (int i = 0; i < width * height; ++i)
        for (int shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<char>((argb >> shift) & 255));
    return bytes;
}

} // namespace test_support
