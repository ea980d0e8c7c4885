#pragma once

#include "objects/database/ObjectCreatorTable.h"
#include "objects/database/PersistentForm.h"

#include <vector>

namespace kst {

/// Every class of this room that can stand in a stream. Of rows with one identifier the first one counts.
std::vector<PersistentClass> object_classes();

/// Enters them in the table, at the start of a program.
void register_object_classes(ObjectCreatorTable& table);

} // namespace kst
