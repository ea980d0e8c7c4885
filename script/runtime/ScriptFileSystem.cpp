#include "script/runtime/ScriptFileSystem.h"

#include <algorithm>

#include "script/runtime/MathConversions.h"
#include "script/runtime/ScriptFile.h"
#include "script/runtime/ScriptVector.h"
#include "script/runtime/ScriptXMLNode.h"
#include "source/utility/filesystem/file_functions.h"

namespace kst::script {

void ScriptFileSystem::bind(StaticMemberSet<ScriptFileSystem>& members) {
    members.method<&ScriptFileSystem::exists>("exists");
    members.method<&ScriptFileSystem::is_dir>("is_dir");
    members.method<&ScriptFileSystem::full_path>("full_path");
    members.method<&ScriptFileSystem::system_path>("system_path");
    members.method<&ScriptFileSystem::last_modified>("last_modified");
    members.method<&ScriptFileSystem::list>("list", "*", false);
    members.method<&ScriptFileSystem::open>("open", "r");
    members.method<&ScriptFileSystem::make_dir>("make_dir");
    members.method<&ScriptFileSystem::delete_file>("delete_file");
    members.method<&ScriptFileSystem::copy_file>("copy_file");
    members.method<&ScriptFileSystem::can_write_to>("can_write_to");
    members.method<&ScriptFileSystem::parse_xml>("parse_xml");
}

std::int64_t ScriptFileSystem::last_modified(const std::string& path) const {
    return static_cast<std::int64_t>(files_.last_modified(path));
}

ScriptValue ScriptFileSystem::list(const std::string& path, const std::string& patterns, bool want_directories) const {
    std::vector<std::string> names;
    files_.list(names, path, patterns, want_directories);
    std::ranges::sort(names);
    ScriptVector vector;
    for (const std::string& name : names)
        vector.push_back(string_value(name));
    return make_script_owned<ScriptVector>(vector);
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
