#include "script/binding/MemberFactory.h"

#include "script/binding/NativeObjects.h"
#include "script/value/DSError.h"
#include "script/value/NestingGuard.h"

namespace kst::script {

void TMFactoryBase::add_ref(Data data) {
    ++values_;
    NativeObjects::instance().add_ref(data);
}

// The object first: its end may take the table with it that owns this factory.
void TMFactoryBase::release(Data data) {
    NativeObjects::instance().release(data);
    if (--values_ == 0 && retired_)
        delete this;
}

void TMFactoryBase::retire() {
    retired_ = true;
    if (values_ == 0)
        delete this;
}

LibraryHelper& TMFactoryBase::object(Data data) {
    LibraryHelper* const object = NativeObjects::instance().object(data);
    if (object == nullptr)
        throw_already_destroyed();
    return *object;
}

// The guard: a function that calls back may be led to itself.
ScriptValue MethodFactory::call(Data data, Arguments arguments) {
    const std::size_t missing = arguments.size() < parameters_ ? parameters_ - arguments.size() : 0;
    LibraryHelper& self = object(data);
    if (missing > defaults_.size())
        throw DSError("To few arguments to: " + description());
    const NestingGuard guard;
    // Held: the function may see the last other reference go.
    const Held held(*this, data);
    return with_script_errors([&] {
        if (missing == 0)
            return invoke(self, arguments);
        std::vector<ScriptValue> completed(arguments.begin(), arguments.end());
        completed.insert(completed.end(), defaults_.end() - static_cast<std::ptrdiff_t>(missing), defaults_.end());
        return invoke(self, completed);
    });
}

ScriptValue PropertyFactory::current(Data data) const {
    const NestingGuard guard;
    const ScriptValue held(const_cast<PropertyFactory&>(*this), data);
    return with_script_errors([&] { return read(object(data)); });
}

void PropertyFactory::set(Data data, const ScriptValue& value) {
    const ScriptValue held(*this, data);
    with_script_errors([&] { write(object(data), value); });
}

void PropertyFactory::write(LibraryHelper&, const ScriptValue&) const {
    throw DSError("cant set this to a value (type:" + description() + ")");
}

} // namespace kst::script
