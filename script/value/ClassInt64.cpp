#include "script/value/ClassInt64.h"

#include <array>
#include <charconv>

#include "script/value/BasicClasses.h"
#include "script/value/numbers.h"
#include "script/value/text_operations.h"

namespace kst::script {

namespace {

// Sums and products are formed without a sign, where overflow wraps.
std::uint64_t bits(std::int64_t value) {
    return static_cast<std::uint64_t>(value);
}

ScriptValue wrapped_value(std::uint64_t value) {
    return int64_value(static_cast<std::int64_t>(value));
}

constexpr std::array int64_members{
    PooledMember<std::int64_t>{
        "hi",
        [](const std::int64_t& v) { return number_value(static_cast<float>(static_cast<std::int32_t>(v >> 32))); }},
    PooledMember<std::int64_t>{
        "lo", [](const std::int64_t& v) { return number_value(static_cast<float>(static_cast<std::uint32_t>(v))); }},
};

} // namespace

ClassInt64::ClassInt64() : PooledValueClass("<int64>", int64_members) {}

ClassInt64& ClassInt64::instance() {
    static ClassInt64& instance = *new ClassInt64;
    return instance;
}

float ClassInt64::to_number(Data data) {
    return static_cast<float>(value(data));
}
std::string ClassInt64::to_string(Data data) {
    return std::to_string(value(data));
}
bool ClassInt64::to_boolean(Data data) {
    return value(data) != 0;
}

std::int64_t ClassInt64::integer_of(const ScriptValue& operand) {
    return operand.kind() == ClassKind::number ? truncate_to_int64(operand.to_number()) : read(operand);
}

ScriptValue ClassInt64::add(Data data, const ScriptValue& right) {
    return wrapped_value(bits(value(data)) + bits(integer_of(right)));
}

ScriptValue ClassInt64::subtract(Data data, const ScriptValue& right) {
    return wrapped_value(bits(value(data)) - bits(integer_of(right)));
}

ScriptValue ClassInt64::multiply(Data data, const ScriptValue& right) {
    return wrapped_value(bits(value(data)) * bits(integer_of(right)));
}

ScriptValue ClassInt64::divide(Data data, const ScriptValue& right) {
    const std::int64_t left = value(data);
    const std::int64_t by = integer_of(right);
    if (by == 0)
        throw DSError("Division by zero");
    return by == -1 ? wrapped_value(0 - bits(left)) : make(left / by); // the lowest integer by -1 does not fit
}

std::optional<std::int64_t> scan_int64(std::string_view text) {
    const std::string stripped = strip_blanks(text);
    std::string_view digits = stripped;
    const bool negative = digits.starts_with('-');
    if (negative || digits.starts_with('+'))
        digits.remove_prefix(1);
    const bool hexadecimal = digits.starts_with("0x") || digits.starts_with("0X");
    if (hexadecimal)
        digits.remove_prefix(2);
    std::uint64_t magnitude = 0;
    const char* const end = digits.data() + digits.size();
    const auto read = std::from_chars(digits.data(), end, magnitude, hexadecimal ? 16 : 10);
    if (read.ec != std::errc{} || read.ptr != end)
        return std::nullopt;
    constexpr std::uint64_t lowest = std::uint64_t{1} << 63;
    if (magnitude > lowest - (negative ? 0 : 1) && !(hexadecimal && !negative))
        return std::nullopt;
    return static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude);
}

} // namespace kst::script
