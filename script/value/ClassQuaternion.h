#pragma once

#include "script/value/PooledValueClass.h"
#include "source/utility/math/GQuat.h"

namespace kst::script {

/// "<quaternion>": a rotation. Prints as "[yaw:0, pitch: 0, roll: 0]", in radians.
///
/// Members: `yaw`, `pitch`, `roll` in radians, see YawPitchRoll; `inverse`, the rotation back; `normalized`, the same
/// rotation freed of rounding. `*` takes a quaternion (p * q turns by q, then by p) or a vector, which it turns. Anything
/// else is a DSError. Order: by the components x, y, z and w.
class ClassQuaternion final : public PooledValueClass<GQuat> {
public:
    static ClassQuaternion& instance();

    std::string to_string(Data data) override;
    ScriptValue multiply(Data data, const ScriptValue& right) override;

private:
    ClassQuaternion();
    bool before(const GQuat& a, const GQuat& b) const override;
};

inline ScriptValue quaternion_value(const GQuat& quaternion) {
    return ClassQuaternion::instance().make(quaternion);
}

} // namespace kst::script
