#pragma once

#include "driver/plan/PlanRoots.h"

#include <string>
#include <vector>

namespace mosaicer {

/// The files of the split sets that runs with these patterns make, each once, in the order of writing: the sets are
/// packed, which needs sizes of textures alone. Throws what the reader and the packers throw.
std::vector<std::string> split_set_outputs(const PlanRoots& roots, const std::vector<std::string>& patterns);

} // namespace mosaicer
