#pragma once

#include "source/utility/Archive.h"
#include "source/utility/filesystem/BundleDirectory.h"

#include <string>
#include <vector>

namespace kst {

/// Writes what is present in a bundle below a directory of the host, which is made if it is not there; files that are
/// there are replaced. Deleted entries, and all below them, are left out.
///
/// An entry whose name would lead out of the directory is not written, nor is anything below it; the answer is the
/// paths of these. Throws DiskError with the path of what cannot be made or written.
std::vector<std::string> extract_bundle(const BundleDirectory& directory, const Archive& bundle,
                                        const std::string& host_directory);

} // namespace kst
