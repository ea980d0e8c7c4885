#include "source/utility/platform/ProgramPath.h"

#include <filesystem>
#include <system_error>

namespace kst::platform {

std::string program_path() {
    std::error_code unknown;
    const std::filesystem::path path = std::filesystem::read_symlink("/proc/self/exe", unknown);
    return unknown ? std::string() : path.string();
}

} // namespace kst::platform
