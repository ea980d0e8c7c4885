#pragma once

#include "source/utility/Archive.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kst {

/// The directory of a bundle: one file that carries a tree of directories and the data of its files.
///
/// The header, little-endian like every number here:
///
///     offset  width  content
///     0       4      the letters B N D L (not tested)
///     4       4      version, 1 or 2; of any other version no directory is read
///     8       8      reserved, 0
///
/// The directory follows at offset 16: entries, and behind the last one an end mark. Offsets of data count from the
/// start of the file. A name ends with a zero byte. Flags are 1 for an entry that is present and 0 for a deleted one,
/// which hides its path in the file systems behind.
///
///     version 2: a tag byte, then           version 1: a signed 32-bit value, then
///     1 directory  flags 1, name,           -1 directory  flags 1, name,
///                  entries, end mark                      entries, end mark
///     2 file       offset 8, size 4,        else file     (the value is the offset)
///                  flags 1, name                          size 4, flags 1, name
///     3 end mark                            -2 end mark
struct BundleEntry {
    std::string name{};
    std::uint32_t parent = 0; ///< index of the directory that holds it; 0 is the root of the bundle
    bool is_directory = false;
    bool present = true;
    std::int64_t offset = 0; ///< of a file's data in the bundle
    std::int64_t size = 0;   ///< of a file's data
};

inline constexpr std::int64_t bundle_header_size = 16;

enum class BundleTag : std::uint8_t { directory = 1, file = 2, end = 3 };
inline constexpr std::int32_t bundle_v1_directory = -1;
inline constexpr std::int32_t bundle_v1_end = -2;

/// The name can stand for one entry of a directory and for nothing else: it is not empty, "." or "..", and holds no
/// separator. What is unpacked under such names stays below the directory that it is unpacked to.
bool is_plain_name(std::string_view name);

class BundleDirectory {
public:
    /// Directories within one another, and bytes of an entry's path: more than any real tree has. The second keeps a
    /// small file from standing for endless text.
    static constexpr std::size_t most_levels = 256;
    static constexpr std::size_t most_path_bytes = 4096;

    /// No entries but the root.
    BundleDirectory();
    /// Reads header and directory. Throws ErrorWithCStack "Bundle NAME: ..." with the archive's name where they are cut
    /// off, pass the limits above, hold an unknown tag, or where a present file's data lies outside the archive. Takes
    /// memory in proportion to the directory's bytes.
    explicit BundleDirectory(Archive archive);
    BundleDirectory(BundleDirectory&&) = default;
    BundleDirectory& operator=(BundleDirectory&&) = default;
    BundleDirectory(const BundleDirectory&) = delete;
    BundleDirectory& operator=(const BundleDirectory&) = delete;
    ~BundleDirectory() = default;

    std::int32_t version() const { return version_; }

    /// All entries in file order, depth first: a directory stands before what it holds. The first one is the root,
    /// which has no name.
    const std::vector<BundleEntry>& entries() const { return entries_; }
    /// The path of an entry from the root, with "/".
    std::string path_of(std::size_t index) const;

    /// The entry of a path in any spelling, see normalize_path; null if there is none. A deleted directory answers for
    /// everything below it. Of entries with one name in one directory the last one counts.
    const BundleEntry* find(const std::string& path) const;

    /// What a directory holds, by name in the order of bytes; empty for a file.
    const std::map<std::string_view, std::uint32_t>& children_of(const BundleEntry& directory) const;
    const BundleEntry& root() const { return entries_.front(); }

private:
    class ByteReader;
    class Reader;

    const BundleEntry* walk(std::string_view normalized) const;

    std::int32_t version_ = 0;
    std::vector<BundleEntry> entries_;
    /// The children of each directory that has any. Keys are the names in `entries_`, which stays as it was read.
    std::map<std::uint32_t, std::map<std::string_view, std::uint32_t>> children_;
    /// The last answer. No normalised path can be the first key, so the cache begins empty without a flag.
    mutable std::string last_path_ = "file_name_that_should_never_exist_:\\/$";
    mutable const BundleEntry* last_answer_ = nullptr;
};

} // namespace kst
