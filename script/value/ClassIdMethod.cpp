#include "script/value/ClassIdMethod.h"

#include "script/value/release_values.h"

namespace kst::script {

ClassIdMethod& ClassIdMethod::instance() {
    static ClassIdMethod& instance = *new ClassIdMethod;
    return instance;
}

ScriptValue ClassIdMethod::make(ScriptValue object, idstring name) {
    const Data data = pool_.take();
    pool_[data].object = std::move(object);
    pool_[data].name = name;
    return ScriptValue::adopt(*this, data);
}

void ClassIdMethod::release(Data data) {
    if (pool_.drop_ref(data) > 0)
        return;
    ScriptValue object = std::move(pool_[data].object);
    pool_.give_back(data);
    release_value(std::move(object));
}

ScriptValue ClassIdMethod::call(Data data, Arguments arguments) {
    const ScriptValue object = pool_[data].object;
    return object.call_method(pool_[data].name, arguments);
}

} // namespace kst::script
