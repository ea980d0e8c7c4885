#pragma once

#include "source/utility/Archive.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kst {

/// A name space of files. Paths are UTF-8; see normalize_path for when two are the same.
///
/// An absence is a value: `exists` is false, `open` gives an archive with a null store, a time is 0. What the host
/// refuses for another reason throws DiskError.
class FileSystem {
public:
    FileSystem() = default;
    FileSystem(const FileSystem&) = delete;
    FileSystem& operator=(const FileSystem&) = delete;
    virtual ~FileSystem() = default;

    virtual bool exists(const std::string& path) = 0;
    virtual bool is_dir(const std::string& path);
    /// The host file that holds the path, and where in it. A size of -1 stands for all of the file.
    virtual std::string locate(const std::string& path, std::int64_t& offset, std::int32_t& size) = 0;
    /// The path in the host's own terms, fit for the host's calls.
    virtual std::string system_path(const std::string& path) = 0;
    /// The path inside the file system that holds it.
    virtual std::string full_path(const std::string& path) = 0;
    /// A failed archive (null store) for a missing file. Modes are letters: "r" read, the file must exist; "w" write,
    /// emptying or creating it; "a" write at the end, creating it if need be; "+" read and write; "c" read through a
    /// cache with read-ahead.
    virtual Archive open(const std::string& path, const std::string& mode) = 0;
    virtual bool make_dir(const std::string& path) = 0;
    /// A directory must be empty.
    virtual bool delete_file(const std::string& path) = 0;
    /// Appends names without directory. `patterns` are separated by ";", each is one search, in their order.
    virtual void list(std::vector<std::string>& names, const std::string& path, const std::string& patterns,
                      bool want_directories) = 0;
    /// True: the path is hidden in all file systems behind this one.
    virtual bool masks(const std::string& path);
    virtual bool is_read_only();
    /// 100 ns ticks since 1601; 0 if there is no such file.
    virtual std::uint64_t last_modified(const std::string& path) = 0;
    /// For a file system whose paths begin at the host's current directory: the same host seen from its root, for paths
    /// that were given as absolute. Null for all others. Not owned by the caller.
    virtual FileSystem* from_host_root();
};

} // namespace kst
