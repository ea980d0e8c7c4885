#pragma once

#include <memory>
#include <string>

#include "objects/stats/StatsBlockManager.h"

namespace kst::tool {

/// The blocks defined under a directory. What is left out of them is told on standard error. Throws CommandFailure if
/// there is no such directory.
std::unique_ptr<StatsBlockManager> load_stats(const std::string& directory);

} // namespace kst::tool
