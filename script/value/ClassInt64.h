#pragma once

#include <cstdint>
#include <optional>

#include "script/value/PooledValueClass.h"

namespace kst::script {

/// "<int64>": a signed integer of 64 bits. Prints in decimal; 0 is false.
///
/// Members, as numbers, which hold 24 bits exactly: `hi`, the upper 32 bits as a signed integer, and `lo`, the lower 32
/// as an unsigned one. `+`, `-`, `*` and `/` take an int64, or a number of which the integer part counts; sums and
/// products wrap around, quotients lose their fraction. Division by 0 and operands of other types are DSErrors.
class ClassInt64 final : public PooledValueClass<std::int64_t> {
public:
    static ClassInt64& instance();

    float to_number(Data data) override;
    std::string to_string(Data data) override;
    bool to_boolean(Data data) override;
    ScriptValue add(Data data, const ScriptValue& right) override;
    ScriptValue subtract(Data data, const ScriptValue& right) override;
    ScriptValue multiply(Data data, const ScriptValue& right) override;
    ScriptValue divide(Data data, const ScriptValue& right) override;

    /// The value of an int64, or the integer part of a number. DSError for any other.
    std::int64_t integer_of(const ScriptValue& value);

private:
    ClassInt64();
    bool before(const std::int64_t& a, const std::int64_t& b) const override { return a < b; }
};

inline ScriptValue int64_value(std::int64_t value) {
    return ClassInt64::instance().make(value);
}

/// Blanks around, a sign, then decimal digits, or hexadecimal ones behind "0x". Nothing for any other text, and for an
/// integer that does not fit; 0x8000000000000000 to 0xffffffffffffffff are the bits of negative ones.
std::optional<std::int64_t> scan_int64(std::string_view text);

} // namespace kst::script
