#pragma once

#include "compression/Codes.h"
#include "compression/CompressionOptions.h"
#include "compression/LevelImage.h"

#include <cstddef>
#include <cstdint>
#include <span>

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
/// then each level in one call. Returns 0, a negative code of Codes.h before anything was written, or what the callback
/// returned. `options` is changed only in `g_texturemap_type`.
[[nodiscard]] std::int32_t compress_mip_chain(std::span<const LevelImage> levels, CompressionOptions& options,
                                              WriteCallback write, void* user);

} // namespace compression
