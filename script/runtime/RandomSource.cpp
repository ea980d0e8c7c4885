#include "script/runtime/RandomSource.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "source/utility/math/geometry.h"

namespace kst::script {

namespace {

constexpr float pi = std::numbers::pi_v<float>;

float unit_of(std::uint32_t bits) {
    return static_cast<float>(bits >> 8) * 0x1p-24f;
}

} // namespace

float RandomSource::unit() {
    return unit_of(static_cast<std::uint32_t>(generator_()));
}

Vector3 RandomSource::spread(const Vector3& vector, float angle) {
    // On the unit sphere areas go with heights: a height below the top, evenly spread, gives evenly spread points.
    const double half = std::clamp(std::abs(static_cast<double>(angle)), 0.0, std::numbers::pi) / 2;
    const double drop = 2 * std::sin(half) * std::sin(half) * static_cast<double>(unit());
    const auto along = static_cast<float>(1 - drop);
    const auto across = static_cast<float>(std::sqrt(drop * (2 - drop)));
    return along * vector + (across * length(vector)) * orthogonal(vector);
}

Vector3 RandomSource::orthogonal(const Vector3& v) {
    if (v == Vector3{})
        return spread({0, 0, 1}, pi);
    const Vector3 u = any_orthogonal(v), w = cross(normalised(v, 0), u);
    const double turn = 2 * std::numbers::pi * static_cast<double>(unit());
    return static_cast<float>(std::cos(turn)) * u + static_cast<float>(std::sin(turn)) * w;
}

GQuat RandomSource::rotation(const Vector3& axis, float max_angle) {
    return rotation_about(axis, stretched(unit(), -max_angle, max_angle));
}

float unguessable_unit() {
    std::random_device device;
    return unit_of(device());
}

float stretched(float unit, float low, float high) {
    const double from = low, to = high;
    const auto value = static_cast<float>(from + static_cast<double>(unit) * (to - from));
    // The last step may round up to the end that is out of range.
    return value == high && low != high ? std::nextafter(high, low) : value;
}

} // namespace kst::script
