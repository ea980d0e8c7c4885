#pragma once

#include "source/utility/filesystem/BundleDirectory.h"
#include "source/utility/filesystem/FileSystem.h"

#include <string>

namespace kst {

class VirtualFileSystem;

/// Serves the files of one bundle, read-only. While no bundle is loaded, or the virtual file system has bundles
/// switched off, nothing is found. A deleted entry masks its path: the file systems behind do not show it either.
class BundleFileSystem : public FileSystem {
public:
    enum class Kind { level, custom_level };
    static constexpr const char* patch_name = "patch";

    /// `files` is where bundles are looked up. Not owned.
    explicit BundleFileSystem(VirtualFileSystem& files) : files_(&files) {}

    /// Loads "bundles\NAME.bundle", or "custom_levels\NAME.bundle" for a custom level; where that is missing,
    /// "bundles\quick.bundle". False: neither is there, and nothing is loaded now. Throws ErrorWithCStack that names
    /// the bundle if its directory is damaged; nothing is loaded then either.
    bool load(const std::string& name, Kind kind = Kind::level);
    /// Loads the bundle at a path of the virtual file system.
    bool load_file(const std::string& path);
    void unload();
    const BundleDirectory& directory() const { return directory_; }

    bool exists(const std::string& path) override;
    bool is_dir(const std::string& path) override;
    std::string locate(const std::string& path, std::int64_t& offset, std::int32_t& size) override;
    /// What lies in a bundle has no path of its own on the host: gives the path unchanged.
    std::string system_path(const std::string& path) override;
    std::string full_path(const std::string& path) override;
    /// A failed archive for a directory, an empty or missing file, and any mode that writes.
    Archive open(const std::string& path, const std::string& mode) override;
    bool make_dir(const std::string& path) override;
    bool delete_file(const std::string& path) override;
    /// In the order of the names' bytes.
    void list(std::vector<std::string>& names, const std::string& path, const std::string& patterns,
              bool want_directories) override;
    bool masks(const std::string& path) override;
    bool is_read_only() override { return true; }
    /// The time of the bundle's file.
    std::uint64_t last_modified(const std::string& path) override;

private:
    const BundleEntry* find(const std::string& path) const;
    const BundleEntry* find_present(const std::string& path) const;

    VirtualFileSystem* files_;
    std::string bundle_path_;
    std::uint64_t bundle_time_ = 0;
    Archive archive_; ///< without a store while no bundle is loaded
    BundleDirectory directory_;
};

} // namespace kst
