#pragma once

#include <string>
#include <string_view>

#include "script/value/ScriptClass.h"

namespace kst::script {

/// Fills the fields of a text, each with the next argument: `%[-][width][.precision]` and `f` (fixed notation, 0 digits
/// unless told), `d` or `i` (the integer part) or `s`. `%%` is a percent sign; arguments left over are ignored. Width
/// counts bytes; width and precision go to max_format_width. Throws DSError "String formatting error." for anything
/// else behind a percent sign, and when no argument is left.
std::string format_text(std::string_view format, Arguments arguments);

inline constexpr int max_format_width = 4096;

} // namespace kst::script
