#pragma once

#include <array>

#include "source/utility/math/Vector.h"

namespace kst {

/// A 4 by 4 matrix that acts on row vectors: rows 0 to 2 are where the axes go, row 3 is the translation, and `a * b`
/// acts as a, then b. The default is the identity.
struct Matrix4 {
    std::array<std::array<float, 4>, 4> m{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};

    bool operator==(const Matrix4&) const = default;

    /// The first three entries of a row.
    Vector3 row(int index) const {
        const auto& r = m[static_cast<std::size_t>(index)];
        return {r[0], r[1], r[2]};
    }
    void set_row(int index, const Vector3& v) {
        auto& r = m[static_cast<std::size_t>(index)];
        r[0] = v.x;
        r[1] = v.y;
        r[2] = v.z;
    }
};

Matrix4 operator*(const Matrix4& a, const Matrix4& b);

/// Of a point: the translation acts.
Vector3 transform_point(const Vector3& point, const Matrix4& matrix);
/// Of a direction: the translation does not act.
Vector3 transform_direction(const Vector3& direction, const Matrix4& matrix);

/// The inverse of a matrix whose last column is that of the identity, scaling and shearing allowed. The identity if it
/// has no inverse.
Matrix4 affine_inverse(const Matrix4& matrix);

} // namespace kst
