#pragma once

#include <algorithm>
#include <cmath>

#include "source/utility/math/Vector.h"

namespace kst {

/// Three doubles, for the inside of functions on Vector3 whose products of coordinates cancel: single precision would
/// lose what is left.
struct WideVector {
    double x, y, z;

    explicit WideVector(const Vector3& v)
        : x(static_cast<double>(v.x)), y(static_cast<double>(v.y)), z(static_cast<double>(v.z)) {}
    WideVector(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}
    Vector3 narrowed() const { return {static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)}; }
};

inline WideVector operator+(const WideVector& a, const WideVector& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline WideVector operator-(const WideVector& a, const WideVector& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline WideVector operator*(double factor, const WideVector& v) {
    return {factor * v.x, factor * v.y, factor * v.z};
}
inline double dot(const WideVector& a, const WideVector& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline WideVector cross(const WideVector& a, const WideVector& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double length(const WideVector& v) {
    return std::sqrt(dot(v, v));
}
inline double largest(const WideVector& v) {
    return std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z)});
}

} // namespace kst
