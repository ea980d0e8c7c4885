#pragma once

#include "compression/Codes.h"
#include "compression/CompressionOptions.h"
#include "compression/LevelImage.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace compression {

/// Which level a callback's bytes belong to.
struct LevelRecord {
    std::int32_t level = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
};

/// Receives the file piece by piece. `level` is null for the two pieces of the head. 0 goes on; anything else stops the
/// entry, which returns that value. The bytes are only valid during the call.
using WriteCallback = std::int32_t (*)(const void* bytes, std::size_t count, const LevelRecord* level, void* user);

/// Turns a list of levels, level 0 first, into the bytes of a DDS file: the magic in one call, the header in a second,
/// then each level in one call. A level's sides are half of the one before, rounded down, at least 1; a supplied level
/// of another size is resampled.
///
/// Returns 0 or what the callback returned, or before anything was written:
///   EMPTY_IMAGE         no levels, a level without pixels, or one whose `pixels` are not what its size says
///   IMAGE_NOT_MULT4     formats 0 to 3, and a side of level 0 that is not 1, 2 or a multiple of 4
///   UNSUPPORTED_FILE    a `g_texture_format` that the library does not write
///   UNSUPPORTED_OPTION  an option that is switched on and not carried out, or a value outside its list
///   CANT_OPEN_PROFILE   a profile path is set and cannot be read
/// `options` is changed only in `g_texturemap_type`, which becomes 0.
[[nodiscard]] std::int32_t compress_mip_chain(std::span<const LevelImage> levels, CompressionOptions& options,
                                              WriteCallback write, void* user);

/// A profile that every later call of compress_mip_chain reads over its options; empty, the default, for none.
/// Process-wide and not guarded: set it while nothing is compressed.
void set_profile_path(std::string path);

} // namespace compression
