// The flow check in short: each instruction gets one state, what is known whenever it is about to run. A work list
// follows the paths from every function's start. Where a path meets a state that is there already, depths must agree,
// and the smaller frame counts; if that lowers what was known, the path is followed again.
//
//   f(a) { while (a) { object b; ... } }      frame 1 before the loop, 2 within, 1 where the jump back meets the test

#include "script/language/Verifier.h"

#include "script/language/CompiledFile.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace kst::script {

namespace {

/// A member count in its place: no method.
constexpr std::int64_t no_class = -1;
constexpr std::int32_t no_frame = -1;

struct State {
    bool is_start = false;
    bool reached = false;
    std::int32_t depth = 0;
    std::int32_t gathered = 0;
    /// The least size of the frame; `no_frame` until the function has set it.
    std::int32_t frame = no_frame;
    /// How many members the object of this method has.
    std::int64_t members = no_class;
};

struct CheckedInstruction {
    Opcode opcode = Opcode::return_;
    /// The index, count or offset, by its kind.
    std::uint32_t operand = 0;
    std::size_t next = 0;
};

struct Function {
    std::size_t entry;
    std::int64_t members;
};

class Verifier {
public:
    Verifier(std::span<const std::uint8_t> code, const std::string& file)
        : code_(code), file_(file), states_(code.size()) {}

    void verify() {
        read_declarations();
        mark_starts();
        for (const Function& function : functions_) {
            State entry;
            entry.members = function.members;
            flow_to(function.entry, entry);
            follow_paths();
        }
    }

private:
    [[noreturn]] void refuse(std::size_t offset, const char* fault) const {
        throw CompiledFileError(file_, std::string(fault) + " at code offset " + std::to_string(offset));
    }

    std::uint32_t read(std::size_t at, std::size_t bytes) const {
        if (code_.size() - at < bytes)
            refuse(at, "operand cut off");
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < bytes; ++i)
            value |= static_cast<std::uint32_t>(code_[at + i]) << (8 * i);
        return value;
    }

    /// The offset behind the operand.
    std::size_t skip_text(std::size_t at, bool is_name) const {
        const auto begin = code_.begin() + static_cast<std::ptrdiff_t>(at);
        const std::size_t room = is_name ? std::min(code_.size() - at, longest_name + 1) : code_.size() - at;
        const auto end = begin + static_cast<std::ptrdiff_t>(room);
        const auto zero = std::find(begin, end, std::uint8_t{0});
        if (zero == end)
            refuse(at, is_name ? "unterminated name" : "unterminated string");
        if (is_name && zero == begin)
            refuse(at, "empty name");
        const std::size_t length = std::max(static_cast<std::size_t>(zero - begin) + 1, least_name_operand);
        if (code_.size() - at < length)
            refuse(at, "operand cut off");
        // An empty string with anything else would pass for a resolved one.
        if (std::any_of(zero, begin + static_cast<std::ptrdiff_t>(length), [](std::uint8_t byte) { return byte != 0; }))
            refuse(at, "filling that is not zero");
        return at + length;
    }

    CheckedInstruction decode(std::size_t at) const {
        if (at >= code_.size())
            refuse(at, "the code runs off its end");
        if (code_[at] >= opcode_count)
            refuse(at, "invalid opcode");
        CheckedInstruction instruction{.opcode = static_cast<Opcode>(code_[at])};
        const std::size_t operand = at + 1;
        const auto fixed = [&](std::size_t bytes) {
            instruction.operand = read(operand, bytes);
            instruction.next = operand + bytes;
        };
        switch (info_of(instruction.opcode).operand) {
        case Operand::none:
            instruction.next = operand;
            break;
        case Operand::index_8:
            fixed(1);
            break;
        case Operand::index_16:
            fixed(2);
            break;
        case Operand::number:
        case Operand::offset:
            fixed(4);
            break;
        case Operand::name:
            instruction.next = skip_text(operand, /*is_name=*/true);
            break;
        case Operand::string:
            instruction.next = skip_text(operand, /*is_name=*/false);
            break;
        case Operand::offset_and_name:
            fixed(4);
            instruction.next = skip_text(instruction.next, /*is_name=*/true);
            break;
        }
        return instruction;
    }

    static bool is_declaration(Opcode opcode) { return opcode >= Opcode::import_ && opcode <= Opcode::end_class; }

