#include "script/vm/ScriptStacks.h"

namespace kst::script {

void fail(const char* text) {
    throw DSError(text);
}

void ScriptStacks::pop_frame() {
    Frame& frame = current();
    --frame_count;
    // Out of the frame first: the last reference to the object may go here, and run anything.
    const ScriptValue self = std::move(frame.self);
}

void ScriptStacks::cut_frames_to(std::uint32_t count) {
    while (frame_count > count)
        pop_frame();
}

} // namespace kst::script
