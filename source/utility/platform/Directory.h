#pragma once

#include "source/utility/platform/PathInfo.h"

#include <string>
#include <vector>

namespace kst::platform {

struct DirectoryEntry {
    std::string name;          ///< without directory, bytes as on disk
    bool is_directory = false; ///< also for a link that leads to one
};

/// All names of a directory but "." and "..", hidden ones too, sorted by their bytes, so that the same tree gives the
/// same list on every disk. `failed`: the directory cannot be read; `entries` is then empty.
///
/// A walk that follows directories may come back to where it was by a link: compare `path_info(...).identity` of a
/// directory with those above it.
PathResult list_directory(const std::string& path, std::vector<DirectoryEntry>& entries);

/// False: it could not be made, or something of that name is there.
bool make_directory(const std::string& path);
/// Removes an empty directory, or the link and not what it leads to.
bool remove_directory(const std::string& path);
bool remove_file(const std::string& path);
/// Puts the file in the place of `to`, which is replaced at one stroke if it was there.
bool rename_file(const std::string& from, const std::string& to);

} // namespace kst::platform
