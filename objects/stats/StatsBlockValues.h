#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "objects/stats/StatsBlock.h"
#include "script/runtime/ScriptList.h"
#include "script/runtime/ScriptVector.h"

namespace kst {

/// One variable of a stats block. A class overrides the operations of its own type; those of the others go by way of a
/// script value, with its conversions.
class StatsBlock::Value {
public:
    /// The numbers are fixed.
    enum class Kind { number = 0, string = 1, boolean = 2, object = 3, list = 4, vector = 5, map = 6 };

    explicit Value(idstring name) : name_(name) {}
    Value& operator=(const Value&) = delete;
    virtual ~Value() = default;

    idstring name() const { return name_; }

    virtual Kind kind() const = 0;
    virtual void set_number(float value);
    virtual float get_number() const { return get_script_value().to_number(); }
    virtual void set_bool(bool value);
    virtual bool get_bool() const { return get_script_value().to_boolean(); }
    virtual void set_string(const std::string& value) { set_script_value(script::string_value(value)); }
    virtual std::string get_string() const { return get_script_value().to_string(); }
    virtual void set_script_value(const script::ScriptValue& /*value*/) {}
    virtual script::ScriptValue get_script_value() const { return {}; }
    /// The plain value of numbers, strings and booleans; null for the others.
    virtual void* raw_data() { return nullptr; }

    virtual std::unique_ptr<Value> copy() const = 0;
    /// Whether a value of the same kind has the same content: containers compare element by element.
    virtual bool same_content(const Value& other) const { return get_script_value().equals(other.get_script_value()); }

protected:
    Value(const Value&) = default;

private:
    idstring name_;
};

/// The keyword of a definition file, in lower case, and back; nothing for a word that is no keyword.
std::string_view keyword_of(StatsBlock::Value::Kind kind);
std::optional<StatsBlock::Value::Kind> kind_of(std::string_view keyword);

/// A value of that kind as it is at first: 0, the empty string, false, void, or an empty container.
std::unique_ptr<StatsBlock::Value> make_stats_value(StatsBlock::Value::Kind kind, idstring name);

/// What every kind's class is derived from.
template <class T, StatsBlock::Value::Kind value_kind>
class StatsValue : public StatsBlock::Value {
public:
    using StatsBlock::Value::Value;
    Kind kind() const final { return value_kind; }
    std::unique_ptr<Value> copy() const final { return std::make_unique<T>(static_cast<const T&>(*this)); }
};

class StatsBlock::NumberValue final : public StatsValue<NumberValue, Value::Kind::number> {
public:
    using StatsValue::StatsValue;
    void set_number(float value) override { number_ = value; }
    float get_number() const override { return number_; }
    void set_script_value(const script::ScriptValue& value) override { number_ = value.to_number(); }
    script::ScriptValue get_script_value() const override { return script::number_value(number_); }
    void* raw_data() override { return &number_; }

private:
    float number_ = 0;
};

class StatsBlock::StringValue final : public StatsValue<StringValue, Value::Kind::string> {
public:
    using StatsValue::StatsValue;
    void set_string(const std::string& value) override { string_ = value; }
    std::string get_string() const override { return string_; }
    void set_script_value(const script::ScriptValue& value) override { string_ = value.to_string(); }
    script::ScriptValue get_script_value() const override { return script::string_value(string_); }
    void* raw_data() override { return &string_; }

private:
    std::string string_;
};

class StatsBlock::BoolValue final : public StatsValue<BoolValue, Value::Kind::boolean> {
public:
    using StatsValue::StatsValue;
    void set_bool(bool value) override { bool_ = value; }
    bool get_bool() const override { return bool_; }
    void set_script_value(const script::ScriptValue& value) override { bool_ = value.to_boolean(); }
    script::ScriptValue get_script_value() const override { return script::boolean_value(bool_); }
    void* raw_data() override { return &bool_; }

private:
    bool bool_ = false;
};

/// Any script value; an object is kept alive.
class StatsBlock::ObjectValue final : public StatsValue<ObjectValue, Value::Kind::object> {
public:
    using StatsValue::StatsValue;
    ObjectValue(const ObjectValue&) = default;
    ~ObjectValue() override;
    void set_script_value(const script::ScriptValue& value) override;
    script::ScriptValue get_script_value() const override { return object_; }

private:
    script::ScriptValue object_;
};

/// A container of its own: scripts that read the variable work on it, until it is assigned a copy of another one.
template <class T, class Container, StatsBlock::Value::Kind value_kind>
class ContainerValue : public StatsValue<T, value_kind> {
public:
    explicit ContainerValue(idstring name)
        : StatsValue<T, value_kind>(name), container_(std::make_unique<Container>()) {}
    ContainerValue(const ContainerValue& other)
        : StatsValue<T, value_kind>(other), container_(std::make_unique<Container>(*other.container_)) {}

    /// Throws script::DSError for a value of another type. What was held before is destroyed; values of it are dead.
    void set_script_value(const script::ScriptValue& value) override {
        // The copy comes first: the value may be an element of what goes.
        auto copy = std::make_unique<Container>(*script::Conversion<const Container*>::from(value));
        container_.swap(copy);
    }
    script::ScriptValue get_script_value() const override { return container_->value(); }
    bool same_content(const StatsBlock::Value& other) const override;

    const Container& container() const { return *container_; }

private:
    std::unique_ptr<Container> container_;
};

class StatsBlock::ListValue final : public ContainerValue<ListValue, script::ScriptList, Value::Kind::list> {
public:
    using ContainerValue::ContainerValue;
};
class StatsBlock::VectorValue final : public ContainerValue<VectorValue, script::ScriptVector, Value::Kind::vector> {
public:
    using ContainerValue::ContainerValue;
};
class StatsBlock::MapValue final : public ContainerValue<MapValue, script::ScriptMap, Value::Kind::map> {
public:
    using ContainerValue::ContainerValue;
};

} // namespace kst
