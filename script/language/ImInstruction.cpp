#include "script/language/ImInstruction.h"

#include <array>
#include <cstdio>
#include <optional>
#include <string_view>

namespace kst::script {

namespace {

struct CommandInfo {
    ImCommand::Command command;
    /// A swap writes nothing.
    std::optional<Opcode> opcode;
};

constexpr std::array commands{
    CommandInfo{ImCommand::Command::deref, Opcode::deref},
    CommandInfo{ImCommand::Command::pop, Opcode::pop},
    CommandInfo{ImCommand::Command::swap, std::nullopt},
    CommandInfo{ImCommand::Command::param, Opcode::param},
    CommandInfo{ImCommand::Command::assign, Opcode::assign},
    CommandInfo{ImCommand::Command::return_, Opcode::return_},
    CommandInfo{ImCommand::Command::push_void, Opcode::push_void},
    CommandInfo{ImCommand::Command::push_this, Opcode::push_this},
    CommandInfo{ImCommand::Command::cnv_number, Opcode::cnv_number},
    CommandInfo{ImCommand::Command::cnv_string, Opcode::cnv_string},
    CommandInfo{ImCommand::Command::cnv_boolean, Opcode::cnv_boolean},
};

std::optional<Opcode> opcode_of(ImCommand::Command command) {
    return commands[static_cast<std::size_t>(command)].opcode;
}

/// In the order of the operators.
constexpr std::array binary_opcodes{Opcode::add, Opcode::sub, Opcode::mul, Opcode::div, Opcode::mod, Opcode::lt,
                                    Opcode::le,  Opcode::eq,  Opcode::ge,  Opcode::gt,  Opcode::ne};
constexpr std::array goto_opcodes{Opcode::bra, Opcode::brif, Opcode::brifn};

std::string_view mnemonic(Opcode opcode) {
    return info_of(opcode).mnemonic;
}

std::uint8_t byte_of(std::size_t value, const char* refusal) {
    if (value > 255)
        throw GeneratorError(refusal);
    return static_cast<std::uint8_t>(value);
}

constexpr const char* too_many_locals = "More than 256 local variables not supported";

void print_use(std::ostream& out, const NameUse& use, std::string_view reference_mark) {
    const ResolvedName resolved = resolve(use);
    out << "\tpush\t" << reference_mark << *use.name;
    const char* place = "";
    switch (resolved.place) {
    case Place::unknown:
        out << "\t;error:" << *use.name << " not found\n";
        return;
    case Place::local:
        place = "local[";
        break;
    case Place::class_object:
    case Place::class_other:
        place = "class[";
        break;
    case Place::global_object:
    case Place::global_other:
        place = "global[";
        break;
    }
    out << "\t;" << reference_mark << place << resolved.index << "]\n";
}

/// What is no object is not stored to: its reference is its value.
void emit_use(Emitter& emitter, const NameUse& use, bool reference) {
    const ResolvedName resolved = resolve(use);
    const auto index_8 = [&](Opcode opcode, const char* refusal) {
        const std::uint8_t index = byte_of(resolved.index, refusal);
        emitter.begin(opcode);
        emitter.code.put_8(index);
    };
    const bool object = resolved.place == Place::class_object || resolved.place == Place::global_object;
    switch (resolved.place) {
    case Place::unknown:
        throw ParserError("Id not found \"" + *use.name + "\"");
    case Place::local:
        return index_8(reference ? Opcode::push_local_ref : Opcode::push_local, too_many_locals);
    case Place::class_object:
    case Place::class_other:
        return index_8(reference && object ? Opcode::push_member_ref : Opcode::push_member,
                       "More than 256 class members not supported");
    case Place::global_object:
    case Place::global_other:
        if (resolved.index > 65535)
            throw GeneratorError("More than 65536 local variables not supported");
        emitter.begin(reference && object ? Opcode::push_global_ref : Opcode::push_global);
        emitter.code.put_16(static_cast<std::uint16_t>(resolved.index));
        return;
    }
}

void emit_resize(Emitter& emitter, std::size_t size) {
    const std::uint8_t count = byte_of(size, too_many_locals);
    emitter.begin(Opcode::resize);
    emitter.code.put_8(count);
}

} // namespace

void Emitter::emit(ImInstruction& instruction) {
    instruction.offset = static_cast<std::int64_t>(code.size());
    for (const std::size_t operand : instruction.waiting)
        code.patch_32(operand, static_cast<std::uint32_t>(instruction.offset));
    instruction.waiting.clear();
    line_ = instruction.line;
    instruction.emit(*this);
}

void Emitter::put_target(std::int32_t instruction) {
    ImInstruction& target = *instructions_[static_cast<std::size_t>(instruction)];
    if (target.offset < 0)
        target.waiting.push_back(code.size());
    // An offset of -1 becomes the operand of all ones that is patched later.
    code.put_32(static_cast<std::uint32_t>(target.offset));
}

void Emitter::put_name(const std::string& name) {
    if (name.size() > longest_name)
        throw GeneratorError("More than 254 characters in a name not supported");
    code.put_text(name);
}

void ImBinOp::print(std::ostream& out) const {
    out << mnemonic(binary_opcodes[static_cast<std::size_t>(op)]) << '\n';
}
void ImBinOp::emit(Emitter& emitter) const {
    emitter.begin(binary_opcodes[static_cast<std::size_t>(op)]);
}

void ImUnOp::print(std::ostream& out) const {
    out << mnemonic(Opcode::negate) << '\n';
}
void ImUnOp::emit(Emitter& emitter) const {
    emitter.begin(Opcode::negate);
}

void ImCommand::print(std::ostream& out) const {
    const auto opcode = opcode_of(command);
    out << (opcode ? mnemonic(*opcode) : "\tswap") << '\n';
}

void ImCommand::emit(Emitter& emitter) const {
    if (const auto opcode = opcode_of(command))
        emitter.begin(*opcode);
}

void ImConstNumber::print(std::ostream& out) const {
    // The form in which the language itself turns numbers into text.
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%1.8g", static_cast<double>(value));
    out << mnemonic(Opcode::push_number) << text.data() << '\n';
}

void ImConstNumber::emit(Emitter& emitter) const {
    emitter.begin(Opcode::push_number);
    emitter.code.put_number(value);
}

void ImConstString::print(std::ostream& out) const {
    out << mnemonic(Opcode::push_string) << *value << "\"\n";
}

void ImConstString::emit(Emitter& emitter) const {
    emitter.begin(Opcode::push_string);
    emitter.code.put_text(*value);
}

void ImConstBoolean::print(std::ostream& out) const {
    out << mnemonic(value ? Opcode::push_true : Opcode::push_false) << '\n';
}

void ImConstBoolean::emit(Emitter& emitter) const {
    emitter.begin(value ? Opcode::push_true : Opcode::push_false);
}

void ImIDRef::print(std::ostream& out) const {
    print_use(out, use, "&");
}
void ImIDRef::emit(Emitter& emitter) const {
    emit_use(emitter, use, /*reference=*/true);
}

void ImValue::print(std::ostream& out) const {
    print_use(out, use, "");
}
void ImValue::emit(Emitter& emitter) const {
    emit_use(emitter, use, /*reference=*/false);
}

void ImMember::print(std::ostream& out) const {
    out << mnemonic(Opcode::member) << *name << "\"\n";
}

void ImMember::emit(Emitter& emitter) const {
    if (*name == "number")
        return emitter.begin(Opcode::cnv_number);
    if (*name == "string")
        return emitter.begin(Opcode::cnv_string);
    if (*name == "boolean")
        return emitter.begin(Opcode::cnv_boolean);
    emitter.begin(Opcode::member);
    emitter.put_name(*name);
}

void ImCall::print(std::ostream& out) const {
    out << mnemonic(Opcode::call) << argument_count << '\n';
}

void ImCall::emit(Emitter& emitter) const {
    const std::uint8_t count = byte_of(argument_count, "More than 256 parameters not supported");
    emitter.begin(Opcode::call);
    emitter.code.put_8(count);
}

void ImGotoCond::print(std::ostream& out) const {
    out << mnemonic(goto_opcodes[static_cast<std::size_t>(condition)]) << target << '\n';
}

void ImGotoCond::emit(Emitter& emitter) const {
    if (target < 0)
        return;
    emitter.begin(goto_opcodes[static_cast<std::size_t>(condition)]);
    emitter.put_target(target);
}

void ImResizeLocal::print(std::ostream& out) const {
    out << mnemonic(Opcode::resize) << scope->size() << '\n';
}

void ImResizeLocal::emit(Emitter& emitter) const {
    const std::size_t size = scope->size();
    if (size > scope->enclosing_size())
        emit_resize(emitter, size);
}

void ImResizeParameters::print(std::ostream& out) const {
    out << "\tresize_parameters\t" << scope->symbols().size() << '\n';
}

void ImResizeParameters::emit(Emitter& emitter) const {
    emit_resize(emitter, scope->symbols().size());
}

} // namespace kst::script
