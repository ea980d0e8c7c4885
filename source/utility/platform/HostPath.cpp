#include "source/utility/platform/HostPath.h"

#include <algorithm>

namespace kst::platform {

std::string host_path(std::string_view path) {
    std::string result(path);
    std::replace(result.begin(), result.end(), '\\', '/');
    return result;
}

bool is_host_path(std::string_view path) {
    return path.find('\0') == std::string_view::npos;
}

} // namespace kst::platform
