#include "script/value/ClassVector3.h"

#include <array>

#include "script/value/BasicClasses.h"
#include "script/value/numbers.h"

namespace kst::script {

namespace {

constexpr std::array vector_members{
    PooledMember<Vector3>{"x", [](const Vector3& v) { return number_value(v.x); }},
    PooledMember<Vector3>{"y", [](const Vector3& v) { return number_value(v.y); }},
    PooledMember<Vector3>{"z", [](const Vector3& v) { return number_value(v.z); }},
    PooledMember<Vector3>{"len", [](const Vector3& v) { return number_value(length(v)); }},
    PooledMember<Vector3>{"normalized", [](const Vector3& v) { return vector_value(normalised(v, 0)); }},
};

} // namespace

ClassVector3::ClassVector3() : PooledValueClass("<vector3>", vector_members) {}

// Never destroyed: values may go as late as the program's last static object.
ClassVector3& ClassVector3::instance() {
    static ClassVector3& instance = *new ClassVector3;
    return instance;
}

std::string ClassVector3::to_string(Data data) {
    const Vector3& v = value(data);
    return "[x:" + fixed_text(v.x, 4) + " y:" + fixed_text(v.y, 4) + " z:" + fixed_text(v.z, 4) + "]";
}

ScriptValue ClassVector3::add(Data data, const ScriptValue& right) {
    return make(value(data) + read(right));
}

ScriptValue ClassVector3::subtract(Data data, const ScriptValue& right) {
    return make(value(data) - read(right));
}

ScriptValue ClassVector3::multiply(Data data, const ScriptValue& right) {
    const Vector3 left = value(data);
    if (right.kind() == ClassKind::number)
        return make(right.to_number() * left);
    const Vector3 factors = read(right);
    return make({left.x * factors.x, left.y * factors.y, left.z * factors.z});
}

ScriptValue ClassVector3::divide(Data data, const ScriptValue& right) {
    const Vector3 left = value(data);
    const float number = right.to_number();
    const Vector3 by = right.kind() == ClassKind::number ? Vector3{number, number, number} : read(right);
    return make({left.x / by.x, left.y / by.y, left.z / by.z});
}

bool ClassVector3::before(const Vector3& a, const Vector3& b) const {
    return ordered_before(std::array{a.x, a.y, a.z}, std::array{b.x, b.y, b.z});
}

} // namespace kst::script
