#pragma once

#include "objects/database/PersistentObject.h"

#include <cstdint>
#include <map>
#include <memory>

namespace kst {

/// Makes a default-constructed object.
using ObjectCreator = std::unique_ptr<PersistentObject> (*)();

/// Which class a type identifier of a stream stands for. One instance at a time; it is the process's while it lives.
/// Fill it at start-up, see register_object_classes.
class ObjectCreatorTable {
public:
    /// Throws AssertionException if the process already has one.
    ObjectCreatorTable();
    ObjectCreatorTable(const ObjectCreatorTable&) = delete;
    ObjectCreatorTable& operator=(const ObjectCreatorTable&) = delete;
    ~ObjectCreatorTable();

    /// Null while there is none.
    static ObjectCreatorTable* instance();

    /// An identifier that is already there keeps its first function.
    void register_creator(std::uint32_t type_id, ObjectCreator creator) { creators_.emplace(type_id, creator); }
    /// Null for an unknown identifier.
    ObjectCreator find(std::uint32_t type_id) const;

private:
    std::map<std::uint32_t, ObjectCreator> creators_;
};

} // namespace kst
