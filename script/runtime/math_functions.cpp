#include "script/runtime/math_functions.h"

#include <array>
#include <charconv>
#include <cmath>

#include "script/runtime/MathConversions.h"
#include "script/value/text_operations.h"
#include "source/utility/math/Rotations.h"

namespace kst::script {

float checked_square_root(float x) {
    if (x < 0)
        throw DSError("Can not take sqrt on negative values");
    return std::sqrt(x);
}

float sign_of(float x) {
    return x > 0 ? 1.0f : x < 0 ? -1.0f : 0.0f;
}

float clamped(float x, float low, float high) {
    return x < low ? low : x > high ? std::max(low, high) : x;
}

namespace {

float blended_number(float a, float b, float t) {
    const double weight = t;
    return static_cast<float>((1 - weight) * static_cast<double>(a) + weight * static_cast<double>(b));
}

} // namespace

ScriptValue blended(const ScriptValue& a, const ScriptValue& b, float t) {
    auto& vectors = ClassVector3::instance();
    auto& polars = ClassPolar::instance();
    auto& quaternions = ClassQuaternion::instance();
    if (vectors.is(a) || vectors.is(b))
        return vector_value(lerp(vectors.read(a), vectors.read(b), t));
    if (quaternions.is(a) || quaternions.is(b))
        return quaternion_value(slerp(quaternions.read(a), quaternions.read(b), t));
    if (polars.is(a) || polars.is(b)) {
        const Polar p = polars.read(a), q = polars.read(b);
        return polar_value(
            {blended_number(p.spin, q.spin, t), blended_number(p.pitch, q.pitch, t), blended_number(p.r, q.r, t)});
    }
    return number_value(blended_number(a.to_number(), b.to_number(), t));
}

ScriptValue unit_of(const ScriptValue& value) {
    if (ClassQuaternion::instance().is(value))
        return quaternion_value(normalised(ClassQuaternion::instance().read(value)));
    return vector_value(normalised(ClassVector3::instance().read(value), 0));
}

float scalar_product(const ScriptValue& a, const ScriptValue& b) {
    if (ClassQuaternion::instance().is(a))
        return dot(ClassQuaternion::instance().read(a), ClassQuaternion::instance().read(b));
    return dot(ClassVector3::instance().read(a), ClassVector3::instance().read(b));
}

GQuat reference_frame(const ScriptValue& reference) {
    if (ClassQuaternion::instance().is(reference))
        return normalised(ClassQuaternion::instance().read(reference));
    return look_rotation(ClassVector3::instance().read(reference));
}

Vector3 make_vector(Arguments arguments) {
    if (arguments.empty())
        return {};
    if (arguments.size() == 1)
        return ClassVector3::instance().read(arguments[0]);
    if (arguments.size() != 3)
        throw DSError("Vector3 takes three numbers");
    return {arguments[0].to_number(), arguments[1].to_number(), arguments[2].to_number()};
}

std::int64_t make_int64(Arguments arguments) {
    auto& integers = ClassInt64::instance();
    if (arguments.empty())
        return 0;
    if (arguments.size() > 1) {
        const auto high = static_cast<std::uint64_t>(integers.integer_of(arguments[0]));
        const auto low = static_cast<std::uint64_t>(integers.integer_of(arguments[1]));
        return static_cast<std::int64_t>(high << 32 | (low & 0xffffffff));
    }
    if (arguments[0].kind() != ClassKind::string)
        return integers.integer_of(arguments[0]);
    const std::string text = arguments[0].to_string();
    if (const auto value = scan_int64(text))
        return *value;
    throw DSError("Not a 64-bit integer: " + text);
}

namespace {

void skip_blanks(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
}

/// What stands between two numbers: blanks, a comma, or both.
bool skip_separator(std::string_view& text) {
    const std::size_t before = text.size();
    skip_blanks(text);
    if (text.starts_with(',')) {
        text.remove_prefix(1);
        skip_blanks(text);
    }
    return text.size() < before;
}

std::optional<float> take_number(std::string_view& text) {
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    float value = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    if (read.ec != std::errc{})
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(read.ptr - text.data()));
    return value;
}

} // namespace

std::optional<Vector3> scan_vector(std::string_view text) {
    const std::string stripped = strip_blanks(text);
    std::string_view rest = stripped;
    const std::string_view ends = rest.starts_with('[') ? "[]" : rest.starts_with('(') ? "()" : "";
    if (!ends.empty()) {
        if (rest.size() < 2 || rest.back() != ends[1])
            return std::nullopt;
        rest = rest.substr(1, rest.size() - 2);
    }
    std::array<float, 3> components{};
    for (std::size_t i = 0; i < 3; ++i) {
        if (i > 0 && !skip_separator(rest))
            return std::nullopt;
        skip_blanks(rest);
        const std::array label{"xyz"[i], ':'};
        if (rest.starts_with(std::string_view(label.data(), label.size())))
            rest.remove_prefix(label.size());
        skip_blanks(rest);
        const auto number = take_number(rest);
        if (!number)
            return std::nullopt;
        components[i] = *number;
    }
    skip_blanks(rest);
    if (!rest.empty())
        return std::nullopt;
    return Vector3{components[0], components[1], components[2]};
}

} // namespace kst::script
