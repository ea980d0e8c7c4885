#pragma once

#include <cstdint>

namespace compression {

/// 0 to 255 become 0.0 to 1.0.
constexpr float byte_to_float(std::uint8_t byte) {
    return static_cast<float>(byte) / 255.0f;
}

/// (int)(value * 255 + 0.5) in single precision, cut to 0..255; not-a-number gives 0. Returns every byte that went
/// through byte_to_float unchanged.
constexpr std::uint8_t float_to_byte(float value) {
    const float scaled = value * 255.0f + 0.5f;
    // Cut before the conversion: a float beyond the range of int has no defined integer. The first comparison is also
    // false for not-a-number.
    if (!(scaled >= 1.0f))
        return 0;
    return scaled >= 255.0f ? std::uint8_t{255} : static_cast<std::uint8_t>(scaled);
}

} // namespace compression
