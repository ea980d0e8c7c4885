#include "script/value/BasicClasses.h"

#include "script/value/DSError.h"
#include "script/value/numbers.h"

namespace kst::script {

namespace {

float as_float(ScriptClass::Data data) {
    return std::bit_cast<float>(data);
}

} // namespace

constinit ClassBoolean boolean_class;
constinit ClassNumber number_class;

float expect_number(const ScriptValue& value) {
    if (value.kind() != ClassKind::number)
        throw DSError("Value is not of type <number>, it is of type " + value.type_name());
    return as_float(value.data());
}

float ClassBoolean::to_number(Data data) {
    return data != 0 ? 1.0f : 0.0f;
}
std::string ClassBoolean::to_string(Data data) {
    return data != 0 ? "true" : "false";
}
bool ClassBoolean::to_boolean(Data data) {
    return data != 0;
}
std::string ClassBoolean::type_name(Data) {
    return "<boolean>";
}

float ClassNumber::to_number(Data data) {
    return as_float(data);
}
std::string ClassNumber::to_string(Data data) {
    return number_text(as_float(data));
}
bool ClassNumber::to_boolean(Data data) {
    return number_truth(as_float(data));
}

ScriptValue ClassNumber::add(Data data, const ScriptValue& right) {
    return number_value(as_float(data) + right.to_number());
}

ScriptValue ClassNumber::subtract(Data data, const ScriptValue& right) {
    return number_value(as_float(data) - right.to_number());
}

ScriptValue ClassNumber::multiply(Data data, const ScriptValue& right) {
    return number_value(as_float(data) * right.to_number());
}

ScriptValue ClassNumber::divide(Data data, const ScriptValue& right) {
    return number_value(as_float(data) / right.to_number());
}

// The interpreter computes remainders itself, whatever the classes; this slot has no other caller.
ScriptValue ClassNumber::remainder(Data, const ScriptValue&) {
    return number_value(0);
}

bool ClassNumber::less(Data data, const ScriptValue& other) {
    if (other.kind() != ClassKind::number)
        return ScriptClass::less(data, other);
    return as_float(data) < as_float(other.data());
}

std::string ClassNumber::type_name(Data) {
    return "<number>";
}

} // namespace kst::script
