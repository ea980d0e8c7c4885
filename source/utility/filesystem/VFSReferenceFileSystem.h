#pragma once

#include "source/utility/filesystem/FileSystem.h"

#include <string>

namespace kst {

class VirtualFileSystem;

/// A directory of the name space under a second path. Read-only. While it is looking for a path it is not part of the
/// name space itself: mounted inside the directory that it shows, it does not look through itself without end.
class VFSReferenceFileSystem : public FileSystem {
public:
    /// The target is not owned and must outlive this.
    VFSReferenceFileSystem(VirtualFileSystem& target, const std::string& virtual_path);

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
    bool is_read_only() override { return true; }
    std::uint64_t last_modified(const std::string& path) override;

private:
    template <typename Result, typename Call>
    Result forward(Result otherwise, Call call);

    VirtualFileSystem* target_;
    std::string prefix_; ///< normalised with a trailing backslash
    bool looking_ = false;
};

} // namespace kst
