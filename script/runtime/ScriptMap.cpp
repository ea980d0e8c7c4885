#include "script/runtime/ScriptMap.h"

#include <array>
#include <vector>

#include "script/runtime/callbacks.h"
#include "script/value/release_values.h"

namespace kst::script {

namespace {

/// Moves a pair's key and value to `gone`.
void take(ScriptPairs& pairs, ScriptPairs::iterator pair, std::vector<ScriptValue>& gone) {
    auto node = pairs.extract(pair);
    gone.push_back(std::move(node.key()));
    gone.push_back(std::move(node.mapped()));
}

} // namespace

void release_elements(ScriptPairs& pairs) {
    std::vector<ScriptValue> gone;
    gone.reserve(2 * pairs.size());
    while (!pairs.empty())
        take(pairs, pairs.begin(), gone);
    release_values(std::move(gone));
}

void ScriptMap::bind(StaticMemberSet<ScriptMap>& members) {
    members.method<&ScriptMap::find>("get");
    members.method<&ScriptMap::contains>("has");
    members.method<&ScriptMap::size>("size");
    members.method<&ScriptMap::insert>("insert");
    members.method<&ScriptMap::delete_if>("delete_if");
    members.method<&ScriptMap::remove>("delete");
    members.method<&ScriptMap::for_each>("for_each");
    members.method<&ScriptMap::empty>("empty");
    members.method<&ScriptMap::clear>("clear");
    members.method<&ScriptMap::copy>("copy");
    members.method<&ScriptMap::iterator>("iterator");
}

ScriptMap::ScriptMap(Arguments keys_and_values) {
    if (keys_and_values.size() % 2 != 0)
        throw DSError("A map takes keys and values in turn");
    for (std::size_t i = 0; i < keys_and_values.size(); i += 2)
        pairs_.write().insert_or_assign(keys_and_values[i], keys_and_values[i + 1]);
}

ScriptValue ScriptMap::find(const ScriptValue& key) const {
    const auto found = pairs().find(key);
    return found == pairs().end() ? ScriptValue() : found->second;
}

void ScriptMap::insert(ScriptValue key, ScriptValue value) {
    const auto [pair, is_new] = pairs_.write().try_emplace(std::move(key));
    pair->second.swap(value);
    release_value(std::move(value));
}

void ScriptMap::remove(const ScriptValue& key) {
    if (!contains(key))
        return;
    std::vector<ScriptValue> gone;
    Pairs& all = pairs_.write();
    take(all, all.find(key), gone);
    release_values(std::move(gone));
}

void ScriptMap::for_each(const ScriptValue& function) const {
    const CopyOnWrite<Pairs> walked = pairs_;
    for (const auto& [key, value] : walked.read())
        call_back(function, std::array{key, value});
}

void ScriptMap::delete_if(const ScriptValue& test) {
    const HeldObject held(*this);
    const CopyOnWrite<Pairs> walked = pairs_;
    std::vector<std::array<ScriptValue, 2>> doomed;
    for (const auto& [key, value] : walked.read())
        if (call_back(test, std::array{key, value}).to_boolean())
            doomed.push_back({key, value});
    held.check();
    std::vector<ScriptValue> gone;
    Pairs& all = pairs_.write();
    for (const auto& [key, value] : doomed) {
        const auto found = all.find(key);
        if (found != all.end() && found->second.identical(value))
            take(all, found, gone);
    }
    release_values(std::move(gone));
}

ScriptValue ScriptMap::iterator() {
    return make_script_owned<ScriptMapIterator>(*this);
}

void ScriptMapItem::bind(StaticMemberSet<ScriptMapItem>& members) {
    members.readable_method<&ScriptMapItem::key>("key");
    members.readable_method<&ScriptMapItem::item_value>("value");
}

void ScriptMapIterator::bind(StaticMemberSet<ScriptMapIterator>& members) {
    members.method<&ScriptMapIterator::next>("next");
}

ScriptValue ScriptMapIterator::next() {
    const auto* const map = static_cast<ScriptMap*>(LibraryHelper::CppClass::object_of(map_));
    if (map == nullptr)
        throw_already_destroyed();
    const auto& pairs = map->pairs();
    const auto position = last_key_ ? pairs.upper_bound(*last_key_) : pairs.begin();
    if (position == pairs.end())
        return {};
    last_key_ = position->first;
    return make_script_owned<ScriptMapItem>(position->first, position->second);
}

} // namespace kst::script
