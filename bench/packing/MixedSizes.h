#pragma once

#include "driver/records/AtlasSetDefinition.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <deque>
#include <random>
#include <string>
#include <vector>

namespace mosaicer {

/// Textures as a set has them: sides from 16 to `largest`, small ones more often (evenly over the octaves), most of
/// them even, a third odd.
class MixedSizes {
public:
    MixedSizes(std::size_t count, std::int32_t largest) {
        std::mt19937 random(20);
        const auto side = [&] {
            const double octaves = std::log2(largest / 16.0) * static_cast<double>(random() % 1024) / 1023;
            const auto length = static_cast<std::int32_t>(16 * std::exp2(octaves));
            return std::min(random() % 3 == 0 ? length | 1 : length & ~1, largest);
        };
        for (std::size_t i = 0; i < count; ++i) {
            SourceTexture& texture = textures_.emplace_back();
            texture.name = std::string("t").append(std::to_string(i));
            texture.image.width = side();
            texture.image.height = side();
            SetTextureEntry entry;
            entry.texture = &texture;
            entries_.push_back(entry);
        }
    }

    const std::vector<SetTextureEntry>& entries() const { return entries_; }

private:
    std::deque<SourceTexture> textures_;
    std::vector<SetTextureEntry> entries_;
};

} // namespace mosaicer
