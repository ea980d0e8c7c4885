#include "script/runtime/save_compiled_file.h"

#include "script/language/CompiledFile.h"
#include "source/utility/Errors.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/filesystem/normalize_path.h"
#include "source/utility/platform/Directory.h"

namespace kst::script {

bool save_compiled_file(const std::string& path, const CodeBuffer& code, const std::string& source_path,
                        bool with_debug_block) {
    const std::string part = path + ".part";
    try {
        Archive archive = open(part, "w");
        if (!archive)
            return false;
        write_compiled_file(archive, code, source_path, with_debug_block);
    } catch (const DiskError&) { // the disk is full
        VirtualFileSystem::instance()->delete_file(part);
        return false;
    }
    // In the part's directory, a new file in the spelling given, one that is there in its own.
    const std::string host_part = system_path(part);
    const std::string_view directory = std::string_view(host_part).substr(0, host_part.find_last_of("/\\") + 1);
    const std::string host_path = exists(path) ? system_path(path) : std::string(directory).append(file_name_of(path));
    if (platform::rename_file(host_part, host_path))
        return true;
    platform::remove_file(host_part);
    return false;
}

} // namespace kst::script
