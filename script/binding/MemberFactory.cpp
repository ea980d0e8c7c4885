#include "script/binding/MemberFactory.h"

#include "script/binding/NativeObjects.h"
#include "script/value/DSError.h"
#include "script/value/NestingGuard.h"

namespace kst::script {

inline void TMFactoryBase::hold(Data data) {
    ++values_;
    NativeObjects::instance().add_ref(data);
}

// The object first: its end may take the table with it that owns this factory.
inline void TMFactoryBase::let_go(Data data) {
    NativeObjects::instance().release(data);
    if (--values_ == 0 && retired_)
        delete this;
}

inline LibraryHelper& TMFactoryBase::object(Data data) {
    LibraryHelper* const object = NativeObjects::instance().object(data);
    if (object == nullptr)
        throw_already_destroyed();
    return *object;
}

class TMFactoryBase::Held {
public:
    Held(TMFactoryBase& factory, Data data) : factory_(factory), data_(data) { factory_.hold(data_); }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    ~Held() { factory_.let_go(data_); }

private:
    TMFactoryBase& factory_;
    Data data_;
};

void TMFactoryBase::add_ref(Data data) {
    hold(data);
}

void TMFactoryBase::release(Data data) {
    let_go(data);
}

void TMFactoryBase::retire() {
    retired_ = true;
    if (values_ == 0)
        delete this;
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
    const Held held(const_cast<PropertyFactory&>(*this), data);
    return with_script_errors([&] { return read(object(data)); });
}

void PropertyFactory::set(Data data, const ScriptValue& value) {
    const Held held(*this, data);
    with_script_errors([&] { write(object(data), value); });
}

void PropertyFactory::write(LibraryHelper&, const ScriptValue&) const {
    throw DSError("cant set this to a value (type:" + description() + ")");
}

} // namespace kst::script
