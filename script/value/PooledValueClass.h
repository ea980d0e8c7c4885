#pragma once

#include <algorithm>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "script/value/DSError.h"
#include "script/value/IndexPool.h"
#include "script/value/ScriptValue.h"

namespace kst::script {

/// A member of a value class: a plain value, computed when it is read.
template <typename Value>
struct PooledMember {
    std::string_view name;
    ScriptValue (*get)(const Value& value);
};

/// A class whose values are small plain records that do not fit the data word and stand in a pool. Such values never
/// change, are always true, and order and compare by content.
template <typename Value>
class PooledValueClass : public ScriptClass {
public:
    ScriptValue make(const Value& value) {
        const Data data = pool_.take();
        pool_[data] = value;
        return ScriptValue::adopt(*this, data);
    }

    bool is(const ScriptValue& value) const { return &value.value_class() == this; }

    /// The content of a value of this class. Throws DSError for any other: "Value is not of type <int64>, it is of
    /// type <number>".
    Value read(const ScriptValue& value) {
        if (!is(value))
            throw DSError("Value is not of type " + std::string(type_) + ", it is of type " + value.type_name());
        return pool_[value.data()];
    }

    /// How many values exist.
    std::size_t live() const { return pool_.live(); }

    void add_ref(Data data) final { pool_.add_ref(data); }
    void release(Data data) final {
        if (pool_.drop_ref(data) == 0)
            pool_.give_back(data);
    }
    bool to_boolean(Data) override { return true; }
    std::string type_name(Data) final { return std::string(type_); }

    ScriptValue member(Data data, idstring id, bool must_exist) final {
        const auto found = find(id);
        return found == members_.end() ? ScriptClass::member(data, id, must_exist) : found->get(pool_[data]);
    }
    bool has_member(Data, idstring id) final { return find(id) != members_.end(); }

    bool less(Data data, const ScriptValue& other) final {
        return is(other) ? before(pool_[data], pool_[other.data()]) : ScriptClass::less(data, other);
    }

protected:
    PooledValueClass(std::string_view type, std::span<const PooledMember<Value>> members)
        : ScriptClass(Counting::pooled), type_(type) {
        for (const PooledMember<Value>& member : members)
            members_.push_back({intern(member.name), member.get});
    }

    const Value& value(Data data) { return pool_[data]; }
    /// A strict weak order of the contents.
    virtual bool before(const Value& a, const Value& b) const = 0;

private:
    struct Member {
        idstring id;
        ScriptValue (*get)(const Value& value);
    };

    auto find(idstring id) const { return std::ranges::find(members_, id, &Member::id); }

    std::string_view type_;
    std::vector<Member> members_; // so few that a walk is the fastest search
    IndexPool<Value> pool_;
};

} // namespace kst::script
