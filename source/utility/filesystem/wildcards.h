#pragma once

#include <string_view>

namespace kst {

/// Whether a file name fits a search pattern, in any case of A to Z. "*" stands for any run of characters, "?" for one
/// (for none at the end of the name or before a dot), and a dot before "*" or "?" also fits the end of the name, so
/// that
/// "*.*" fits every name, with a dot or without.
bool fits_pattern(std::string_view name, std::string_view pattern);

} // namespace kst
