#pragma once

#include <stdexcept>
#include <string>

namespace kst {

/// The engine's general exception.
class ErrorWithCStack : public std::runtime_error {
public:
    explicit ErrorWithCStack(const std::string& text) : std::runtime_error(text) {}
};

/// A broken promise inside the program.
class AssertionException : public std::runtime_error {
public:
    /// The text is "The assertion\n\n  EXPRESSION\n\nfailed on line LINE of FILE" and a line end.
    AssertionException(const std::string& expression, const std::string& file, int line)
        : std::runtime_error("The assertion\n\n  " + expression + "\n\nfailed on line " + std::to_string(line) +
                             " of " + file + "\n") {}
};

/// A failure of the file layer. The text is "SOURCE(LINE)MESSAGE" with the path of the source file that tells it.
class DiskError : public std::runtime_error {
public:
    DiskError(const std::string& source, int line, const std::string& message)
        : std::runtime_error(source + "(" + std::to_string(line) + ")" + message) {}
};

/// Throws the DiskError of the archive layer, which tells "source/utility/Archive" and the line of the call. All stores
/// and file systems fail by this one name, whichever file they live in.
[[noreturn]] void throw_disk_error(const std::string& message, int line = __builtin_LINE());

} // namespace kst
