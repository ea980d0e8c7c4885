#pragma once

#include <vector>

#include "script/binding/bind.h"

namespace kst {

class Timer;

/// What runs on a timer.
class ChildTimerBase {
public:
    ChildTimerBase() = default;
    ChildTimerBase(const ChildTimerBase&) = delete;
    ChildTimerBase& operator=(const ChildTimerBase&) = delete;
    virtual ~ChildTimerBase() = default;
    /// Leaves the old parent and joins this one; null for none.
    virtual void set_parent(Timer* timer) = 0;
    virtual void update(float delta) = 0;
    virtual void set_time(float time) = 0;

    Timer* parent() const { return parent_; }
    /// How many levels of children stand below.
    virtual int height() const { return 0; }

protected:
    friend class Timer;

    Timer* parent_ = nullptr;
};

/// A clock that others run on. All times are in seconds. It owns none of its children: whichever goes first leaves the
/// other. For the thread that runs the frame loop.
class Timer : public script::Bound<Timer> {
public:
    static constexpr std::string_view script_name = "Timer";
    static void bind(script::StaticMemberSet<Timer>& members);

    Timer() = default;
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;
    ~Timer() override;

    float time() const { return time_; }
    /// The step of the last update.
    float delta_time() const { return delta_time_; }

    /// Goes on by `delta`, and all children with it.
    virtual void update(float delta);
    /// Stores the time and passes it on.
    virtual void set_time(float time);
    /// Back to 0, with all children that follow their parent's time.
    void reset();

    const std::vector<ChildTimerBase*>& children() const { return children_; }
    /// The timer that this one runs on; null for the root of a tree.
    virtual Timer* timer_above() const { return nullptr; }

protected:
    friend class ChildTimer;

    void step(float delta);
    void pass_time(float time);

    float time_ = 0;
    float delta_time_ = 0;
    std::vector<ChildTimerBase*> children_;
};

} // namespace kst
