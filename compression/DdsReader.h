#pragma once

#include "compression/Codes.h"
#include "compression/LevelImage.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace compression {

/// What a DDS file holds, and its levels as bytes.
struct DdsInfo {
    std::array<std::uint32_t, 8> pixel_format{}; ///< the header's, copied
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t depth = 0;       ///< 0 unless the header's flags name it
    std::uint32_t file_levels = 1; ///< levels stored in the file
    std::uint32_t levels = 1;      ///< levels decoded
    std::uint32_t cube_bits = 0;
    std::int32_t bits_per_channel = 8;
    std::int32_t channels = 0; ///< 0 for an unknown format
    std::int32_t compressed = 0;
    std::int32_t palette_entries = 0;
    std::uint32_t d3d_format = 0;
    std::uint32_t library_format = 0;
    std::int32_t kind = 0;                        ///< 0 plain texture, 1 cube map, 2 volume texture
    std::vector<LevelImage> images;               ///< kind 0: one per level
    std::array<std::vector<LevelImage>, 6> faces; ///< kind 1: per face, one per level
    std::vector<std::vector<LevelImage>> slices;  ///< kind 2: per level, one per slice
};

/// Delivers the next `count` bytes of the file. Its result is the number of bytes delivered; fewer than asked for means
/// that the file has ended.
using ReadCallback = std::size_t (*)(void* destination, std::size_t count, void* user);

/// Reads and decodes a DDS file. `output_form` 0, bytes, is the only one. `level_limit` is the highest number of levels
/// wanted, 0 for all; levels beyond it are still read, and dropped. A cube map holds six faces whatever its caps name.
/// In a palette format every image of level 0, so each face and each slice, begins with its palette.
///
/// Returns 0, or UNSUPPORTED_FILE for a wrong magic, an unknown format, a side of 0 or above 2^24, more than 2^16
/// slices, or a file that ends early; the fields of the header are then filled as far as it was read, and the images
/// read so far stay. The header's sizes and counts are not trusted: memory is taken for a level only after the file has
/// delivered its bytes.
[[nodiscard]] std::int32_t read_dds(DdsInfo& info, std::int32_t output_form, std::uint32_t level_limit,
                                    ReadCallback read, void* user);

} // namespace compression
