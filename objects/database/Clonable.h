#pragma once

#include "source/utility/image/RTTI.h"

#include <cstdint>
#include <memory>

namespace kst {

class CloneMapping;
class CloneSet;

/// An object that a CloneManager can copy together with all that it refers to.
///
/// References between such objects are plain pointers that own nothing, so a destructor must not follow them.
class Clonable : public RTTI {
public:
    static constexpr std::uint32_t class_type_id = 0x63BE3013;

    bool is_a(std::uint32_t type_id) const override { return type_id == class_type_id; }
    std::uint32_t type_id() const override { return class_type_id; }

    /// Adds each object that this one refers to, by CloneSet::add.
    virtual void collect_references(CloneSet& set) const { static_cast<void>(set); }
    /// A new object of the same class with the same field values, references included. Null, the default: this object
    /// is not copied, and the copy of what refers to it shares it.
    virtual std::unique_ptr<Clonable> clone() const { return nullptr; }
    /// Called on a copy: replaces each reference by CloneMapping::lookup of it.
    virtual void patch_references(const CloneMapping& mapping) { static_cast<void>(mapping); }
    /// Called on each copy after all of them have been patched.
    virtual void clone_finished() {}
};

} // namespace kst
