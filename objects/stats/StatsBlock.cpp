#include "objects/stats/StatsBlock.h"

#include <utility>

#include "objects/stats/StatsBlockValues.h"

namespace kst {

using script::ScriptValue;

namespace {

/// Up to so many variables a walk is as fast as the table.
constexpr std::size_t values_walked = 5;

/// A variable as a property of its own name.
class VariableProperty final : public script::PropertyFactory {
public:
    explicit VariableProperty(std::int32_t index) : index_(index) {}
    std::int32_t index() const { return index_; }

protected:
    ScriptValue read(script::LibraryHelper& object) const override {
        return static_cast<StatsBlock&>(object).get_value(index_);
    }
    void write(script::LibraryHelper& object, const ScriptValue& value) const override {
        static_cast<StatsBlock&>(object).set_value(index_, value);
    }

private:
    std::int32_t index_;
};

} // namespace

/// What a prototype and its copies have in common.
struct StatsBlockInfo {
    bool finished = false;
    script::MemberSet members{&script::StaticMemberSet<StatsBlock>::instance()};
};

void StatsBlock::bind(script::StaticMemberSet<StatsBlock>& members) {
    members.method<&StatsBlock::assign>("assign");
    members.method<&StatsBlock::compare>("compare");
    members.method<&StatsBlock::make_new>("make_new");
    members.method<&StatsBlock::write_protected>("write_protected");
    members.method<&StatsBlock::find_value>("find_value");
    members.method<&StatsBlock::get_value>("get_value");
    members.method<&StatsBlock::set_value>("set_value");
    members.method<&StatsBlock::get_values_as_map>("get_values_as_map");
    members.method<&StatsBlock::set_values_from_map>("set_values_from_map");
}

StatsBlock::StatsBlock() : shared_info_(std::make_shared<StatsBlockInfo>()) {}

StatsBlock::StatsBlock(const StatsBlock& other)
    : PersistentObject(other),
      Bound(other),
      write_protected_(other.write_protected_),
      shared_info_(other.shared_info_) {
    values_.reserve(other.values_.size());
    for (const auto& value : other.values_)
        values_.push_back(value->copy());
}

StatsBlock::~StatsBlock() = default;

std::int32_t StatsBlock::add_value(std::unique_ptr<Value> value) {
    if (is_finished())
        return -1;
    values_.push_back(std::move(value));
    return static_cast<std::int32_t>(values_.size() - 1);
}

void StatsBlock::finish() {
    if (is_finished())
        return;
    for (std::size_t i = 0; i < values_.size(); ++i)
        shared_info_->members.add(values_[i]->name(),
                                  script::MemberFactoryPointer(new VariableProperty(static_cast<std::int32_t>(i))));
    shared_info_->finished = true;
}

bool StatsBlock::is_finished() const {
    return shared_info_->finished;
}

std::int32_t StatsBlock::find_value(std::string_view name) const {
    const idstring id = find_interned(name);
    if (is_finished() && values_.size() > values_walked) {
        const auto* const property = dynamic_cast<const VariableProperty*>(shared_info_->members.find(id));
        return property == nullptr ? -1 : property->index();
    }
    for (std::size_t i = 0; i < values_.size(); ++i)
        if (values_[i]->name() == id)
            return static_cast<std::int32_t>(i);
    return -1;
}

ScriptValue StatsBlock::get_value(std::int32_t index) const {
    const auto place = static_cast<std::size_t>(index); // below 0 it is far too large
    return place < values_.size() ? values_[place]->get_script_value() : ScriptValue();
}

void StatsBlock::set_value(std::int32_t index, const ScriptValue& value) {
    const auto place = static_cast<std::size_t>(index);
    if (!write_protected_ && place < values_.size())
        values_[place]->set_script_value(value);
}

ScriptValue StatsBlock::get_values_as_map() const {
    const ScriptValue result = script::make_script_owned<script::ScriptMap>();
    auto& map = *script::Conversion<script::ScriptMap*>::from(result);
    // From the last to the first: of variables with one name the first counts.
    for (auto value = values_.rbegin(); value != values_.rend(); ++value)
        map.insert(script::string_value(idstring_text((*value)->name())), (*value)->get_script_value());
    return result;
}

void StatsBlock::set_values_from_map(const script::ScriptMap& map) {
    // A copy: the map may be one of the variables that are set.
    const script::ScriptMap pairs = map;
    for (const auto& [key, value] : pairs.pairs())
        set_value(find_value(key.to_string()), value);
}

void StatsBlock::assign(const StatsBlock& other) {
    if (values_.size() != other.values_.size())
        return;
    for (std::size_t i = 0; i < values_.size(); ++i) {
        const Value& source = *other.values_[i];
        if (values_[i]->kind() != source.kind() || values_[i]->name() != source.name())
            return;
        values_[i]->set_script_value(source.get_script_value());
    }
}

bool StatsBlock::compare(const StatsBlock& other) const {
    if (values_.size() != other.values_.size())
        return false;
    for (std::size_t i = 0; i < values_.size(); ++i) {
        const Value& a = *values_[i];
        const Value& b = *other.values_[i];
        if (a.kind() != b.kind() || a.name() != b.name() || !a.same_content(b))
            return false;
    }
    return true;
}

ScriptValue StatsBlock::make_new() const {
    auto copy = std::make_unique<StatsBlock>(*this);
    const ScriptValue value = copy->value();
    copy.release()->script_owned_ = true; // the value owns it from here on
    return value;
}

std::string StatsBlock::type_name() const {
    return "<Statsblock:" + idstring_text(name()) + ">";
}

const script::MemberSet& StatsBlock::members() const {
    return shared_info_->members;
}

void StatsBlock::on_unreferenced() {
    if (script_owned_)
        delete this;
}

} // namespace kst
