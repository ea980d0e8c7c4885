#pragma once

#include "source/utility/Archive.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kst {

/// What goes into a bundle: a file of the host, or a directory. The root's own name is not written.
struct BundleItem {
    std::string name{};
    bool is_directory = false;
    bool present = true;     ///< false writes a deleted entry, which hides its path
    std::string host_path{}; ///< of a present file
    std::int64_t size = 0;   ///< of a present file
    std::vector<BundleItem> items{};
};

/// The tree of a directory of the host. Names become normalised paths, in ascending order at each level. Links are
/// followed. Throws DiskError "Cannot list dir PATH", and ErrorWithCStack that names the path for a name that no bundle
/// can hold, for two names that differ only in case, for a link back to a directory above it, and for a file that is
/// not there. An existing file `leave_out`, such as the bundle itself, is passed over.
BundleItem bundle_tree(const std::string& host_directory, const std::string& leave_out = {});

/// Writes header, directory and data; see BundleDirectory for the layout. Data lies in the order of the directory,
/// without gaps. Throws ErrorWithCStack for another version than 1 and 2, for a file that the layout has no room for
/// (4 GiB and more; in version 1 also data that begins at 2 GiB or behind it), and for one whose size has changed.
void write_bundle(Archive& output, const BundleItem& root, int version);

/// Packs a directory into the file `bundle` of the host. It is written under another name beside it, "BUNDLE.part", and
/// put in place when it is whole; on failure nothing is left behind. Throws as the two above do.
void create_bundle(const std::string& bundle, const std::string& host_directory, int version = 2);

} // namespace kst
