#include "objects/timers/ChildTimer.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace kst {

void ChildTimer::bind(script::StaticMemberSet<ChildTimer>& members) {
    members.method<&ChildTimer::multiplier>("multiplier");
    members.method<&ChildTimer::is_paused>("is_paused");
    members.method<&ChildTimer::set_multiplier>("set_multiplier");
    members.method<&ChildTimer::pause>("pause");
    members.method<&ChildTimer::play>("play");
    members.method<&ChildTimer::max_step>("max_step");
    members.method<&ChildTimer::set_max_step>("set_max_step");
}

void ChildTimer::update(float delta) {
    step(paused_ ? 0 : std::min(delta * multiplier_, max_step_));
}

void ChildTimer::set_time(float time) {
    if (synchronised_)
        pass_time(time);
}

int ChildTimer::height() const {
    int below = -1;
    for (const ChildTimerBase* const child : children_)
        below = std::max(below, child->height());
    return below + 1;
}

void ChildTimer::place(Timer* timer) {
    // The walks over the tree go by recursion: what they could not walk is not built.
    int depth = height() + 1;
    for (const Timer* above = timer; above != nullptr; above = above->timer_above()) {
        if (above == this)
            throw script::DSError("A timer can not run on itself");
        if (++depth > depth_limit)
            throw script::DSError("Too many timers run on one another");
    }
    leave();
    if (timer == nullptr)
        return;
    timer->children_.push_back(this);
    parent_ = timer;
    delta_time_ = timer->delta_time();
    set_time(timer->time());
}

void ChildTimer::start_afresh(Timer& parent) {
    const bool was_synchronised = std::exchange(synchronised_, true);
    try {
        place(&parent);
    } catch (...) {
        synchronised_ = was_synchronised;
        throw;
    }
    multiplier_ = 1;
    paused_ = false;
    max_step_ = no_step_limit;
}

void ChildTimer::leave() {
    if (parent_ == nullptr)
        return;
    std::erase(parent_->children_, this);
    parent_ = nullptr;
}

} // namespace kst
