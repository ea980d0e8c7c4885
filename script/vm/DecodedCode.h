#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "script/language/Opcodes.h"

namespace kst::script {

/// Byte code, an item for each of its instructions, with what there is to know before any of them is translated.
///
/// The value stack is followed through each straight piece of code, and what is pushed is paired with who takes it:
///
///   push &x ... assign         the assignment knows its place, and nothing need be pushed
///   push f  ... call           so does the call, if f is a global that nothing assigns to
///   member  ... call           the member is looked up as a method
///
/// Throws DSError for an operand beyond the end of the code, which verified code has not.
struct DecodedCode {
    static constexpr std::uint32_t none = 0xffffffff;

    struct Item {
        Opcode opcode = Opcode::return_;
        /// False: no opcode.
        bool valid = true;
        /// A branch leads here, or a function begins.
        bool is_target = false;
        /// Need not be done: its partner knows what it pushed.
        bool elided = false;
        std::uint32_t offset = 0;
        std::uint32_t operand = 0;
        /// The index of another item: of an assignment or a call, who pushed what it stores to or calls; of a member,
        /// the call that takes it.
        std::uint32_t partner = none;
    };

    explicit DecodedCode(std::span<const std::uint8_t> code);

    /// The index of the item at an offset, or `none`.
    std::uint32_t index_at(std::uint32_t offset) const;

    std::vector<Item> items;
    /// The indices at which functions begin, the declarations among them.
    std::vector<std::uint32_t> starts;
    /// How many globals the declarations make.
    std::uint32_t globals = 0;
};

} // namespace kst::script
