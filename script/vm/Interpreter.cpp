#include "script/vm/Interpreter.h"

#include <cmath>
#include <cstring>

#include "script/value/BasicClasses.h"
#include "script/value/ClassString.h"
#include "script/value/NestingGuard.h"
#include "script/value/names.h"
#include "script/vm/ObjectClasses.h"
#include "script/vm/ProgramRegistry.h"
#include "script/vm/ReferenceClasses.h"
#include "script/vm/ScriptedClass.h"

namespace kst::script {

namespace {

/// Identifiers above this do not fit a resolved operand, which then stays text.
constexpr idstring longest_resolved = 0xffffff;

std::uint32_t read_16(const std::uint8_t* p) {
    return p[0] | static_cast<std::uint32_t>(p[1]) << 8;
}

std::uint32_t read_24(const std::uint8_t* p) {
    return read_16(p) | static_cast<std::uint32_t>(p[2]) << 16;
}

std::uint32_t read_32(const std::uint8_t* p) {
    return read_24(p) | static_cast<std::uint32_t>(p[3]) << 24;
}

bool is_number(const ScriptValue& value) {
    return &value.value_class() == &number_class;
}

float float_of(const ScriptValue& value) {
    return std::bit_cast<float>(value.data());
}

std::size_t operand_size(std::size_t text_size) {
    return std::max(text_size + 1, least_name_operand);
}

/// Puts the identifier in the place of the text, if both it and the operand's length fit.
void resolve_operand(std::uint8_t* operand, std::size_t text_size, idstring id) {
    if (text_size > longest_name || id > longest_resolved)
        return;
    const auto number = static_cast<std::uint32_t>(id);
    operand[0] = 0;
    operand[1] = static_cast<std::uint8_t>(number);
    operand[2] = static_cast<std::uint8_t>(number >> 8);
    operand[3] = static_cast<std::uint8_t>(number >> 16);
    operand[4] = static_cast<std::uint8_t>(operand_size(text_size));
}

bool less(const ScriptValue& a, const ScriptValue& b) {
    return is_number(a) && is_number(b) ? float_of(a) < float_of(b) : a.less(b);
}

bool equal(const ScriptValue& a, const ScriptValue& b) {
    if (a.kind() == ClassKind::string && b.kind() == ClassKind::string)
        return a.identical(b) || ClassString::instance().same_text(a.data(), b.data());
    return a.equals(b);
}

bool is_arithmetic(Opcode opcode) {
    return opcode >= Opcode::add && opcode <= Opcode::div;
}
bool is_comparison(Opcode opcode) {
    return opcode >= Opcode::lt && opcode <= Opcode::ne;
}
bool is_operator(Opcode opcode) {
    return is_arithmetic(opcode) || is_comparison(opcode);
}

float calculate(Opcode opcode, float left, float right) {
    switch (opcode) {
    case Opcode::add:
        return left + right;
    case Opcode::sub:
        return left - right;
    case Opcode::mul:
        return left * right;
    default:
        return left / right;
    }
}

/// By `less` alone, as for all values: a NaN is neither less nor greater than anything, and so equal to it.
bool compare_numbers(Opcode opcode, float left, float right) {
    switch (opcode) {
    case Opcode::lt:
        return left < right;
    case Opcode::le:
        return !(right < left);
    case Opcode::gt:
        return right < left;
    case Opcode::ge:
        return !(left < right);
    case Opcode::eq:
        return !(left < right) && !(right < left);
    default:
        return left < right || right < left;
    }
}

} // namespace

void Interpreter::run(Entry entry, Arguments arguments, std::uint32_t results) {
    const NestingGuard guard;
    ScriptStacks& stacks = ScriptStacks::instance();
    if (stacks.frame_count == 0)
        stacks.call_count = 0;
    const std::uint32_t frames = stacks.frame_count;
    const std::uint32_t values = stacks.values.count();
    const std::uint32_t locals = stacks.locals.count();
    const auto unwind = [&] {
        stacks.cut_frames_to(frames);
        stacks.values.cut_to(values);
        stacks.locals.cut_to(locals);
    };
    Interpreter interpreter(stacks);
    try {
        for (const ScriptValue& argument : arguments)
            stacks.locals.push(ScriptValue(argument));
        interpreter.enter(std::move(entry), nullptr, locals, results, stacks.call_count);
        interpreter.execute();
    } catch (const DSError& error) {
        unwind();
        throw VMError(error.what(), interpreter.instruction_);
    } catch (...) {
        unwind();
        throw;
    }
}

ScriptValue Interpreter::call(Entry entry, Arguments arguments) {
    run(std::move(entry), arguments, 1);
    return ScriptVM::take_result();
}

void Interpreter::enter(Entry&& entry, std::uint8_t* return_address, std::uint32_t local_base, std::uint32_t results,
                        std::uint32_t call_depth) {
    if (entry.offset >= entry.vm->code_.size())
        fail("Internal error: Offset outside of the code");
    Frame& frame = stacks_.push_frame();
    frame.vm = entry.vm;
    frame.return_address = return_address;
    frame.local_base = local_base;
    frame.value_base = values_.count();
    frame.results = results;
    frame.call_depth = call_depth;
    frame.current_class = entry.current_class;
    frame.object = entry.object;
    frame.callee.swap(entry.callee); // both are void in an unused frame
    frame.self.swap(entry.self);
    if (return_address == nullptr) {
        first_frame_ = stacks_.frame_count - 1;
        destroyed_seen_ = stacks_.destroyed_programs;
    }
    load_frame();
    ip_ = code_ + entry.offset;
    instruction_ = ip_;
}

void Interpreter::load_frame() {
    const Frame& frame = stacks_.current();
    vm_ = frame.vm;
    code_ = vm_->code_start();
    local_base_ = frame.local_base;
    value_base_ = frame.value_base;
}

bool Interpreter::leave() {
    const Frame& frame = stacks_.current();
    std::uint8_t* const return_address = frame.return_address;
    values_.resize(frame.value_base + frame.results);
    locals_.cut_to(frame.local_base);
    stacks_.call_count = frame.call_depth;
    stacks_.pop_frame();
    if (return_address == nullptr)
        return true;
    load_frame();
    ip_ = return_address;
    return false;
}

void Interpreter::spend_budget() {
    if (stacks_.jump_budget == 0)
        fail("Script error: instruction budget used up");
    --stacks_.jump_budget;
}

void Interpreter::call_top(std::uint32_t argument_count) {
    need(1);
    if (locals_.count() - local_base_ < argument_count)
        fail("Internal error: Too few arguments on the local stack");
    spend_budget();
    const std::uint32_t call_depth = stacks_.call_count;
    stacks_.push_call(instruction_);
    ScriptValue callee = values_.pop();
    const std::uint32_t local_base = locals_.count() - argument_count;
    if (callee.kind() == ClassKind::function) {
        const ProgramRegistry::Entry& function = ProgramRegistry::instance()[callee.data()];
        if (function.vm == nullptr)
            fail("Program containing function has been destroyed");
        enter({function.vm, function.offset, std::move(callee)}, ip_, local_base, 1, call_depth);
    } else if (callee.kind() == ClassKind::method) {
        auto& methods = ScriptVM::ClassMethod::instance();
        auto& scripted_class = methods.class_of(callee.data());
        const auto method = methods.record(callee.data());
        enter({&scripted_class.vm(), method.offset, std::move(callee), &scripted_class, method.object,
               scripted_class.instance_of(method.object)},
              ip_, local_base, 1, call_depth);
    } else {
        call_native(callee, argument_count, call_depth);
    }
}

// The arguments stay where they are, below whatever the callee runs, and go after it.
void Interpreter::call_native(const ScriptValue& callee, std::uint32_t argument_count, std::uint32_t call_depth) {
    const std::uint32_t local_base = locals_.count() - argument_count;
    ScriptValue result = callee.call(locals_.last(argument_count));
    check_programs();
    locals_.cut_to(local_base);
    stacks_.call_count = call_depth;
    values_.push(std::move(result));
}

// A native callee may have destroyed the very programs that wait for it.
void Interpreter::check_programs() {
    if (destroyed_seen_ == stacks_.destroyed_programs)
        return;
    for (std::uint32_t i = first_frame_; i < stacks_.frame_count; ++i)
        if (!ScriptVM::is_live(stacks_.frames[i].vm))
            fail("Program containing function has been destroyed");
    destroyed_seen_ = stacks_.destroyed_programs;
}

idstring Interpreter::read_name() {
    if (*ip_ == 0) {
        const auto id = static_cast<idstring>(read_24(ip_ + 1));
        ip_ += ip_[4];
        return id;
    }
    const std::string_view text(reinterpret_cast<const char*>(ip_));
    const idstring id = intern(text);
    const std::size_t text_size = text.size();
    resolve_operand(ip_, text_size, id);
    ip_ += operand_size(text_size);
    return id;
}

// As a name, but it may be empty (five zeros: a resolved operand is never of length 0) and of any length.
void Interpreter::push_string_literal() {
    if (*ip_ == 0 && ip_[4] == 0) {
        ip_ += least_name_operand;
        values_.push(string_value({}));
        return;
    }
    const std::string_view text(reinterpret_cast<const char*>(ip_));
    if (text.size() > longest_name) {
        ip_ += operand_size(text.size());
        values_.push(string_value(std::string(text)));
        return;
    }
    values_.push(id_value(read_name()));
}

void Interpreter::need(std::uint32_t count) const {
    if (values_.count() - value_base_ < count)
        fail("Internal error: Value stack is empty");
}

ScriptValue& Interpreter::local(std::uint32_t index) {
    if (locals_.count() - local_base_ <= index)
        fail("Internal error: No such local");
    return locals_[local_base_ + index];
}

ScriptValue& Interpreter::global(std::uint32_t index) {
    if (index >= vm_->globals_.size())
        fail("Internal error: No such global");
    return vm_->globals_[index];
}

ScriptValue& Interpreter::member_of_current(std::uint32_t index) {
    const Frame& frame = stacks_.current();
    if (frame.current_class == nullptr)
        fail("Internal error: No current object");
    std::vector<ScriptValue>& members = frame.current_class->members(frame.object);
    if (index >= members.size())
        fail("Internal error: No such member");
    return members[index];
}

void Interpreter::arithmetic(Opcode opcode) {
    const ScriptValue right = values_.pop();
    const ScriptValue left = values_.pop();
    switch (opcode) {
    case Opcode::add:
        return values_.push(left.add(right));
    case Opcode::sub:
        return values_.push(left.subtract(right));
    case Opcode::mul:
        // A number may multiply whatever knows how to be multiplied by one.
        return values_.push(is_number(left) ? right.multiply(left) : left.multiply(right));
    default:
        return values_.push(left.divide(right));
    }
}

void Interpreter::number_arithmetic(Opcode opcode) {
    const float right = values_.pop().to_number();
    const float left = values_.pop().to_number();
    switch (opcode) {
    case Opcode::add_numbers:
        return values_.push(number_value(left + right));
    case Opcode::sub_numbers:
        return values_.push(number_value(left - right));
    case Opcode::mul_numbers:
        return values_.push(number_value(left * right));
    case Opcode::div_numbers:
        return values_.push(number_value(left / right));
    default:
        return values_.push(number_value(std::fmod(left, right)));
    }
}

bool Interpreter::compare(Opcode opcode, const ScriptValue& left, const ScriptValue& right) {
    switch (opcode) {
    case Opcode::lt:
        return less(left, right);
    case Opcode::le:
        return !less(right, left);
    case Opcode::gt:
        return less(right, left);
    case Opcode::ge:
        return !less(left, right);
    case Opcode::eq:
        return equal(left, right);
    default:
        return !equal(left, right);
    }
}

void Interpreter::convert(Opcode opcode) {
    const ScriptValue value = values_.pop();
    if (opcode == Opcode::cnv_number)
        values_.push(number_value(value.to_number()));
    else if (opcode == Opcode::cnv_boolean)
        values_.push(boolean_value(value.to_boolean()));
    else
        values_.push(value.kind() == ClassKind::string ? ScriptValue(value) : string_value(value.to_string()));
}

void Interpreter::read_member(idstring id) {
    const ScriptValue object = values_.pop();
    if (object.kind() == ClassKind::instance && id != names().extension && id != names().member)
        if (const ScriptValue* const own = ScriptVM::ClassInstance::instance().own_member(object.data(), id))
            return values_.push(ScriptValue(*own));
    values_.push(object.member(id, /*must_exist=*/true));
    check_programs(); // `super` may have called anything
}

void Interpreter::assign() {
    ScriptValue value = values_.pop();
    const ScriptValue place = values_.pop();
    if (place.kind() == ClassKind::local_ref && place.data() < locals_.count())
        locals_[place.data()] = std::move(value);
    else if (&place.value_class() == vm_->global_ref_class_ && place.data() < vm_->globals_.size())
        vm_->globals_[place.data()] = std::move(value);
    else if (place.kind() == ClassKind::member_ref)
        member_of_current(place.data()) = std::move(value);
    else
        place.set(value);
    check_programs();
}

void Interpreter::dereference() {
    const ClassKind kind = values_.top().kind();
    if (kind < ClassKind::local_ref)
        return; // stands for itself
    const ScriptValue value = values_.pop();
    values_.push(value.clone());
}

bool Interpreter::pop_boolean() {
    ScriptValue& top = values_.top();
    const ClassKind kind = top.kind();
    if (kind > ClassKind::number)
        return values_.pop().to_boolean();
    const bool result = kind == ClassKind::number ? number_truth(float_of(top)) : top.data() != 0;
    values_.forget_top();
    return result;
}

// The commonest instructions on the commonest values stand here; all else is in the functions above. The position is a
// local variable, which lives in a register, and is handed over where a function reads or changes it.
//
// Numbers take short cuts over several instructions: an operand that the next instruction would take off the stack
// again is not put there, nor is a result that is tested, stored or passed on at once:
//
//   push a, push b, lt, brifn      one step, nothing on the stack
//   push a, push 1, sub, param     one step, straight to the local stack
//
// Each instruction still stands on its own, for whoever jumps into the middle, and whenever a short cut does not apply.
void Interpreter::execute() {
    std::uint8_t* ip = ip_;
    const auto next_opcode = [&](std::size_t ahead) { return static_cast<Opcode>(ip[ahead]); };
    const auto top_is_number = [&] { return values_.count() > value_base_ && is_number(values_.top()); };
    const auto jump_to_operand = [&] {
        const std::uint32_t target = read_32(ip);
        if (target >= vm_->code_.size())
            fail("Internal error: Branch outside of the code");
        if (code_ + target <= ip)
            spend_budget();
        ip = code_ + target;
    };
    // To where the next instruction wants the number.
    const auto deliver_number = [&](float result) {
        if (next_opcode(0) == Opcode::assign && values_.count() > value_base_ &&
            values_.top().kind() == ClassKind::local_ref && values_.top().data() < locals_.count()) {
            ScriptValue& place = locals_[values_.top().data()];
            if (!place.value_class().counted()) {
                place.overwrite(number_class, number_bits(result));
                values_.forget_top();
                ++ip;
                return;
            }
        }
        if (next_opcode(0) == Opcode::param) {
            locals_.push(number_value(result));
            ++ip;
            return;
        }
        values_.push(number_value(result));
    };
    const auto deliver_boolean = [&](bool result) {
        const Opcode next = next_opcode(0);
        if (next != Opcode::brif && next != Opcode::brifn)
            return values_.push(boolean_value(result));
        ++ip;
        if (result == (next == Opcode::brif))
            jump_to_operand();
        else
            ip += 4;
    };
    // `ip` stands behind the operator.
    const auto operate = [&](Opcode opcode, float left, float right) {
        if (is_arithmetic(opcode))
            deliver_number(calculate(opcode, left, right));
        else
            deliver_boolean(compare_numbers(opcode, left, right));
    };
    // The next instruction may be the operator, with its left side on the stack ...
    const auto try_as_right_side = [&](float right) {
        const Opcode opcode = next_opcode(0);
        if (!is_operator(opcode) || !top_is_number())
            return false;
        const float left = float_of(values_.top());
        values_.forget_top();
        ++ip;
        operate(opcode, left, right);
        return true;
    };
    // ... or the right side, with the operator behind it.
    const auto try_as_left_side = [&](float left) {
        float right = 0;
        std::size_t size = 0;
        if (next_opcode(0) == Opcode::push_number) {
            right = std::bit_cast<float>(read_32(ip + 1));
            size = 5;
        } else if (next_opcode(0) == Opcode::push_local && ip[1] < locals_.count() - local_base_ &&
                   is_number(locals_[local_base_ + ip[1]])) {
            right = float_of(locals_[local_base_ + ip[1]]);
            size = 2;
        } else {
            return false;
        }
        const Opcode opcode = next_opcode(size);
        if (!is_operator(opcode))
            return false;
        ip += size + 1;
        operate(opcode, left, right);
        return true;
    };
    for (;;) {
        instruction_ = ip;
        const auto opcode = static_cast<Opcode>(*ip++);
        switch (opcode) {
        case Opcode::return_:
            if (leave())
                return;
            ip = ip_;
            break;
        case Opcode::import_:
            ip_ = ip;
            vm_->declare_import(read_name());
            ip = ip_;
            check_programs();
            break;
        case Opcode::declare_object:
            ip_ = ip;
            vm_->declare_object(read_name());
            ip = ip_;
            break;
        case Opcode::declare_function:
            ip_ = ip + 4;
            vm_->declare_function(read_name(), read_32(ip));
            ip = ip_;
            break;
        case Opcode::begin_class:
            ip_ = ip;
            vm_->begin_class(read_name());
            ip = ip_;
            break;
        case Opcode::end_class:
            vm_->end_class();
            break;
        case Opcode::push_number:
            ip += 4;
            if (!try_as_right_side(std::bit_cast<float>(read_32(ip - 4))))
                values_.push(ScriptValue::adopt(number_class, read_32(ip - 4)));
            break;
        case Opcode::push_string:
            ip_ = ip;
            push_string_literal();
            ip = ip_;
            break;
        case Opcode::push_true:
        case Opcode::push_false:
            values_.push(boolean_value(opcode == Opcode::push_true));
            break;
        case Opcode::push_void:
            values_.push({});
            break;
        case Opcode::push_this:
            values_.push(ScriptValue(stacks_.current().self));
            break;
        case Opcode::push_global:
            values_.push(ScriptValue(global(read_16(ip))));
            ip += 2;
            break;
        case Opcode::push_global_ref:
            values_.push({*vm_->global_ref_class_, read_16(ip)});
            ip += 2;
            break;
        case Opcode::push_member:
            values_.push(ScriptValue(member_of_current(*ip++)));
            break;
        case Opcode::push_member_ref:
            values_.push(ScriptValue::adopt(ScriptVM::ClassCurrentClassMemberRef::instance(), *ip++));
            break;
        case Opcode::push_local: {
            const ScriptValue& value = local(*ip++);
            if (!is_number(value))
                values_.push(ScriptValue(value));
            else if (const float number = float_of(value); !try_as_right_side(number) && !try_as_left_side(number))
                deliver_number(number);
            break;
        }
        case Opcode::push_local_ref:
            values_.push(ScriptValue::adopt(ScriptVM::ClassLocalRef::instance(), local_base_ + *ip++));
            break;
        case Opcode::cnv_number:
        case Opcode::cnv_string:
        case Opcode::cnv_boolean:
            need(1);
            convert(opcode);
            break;
        case Opcode::pop:
        case Opcode::pop_again:
            need(1);
            values_.pop();
            break;
        case Opcode::add:
        case Opcode::sub:
        case Opcode::mul:
        case Opcode::div:
        case Opcode::lt:
        case Opcode::le:
        case Opcode::eq:
        case Opcode::ge:
        case Opcode::gt:
        case Opcode::ne:
            need(2);
            if (is_number(values_.second()) && is_number(values_.top())) {
                const float right = float_of(values_.top());
                const float left = float_of(values_.second());
                values_.forget_top();
                values_.forget_top();
                operate(opcode, left, right);
            } else if (is_arithmetic(opcode)) {
                arithmetic(opcode);
            } else {
                const ScriptValue right = values_.pop();
                const ScriptValue left = values_.pop();
                deliver_boolean(compare(opcode, left, right));
            }
            break;
        case Opcode::mod:
        case Opcode::add_numbers:
        case Opcode::sub_numbers:
        case Opcode::mul_numbers:
        case Opcode::div_numbers:
            need(2);
            number_arithmetic(opcode);
            break;
        case Opcode::negate:
            need(1);
            values_.push(number_value(-values_.pop().to_number()));
            break;
        case Opcode::resize:
            if (locals_.count() != local_base_ + *ip)
                locals_.resize(local_base_ + *ip);
            ++ip;
            break;
        case Opcode::assign:
            need(2);
            assign();
            break;
        case Opcode::bra:
            jump_to_operand();
            break;
        case Opcode::brif:
        case Opcode::brifn:
            need(1);
            if (pop_boolean() == (opcode == Opcode::brif))
                jump_to_operand();
            else
                ip += 4;
            break;
        case Opcode::member: {
            need(1);
            ip_ = ip;
            const idstring id = read_name();
            ip = ip_;
            read_member(id);
            break;
        }
        case Opcode::call: {
            ip_ = ip + 1;
            call_top(*ip);
            ip = ip_;
            break;
        }
        case Opcode::param:
            need(1);
            locals_.push(values_.pop());
            break;
        case Opcode::deref:
            need(1);
            dereference();
            break;
        default:
            fail("Internal error: Invalid opcode");
        }
    }
}

} // namespace kst::script
