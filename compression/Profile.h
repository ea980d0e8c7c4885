#pragma once

#include "compression/CompressionOptions.h"

#include <cstdint>
#include <istream>
#include <string>

namespace compression {

/// Fills the record from a profile: a text of lines with a key, blanks and a value, e.g. "g_quality 72".
///
/// A line that is empty or begins with "#" says nothing; neither does one with a key that OptionKeys.h does not list,
/// since a profile also serves other programs. Numbers are decimal; a yes or no is 1, 0, "true" or "false". Returns 0,
/// or UNSUPPORTED_OPTION for a line of 1,024 characters or more, or a listed key without a value of its type; the
/// options then hold what the lines before said.
[[nodiscard]] std::int32_t read_profile(std::istream& text, CompressionOptions& options);

/// The same from a file. CANT_OPEN_PROFILE if it cannot be opened or read.
[[nodiscard]] std::int32_t read_profile_file(const std::string& path, CompressionOptions& options);

} // namespace compression
