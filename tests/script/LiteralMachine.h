#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "script/language/Opcodes.h"
#include "script/value/BasicClasses.h"
#include "script/value/DSError.h"

namespace test_support {

/// The instructions of verified code, one at a time and as they stand, for programs of globals and functions: what the
/// machine has to agree with, whatever it puts together. A run that takes too long is an error.
class LiteralMachine {
public:
    explicit LiteralMachine(std::span<const std::uint8_t> code) : code_(code) {
        std::size_t at = 0;
        while (opcode_at(at) != Opcode::return_) {
            const bool is_function = opcode_at(at) == Opcode::declare_function;
            const std::size_t name = at + (is_function ? 5 : 1);
            if (is_function)
                functions_[text_at(name)] = globals_.size();
            globals_.push_back(is_function ? function_value(read(at + 1, 4)) : Value{});
            at = name + std::max(text_at(name).size() + 1, kst::script::least_name_operand);
        }
    }

    kst::script::ScriptValue call(const std::string& name, std::vector<kst::script::ScriptValue> arguments) {
        steps_ = 0;
        std::vector<Value> locals;
        for (const auto& argument : arguments)
            locals.push_back({.value = argument});
        return run(globals_[functions_.at(name)].number, std::move(locals), 0).value;
    }

private:
    using Opcode = kst::script::Opcode;
    enum class Kind { plain, function, local_ref, global_ref };
    /// `number` is an offset in the code or an index.
    struct Value {
        Kind kind = Kind::plain;
        std::size_t number = 0;
        kst::script::ScriptValue value = {};
    };

    static Value function_value(std::size_t offset) { return {.kind = Kind::function, .number = offset}; }
    Opcode opcode_at(std::size_t at) const { return static_cast<Opcode>(code_[at]); }
    std::string text_at(std::size_t at) const { return reinterpret_cast<const char*>(&code_[at]); }
    std::uint32_t read(std::size_t at, std::size_t bytes) const {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < bytes; ++i)
            value |= static_cast<std::uint32_t>(code_[at + i]) << (8 * i);
        return value;
    }

    static kst::script::ScriptValue binary(Opcode opcode, const kst::script::ScriptValue& a,
                                           const kst::script::ScriptValue& b) {
        using kst::script::boolean_value;
        const bool left_is_number = a.kind() == kst::script::ClassKind::number;
        switch (opcode) {
        case Opcode::add:
            return a.add(b);
        case Opcode::sub:
            return a.subtract(b);
        case Opcode::mul:
            return left_is_number ? b.multiply(a) : a.multiply(b);
        case Opcode::div:
            return a.divide(b);
        case Opcode::mod:
            return kst::script::number_value(std::fmod(a.to_number(), b.to_number()));
        case Opcode::lt:
            return boolean_value(a.less(b));
        case Opcode::le:
            return boolean_value(!b.less(a));
        case Opcode::gt:
            return boolean_value(b.less(a));
        case Opcode::ge:
            return boolean_value(!a.less(b));
        case Opcode::eq:
            return boolean_value(a.equals(b));
        default:
            return boolean_value(!a.equals(b));
        }
    }

    Value run(std::size_t at, std::vector<Value> locals, int depth) {
        std::vector<Value> stack;
        std::size_t frame = locals.size();
        const auto pop = [&] {
            Value value = stack.back();
            stack.pop_back();
            return value;
        };
        for (;;) {
            if (++steps_ > 20000 || depth > 100)
                throw kst::script::DSError("too long");
            const Opcode opcode = opcode_at(at++);
            const std::size_t operand = at;
            switch (kst::script::info_of(opcode).operand) {
            case kst::script::Operand::none:
                break;
            case kst::script::Operand::index_8:
                at += 1;
                break;
            case kst::script::Operand::index_16:
                at += 2;
                break;
            case kst::script::Operand::string:
                at += std::max(text_at(at).size() + 1, kst::script::least_name_operand);
                break;
            default:
                at += 4;
            }
            switch (opcode) {
            case Opcode::return_:
                return stack.empty() ? Value{} : stack.front();
            case Opcode::push_number: {
                float number = 0;
                std::memcpy(&number, &code_[operand], 4);
                stack.push_back({.value = kst::script::number_value(number)});
                break;
            }
            case Opcode::push_string:
                stack.push_back({.value = kst::script::string_value(text_at(operand))});
                break;
            case Opcode::push_true:
            case Opcode::push_false:
                stack.push_back({.value = kst::script::boolean_value(opcode == Opcode::push_true)});
                break;
            case Opcode::push_void:
                stack.emplace_back();
                break;
            case Opcode::push_global:
                stack.push_back(globals_[read(operand, 2)]);
                break;
            case Opcode::push_global_ref:
                stack.push_back({.kind = Kind::global_ref, .number = read(operand, 2)});
                break;
            case Opcode::push_local:
                stack.push_back(locals[code_[operand]]);
                break;
            case Opcode::push_local_ref:
                stack.push_back({.kind = Kind::local_ref, .number = code_[operand]});
                break;
            case Opcode::pop:
                pop();
                break;
            case Opcode::negate:
                stack.push_back({.value = kst::script::number_value(-pop().value.to_number())});
                break;
            case Opcode::resize:
                frame = code_[operand];
                locals.resize(frame);
                break;
            case Opcode::assign: {
                const Value value = pop();
                const Value place = pop();
                (place.kind == Kind::local_ref ? locals : globals_)[place.number] = value;
                break;
            }
            case Opcode::bra:
                at = read(operand, 4);
                break;
            case Opcode::brif:
            case Opcode::brifn:
                if (pop().value.to_boolean() == (opcode == Opcode::brif))
                    at = read(operand, 4);
                break;
            case Opcode::param:
                locals.push_back(pop());
                break;
            case Opcode::call: {
                const Value callee = pop();
                const auto first = locals.end() - code_[operand];
                std::vector<Value> arguments(first, locals.end());
                locals.erase(first, locals.end());
                if (callee.kind != Kind::function)
                    throw kst::script::DSError("no function");
                stack.push_back(run(callee.number, std::move(arguments), depth + 1));
                break;
            }
            case Opcode::deref:
                break;
            default: {
                const Value right = pop();
                const Value left = pop();
                stack.push_back({.value = binary(opcode, left.value, right.value)});
            }
            }
        }
    }

    std::span<const std::uint8_t> code_;
    std::vector<Value> globals_;
    std::map<std::string, std::size_t> functions_;
    int steps_ = 0;
};

} // namespace test_support
