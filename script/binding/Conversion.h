#pragma once

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>

#include "script/binding/LibraryHelper.h"
#include "script/value/BasicClasses.h"
#include "script/value/DSError.h"
#include "script/value/numbers.h"

namespace kst::script {

/// How a native type travels between scripts and bound functions. Specialised for each type that a bound function may
/// take or give; a further value class adds its own beside itself:
///
///   template <>
///   struct Conversion<Vector3> {
///       static std::string_view name() { return "Vector3"; }                    // as descriptions show it
///       static Vector3 from(const ScriptValue& value);                          // throws DSError: another type
///       static ScriptValue to(const Vector3& value);
///   };
///
/// A type that is only taken needs no `to`, one that is only given no `from`.
template <typename T>
struct Conversion;

/// Throws DSError "Value is not of type <WANTED> it is of type " and the value's type.
[[noreturn]] inline void throw_wrong_type(std::string_view wanted, const ScriptValue& value) {
    throw DSError("Value is not of type <" + std::string(wanted) + "> it is of type " + value.type_name());
}

template <>
struct Conversion<ScriptValue> {
    static std::string_view name() { return "object"; }
    static const ScriptValue& from(const ScriptValue& value) { return value; }
    static ScriptValue to(ScriptValue value) { return value; }
};

template <>
struct Conversion<bool> {
    static std::string_view name() { return "boolean"; }
    static bool from(const ScriptValue& value) { return value.to_boolean(); }
    static ScriptValue to(bool value) { return boolean_value(value); }
};

template <std::floating_point T>
struct Conversion<T> {
    static std::string_view name() { return "number"; }
    static T from(const ScriptValue& value) { return static_cast<T>(value.to_number()); }
    static ScriptValue to(T value) { return number_value(static_cast<float>(value)); }
};

/// Integers are truncated and saturate. Those of 64 bits do not fit a number: see ClassInt64.
template <std::integral T>
requires(sizeof(T) <= 4) struct Conversion<T> {
    static std::string_view name() { return "number"; }
    static T from(const ScriptValue& value) {
        // A double holds every bound exactly; NaN gives 0.
        const double number = static_cast<double>(value.to_number());
        constexpr double lowest = std::numeric_limits<T>::min();
        constexpr double highest = std::numeric_limits<T>::max();
        return number != number ? T{0} : static_cast<T>(std::clamp(number, lowest, highest));
    }
    static ScriptValue to(T value) { return number_value(static_cast<float>(value)); }
};

/// For counts: a number all the same.
template <>
struct Conversion<std::size_t> {
    static std::string_view name() { return "number"; }
    static ScriptValue to(std::size_t value) { return number_value(static_cast<float>(value)); }
};

template <>
struct Conversion<std::string> {
    static std::string_view name() { return "string"; }
    static std::string from(const ScriptValue& value) { return value.to_string(); }
    static ScriptValue to(std::string value) { return string_value(std::move(value)); }
};

template <>
struct Conversion<std::string_view> {
    static std::string_view name() { return "string"; }
    /// Owned for as long as the call lasts.
    static std::string from(const ScriptValue& value) { return value.to_string(); }
    static ScriptValue to(std::string_view value) { return string_value(std::string(value)); }
};

template <>
struct Conversion<const char*> {
    static std::string_view name() { return "string"; }
    static ScriptValue to(const char* value) { return string_value(value); }
};

/// Pointers to bound classes. As a result, null is void. As an argument the pointer is never null: a value of another
/// type, void and a destroyed object among them, is a DSError that names the class.
template <std::derived_from<LibraryHelper> T>
struct Conversion<T*> {
    static std::string_view name() {
        if constexpr (requires { T::script_name; })
            return T::script_name;
        else
            return "object";
    }
    static T* from(const ScriptValue& value) {
        if (auto* const object = dynamic_cast<T*>(LibraryHelper::CppClass::object_of(value)))
            return object;
        throw_wrong_type(name(), value);
    }
    static ScriptValue to(T* object) { return object == nullptr ? ScriptValue() : object->value(); }
};

/// The same for functions that take a bound class by reference.
template <std::derived_from<LibraryHelper> T>
struct Conversion<T&> {
    static std::string_view name() { return Conversion<T*>::name(); }
    static T& from(const ScriptValue& value) { return *Conversion<T*>::from(value); }
    static ScriptValue to(T& object) { return object.value(); }
};

} // namespace kst::script
