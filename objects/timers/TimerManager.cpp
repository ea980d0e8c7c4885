#include "objects/timers/TimerManager.h"

#include <iterator>
#include <string>

namespace kst {

void TimerManager::bind(script::StaticMemberSet<TimerManager>& members) {
    members.method<&TimerManager::game>("game");
    members.method<&TimerManager::pausable>("pausable");
    members.method<&TimerManager::wall>("wall");
    members.method<&TimerManager::wall_running>("wall_running");
    members.method<&TimerManager::main>("main");
    members.method<&TimerManager::game_animation>("game_animation");
    members.method<&TimerManager::ramp_multiplier>("ramp_multiplier");
    members.method<&TimerManager::timer>("timer");
    members.method<&TimerManager::make_timer>("make_timer");
}

TimerManager::TimerManager(ReadCounter read_counter, std::int64_t frequency)
    : read_counter_(read_counter), last_count_(read_counter()), start_count_(last_count_), frequency_(frequency) {
    game_animation_.set_max_step(0.1f);
}

double TimerManager::running_time() const {
    return static_cast<double>(last_count_ - start_count_) / static_cast<double>(frequency_);
}

void TimerManager::tick() {
    const std::int64_t count = read_counter_();
    const auto step = static_cast<float>(static_cast<double>(count - last_count_) / static_cast<double>(frequency_));
    last_count_ = count;
    wall_.update(step);
    wall_running_.update(step);
    std::erase_if(ramps_, [](const auto& entry) { return entry.second.remaining <= 0; });
    for (auto ramp = ramps_.begin(); ramp != ramps_.end();)
        ramp = advance(ramp->second) ? std::next(ramp) : ramps_.erase(ramp);
}

bool TimerManager::advance(MultiplierRamp& ramp) {
    using Values = script::LibraryHelper::CppClass;
    auto* const timer = dynamic_cast<ChildTimer*>(Values::object_of(ramp.timer));
    const auto* const clock = dynamic_cast<Timer*>(Values::object_of(ramp.clock));
    if (timer == nullptr || clock == nullptr)
        return false;
    float multiplier = timer->multiplier();
    const float delta = clock->delta_time();
    if (delta < ramp.remaining) {
        multiplier += delta / ramp.remaining * (ramp.target - multiplier);
        ramp.remaining -= delta;
    } else {
        ramp.remaining = 0;
        multiplier = ramp.target;
    }
    // The game must not crawl: on the way up it starts from the slowest speed, on the way down it drops to the target.
    if (timer == &game_ && multiplier < slowest_game) {
        if (ramp.target <= slowest_game) {
            multiplier = ramp.target;
            ramp.remaining = 0;
        } else {
            multiplier = slowest_game;
        }
    }
    timer->set_multiplier(multiplier);
    return true;
}

ChildTimer* TimerManager::fixed_timer(std::string_view name) {
    if (name == "game")
        return &game_;
    if (name == "pausable")
        return &pausable_;
    if (name == "game_animation")
        return &game_animation_;
    return nullptr;
}

ChildTimer* TimerManager::timer(std::string_view name) {
    if (ChildTimer* const fixed = fixed_timer(name))
        return fixed;
    const auto found = named_timers_.find(find_interned(name));
    return found == named_timers_.end() ? nullptr : found->second.get();
}

ChildTimer& TimerManager::make_timer(std::string_view name, Timer& parent) {
    if (fixed_timer(name) != nullptr)
        throw script::DSError("The timer " + std::string(name) + " is fixed");
    std::unique_ptr<ChildTimer>& timer = named_timers_[intern(name)];
    if (timer == nullptr)
        timer = std::make_unique<ChildTimer>(&parent);
    else
        timer->start_afresh(parent);
    return *timer;
}

void TimerManager::ramp_multiplier(ChildTimer& timer, float target, float seconds, Timer& clock) {
    ramps_.insert_or_assign(&timer, MultiplierRamp{timer.value(), target, seconds, clock.value()});
}

} // namespace kst