    void read_declarations() {
        bool in_class = false;
        std::int64_t members = 0;
        std::size_t first_method = 0;
        for (std::size_t at = 0;;) {
            const CheckedInstruction instruction = decode(at);
            const Opcode opcode = instruction.opcode;
            const bool of_class = opcode == Opcode::declare_object || opcode == Opcode::declare_function;
            const bool fits =
                in_class ? of_class || opcode == Opcode::end_class
                         : opcode == Opcode::return_ || (is_declaration(opcode) && opcode != Opcode::end_class);
            if (!fits)
                refuse(at, "misplaced declaration");
            at = instruction.next;
            if (opcode == Opcode::return_) {
                body_ = at;
                return;
            }
            if (opcode == Opcode::declare_function)
                functions_.push_back({instruction.operand, no_class});
            if (opcode == Opcode::begin_class) {
                members = 0;
                first_method = functions_.size();
            }
            if (opcode == Opcode::end_class) {
                for (std::size_t i = first_method; i < functions_.size(); ++i)
                    functions_[i].members = members;
            }
            members += of_class ? 1 : 0;
            // A class takes one global itself.
            globals_ += in_class ? 0 : 1;
            in_class = opcode == Opcode::begin_class || (in_class && opcode != Opcode::end_class);
        }
    }

    void mark_starts() {
        for (std::size_t at = body_; at < code_.size();) {
            states_[at].is_start = true;
            const CheckedInstruction instruction = decode(at);
            if (is_declaration(instruction.opcode))
                refuse(at, "misplaced declaration");
            at = instruction.next;
        }
    }

    void flow_to(std::size_t at, const State& incoming) {
        if (at >= states_.size() || !states_[at].is_start)
            refuse(at, "no instruction to go on with");
        State& known = states_[at];
        if (!known.reached) {
            known = incoming;
            known.is_start = known.reached = true;
            pending_.push_back(at);
            return;
        }
        if (known.depth != incoming.depth || known.gathered != incoming.gathered || known.members != incoming.members)
            refuse(at, "paths that disagree");
        if (incoming.frame < known.frame) {
            known.frame = incoming.frame;
            pending_.push_back(at);
        }
    }

    void follow_paths() {
        while (!pending_.empty()) {
            const std::size_t at = pending_.back();
            pending_.pop_back();
            const CheckedInstruction instruction = decode(at);
            State state = states_[at];
            apply(at, instruction, state);
            const bool ends = instruction.opcode == Opcode::return_;
            const bool branches = info_of(instruction.opcode).operand == Operand::offset;
            if (!ends && instruction.opcode != Opcode::bra)
                flow_to(instruction.next, state);
            if (branches)
                flow_to(instruction.operand, state);
        }
    }

    void apply(std::size_t at, const CheckedInstruction& instruction, State& state) const {
        const OpcodeInfo& info = info_of(instruction.opcode);
        if (state.frame == no_frame && instruction.opcode != Opcode::resize)
            refuse(at, "a function without a frame");
        check_index(at, instruction, state);
        if (state.depth < info.pops)
            refuse(at, "value stack taken below its ground");
        state.depth += info.pushes - info.pops;
        if (instruction.opcode == Opcode::param) {
            ++state.gathered;
        } else if (instruction.opcode == Opcode::call) {
            const auto count = static_cast<std::int32_t>(instruction.operand);
            if (state.gathered < count)
                refuse(at, "more arguments than were gathered");
            state.gathered -= count;
        } else if (instruction.opcode == Opcode::resize || instruction.opcode == Opcode::return_) {
            if (state.gathered != 0)
                refuse(at, "arguments left over");
            if (instruction.opcode == Opcode::resize)
                state.frame = static_cast<std::int32_t>(instruction.operand);
        }
    }

    void check_index(std::size_t at, const CheckedInstruction& instruction, const State& state) const {
        std::int64_t bound = 0;
        switch (instruction.opcode) {
        case Opcode::push_this:
            if (state.members == no_class)
                refuse(at, "\"this\" outside a method");
            return;
        case Opcode::push_global:
        case Opcode::push_global_ref:
            bound = globals_;
            break;
        case Opcode::push_member:
        case Opcode::push_member_ref:
            bound = state.members;
            break;
        case Opcode::push_local:
        case Opcode::push_local_ref:
            bound = state.frame;
            break;
        default:
            return;
        }
        if (instruction.operand >= bound)
            refuse(at, "index out of bounds");
    }

    std::span<const std::uint8_t> code_;
    const std::string& file_;
    std::vector<State> states_;
    std::vector<std::size_t> pending_;
    std::vector<Function> functions_;
    std::size_t body_ = 0;
    std::int64_t globals_ = 0;
};

} // namespace

void verify_code(std::span<const std::uint8_t> code, const std::string& file) {
    Verifier(code, file).verify();
}

} // namespace kst::script
