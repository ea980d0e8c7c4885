#pragma once

#include "script/value/PooledValueClass.h"
#include "source/utility/math/Vector.h"

namespace kst::script {

/// "<vector3>": three numbers. Prints as "[x:1.0000 y:2.0000 z:3.0000]".
///
/// Members: `x`, `y`, `z`; `len`, the length; `normalized`, the vector of length 1 in that direction (the zero vector
/// stays itself). `+` and `-` take a vector, `*` and `/` a vector (component by component) or a number. Anything else is
/// a DSError. Order: by x, then y, then z.
class ClassVector3 final : public PooledValueClass<Vector3> {
public:
    static ClassVector3& instance();

    std::string to_string(Data data) override;
    ScriptValue add(Data data, const ScriptValue& right) override;
    ScriptValue subtract(Data data, const ScriptValue& right) override;
    ScriptValue multiply(Data data, const ScriptValue& right) override;
    ScriptValue divide(Data data, const ScriptValue& right) override;

private:
    ClassVector3();
    bool before(const Vector3& a, const Vector3& b) const override;
};

inline ScriptValue vector_value(const Vector3& vector) {
    return ClassVector3::instance().make(vector);
}

} // namespace kst::script
