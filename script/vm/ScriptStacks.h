#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <new>

#include "script/value/DSError.h"
#include "script/vm/ScriptVM.h"

namespace kst::script {

/// How many entries each of the shared stacks has.
inline constexpr std::uint32_t stack_size = 5000;

/// Throws DSError. Out of line, so that the checks in front of it stay small.
[[noreturn]] void fail(const char* text);

/// A fixed stack of values. Slots at and above the count own nothing. A full stack is a DSError.
class ValueStack {
public:
    explicit ValueStack(const char* overflow_text) : overflow_text_(overflow_text) {}

    std::uint32_t count() const { return static_cast<std::uint32_t>(end_ - slots_.get()); }
    ScriptValue& operator[](std::uint32_t index) { return slots_[index]; }
    std::uint32_t index_of(const ScriptValue* slot) const { return static_cast<std::uint32_t>(slot - slots_.get()); }
    ScriptValue& top() { return end_[-1]; }
    Arguments last(std::uint32_t count) const { return {end_ - count, count}; }

    void push(ScriptValue&& value) {
        if (end_ == limit())
            overflow();
        new (end_) ScriptValue(std::move(value));
        ++end_;
    }

    ScriptValue pop() {
        --end_;
        return ScriptValue::adopt(end_->value_class(), end_->data());
    }

    // One at a time and off the stack first: a release may run anything, on these very stacks.
    void cut_to(std::uint32_t count) { cut_to(slots_.get() + count); }
    void cut_to(const ScriptValue* end) {
        while (end_ > end)
            pop();
    }

    void resize(std::uint32_t count) { resize(slots_.get() + count); }
    void resize(const ScriptValue* end) {
        cut_to(end);
        while (end_ < end) {
            if (end_ == limit())
                overflow();
            end_->overwrite(void_class, 0);
            ++end_;
        }
    }

    // The bare slots. Whoever works on them takes the place of `push` and `pop`: slots below the end own, others do
    // not, and the end is set before anything runs that may use the stack.
    ScriptValue* end() { return end_; }
    void set_end(ScriptValue* end) { end_ = end; }
    const ScriptValue* limit() const { return slots_.get() + stack_size; }
    [[noreturn]] void overflow() const { fail(overflow_text_); }

private:
    std::unique_ptr<ScriptValue[]> slots_ = std::make_unique<ScriptValue[]>(stack_size);
    ScriptValue* end_ = slots_.get();
    const char* overflow_text_;
};

struct Instruction;

/// One active function, and how its caller goes on.
struct Frame {
    ScriptVM* vm = nullptr;
    /// Null in the frame that a run began with: its return ends the run.
    const Instruction* return_to = nullptr;
    ScriptValue* locals = nullptr;
    /// The value stack's end when the function began.
    ScriptValue* values = nullptr;
    /// Those of the current object.
    ScriptValue* members = nullptr;
    ScriptVM::ScriptedClassBase* current_class = nullptr;
    std::uint32_t object = 0;
    /// The count of the call stack when the function was called.
    std::uint32_t call_depth = 0;
    /// The object of the method, held as long as it runs.
    ScriptValue self;
};

/// What all programs of the process share: value stack, local stack, call stack, and the frames that cut the first two
/// into functions. Nothing here is locked.
struct ScriptStacks {
    static ScriptStacks& instance() {
        static ScriptStacks& instance = *new ScriptStacks;
        return instance;
    }

    ValueStack values{"Script error: value stack overflow"};
    ValueStack locals{"Script error: local stack overflow"};

    /// The address of the `call` of each active call, for error reports. A failed run leaves it as it stood; the next
    /// run from outside empties it.
    std::unique_ptr<const std::uint8_t*[]> calls = std::make_unique<const std::uint8_t*[]>(stack_size);
    std::uint32_t call_count = 0;

    /// One for each call, and one for each run.
    static constexpr std::uint32_t frame_limit = stack_size + 400;
    std::unique_ptr<Frame[]> frames = std::make_unique<Frame[]>(frame_limit);
    std::uint32_t frame_count = 0;

    /// Counts destroyed programs: whoever called out sees by it whether to look if its program still lives.
    std::uint32_t destroyed_programs = 0;

    /// How many more backward jumps and calls may run before a DSError; for hosts of programs they do not trust.
    std::uint64_t jump_budget = std::numeric_limits<std::uint64_t>::max();

    void push_call(const std::uint8_t* address) {
        if (call_count == stack_size)
            fail("Script error: call stack overflow");
        calls[call_count++] = address;
    }

    /// A frame to fill; frame_count already counts it.
    Frame& push_frame() {
        if (frame_count == frame_limit)
            fail("Script error: call stack overflow");
        return frames[frame_count++];
    }
    Frame& current() { return frames[frame_count - 1]; }
    void pop_frame();
    void cut_frames_to(std::uint32_t count);
};

} // namespace kst::script
