#include "script/runtime/ScriptMap.h"

#include <array>

#include "script/runtime/callbacks.h"
#include "script/value/release_values.h"

namespace kst::script {

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
        pairs_.insert_or_assign(keys_and_values[i], keys_and_values[i + 1]);
}

ScriptMap& ScriptMap::operator=(const ScriptMap& other) {
    if (this != &other) {
        Pairs copy = other.pairs_;
        clear();
        pairs_.swap(copy);
    }
    return *this;
}

ScriptMap::~ScriptMap() {
    clear();
}

ScriptValue ScriptMap::find(const ScriptValue& key) const {
    const auto found = pairs_.find(key);
    return found == pairs_.end() ? ScriptValue() : found->second;
}

void ScriptMap::insert(ScriptValue key, ScriptValue value) {
    const auto [pair, is_new] = pairs_.try_emplace(std::move(key));
    pair->second.swap(value);
    release_value(std::move(value));
}

void ScriptMap::take(Pairs::iterator pair, std::vector<ScriptValue>& gone) {
    auto node = pairs_.extract(pair);
    gone.push_back(std::move(node.key()));
    gone.push_back(std::move(node.mapped()));
}

void ScriptMap::remove(const ScriptValue& key) {
    const auto found = pairs_.find(key);
    if (found == pairs_.end())
        return;
    std::vector<ScriptValue> gone;
    take(found, gone);
    release_values(std::move(gone));
}

void ScriptMap::clear() {
    std::vector<ScriptValue> gone;
    while (!pairs_.empty())
        take(pairs_.begin(), gone);
    release_values(std::move(gone));
}

void ScriptMap::for_each(const ScriptValue& function) const {
    const std::vector<std::array<ScriptValue, 2>> walked = snapshot();
    for (const auto& pair : walked)
        call_back(function, pair);
}

void ScriptMap::delete_if(const ScriptValue& test) {
    const HeldObject held(*this);
    const std::vector<std::array<ScriptValue, 2>> walked = snapshot();
    std::vector<bool> doomed;
    doomed.reserve(walked.size());
    for (const auto& pair : walked)
        doomed.push_back(call_back(test, pair).to_boolean());
    held.check();
    std::vector<ScriptValue> gone;
    for (std::size_t i = 0; i < walked.size(); ++i) {
        if (!doomed[i])
            continue;
        const auto found = pairs_.find(walked[i][0]);
        if (found != pairs_.end() && found->second.identical(walked[i][1]))
            take(found, gone);
    }
    release_values(std::move(gone));
}

std::vector<std::array<ScriptValue, 2>> ScriptMap::snapshot() const {
    std::vector<std::array<ScriptValue, 2>> copy;
    copy.reserve(pairs_.size());
    for (const auto& [key, value] : pairs_)
        copy.push_back({key, value});
    return copy;
}

ScriptValue ScriptMap::iterator() {
    return make_script_owned<ScriptMapIterator>(*this);
}

void ScriptMapItem::bind(StaticMemberSet<ScriptMapItem>& members) {
    members.property<&ScriptMapItem::key>("key");
    members.property<&ScriptMapItem::item_value>("value");
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
