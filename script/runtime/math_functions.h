#pragma once

#include <optional>
#include <string_view>

#include "script/value/ScriptValue.h"
#include "source/utility/math/GQuat.h"

namespace kst::script {

// Those functions of MathLibrary that are more than a call of the foundation's mathematics.

/// DSError "Can not take sqrt on negative values"; NaN passes.
float checked_square_root(float x);
/// -1, 0 or 1; 0 for NaN.
float sign_of(float x);
/// NaN passes; with the limits the wrong way round the lower one counts.
float clamped(float x, float low, float high);
/// (1 - t) a + t b for vectors, polars and numbers, slerp for quaternions. DSError if only one of them is a value class
/// of mathematics.
ScriptValue blended(const ScriptValue& a, const ScriptValue& b, float t);
/// Of a vector or a quaternion; DSError for any other value.
ScriptValue unit_of(const ScriptValue& value);
/// Of two vectors or two quaternions.
float scalar_product(const ScriptValue& a, const ScriptValue& b);
/// The frame that polar coordinates with a reference count in: a rotation, or a vector, which then has spin and pitch 0.
GQuat reference_frame(const ScriptValue& reference);
/// From nothing, a vector or three numbers.
Vector3 make_vector(Arguments arguments);
/// From nothing, an int64, a number, a text, or the upper and the lower 32 bits.
std::int64_t make_int64(Arguments arguments);
/// Three numbers with blanks or commas between them, perhaps behind "x:", "y:" and "z:", perhaps in square or round
/// brackets. What a vector prints as is such a text.
std::optional<Vector3> scan_vector(std::string_view text);

} // namespace kst::script
