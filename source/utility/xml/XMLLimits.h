#pragma once

#include <cstddef>
#include <cstdint>

namespace kst {

/// What one outermost load may use. The dialect itself knows no bounds: macros may expand to themselves, files may
/// include one another in a circle. Passing a limit is a parse error with file and line, or for a compiled form an
/// error that names the file.
namespace xml_limits {

/// Elements inside one another, counted through includes. Every walk over a tree may recurse this deep.
constexpr std::size_t most_nesting = 1024;

/// Files that include one another, the outermost not counted.
constexpr std::size_t most_include_depth = 64;
/// Files included in all, and their bytes together: a circle with two branches has as many paths as 2 to the 64.
constexpr std::size_t most_includes = 10'000;
constexpr std::uint64_t most_included_bytes = 256u << 20;

/// Bytes that macro expansion may make in all: a fixed part, and this many for each byte of source text. Every
/// replacement also counts `replacement_cost` bytes, so that one which makes nothing does not go on for ever.
constexpr std::uint64_t expansion_bytes = 16u << 20;
constexpr std::uint64_t expansion_bytes_per_source_byte = 16;
constexpr std::uint64_t replacement_cost = 16;

} // namespace xml_limits

/// Process-wide switches of the XML layer. No program changes them at run time; tests do.
struct XMLSwitches {
    /// Off: include elements stay in the tree as plain elements.
    bool process_includes = true;
    /// On: a compiled form is refused if an included file is newer than it.
    bool check_included_file_times = true;
    /// On: a successful parse of source text writes the compiled form beside it.
    bool write_compiled_form = false;
    /// Off: an error leaves the document empty, and the operation returns false.
    bool rethrow_errors = true;
};

XMLSwitches& xml_switches();

} // namespace kst
