// Puts neighbours together: what pushes the places of an operation, the operation, and what takes its result.

#include "script/vm/Instruction.h"

#include <algorithm>
#include <bit>
#include <map>
#include <optional>

#include "script/value/BasicClasses.h"
#include "script/vm/DecodedCode.h"

namespace kst::script {

namespace {

constexpr std::uint32_t none = DecodedCode::none;
constexpr std::uint32_t most_constants = 65536;

struct Source {
    ValuePlace place = ValuePlace::stack;
    std::uint16_t index = 0;
    /// The decoded instruction behind it.
    std::size_t next = 0;
};

bool is_arithmetic(Opcode opcode) {
    return opcode >= Opcode::add && opcode <= Opcode::div;
}
bool is_comparison(Opcode opcode) {
    return opcode >= Opcode::lt && opcode <= Opcode::ne;
}
/// What holds exactly when the comparison does not.
Opcode opposite(Opcode comparison) {
    switch (comparison) {
    case Opcode::lt:
        return Opcode::ge;
    case Opcode::le:
        return Opcode::gt;
    case Opcode::eq:
        return Opcode::ne;
    case Opcode::ge:
        return Opcode::lt;
    case Opcode::gt:
        return Opcode::le;
    default:
        return Opcode::eq;
    }
}

/// `form` 0, 1, 2 for ss, sp, pp.
Operation operation_of(Opcode opcode, int form) {
    const int first = static_cast<int>(is_arithmetic(opcode) ? Operation::add_ss : Operation::lt_ss);
    const int number = static_cast<int>(opcode) - static_cast<int>(is_arithmetic(opcode) ? Opcode::add : Opcode::lt);
    return static_cast<Operation>(first + 3 * number + form);
}

class Translator {
public:
    explicit Translator(std::span<const std::uint8_t> code) : code_(code), decoded_code_(code) {}

    InstructionCode translate() {
        result_.globals = decoded_code_.globals;
        emit_all();
        resolve_targets();
        return std::move(result_);
    }

private:
    std::optional<std::uint16_t> constant(ScriptClass& value_class, ScriptValue::Data data) {
        const auto key = std::pair(value_class.order(), data);
        const auto known = constant_indices_.find(key);
        if (known != constant_indices_.end())
            return known->second;
        if (result_.constants.size() == most_constants)
            return std::nullopt;
        const auto index = static_cast<std::uint16_t>(result_.constants.size());
        result_.constants.push_back(ScriptValue(value_class, data));
        constant_indices_[key] = index;
        return index;
    }

    bool continues(std::size_t i) const { return i < decoded_.size() && decoded_[i].valid && !decoded_[i].is_target; }
    bool continues_with(std::size_t i, Opcode opcode) const { return continues(i) && decoded_[i].opcode == opcode; }

    std::optional<Source> constant_source(ScriptClass& value_class, ScriptValue::Data data, std::size_t next) {
        const auto index = constant(value_class, data);
        return index ? std::optional(Source{ValuePlace::constant, *index, next}) : std::nullopt;
    }

    /// The place of what the instruction pushes, if it is in one. A negated number is a constant too.
    std::optional<Source> source_at(std::size_t i) {
        if (i >= decoded_.size() || !decoded_[i].valid || decoded_[i].elided)
            return std::nullopt;
        const DecodedCode::Item& d = decoded_[i];
        const auto index = static_cast<std::uint16_t>(d.operand);
        switch (d.opcode) {
        case Opcode::push_local:
            return Source{ValuePlace::local, index, i + 1};
        case Opcode::push_member:
            return Source{ValuePlace::member, index, i + 1};
        case Opcode::push_global:
            return d.operand < result_.globals ? std::optional(Source{ValuePlace::global, index, i + 1}) : std::nullopt;
        case Opcode::push_number: {
            const bool negated = continues_with(i + 1, Opcode::negate);
            const float number = std::bit_cast<float>(d.operand);
            return constant_source(number_class, number_bits(negated ? -number : number), negated ? i + 2 : i + 1);
        }
        case Opcode::push_true:
            return constant_source(boolean_class, 1, i + 1);
        case Opcode::push_false:
            return constant_source(boolean_class, 0, i + 1);
        case Opcode::push_void:
            return constant_source(void_class, 0, i + 1);
        default:
            return std::nullopt;
        }
    }

