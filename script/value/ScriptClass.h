#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "script/value/MemberCache.h"
#include "source/utility/xml/idstring.h"

namespace kst::script {

class ScriptValue;

/// The arguments of a call, first one first. The view lives as long as the call does, also while the callee runs
/// scripts of its own.
using Arguments = std::span<const ScriptValue>;

/// The classes that the interpreter treats without a virtual call; every other class is `other`.
enum class ClassKind : std::uint8_t {
    plain_void,
    boolean,
    number,
    string,
    function,
    method,
    factory,
    instance,
    local_ref,
    member_ref,
    global_ref,
    other
};

/// Whether values of a class have storage behind them that `add_ref` and `release` must hear of.
enum class Counting : std::uint8_t { none, pooled };

/// The behaviour of all values of one type. There is one object per type, which lives to the end of the process; what
/// differs from value to value is in the 32-bit data word, or in the class's pool at the index that the word holds.
///
/// The class itself, with nothing overridden, is the class of void. Defaults: conversions give 0, the empty string and
/// false, everything else throws DSError with a text that names the type.
class ScriptClass {
public:
    using Data = std::uint32_t;

    /// For the few classes that stand ready before the program starts; `order` must be below first_running_number.
    constexpr ScriptClass(ClassKind kind, Counting counting, std::uint32_t order)
        : order_(order), kind_(kind), counted_(counting == Counting::pooled) {}
    explicit ScriptClass(Counting counting, ClassKind kind = ClassKind::other);
    ScriptClass(const ScriptClass&) = delete;
    ScriptClass& operator=(const ScriptClass&) = delete;
    constexpr virtual ~ScriptClass() = default;

    ClassKind kind() const { return kind_; }
    /// False: add_ref and release do nothing, and need not be called.
    bool counted() const { return counted_; }
    /// A running number that stands for the class's address, so that the order of values of different classes is the
    /// same in every run.
    std::uint32_t order() const { return order_; }

    virtual void add_ref(Data data);
    virtual void release(Data data);
    virtual float to_number(Data data);
    virtual std::string to_string(Data data);
    virtual bool to_boolean(Data data);
    virtual idstring to_id(Data data);
    virtual void set(Data data, const ScriptValue& value);
    virtual ScriptValue call_method(Data data, idstring id, Arguments arguments);
    virtual ScriptValue call(Data data, Arguments arguments);
    virtual ScriptValue get_tag(Data data);
    virtual void set_tag(Data data, const ScriptValue& value);
    /// `type_string` gives the type's name. For any other name: MemberNotFoundError if the member must exist, else
    /// void. The names that hold for every value are answered before, by ScriptValue::member.
    virtual ScriptValue member(Data data, idstring id, bool must_exist);
    virtual bool has_member(Data data, idstring id);
    /// Member access for a call that follows at once: turns `object`, a value of this class, into its member and says
    /// true, where that takes less than making the member and letting go of the object. By default it does not. Never for
    /// universal members. The cache is that of the place in the code, and always comes with the same name.
    virtual bool take_member(ScriptValue& object, idstring id, MemberCache& cache);
    virtual ScriptValue add(Data data, const ScriptValue& right);
    virtual ScriptValue subtract(Data data, const ScriptValue& right);
    virtual ScriptValue multiply(Data data, const ScriptValue& right);
    virtual ScriptValue divide(Data data, const ScriptValue& right);
    virtual ScriptValue remainder(Data data, const ScriptValue& right);
    /// A strict weak order over values of all classes: by the classes' numbers, within one class by the data word.
    virtual bool less(Data data, const ScriptValue& other);
    virtual std::string type_name(Data data);
    /// What a reference stands for; any other value gives itself.
    virtual ScriptValue clone(Data data);
    /// The native object behind the value, or null. The caller knows its type.
    virtual void* native_pointer(Data data);
    virtual void instance_hook(Data data);

private:
    std::uint32_t order_;
    ClassKind kind_;
    bool counted_;
};

} // namespace kst::script
