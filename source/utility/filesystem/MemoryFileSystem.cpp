#include "source/utility/filesystem/MemoryFileSystem.h"

#include "source/utility/Errors.h"
#include "source/utility/FileDataStore.h"

#include <utility>

namespace kst {

namespace {

std::unique_ptr<FileDataStore> open_store(const std::string& path, platform::Access access) {
    return std::make_unique<FileDataStore>(path, platform::Disposition::open_existing, access, ShareMode::read);
}

/// Source trees are often write-protected, and the readers that come this way never write.
std::unique_ptr<FileDataStore> open_store(const std::string& path) {
    try {
        return open_store(path, platform::Access::read_write);
    } catch (const DiskError&) {
        return open_store(path, platform::Access::read);
    }
}

} // namespace

MemoryFileSystem::MemoryFileSystem(std::string path) : path_(std::move(path)) {}

bool MemoryFileSystem::exists(const std::string& /*path*/) {
    return true;
}

std::string MemoryFileSystem::locate(const std::string& /*path*/, std::int64_t& offset, std::int32_t& size) {
    offset = 0;
    size = -1;
    return path_;
}

std::string MemoryFileSystem::system_path(const std::string& /*path*/) {
    return path_;
}

std::string MemoryFileSystem::full_path(const std::string& /*path*/) {
    return path_;
}

Archive MemoryFileSystem::open(const std::string& /*path*/, const std::string& /*mode*/) {
    auto store = open_store(path_);
    if (!store->is_valid())
        throw ErrorWithCStack("Failure opening " + path_);
    return {path_, std::move(store), 0, 0, /*unbounded=*/true};
}

bool MemoryFileSystem::make_dir(const std::string& /*path*/) {
    return false;
}

bool MemoryFileSystem::delete_file(const std::string& /*path*/) {
    return true;
}

void MemoryFileSystem::list(std::vector<std::string>& names, const std::string& /*path*/,
                            const std::string& /*patterns*/, bool /*want_directories*/) {
    names.push_back(path_);
}

std::uint64_t MemoryFileSystem::last_modified(const std::string& /*path*/) {
    return 0;
}

} // namespace kst
