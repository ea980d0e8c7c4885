#pragma once

#include "objects/timers/TimerManager.h"

namespace kst::tool {

/// The timers of a program that runs in a shell, where nobody else has a frame loop: with a member more, `tick`.
class ShellTimers final : public script::Bound<ShellTimers, TimerManager> {
public:
    static constexpr std::string_view script_name = "TimerManager";
    static void bind(script::StaticMemberSet<ShellTimers>& members) {
        members.method<&ShellTimers::tick_frame>("tick");
    }

    /// Reads the clock, and moves `main` on by the same step as `wall`.
    void tick_frame() {
        tick();
        main().update(wall().delta_time());
    }
};

} // namespace kst::tool
