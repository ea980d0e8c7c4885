#pragma once

#include "driver/records/AtlasSetDefinition.h"

#include <utility>

namespace mosaicer {

/// Width and height in texels.
struct TexelSize {
    std::int32_t width = 0;
    std::int32_t height = 0;
};

/// The size that an entry is packed, sorted and judged by: forced size, else the file's; exchanged at a rotation of 90
/// or 270; without padding.
inline TexelSize natural_size(const SetTextureEntry& entry) {
    TexelSize size{entry.width > 0 ? entry.width : entry.texture->image.width,
                   entry.height > 0 ? entry.height : entry.texture->image.height};
    if (entry.rotation == 90 || entry.rotation == 270)
        std::swap(size.width, size.height);
    return size;
}

/// Width times height of the natural size, as a signed 32-bit product that wraps.
inline std::int32_t natural_area(const SetTextureEntry& entry) {
    const TexelSize size = natural_size(entry);
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(size.width) * static_cast<std::uint32_t>(size.height));
}

} // namespace mosaicer
