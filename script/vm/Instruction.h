#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

#include "script/language/Opcodes.h"
#include "script/value/MemberCache.h"
#include "script/value/ScriptValue.h"

namespace kst::script {

// The form that code takes to run. Byte code is written for a stack: `x := a + 1` is five instructions, four of which
// carry a value to or from the stack. Here it is one, which names its places:
//
//   push &x, push a, push 1, add, assign        add  local 0 := local 1, constant 3
//
// An instruction stands for several of the byte code only where no branch leads into their midst, and has the effect of
// all of them, in their order, whatever the values are.

/// Where an operand is, or where a result goes.
enum class ValuePlace : std::uint8_t {
    local,
    member, ///< Of the current object.
    global,
    constant,
    // The above are indexed. A machine has the base of each.
    stack,    ///< The top of the value stack.
    argument, ///< Results only: appended to the local stack.
};
inline constexpr std::size_t indexed_places = 4;

constexpr bool is_indexed(ValuePlace place) {
    return place < ValuePlace::stack;
}

/// ss: both operands on the stack; sp: the right one in a place; pp: both in places.
enum class Operation : std::uint8_t {
    other, ///< Does `opcode`, on the stack.

    push_place,
    push_string,
    push_this,
    pop,
    deref,
    store,    ///< `left` to `result`, an indexed place.
    argument, ///< `left` to the local stack.
    resize,   ///< The frame, to `count`.

    jump,
    jump_if,     ///< The top is true.
    jump_unless, ///< The top is false.

    return_top,
    return_place, ///< `left`, with nothing pushed before it.
    member,
    method, ///< As `member`, ahead of a call: may leave the object and the method's name for `invoke`.
    call,
    call_global, ///< Calls the global `left`.
    invoke,      ///< Calls what `method` left.

    add_ss,
    add_sp,
    add_pp,
    sub_ss,
    sub_sp,
    sub_pp,
    mul_ss,
    mul_sp,
    mul_pp,
    div_ss,
    div_sp,
    div_pp,

    // Jumps when it holds.
    lt_ss,
    lt_sp,
    lt_pp,
    le_ss,
    le_sp,
    le_pp,
    eq_ss,
    eq_sp,
    eq_pp,
    ge_ss,
    ge_sp,
    ge_pp,
    gt_ss,
    gt_sp,
    gt_pp,
    ne_ss,
    ne_sp,
    ne_pp,
};

struct Instruction;

/// What an instruction knows about its name or its string: the identifier, since the first execution, and what a member
/// is in the class that it was last looked up in.
struct NameSite {
    static constexpr idstring unknown = -1;
    idstring id = unknown;
    std::uint32_t index = 0;
    /// Where the code of the member begins, if it is a method.
    const Instruction* start = nullptr;
    /// ScriptedClassBase::serial; 0 is no class.
    std::uint64_t class_serial = 0;
    /// Of values that are not objects of scripts.
    MemberCache cache;
};

struct Instruction {
    Operation operation = Operation::other;
    ValuePlace left_place = ValuePlace::stack;
    ValuePlace right_place = ValuePlace::stack;
    ValuePlace result_place = ValuePlace::stack;
    Opcode opcode = Opcode::return_;
    /// A frame size, or a number of arguments.
    std::uint8_t count = 0;
    std::uint16_t left = 0;
    std::uint16_t right = 0;
    std::uint16_t result = 0;
    /// Where the byte code stands that fails if this instruction fails.
    std::uint32_t offset = 0;
    union {
        const Instruction* target = nullptr;
        NameSite* site;
    };
};
static_assert(sizeof(Instruction) == 24);

/// A program as instructions.
struct InstructionCode {
    std::vector<Instruction> instructions;
    /// Numbers, truth values and void: nothing that is counted.
    std::vector<ScriptValue> constants;
    std::deque<NameSite> sites;
    /// How many globals the declarations make.
    std::uint32_t globals = 0;
    /// Where functions begin, by offset, in ascending order; the declarations are one.
    struct Start {
        std::uint32_t offset = 0;
        std::uint32_t index = 0;
    };
    std::vector<Start> starts;

    /// Null for an offset at which no function begins.
    const Instruction* start_at(std::uint32_t offset) const;
};

/// The code must have been verified. What a damaged operand could still do, where it was not, is an instruction that
/// fails.
InstructionCode translate_code(std::span<const std::uint8_t> code);

} // namespace kst::script