    Instruction& emit(Operation operation, std::size_t i) {
        Instruction& instruction = result_.instructions.emplace_back();
        instruction.operation = operation;
        instruction.opcode = decoded_[i].opcode;
        instruction.offset = decoded_[i].offset;
        instruction.count = static_cast<std::uint8_t>(decoded_[i].operand);
        return instruction;
    }

    static void set_left(Instruction& instruction, const Source& source) {
        instruction.left_place = source.place;
        instruction.left = source.index;
    }

    /// The place of a reference that was paired with an assignment.
    bool has_place(std::size_t assignment) const {
        return continues_with(assignment, Opcode::assign) && decoded_[assignment].partner != none;
    }
    void set_result(Instruction& instruction, std::size_t assignment) const {
        const DecodedCode::Item& reference = decoded_[decoded_[assignment].partner];
        instruction.result_place = reference.opcode == Opcode::push_local_ref    ? ValuePlace::local
                                   : reference.opcode == Opcode::push_member_ref ? ValuePlace::member
                                                                                 : ValuePlace::global;
        instruction.result = static_cast<std::uint16_t>(reference.operand);
    }

    bool returns(std::size_t i) const {
        if (!continues(i))
            return false;
        if (decoded_[i].opcode == Opcode::return_)
            return true;
        return decoded_[i].opcode == Opcode::bra && leads_to_return(decoded_[i]);
    }
    bool leads_to_return(const DecodedCode::Item& branch) const {
        const std::uint32_t target = decoded_code_.index_at(branch.operand);
        return target != none && decoded_[target].valid && decoded_[target].opcode == Opcode::return_;
    }

    /// Gives the next instruction to translate.
    std::size_t emit_operator(std::size_t at, const Source* left, const Source* right) {
        const Opcode opcode = decoded_[at].opcode;
        const int form = left != nullptr ? 2 : right != nullptr ? 1 : 0;
        std::size_t next = at + 1;
        Opcode operated = opcode;
        if (is_comparison(opcode) && decoded_[next].opcode == Opcode::brifn)
            operated = opposite(opcode);
        Instruction& instruction = emit(operation_of(operated, form), at);
        instruction.opcode = operated;
        if (left != nullptr)
            set_left(instruction, *left);
        if (right != nullptr) {
            instruction.right_place = right->place;
            instruction.right = right->index;
        }
        if (is_comparison(opcode)) {
            waiting_.push_back({result_.instructions.size() - 1, decoded_[next].operand});
            return next + 1;
        }
        if (has_place(next)) {
            set_result(instruction, next);
            return next + 1;
        }
        if (continues_with(next, Opcode::param)) {
            instruction.result_place = ValuePlace::argument;
            return next + 1;
        }
        return next;
    }

    /// An operator that has an instruction of its own: comparisons have one for branches only.
    bool has_operation(std::size_t i) const {
        if (!continues(i))
            return false;
        return is_arithmetic(decoded_[i].opcode) ||
               (is_comparison(decoded_[i].opcode) &&
                (continues_with(i + 1, Opcode::brif) || continues_with(i + 1, Opcode::brifn)));
    }

    std::size_t emit_source(std::size_t i, const Source& source) {
        const std::size_t next = source.next;
        if (continues(next)) {
            if (const auto second = source_at(next); second && has_operation(second->next))
                return emit_operator(second->next, &source, &*second);
        }
        if (has_operation(next))
            return emit_operator(next, nullptr, &source);
        if (has_place(next)) {
            Instruction& instruction = emit(Operation::store, next);
            set_left(instruction, source);
            set_result(instruction, next);
            return next + 1;
        }
        if (continues_with(next, Opcode::param)) {
            set_left(emit(Operation::argument, next), source);
            return next + 1;
        }
        if (returns(next)) {
            set_left(emit(Operation::return_place, next), source);
            return next + 1;
        }
        set_left(emit(Operation::push_place, i), source);
        return next;
    }

    std::size_t emit_one(std::size_t i) {
        const DecodedCode::Item& d = decoded_[i];
        if (d.elided)
            return i + 1;
        if (const auto source = source_at(i))
            return emit_source(i, *source);
        // An operator need not continue anything to take both sides from the stack.
        if (d.valid && (is_arithmetic(d.opcode) || (is_comparison(d.opcode) && (continues_with(i + 1, Opcode::brif) ||
                                                                                continues_with(i + 1, Opcode::brifn)))))
            return emit_operator(i, nullptr, nullptr);
        emit_plain(i);
        return i + 1;
    }

    void emit_site(Operation operation, std::size_t i) { emit(operation, i).site = &result_.sites.emplace_back(); }

