#pragma once

#include <string>
#include <string_view>

namespace kst {

/// The one rule for when two paths are the same. Every slash becomes a backslash, A to Z become lower case (other
/// bytes, and so UTF-8, stay), and of a run of separators the first is kept. A run at the start goes altogether unless
/// `keep_leading_separator`. What is left ends in one separator or in none, as `trailing_separator` says; an empty path
/// stays empty.
///
///   normalize_path("/a//B/", false, false)  "a\b"
///   normalize_path("/a//B/", true, true)    "\a\b\"
std::string normalize_path(std::string_view path, bool trailing_separator, bool keep_leading_separator);

/// The path starts with a slash or backslash.
bool has_leading_separator(std::string_view path);

/// The name behind the last slash or backslash; the whole path if there is none.
std::string_view file_name_of(std::string_view path);

} // namespace kst
