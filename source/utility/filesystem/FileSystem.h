#pragma once

#include "source/utility/Archive.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kst {

/// A name space of files. Paths are UTF-8; see normalize_path for when two are the same.
class FileSystem {
public:
    FileSystem() = default;
    FileSystem(const FileSystem&) = delete;
    FileSystem& operator=(const FileSystem&) = delete;
    virtual ~FileSystem() = default;

    virtual bool exists(const std::string& path) = 0;
    virtual bool is_dir(const std::string& path);
    /// The host file that holds the path, and where in it.
    virtual std::string locate(const std::string& path, std::int64_t& offset, std::int32_t& size) = 0;
    virtual std::string system_path(const std::string& path) = 0;
    virtual std::string full_path(const std::string& path) = 0;
    /// A failed archive (null store) for a missing file.
    virtual Archive open(const std::string& path, const std::string& mode) = 0;
    virtual bool make_dir(const std::string& path) = 0;
    virtual bool delete_file(const std::string& path) = 0;
    /// Appends names without directory. `patterns` are separated by ";".
    virtual void list(std::vector<std::string>& names, const std::string& path, const std::string& patterns,
                      bool want_directories) = 0;
    /// True: the path is hidden in all file systems behind this one.
    virtual bool masks(const std::string& path);
    virtual bool is_read_only();
    /// 100 ns ticks since 1601; 0 if there is no such file.
    virtual std::uint64_t last_modified(const std::string& path) = 0;
};

} // namespace kst
