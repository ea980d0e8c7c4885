#pragma once

#include "source/utility/filesystem/FileSystem.h"

#include <string>

namespace kst {

/// One host file under any name: every path leads to it. It hands a single file to a reader that asks for a file
/// system.
class MemoryFileSystem : public FileSystem {
public:
    /// A host path: case kept, either slash.
    explicit MemoryFileSystem(std::string path);

    bool exists(const std::string& path) override;
    std::string locate(const std::string& path, std::int64_t& offset, std::int32_t& size) override;
    std::string system_path(const std::string& path) override;
    std::string full_path(const std::string& path) override;
    /// Whatever the mode: for reading and writing if the host allows it, else for reading. The archive has the host
    /// path as name, is unbounded and has size 0, so a read past the end of the file is short and no error. Throws
    /// ErrorWithCStack "Failure opening PATH", with the host path, if the file is missing.
    Archive open(const std::string& path, const std::string& mode) override;
    bool make_dir(const std::string& path) override;
    /// Answers true and deletes nothing.
    bool delete_file(const std::string& path) override;
    void list(std::vector<std::string>& names, const std::string& path, const std::string& patterns,
              bool want_directories) override;
    std::uint64_t last_modified(const std::string& path) override;

private:
    std::string path_;
};

} // namespace kst
