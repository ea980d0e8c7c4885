#include "script/language/CompiledFile.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace kst::script {

namespace {

constexpr std::string_view magic("KVX\0", 4);
constexpr std::size_t header_size = 16;

void append_32(std::vector<std::uint8_t>& bytes, std::uint32_t value) {
    for (unsigned shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<std::uint8_t>(value >> shift & 0xFFU));
}

std::uint32_t value_32(std::span<const std::uint8_t> bytes, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value |= static_cast<std::uint32_t>(bytes[at + i]) << (8 * i);
    return value;
}

constexpr std::size_t debug_offset_of(std::size_t code_size) {
    return (code_size + header_size + 3) & ~std::size_t{3};
}
static_assert(debug_offset_of(0) == 16 && debug_offset_of(1) == 20 && debug_offset_of(4) == 20);

/// The whole of a file in memory: a script is small, and every bound below is then a bound of this vector.
std::vector<std::uint8_t> all_bytes(Archive& archive) {
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(archive.size()));
    archive.set_position(0);
    bytes.resize(archive.read(bytes.data(), bytes.size()));
    return bytes;
}

void read_debug_block(const std::vector<std::uint8_t>& bytes, std::size_t offset, const std::string& name,
                      CompiledFile& file) {
    if (offset > bytes.size() || bytes.size() - offset < 4)
        throw CompiledFileError(name, "the debug block lies outside the file");
    if (value_32(bytes, offset) != 0)
        return;
    const auto path = bytes.begin() + static_cast<std::ptrdiff_t>(offset + 4);
    const auto path_end = std::find(path, bytes.end(), std::uint8_t{0});
    const std::size_t lines_at = static_cast<std::size_t>(path_end - bytes.begin()) + 1;
    if (path_end == bytes.end() || (bytes.size() - lines_at) / 4 < file.code.size())
        throw CompiledFileError(name, "the debug block is cut off");
    file.source_path.assign(path, path_end);
    file.lines.resize(file.code.size());
    for (std::size_t i = 0; i < file.lines.size(); ++i)
        file.lines[i] = static_cast<std::int32_t>(value_32(bytes, lines_at + 4 * i));
}

} // namespace

void write_compiled_file(Archive& archive, const CodeBuffer& code, const std::string& source_path,
                         bool with_debug_block) {
    const bool debug = with_debug_block && code.keeps_lines();
    const std::size_t debug_offset = debug_offset_of(code.size());
    std::vector<std::uint8_t> bytes(magic.begin(), magic.end());
    append_32(bytes, static_cast<std::uint32_t>(code.size()));
    append_32(bytes, debug ? static_cast<std::uint32_t>(debug_offset) : 0);
    append_32(bytes, 0);
    bytes.insert(bytes.end(), code.code().begin(), code.code().end());
    if (debug) {
        bytes.resize(debug_offset);
        append_32(bytes, 0);
        bytes.insert(bytes.end(), source_path.begin(), source_path.end());
        bytes.push_back(0);
        for (const std::int32_t line : code.lines())
            append_32(bytes, static_cast<std::uint32_t>(line));
    }
    archive.write(bytes.data(), bytes.size());
}

std::optional<CompiledFile> read_compiled_file(Archive& archive, bool skip_debug_block) {
    const std::vector<std::uint8_t> bytes = all_bytes(archive);
    if (bytes.size() < magic.size() || !std::equal(magic.begin(), magic.end(), bytes.begin()))
        return std::nullopt;
    if (bytes.size() < header_size)
        throw CompiledFileError(archive.name(), "the header is cut off");
    const std::uint32_t code_size = value_32(bytes, 4);
    // A negative size is a large one here.
    if (code_size > bytes.size() - header_size)
        throw CompiledFileError(archive.name(), "the code is cut off");
    CompiledFile file;
    const auto code = bytes.begin() + header_size;
    file.code.assign(code, code + code_size);
    const std::uint32_t debug_offset = value_32(bytes, 8);
    if (debug_offset != 0 && !skip_debug_block)
        read_debug_block(bytes, debug_offset, archive.name(), file);
    return file;
}

} // namespace kst::script
