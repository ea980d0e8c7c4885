#pragma once

#include <compare>
#include <cstdint>
#include <string>

namespace kst::platform {

/// Tells files and directories apart whatever they are called: a directory met again under a link has the same one.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    // NOLINTNEXTLINE(modernize-use-nullptr): the comparison's own 0 is no pointer
    auto operator<=>(const FileIdentity&) const = default;
};

/// Links are followed: all of this is told of what the path leads to.
struct PathInfo {
    bool is_directory = false;
    std::int64_t size = 0;
    std::uint64_t last_modified = 0; ///< 100 ns ticks since 1601
    FileIdentity identity;
};

/// `missing`: the path or a directory above it is not there, or a link leads nowhere. `failed`: the host does not tell.
enum class PathResult { ok, missing, failed };

PathResult path_info(const std::string& path, PathInfo& info);

/// False too for what the host does not tell of.
bool is_directory(const std::string& path);

/// The path itself is a symbolic link, wherever it leads.
bool is_link(const std::string& path);

} // namespace kst::platform
