#pragma once

#include "objects/database/PersistentObject.h"
#include "source/utility/Archive.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace kst {

/// What stands ahead of each object's data in a stream.
struct ObjectHeader {
    std::uint32_t type_id = 0;
    std::uint32_t reference = 0; ///< its reference number: not 0, unique in the stream
    std::uint32_t size = 0;      ///< of the data that follow, in bytes
};

/// A list of objects that refer to each other, and its stream. Numbers have 32 bits, little-endian:
///
///     count                                     of objects
///     type, reference, size, data of that size  for each: ObjectHeader, then what its `save` wrote
///
/// A reference inside the data is the number of an object of the stream, or 0 for a null pointer.
class ObjectDatabase {
public:
    /// In stream order. The database owns its objects, which do not own each other; to keep one, take it out.
    std::vector<std::unique_ptr<PersistentObject>> objects;

    /// Writes all objects at the archive's position, which ends behind them. Reference numbers are 1, 2, 3 and so on in
    /// stream order, so the same graph always gives the same bytes. Each object's data are gathered in memory, with a
    /// `save` free to move about in its window, and go out a megabyte at a time.
    ///
    /// Throws UnkownReferenceError "Object NAME tried to create a reference to an unkown object!" where an object
    /// refers to one that is not in `objects`, ErrorWithCStack for a null among `objects`, before anything is written,
    /// and for an object with 2 GiB of data, and what the archive throws. The output is cut off at some place then.
    void save_content(Archive& archive) const;

    /// Appends the objects of a stream that begins at the archive's position, which ends behind them. They are made by
    /// the process's ObjectCreatorTable; once all references are resolved, `post_load` is called on every object of
    /// `objects`, in order. A reference to an object of another class than the pointer's is null.
    ///
    /// Throws ErrorWithCStack "ObjectDatabase::load_content() unknown object type", "ReferenceMap::check_unresolved()
    /// The reference map contains unresolved references" and what register_ref throws, std::range_error where a count
    /// or a size reaches past the end of the archive, and AssertionException while there is no table. What was loaded
    /// by then stays in `objects`, its references filled as far as they were known and the others as the objects'
    /// constructors left them, and without `post_load`.
    ///
    /// On a disk file, open it with mode "rc": its values are read one by one.
    void load_content(Archive& archive);
};

/// How many objects the archive has room for behind its position, at most `count`: what may be reserved on a count's
/// word.
std::uint32_t expected_objects(const Archive& archive, std::uint32_t count);

} // namespace kst
