#include <cstring>

#include "script/value/NestingGuard.h"
#include "script/vm/Interpreter.h"
#include "script/vm/ObjectClasses.h"
#include "script/vm/ProgramRegistry.h"
#include "script/vm/ScriptedClass.h"

namespace kst::script {

inline void Interpreter::load_frame() {
    const Frame& frame = stacks_.current();
    vm_ = frame.vm;
    bases_ = {frame.locals, frame.members, vm_->globals_.data(), vm_->run_code_->constants.data()};
}

inline Frame& Interpreter::enter(const Entry& entry, const Instruction* return_to, ScriptValue* locals,
                                 std::uint32_t call_depth) {
    Frame& frame = stacks_.push_frame();
    frame.vm = entry.vm;
    frame.return_to = return_to;
    frame.locals = locals;
    frame.values = values_.end();
    frame.call_depth = call_depth;
    frame.current_class = entry.current_class;
    frame.members = entry.current_class == nullptr ? nullptr : entry.current_class->members(entry.object).data();
    frame.object = entry.object;
    load_frame();
    // A function begins with its frame's size, which often is what it was given.
    const bool sized = entry.start->operation == Operation::resize && locals + entry.start->count == locals_.end();
    ip_ = entry.start + (sized ? 1 : 0);
    return frame;
}

inline void Interpreter::begin(const Entry& entry, ScriptValue* locals) {
    instruction_ = entry.vm->code_.data() + entry.start->offset;
    Frame& frame = enter(entry, nullptr, locals, stacks_.call_count);
    if (entry.current_class != nullptr)
        frame.self = entry.current_class->instance_of(entry.object);
    first_frame_ = stacks_.frame_count - 1;
    destroyed_seen_ = stacks_.destroyed_programs;
}

void Interpreter::run(const Entry& entry, Arguments arguments, std::uint32_t results) {
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
        interpreter.begin(entry, stacks.locals.end() - arguments.size());
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

ScriptValue Interpreter::call(const Entry& entry, Arguments arguments) {
    run(entry, arguments, 1);
    return ScriptStacks::instance().values.pop();
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

void Interpreter::call_global() {
    values_.push(ScriptValue(at(ValuePlace::global, ip_->left)));
    call_top();
}

void Interpreter::call_top() {
    const ClassKind kind = values_.top().kind();
    if (kind != ClassKind::function && kind != ClassKind::method)
        return call_native();
    const ScriptValue callee = values_.pop();
    const std::uint32_t call_depth = begin_call();
    ScriptValue* const locals = locals_.end() - ip_->count;
    if (kind == ClassKind::function) {
        const ProgramRegistry::Entry& function = ProgramRegistry::instance()[callee.data()];
        if (function.vm == nullptr)
            fail("Program containing function has been destroyed");
        enter({function.vm, function.start}, ip_ + 1, locals, call_depth);
    } else {
        auto& methods = ScriptVM::ClassMethod::instance();
        auto& scripted_class = methods.class_of(callee.data());
        const auto method = methods.record(callee.data());
        enter({&scripted_class.vm(), method.start, &scripted_class, method.object}, ip_ + 1, locals, call_depth).self =
            scripted_class.instance_of(method.object);
    }
}

// The callee and its arguments stay where they are, below whatever runs, and go after it: the callee last, when its
// result has its place.
void Interpreter::call_native() {
    const std::uint32_t call_depth = begin_call();
    ScriptValue* const arguments = locals_.end() - ip_->count;
    ScriptValue result = values_.top().call({arguments, ip_->count});
    locals_.cut_to(arguments);
    stacks_.call_count = call_depth;
    values_.top().swap(result);
    ++ip_;
}

// The arguments may have run this very instruction for an object of another class, or ended the object's program.
void Interpreter::call_prepared() {
    ScriptValue& object = values_.top();
    object.overwrite(ScriptVM::ClassInstance::instance(), object.data());
    if (!find_own_member(object))
        fail("Program containing method has been destroyed");
    ScriptValue self = values_.pop();
    auto& instances = ScriptVM::ClassInstance::instance();
    auto& scripted_class = *instances.class_of(self.data());
    const std::uint32_t number = instances.object_of(self.data());
    const std::uint32_t call_depth = begin_call();
    enter({&scripted_class.vm(), ip_->site->start, &scripted_class, number}, ip_ + 1, locals_.end() - ip_->count,
          call_depth)
        .self.swap(self);
}

void Interpreter::look_for_programs() {
    for (std::uint32_t i = first_frame_; i < stacks_.frame_count; ++i)
        if (!ScriptVM::is_live(stacks_.frames[i].vm))
            fail("Program containing function has been destroyed");
    destroyed_seen_ = stacks_.destroyed_programs;
}

} // namespace kst::script
