#pragma once

#include <string>
#include <string_view>

namespace mosaicer {

// Words for a Ninja file and for the shell that its commands run in. Each throws std::runtime_error for a text with a
// line break, which a Ninja file cannot hold.

/// A path in a build statement. Blanks, colons and dollars are escaped; a bar stands as the variable `bar`.
std::string ninja_path(std::string_view path);

/// The same in a dyndep file, which knows no variables: throws for a path with a bar as well.
std::string dyndep_path(std::string_view path);

/// A text as the value of a variable or as part of a command.
std::string ninja_value(std::string_view text);

/// One word of a POSIX shell's command line.
std::string shell_word(std::string_view text);

/// A name as a file name: what is not a letter, a digit or one of "._-" becomes % and two digits. Long names keep their
/// beginning and end in a number, so that any name fits a file system.
std::string file_name_of(std::string_view name);

} // namespace mosaicer
