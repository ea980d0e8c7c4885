#pragma once

#include <type_traits>

namespace kst::script {

// What the machine does with two numbers.

inline constexpr auto plus = [](float a, float b) { return a + b; };
inline constexpr auto minus = [](float a, float b) { return a - b; };
inline constexpr auto times = [](float a, float b) { return a * b; };
inline constexpr auto over = [](float a, float b) { return a / b; };

// By `less` alone, as for all values: a NaN is neither less nor greater than anything, and so equal to it.
inline constexpr auto less = [](float a, float b) { return a < b; };
inline constexpr auto less_or_equal = [](float a, float b) { return !(b < a); };
inline constexpr auto equal = [](float a, float b) { return !(a < b) && !(b < a); };
inline constexpr auto greater_or_equal = [](float a, float b) { return !(a < b); };
inline constexpr auto greater = [](float a, float b) { return b < a; };
inline constexpr auto not_equal = [](float a, float b) { return a < b || b < a; };

/// Where the two are, see Operation.
enum class Form { ss, sp, pp };

template <Form value>
using FormIs = std::integral_constant<Form, value>;
inline constexpr FormIs<Form::ss> both_on_stack;
inline constexpr FormIs<Form::sp> left_on_stack;
inline constexpr FormIs<Form::pp> both_in_places;

} // namespace kst::script
