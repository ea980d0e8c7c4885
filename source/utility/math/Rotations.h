#pragma once

#include "source/utility/math/GQuat.h"

namespace kst {

// Rotations by the angles and directions that people think in. An object at rest looks along x, with y to its left and
// z up; all angles are radians.

/// `yaw` turns left (about z), `pitch` lifts the nose, `roll` lowers the right side (about the object's x). Applied in
/// the order roll, pitch, yaw, so that yaw and pitch are spin and pitch of the direction that the object looks in.
struct YawPitchRoll {
    float yaw = 0, pitch = 0, roll = 0;

    bool operator==(const YawPitchRoll&) const = default;
};

GQuat rotation_ypr(const YawPitchRoll& angles);
/// Yaw and roll in -pi..pi, pitch in -pi/2..pi/2. Straight up or down yaw and roll turn about the same axis: roll is 0.
YawPitchRoll to_yaw_pitch_roll(const GQuat& q);

/// About x, then about y, then about z, each counter-clockwise.
GQuat rotation_xyz(float x, float y, float z);

/// Of an object that looks along `direction` with its z as near to `up` as can be. Where the two are parallel, up is z;
/// straight up or down, the yaw is 0. No rotation for the zero direction.
GQuat look_rotation(const Vector3& direction, const Vector3& up = {0, 0, 1});

/// The shortest turn from one direction to the other. Half a turn is about some axis across; with a zero vector there is
/// no rotation.
GQuat rotation_between(const Vector3& from, const Vector3& to);

} // namespace kst
