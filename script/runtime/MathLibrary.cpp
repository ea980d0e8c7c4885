#include "script/runtime/MathLibrary.h"

#include <cmath>
#include <numbers>

#include "script/runtime/MathConversions.h"
#include "script/runtime/math_functions.h"
#include "script/value/format_text.h"
#include "source/utility/math/Rotations.h"
#include "source/utility/math/geometry.h"

namespace kst::script {

namespace {

using Members = StaticMemberSet<MathLibrary>;

constexpr float half_turn = std::numbers::pi_v<float>;
constexpr Vector3 up_axis{0, 0, 1};

/// In double precision, rounded once: the last bit of the system's functions does not show.
template <auto function>
constexpr auto of_number = [](MathLibrary&, float x) { return static_cast<float>(function(static_cast<double>(x))); };
template <auto function>
constexpr auto of_two_numbers = [](MathLibrary&, float x, float y) {
    return static_cast<float>(function(static_cast<double>(x), static_cast<double>(y)));
};

/// Nothing: 0 to below 1. One number: 0 to below it. Two: from the first to below the second.
float in_range(float unit, Arguments range) {
    if (range.empty())
        return unit;
    const float first = range[0].to_number();
    return range.size() == 1 ? stretched(unit, 0, first) : stretched(unit, first, range[1].to_number());
}

template <int axis>
constexpr auto random_rotation = [](MathLibrary& math, float max_angle) {
    return math.random().rotation({axis == 0 ? 1.0f : 0.0f, axis == 1 ? 1.0f : 0.0f, axis == 2 ? 1.0f : 0.0f},
                                  max_angle);
};

void bind_numbers(Members& members) {
    members.method<of_two_numbers<[](double x, double y) { return std::pow(x, y); }>>("pow");
    members.method<of_number<[](double x) { return std::exp(x); }>>("exp");
    members.method<of_number<[](double x) { return std::log(x); }>>("ln");
    members.method<of_number<[](double x) { return std::cos(x); }>>("cos");
    members.method<of_number<[](double x) { return std::sin(x); }>>("sin");
    members.method<of_number<[](double x) { return std::tan(x); }>>("tan");
    members.method<of_number<[](double x) { return std::acos(x); }>>("acos");
    members.method<of_number<[](double x) { return std::asin(x); }>>("asin");
    members.method<of_number<[](double x) { return std::atan(x); }>>("atan");
    members.method<of_two_numbers<[](double y, double x) { return std::atan2(y, x); }>>("atan2");
    members.method<[](MathLibrary&, float x) { return checked_square_root(x); }>("sqrt");
    members.method<[](MathLibrary&, float x) { return std::floor(x); }>("floor");
    members.method<[](MathLibrary&, float x) { return std::round(x); }>("round");
    members.method<[](MathLibrary&, float x) { return std::ceil(x); }>("ceil");
    members.method<[](MathLibrary& math, Arguments range) { return in_range(math.random().unit(), range); }>("rand");
    members.method<[](MathLibrary&, Arguments range) { return in_range(unguessable_unit(), range); }>("cryptrand");
    members.method<[](MathLibrary&, float x) { return std::abs(x); }>("abs");
    members.method<[](MathLibrary&, float x) { return sign_of(x); }>("sign");
    members.method<[](MathLibrary&, float x, float low, float high) { return clamped(x, low, high); }>("clamp");
    members.method<[](MathLibrary&, float edge, float x) { return x < edge ? 0.0f : 1.0f; }>("step");
    members.method<[](MathLibrary&, Arguments arguments) { return make_int64(arguments); }>("Int64");
    members.method<[](MathLibrary&, float x, int decimals) {
        return fixed_text(x, std::clamp(decimals, 0, max_format_width));
    }>("format_float", 6.0f);
}

void bind_vectors(Members& members) {
    members.method<[](MathLibrary&, const ScriptValue& a, const ScriptValue& b, float t) { return blended(a, b, t); }>(
        "lerp");
    members.method<[](MathLibrary&, const ScriptValue& value) { return unit_of(value); }>("normalize");
    members.method<[](MathLibrary&, Vector3 a, Vector3 b) { return cross(a, b); }>("cross");
    members.method<[](MathLibrary&, const ScriptValue& a, const ScriptValue& b) { return scalar_product(a, b); }>(
        "dot");
    members.method<[](MathLibrary& math, Vector3 v, float angle) { return math.random().spread(v, angle); }>("spread");
    members.method<[](MathLibrary&, Arguments arguments) { return make_vector(arguments); }>("Vector3");
    members.method<[](MathLibrary& math, Vector3 v) { return math.random().orthogonal(v); }>("random_orthogonal");
    members.method<[](MathLibrary&, Vector3 v, GQuat q) { return rotate(normalised(q), v); }>("rotate_with");
    members.method<[](MathLibrary&, Vector3 a, Vector3 b) { return angle_between(a, b); }>("vector_angle");
    members.method<[](MathLibrary&, Vector3 point, Vector3 a, Vector3 b) { return distance_to_segment(point, a, b); }>(
        "distance_to_segment");
    members.method<[](MathLibrary&, Vector3 a, Vector3 b, Vector3 c, Vector3 d) {
        const auto meeting = line_intersection(a, b, c, d);
        return meeting ? vector_value(*meeting) : ScriptValue();
    }>("line_intersection");
    members.method<[](MathLibrary&, std::string_view text) { return scan_vector(text).has_value(); }>(
        "string_is_good_vector");
    members.method<[](MathLibrary&, std::string_view text) {
        if (const auto vector = scan_vector(text))
            return *vector;
        throw DSError("Not a vector: " + std::string(text));
    }>("string_to_vector");
}

void bind_rotations(Members& members) {
    members.method<[](MathLibrary&, float yaw, float pitch, float roll) {
        return rotation_ypr({yaw, pitch, roll});
    }>("RotationYPR", 0.0f, 0.0f);
    members.method<[](MathLibrary&, Vector3 axis, float angle) { return rotation_about(axis, angle); }>("RotationAA");
    members.method<[](MathLibrary&, Vector3 direction, Vector3 up) { return look_rotation(direction, up); }>(
        "RotationLA", up_axis);
    members.method<[](MathLibrary&, GQuat q) {
        const YawPitchRoll angles = to_yaw_pitch_roll(q);
        return Vector3{angles.yaw, angles.pitch, angles.roll};
    }>("yaw_pitch_roll");
    members.method<[](MathLibrary&, Vector3 from, Vector3 to) { return rotation_between(from, to); }>(
        "vector_rotation");
    members.method<[](MathLibrary&, Vector3 from, Vector3 to, Vector3 up) { return look_rotation(to - from, up); }>(
        "look_at", up_axis);
    members.method<random_rotation<0>>("random_rotation_x", half_turn);
    members.method<random_rotation<1>>("random_rotation_y", half_turn);
    members.method<random_rotation<2>>("random_rotation_z", half_turn);
    members.method<[](MathLibrary&, float x, float y, float z) { return rotation_xyz(x, y, z); }>("rotation_xyz");
    members.method<[](MathLibrary&, GQuat p, GQuat q, float t) { return slerp(p, q, t); }>("slerp");
}

void bind_polars(Members& members) {
    members.method<[](MathLibrary&, float spin, float pitch, float r) { return Polar{spin, pitch, r}; }>("polar", 1.0f);
    members.method<[](MathLibrary&, Vector3 v) { return to_polar(v); }>("vector_to_polar");
    members.method<[](MathLibrary&, Polar p) { return to_vector(p); }>("polar_to_vector");
    members.method<[](MathLibrary&, Vector3 v, const ScriptValue& reference) {
        return to_polar(rotate(conjugate(reference_frame(reference)), v));
    }>("vector_to_polar_with_reference");
    members.method<[](MathLibrary&, Polar p, const ScriptValue& reference) {
        return rotate(reference_frame(reference), to_vector(p));
    }>("polar_to_vector_with_reference");
}

} // namespace

void MathLibrary::bind(StaticMemberSet<MathLibrary>& members) {
    bind_numbers(members);
    bind_vectors(members);
    bind_rotations(members);
    bind_polars(members);
}

} // namespace kst::script
