#pragma once

#include "compression/DecodedRows.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace compression {

/// Turns stored bytes into rows of pixels: all rows of a level, or some that begin at a multiple of 4. `bytes` holds
/// what `stored_byte_count` says for as many rows; `palette`, four bytes an entry in the order red, green, blue, alpha,
/// is only read by palette formats.
using DdsDecoder = void (*)(const std::uint8_t* bytes, const std::uint8_t* palette, const DecodedRows& rows);

/// A pixel format that a DDS file may hold.
struct DdsFormat {
    std::uint32_t d3d_format = 0;
    std::uint32_t library_format = 0;
    std::int32_t channels = 0; ///< 0 for an unknown format
    std::int32_t bits_per_channel = 8;
    std::int32_t palette_entries = 0;
    std::int32_t block_bytes = 0;    ///< of a 4 by 4 block; 0 for formats that store pixels one by one
    std::int32_t bits_per_pixel = 0; ///< of such a format
    DdsDecoder decode = nullptr;     ///< null for an unknown format

    /// Bytes of a level without its palette. Rows of half-byte pixels are filled up to whole bytes.
    std::size_t stored_byte_count(std::int32_t width, std::int32_t height) const;
    std::size_t palette_byte_count() const { return static_cast<std::size_t>(palette_entries) * 4; }
};

/// The format that the header's pixel format names. Unknown ones have no decoder; `d3d_format` is then the four
/// character code, 0 if there is none.
DdsFormat identify_dds_format(const std::array<std::uint32_t, 8>& pixel_format);

} // namespace compression
