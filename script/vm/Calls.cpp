#include <cstring>

#include "script/value/NestingGuard.h"
#include "script/vm/Interpreter.h"
#include "script/vm/ObjectClasses.h"
#include "script/vm/ProgramRegistry.h"
#include "script/vm/ScriptedClass.h"

namespace kst::script {

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
        interpreter.enter(std::move(entry), nullptr, stacks.locals.end() - arguments.size(), stacks.call_count);
        interpreter.execute();
        stacks.values.resize(values + results);
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

void Interpreter::enter(Entry&& entry, const Instruction* return_to, ScriptValue* locals, std::uint32_t call_depth) {
    if (return_to == nullptr)
        instruction_ = entry.vm->code_.data() + entry.start->offset;
    Frame& frame = stacks_.push_frame();
    frame.vm = entry.vm;
    frame.return_to = return_to;
    frame.locals = locals;
    frame.values = values_.end();
    frame.call_depth = call_depth;
    frame.current_class = entry.current_class;
    frame.members = entry.current_class == nullptr ? nullptr : entry.current_class->members(entry.object).data();
    frame.object = entry.object;
    frame.self.swap(entry.self); // void in an unused frame
    if (return_to == nullptr) {
        first_frame_ = stacks_.frame_count - 1;
        destroyed_seen_ = stacks_.destroyed_programs;
    }
    load_frame();
    ip_ = entry.start;
}

void Interpreter::load_frame() {
    const Frame& frame = stacks_.current();
    vm_ = frame.vm;
    bases_ = {frame.locals, frame.members, vm_->globals_.data(), vm_->run_code_->constants.data()};
}

bool Interpreter::leave() {
    const Frame& frame = stacks_.current();
    const Instruction* const return_to = frame.return_to;
    if (return_to != nullptr)
        values_.resize(frame.values + 1);
    locals_.cut_to(frame.locals);
    stacks_.call_count = frame.call_depth;
    stacks_.pop_frame();
    if (return_to == nullptr)
        return true;
    check_programs(); // ahead of the look at the caller's
    load_frame();
    ip_ = return_to;
    return false;
}

void Interpreter::call_top() {
    call_value(values_.pop());
}

void Interpreter::call_value(ScriptValue callee) {
    const std::uint32_t argument_count = ip_->count;
    spend_budget();
    const std::uint32_t call_depth = stacks_.call_count;
    stacks_.push_call(instruction_);
    ScriptValue* const locals = locals_.end() - argument_count;
    if (callee.kind() == ClassKind::function) {
        const ProgramRegistry::Entry& function = ProgramRegistry::instance()[callee.data()];
        if (function.vm == nullptr)
            fail("Program containing function has been destroyed");
        enter({function.vm, function.start}, ip_ + 1, locals, call_depth);
    } else if (callee.kind() == ClassKind::method) {
        auto& methods = ScriptVM::ClassMethod::instance();
        auto& scripted_class = methods.class_of(callee.data());
        const auto method = methods.record(callee.data());
        enter({&scripted_class.vm(), method.start, &scripted_class, method.object,
               scripted_class.instance_of(method.object)},
              ip_ + 1, locals, call_depth);
    } else {
        call_native(callee, argument_count, call_depth);
        ++ip_;
    }
}

// The arguments stay where they are, below whatever the callee runs, and go after it.
void Interpreter::call_native(const ScriptValue& callee, std::uint32_t argument_count, std::uint32_t call_depth) {
    const std::uint32_t local_count = locals_.count() - argument_count;
    ScriptValue result = callee.call(locals_.last(argument_count));
    locals_.cut_to(local_count);
    stacks_.call_count = call_depth;
    values_.push(std::move(result));
}

// The arguments may have run this very instruction for an object of another class, or ended the object's program.
void Interpreter::call_prepared() {
    if (&values_.top().value_class() != &ScriptVM::ClassCalledInstance::instance())
        return call_top();
    ScriptValue& object = values_.top();
    object.overwrite(ScriptVM::ClassInstance::instance(), object.data());
    if (!find_own_member(object))
        fail("Program containing method has been destroyed");
    ScriptValue self = values_.pop();
    auto& instances = ScriptVM::ClassInstance::instance();
    auto& scripted_class = *instances.class_of(self.data());
    const std::uint32_t number = instances.object_of(self.data());
    spend_budget();
    const std::uint32_t call_depth = stacks_.call_count;
    stacks_.push_call(instruction_);
    enter({&scripted_class.vm(), ip_->site->start, &scripted_class, number, std::move(self)}, ip_ + 1,
          locals_.end() - ip_->count, call_depth);
}

void Interpreter::look_for_programs() {
    for (std::uint32_t i = first_frame_; i < stacks_.frame_count; ++i)
        if (!ScriptVM::is_live(stacks_.frames[i].vm))
            fail("Program containing function has been destroyed");
    destroyed_seen_ = stacks_.destroyed_programs;
}

} // namespace kst::script
