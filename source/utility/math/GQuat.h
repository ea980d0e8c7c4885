#pragma once

#include "source/utility/math/Matrix4.h"

namespace kst {

/// A quaternion; a rotation when its length is 1. The default is the rotation by nothing.
struct GQuat {
    float x = 0, y = 0, z = 0, w = 1;

    bool operator==(const GQuat&) const = default;
};

/// In double precision, rounded once.
float dot(const GQuat& p, const GQuat& q);
/// The rotation by q, then by p (Hamilton's product p q).
GQuat operator*(const GQuat& p, const GQuat& q);
constexpr GQuat conjugate(const GQuat& q) {
    return {-q.x, -q.y, -q.z, q.w};
}
GQuat normalised(const GQuat& q);

/// By `angle` radians about an axis of any length, counter-clockwise as seen against it. No rotation for a zero axis.
GQuat rotation_about(const Vector3& axis, float angle);
Vector3 rotate(const GQuat& q, const Vector3& v);

/// Spherical interpolation from p (a = 0) to q (a = 1), the short way round. Not normalised.
GQuat slerp(const GQuat& p, const GQuat& q, float a);

/// The rotation matrix of a unit quaternion, and back. A matrix that scales or shears gives some rotation near it.
Matrix4 to_matrix(const GQuat& q);
GQuat to_quaternion(const Matrix4& m);

} // namespace kst
