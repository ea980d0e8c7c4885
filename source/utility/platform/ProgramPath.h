#pragma once

#include <string>

namespace kst::platform {

/// The whole path of the file that this process runs, links followed. Empty if the host does not tell.
std::string program_path();

} // namespace kst::platform
