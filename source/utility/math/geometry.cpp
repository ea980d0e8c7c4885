#include "source/utility/math/geometry.h"

#include <algorithm>
#include <cmath>

#include "source/utility/math/WideVector.h"

namespace kst {

float angle_between(const Vector3& a, const Vector3& b) {
    const WideVector p(a), q(b);
    return static_cast<float>(std::atan2(length(cross(p, q)), dot(p, q))); // exact at both ends, unlike acos
}

Vector3 any_orthogonal(const Vector3& v) {
    const float x = std::abs(v.x), y = std::abs(v.y), z = std::abs(v.z);
    // Across the axis that is furthest from v.
    const Vector3 axis = x <= y && x <= z ? Vector3{1, 0, 0} : y <= z ? Vector3{0, 1, 0} : Vector3{0, 0, 1};
    const Vector3 across = normalised(cross(normalised(v, 0), axis), 0);
    return across == Vector3{} ? Vector3{0, 0, 1} : across;
}

float distance_to_segment(const Vector3& point, const Vector3& a, const Vector3& b) {
    const WideVector start(a), along = WideVector(b) - start, offset = WideVector(point) - start;
    const double square = dot(along, along);
    const double t = square > 0 ? std::clamp(dot(offset, along) / square, 0.0, 1.0) : 0.0;
    return static_cast<float>(length(offset - t * along));
}

std::optional<Vector3> line_intersection(const Vector3& a, const Vector3& b, const Vector3& c, const Vector3& d) {
    const WideVector p(a), q(c), along = WideVector(b) - p, other = WideVector(d) - q;
    const WideVector normal = cross(along, other);
    const double square = dot(normal, normal);
    // The sine of the angle between the lines, squared, against single precision's.
    if (!(square > 1e-12 * dot(along, along) * dot(other, other)))
        return std::nullopt;
    const WideVector between = q - p;
    const double scale = std::max({1.0, largest(p), largest(WideVector(b)), largest(q), largest(WideVector(d))});
    if (!(std::abs(dot(between, normal)) <= 1e-4 * scale * std::sqrt(square)))
        return std::nullopt;
    const WideVector meeting = p + (dot(cross(between, other), normal) / square) * along;
    return meeting.narrowed();
}

} // namespace kst
