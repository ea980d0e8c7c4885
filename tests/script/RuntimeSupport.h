#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>

#include "script/binding/NativeObjects.h"
#include "script/runtime/ContainersLibrary.h"
#include "script/value/ClassString.h"
#include "script/value/DSError.h"
#include "script/vm/ObjectClasses.h"
#include "tests/script/RunSource.h"

namespace kst::script {

/// The text of the error that the action ends in.
template <typename Action>
std::string error_of(Action&& action) {
    try {
        std::forward<Action>(action)();
    } catch (const DSBaseError& error) {
        return error.what();
    }
    return "no error";
}

/// What a program may import: `containers`, and what a test adds.
class RuntimeHost : public ScriptInterface {
public:
    RuntimeHost() { add("containers", containers_.value()); }

    void add(const std::string& name, ScriptValue value) { values_[intern(name)] = std::move(value); }
    bool has(idstring id) override { return values_.contains(id); }
    ScriptValue get(idstring id) override { return values_.at(id); }

private:
    ContainersLibrary containers_;
    std::map<idstring, ScriptValue> values_;
};

/// How many records of all kinds of values are taken that programs leave behind when they hold on to something.
inline std::size_t live_records() {
    return NativeObjects::instance().live() + ClassString::instance().live() +
           ScriptVM::ClassInstance::instance().live() + ScriptVM::ClassMethod::instance().live();
}

/// Calls a member of a value by its name.
template <typename... A>
ScriptValue call_member(const ScriptValue& object, const char* name, const A&... arguments) {
    const std::vector<ScriptValue> list{arguments...};
    return object.member(intern(name)).call(list);
}

} // namespace kst::script
