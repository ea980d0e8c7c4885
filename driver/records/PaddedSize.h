#pragma once

#include "driver/records/NaturalSize.h"

#include <cstdint>

namespace mosaicer {

/// A size before it is known that it can be placed. Natural size and padding can each be any 32-bit number.
struct WideSize {
    std::int64_t width;
    std::int64_t height;
};

/// The natural size with the padding of both sides.
inline WideSize padded_size(const SetTextureEntry& entry) {
    const TexelSize natural = natural_size(entry);
    return {natural.width + 2 * std::int64_t{entry.pad_texels_u},
            natural.height + 2 * std::int64_t{entry.pad_texels_v}};
}

} // namespace mosaicer
