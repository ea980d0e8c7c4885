#pragma once

#include <string>

namespace mosaicer {

/// Makes every set of a definition file whose full name contains `pattern`, in the order of the file. The process's
/// virtual file system must exist; the disk is mounted on it for the length of the call.
///
/// A definition file that can't be opened or is empty makes nothing and is no failure. Throws what the reader, the
/// packers, the baker and the writers throw; sets finished before stay on disk.
void run_definition_file(const std::string& textures_root, const std::string& definition_path,
                         const std::string& output_root, const std::string& pattern);

} // namespace mosaicer
