#pragma once

#include "script/value/PooledValueClass.h"
#include "source/utility/math/Polar.h"

namespace kst::script {

/// "<polar>": a direction as two angles in radians, and a distance. Prints as
/// "[spin:0.000000 pitch:0.000000 r:1.000000]".
///
/// Members: `spin`, also `phi`; `pitch`, also `tilt` and `theta`; `r`, also `radius`. `+` and `-` take a polar and work
/// on each part, `*` and `/` take a number for the distance alone. Anything else is a DSError. Order: by spin, then
/// pitch, then r.
class ClassPolar final : public PooledValueClass<Polar> {
public:
    static ClassPolar& instance();

    std::string to_string(Data data) override;
    ScriptValue add(Data data, const ScriptValue& right) override;
    ScriptValue subtract(Data data, const ScriptValue& right) override;
    ScriptValue multiply(Data data, const ScriptValue& right) override;
    ScriptValue divide(Data data, const ScriptValue& right) override;

private:
    ClassPolar();
    bool before(const Polar& a, const Polar& b) const override;
};

inline ScriptValue polar_value(const Polar& polar) {
    return ClassPolar::instance().make(polar);
}

} // namespace kst::script
