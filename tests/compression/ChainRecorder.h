#pragma once

#include "compression/compress_mip_chain.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace compression::testing {

/// A level whose pixels all differ: byte i is 7 * i + seed.
inline LevelImage patterned_level(std::int32_t width, std::int32_t height, int seed = 0) {
    LevelImage level{width, height, {}};
    level.pixels.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    for (std::size_t i = 0; i < level.pixels.size(); ++i)
        level.pixels[i] = static_cast<std::uint8_t>(7 * i + static_cast<std::size_t>(seed));
    return level;
}

inline CompressionOptions supplied(std::int32_t format) {
    CompressionOptions options;
    options.g_texture_format = format;
    options.g_mip_map_type = MIP_MAPS_SUPPLIED;
    return options;
}

/// Keeps what the write callback receives, and fails at a chosen call.
struct ChainRecorder {
    std::vector<std::vector<std::uint8_t>> pieces;
    std::vector<LevelRecord> records; ///< one per level
    std::size_t failing_call = SIZE_MAX;

    static std::int32_t write(const void* bytes, std::size_t count, const LevelRecord* level, void* user) {
        auto& self = *static_cast<ChainRecorder*>(user);
        const auto* first = static_cast<const std::uint8_t*>(bytes);
        if (self.pieces.size() == self.failing_call)
            return -77;
        self.pieces.emplace_back(first, first + count);
        if (level != nullptr)
            self.records.push_back(*level);
        return 0;
    }

    std::int32_t compress(const std::vector<LevelImage>& levels, CompressionOptions options) {
        return compress_mip_chain(levels, options, write, this);
    }

    std::vector<std::uint8_t> file() const {
        std::vector<std::uint8_t> all;
        for (const auto& piece : pieces)
            all.insert(all.end(), piece.begin(), piece.end());
        return all;
    }

    const std::vector<std::uint8_t>& level(std::size_t index) const { return pieces.at(2 + index); }

    std::uint32_t word(std::size_t offset) const {
        const auto all = file();
        return all.at(offset) | std::uint32_t{all.at(offset + 1)} << 8 | std::uint32_t{all.at(offset + 2)} << 16 |
               std::uint32_t{all.at(offset + 3)} << 24;
    }
};

} // namespace compression::testing
