#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kst::script {

// The instruction set. An instruction is one opcode byte and its operand bytes; operands of several bytes are
// little-endian and unaligned.

/// The number of an opcode is its place in this list.
enum class Opcode : std::uint8_t {
    return_,
    import_,
    declare_object,
    declare_function,
    begin_class,
    end_class,
    push_number,
    push_string,
    push_true,
    push_false,
    push_void,
    push_this,
    push_global,
    push_global_ref,
    push_member,
    push_member_ref,
    push_local,
    push_local_ref,
    cnv_number,
    cnv_string,
    cnv_boolean,
    pop,
    add,
    sub,
    mul,
    div,
    mod,
    negate,
    add_numbers,
    sub_numbers,
    mul_numbers,
    div_numbers,
    pop_again,
    lt,
    le,
    eq,
    ge,
    gt,
    ne,
    resize,
    assign,
    bra,
    brif,
    brifn,
    member,
    call,
    param,
    deref,
};

/// What follows the opcode byte.
enum class Operand : std::uint8_t {
    none,
    index_8,  ///< A local, a member of the current object, a frame size or an argument count.
    index_16, ///< A global.
    number,   ///< A float of 32 bits.
    offset,   ///< A code offset of 32 bits, counted from the start of the program.
    name,     ///< The name, a zero byte, zeros up to 5 bytes. At first execution the machine may rewrite it (below).
    string,   ///< As a name, but may be empty and of any length. Those of 1 to 254 bytes are rewritten like names.
    offset_and_name, ///< Both, in this order.
};

/// A resolved operand: byte 0 is 0, bytes 1 to 3 the number of the name (low byte first), byte 4 the length of the whole
/// operand. A name is never empty, so that a first byte of 0 tells it from an unresolved one. An empty string is five
/// zeros, and no resolved operand has the length 0.
constexpr std::size_t least_name_operand = 5;
/// The length of a resolved operand must fit its byte, and one byte ends the name.
constexpr std::size_t longest_name = 254;

struct OpcodeInfo {
    Opcode opcode;
    /// How the listing writes it; empty for the declarations and for what is never generated.
    std::string_view mnemonic;
    Operand operand;
    /// The effect on the value stack. Besides, `param` appends one argument to the local stack, and `call` takes as
    /// many from it as its operand says.
    std::uint8_t pops;
    std::uint8_t pushes;
};

/// In the order of the opcodes. The mnemonics that end in a quotation mark have their text and another mark behind
/// them.
constexpr std::array opcode_table{
    OpcodeInfo{Opcode::return_, "\treturn", Operand::none, 0, 0},
    OpcodeInfo{Opcode::import_, "", Operand::name, 0, 0},
    OpcodeInfo{Opcode::declare_object, "", Operand::name, 0, 0},
    OpcodeInfo{Opcode::declare_function, "", Operand::offset_and_name, 0, 0},
    OpcodeInfo{Opcode::begin_class, "", Operand::name, 0, 0},
    OpcodeInfo{Opcode::end_class, "", Operand::none, 0, 0},
    OpcodeInfo{Opcode::push_number, "\tpush\t", Operand::number, 0, 1},
    OpcodeInfo{Opcode::push_string, "\tpush\t\"", Operand::string, 0, 1},
    OpcodeInfo{Opcode::push_true, "push true", Operand::none, 0, 1},
    OpcodeInfo{Opcode::push_false, "push false", Operand::none, 0, 1},
    OpcodeInfo{Opcode::push_void, "\tpush\tvoid", Operand::none, 0, 1},
    OpcodeInfo{Opcode::push_this, "\tpush\tthis", Operand::none, 0, 1},
    OpcodeInfo{Opcode::push_global, "\tpush\t", Operand::index_16, 0, 1},
    OpcodeInfo{Opcode::push_global_ref, "\tpush\t&", Operand::index_16, 0, 1},
    OpcodeInfo{Opcode::push_member, "\tpush\t", Operand::index_8, 0, 1},
    OpcodeInfo{Opcode::push_member_ref, "\tpush\t&", Operand::index_8, 0, 1},
    OpcodeInfo{Opcode::push_local, "\tpush\t", Operand::index_8, 0, 1},
    OpcodeInfo{Opcode::push_local_ref, "\tpush\t&", Operand::index_8, 0, 1},
    OpcodeInfo{Opcode::cnv_number, "\tcnv_number", Operand::none, 1, 1},
    OpcodeInfo{Opcode::cnv_string, "\tcnv_string", Operand::none, 1, 1},
    OpcodeInfo{Opcode::cnv_boolean, "\tcnv_boolean", Operand::none, 1, 1},
    OpcodeInfo{Opcode::pop, "\tpop", Operand::none, 1, 0},
    OpcodeInfo{Opcode::add, "\tadd", Operand::none, 2, 1},
    OpcodeInfo{Opcode::sub, "\tsub", Operand::none, 2, 1},
    OpcodeInfo{Opcode::mul, "\tmul", Operand::none, 2, 1},
    OpcodeInfo{Opcode::div, "\tdiv", Operand::none, 2, 1},
    OpcodeInfo{Opcode::mod, "\tmod", Operand::none, 2, 1},
    OpcodeInfo{Opcode::negate, "\tnegate", Operand::none, 1, 1},
    OpcodeInfo{Opcode::add_numbers, "", Operand::none, 2, 1},
    OpcodeInfo{Opcode::sub_numbers, "", Operand::none, 2, 1},
    OpcodeInfo{Opcode::mul_numbers, "", Operand::none, 2, 1},
    OpcodeInfo{Opcode::div_numbers, "", Operand::none, 2, 1},
    OpcodeInfo{Opcode::pop_again, "", Operand::none, 1, 0},
    OpcodeInfo{Opcode::lt, "\tlt", Operand::none, 2, 1},
    OpcodeInfo{Opcode::le, "\tle", Operand::none, 2, 1},
    OpcodeInfo{Opcode::eq, "\teq", Operand::none, 2, 1},
    OpcodeInfo{Opcode::ge, "\tge", Operand::none, 2, 1},
    OpcodeInfo{Opcode::gt, "\tgt", Operand::none, 2, 1},
    OpcodeInfo{Opcode::ne, "\tne", Operand::none, 2, 1},
    // At a function's head the listing writes "\tresize_parameters\t".
    OpcodeInfo{Opcode::resize, "\tresize_local\t", Operand::index_8, 0, 0},
    OpcodeInfo{Opcode::assign, "\tassign", Operand::none, 2, 0},
    OpcodeInfo{Opcode::bra, "\tbra\t", Operand::offset, 0, 0},
    OpcodeInfo{Opcode::brif, "\tbrif\t", Operand::offset, 1, 0},
    OpcodeInfo{Opcode::brifn, "\tbrifn\t", Operand::offset, 1, 0},
    OpcodeInfo{Opcode::member, "\tmember\t\"", Operand::name, 1, 1},
    OpcodeInfo{Opcode::call, "\tcall\t", Operand::index_8, 1, 1},
    OpcodeInfo{Opcode::param, "\tparam", Operand::none, 1, 0},
    OpcodeInfo{Opcode::deref, "\tderef", Operand::none, 1, 1},
};

constexpr std::size_t opcode_count = opcode_table.size();

constexpr const OpcodeInfo& info_of(Opcode opcode) {
    return opcode_table[static_cast<std::size_t>(opcode)];
}

static_assert(opcode_count == 48 && [] {
    for (std::size_t i = 0; i < opcode_count; ++i)
        if (static_cast<std::size_t>(opcode_table[i].opcode) != i)
            return false;
    return true;
}());

} // namespace kst::script
