#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>

#include "objects/timers/ChildTimer.h"
#include "source/utility/platform/PerformanceCounter.h"

namespace kst {

/// All time of the engine: the fixed timers, the timers that scripts make by name, and the gradual changes of
/// multipliers.
///
///   wall               the performance counter
///     game_animation   steps of at most 0.1 s
///   wall_running       the same steps as wall
///   main               driven by the owner of the frame loop, which calls `update` on it
///     pausable
///       game
///
/// Timers of others may run on these, and go before or after them.
class TimerManager : public script::Bound<TimerManager> {
public:
    static constexpr std::string_view script_name = "TimerManager";
    static void bind(script::StaticMemberSet<TimerManager>& members);

    /// The multiplier of `game` passes over the range between 0 and this in one step.
    static constexpr float slowest_game = 0.03f;

    using ReadCounter = std::int64_t (*)();
    /// `frequency`: counts of `read_counter` a second.
    explicit TimerManager(ReadCounter read_counter = platform::performance_counter,
                          std::int64_t frequency = platform::performance_frequency);

    /// Once a frame: moves `wall` and `wall_running` on by what the counter tells, then the ramps by what their clocks
    /// tell. `main` is not touched.
    void tick();

    Timer& wall() { return wall_; }
    Timer& wall_running() { return wall_running_; }
    Timer& main() { return main_; }
    ChildTimer& game() { return game_; }
    ChildTimer& pausable() { return pausable_; }
    ChildTimer& game_animation() { return game_animation_; }

    /// "game", "pausable", "game_animation", or a timer made by `make_timer`; null for any other name.
    ChildTimer* timer(std::string_view name);
    /// A timer of that name, as new on this parent, whether or not there was one. Owned by the manager. Throws
    /// script::DSError for the name of a fixed timer and a parent that runs on the timer itself.
    ChildTimer& make_timer(std::string_view name, Timer& parent);

    /// Moves the multiplier of `timer` to `target` within `seconds` of `clock`, in place of the ramp that the timer had. A
    /// ramp of no time or less has no effect.
    void ramp_multiplier(ChildTimer& timer, float target, float seconds, Timer& clock);
    std::size_t ramp_count() const { return ramps_.size(); }

    /// Seconds since the manager was made, as of the last tick.
    double running_time() const;

private:
    /// Values, not pointers: they tell when a timer or a clock of somebody else's has gone.
    struct MultiplierRamp {
        script::ScriptValue timer;
        float target;
        float remaining; ///< seconds
        script::ScriptValue clock;
    };

    ChildTimer* fixed_timer(std::string_view name);
    /// False when the ramp has nothing to act on any more.
    bool advance(MultiplierRamp& ramp);

    ReadCounter read_counter_;
    std::int64_t last_count_;
    std::int64_t start_count_;
    std::int64_t frequency_;
    Timer wall_running_;
    Timer wall_;
    Timer main_;
    ChildTimer pausable_{&main_};
    ChildTimer game_{&pausable_};
    ChildTimer game_animation_{&wall_};
    std::map<idstring, std::unique_ptr<ChildTimer>> named_timers_;
    std::map<const ChildTimer*, MultiplierRamp> ramps_;
};

} // namespace kst
