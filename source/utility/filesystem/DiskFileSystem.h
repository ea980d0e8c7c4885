#pragma once

#include "source/utility/filesystem/FileSystem.h"

#include <memory>
#include <string>

namespace kst {

/// A directory of the host and all below it. With an empty root, paths are the host's own: relative ones begin at the
/// current directory.
///
/// The disk may tell cases apart, the name space does not: a path in any case reaches the file that is there (see
/// find_host_path), and a new file gets the name as given, in the directory that is there. `locate` and `system_path`
/// answer in the spelling of the disk.
class DiskFileSystem : public FileSystem {
public:
    explicit DiskFileSystem(const std::string& root = {});
    ~DiskFileSystem() override;

    /// A root with a leading separator is absolute.
    virtual void set_root(const std::string& path);
    /// Normalised with a trailing backslash, or empty.
    const std::string& root() const { return root_; }

    bool exists(const std::string& path) override;
    bool is_dir(const std::string& path) override;
    std::string locate(const std::string& path, std::int64_t& offset, std::int32_t& size) override;
    std::string system_path(const std::string& path) override;
    std::string full_path(const std::string& path) override;
    Archive open(const std::string& path, const std::string& mode) override;
    bool make_dir(const std::string& path) override;
    bool delete_file(const std::string& path) override;
    void list(std::vector<std::string>& names, const std::string& path, const std::string& patterns,
              bool want_directories) override;
    std::uint64_t last_modified(const std::string& path) override;
    FileSystem* from_host_root() override;

private:
    std::string host_path(const std::string& path) const;

    std::string root_;      ///< as `root` tells it
    std::string host_root_; ///< as it was given, so that an exact spelling finds its own directory
    std::unique_ptr<FileSystem> host_root_view_;
};

} // namespace kst
