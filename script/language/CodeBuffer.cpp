#include "script/language/CodeBuffer.h"

#include <bit>
#include <cassert>

namespace kst::script {

void CodeBuffer::clear() {
    code_.clear();
    lines_.clear();
}

void CodeBuffer::begin(Opcode opcode, std::int32_t line) {
    code_.push_back(static_cast<std::uint8_t>(opcode));
    if (keeps_lines_)
        lines_.push_back(line);
}

void CodeBuffer::put_8(std::uint8_t value) {
    code_.push_back(value);
    cover_operand();
}

void CodeBuffer::put_16(std::uint16_t value) {
    code_.push_back(static_cast<std::uint8_t>(value & 0xFFU));
    code_.push_back(static_cast<std::uint8_t>(value >> 8));
    cover_operand();
}

void CodeBuffer::put_32(std::uint32_t value) {
    code_.resize(code_.size() + 4);
    patch_32(code_.size() - 4, value);
    cover_operand();
}

void CodeBuffer::put_number(float value) {
    put_32(std::bit_cast<std::uint32_t>(value));
}

void CodeBuffer::put_text(std::string_view text) {
    assert(text.find('\0') == std::string_view::npos);
    code_.insert(code_.end(), text.begin(), text.end());
    const std::size_t zeros = text.size() + 1 < least_name_operand ? least_name_operand - text.size() : 1;
    code_.resize(code_.size() + zeros);
    cover_operand();
}

void CodeBuffer::patch_32(std::size_t position, std::uint32_t value) {
    assert(position + 4 <= code_.size());
    for (std::size_t i = 0; i < 4; ++i)
        code_[position + i] = static_cast<std::uint8_t>(value >> (8 * i) & 0xFFU);
}

void CodeBuffer::cover_operand() {
    if (keeps_lines_)
        lines_.resize(code_.size(), -1);
}

} // namespace kst::script
