// The value classes of mathematics, and the rotations and distances they rest on.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

#include "script/value/BasicClasses.h"
#include "script/value/ClassInt64.h"
#include "script/value/ClassPolar.h"
#include "script/value/ClassQuaternion.h"
#include "script/value/ClassVector3.h"
#include "source/utility/math/Rotations.h"
#include "source/utility/math/geometry.h"
#include "tests/script/NumberValues.h"
#include "tests/script/RuntimeSupport.h"

namespace kst::script {
namespace {

constexpr float right_angle = std::numbers::pi_v<float> / 2;
constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();

ScriptValue i64(std::int64_t value) {
    return int64_value(value);
}

// The plain ones stand in docs/script-math.md.
TEST(MathValue, operators_and_members_print_what_was_worked_out) {
    const ScriptValue v = v3(3, -4, 12);
    const ScriptValue left = quaternion_value(rotation_ypr({right_angle, 0, 0}));
    const ScriptValue up = quaternion_value(rotation_ypr({0, right_angle / 2, 0}));
    const auto member = [](const ScriptValue& of, const char* name) { return of.member(intern(name)).to_string(); };
    const std::pair<std::string, std::string> cases[] = {
        {v.to_string(), "[x:3.0000 y:-4.0000 z:12.0000]"},
        {v3(nan_number, 0.00005f, 1e9f).to_string(), "[x:nan y:0.0000 z:1000000000.0000]"},
        {v.multiply(v3(2, 3, 4)).to_string(), "[x:6.0000 y:-12.0000 z:48.0000]"},
        {v.divide(v3(3, 4, 0)).to_string(), "[x:1.0000 y:-1.0000 z:inf]"},
        {member(v, "normalized"), "[x:0.2308 y:-0.3077 z:0.9231]"},
        {member(v3(0, 0, 0), "normalized"), "[x:0.0000 y:0.0000 z:0.0000]"},
        {member(v3(0, 1e-30f, 0), "normalized"), "[x:0.0000 y:1.0000 z:0.0000]"},
        {up.to_string(), "[yaw:0, pitch: 0.78539819, roll: 0]"},
        {member(quaternion_value({0, 0, 3, 3}), "normalized"), left.to_string()},
        {left.multiply(v3(1, 0, 0)).multiply(v3(0, 1, 0)).to_string(), "[x:0.0000 y:1.0000 z:0.0000]"},
        {up.multiply(left).multiply(v3(1, 0, 5)).multiply(v3(0, 1, 0)).to_string(), "[x:-0.0000 y:1.0000 z:0.0000]"},
        {i64(lowest).to_string(), "-9223372036854775808"},
        {i64(lowest).subtract(i64(1)).to_string(), "9223372036854775807"},
        {i64(std::int64_t{1} << 40).multiply(i64(1 << 20)).to_string(), "1152921504606846976"},
        {i64(lowest).divide(number(-1)).to_string(), "-9223372036854775808"},
        {i64(-7).divide(number(2.9f)).to_string(), "-3"},
        {i64(5).add(number(1e30f)).to_string(), "-9223372036854775804"},
        {i64(5).add(number(nan_number)).to_string(), "5"},
        {member(i64(-1), "hi") + " " + member(i64(-2), "lo") + " " + member(i64(0x700000005), "hi"),
         "-1 4.2949673e+09 7"},
        {number(2).add(i64(3)).to_string(), "5"},
    };
    for (const auto& [got, wanted] : cases)
        EXPECT_EQ(got, wanted);
    EXPECT_NEAR(left.member(intern("yaw")).to_number(), right_angle, 1e-6f);
    EXPECT_NEAR(left.member(intern("inverse")).member(intern("yaw")).to_number(), -right_angle, 1e-6f);
    EXPECT_NEAR(quaternion_value(rotation_ypr({0, 0, 1})).member(intern("roll")).to_number(), 1, 1e-6f);
}

TEST(MathValue, wrong_operands_are_errors_that_name_both_types) {
    const ScriptValue v = v3(1, 2, 3), p = polar_value({}), q = quaternion_value({}), i = i64(1),
                      text = string_value("x");
    const std::pair<std::string, std::string> cases[] = {
        {error_of([&] { v.add(number(1)); }), "Value is not of type <vector3>, it is of type <number>"},
        {error_of([&] { v.multiply(q); }), "Value is not of type <vector3>, it is of type <quaternion>"},
        {error_of([&] { p.subtract(v); }), "Value is not of type <polar>, it is of type <vector3>"},
        {error_of([&] { p.multiply(p); }), "Value is not of type <number>, it is of type <polar>"},
        {error_of([&] { q.multiply(number(2)); }), "Value is not of type <quaternion>, it is of type <number>"},
        {error_of([&] { q.add(q); }), "Operator  +  does not exist!"},
        {error_of([&] { i.add(text); }), "Value is not of type <int64>, it is of type <string>"},
        {error_of([&] { i.divide(number(0.5f)); }), "Division by zero"},
        {error_of([&] { ClassInt64::instance().read(number(1)); }),
         "Value is not of type <int64>, it is of type <number>"},
        {error_of([&] { v.member(intern("w")); }), "cant find member: w in type <vector3>"},
        {error_of([&] { v.member(intern("x")).set(v); }), "cant set this to a value (type:<number>)"},
    };
    for (const auto& [got, wanted] : cases)
        EXPECT_EQ(got, wanted);
    EXPECT_TRUE(v.has_member(intern("len")));
    EXPECT_FALSE(v.has_member(intern("yaw")));
}

TEST(MathValue, order_and_truth_go_by_content) {
    const std::vector<ScriptValue> ascending{v3(-1, 9, 9), v3(0, 1, 2), v3(0, 1, nan_number), v3(nan_number, 0, 0)};
    for (std::size_t a = 0; a < ascending.size(); ++a)
        for (std::size_t b = 0; b < ascending.size(); ++b) {
            EXPECT_EQ(ascending[a].less(ascending[b]), a < b) << a << b;
            EXPECT_EQ(ascending[a].equals(ascending[b]), a == b) << a << b;
        }
    EXPECT_TRUE(v3(1, 2, 3).equals(v3(1, 2, 3)));
    EXPECT_TRUE(v3(-0.0f, 0, 0).equals(v3(0, 0, 0)));
    EXPECT_TRUE(i64(-1).less(i64(1)));
    EXPECT_FALSE(i64(1).equals(number(1)));
    EXPECT_TRUE(v3(0, 0, 0).to_boolean());
    EXPECT_FALSE(i64(0).to_boolean());
    EXPECT_EQ(i64(-3).to_number(), -3);
    EXPECT_EQ(v3(1, 1, 1).to_number(), 0);
}

TEST(MathValue, records_go_back_to_their_pools) {
    const auto live = [] {
        return ClassVector3::instance().live() + ClassPolar::instance().live() + ClassQuaternion::instance().live() +
               ClassInt64::instance().live();
    };
    const std::size_t before = live();
    {
        const ScriptValue v = v3(1, 2, 3), copy = v;
        const ScriptValue sum = copy.add(v), p = polar_value({}), q = quaternion_value({}), i = i64(9);
        EXPECT_THROW(sum.add(p), DSError);
        EXPECT_EQ(live(), before + 5);
    }
    EXPECT_EQ(live(), before);
}

TEST(Int64Text, is_decimal_or_hexadecimal_and_must_fit) {
    struct Case {
        const char* text;
        std::optional<std::int64_t> value;
    };
    for (const Case& c :
         {Case{" -12 ", -12}, Case{"+7", 7}, Case{"9223372036854775807", highest}, Case{"-9223372036854775808", lowest},
          Case{"9223372036854775808", {}}, Case{"-9223372036854775809", {}}, Case{"0xFFFFffffFFFFffff", -1},
          Case{"-0x10", -16}, Case{"0x10000000000000000", {}}, Case{"", {}}, Case{"-", {}}, Case{"0x", {}},
          Case{"--1", {}}, Case{"1.5", {}}, Case{"12k", {}}})
        EXPECT_EQ(scan_int64(c.text), c.value) << c.text;
}

void expect_near(const Vector3& got, const Vector3& wanted, float tolerance = 2e-5f) {
    EXPECT_LE(length(got - wanted), tolerance)
        << got.x << " " << got.y << " " << got.z << " for " << wanted.x << " " << wanted.y << " " << wanted.z;
}

TEST(Rotations, quarter_turns_follow_the_names) {
    struct Case {
        GQuat turn;
        Vector3 forward, left;
    };
    for (const Case& c :
         {Case{rotation_ypr({right_angle, 0, 0}), {0, 1, 0}, {-1, 0, 0}},
          Case{rotation_ypr({0, right_angle, 0}), {0, 0, 1}, {0, 1, 0}},
          Case{rotation_ypr({0, 0, right_angle}), {1, 0, 0}, {0, 0, 1}},
          Case{rotation_ypr({right_angle, 0, right_angle}), {0, 1, 0}, {0, 0, 1}},
          Case{rotation_xyz(right_angle, 0, right_angle), {0, 1, 0}, {0, 0, 1}},
          Case{rotation_xyz(0, right_angle, 0), {0, 0, -1}, {0, 1, 0}},
          Case{look_rotation({0, -2, 0}), {0, -1, 0}, {1, 0, 0}}, Case{look_rotation({0, 0, 3}), {0, 0, 1}, {0, 1, 0}},
          Case{look_rotation({0, 0, -3}), {0, 0, -1}, {0, 1, 0}},
          Case{look_rotation({0, 1, 0}, {0, 5, 0}), {0, 1, 0}, {-1, 0, 0}},
          Case{look_rotation({1, 0, 0}, {0, 1, 0}), {1, 0, 0}, {0, 0, -1}},
          Case{look_rotation({}), {1, 0, 0}, {0, 1, 0}},
          Case{rotation_between({3, 0, 0}, {0, 0, 4}), {0, 0, 1}, {0, 1, 0}},
          Case{rotation_between({}, {0, 0, 4}), {1, 0, 0}, {0, 1, 0}}}) {
        expect_near(rotate(c.turn, {1, 0, 0}), c.forward);
        expect_near(rotate(c.turn, {0, 1, 0}), c.left);
    }
}

TEST(Rotations, angles_directions_and_polars_agree) {
    std::mt19937 random(11);
    const auto unit = [&] { return static_cast<float>(random() % 200001) / 100000.0f - 1; };
    for (int i = 0; i < 2000; ++i) {
        const YawPitchRoll angles{3.1f * unit(), 1.57f * unit(), 3.1f * unit()};
        const GQuat q = rotation_ypr(angles);
        const YawPitchRoll back = to_yaw_pitch_roll(q);
        EXPECT_NEAR(std::abs(dot(rotation_ypr(back), q)), 1, 1e-5f);
        EXPECT_NEAR(back.pitch, angles.pitch, 1e-4f);
        expect_near(rotate(q, {1, 0, 0}), to_vector({angles.yaw, angles.pitch, 1}));
        const Vector3 v{unit(), unit(), unit()}, w{unit(), unit(), unit()};
        expect_near(to_vector(to_polar(v)), v);
        expect_near(rotate(look_rotation(v), {1, 0, 0}), normalised(v, 0));
        expect_near(rotate(look_rotation(v), {length(v), 0, 0}), to_vector(to_polar(v)));
        expect_near(rotate(rotation_between(v, w), normalised(v, 0)), normalised(w, 0));
        EXPECT_NEAR(dot(any_orthogonal(v), normalised(v, 0)), 0, 1e-6f);
        // The shortest turn: no vector moves further than the one that was to be turned.
        const GQuat turn = rotation_between(v, w);
        EXPECT_NEAR(2 * std::acos(std::min(1.0f, std::abs(turn.w))), angle_between(v, w), 2e-3f);
    }
    for (const Vector3& v : {Vector3{1, 0, 0}, Vector3{0, -2, 0}, Vector3{1, 2, 3}}) {
        expect_near(rotate(rotation_between(v, -v), v), -v);
        const Vector3 nearly = -v + Vector3{1e-4f, 1e-4f, -1e-4f};
        expect_near(rotate(rotation_between(v, nearly), normalised(v)), normalised(nearly));
    }
}

TEST(Geometry, angles_distances_and_meeting_lines) {
    EXPECT_EQ(angle_between({2, 0, 0}, {0, 3, 0}), right_angle);
    EXPECT_EQ(angle_between({1, 0, 0}, {-5, 0, 0}), 2 * right_angle);
    EXPECT_NEAR(angle_between({1, 0, 0}, {1, 1e-6f, 0}), 1e-6f, 1e-12f);
    EXPECT_EQ(angle_between({}, {1, 0, 0}), 0);
    EXPECT_EQ(distance_to_segment({5, 3, 0}, {0, 0, 0}, {10, 0, 0}), 3);
    EXPECT_EQ(distance_to_segment({-3, 4, 0}, {0, 0, 0}, {10, 0, 0}), 5);
    EXPECT_EQ(distance_to_segment({13, 0, 4}, {0, 0, 0}, {10, 0, 0}), 5);
    EXPECT_EQ(distance_to_segment({1, 2, 2}, {0, 0, 0}, {0, 0, 0}), 3);
    EXPECT_EQ(line_intersection({0, 0, 1}, {1, 0, 1}, {5, 9, 1}, {5, 8, 1}), (Vector3{5, 0, 1}));
    EXPECT_EQ(line_intersection({0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {2, 1, 0}), std::nullopt);
    EXPECT_EQ(line_intersection({0, 0, 0}, {1, 0, 0}, {5, 9, 1}, {5, 8, 1}), std::nullopt);
    EXPECT_EQ(line_intersection({0, 0, 0}, {0, 0, 0}, {0, 1, 0}, {2, 1, 0}), std::nullopt);
}

} // namespace
} // namespace kst::script
