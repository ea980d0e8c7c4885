#include "script/runtime/ScriptTCList.h"

#include <algorithm>
#include <array>

#include "script/runtime/callbacks.h"
#include "script/value/release_values.h"

namespace kst::script {

namespace {

/// 1/4800 of a second, rounded as scripts have always seen it.
constexpr float seconds_per_unit = 0.00020833334f;

} // namespace

void ScriptTCList::bind(StaticMemberSet<ScriptTCList>& members) {
    members.method<&ScriptTCList::add>("add");
    members.method<&ScriptTCList::remove>("remove");
    members.method<&ScriptTCList::update>("update");
    members.method<&ScriptTCList::clear>("clear");
    members.method<&ScriptTCList::reset>("reset");
    members.method<&ScriptTCList::copy>("copy");
}

ScriptTCList::ScriptTCList(const ScriptTCList& other) : Bound(other), time_(other.time_) {
    for (const ScriptValue& value : other.active_)
        active_.push_back(make_script_owned<ScriptTimedCallback>(entry_of(value)));
}

ScriptTimedCallback& ScriptTCList::entry_of(const ScriptValue& value) {
    return *static_cast<ScriptTimedCallback*>(LibraryHelper::CppClass::object_of(value));
}

ScriptValue ScriptTCList::add(ScriptValue callback, float interval, std::int32_t count) {
    const ScriptValue value = make_script_owned<ScriptTimedCallback>();
    ScriptTimedCallback& entry = entry_of(value);
    entry.interval = interval;
    entry.last = time_;
    entry.callback = std::move(callback);
    entry.count = count;
    active_.push_back(value);
    return value;
}

void ScriptTCList::remove(ScriptTimedCallback& entry) {
    const auto found = std::ranges::find_if(active_, [&](const ScriptValue& v) { return &entry_of(v) == &entry; });
    if (found == active_.end())
        return;
    ScriptValue gone = std::move(*found);
    active_.erase(found);
    release_value(std::move(gone));
}

void ScriptTCList::update(float delta) {
    const HeldObject held(*this);
    time_ += delta;
    const std::vector<ScriptValue> walked = active_;
    for (const ScriptValue& value : walked) {
        try {
            take_turn(value);
        } catch (...) {
            if (held.alive())
                retire(value);
            throw;
        }
        held.check();
        retire(value);
    }
}

void ScriptTCList::retire(const ScriptValue& value) {
    if (entry_of(value).count == 0)
        remove(entry_of(value));
}

void ScriptTCList::take_turn(const ScriptValue& value) {
    ScriptTimedCallback& entry = entry_of(value);
    if (entry.last + entry.interval > time_)
        return;
    if (entry.count > 0)
        --entry.count;
    const std::array arguments{value, number_value(time_ * seconds_per_unit),
                               number_value((time_ - entry.last) * seconds_per_unit)};
    // Before the call: a callback that updates the list must not find its own turn still to be taken.
    entry.last = time_;
    call_back(entry.callback, arguments);
}

void ScriptTCList::clear() {
    release_values(std::move(active_));
    active_.clear();
}

void ScriptTCList::reset() {
    time_ = 0;
    for (const ScriptValue& value : active_)
        entry_of(value).last = 0;
}

} // namespace kst::script
