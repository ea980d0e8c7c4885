#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "script/binding/bind.h"
#include "source/utility/filesystem/VirtualFileSystem.h"

namespace kst::script {

/// The process's file name space as scripts see it. Paths and modes are those of VirtualFileSystem; what is not there
/// is a value here as it is there, and what the host refuses for another reason is an error.
class ScriptFileSystem final : public Bound<ScriptFileSystem> {
public:
    static constexpr std::string_view script_name = "ScriptFileSystem";
    static void bind(StaticMemberSet<ScriptFileSystem>& members);

    /// Not owned; must outlive the object.
    explicit ScriptFileSystem(VirtualFileSystem& files) : files_(files) {}

    bool exists(const std::string& path) const { return files_.exists(path); }
    bool is_dir(const std::string& path) const { return files_.is_dir(path); }
    std::string full_path(const std::string& path) const { return files_.full_path(path); }
    std::string system_path(const std::string& path) const { return files_.system_path(path); }
    /// 100 ns ticks since 1601, an int64; 0 if there is no such file.
    std::int64_t last_modified(const std::string& path) const;
    /// A new ScriptVector of names without directory, in ascending order. `patterns` are parted by ";".
    ScriptValue list(const std::string& path, const std::string& patterns, bool want_directories) const;
    /// A ScriptFile, or a NullScriptFile for what cannot be opened.
    ScriptValue open(const std::string& path, const std::string& mode) const;
    bool make_dir(const std::string& path) const { return files_.make_dir(path); }
    /// A directory with all that is in it.
    bool delete_file(const std::string& path) const;
    bool copy_file(const std::string& source, const std::string& destination) const;
    bool can_write_to(const std::string& path) const;
    /// The root of the document; void where the file cannot be opened, is empty, or has an unknown entity. A syntax
    /// error is a DSError.
    ScriptValue parse_xml(const std::string& path) const;

private:
    VirtualFileSystem& files_;
};

} // namespace kst::script
