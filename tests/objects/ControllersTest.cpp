#include "objects/controllers/CompositeControllers.h"
#include "objects/controllers/ConstControllers.h"
#include "objects/controllers/KeyedControllers.h"
#include "tests/objects/stream_support.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numbers>
#include <random>
#include <sstream>

namespace kst {
namespace {

using test_support::Creators;
using test_support::load;
using test_support::saved;
using test_support::StreamBytes;

constexpr float right_angle = std::numbers::pi_v<float> / 2;

std::string printed(const Controller& controller) {
    std::ostringstream out;
    controller.print(out);
    return out.str();
}

void expect_near(const Matrix4& m, const std::array<Vector3, 3>& rows) {
    for (int i = 0; i < 3; ++i) {
        const Vector3 difference = m.row(i) - rows[static_cast<std::size_t>(i)];
        EXPECT_LT(length(difference), 1e-6f) << "row " << i;
    }
}

struct Member {
    std::string_view name;
    std::uint32_t family, type_id;
    StreamBytes payload;
    std::uint32_t memory_size;
};

/// Flags, start, end, count and `count` keys of so many floats.
StreamBytes track(std::uint32_t count, int floats_a_key) {
    StreamBytes bytes;
    bytes.u32(2).f32({0, 9}).u32(count);
    for (std::uint32_t i = 0; i < count; ++i)
        for (int k = 0; k < floats_a_key; ++k)
            bytes.f32({static_cast<float>(i) + static_cast<float>(k) / 4});
    return bytes;
}

TEST(ControllerFamilyTest, EveryMemberHasItsIdentifierFormAndSize) {
    constexpr std::uint32_t f = 0x71015166, v2 = 0x787D4CEB, v3 = 0x1F014604, r = 0x564E7A11;
    const StreamBytes three_null = StreamBytes().u32(0).u32(0).u32(0);
    const std::vector<Member> members{
        {"ConstFloatController", f, 0x2060697E, StreamBytes().f32({1}), 12},
        {"ConstVector2Controller", v2, 0x19F5386A, StreamBytes().f32({1, 2}), 16},
        {"ConstVector3Controller", v3, 0x5B0168D0, StreamBytes().f32({1, 2, 3}), 20},
        {"ConstRotationController", r, 0x2E540F3C, StreamBytes().f32({1, 2, 3, 4}), 24},
        {"StepFloatController", f, 0x6DA951B2, track(3, 2), 12 + 3 * 8},
        {"StepVector2Controller", v2, 0x49B17EFB, track(3, 3), 12 + 3 * 12},
        {"StepVector3Controller", v3, 0x544E238F, track(3, 4), 12 + 3 * 16},
        {"LinearFloatController", f, 0x76BF5B66, track(3, 2), 12 + 3 * 8},
        {"LinearVector2Controller", v2, 0x247C751B, track(3, 3), 12 + 3 * 12},
        {"LinearVector3Controller", v3, 0x26A5128C, track(3, 4), 12 + 3 * 16},
        {"BezierFloatController", f, 0x29743550, track(3, 4), 12 + 3 * 16},
        {"BezierVector3Controller", v3, 0x28DB639A, track(3, 10), 12 + 3 * 40},
        {"QuatLinearRotationController", r, 0x648A206C, track(3, 5), 12 + 3 * 20},
        {"QuatBezRotationController", r, 0x197345A5, track(3, 13), 12 + 3 * 52},
        {"XYZVector3Controller", v3, 0x33DA0FC4, three_null, 20},
        {"EulerRotationController", r, 0x033606E8, three_null, 20},
        {"LookAtRotationController", r, 0x22126DC0, three_null, 32},
        {"LookAtConstrRotationController", r, 0x679D695B, StreamBytes().u32(99).u32(0).u32(0).u32(0), 24},
        {"Object3DAlignVector3Controller", v3, v3, {}, 12},
        {"Object3DAlignRotationController", r, r, {}, 12},
    };
    const Creators creators;
    for (const Member& member : members) {
        StreamBytes data;
        data.text("the name").bytes += member.payload.bytes;
        const std::string bytes = StreamBytes().u32(1).object(member.type_id, 1, data).bytes;
        ObjectDatabase database;
        load(database, bytes);
        auto& controller = dynamic_cast<Controller&>(*database.objects.at(0));
        EXPECT_EQ(printed(controller).substr(0, member.name.size()), member.name);
        EXPECT_EQ(controller.type_id(), member.type_id);
        for (const std::uint32_t base : {member.family, 0x2EB43C77u, 0x63BE3013u})
            EXPECT_TRUE(controller.is_a(base)) << member.name;
        EXPECT_FALSE(controller.is_a(member.family == f ? v3 : f)) << member.name;
        EXPECT_EQ(controller.memory_size(), member.memory_size) << member.name;
        EXPECT_EQ(saved(database), bytes) << member.name;
        EXPECT_EQ(controller.end_time(), member.payload.bytes.size() > 16 ? 9 : 0) << member.name;
    }
}

TEST(KeyedControllersTest, StepGivesThePreviousKey) {
    StepVector2Controller step;
    Vector2 value{7, 7};
    EXPECT_FALSE(step.get(0, value));
    EXPECT_EQ(value, (Vector2{7, 7})) << "untouched by an empty track";
    step.add_key(1, {1, 2});
    step.add_key(2, {3, 4});
    ASSERT_TRUE(step.get(1.9f, value));
    EXPECT_EQ(value, (Vector2{1, 2}));
    ASSERT_TRUE(step.get(2.1f, value));
    EXPECT_EQ(value, (Vector2{3, 4}));
}

TEST(KeyedControllersTest, LinearBlendsByComponent) {
    LinearVector3Controller linear;
    linear.add_key(2, {0, 8, -4});
    linear.add_key(6, {4, 0, -8});
    Vector3 value;
    ASSERT_TRUE(linear.get(3, value));
    EXPECT_EQ(value, (Vector3{1, 6, -5}));
}

/// De Casteljau's construction in double precision.
double literal_bezier(double p0, double out, double in, double p3, double delta, double a) {
    const double p1 = p0 + delta / 3 * out, p2 = p3 - delta / 3 * in;
    const auto between = [a](double x, double y) { return x + a * (y - x); };
    const double q0 = between(p0, p1), q1 = between(p1, p2), q2 = between(p2, p3);
    return between(between(q0, q1), between(q1, q2));
}

TEST(KeyedControllersTest, BezierFollowsTheTangents) {
    std::mt19937 random(2);
    const auto any = [&] { return static_cast<float>(random() % 2000) / 100 - 10; };
    for (int i = 0; i < 200; ++i) {
        const BezierContent<Vector3> from{{any(), any(), any()}, {}, {any(), any(), any()}};
        const BezierContent<Vector3> to{{any(), any(), any()}, {any(), any(), any()}, {}};
        BezierVector3Controller vectors;
        vectors.add_key(1, from);
        vectors.add_key(4, to);
        BezierFloatController floats;
        floats.add_key(1, {from.value.y, 0, from.out.y});
        floats.add_key(4, {to.value.y, to.in.y, 0});
        const float time = 1 + static_cast<float>(random() % 301) / 100;
        const double a = (static_cast<double>(time) - 1) / 3;
        Vector3 value;
        float y = 0;
        ASSERT_TRUE(vectors.get(time, value) && floats.get(time, y));
        EXPECT_NEAR(value.x, literal_bezier(from.value.x, from.out.x, to.in.x, to.value.x, 3, a), 1e-4);
        EXPECT_NEAR(value.y, literal_bezier(from.value.y, from.out.y, to.in.y, to.value.y, 3, a), 1e-4);
        EXPECT_NEAR(value.z, literal_bezier(from.value.z, from.out.z, to.in.z, to.value.z, 3, a), 1e-4);
        EXPECT_EQ(y, value.y);
    }
}

TEST(KeyedControllersTest, RotationsTurnByTheAngleInBetween) {
    const Vector3 axis{2, -1, 2};
    const auto turned = [&](float angle) { return rotation_about(axis, angle); };
    QuatLinearRotationController linear;
    linear.add_key(0, turned(0.5f));
    linear.add_key(4, turned(2.5f));
    QuatLinearRotationControllerPacked packed;
    packed.add_key(0, pack(turned(0.5f)));
    packed.add_key(4, pack(turned(2.5f)));
    // About one axis the construction is that of the angles alone, which are the four points of a cubic.
    QuatBezRotationController bezier;
    bezier.add_key(0, {turned(0.5f), {}, turned(0.7f)});
    bezier.add_key(4, {turned(2.5f), turned(1.9f), {}});
    for (const float time : {0.0f, 0.5f, 1.0f, 3.9f, 4.0f, 5.0f}) {
        const double a = std::min(static_cast<double>(time) / 4, 1.0);
        GQuat q;
        ASSERT_TRUE(linear.get(time, q));
        EXPECT_NEAR(dot(q, turned(static_cast<float>(0.5 + 2 * a))), 1, 1e-6);
        Matrix4 matrix;
        ASSERT_TRUE(linear.get_matrix(time, matrix));
        EXPECT_EQ(matrix, to_matrix(q));
        ASSERT_TRUE(packed.get(time, q));
        EXPECT_NEAR(dot(q, turned(static_cast<float>(0.5 + 2 * a))), 1, 1e-5);
        ASSERT_TRUE(bezier.get(time, q));
        // Tangents of 3 (0.7 - 0.5) / 4 and 3 (2.5 - 1.9) / 4.
        EXPECT_NEAR(dot(q, turned(static_cast<float>(literal_bezier(0.5, 0.15, 0.45, 2.5, 4, a)))), 1, 1e-6);
    }
}

TEST(KeyedControllersTest, RotationsHaveTheBitsOfSlerpWhateverWasAskedBefore) {
    std::mt19937 random(3);
    const auto any = [&] { return static_cast<float>(random() % 2000) / 1000 - 1; };
    QuatLinearRotationController rotations;
    const auto change_keys = [&](float x_scale) {
        for (const float time : {0.0f, 1.0f})
            rotations.add_key(time, {any() * x_scale, any(), any(), any()});
    };
    for (int i = 0; i < 500; ++i) {
        change_keys(i % 2 == 0 ? 1.0f : 0.0f);
        for (const float time : {0.25f, 0.75f, 1.0f}) {
            const auto& keys = rotations.track().keys();
            GQuat q;
            ASSERT_TRUE(rotations.get(time, q));
            EXPECT_EQ(q, slerp(keys[0].value, keys[1].value, time));
        }
    }
}

TEST(KeyedControllersTest, PrintsKeys) {
    LinearVector3Controller linear;
    linear.add_key(0.5f, {1, 2.25f, -3});
    linear.add_key(2, {});
    EXPECT_EQ(printed(linear), "LinearVector3Controller\nt: 0.5 cp: 1 2.25 -3\nt: 2 cp: 0 0 0\n");
    QuatLinearRotationControllerPacked packed;
    packed.add_key(1, pack({0, 0, 0, -1}));
    EXPECT_EQ(printed(packed), "QuatLinearRotationControllerPacked\nt: 1 cp: 0 0 0 1\n");
    BezierFloatController bezier;
    bezier.add_key(0, {});
    EXPECT_EQ(printed(bezier), "BezierFloatController");
    EXPECT_EQ(printed(ConstVector2Controller({1, 0.5f})), "ConstVector2Controller 1 0.5");
    EXPECT_EQ(printed(XYZVector3Controller()), "XYZVector3Controller");
}

TEST(KeyedControllersTest, SmoothedEndsMeetInTheMiddle) {
    LinearVector3Controller linear;
    for (const float x : {0.0f, 10.0f, 20.0f, 30.0f, 40.0f})
        linear.add_key(x, {x, 0, 0});
    linear.smooth_ends(0);
    linear.smooth_ends(4); // weights 1 and 3/4 towards 20; the third key is neither end's
    std::vector<float> values;
    for (const Key<Vector3>& key : linear.track().keys())
        values.push_back(key.value.x);
    EXPECT_THAT(values, testing::ElementsAre(20, 17.5f, 20, 22.5f, 20));

    const auto turned = [](float angle) { return rotation_about({0, 0, 1}, angle); };
    QuatLinearRotationController rotations;
    QuatLinearRotationControllerPacked packed;
    for (int i = 0; i < 4; ++i) {
        rotations.add_key(static_cast<float>(i), turned(0.1f * static_cast<float>(i)));
        packed.add_key(static_cast<float>(i), pack(turned(0.1f * static_cast<float>(i))));
    }
    rotations.smooth_ends(2);
    packed.smooth_ends(2);
    const std::array<float, 4> angles{0.15f, 0.125f, 0.175f, 0.15f};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(dot(rotations.track().keys()[i].value, turned(angles[i])), 1, 1e-6) << i;
        EXPECT_NEAR(dot(unpack(packed.track().keys()[i].value), turned(angles[i])), 1, 1e-5) << i;
    }
    LinearFloatController untouched;
    untouched.add_key(0, 0);
    untouched.add_key(1, 1);
    untouched.smooth_ends(9);
    EXPECT_EQ(untouched.track().keys()[0].value, 0);
    LinearVector3Controller().smooth_ends(3);
}

TEST(CompositeControllersTest, MissingComponentsStay) {
    LinearFloatController ramp;
    ramp.add_key(2, 5);
    ramp.add_key(6, 9);
    StepFloatController nothing, late;
    late.add_key(9, 1);
    XYZVector3Controller xyz;
    EXPECT_EQ(xyz.start_time(), 0);
    xyz.set_child(0, &nothing);
    xyz.set_child(1, &ramp);
    Vector3 value{-1, -2, -3};
    ASSERT_TRUE(xyz.get(3, value));
    EXPECT_EQ(value, (Vector3{-1, 6, -3}));
    xyz.set_child(0, &late);
    EXPECT_EQ(xyz.start_time(), 2);
    EXPECT_EQ(xyz.end_time(), 9);
}

TEST(CompositeControllersTest, EulerTurnsAboutXThenYThenZ) {
    std::array<ConstFloatController, 3> angles;
    const auto euler = [&](float a, float b, float c) {
        angles = {ConstFloatController(a), ConstFloatController(b), ConstFloatController(c)};
        EulerRotationController controller;
        for (std::size_t i = 0; i < 3; ++i)
            controller.set_child(i, &angles[i]);
        Matrix4 matrix;
        EXPECT_TRUE(controller.get_matrix(0, matrix));
        GQuat q;
        EXPECT_TRUE(controller.get(0, q));
        EXPECT_NEAR(std::abs(dot(q, to_quaternion(matrix))), 1, 1e-6);
        return matrix;
    };
    expect_near(euler(right_angle, 0, 0), {Vector3{1, 0, 0}, {0, 0, 1}, {0, -1, 0}});
    expect_near(euler(0, right_angle, 0), {Vector3{0, 0, -1}, {0, 1, 0}, {1, 0, 0}});
    expect_near(euler(0, 0, right_angle), {Vector3{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}});
    const Matrix4 product = to_matrix(rotation_about({1, 0, 0}, 0.3f)) * to_matrix(rotation_about({0, 1, 0}, -1.1f)) *
                            to_matrix(rotation_about({0, 0, 1}, 2.2f));
    expect_near(euler(0.3f, -1.1f, 2.2f), {product.row(0), product.row(1), product.row(2)});

    EulerRotationController incomplete;
    incomplete.set_child(0, angles.data());
    Matrix4 matrix;
    EXPECT_FALSE(incomplete.get_matrix(0, matrix));
}

} // namespace
} // namespace kst
