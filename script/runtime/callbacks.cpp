#include "script/runtime/callbacks.h"

#include "script/value/NestingGuard.h"

namespace kst::script {

ScriptValue call_back(const ScriptValue& callee, Arguments arguments) {
    const NestingGuard guard;
    return callee.call(arguments);
}

} // namespace kst::script
