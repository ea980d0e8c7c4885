#pragma once

#include <array>
#include <cstdint>

#include "script/vm/Instruction.h"
#include "script/vm/ScriptStacks.h"

namespace kst::script {

/// Runs programs, in the form of Instruction.h. A call from script to script is a new frame of the same run; only native
/// code that calls back begins a run within a run.
///
/// `execute` does what is common, with positions and stack ends in its own variables. All else is a step: the variables
/// are handed over, the step works on the stacks, and the variables are taken back. So nothing that may fail, or run
/// anything, ever sees stacks that are not in order.
class Interpreter {
public:
    /// What to run. A method brings its class and object, which its frame then holds; a null class means that there is
    /// no current object.
    struct Entry {
        ScriptVM* vm = nullptr;
        const Instruction* start = nullptr;
        ScriptVM::ScriptedClassBase* current_class = nullptr;
        std::uint32_t object = 0;
    };

    /// Leaves `results` values on the value stack. Throws VMError, with the stacks as they were.
    static void run(const Entry& entry, Arguments arguments, std::uint32_t results);
    /// A run with one result, which is taken off the stack.
    static ScriptValue call(const Entry& entry, Arguments arguments);

private:
    class Loop;

    explicit Interpreter(ScriptStacks& stacks) : stacks_(stacks), values_(stacks.values), locals_(stacks.locals) {}

    void execute();

    // Calls.cpp
    void begin(const Entry& entry, ScriptValue* locals);
    /// A frame without an object, which is the caller's matter.
    Frame& enter(const Entry& entry, const Instruction* return_to, ScriptValue* locals, std::uint32_t call_depth);
    void load_frame();
    /// True when this was the frame that the run began with.
    bool leave();
    void call_top();
    void call_global();
    void call_native();
    void call_prepared();
    /// A native callee, or the end of a native object, may have destroyed the very programs that wait here.
    void check_programs() {
        if (destroyed_seen_ != stacks_.destroyed_programs)
            look_for_programs();
    }
    void look_for_programs();
    void spend_budget() {
        if (stacks_.jump_budget == 0)
            fail("Script error: instruction budget used up");
        --stacks_.jump_budget;
    }
    /// Gives the depth of the call stack to return to.
    std::uint32_t begin_call() {
        spend_budget();
        stacks_.push_call(instruction_);
        return stacks_.call_count - 1;
    }

    // Steps.cpp: what single instructions do in all cases.
    void other();
    void declare();
    void push_string();
    void binary();
    bool append_text(const ScriptValue& right);
    bool compare_operands();
    void convert();
    void read_member();
    void prepare_method();
    void store();
    void assign();
    bool pop_boolean();
    void dereference();
    void resize_frame();
    void release(ScriptClass& value_class, ScriptClass::Data data);

    /// The identifier of the name that the instruction has in the code at `operand`, which is resolved there.
    static idstring resolve_name(std::uint8_t* operand);
    idstring site_id();
    std::uint8_t* operand() const;
    ScriptValue take_left();
    ScriptValue take_right();
    void deliver(ScriptValue&& value);
    /// True when the object's own class has the member that the instruction names; its site then knows where.
    bool find_own_member(const ScriptValue& object);
    ScriptValue& at(ValuePlace place, std::uint32_t index) { return bases_[static_cast<std::size_t>(place)][index]; }

    ScriptStacks& stacks_;
    ValueStack& values_;
    ValueStack& locals_;
    // The current frame, and where it is.
    ScriptVM* vm_ = nullptr;
    const Instruction* ip_ = nullptr;
    std::array<ScriptValue*, indexed_places> bases_{};
    /// In the code: for the error.
    const std::uint8_t* instruction_ = nullptr;
    std::uint32_t first_frame_ = 0;
    std::uint32_t destroyed_seen_ = 0;
};

} // namespace kst::script
