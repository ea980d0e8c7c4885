#pragma once

#include "script/language/CodeBuffer.h"
#include "source/utility/Archive.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace kst::script {

// A compiled script (.kvx), all integers little-endian:
//
//   offset  size       field
//   0       4          "KVX" and a zero byte
//   4       4          code size in bytes, signed
//   8       4          offset of the debug block, 0 if there is none
//   12      4          reserved; readers ignore it
//   16      code size  the code, names in their unresolved form
//
// The debug block stands at the first multiple of 4 at or behind the end of the code, with zero bytes in the gap:
//
//   0       4          format, 0; a reader that finds another one ignores the block
//   4                  the source path, ended by a zero byte
//           4 each     the line table, one entry for each code byte

/// A file that begins like a compiled script and is damaged behind that. The text names the file.
class CompiledFileError : public std::runtime_error {
public:
    CompiledFileError(const std::string& file, const std::string& fault)
        : std::runtime_error(file + ": damaged compiled script: " + fault) {}
};

struct CompiledFile {
    /// As it stands in the file: not yet verified.
    std::vector<std::uint8_t> code;
    /// Empty, both of them, where the file has no debug block or the reader skipped it.
    std::string source_path;
    std::vector<std::int32_t> lines;
};

/// Writes header and code at the archive's position, which counts as offset 0. The debug block follows if it is wanted
/// and the code keeps lines.
void write_compiled_file(Archive& archive, const CodeBuffer& code, const std::string& source_path,
                         bool with_debug_block);

/// Reads from the start of the archive. Nothing: it does not begin with the magic. Throws CompiledFileError where sizes
/// and offsets pass the end of the file or the header is cut off behind the magic. The code is not verified here: call
/// verify_code before it runs.
std::optional<CompiledFile> read_compiled_file(Archive& archive, bool skip_debug_block);

} // namespace kst::script
