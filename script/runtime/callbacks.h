#pragma once

#include "script/binding/LibraryHelper.h"
#include "script/value/NestingGuard.h"

namespace kst::script {

/// Calls what a script handed to native code. Native functions that call back may lead to each other without a script
/// in between (`v.for_each(v.for_each)`): throws DSError when that nests too deeply, see NestingGuard.
inline ScriptValue call_back(const ScriptValue& callee, Arguments arguments) {
    const NestingGuard guard;
    return callee.call(arguments);
}

/// For native code that calls back and then goes on with its object: keeps an object that belongs to scripts alive, and
/// finds out if the callback has destroyed one that does not.
class HeldObject {
public:
    explicit HeldObject(LibraryHelper& object) : value_(object.value()) {}
    bool alive() const { return LibraryHelper::CppClass::object_of(value_) != nullptr; }
    /// Throws DSError "Object already destroyed" if it has been.
    void check() const {
        if (!alive())
            throw_already_destroyed();
    }

private:
    ScriptValue value_;
};

} // namespace kst::script
