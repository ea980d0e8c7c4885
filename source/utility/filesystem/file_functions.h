#pragma once

#include <string>

namespace kst {

class VirtualFileSystem;

/// What scripts can do with files beyond the operations of the file system itself.

/// Deletes a file, or a directory with all that is in it: its files, then its directories, then itself. A link to a
/// directory goes, what it leads to stays. The root of the name space is refused. Answers for the last step.
bool delete_recursively(VirtualFileSystem& files, const std::string& path);

/// Copies a file; into a directory under its own name. False: one of the two could not be opened, they are the same
/// file, or the copy did not reach the end. A full disk throws DiskError.
bool copy_file(VirtualFileSystem& files, const std::string& source, const std::string& destination);

/// Tries to write the file, or a file of its own in the directory, and leaves no trace.
bool can_write_to(VirtualFileSystem& files, const std::string& path);

} // namespace kst
