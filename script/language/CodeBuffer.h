#pragma once

#include "script/language/Opcodes.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace kst::script {

/// Growing byte code, with a line table beside it if wanted.
///
/// The table has one entry for each code byte: an instruction's first byte holds its source line, the other bytes -1.
class CodeBuffer {
public:
    explicit CodeBuffer(bool keeps_lines = false) : keeps_lines_(keeps_lines) {}

    void clear();

    std::span<const std::uint8_t> code() const { return code_; }
    /// Empty if no lines are kept, else as long as the code.
    std::span<const std::int32_t> lines() const { return lines_; }
    bool keeps_lines() const { return keeps_lines_; }
    std::size_t size() const { return code_.size(); }

    /// Begins an instruction that stands in the given source line. The put functions add its operand.
    void begin(Opcode opcode, std::int32_t line);
    void put_8(std::uint8_t value);
    void put_16(std::uint16_t value);
    void put_32(std::uint32_t value);
    void put_number(float value);
    /// The operand form of names and strings. The text holds no zero byte.
    void put_text(std::string_view text);
    /// Overwrites the four operand bytes at the position.
    void patch_32(std::size_t position, std::uint32_t value);

private:
    void cover_operand();

    bool keeps_lines_;
    std::vector<std::uint8_t> code_;
    std::vector<std::int32_t> lines_;
};

} // namespace kst::script
