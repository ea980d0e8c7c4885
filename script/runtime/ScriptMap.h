#pragma once

#include <array>
#include <map>
#include <optional>
#include <vector>

#include "script/binding/bind.h"
#include "script/value/BasicClasses.h"
#include "script/value/numbers.h"

namespace kst::script {

/// The order of a map's keys: `less`, but NaN comes behind all other numbers and is equal to itself. By `less` alone it
/// would be equal to every number, and the order none.
struct KeyOrder {
    bool operator()(const ScriptValue& a, const ScriptValue& b) const {
        if (a.kind() == ClassKind::number && b.kind() == ClassKind::number)
            return ordered_before(a.to_number(), b.to_number());
        return a.less(b);
    }
};

/// "<ScriptMap>": values by key, in ascending order of the keys. The members of scripts, one by one:
/// docs/script-containers.md.
///
/// For native code it is a plain container that may be copied; a copy has the same pairs and is an object of its own.
/// Pairs that go are released through release_values. A map that holds itself, on whatever way, is never freed, as
/// values are only counted; `clear` cuts the circle.
class ScriptMap : public Bound<ScriptMap> {
public:
    static constexpr std::string_view script_name = "ScriptMap";
    static void bind(StaticMemberSet<ScriptMap>& members);

    using Pairs = std::map<ScriptValue, ScriptValue, KeyOrder>;

    ScriptMap() = default;
    /// Keys and values in turn; of equal keys the last one counts. DSError for a key without a value.
    explicit ScriptMap(Arguments keys_and_values);
    ScriptMap(const ScriptMap&) = default;
    ScriptMap& operator=(const ScriptMap& other);
    ~ScriptMap() override;

    std::size_t size() const { return pairs_.size(); }
    bool empty() const { return pairs_.empty(); }
    const Pairs& pairs() const { return pairs_; }
    /// Void for an unknown key.
    ScriptValue find(const ScriptValue& key) const;
    bool contains(const ScriptValue& key) const { return pairs_.contains(key); }
    /// Replaces the value of an equal key; the key stays then. By value: they may come from this map.
    void insert(ScriptValue key, ScriptValue value);
    /// Nothing happens for an unknown key.
    void remove(const ScriptValue& key);
    void clear();

    /// Calls `function` with key and value of each pair of a copy: it may change the map as it likes.
    void for_each(const ScriptValue& function) const;
    /// Calls `test` with key and value of each pair of a copy and then removes those where the result was true. If the
    /// call fails for one of them nothing is removed. Pairs that `test` itself puts in or gives another value stay.
    void delete_if(const ScriptValue& test);

    ScriptValue copy() const { return make_script_owned<ScriptMap>(*this); }
    ScriptValue iterator();

private:
    /// Moves a pair's key and value to `gone`.
    void take(Pairs::iterator pair, std::vector<ScriptValue>& gone);
    std::vector<std::array<ScriptValue, 2>> snapshot() const;

    Pairs pairs_;
};

/// One pair, as it was when the iterator came to it.
class ScriptMapItem : public Bound<ScriptMapItem> {
public:
    static constexpr std::string_view script_name = "ScriptMapItem";
    static void bind(StaticMemberSet<ScriptMapItem>& members);

    ScriptMapItem(ScriptValue key, ScriptValue value) : key_(std::move(key)), value_(std::move(value)) {}
    const ScriptValue& key() const { return key_; }
    const ScriptValue& item_value() const { return value_; }

private:
    ScriptValue key_;
    ScriptValue value_;
};

/// Walks the pairs of a map that may change at any time, in ascending order of the keys, and keeps the map alive. What
/// comes next is always the pair with the least key above the one given last, whatever was put in or taken out.
class ScriptMapIterator : public Bound<ScriptMapIterator> {
public:
    static constexpr std::string_view script_name = "ScriptMapIterator";
    static void bind(StaticMemberSet<ScriptMapIterator>& members);

    explicit ScriptMapIterator(ScriptMap& map) : map_(map.value()) {}
    /// The next pair as a ScriptMapItem, void at the end. DSError if the map has been destroyed by its native owner.
    ScriptValue next();

private:
    ScriptValue map_;
    std::optional<ScriptValue> last_key_;
};

} // namespace kst::script
