#include "script/runtime/ScriptVector.h"

#include <algorithm>
#include <cmath>

#include "script/value/BasicClasses.h"

namespace kst::script {

namespace {

std::vector<ScriptValue> range(float start, float end, float step, std::size_t max_count) {
    const double first = start, stride = step;
    const double limit = static_cast<double>(end) + stride / 2;
    if (!(first < limit))
        return {};
    if (!(stride > 0))
        throw DSError("set_range: the step does not lead to the end");
    const double count = std::ceil((limit - first) / stride);
    if (!(count <= static_cast<double>(max_count)))
        throw DSError("Too many elements");
    std::vector<ScriptValue> numbers;
    numbers.reserve(static_cast<std::size_t>(count));
    // Each from the start, so that roundings do not add up.
    for (double i = 0; i < count; ++i)
        numbers.push_back(number_value(static_cast<float>(first + i * stride)));
    return numbers;
}

} // namespace

void ScriptVector::bind(StaticMemberSet<ScriptVector>& members) {
    bind_sequence(members);
    members.method<&ScriptVector::element>("get");
    members.method<&ScriptVector::set>("set");
    members.method<&ScriptVector::resize>("resize");
    members.method<&ScriptVector::remove_equal>("delete");
    members.method<&ScriptVector::delete_at>("delete_at");
    members.method<&ScriptVector::set_range>("set_range", 1.0f);
    members.method<&ScriptVector::indices>("indices");
    // A setting of old, which scripts still store to.
    members.property<[](const ScriptVector&) { return false; }, [](ScriptVector&, const ScriptValue&) {}>(
        "order_important");
}

std::size_t ScriptVector::checked(std::int32_t index) const {
    if (index < 0 || static_cast<std::size_t>(index) >= size())
        throw DSError("Index out of range: " + std::to_string(index) + ", size " + std::to_string(size()));
    return static_cast<std::size_t>(index);
}

ScriptValue ScriptVector::element(std::int32_t index) const {
    return index >= 0 && static_cast<std::size_t>(index) < size() ? at(static_cast<std::size_t>(index)) : ScriptValue();
}

void ScriptVector::set(std::int32_t index, ScriptValue value) {
    const std::size_t place = checked(index);
    changed();
    items_[place].swap(value);
    release_value(std::move(value));
}

void ScriptVector::delete_at(std::int32_t index) {
    release_value(take(checked(index)));
}

void ScriptVector::resize(std::int32_t count) {
    if (count < 0)
        throw DSError("Negative size: " + std::to_string(count));
    const auto wanted = static_cast<std::size_t>(count);
    check_element_count(wanted, std::min(max_elements, size() + max_new_elements));
    changed();
    std::vector<ScriptValue> gone;
    if (wanted < size())
        gone.assign(std::move_iterator(items_.begin() + count), std::move_iterator(items_.end()));
    items_.resize(wanted);
    release_values(std::move(gone));
}

void ScriptVector::remove_equal(ScriptValue value) {
    remove_where([&](const ScriptValue& item) { return item.equals(value); });
}

void ScriptVector::set_range(float start, float end, float step) {
    replace_items(range(start, end, step, max_new_elements));
}

ScriptValue ScriptVector::indices() const {
    ScriptValue indices = make_script_owned<ScriptVector>();
    Conversion<ScriptVector&>::from(indices).replace_items(range(0, static_cast<float>(size()) - 1, 1, size()));
    return indices;
}

void ScriptVector::replace_items(std::vector<ScriptValue> items) {
    changed();
    std::swap(items_, items);
    release_values(std::move(items));
}

} // namespace kst::script
