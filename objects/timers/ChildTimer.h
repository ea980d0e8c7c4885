#pragma once

#include <limits>

#include "objects/timers/Timer.h"

namespace kst {

/// A timer that runs at a multiple of its parent, can be paused and can limit its step.
class ChildTimer final : public script::Bound<ChildTimer, Timer>, public ChildTimerBase {
public:
    static constexpr std::string_view script_name = "ChildTimer";
    static void bind(script::StaticMemberSet<ChildTimer>& members);

    static constexpr float no_step_limit = std::numeric_limits<float>::max();
    /// So many timers may stand one on another.
    static constexpr int depth_limit = 200;

    ChildTimer() = default;
    explicit ChildTimer(Timer* parent) { place(parent); }
    ~ChildTimer() override { leave(); }

    float multiplier() const { return multiplier_; }
    void set_multiplier(float multiplier) { multiplier_ = multiplier; }
    bool is_paused() const { return paused_; }
    void pause() { paused_ = true; }
    void play() { paused_ = false; }
    float max_step() const { return max_step_; }
    void set_max_step(float seconds) { max_step_ = seconds; }
    /// Whether a time that is set on the parent reaches this timer.
    bool is_synchronised() const { return synchronised_; }
    void set_synchronised(bool synchronised) { synchronised_ = synchronised; }

    /// Takes the parent's step and, while synchronised, its time. Throws script::DSError, with nothing changed, if the
    /// timer would run on itself or more than depth_limit timers stood one on another.
    void set_parent(Timer* timer) override { place(timer); }
    /// As new on this parent. The children stay.
    void start_afresh(Timer& parent);

    void update(float delta) override;
    void set_time(float time) override;
    Timer* timer_above() const override { return parent_; }
    int height() const override;

private:
    void place(Timer* timer);
    void leave();

    float multiplier_ = 1;
    bool paused_ = false;
    bool synchronised_ = true;
    float max_step_ = no_step_limit;
};

} // namespace kst
