#pragma once

#include <string>
#include <vector>

#include "script/value/IndexPool.h"
#include "script/vm/ScriptVM.h"

namespace kst::script {

/// A class of a program, and the pool of its objects.
///
/// An object is counted by its instance record (one for all ClassInstance values of the object) and by its method
/// values, see ClassMethod. When the count reaches 0 its members go.
class ScriptVM::ScriptedClassBase {
public:
    static constexpr std::uint32_t no_instance = 0xffffffff;

    ScriptedClassBase(ScriptVM& vm, idstring name) : vm_(vm), name_(name) {
        static std::uint64_t classes = 0;
        serial_ = ++classes;
    }
    /// Never 0, and never that of another class, also of one that is gone.
    std::uint64_t serial() const { return serial_; }

    void set_number(std::uint32_t number) { number_ = number; }
    const std::string& name() const { return idstring_text(name_); }
    ScriptVM& vm() const { return vm_; }

    void declare_object(idstring name);
    void declare_method(idstring name, const Instruction& start);

    /// The index of a member, or NameTable::not_found.
    std::uint32_t find_member(idstring name) { return names_.find(name); }

    /// Where a method begins; null for other members.
    const Instruction* start_of(std::uint32_t member) const { return starts_[member]; }

    /// A fresh object, its methods bound, its other members void.
    ScriptValue make_object();
    /// The value of an existing object.
    ScriptValue instance_of(std::uint32_t object);

    void add_object_ref(std::uint32_t object) { objects_.add_ref(object); }
    void release_object(std::uint32_t object);
    bool is_live(std::uint32_t object) const { return objects_.is_live(object); }
    std::size_t live_objects() const { return objects_.live(); }
    std::vector<ScriptValue>& members(std::uint32_t object) { return objects_[object].members; }

    /// The instance record of the object has gone.
    void forget_instance(std::uint32_t object) { objects_[object].instance = no_instance; }
    /// Lets go of all members of all objects; the program ends.
    void clear_objects();

private:
    struct Object {
        std::vector<ScriptValue> members;
        std::uint32_t instance = no_instance;
    };

    ScriptVM& vm_;
    idstring name_;
    std::uint32_t number_ = 0; ///< In the program registry.
    std::uint64_t serial_ = 0;
    std::vector<const Instruction*> starts_; ///< A member each, null for objects.
    NameTable names_;
    IndexPool<Object> objects_;
};

} // namespace kst::script
