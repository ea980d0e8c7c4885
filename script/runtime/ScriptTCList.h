#pragma once

#include <vector>

#include "script/binding/bind.h"

namespace kst::script {

/// "<ScriptTimedCallback>": one entry of a ScriptTCList. Scripts only hold it, to take it out of the list again.
class ScriptTimedCallback : public Bound<ScriptTimedCallback> {
public:
    static constexpr std::string_view script_name = "ScriptTimedCallback";
    static void bind(StaticMemberSet<ScriptTimedCallback>&) {}

    float interval = 0; ///< In units of the list's time.
    float last = 0;     ///< The list's time at the last call, or when the entry was added.
    ScriptValue callback;
    std::int32_t count = 0; ///< How many calls are left; below 0 there is no end.
};

/// "<ScriptTCList>": a clock that is moved by hand, and functions to call when their time has come. Time is a float in
/// units of 1/4800 of a second. The members of scripts, one by one: docs/script-containers.md.
class ScriptTCList : public Bound<ScriptTCList> {
public:
    static constexpr std::string_view script_name = "ScriptTCList";
    static void bind(StaticMemberSet<ScriptTCList>& members);

    ScriptTCList() = default;
    /// The copy has entries of its own, with the same times and counts.
    ScriptTCList(const ScriptTCList& other);
    ScriptTCList& operator=(const ScriptTCList&) = delete;
    ~ScriptTCList() override { clear(); }

    float time() const { return time_; }
    std::size_t active() const { return active_.size(); }

    /// The new entry, a ScriptTimedCallback. Its callback is called at the first update that brings the time to an
    /// interval from now or further, and so on from there, `count` times; for ever with a negative count.
    ScriptValue add(ScriptValue callback, float interval, std::int32_t count);
    /// Nothing happens if the entry is not in this list.
    void remove(ScriptTimedCallback& entry);

    /// Moves the time on, and gives each entry of a copy of the list its turn, in the order of adding: entries that a
    /// callback adds have none in this update, those that it removes still have theirs. A turn makes one call at most,
    /// however many intervals have passed: callback(entry, seconds of the list's time, seconds since the last call). An
    /// entry with no calls left goes.
    ///
    /// If a callback fails the error passes on; its turn counts as taken, and entries behind it have theirs in the next
    /// update. A callback may update, clear and reset the list.
    void update(float delta);
    /// Takes all entries out.
    void clear();
    /// Sets the time to 0, with all entries as if added now.
    void reset();

    ScriptValue copy() const { return make_script_owned<ScriptTCList>(*this); }

private:
    /// The entry behind a value in active_; they are never destroyed before their values.
    static ScriptTimedCallback& entry_of(const ScriptValue& value);
    void take_turn(const ScriptValue& value);
    /// Takes the entry out if it has no calls left.
    void retire(const ScriptValue& value);

    float time_ = 0;
    std::vector<ScriptValue> active_;
};

} // namespace kst::script
