#pragma once

#include <cstdint>

#include "script/language/Opcodes.h"
#include "script/vm/ScriptStacks.h"

namespace kst::script {

/// Runs byte code. A call from script to script is a new frame of the same run; only native code that calls back begins
/// a run within a run.
class Interpreter {
public:
    /// What to run. A method brings its class and object, and all calls bring the value that was called; a null class
    /// means that there is no current object.
    struct Entry {
        ScriptVM* vm = nullptr;
        std::uint32_t offset = 0;
        ScriptValue callee = {};
        ScriptVM::ScriptedClassBase* current_class = nullptr;
        std::uint32_t object = 0;
        ScriptValue self = {};
    };

    /// Leaves `results` values on the value stack. Throws VMError, with the stacks as they were.
    static void run(Entry entry, Arguments arguments, std::uint32_t results);
    /// A run with one result, which is taken off the stack.
    static ScriptValue call(Entry entry, Arguments arguments);

private:
    explicit Interpreter(ScriptStacks& stacks) : stacks_(stacks), values_(stacks.values), locals_(stacks.locals) {}

    void execute();
    void enter(Entry&& entry, std::uint8_t* return_address, std::uint32_t local_base, std::uint32_t results,
               std::uint32_t call_depth);
    /// True when this was the frame that the run began with.
    bool leave();
    void load_frame();
    void call_top(std::uint32_t argument_count);
    void call_native(const ScriptValue& callee, std::uint32_t argument_count, std::uint32_t call_depth);
    void check_programs();
    void spend_budget();

    /// Reads the name operand at ip_ and steps over it.
    idstring read_name();
    void push_string_literal();

    void need(std::uint32_t count) const;
    ScriptValue& local(std::uint32_t index);
    ScriptValue& global(std::uint32_t index);
    ScriptValue& member_of_current(std::uint32_t index);

    void arithmetic(Opcode opcode);
    void number_arithmetic(Opcode opcode);
    bool compare(Opcode opcode, const ScriptValue& left, const ScriptValue& right);
    void convert(Opcode opcode);
    void read_member(idstring id);
    void assign();
    void dereference();
    bool pop_boolean();

    ScriptStacks& stacks_;
    ValueStack& values_;
    ValueStack& locals_;
    // The current frame, and where it is.
    ScriptVM* vm_ = nullptr;
    std::uint8_t* code_ = nullptr;
    std::uint8_t* ip_ = nullptr;
    const std::uint8_t* instruction_ = nullptr;
    std::uint32_t local_base_ = 0;
    std::uint32_t value_base_ = 0;
    std::uint32_t first_frame_ = 0;
    std::uint32_t destroyed_seen_ = 0;
};

} // namespace kst::script
