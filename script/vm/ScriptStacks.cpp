#include "script/vm/ScriptStacks.h"

namespace kst::script {

ScriptStacks& ScriptStacks::instance() {
    static ScriptStacks& instance = *new ScriptStacks;
    return instance;
}

void ScriptStacks::pop_frame() {
    Frame& frame = current();
    // Off the stack first: the last reference to a function or object may go here.
    const ScriptValue callee = std::move(frame.callee);
    const ScriptValue self = std::move(frame.self);
    --frame_count;
}

void ScriptStacks::cut_frames_to(std::uint32_t count) {
    while (frame_count > count)
        pop_frame();
}

} // namespace kst::script
