#pragma once

#include "script/language/Opcodes.h"

#include <cstdint>
#include <span>
#include <string>

namespace kst::script {

/// Checks code that comes from disk, before its first run. Throws CompiledFileError, which names the file.
///
/// Code that passes keeps these promises, so that a machine need not check them while it runs:
///   - From offset 0 stand the declarations, ended by a return; no declaration stands elsewhere. Functions start at
///     instructions behind them.
///   - Every instruction has a known opcode and its whole operand; names are unresolved, not empty, ended, and no longer
///     than 254 bytes; strings are ended; both are filled up with zeros.
///   - Branches lead to instructions behind the declarations, and no path runs off the end of the code.
///   - A function first sets the size of its frame. Locals lie within the frame, on every path that leads there;
///     globals and members of the current object within what is declared. Members and `this` are used by methods only.
///   - No path takes from the value stack or from the gathered arguments what the function has not put there; where paths
///     meet they have gathered equally many. A frame is not resized, nor a function left, while arguments are gathered.
///
/// Whether a place that is assigned to is a reference is a matter of values, and remains the machine's.
/// Time grows with the size of the code.
void verify_code(std::span<const std::uint8_t> code, const std::string& file);

} // namespace kst::script
