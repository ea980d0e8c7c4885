#include "script/runtime/ScriptList.h"

namespace kst::script {

void ScriptList::bind(StaticMemberSet<ScriptList>& members) {
    bind_sequence(members);
    members.method<&ScriptList::insert>("insert");
    members.method<&ScriptList::push_front>("push_front");
    members.method<&ScriptList::pop_front>("pop_front");
    members.method<&ScriptList::pop_back>("pop_back");
    members.method<&ScriptList::front>("front");
    members.method<&ScriptList::back>("back");
}

void ScriptList::insert(std::int32_t index, ScriptValue value) {
    if (index < 0 || static_cast<std::size_t>(index) > size())
        throw DSError("Index out of range: " + std::to_string(index) + ", size " + std::to_string(size()));
    if (index == 0)
        return push_front(std::move(value));
    check_element_count(size() + 1);
    changed();
    items_.insert(items_.begin() + index, std::move(value));
}

void ScriptList::push_front(ScriptValue value) {
    check_element_count(size() + 1);
    changed();
    items_.push_front(std::move(value));
    --first_;
}

ScriptValue ScriptList::pop_front() {
    if (empty())
        return {};
    ++first_;
    return take(0);
}

ScriptValue ScriptList::pop_back() {
    return empty() ? ScriptValue() : take(size() - 1);
}

} // namespace kst::script
