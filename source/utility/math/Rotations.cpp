#include "source/utility/math/Rotations.h"

#include <cmath>

#include "source/utility/math/WideVector.h"
#include "source/utility/math/geometry.h"

namespace kst {

GQuat rotation_ypr(const YawPitchRoll& angles) {
    return rotation_xyz(angles.roll, -angles.pitch, angles.yaw); // lifting x towards z is clockwise about y
}

YawPitchRoll to_yaw_pitch_roll(const GQuat& q) {
    const GQuat unit = normalised(q);
    const auto [x, y, z] = WideVector(Vector3{unit.x, unit.y, unit.z});
    const auto w = static_cast<double>(unit.w);
    // Where the object's axes go. Forward is (cos yaw cos pitch, sin yaw cos pitch, sin pitch); left and up have the
    // heights sin roll cos pitch and cos roll cos pitch.
    const double forward_x = 1 - 2 * (y * y + z * z), forward_y = 2 * (x * y + w * z), forward_z = 2 * (x * z - w * y);
    const double left_x = 2 * (x * y - w * z), left_y = 1 - 2 * (x * x + z * z), left_z = 2 * (y * z + w * x);
    const double up_z = 1 - 2 * (x * x + y * y);
    const double flat = std::sqrt(forward_x * forward_x + forward_y * forward_y);
    const auto pitch = static_cast<float>(std::atan2(forward_z, flat));
    // This near to the pole the rest is rounding of single precision.
    if (flat < 1e-5)
        return {static_cast<float>(std::atan2(-left_x, left_y)), pitch, 0};
    return {static_cast<float>(std::atan2(forward_y, forward_x)), pitch, static_cast<float>(std::atan2(left_z, up_z))};
}

GQuat rotation_xyz(float x, float y, float z) {
    return rotation_about({0, 0, 1}, z) * rotation_about({0, 1, 0}, y) * rotation_about({1, 0, 0}, x);
}

GQuat look_rotation(const Vector3& direction, const Vector3& up) {
    const Vector3 forward = normalised(direction, 0);
    if (forward == Vector3{})
        return {};
    // The last candidate leads to y when looking along z or against it: where pitch takes an object of yaw 0.
    for (const Vector3& candidate : {normalised(up, 0), Vector3{0, 0, 1}, Vector3{-forward.z, 0, 0}}) {
        const Vector3 left = normalised(cross(candidate, forward));
        if (left == Vector3{})
            continue;
        Matrix4 matrix;
        matrix.set_row(0, forward);
        matrix.set_row(1, left);
        matrix.set_row(2, cross(forward, left));
        return normalised(to_quaternion(matrix));
    }
    return {};
}

GQuat rotation_between(const Vector3& from, const Vector3& to) {
    const WideVector a(from), b(to);
    const double size_a = length(a), size_b = length(b);
    if (size_a == 0 || size_b == 0)
        return {};
    const WideVector unit = (1 / size_a) * a;
    // Half way, which is half the angle: its cosine and sine are what a quaternion is made of.
    const WideVector half = unit + (1 / size_b) * b;
    const double size = length(half);
    if (size < 1e-7) {
        const Vector3 axis = any_orthogonal(from);
        return {axis.x, axis.y, axis.z, 0};
    }
    const Vector3 axis = ((1 / size) * cross(unit, half)).narrowed();
    return {axis.x, axis.y, axis.z, static_cast<float>(dot(unit, half) / size)};
}

} // namespace kst
