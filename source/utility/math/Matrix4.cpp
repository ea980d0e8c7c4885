#include "source/utility/math/Matrix4.h"

#include <cmath>

namespace kst {

Matrix4 operator*(const Matrix4& a, const Matrix4& b) {
    Matrix4 product;
    for (std::size_t row = 0; row < 4; ++row)
        for (std::size_t column = 0; column < 4; ++column) {
            float sum = 0;
            for (std::size_t i = 0; i < 4; ++i)
                sum += a.m[row][i] * b.m[i][column];
            product.m[row][column] = sum;
        }
    return product;
}

Vector3 transform_direction(const Vector3& direction, const Matrix4& matrix) {
    return direction.x * matrix.row(0) + direction.y * matrix.row(1) + direction.z * matrix.row(2);
}

Vector3 transform_point(const Vector3& point, const Matrix4& matrix) {
    return transform_direction(point, matrix) + matrix.row(3);
}

Matrix4 affine_inverse(const Matrix4& matrix) {
    // Cramer's rule in double precision: the columns of the inverse are cross products of the rows.
    const auto entry = [&](std::size_t row, std::size_t column) {
        return static_cast<double>(matrix.m[row % 3][column % 3]);
    };
    const auto cofactor = [&](std::size_t row, std::size_t column) {
        return entry(row + 1, column + 1) * entry(row + 2, column + 2) -
               entry(row + 1, column + 2) * entry(row + 2, column + 1);
    };
    const double determinant =
        entry(0, 0) * cofactor(0, 0) + entry(0, 1) * cofactor(0, 1) + entry(0, 2) * cofactor(0, 2);
    if (determinant == 0 || !std::isfinite(determinant))
        return {};
    Matrix4 inverse;
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            inverse.m[row][column] = static_cast<float>(cofactor(column, row) / determinant);
    inverse.set_row(3, -transform_direction(matrix.row(3), inverse));
    return inverse;
}

} // namespace kst
