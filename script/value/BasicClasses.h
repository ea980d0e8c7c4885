#pragma once

#include <bit>

#include "script/value/ScriptValue.h"

namespace kst::script {

/// "<boolean>": the data word is 0 or 1.
class ClassBoolean final : public ScriptClass {
public:
    constexpr ClassBoolean() : ScriptClass(ClassKind::boolean, Counting::none, 1) {}
    float to_number(Data data) override;
    std::string to_string(Data data) override;
    bool to_boolean(Data data) override;
    std::string type_name(Data data) override;
};

/// "<number>": the data word holds the bits of a single-precision float.
class ClassNumber final : public ScriptClass {
public:
    constexpr ClassNumber() : ScriptClass(ClassKind::number, Counting::none, 2) {}
    float to_number(Data data) override;
    std::string to_string(Data data) override;
    bool to_boolean(Data data) override;
    ScriptValue add(Data data, const ScriptValue& right) override;
    ScriptValue subtract(Data data, const ScriptValue& right) override;
    ScriptValue multiply(Data data, const ScriptValue& right) override;
    ScriptValue divide(Data data, const ScriptValue& right) override;
    ScriptValue remainder(Data data, const ScriptValue& right) override;
    bool less(Data data, const ScriptValue& other) override;
    std::string type_name(Data data) override;
};

extern constinit ClassBoolean boolean_class;
extern constinit ClassNumber number_class;

inline ScriptValue::Data number_bits(float value) {
    return std::bit_cast<std::uint32_t>(value);
}
inline ScriptValue boolean_value(bool value) {
    return ScriptValue::adopt(boolean_class, value ? 1 : 0);
}
inline ScriptValue number_value(float value) {
    return ScriptValue::adopt(number_class, number_bits(value));
}

/// The float of a number. DSError for any other value: "Value is not of type <number>, it is of type <string>".
float expect_number(const ScriptValue& value);

/// A number counts as true when it is further from 0 than this.
inline constexpr float number_truth_limit = 0.00005f;

inline bool number_truth(float value) {
    return value > number_truth_limit || value < -number_truth_limit;
}

} // namespace kst::script
