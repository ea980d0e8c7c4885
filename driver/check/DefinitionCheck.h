#pragma once

#include "driver/check/Finding.h"

#include <string>
#include <vector>

namespace mosaicer {

/// Reads what a run with these arguments would read, and tells what it would pass over without a word or fail on late.
///
/// The definition is walked by the reader's own attribute tables and keywords, textures are indexed by the run's index
/// (of every file the header alone), and sets are packed by the packing drivers, on paper. Nothing is written. A fault
/// that would end the run does not end the check. Findings are sorted by file, line and kind.
///
/// The disk must be mounted at the root of the process's virtual file system.
std::vector<Finding> check_definition(const std::string& textures_root, const std::string& definition_path);

} // namespace mosaicer
