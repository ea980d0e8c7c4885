#include "source/utility/math/GQuat.h"

#include "source/utility/math/quaternion_sums.h"

#include <algorithm>
#include <cmath>

namespace kst {

float dot(const GQuat& p, const GQuat& q) {
    return static_cast<float>(exact_dot(p, q));
}

GQuat operator*(const GQuat& p, const GQuat& q) {
    return {p.w * q.x + p.x * q.w + p.y * q.z - p.z * q.y, p.w * q.y - p.x * q.z + p.y * q.w + p.z * q.x,
            p.w * q.z + p.x * q.y - p.y * q.x + p.z * q.w, p.w * q.w - p.x * q.x - p.y * q.y - p.z * q.z};
}

GQuat normalised(const GQuat& q) {
    const double size = std::sqrt(exact_dot(q, q));
    if (size == 0)
        return {};
    return weighted_sum(1 / size, q, 0, q);
}

GQuat rotation_about(const Vector3& axis, float angle) {
    const Vector3 unit = normalised(axis, 0);
    if (unit == Vector3{})
        return {};
    const double half = static_cast<double>(angle) / 2;
    return weighted_sum(std::sin(half), {unit.x, unit.y, unit.z, 0}, std::cos(half), {});
}

Vector3 rotate(const GQuat& q, const Vector3& v) {
    // v + 2 w (u × v) + 2 u × (u × v), with u the vector part: q v q* without the products that cancel.
    const Vector3 u{q.x, q.y, q.z};
    const Vector3 across = 2.0f * cross(u, v);
    return v + q.w * across + cross(u, across);
}

GQuat blend(const GQuat& p, const GQuat& q, float blend) {
    const auto a = static_cast<double>(blend);
    double c = exact_dot(p, q);
    const double sign = c < 0 ? -1 : 1;
    c *= sign;
    if (c >= 0.95)
        return normalised(weighted_sum(1 - a, p, sign * a, q));
    const double angle = std::acos(c);
    const double sine = std::sin(angle);
    return weighted_sum(std::sin((1 - a) * angle) / sine, p, sign * (std::sin(a * angle) / sine), q);
}

Matrix4 to_matrix(const GQuat& q) {
    const float xx = q.x * q.x, yy = q.y * q.y, zz = q.z * q.z;
    const float xy = q.x * q.y, xz = q.x * q.z, yz = q.y * q.z;
    const float wx = q.w * q.x, wy = q.w * q.y, wz = q.w * q.z;
    Matrix4 m;
    m.set_row(0, {1 - 2 * (yy + zz), 2 * (xy + wz), 2 * (xz - wy)});
    m.set_row(1, {2 * (xy - wz), 1 - 2 * (xx + zz), 2 * (yz + wx)});
    m.set_row(2, {2 * (xz + wy), 2 * (yz - wx), 1 - 2 * (xx + yy)});
    return m;
}

GQuat to_quaternion(const Matrix4& matrix) {
    // Shepperd's method: the component of largest magnitude comes from the diagonal, so that nothing small is divided
    // by; the others follow from sums and differences across the diagonal.
    const auto& m = matrix.m;
    const float trace = m[0][0] + m[1][1] + m[2][2];
    GQuat q;
    if (trace > 0) {
        const float s = 2 * std::sqrt(trace + 1);
        q = {(m[1][2] - m[2][1]) / s, (m[2][0] - m[0][2]) / s, (m[0][1] - m[1][0]) / s, 0.25f * s};
    } else if (m[0][0] >= m[1][1] && m[0][0] >= m[2][2]) {
        const float s = 2 * std::sqrt(std::max(1 + m[0][0] - m[1][1] - m[2][2], 0.0f));
        q = {0.25f * s, (m[0][1] + m[1][0]) / s, (m[2][0] + m[0][2]) / s, (m[1][2] - m[2][1]) / s};
    } else if (m[1][1] >= m[2][2]) {
        const float s = 2 * std::sqrt(std::max(1 + m[1][1] - m[0][0] - m[2][2], 0.0f));
        q = {(m[0][1] + m[1][0]) / s, 0.25f * s, (m[1][2] + m[2][1]) / s, (m[2][0] - m[0][2]) / s};
    } else {
        const float s = 2 * std::sqrt(std::max(1 + m[2][2] - m[0][0] - m[1][1], 0.0f));
        q = {(m[2][0] + m[0][2]) / s, (m[1][2] + m[2][1]) / s, 0.25f * s, (m[0][1] - m[1][0]) / s};
    }
    return q;
}

} // namespace kst
