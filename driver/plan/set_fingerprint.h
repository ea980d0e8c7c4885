#pragma once

#include "driver/records/AtlasSetDefinition.h"

#include <cstdint>

namespace mosaicer {

/// A number for a finished set with all that it asks for: every setting, every entry, and each texture's path, groups
/// and position. The same on every machine. Sizes in files and pixels have no part in it.
std::uint64_t set_fingerprint(const AtlasSetDefinition& set);

/// The number for a series of sets, in this order.
std::uint64_t combined_fingerprint(std::uint64_t before, std::uint64_t next);

} // namespace mosaicer
