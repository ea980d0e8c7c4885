#pragma once

#include "objects/database/Clonable.h"
#include "source/utility/Archive.h"
#include "source/utility/xml/idstring.h"

namespace kst {

class ReferenceMap;

/// An object that a stream can hold. In the stream its data begins with the text of its name and a zero byte.
///
/// A class with fields of its own is best written with Persistent (objects/database/PersistentForm.h), which makes
/// `load`, `save` and what a dump shows from one list of fields.
class PersistentObject : public Clonable {
public:
    static constexpr std::uint32_t class_type_id = 0x2EB43C77;

    bool is_a(std::uint32_t type_id) const override { return type_id == class_type_id || Clonable::is_a(type_id); }
    std::uint32_t type_id() const override { return class_type_id; }

    /// Reads the object's data. The archive is a window on them alone. A derived class calls its base's `load` first.
    /// A reference is stored as a number; `load_reference` has its pointer filled, at once or when its target arrives,
    /// so the object must stay where it is.
    virtual void load(Archive& archive, ReferenceMap& references);
    /// Writes the same data in the same order. A derived class calls its base's `save` first.
    virtual void save(Archive& archive, ReferenceMap& references) const;
    /// Called on each object after every reference of the stream has been resolved.
    virtual void post_load() {}

    idstring name() const { return name_; }
    void set_name(idstring name) { name_ = name; }

private:
    idstring name_ = 0;
};

} // namespace kst
