#include "script/value/WrappingClass.h"

#include "script/value/NestingGuard.h"
#include "script/value/names.h"
#include "script/value/release_values.h"

namespace kst::script {

ScriptValue ScriptValue::member(idstring id, bool must_exist) const {
    if (id == names().extension)
        return ClassTag::instance().wrap(*this);
    if (id == names().member)
        return MemberClass::instance().wrap(*this);
    return class_->member(data_, id, must_exist);
}

ScriptValue WrappingClass::wrap(ScriptValue value) {
    const Data data = pool_.take();
    pool_[data] = std::move(value);
    return ScriptValue::adopt(*this, data);
}

void WrappingClass::release(Data data) {
    if (pool_.drop_ref(data) > 0)
        return;
    ScriptValue value = std::move(pool_[data]);
    pool_.give_back(data);
    release_value(std::move(value));
}

ClassTag& ClassTag::instance() {
    static ClassTag& instance = *new ClassTag;
    return instance;
}

// The guards: a value may be tagged with its own tag slot.
float ClassTag::to_number(Data data) {
    const NestingGuard guard;
    return wrapped(data).get_tag().to_number();
}

std::string ClassTag::to_string(Data data) {
    const NestingGuard guard;
    return wrapped(data).get_tag().to_string();
}

bool ClassTag::to_boolean(Data data) {
    const NestingGuard guard;
    return wrapped(data).get_tag().to_boolean();
}

void ClassTag::set(Data data, const ScriptValue& value) {
    wrapped(data).set_tag(value);
}

ScriptValue ClassTag::call(Data data, Arguments arguments) {
    const NestingGuard guard;
    return wrapped(data).get_tag().call(arguments);
}

ScriptValue ClassTag::member(Data data, idstring id, bool must_exist) {
    const NestingGuard guard;
    return wrapped(data).get_tag().member(id, must_exist);
}

MemberClass& MemberClass::instance() {
    static MemberClass& instance = *new MemberClass;
    return instance;
}

ScriptValue MemberClass::call(Data data, Arguments arguments) {
    if (arguments.size() != 1)
        return WrappingClass::call(data, arguments);
    return wrapped(data).member(arguments[0].to_id());
}

} // namespace kst::script