    void emit_jump(Operation operation, std::size_t i) {
        emit(operation, i);
        waiting_.push_back({result_.instructions.size() - 1, decoded_[i].operand});
    }

    void emit_plain(std::size_t i) {
        const DecodedCode::Item& d = decoded_[i];
        if (!d.valid) {
            emit(Operation::other, i);
            return;
        }
        switch (d.opcode) {
        case Opcode::return_:
            emit(Operation::return_top, i);
            break;
        case Opcode::push_string:
            emit_site(Operation::push_string, i);
            break;
        case Opcode::push_this:
            emit(Operation::push_this, i);
            break;
        case Opcode::pop:
        case Opcode::pop_again:
            emit(Operation::pop, i);
            break;
        case Opcode::deref:
            emit(Operation::deref, i);
            break;
        case Opcode::resize:
            emit(Operation::resize, i);
            break;
        case Opcode::param:
            emit(Operation::argument, i);
            break;
        case Opcode::assign:
            emit_assignment(i);
            break;
        case Opcode::bra:
            if (leads_to_return(d))
                emit(Operation::return_top, i);
            else if (decoded_code_.index_at(d.operand) != i + 1)
                emit_jump(Operation::jump, i);
            break;
        case Opcode::brif:
            emit_jump(Operation::jump_if, i);
            break;
        case Opcode::brifn:
            emit_jump(Operation::jump_unless, i);
            break;
        case Opcode::member:
            emit_site(d.partner == none ? Operation::member : Operation::method, i);
            break;
        case Opcode::call:
            emit_call(i);
            break;
        default: {
            // Indices of locals are verified against the frame; those of globals can be seen to here.
            Instruction& instruction = emit(Operation::other, i);
            instruction.left = static_cast<std::uint16_t>(d.operand);
            break;
        }
        }
    }

    void emit_assignment(std::size_t i) {
        if (decoded_[i].partner == none)
            emit(Operation::other, i);
        else
            set_result(emit(Operation::store, i), i);
    }

    void emit_call(std::size_t i) {
        const std::uint32_t partner = decoded_[i].partner;
        if (partner == none) {
            emit(Operation::call, i);
        } else if (decoded_[partner].opcode == Opcode::member) {
            emit(Operation::invoke, i).site = result_.instructions[emitted_[partner]].site;
        } else {
            emit(Operation::call_global, i).left = static_cast<std::uint16_t>(decoded_[partner].operand);
        }
    }

    void emit_all() {
        emitted_.resize(decoded_.size(), none);
        for (std::size_t i = 0; i < decoded_.size();) {
            emitted_[i] = static_cast<std::uint32_t>(result_.instructions.size());
            i = emit_one(i);
        }
        // Whoever runs off the end, which verified code does not.
        Instruction& end = result_.instructions.emplace_back();
        end.offset = static_cast<std::uint32_t>(code_.size());
        end.opcode = static_cast<Opcode>(opcode_count);
    }

    void resolve_targets() {
        const std::vector<Instruction>& all = result_.instructions;
        for (const Waiting& waiting : waiting_) {
            const std::uint32_t target = decoded_code_.index_at(waiting.offset);
            const std::uint32_t index = target == none ? none : emitted_[target];
            result_.instructions[waiting.instruction].target = index == none ? &all.back() : &all[index];
        }
        for (const std::uint32_t index : decoded_code_.starts)
            result_.starts.push_back({decoded_[index].offset, emitted_[index]});
        std::ranges::sort(result_.starts, {}, &InstructionCode::Start::offset);
    }

    struct Waiting {
        std::size_t instruction = 0;
        std::uint32_t offset = 0;
    };

    std::span<const std::uint8_t> code_;
    DecodedCode decoded_code_;
    const std::vector<DecodedCode::Item>& decoded_ = decoded_code_.items;
    std::map<std::pair<std::uint32_t, ScriptValue::Data>, std::uint16_t> constant_indices_;
    /// From decoded to translated.
    std::vector<std::uint32_t> emitted_;
    std::vector<Waiting> waiting_;
    InstructionCode result_;
};

} // namespace

const Instruction* InstructionCode::start_at(std::uint32_t offset) const {
    const auto found = std::ranges::lower_bound(starts, offset, {}, &Start::offset);
    return found != starts.end() && found->offset == offset ? &instructions[found->index] : nullptr;
}

InstructionCode translate_code(std::span<const std::uint8_t> code) {
    return Translator(code).translate();
}

} // namespace kst::script
