#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "script/runtime/ScriptRTE.h"
#include "script/runtime/UnionLibrary.h"
#include "script/value/Library.h"

namespace kst::script {

/// A directory tree of scripts as a library. The name x.y.z is walked from the root: directories lead on; the first
/// script ends the walk, and what is left of the name is a symbol in it. With nothing left, the script itself is meant.
/// Where a script and a directory have one name, the script wins. Names are told apart by case.
///
/// A script is started when something of it is first asked for, and then lives as long as this library.
class ScriptRTE::DirectoryLibrary final : public Library, public ScriptInterface {
public:
    /// The started programs import through `imports`. All three must outlive the library.
    DirectoryLibrary(ScriptRTE& environment, std::string root, ScriptInterface& imports);
    DirectoryLibrary(const DirectoryLibrary&) = delete;
    DirectoryLibrary& operator=(const DirectoryLibrary&) = delete;
    ~DirectoryLibrary() override;

    const std::string& root() const { return root_; }

    /// Whether the name leads to a script.
    bool has(idstring id) override;
    ScriptValue value() override { return as_value_.value(); }
    /// Throws DSError where the name leads nowhere or the script lacks the symbol, and what starting the script throws.
    ScriptValue get(idstring id) override;
    void visit(LibraryVisitor& visitor) override;

private:
    /// A directory. It is listed when the walk first comes to it: the root may be anywhere on the host.
    struct Directory {
        bool listed = false;
        /// Null for a script.
        std::map<std::string, std::unique_ptr<Directory>, std::less<>> entries;
    };
    struct Resolved {
        /// Of the script, without extension; empty if the name leads nowhere.
        std::string path;
        std::string_view rest;
    };
    class Started;

    void list(Directory& directory, const std::string& path);
    Resolved resolve(std::string_view name);
    ScriptVM& program(const std::string& path);

    ScriptRTE& environment_;
    std::string root_; ///< With a separator at its end, or empty.
    ScriptInterface& imports_;
    Directory tree_;
    std::map<std::string, std::unique_ptr<Started>> programs_;
    UnionLibrary as_value_; ///< Of this library alone.
};

} // namespace kst::script
