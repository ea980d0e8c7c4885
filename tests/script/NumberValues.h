#pragma once

#include <limits>

#include "script/value/BasicClasses.h"
#include "script/value/ClassVector3.h"

namespace kst::script {

inline constexpr float nan_number = std::numeric_limits<float>::quiet_NaN();

inline ScriptValue number(float value) {
    return number_value(value);
}
inline ScriptValue v3(float x, float y, float z) {
    return vector_value({x, y, z});
}

} // namespace kst::script
