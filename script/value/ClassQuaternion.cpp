#include "script/value/ClassQuaternion.h"

#include <array>

#include "script/value/BasicClasses.h"
#include "script/value/ClassVector3.h"
#include "script/value/numbers.h"
#include "source/utility/math/Rotations.h"

namespace kst::script {

namespace {

constexpr std::array quaternion_members{
    PooledMember<GQuat>{"yaw", [](const GQuat& q) { return number_value(to_yaw_pitch_roll(q).yaw); }},
    PooledMember<GQuat>{"pitch", [](const GQuat& q) { return number_value(to_yaw_pitch_roll(q).pitch); }},
    PooledMember<GQuat>{"roll", [](const GQuat& q) { return number_value(to_yaw_pitch_roll(q).roll); }},
    PooledMember<GQuat>{"inverse", [](const GQuat& q) { return quaternion_value(conjugate(normalised(q))); }},
    PooledMember<GQuat>{"normalized", [](const GQuat& q) { return quaternion_value(normalised(q)); }},
};

} // namespace

ClassQuaternion::ClassQuaternion() : PooledValueClass("<quaternion>", quaternion_members) {}

ClassQuaternion& ClassQuaternion::instance() {
    static ClassQuaternion& instance = *new ClassQuaternion;
    return instance;
}

std::string ClassQuaternion::to_string(Data data) {
    const YawPitchRoll angles = to_yaw_pitch_roll(value(data));
    return "[yaw:" + number_text(angles.yaw) + ", pitch: " + number_text(angles.pitch) +
           ", roll: " + number_text(angles.roll) + "]";
}

ScriptValue ClassQuaternion::multiply(Data data, const ScriptValue& right) {
    const GQuat left = value(data);
    if (ClassVector3::instance().is(right))
        return vector_value(rotate(left, ClassVector3::instance().read(right)));
    return make(left * read(right));
}

bool ClassQuaternion::before(const GQuat& a, const GQuat& b) const {
    return ordered_before(std::array{a.x, a.y, a.z, a.w}, std::array{b.x, b.y, b.z, b.w});
}

} // namespace kst::script
