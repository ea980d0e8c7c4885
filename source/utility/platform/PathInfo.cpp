#include "source/utility/platform/PathInfo.h"

#include "source/utility/platform/FileTime.h"
#include "source/utility/platform/HostPath.h"

#include <cerrno>
#include <sys/stat.h>

namespace kst::platform {

PathResult path_info(const std::string& path, PathInfo& info) {
    if (!is_host_path(path))
        return PathResult::missing;
    struct stat status = {};
    if (::stat(host_path(path).c_str(), &status) != 0)
        return errno == ENOENT || errno == ENOTDIR ? PathResult::missing : PathResult::failed;
    info.is_directory = S_ISDIR(status.st_mode);
    info.size = status.st_size;
    info.last_modified = file_time(status.st_mtim.tv_sec, status.st_mtim.tv_nsec);
    info.identity = {.device = status.st_dev, .number = status.st_ino};
    return PathResult::ok;
}

bool is_directory(const std::string& path) {
    PathInfo info;
    return path_info(path, info) == PathResult::ok && info.is_directory;
}

bool is_link(const std::string& path) {
    struct stat status = {};
    return is_host_path(path) && ::lstat(host_path(path).c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

} // namespace kst::platform
