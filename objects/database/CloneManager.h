#pragma once

#include "objects/database/CloneSet.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <vector>

namespace kst {

/// From the objects of one `CloneManager::clone` to their copies.
class CloneMapping {
public:
    /// The object's copy, or the object itself if it is shared. Null gives null. Throws ErrorWithCStack
    /// "[Kestra:CloneMapping] Reference patching failed." for an object that is not being cloned: one that a
    /// `collect_references` did not name.
    Clonable* lookup(Clonable* object) const;

    /// The same for a typed reference, which is replaced. Null if the copy is of another class.
    template <class T>
    void patch(T*& reference) const {
        reference = dynamic_cast<T*>(lookup(reference));
    }

private:
    friend class CloneManager;

    struct Record {
        Clonable* source = nullptr;
        Clonable* copy = nullptr;
        std::unique_ptr<Clonable> owner; ///< of the copy, until its group takes it; null for a shared object
        bool patched = false;

        bool is_shared() const { return copy == source; }
    };

    void add(Clonable* source);
    Record& record_of(Clonable* source);

    PointerNumbers numbers_;
    std::vector<Record> records_; ///< in the order of discovery, by number
};

/// Copies graphs of objects and owns the copies, group by group.
class CloneManager {
public:
    /// A copy, or an object that a group shares.
    struct Member {
        Clonable* object = nullptr;
        std::unique_ptr<Clonable> owner; ///< null for a shared object, which is not the group's

        bool owned() const { return owner != nullptr; }
    };

    CloneManager() = default;
    CloneManager(const CloneManager&) = delete;
    CloneManager& operator=(const CloneManager&) = delete;
    ~CloneManager() { clear(); }

    /// Copies the objects and everything that they reach, and rewires the copies to each other. An object whose `clone`
    /// gives null is shared. Null among the objects is passed over.
    ///
    /// The group has the copies of `objects` first, in their order, then the others in the order of discovery (see
    /// CloneSet); in these orders they are patched. `clone` and `clone_finished` are called in the order of discovery.
    ///
    /// Throws ErrorWithCStack "[Kestra:CloneManager]Trying to clone a object which does not have cloning mechanism
    /// implemented" for a class that only inherits its base's `clone`, and what CloneMapping::lookup and the objects
    /// throw. There is no group then, and all copies are gone.
    std::uint32_t clone(std::span<Clonable* const> objects);

    /// Destroys the copies of a group, in the group's order. An unknown group does nothing.
    void release(std::uint32_t group);
    void clear();

    /// Empty for an unknown group. Valid until the group is released.
    std::span<const Member> group(std::uint32_t group) const;
    std::size_t group_count() const { return groups_.size(); }

private:
    using Group = std::vector<Member>;

    std::map<std::uint32_t, Group> groups_;
    std::uint32_t next_group_ = 0;
};

} // namespace kst
