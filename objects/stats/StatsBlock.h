#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "objects/database/PersistentObject.h"
#include "script/binding/bind.h"
#include "script/runtime/ScriptMap.h"

namespace kst {

struct StatsBlockInfo;

/// A record whose variables are declared by data. Scripts read and assign them as properties, `orc.health := 5`.
///
/// A block is built by `add_value` and closed by `finish`; copies share what describes it. In a stream it is its name
/// alone, so what is loaded is a block without variables. An object variable that leads back to its own block, on whatever way, keeps both alive for ever.
class StatsBlock : public PersistentObject, public script::Bound<StatsBlock> {
public:
    static constexpr std::uint32_t class_type_id = 0x185328D0;
    static constexpr std::string_view script_name = "StatsBlock";
    static void bind(script::StaticMemberSet<StatsBlock>& members);

    class Value;
    class NumberValue;
    class StringValue;
    class BoolValue;
    class ObjectValue;
    class ListValue;
    class VectorValue;
    class MapValue;

    StatsBlock();
    /// Every value of its own kind; the description is shared. The copy is nobody's in particular: see make_new.
    StatsBlock(const StatsBlock& other);
    StatsBlock& operator=(const StatsBlock&) = delete;
    ~StatsBlock() override;

    bool is_a(std::uint32_t type_id) const override {
        return type_id == class_type_id || PersistentObject::is_a(type_id);
    }
    std::uint32_t type_id() const override { return class_type_id; }

    /// The variable's index, or -1 for a finished block, which takes none.
    std::int32_t add_value(std::unique_ptr<Value> value);
    /// Makes the variables properties. Of two with one name the first counts; a variable hides a member of the class.
    void finish();
    bool is_finished() const;

    const std::vector<std::unique_ptr<Value>>& values() const { return values_; }
    bool write_protected() const { return write_protected_; }
    void set_write_protected(bool write_protected) { write_protected_ = write_protected; }

    /// The first variable of that name, or -1.
    std::int32_t find_value(std::string_view name) const;
    /// Void for an index out of range.
    script::ScriptValue get_value(std::int32_t index) const;
    /// Nothing happens while the block is write-protected, or for an index out of range. Throws script::DSError where
    /// the variable cannot take the value.
    void set_value(std::int32_t index, const script::ScriptValue& value);
    /// A new ScriptMap from the variables' names to their values.
    script::ScriptValue get_values_as_map() const;
    /// Keys that are no variable's name are skipped.
    void set_values_from_map(const script::ScriptMap& map);
    /// Copies value by value, as scripts would, and stops at the first pair whose kinds or names differ. Nothing
    /// happens if the blocks do not have the same number of values. Write protection is not asked for.
    void assign(const StatsBlock& other);
    /// The same number of values, and each pair has the same kind, name and value.
    bool compare(const StatsBlock& other) const;
    /// A copy that belongs to scripts: it goes with the last value of it.
    script::ScriptValue make_new() const;

    /// "<Statsblock:NAME>"
    std::string type_name() const override;
    const script::MemberSet& members() const override;
    void on_unreferenced() override;

private:
    bool write_protected_ = false;
    std::shared_ptr<StatsBlockInfo> shared_info_;
    std::vector<std::unique_ptr<Value>> values_;
    bool script_owned_ = false;
};

} // namespace kst
