#pragma once

#include "source/utility/math/GQuat.h"

#include <cstdint>

namespace kst {

/// A unit quaternion in 32 bits, up to the sign of the whole: three components to within 0.0015, and the fourth, which
/// follows from them, to within 0.0045.
///
///     bits 0-1    which component is left out: the one of largest magnitude, the first one among equals
///     bits 2-11   the first of the others, in index order x, y, z, w: n × 0.00146484375 - 0.75
///     bits 12-21  the second
///     bits 22-31  the third
///
/// The component that is left out counts as positive: for a negative one the others are stored negated.
struct PackedQuat {
    std::uint32_t bits = 0;

    bool operator==(const PackedQuat&) const = default;
};

/// Of any other quaternion than a unit one, components out of range are held at the ends of the range.
PackedQuat pack(const GQuat& q);
GQuat unpack(PackedQuat packed);

} // namespace kst
