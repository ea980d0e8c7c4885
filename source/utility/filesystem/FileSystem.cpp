#include "source/utility/filesystem/FileSystem.h"

namespace kst {

bool FileSystem::is_dir(const std::string& /*path*/) {
    return false;
}

bool FileSystem::masks(const std::string& /*path*/) {
    return false;
}

bool FileSystem::is_read_only() {
    return false;
}

FileSystem* FileSystem::from_host_root() {
    return nullptr;
}

} // namespace kst
