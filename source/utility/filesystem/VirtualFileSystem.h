#pragma once

#include "source/utility/filesystem/FileSystem.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace kst {

/// The name space that all of a process's file names live in: file systems mounted at path prefixes, a later mount
/// before an earlier one. One instance at a time; it is the process's while it lives.
///
/// A path that begins with a separator, where a mount at the root begins at the host's current directory, is absolute
/// on the host. It reads what is at that place of the host, or else what is below the current directory; it writes and
/// deletes at that place as soon as its directory is there. A path of separators only is the root of the name space.
/// Everything that is mounted is asked by normalised paths without leading separator, whatever the spelling given.
///
/// Mounts are not locked: change them only while no other thread reads files.
class VirtualFileSystem : public FileSystem {
public:
    /// Throws AssertionException if the process already has one.
    VirtualFileSystem();
    /// Destroys the file systems that it owns.
    ~VirtualFileSystem() override;

    /// Null while there is none.
    static VirtualFileSystem* instance();

    /// Mounts at a path prefix, "/" being the root, and gives the mount's id. With `owned` the file system is destroyed
    /// at its unmount; without, it must outlive it.
    std::int32_t mount(const std::string& path, FileSystem* file_system, bool owned);
    std::int32_t mount_directory(const std::string& path, const std::string& host_directory);
    /// Shows a directory of the name space at a second place, read-only.
    std::int32_t mount_reference(const std::string& path, const std::string& virtual_path);
    /// An unknown id does nothing.
    void unmount(std::int32_t id);

    /// While on, each `open` appends a line to "bundles/SCRIPT.xml" below the root's host directory: a record from
    /// which bundles are made.
    void set_tracing(bool tracing);
    /// The trace is named after the file name of this path.
    void set_script(const std::string& path);
    /// While off, mounted bundles find nothing and nothing is traced.
    void enable_bundles(bool enabled) { bundles_enabled_ = enabled; }
    bool bundles_enabled() const { return bundles_enabled_; }

    bool exists(const std::string& path) override;
    bool is_dir(const std::string& path) override;
    /// These three give the path unchanged if nothing has it.
    std::string locate(const std::string& path, std::int64_t& offset, std::int32_t& size) override;
    std::string system_path(const std::string& path) override;
    std::string full_path(const std::string& path) override;
    /// "r" without "+" reads from the first file system that has the path, down to one that masks it; any other mode
    /// opens in the first one that is not read-only.
    Archive open(const std::string& path, const std::string& mode) override;
    bool make_dir(const std::string& path) override;
    bool delete_file(const std::string& path) override;
    /// The names of all mounts, each once in its first spelling, in the order of their first appearance.
    void list(std::vector<std::string>& names, const std::string& path, const std::string& patterns,
              bool want_directories) override;
    std::uint64_t last_modified(const std::string& path) override;

private:
    struct MountPoint {
        std::string path; ///< normalised with a trailing backslash, empty for the root
        FileSystem* file_system = nullptr;
        bool owned = false;
        std::int32_t id = 0;
    };
    struct Candidate {
        FileSystem* file_system = nullptr;
        std::string path; ///< relative to the mount
    };
    enum class Purpose { reading, writing };

    std::vector<Candidate> resolve(const std::string& path, Purpose purpose) const;
    Candidate find(const std::string& path) const;
    Candidate find_writable(const std::string& path) const;
    void reopen_trace();
    void trace_open(const std::string& path, const std::string& mode);

    std::vector<MountPoint> mounts_;
    bool tracing_ = false;
    bool bundles_enabled_ = true;
    std::array<char, 10'240> trace_buffer_;
    std::ofstream trace_stream_;
    std::string script_name_ = "script_not_set";
};

/// The same on the process's file system. Throw AssertionException while there is none.
bool exists(const std::string& path);
bool is_dir(const std::string& path);
std::uint64_t last_modified(const std::string& path);
Archive open(const std::string& path, const std::string& mode);
std::string full_path(const std::string& path);
std::string system_path(const std::string& path);

} // namespace kst
