#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "source/utility/math/GQuat.h"

namespace {

using kst::GQuat;
using kst::length;
using kst::Matrix4;
using kst::rotation_about;
using kst::Vector3;

constexpr float right_angle = std::numbers::pi_v<float> / 2;

void expect_near(const Vector3& a, const Vector3& b, float tolerance = 1e-5f) {
    EXPECT_NEAR(a.x, b.x, tolerance);
    EXPECT_NEAR(a.y, b.y, tolerance);
    EXPECT_NEAR(a.z, b.z, tolerance);
}

/// Evenly spread over no sphere in particular, but in every octant and of every length up to 1.7.
Vector3 random_vector(std::mt19937& random) {
    const auto component = [&] { return static_cast<float>(random() % 2001) / 1000.0f - 1.0f; };
    const float x = component(), y = component(), z = component();
    return {x, y, z};
}

TEST(MathTest, QuarterTurnsGoCounterClockwise) {
    struct Turn {
        Vector3 axis, from, to;
    };
    for (const Turn& turn : {Turn{{0, 0, 1}, {1, 0, 0}, {0, 1, 0}}, Turn{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
                             Turn{{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}, Turn{{0, 0, 7}, {0, 1, 0}, {-1, 0, 0}}}) {
        const GQuat q = rotation_about(turn.axis, right_angle);
        expect_near(rotate(q, turn.from), turn.to);
        expect_near(transform_direction(turn.from, to_matrix(q)), turn.to);
    }
    EXPECT_EQ(rotation_about({}, 1), GQuat{});
}

TEST(MathTest, MatrixAndQuaternionSayTheSame) {
    std::mt19937 random(3);
    for (int i = 0; i < 1000; ++i) {
        // Up to three whole turns, so that every branch of the way back is taken.
        const GQuat q = rotation_about(random_vector(random), 0.02f * static_cast<float>(i));
        const GQuat back = to_quaternion(to_matrix(q));
        EXPECT_NEAR(std::abs(dot(q, back)), 1, 1e-5f) << i;
        const GQuat p = rotation_about(random_vector(random), 1);
        const Vector3 v = random_vector(random);
        expect_near(rotate(p * q, v), rotate(p, rotate(q, v)));
        expect_near(transform_direction(v, to_matrix(q) * to_matrix(p)), rotate(p * q, v));
    }
}

TEST(MathTest, InverseUndoesScaleShearAndTranslation) {
    Matrix4 matrix;
    matrix.set_row(0, {2, 0, 0});
    matrix.set_row(1, {1, 3, 0});
    matrix.set_row(2, {0, -1, 0.5f});
    matrix.set_row(3, {7, -4, 9});
    const Matrix4 inverse = affine_inverse(matrix);
    const Vector3 point{3, 5, -8};
    expect_near(transform_point(transform_point(point, matrix), inverse), point);
    EXPECT_EQ(matrix * inverse, Matrix4{});
    matrix.set_row(0, {0, 0, 0});
    EXPECT_EQ(affine_inverse(matrix), Matrix4{});
}

TEST(MathTest, SlerpTakesTheShortWayAtEvenSpeed) {
    const Vector3 axis{1, 2, 3};
    const GQuat from = rotation_about(axis, 0.25f);
    const GQuat to = rotation_about(axis, 1.25f);
    for (const float a : {0.0f, 0.1f, 0.5f, 0.9f, 1.0f}) {
        const GQuat expected = rotation_about(axis, 0.25f + a);
        EXPECT_NEAR(dot(slerp(from, to, a), expected), 1, 1e-6f) << a;
        EXPECT_NEAR(dot(slerp(from, {-to.x, -to.y, -to.z, -to.w}, a), expected), 1, 1e-6f) << a;
    }
    EXPECT_EQ(slerp(from, from, 0.5f), from);
}

TEST(MathTest, LengthSurvivesExtremeComponents) {
    EXPECT_EQ(length({3e30f, 4e30f, 0}), 5e30f);
    EXPECT_EQ(length({3e-30f, 0, 4e-30f}), 5e-30f);
    EXPECT_EQ(kst::normalised(Vector3{0.00009f, 0, 0}), Vector3{});
    EXPECT_EQ(kst::normalised(Vector3{0, -0.5f, 0}), (Vector3{0, -1, 0}));
}

} // namespace
