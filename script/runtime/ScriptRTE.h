#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "script/runtime/UnionLibrary.h"
#include "script/vm/ScriptVM.h"

namespace kst::script {

/// The run-time environment: finds scripts in the process's file name space, compiles them or takes their compiled
/// form, keeps their code, and starts programs on it.
///
/// A script's name is its path without extension, in either kind of separator: "game/menu" is "game/menu.kvs", compiled
/// "game/menu.kvx". Code is loaded once for a name and lives as long as the environment, which must outlive its
/// programs.
class ScriptRTE {
public:
    class Error;
    class ArchiveScanner;
    class DirectoryLibrary;
    class Program;

    /// What is done with compiled files.
    ///
    ///   mode  a current one is used  saved after compiling  with the debug block
    ///   0     yes                    no
    ///   1     yes                    yes                    no
    ///   2     yes                    yes                    yes
    ///   3     no                     yes                    no
    ///   4     no                     yes                    yes
    ///
    /// A compiled file is current when it is not older than its source, or there is no source.
    enum class Mode : std::uint8_t { read_only, save, save_debug, compile, compile_debug };

    struct Options {
        /// The root of the tree that every program may import from.
        std::string root;
        Mode mode = Mode::read_only;
        /// Debug blocks of compiled files are not read: traces have no lines then.
        bool skip_debug_blocks = false;
        /// What the host gives to all programs. Not owned, may be null.
        Library* host = nullptr;
    };

    struct CodeRecord {
        using Line = std::pair<std::uint32_t, std::int32_t>;
        std::string source_path;
        std::string script_name;
        /// Programs resolve names in it as they run.
        std::vector<std::uint8_t> code;
        /// Code offset and source line of the instructions that have one, ascending; empty without debug block.
        std::vector<Line> lines;
        /// How many programs run on it.
        std::uint32_t users = 0;
    };

    explicit ScriptRTE(Options options);
    ScriptRTE(const ScriptRTE&) = delete;
    ScriptRTE& operator=(const ScriptRTE&) = delete;
    ~ScriptRTE();

    /// Brings a script's code into the cache and gives the index of its record; a script that is there already is not
    /// looked at again. Throws Error: "Script: NAME not found!", all messages of the compiler, that a file cannot be
    /// read, or what is wrong with a compiled one, whose code is verified before it is ever run.
    std::size_t load(const std::string& name);
    CodeRecord& record(std::size_t index) { return *records_[index]; }

    /// A program of that name, with its declarations run. It imports from `extra_library` (may be null, must outlive
    /// the program), then from the host's library, then from a directory "lib" beside the script if the name has a
    /// directory, then from the tree at the root. Throws Error.
    std::unique_ptr<Program> start(const std::string& name, Library* extra_library = nullptr);

    /// Calls a function of a program by name; void if there is none. Throws Error with the text of what went wrong.
    ScriptValue call(Program& program, idstring name, Arguments arguments);

    /// The calls that are active, or were when the last one failed, newest first. For each a line
    /// "\tSOURCE(LINE)\n"; "???" for code that is none of this environment's, 0 for an unknown line.
    std::string stack_text() const;

private:
    struct Place {
        const CodeRecord* record = nullptr;
        std::int32_t line = 0;
    };

    std::unique_ptr<CodeRecord> load_compiled(const std::string& path);
    std::unique_ptr<CodeRecord> compile(const std::string& source_path, const std::string& compiled_path);
    /// Turns what leaves the scripts into Error.
    void run(const std::function<void()>& action);
    Place place_of(const std::uint8_t* instruction) const;
    static std::string text_of(const Place& place);

    Options options_;
    std::vector<std::unique_ptr<CodeRecord>> records_;
    std::map<std::string, std::size_t> indices_; ///< By normalised name.
};

/// What leaves the script world. The text is that of the error alone.
class ScriptRTE::Error : public std::runtime_error {
public:
    explicit Error(const std::string& text, std::string place = {})
        : std::runtime_error(text), place_(std::move(place)) {}

    /// Of an error at run time: the failing instruction, as a line of the stack text. Empty where the newest call of
    /// the stack text says it, and where the line is not known.
    const std::string& place() const { return place_; }

private:
    std::string place_;
};

/// A started program, with the libraries that it imports from.
class ScriptRTE::Program {
public:
    Program(ScriptRTE& environment, const std::string& name, Library* extra_library);
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program();

    ScriptVM& vm() { return *vm_; }

private:
    CodeRecord& record_;
    UnionLibrary imports_;
    std::unique_ptr<DirectoryLibrary> tree_;
    UnionLibrary imports_of_lib_;
    std::unique_ptr<DirectoryLibrary> lib_;
    std::unique_ptr<ScriptVM> vm_;
};

} // namespace kst::script
