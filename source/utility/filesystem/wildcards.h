#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kst {

/// Whether a file name fits a search pattern, in any case of A to Z. "*" stands for any run of characters, "?" for one
/// (for none at the end of the name or before a dot), and a dot before "*" or "?" also fits the end of the name, so
/// that
/// "*.*" fits every name, with a dot or without.
bool fits_pattern(std::string_view name, std::string_view pattern);

/// The pieces between semicolons, empty ones left out: "*.txt;*.xml" stands for two searches.
std::vector<std::string> split_patterns(const std::string& patterns);

} // namespace kst
