#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "script/value/Library.h"
#include "script/value/ScriptValue.h"

namespace kst::script {

class MemberSet;

/// The base of every native class that a script can see. `value()` makes a script value of an object; its members are
/// those that its class names in a table. Most classes derive through `Bound`, which fills in all but the table: see
/// script/binding/bind.h, also for an example.
///
/// An object knows its values, and they know it, through the table of live native objects: it may be destroyed while
/// values of it exist (they are then dead: conversions give 0, false and the empty string, calls are errors), and it is
/// told when the last one has gone. A copy is an object of its own, with no values and no tag.
class LibraryHelper : public Library, public ScriptInterface {
public:
    class CppClass;

    static constexpr std::int32_t no_handle = -1;

    LibraryHelper() = default;
    LibraryHelper(const LibraryHelper&) noexcept;
    LibraryHelper& operator=(const LibraryHelper&) noexcept { return *this; }
    ~LibraryHelper() override;

    /// The index in the table of live native objects, or no_handle while there is no value of this object.
    std::int32_t handle() const { return handle_; }
    /// A value of this object. While it exists the object must not move; who owns the object does not change.
    ScriptValue value() override;

    /// By default the members, by name.
    bool has(idstring id) override;
    /// The member value; void for an unknown name.
    ScriptValue get(idstring id) override;

    /// What scripts see as the type of the object, "<Timer>".
    virtual std::string type_name() const = 0;
    /// The table that names the members. It must outlive the object; a member may outlive the table.
    virtual const MemberSet& members() const = 0;
    /// The last value has gone. An object that belongs to scripts destroys itself here. Must not throw.
    virtual void on_unreferenced() {}
    /// A strict weak order among native objects. By default the order of construction, which stands for an order by
    /// address and is the same in every run.
    virtual bool less(const LibraryHelper& other) const { return serial_ < other.serial_; }
    /// The object itself called as a function. By default a DSError.
    virtual ScriptValue call(Arguments arguments);

    /// What scripts store at `extension`.
    const ScriptValue& tag() const { return tag_; }
    void set_tag(ScriptValue value) { tag_ = std::move(value); }

private:
    friend class NativeObjects;
    friend class TMFactoryBase;

    /// The index in the table; takes one if there is none.
    std::uint32_t enter();
    static std::uint64_t next_serial();

    std::int32_t handle_ = no_handle;
    /// In the queue of objects that will be told that their last value has gone.
    bool waiting_ = false;
    std::uint64_t serial_ = next_serial();
    ScriptValue tag_;
};

/// The class of the values of all native objects. The data word is the index in the table of live native objects.
class LibraryHelper::CppClass final : public ScriptClass {
public:
    static CppClass& instance();
    /// The object behind any value; null for other values and destroyed objects.
    static LibraryHelper* object_of(const ScriptValue& value);

    void add_ref(Data data) override;
    void release(Data data) override;
    float to_number(Data data) override;
    std::string to_string(Data data) override;
    bool to_boolean(Data data) override;
    ScriptValue call(Data data, Arguments arguments) override;
    /// Void for a destroyed object, as for one without a tag.
    ScriptValue get_tag(Data data) override;
    void set_tag(Data data, const ScriptValue& value) override;
    ScriptValue member(Data data, idstring id, bool must_exist) override;
    bool has_member(Data data, idstring id) override;
    bool take_member(ScriptValue& object, idstring id, MemberCache& cache) override;
    /// Destroyed objects come first, by data word; then live ones, in their own order.
    bool less(Data data, const ScriptValue& other) override;
    std::string type_name(Data data) override;
    /// The LibraryHelper.
    void* native_pointer(Data data) override;

private:
    CppClass() : ScriptClass(Counting::pooled) {}
};

/// What calls on a destroyed object throw.
[[noreturn]] void throw_already_destroyed();

} // namespace kst::script
