#include "objects/timers/Timer.h"

namespace kst {

void Timer::bind(script::StaticMemberSet<Timer>& members) {
    members.method<&Timer::time>("time");
    members.method<&Timer::delta_time>("delta_time");
}

Timer::~Timer() {
    for (ChildTimerBase* const child : children_)
        child->parent_ = nullptr;
}

void Timer::update(float delta) {
    step(delta);
}

void Timer::set_time(float time) {
    pass_time(time);
}

void Timer::reset() {
    pass_time(0);
}

void Timer::step(float delta) {
    time_ += delta;
    delta_time_ = delta;
    for (ChildTimerBase* const child : children_)
        child->update(delta);
}

void Timer::pass_time(float time) {
    time_ = time;
    for (ChildTimerBase* const child : children_)
        child->set_time(time);
}

} // namespace kst
