#pragma once

#include <string>

#include "script/language/CodeBuffer.h"

namespace kst::script {

/// Writes a compiled file into the process's file name space: whole or not at all, so that no half file is ever taken
/// for a compiled script. False: it could not be written.
bool save_compiled_file(const std::string& path, const CodeBuffer& code, const std::string& source_path,
                        bool with_debug_block);

} // namespace kst::script
