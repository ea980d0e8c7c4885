#pragma once

#include <string>
#include <vector>

namespace mosaicer {

/// One name of a directory, taken apart as the texture index needs it.
struct DirectoryEntry {
    std::string name;
    std::string path;      ///< directory and name, joined by a slash
    std::string base;      ///< name before the last dot; the whole name of a directory or without a dot
    std::string extension; ///< behind the last dot, case kept; empty for a directory or without a dot
    bool is_directory = false;
};

/// Everything in a directory but "." and "..", names in ascending byte order. Empty if it can't be read.
std::vector<DirectoryEntry> list_directory(const std::string& directory);

} // namespace mosaicer
