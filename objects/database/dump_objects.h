#pragma once

#include "objects/database/PersistentForm.h"
#include "source/utility/Archive.h"

#include <ostream>
#include <span>

namespace kst {

/// Prints the object stream at the archive's position, a line an object:
///
///     LookAtRotationController 0x22126DC0 ref=7 size=17 name="gaze" roll=0 target=3 object=4
///
/// The class's name and type identifier, its reference number, the size of its data, its name, then its own fields as
/// DumpForm prints them. Bytes behind the last field are told as ` unread=COUNT`. Objects are read one at a time and
/// not kept.
///
/// `classes` is the table of classes that are known; of rows with one identifier the first one counts. Fails as
/// ObjectDatabase::load_content would, with the archive's name and, for a class that is not in the table, its identifier
/// in the text; lines of the objects ahead of the fault are on `out` then.
void dump_objects(Archive& archive, std::span<const PersistentClass> classes, std::ostream& out);

} // namespace kst
