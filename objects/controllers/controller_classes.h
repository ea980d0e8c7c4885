#pragma once

#include "objects/database/PersistentForm.h"

#include <span>

namespace kst {

/// All controllers, in the order of their families.
std::span<const PersistentClass> controller_classes();

} // namespace kst
