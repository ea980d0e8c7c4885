#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "script/language/CodeBuffer.h"

namespace kst::script {

/// Writes programs by hand, for tests of the machine alone. Declarations come first, then `end_declarations`; a label
/// may be used before it is placed.
class Assembler {
public:
    Assembler& op(Opcode opcode) {
        code_.begin(opcode, 0);
        return *this;
    }
    Assembler& op(Opcode opcode, unsigned operand) {
        op(opcode);
        if (info_of(opcode).operand == Operand::index_16)
            code_.put_16(static_cast<std::uint16_t>(operand));
        else
            code_.put_8(static_cast<std::uint8_t>(operand));
        return *this;
    }
    Assembler& op(Opcode opcode, const std::string& text) {
        op(opcode);
        if (info_of(opcode).operand == Operand::offset)
            put_label(text);
        else
            code_.put_text(text);
        return *this;
    }
    Assembler& number(float value) {
        op(Opcode::push_number);
        code_.put_number(value);
        return *this;
    }
    Assembler& function(const std::string& name, const std::string& label_name) {
        op(Opcode::declare_function);
        put_label(label_name);
        code_.put_text(name);
        return *this;
    }
    Assembler& label(const std::string& name) {
        labels_[name] = static_cast<std::uint32_t>(code_.size());
        return *this;
    }

    std::vector<std::uint8_t> code() {
        for (const auto& [position, name] : waiting_)
            code_.patch_32(position, labels_.at(name));
        return {code_.code().begin(), code_.code().end()};
    }

private:
    void put_label(const std::string& name) {
        waiting_.emplace_back(code_.size(), name);
        code_.put_32(0);
    }

    CodeBuffer code_;
    std::map<std::string, std::uint32_t> labels_;
    std::vector<std::pair<std::size_t, std::string>> waiting_;
};

} // namespace kst::script
