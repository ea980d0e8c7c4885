#pragma once

#include <string>
#include <string_view>

namespace kst::platform {

/// The path as the host's calls want it: both slashes separate, bytes are UTF-8 and otherwise kept as they are. Every
/// operation of this folder takes paths in either spelling and converts them itself.
std::string host_path(std::string_view path);

/// False for a path that no host call can take as a whole, because it holds a zero byte. Nothing exists there.
bool is_host_path(std::string_view path);

} // namespace kst::platform
