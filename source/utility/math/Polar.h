#pragma once

#include "source/utility/math/Vector.h"

namespace kst {

/// A direction and a distance in a frame with z up: `spin` counter-clockwise about z from the x axis, `pitch` up from
/// the plane of x and y, both in radians, and the distance `r`.
///
///   (0, 0, 1) is x,  (pi/2, 0, 1) is y,  (any, pi/2, 1) is z
struct Polar {
    float spin = 0, pitch = 0, r = 0;

    bool operator==(const Polar&) const = default;
};

/// Spin in -pi..pi, pitch in -pi/2..pi/2; all zero for the zero vector.
Polar to_polar(const Vector3& v);
Vector3 to_vector(const Polar& polar);

} // namespace kst
