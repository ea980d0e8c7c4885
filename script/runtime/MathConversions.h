#pragma once

// The types of mathematics as arguments and results of bound functions. An argument of another type is a DSError:
// "Value is not of type <vector3>, it is of type <number>".

#include "script/binding/Conversion.h"
#include "script/value/ClassInt64.h"
#include "script/value/ClassPolar.h"
#include "script/value/ClassQuaternion.h"
#include "script/value/ClassVector3.h"

namespace kst::script {

template <>
struct Conversion<Vector3> {
    static std::string_view name() { return "vector3"; }
    static Vector3 from(const ScriptValue& value) { return ClassVector3::instance().read(value); }
    static ScriptValue to(const Vector3& value) { return vector_value(value); }
};

template <>
struct Conversion<GQuat> {
    static std::string_view name() { return "quaternion"; }
    static GQuat from(const ScriptValue& value) { return ClassQuaternion::instance().read(value); }
    static ScriptValue to(const GQuat& value) { return quaternion_value(value); }
};

template <>
struct Conversion<Polar> {
    static std::string_view name() { return "polar"; }
    static Polar from(const ScriptValue& value) { return ClassPolar::instance().read(value); }
    static ScriptValue to(const Polar& value) { return polar_value(value); }
};

template <>
struct Conversion<std::int64_t> {
    static std::string_view name() { return "int64"; }
    static std::int64_t from(const ScriptValue& value) { return ClassInt64::instance().read(value); }
    static ScriptValue to(std::int64_t value) { return int64_value(value); }
};

} // namespace kst::script
