#include "source/utility/platform/Directory.h"

#include "source/utility/platform/HostPath.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace kst::platform {

namespace {

struct CloseDirectory {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

/// The listing mostly tells the kind; links, and disks that tell nothing, take a look at the entry itself.
bool leads_to_directory(DIR* directory, const dirent& entry) {
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN)
        return entry.d_type == DT_DIR;
    struct stat status = {};
    return ::fstatat(::dirfd(directory), entry.d_name, &status, 0) == 0 && S_ISDIR(status.st_mode);
}

} // namespace

PathResult list_directory(const std::string& path, std::vector<DirectoryEntry>& entries) {
    entries.clear();
    if (!is_host_path(path))
        return PathResult::missing;
    const std::string directory_path = path.empty() ? "." : host_path(path);
    const std::unique_ptr<DIR, CloseDirectory> directory(::opendir(directory_path.c_str()));
    if (!directory)
        return errno == ENOENT || errno == ENOTDIR ? PathResult::missing : PathResult::failed;
    errno = 0;
    // One stream has one reader here, so the plain call is safe.
    while (const dirent* entry = ::readdir(directory.get())) { // NOLINT(concurrency-mt-unsafe)
        const std::string name = entry->d_name;
        if (name != "." && name != "..")
            entries.push_back({.name = name, .is_directory = leads_to_directory(directory.get(), *entry)});
        errno = 0;
    }
    if (errno != 0) {
        entries.clear();
        return PathResult::failed;
    }
    std::sort(entries.begin(), entries.end(),
              [](const DirectoryEntry& a, const DirectoryEntry& b) { return a.name < b.name; });
    return PathResult::ok;
}

bool make_directory(const std::string& path) {
    return is_host_path(path) && ::mkdir(host_path(path).c_str(), 0777) == 0;
}

bool remove_directory(const std::string& path) {
    if (!is_host_path(path))
        return false;
    const std::string host = host_path(path);
    return is_link(path) ? ::unlink(host.c_str()) == 0 : ::rmdir(host.c_str()) == 0;
}

bool remove_file(const std::string& path) {
    return is_host_path(path) && ::unlink(host_path(path).c_str()) == 0;
}

bool rename_file(const std::string& from, const std::string& to) {
    return is_host_path(from) && is_host_path(to) && std::rename(host_path(from).c_str(), host_path(to).c_str()) == 0;
}

} // namespace kst::platform
