#include "objects/stats/StatsBlockValues.h"

#include <algorithm>
#include <array>
#include <utility>

#include "script/value/release_values.h"

namespace kst {

using Kind = StatsBlock::Value::Kind;

namespace {

struct KindRow {
    Kind kind;
    std::string_view keyword;
    std::unique_ptr<StatsBlock::Value> (*make)(idstring name);
};

template <class T>
constexpr auto make_value =
    [](idstring name) -> std::unique_ptr<StatsBlock::Value> { return std::make_unique<T>(name); };

/// A row for each kind, in the order of their numbers.
constexpr std::array kinds{
    KindRow{Kind::number, "number", make_value<StatsBlock::NumberValue>},
    KindRow{Kind::string, "string", make_value<StatsBlock::StringValue>},
    KindRow{Kind::boolean, "boolean", make_value<StatsBlock::BoolValue>},
    KindRow{Kind::object, "object", make_value<StatsBlock::ObjectValue>},
    KindRow{Kind::list, "list", make_value<StatsBlock::ListValue>},
    KindRow{Kind::vector, "vector", make_value<StatsBlock::VectorValue>},
    KindRow{Kind::map, "map", make_value<StatsBlock::MapValue>},
};

const KindRow& row(Kind kind) {
    return kinds[static_cast<std::size_t>(kind)];
}

/// Lists and vectors by element, maps by pair.
template <class Sequence>
bool same_elements(const Sequence& a, const Sequence& b) {
    return std::equal(a.items().begin(), a.items().end(), b.items().begin(), b.items().end(),
                      [](const script::ScriptValue& x, const script::ScriptValue& y) { return x.equals(y); });
}
bool same_elements(const script::ScriptMap& a, const script::ScriptMap& b) {
    return std::equal(
        a.pairs().begin(), a.pairs().end(), b.pairs().begin(), b.pairs().end(),
        [](const auto& x, const auto& y) { return x.first.equals(y.first) && x.second.equals(y.second); });
}

} // namespace

std::string_view keyword_of(Kind kind) {
    return row(kind).keyword;
}

std::optional<Kind> kind_of(std::string_view keyword) {
    for (const KindRow& row : kinds)
        if (row.keyword == keyword)
            return row.kind;
    return std::nullopt;
}

std::unique_ptr<StatsBlock::Value> make_stats_value(Kind kind, idstring name) {
    return row(kind).make(name);
}

void StatsBlock::Value::set_number(float value) {
    set_script_value(script::number_value(value));
}

void StatsBlock::Value::set_bool(bool value) {
    set_script_value(script::boolean_value(value));
}

StatsBlock::ObjectValue::~ObjectValue() {
    script::release_value(std::move(object_));
}

void StatsBlock::ObjectValue::set_script_value(const script::ScriptValue& value) {
    script::ScriptValue old = std::exchange(object_, value);
    script::release_value(std::move(old));
}

template <class T, class Container, Kind value_kind>
bool ContainerValue<T, Container, value_kind>::same_content(const StatsBlock::Value& other) const {
    return same_elements(*container_, *static_cast<const ContainerValue&>(other).container_);
}

template class ContainerValue<StatsBlock::ListValue, script::ScriptList, Kind::list>;
template class ContainerValue<StatsBlock::VectorValue, script::ScriptVector, Kind::vector>;
template class ContainerValue<StatsBlock::MapValue, script::ScriptMap, Kind::map>;

} // namespace kst
