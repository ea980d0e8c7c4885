#pragma once

#include <vector>

#include "script/value/ScriptValue.h"

namespace kst::script {

/// Lets go of values whose holder has died. Whatever dies with them and holds values in its turn lands here again, and
/// waits in a queue until the outermost call comes to it: a chain of any length is released at a fixed stack depth.
///
/// Every class whose records hold values releases them this way, never by its record's destructor.
void release_value(ScriptValue&& value) noexcept;
void release_values(std::vector<ScriptValue>&& values) noexcept;

} // namespace kst::script
