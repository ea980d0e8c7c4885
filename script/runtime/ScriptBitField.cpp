#include "script/runtime/ScriptBitField.h"

namespace kst::script {

void ScriptBitField::bind(StaticMemberSet<ScriptBitField>& members) {
    members.method<&ScriptBitField::state>("state");
    members.method<&ScriptBitField::set_state>("set_state");
    members.method<&ScriptBitField::size>("size");
    members.method<&ScriptBitField::copy>("copy");
    members.method<&ScriptBitField::iterator>("iterator");
}

ScriptBitField::ScriptBitField(Arguments states) {
    if (states.size() > bit_count)
        throw DSError("A bit field has no more than 32 bits");
    for (std::size_t i = 0; i < states.size(); ++i)
        set_state(static_cast<std::int32_t>(i), states[i].to_boolean());
}

void ScriptBitField::set_state(std::int32_t index, bool on) {
    const std::uint32_t bit = std::uint32_t{1} << (index & (bit_count - 1));
    word_ = on ? word_ | bit : word_ & ~bit;
}

ScriptValue ScriptBitField::iterator() {
    return make_script_owned<ScriptBitFieldIterator>(*this);
}

void ScriptBitFieldIterator::bind(StaticMemberSet<ScriptBitFieldIterator>& members) {
    members.method<&ScriptBitFieldIterator::next>("next");
}

ScriptValue ScriptBitFieldIterator::next() {
    const auto* const field = static_cast<ScriptBitField*>(LibraryHelper::CppClass::object_of(field_));
    if (field == nullptr)
        throw_already_destroyed();
    return position_ < ScriptBitField::bit_count ? boolean_value(field->state(position_++)) : ScriptValue();
}

} // namespace kst::script
