#pragma once

#include <array>

namespace compression {

/// Bits of red, green and blue in a 16-bit colour, and the largest stored value of each.
constexpr std::array<int, 3> channel_bits{5, 6, 5};
constexpr std::array<int, 3> channel_max{31, 63, 31};

/// The byte that a stored value stands for: its top bits repeat below it.
constexpr int expand_bits(int stored, int bits) {
    return stored << (8 - bits) | stored >> (2 * bits - 8);
}
static_assert(expand_bits(31, 5) == 255 && expand_bits(16, 5) == 132 && expand_bits(63, 6) == 255 &&
              expand_bits(16, 6) == 65);

/// A value of at least 0 to the nearest whole number, a half up.
template <typename Real>
constexpr int round_half_up(Real value) {
    const Real raised = value + static_cast<Real>(0.5);
    return static_cast<int>(raised);
}

/// The 16-bit word of a colour: red in bits 15-11, green in 10-5, blue in 4-0.
constexpr int pack_565(const std::array<int, 3>& stored) {
    return stored[0] << 11 | stored[1] << 5 | stored[2];
}

} // namespace compression
