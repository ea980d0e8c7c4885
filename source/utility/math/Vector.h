#pragma once

namespace kst {

/// Two floats.
struct Vector2 {
    float x = 0, y = 0;

    bool operator==(const Vector2&) const = default;
};

constexpr Vector2 operator+(const Vector2& a, const Vector2& b) {
    return {a.x + b.x, a.y + b.y};
}
constexpr Vector2 operator-(const Vector2& a, const Vector2& b) {
    return {a.x - b.x, a.y - b.y};
}
constexpr Vector2 operator*(float factor, const Vector2& v) {
    return {factor * v.x, factor * v.y};
}

/// Three floats: a position or a direction, in a right-handed frame.
struct Vector3 {
    float x = 0, y = 0, z = 0;

    bool operator==(const Vector3&) const = default;
};

constexpr Vector3 operator+(const Vector3& a, const Vector3& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
constexpr Vector3 operator-(const Vector3& a, const Vector3& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
constexpr Vector3 operator-(const Vector3& v) {
    return {-v.x, -v.y, -v.z};
}
constexpr Vector3 operator*(float factor, const Vector3& v) {
    return {factor * v.x, factor * v.y, factor * v.z};
}
constexpr float dot(const Vector3& a, const Vector3& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
constexpr Vector3 cross(const Vector3& a, const Vector3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
constexpr Vector3 lerp(const Vector3& a, const Vector3& b, float t) {
    return (1 - t) * a + t * b;
}

float length(const Vector3& v);
/// The vector of length 1 with that direction; the zero vector for one that is shorter than `threshold`.
Vector3 normalised(const Vector3& v, float threshold = 0.0001f);

} // namespace kst
