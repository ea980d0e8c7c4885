#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mosaicer {

/// Joins two paths by one slash. Backslashes become slashes; slashes at the end of `a` and at both ends of `b` are cut.
/// An empty `b` leaves one slash at the end, an empty `a` one at the start.
std::string join_path(std::string_view a, std::string_view b);

/// The text before the last slash or backslash; the whole text if it has neither.
std::string_view directory_of(std::string_view path);

/// A to Z become a to z; every other byte stays.
std::string lower_name(std::string_view text);

/// Cuts the character 32, and no other white space, from both ends.
std::string_view trim_blanks(std::string_view text);

/// The pieces between the delimiters, empty ones left out. The views point into `text`.
std::vector<std::string_view> split_string(std::string_view text, char delimiter);

} // namespace mosaicer
