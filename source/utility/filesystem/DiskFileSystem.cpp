#include "source/utility/filesystem/DiskFileSystem.h"

#include "source/utility/CachedFileDataStore.h"
#include "source/utility/Errors.h"
#include "source/utility/FileDataStore.h"
#include "source/utility/filesystem/find_host_path.h"
#include "source/utility/filesystem/normalize_path.h"
#include "source/utility/filesystem/wildcards.h"
#include "source/utility/platform/Directory.h"
#include "source/utility/platform/PathInfo.h"

#include <algorithm>

namespace kst {

namespace {

using platform::Access;
using platform::Disposition;
using platform::PathResult;

/// Three blocks: one being used, one behind it, one on its way.
constexpr std::int32_t cache_kib = 192;
constexpr std::int32_t cache_block_kib = 64;

/// The host's root as paths with a leading separator mean it. Its full paths keep that separator, so that they lead
/// back here when they are opened again.
class HostRootFileSystem : public DiskFileSystem {
public:
    HostRootFileSystem() : DiskFileSystem("/") {}
    std::string full_path(const std::string& path) override { return "\\" + path; }
};

bool has(const std::string& mode, char letter) {
    return mode.find(letter) != std::string::npos;
}

bool writes(const std::string& mode) {
    return mode.find_first_of("wa+") != std::string::npos;
}

Access access_of(const std::string& mode) {
    if (!writes(mode))
        return Access::read;
    return has(mode, 'r') || has(mode, '+') ? Access::read_write : Access::write;
}

Disposition disposition_of(const std::string& mode) {
    if (has(mode, 'r'))
        return Disposition::open_existing;
    if (has(mode, 'w'))
        return Disposition::create_always;
    return has(mode, 'a') ? Disposition::open_always : Disposition::open_existing;
}

Archive archive_on(const std::string& name, std::unique_ptr<FileDataStoreBase> store, const std::string& mode) {
    if (!store->is_valid())
        return {};
    const std::int64_t size = store->size();
    const std::int64_t base = has(mode, 'a') ? size : 0;
    return {name, std::move(store), base, size - base, writes(mode)};
}

} // namespace

DiskFileSystem::DiskFileSystem(const std::string& root) {
    // Not virtual here: a derived set_root cannot run before its class is built.
    DiskFileSystem::set_root(root);
}

DiskFileSystem::~DiskFileSystem() = default;

void DiskFileSystem::set_root(const std::string& path) {
    root_ = normalize_path(path, /*trailing_separator=*/true, /*keep_leading_separator=*/true);
    host_root_ = path;
    if (!path.empty() && path.back() != '/' && path.back() != '\\')
        host_root_.push_back('/');
}

std::string DiskFileSystem::host_path(const std::string& path) const {
    return find_host_path(host_root_ + path);
}

bool DiskFileSystem::exists(const std::string& path) {
    const std::string host = host_path(path);
    // The empty path of an empty root is the current directory.
    platform::PathInfo info;
    const PathResult result = host.empty() ? PathResult::ok : platform::path_info(host, info);
    if (result == PathResult::failed)
        throw_disk_error("Cannot determine if path exists " + path);
    return result == PathResult::ok;
}

bool DiskFileSystem::is_dir(const std::string& path) {
    const std::string host = host_path(path);
    if (host.empty())
        return true;
    platform::PathInfo info;
    const PathResult result = platform::path_info(host, info);
    if (result == PathResult::failed)
        throw_disk_error("Cannot determine if path is dir " + path);
    return result == PathResult::ok && info.is_directory;
}

std::uint64_t DiskFileSystem::last_modified(const std::string& path) {
    platform::PathInfo info;
    const PathResult result = platform::path_info(host_path(path), info);
    if (result == PathResult::failed)
        throw_disk_error("Cannot determine if path exists " + path);
    return result == PathResult::ok ? info.last_modified : 0;
}

std::string DiskFileSystem::locate(const std::string& path, std::int64_t& offset, std::int32_t& size) {
    offset = 0;
    size = -1;
    return host_path(path);
}

std::string DiskFileSystem::system_path(const std::string& path) {
    return host_path(path);
}

std::string DiskFileSystem::full_path(const std::string& path) {
    return path;
}

Archive DiskFileSystem::open(const std::string& path, const std::string& mode) {
    const std::string host = host_path(path);
    if (has(mode, 'c') && !writes(mode))
        return archive_on(path, std::make_unique<CachedFileDataStore>(host, cache_kib, cache_block_kib), mode);
    return archive_on(
        path, std::make_unique<FileDataStore>(host, disposition_of(mode), access_of(mode), ShareMode::read), mode);
}

bool DiskFileSystem::make_dir(const std::string& path) {
    return platform::make_directory(host_path(path));
}

bool DiskFileSystem::delete_file(const std::string& path) {
    const std::string host = host_path(path);
    return is_dir(path) ? platform::remove_directory(host) : platform::remove_file(host);
}

void DiskFileSystem::list(std::vector<std::string>& names, const std::string& path, const std::string& patterns,
                          bool want_directories) {
    const std::string directory = path.empty() ? path : path + "/";
    for (const std::string& pattern : split_patterns(patterns)) {
        // A pattern may begin with directories of its own.
        const std::string_view name_pattern = file_name_of(pattern);
        const std::string above = pattern.substr(0, pattern.size() - name_pattern.size());
        std::vector<platform::DirectoryEntry> entries;
        if (platform::list_directory(host_path(directory + above), entries) == PathResult::failed)
            throw_disk_error("Cannot list dir " + path);
        for (const auto& entry : entries)
            if (entry.is_directory == want_directories && fits_pattern(entry.name, name_pattern))
                names.push_back(entry.name);
    }
}

FileSystem* DiskFileSystem::from_host_root() {
    if (!host_root_.empty())
        return nullptr;
    if (!host_root_view_)
        host_root_view_ = std::make_unique<HostRootFileSystem>();
    return host_root_view_.get();
}

} // namespace kst
