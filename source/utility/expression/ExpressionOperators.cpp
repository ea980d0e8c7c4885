#include "source/utility/expression/ExpressionOperators.h"

#include <array>
#include <cmath>

namespace kst {
namespace {

using Value = ExpressionValue;
using Stack = ExpressionStack;

template <auto combine>
void unary(Stack& stack) {
    stack.push(combine(stack.pop()));
}

template <auto combine>
void binary(Stack& stack) {
    const Value second = stack.pop();
    const Value first = stack.pop();
    stack.push(combine(first, second));
}

template <auto combine>
void ternary(Stack& stack) {
    const Value third = stack.pop();
    const Value second = stack.pop();
    const Value first = stack.pop();
    stack.push(combine(first, second, third));
}

Value truth(bool value) {
    return broadcast(value ? 1.0f : 0.0f);
}

/// A test on the first components.
template <auto test>
void compare(Stack& stack) {
    binary<[](Value a, Value b) { return truth(test(a.x, b.x)); }>(stack);
}

/// Component by component.
template <auto combine>
void arithmetic(Stack& stack) {
    binary<[](Value a, Value b) { return Value{combine(a.x, b.x), combine(a.y, b.y), combine(a.z, b.z)}; }>(stack);
}

float dot(Value a, Value b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

Value cross(Value a, Value b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

float length(Value a) {
    return std::sqrt(dot(a, a));
}

Value normal(Value a) {
    constexpr float shortest = 0.0001f;
    const float size = length(a);
    return size < shortest ? Value() : Value{a.x / size, a.y / size, a.z / size};
}

Value clamp(Value high, Value low, Value value) {
    return broadcast(value.x > high.x ? high.x : value.x < low.x ? low.x : value.x);
}

// In double precision and rounded once: what the system's library gets wrong in the last bit of a double is gone.
Value sine(Value a) {
    return broadcast(static_cast<float>(std::sin(static_cast<double>(a.x))));
}
Value cosine(Value a) {
    return broadcast(static_cast<float>(std::cos(static_cast<double>(a.x))));
}

void random_number(Stack& stack) {
    constexpr float scale = 1.0f / 32767.0f;
    stack.push(broadcast(static_cast<float>(stack.next_random()) * scale));
}

void nothing(Stack&) {}

constexpr auto either = compare<[](float a, float b) { return a != 0 || b != 0; }>;
constexpr auto both = compare<[](float a, float b) { return a != 0 && b != 0; }>;
constexpr auto unequal = compare<[](float a, float b) { return a != b; }>;
constexpr auto negated = unary<[](Value a) { return Value{-a.x, -a.y, -a.z}; }>;
constexpr auto inverted = unary<[](Value a) { return truth(a.x == 0); }>;
constexpr auto size_of = unary<[](Value a) { return broadcast(length(a)); }>;

constexpr std::array operator_table{
    BuiltInOperator{";", 0, [](Stack& stack) { stack.clear(); }},
    BuiltInOperator{",", 1, nothing},
    BuiltInOperator{"||", 4, either},
    BuiltInOperator{"or", 4, either},
    BuiltInOperator{"&&", 5, both},
    BuiltInOperator{"and", 5, both},
    BuiltInOperator{"==", 9, compare<[](float a, float b) { return a == b; }>},
    BuiltInOperator{"!=", 9, unequal},
    BuiltInOperator{"<>", 9, unequal},
    BuiltInOperator{"<", 10, compare<[](float a, float b) { return a < b; }>},
    BuiltInOperator{"<=", 10, compare<[](float a, float b) { return a <= b; }>},
    BuiltInOperator{">", 10, compare<[](float a, float b) { return (a > b); }>},
    BuiltInOperator{">=", 10, compare<[](float a, float b) { return (a >= b); }>},
    BuiltInOperator{"+", 12, arithmetic<[](float a, float b) { return a + b; }>},
    BuiltInOperator{"-", 12, arithmetic<[](float a, float b) { return a - b; }>},
    BuiltInOperator{"*", 13, arithmetic<[](float a, float b) { return a * b; }>},
    BuiltInOperator{"/", 13, arithmetic<[](float a, float b) { return a / b; }>},
    BuiltInOperator{"u-", 16, negated},
    BuiltInOperator{"u+", 16, nothing},
    BuiltInOperator{"!", 16, inverted},
    BuiltInOperator{"not", 16, inverted},
    BuiltInOperator{"sin", 17, unary<sine>},
    BuiltInOperator{"cos", 17, unary<cosine>},
    BuiltInOperator{"vector", 17, ternary<[](Value a, Value b, Value c) {
                        return Value{a.x, b.x, c.x};
                    }>},
    BuiltInOperator{"normal", 17, unary<normal>},
    BuiltInOperator{"dir", 17, unary<normal>},
    BuiltInOperator{"length", 17, size_of},
    BuiltInOperator{"len", 17, size_of},
    BuiltInOperator{"rnd", 17, random_number, /*not_constant=*/true},
    BuiltInOperator{"test", 17, ternary<[](Value a, Value b, Value c) { return a.x != 0 ? b : c; }>},
    BuiltInOperator{"abs", 17, unary<[](Value a) { return broadcast(std::fabs(a.x)); }>},
    BuiltInOperator{"x", 17, unary<[](Value a) { return broadcast(a.x); }>},
    BuiltInOperator{"y", 17, unary<[](Value a) { return broadcast(a.y); }>},
    BuiltInOperator{"z", 17, unary<[](Value a) { return broadcast(a.z); }>},
    BuiltInOperator{"dot", 17, binary<[](Value a, Value b) { return broadcast(dot(a, b)); }>},
    BuiltInOperator{"cross", 17, binary<cross>},
    BuiltInOperator{"clamp", 17, ternary<clamp>},
};

} // namespace

std::span<const BuiltInOperator> built_in_operators() {
    return operator_table;
}

} // namespace kst
