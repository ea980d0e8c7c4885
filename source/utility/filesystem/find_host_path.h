#pragma once

#include <string>
#include <string_view>

namespace kst {

/// The real path on a case-sensitive disk for a path in any case. Both slashes separate in `path`; the result has
/// forward slashes, and one at the end where `path` has one.
///
/// A path that exists as it is spelled is the answer. Otherwise each part is matched in turn: the exact name before
/// names that differ only in the case of A to Z, those in the order of their bytes, going back to the next match where
/// a directory does not lead to the end. So every file that exists in some case is found. A directory is listed at most
/// once a visit, and nothing is remembered between calls: an answer is never out of date.
///
/// If nothing fits to the end, the answer is where the path would be made: the directories as far as they match, and
/// the rest as given.
std::string find_host_path(std::string_view path);

} // namespace kst
