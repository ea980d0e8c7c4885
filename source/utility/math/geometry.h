#pragma once

#include <optional>

#include "source/utility/math/Vector.h"

namespace kst {

/// In radians, 0..pi; 0 if one of them is the zero vector.
float angle_between(const Vector3& a, const Vector3& b);

/// A vector of length 1 at a right angle to `v`, always the same one; z for the zero vector.
Vector3 any_orthogonal(const Vector3& v);

/// From a point to the nearest point of the segment from `a` to `b`, ends included.
float distance_to_segment(const Vector3& point, const Vector3& a, const Vector3& b);

/// Where the line through `a` and `b` meets the line through `c` and `d`, both without end. Nothing for parallel lines,
/// and for lines that pass each other at more than a ten-thousandth of the largest coordinate (at least of 1).
std::optional<Vector3> line_intersection(const Vector3& a, const Vector3& b, const Vector3& c, const Vector3& d);

} // namespace kst
