#pragma once

#include <cstdint>

#include "script/binding/bind.h"

namespace kst::script {

/// "<ScriptBitField>": 32 switches in one word. Indices count modulo 32, so that there is no wrong one. The members of
/// scripts, one by one: docs/script-containers.md.
class ScriptBitField : public Bound<ScriptBitField> {
public:
    static constexpr std::string_view script_name = "ScriptBitField";
    static void bind(StaticMemberSet<ScriptBitField>& members);

    static constexpr int bit_count = 32;

    ScriptBitField() = default;
    /// Bit i is the truth of argument i; the bits behind the last one are clear. DSError for more than 32.
    explicit ScriptBitField(Arguments states);

    bool state(std::int32_t index) const { return (word_ >> (index & (bit_count - 1)) & 1) != 0; }
    void set_state(std::int32_t index, bool on);
    int size() const { return bit_count; }
    std::uint32_t word() const { return word_; }
    ScriptValue copy() const { return make_script_owned<ScriptBitField>(*this); }
    ScriptValue iterator();

private:
    std::uint32_t word_ = 0;
};

/// Gives the states of the bits, from bit 0, as they are when it comes to them, and keeps the field alive.
class ScriptBitFieldIterator : public Bound<ScriptBitFieldIterator> {
public:
    static constexpr std::string_view script_name = "ScriptBitFieldIterator";
    static void bind(StaticMemberSet<ScriptBitFieldIterator>& members);

    explicit ScriptBitFieldIterator(ScriptBitField& field) : field_(field.value()) {}
    /// Void behind the last bit. DSError if the field has been destroyed by its native owner.
    ScriptValue next();

private:
    ScriptValue field_;
    int position_ = 0;
};

} // namespace kst::script
