#include "script/runtime/ScriptFileSystem.h"

#include "script/runtime/ScriptFile.h"
#include "script/runtime/ScriptXMLNode.h"
#include "source/utility/filesystem/file_functions.h"

namespace kst::script {

void ScriptFileSystem::bind(StaticMemberSet<ScriptFileSystem>& members) {
    members.method<&ScriptFileSystem::exists>("exists");
    members.method<&ScriptFileSystem::is_dir>("is_dir");
    members.method<&ScriptFileSystem::full_path>("full_path");
    members.method<&ScriptFileSystem::system_path>("system_path");
    members.method<&ScriptFileSystem::open>("open", "r");
    members.method<&ScriptFileSystem::make_dir>("make_dir");
    members.method<&ScriptFileSystem::delete_file>("delete_file");
    members.method<&ScriptFileSystem::copy_file>("copy_file");
    members.method<&ScriptFileSystem::can_write_to>("can_write_to");
    members.method<&ScriptFileSystem::parse_xml>("parse_xml");
}

ScriptValue ScriptFileSystem::open(const std::string& path, const std::string& mode) const {
    // A directory opens on some hosts, and cannot be read.
    Archive archive = files_.is_dir(path) ? Archive() : files_.open(path, mode);
    if (!archive)
        return make_script_owned<NullScriptFile>(path);
    return make_script_owned<ScriptFile>(std::move(archive), path);
}

bool ScriptFileSystem::delete_file(const std::string& path) const {
    return delete_recursively(files_, path);
}

bool ScriptFileSystem::copy_file(const std::string& source, const std::string& destination) const {
    return kst::copy_file(files_, source, destination);
}

bool ScriptFileSystem::can_write_to(const std::string& path) const {
    return kst::can_write_to(files_, path);
}

ScriptValue ScriptFileSystem::parse_xml(const std::string& path) const {
    auto* const owned = new ScriptXMLDocument;
    ScriptValue root = owned->value(); // which it belongs to from here on
    return owned->document().load(path) ? root : ScriptValue();
}

} // namespace kst::script
