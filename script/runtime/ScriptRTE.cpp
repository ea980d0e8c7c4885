#include "script/runtime/ScriptRTE.h"

#include <algorithm>
#include <functional>

#include "script/language/CompiledFile.h"
#include "script/language/Parser.h"
#include "script/language/Verifier.h"
#include "script/runtime/ArchiveScanner.h"
#include "script/runtime/DirectoryLibrary.h"
#include "script/runtime/save_compiled_file.h"
#include "script/vm/ScriptStacks.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/filesystem/normalize_path.h"

namespace kst::script {

namespace {

constexpr std::size_t extension_size = 4;

bool always_compiles(ScriptRTE::Mode mode) {
    return mode == ScriptRTE::Mode::compile || mode == ScriptRTE::Mode::compile_debug;
}
bool writes_debug_block(ScriptRTE::Mode mode) {
    return mode == ScriptRTE::Mode::save_debug || mode == ScriptRTE::Mode::compile_debug;
}

/// Beside the source as it is called on the disk; beside the name that it was asked for by where the name space does
/// not reach that place.
std::string compiled_path_of(const std::string& source_path) {
    std::string real_path = system_path(source_path);
    if (real_path.size() <= extension_size || !exists(real_path))
        real_path = source_path;
    return real_path.replace(real_path.size() - extension_size, extension_size, ".kvx");
}

void enter_lines(std::span<const std::int32_t> lines, ScriptRTE::CodeRecord& record) {
    for (std::size_t offset = 0; offset < lines.size(); ++offset)
        if (lines[offset] > 0)
            record.lines.emplace_back(static_cast<std::uint32_t>(offset), lines[offset]);
}

/// Where a script's own libraries are: the directory "lib" beside it. Empty for a name without directory.
std::string lib_beside(const std::string& name) {
    const std::size_t separator = name.find_last_of("/\\");
    return separator == std::string::npos ? std::string() : name.substr(0, separator + 1) + "lib" + name[separator];
}

bool same_directory(const std::string& left, const std::string& right) {
    return normalize_path(left, true, true) == normalize_path(right, true, true);
}

} // namespace

ScriptRTE::ScriptRTE(Options options) : options_(std::move(options)) {}

ScriptRTE::~ScriptRTE() = default;

std::size_t ScriptRTE::load(const std::string& name) {
    const std::string key = normalize_path(name, /*trailing_separator=*/false, /*keep_leading_separator=*/true);
    const auto cached = indices_.find(key);
    if (cached != indices_.end())
        return cached->second;
    const std::string source_path = name + ".kvs";
    const bool has_source = exists(source_path) && !is_dir(source_path);
    const std::string compiled_path = has_source ? compiled_path_of(source_path) : name + ".kvx";
    const bool has_compiled = exists(compiled_path) && !is_dir(compiled_path);
    if (!has_source && !has_compiled)
        throw Error("Script: " + name + " not found!");
    const bool current = has_compiled && !always_compiles(options_.mode) &&
                         (!has_source || last_modified(compiled_path) >= last_modified(source_path));
    std::unique_ptr<CodeRecord> record;
    try {
        if (current)
            record = load_compiled(compiled_path);
        if (record == nullptr && has_source)
            record = compile(source_path, compiled_path);
    } catch (const Error&) {
        throw;
    } catch (const std::runtime_error& error) { // a file that is damaged or cannot be read
        throw Error(error.what());
    }
    if (record == nullptr)
        throw Error("Script: " + name + " not found!");
    if (record->source_path.empty())
        record->source_path = source_path;
    record->script_name = name;
    records_.push_back(std::move(record));
    return indices_[key] = records_.size() - 1;
}

/// Null where the file is no compiled script at all.
std::unique_ptr<ScriptRTE::CodeRecord> ScriptRTE::load_compiled(const std::string& path) {
    Archive archive = open(path, "r");
    if (!archive)
        return nullptr;
    archive.set_name(path);
    std::optional<CompiledFile> file = read_compiled_file(archive, options_.skip_debug_blocks);
    if (!file)
        return nullptr;
    verify_code(file->code, path);
    auto record = std::make_unique<CodeRecord>();
    record->source_path = std::move(file->source_path);
    record->code = std::move(file->code);
    enter_lines(file->lines, *record);
    return record;
}

std::unique_ptr<ScriptRTE::CodeRecord> ScriptRTE::compile(const std::string& source_path,
                                                          const std::string& compiled_path) {
    ArchiveScanner scanner(open(source_path, "r"), source_path);
    Parser parser(scanner);
    CodeBuffer code(/*keeps_lines=*/true);
    if (!parser.parse() || !parser.generate(code))
        throw Error(parser.errors());
    auto record = std::make_unique<CodeRecord>();
    record->code.assign(code.code().begin(), code.code().end());
    enter_lines(code.lines(), *record);
    // That it cannot be written is no error: the next start compiles again.
    if (options_.mode != Mode::read_only)
        save_compiled_file(compiled_path, code, source_path, writes_debug_block(options_.mode));
    return record;
}

std::unique_ptr<ScriptRTE::Program> ScriptRTE::start(const std::string& name, Library* extra_library) {
    auto program = std::make_unique<Program>(*this, name, extra_library);
    run([&] { program->vm().load(); });
    return program;
}

ScriptValue ScriptRTE::call(Program& program, idstring name, Arguments arguments) {
    ScriptValue result;
    run([&] { result = program.vm().call(name, arguments); });
    return result;
}

void ScriptRTE::run(const std::function<void()>& action) {
    ScriptStacks& stacks = ScriptStacks::instance();
    if (stacks.frame_count == 0)
        stacks.call_count = 0;
    try {
        action();
    } catch (const VMError& error) {
        const bool newest_call = stacks.call_count > 0 && stacks.calls[stacks.call_count - 1] == error.instruction();
        const Place place = place_of(error.instruction());
        throw Error(error.what(), newest_call || place.line == 0 ? std::string() : text_of(place));
    } catch (const DSBaseError& error) {
        throw Error(error.what());
    }
}

ScriptRTE::Place ScriptRTE::place_of(const std::uint8_t* instruction) const {
    const std::less<> before; // a total order also for pointers into different blocks
    for (const auto& record : records_) {
        const std::uint8_t* const begin = record->code.data();
        if (before(instruction, begin) || !before(instruction, begin + record->code.size()))
            continue;
        const auto offset = static_cast<std::uint32_t>(instruction - begin);
        const auto line = std::ranges::lower_bound(record->lines, offset, {}, &CodeRecord::Line::first);
        return {record.get(), line == record->lines.end() || line->first != offset ? 0 : line->second};
    }
    return {};
}

std::string ScriptRTE::text_of(const Place& place) {
    return "\t" + (place.record == nullptr ? std::string("???") : place.record->source_path) + "(" +
           std::to_string(place.line) + ")\n";
}

std::string ScriptRTE::stack_text() const {
    const ScriptStacks& stacks = ScriptStacks::instance();
    std::string text;
    for (std::uint32_t i = stacks.call_count; i > 0; --i)
        text += text_of(place_of(stacks.calls[i - 1]));
    return text;
}

ScriptRTE::Program::Program(ScriptRTE& environment, const std::string& name, Library* extra_library)
    : record_(environment.record(environment.load(name))) {
    const Options& options = environment.options_;
    ++record_.users;
    if (extra_library != nullptr)
        imports_.add(*extra_library);
    if (options.host != nullptr)
        imports_.add(*options.host);
    tree_ = std::make_unique<DirectoryLibrary>(environment, options.root, imports_);
    const std::string lib = lib_beside(name);
    if (!lib.empty() && !same_directory(lib, tree_->root())) {
        imports_of_lib_.add(*tree_);
        if (options.host != nullptr)
            imports_of_lib_.add(*options.host);
        lib_ = std::make_unique<DirectoryLibrary>(environment, lib, imports_of_lib_);
        imports_.add(*lib_);
    }
    imports_.add(*tree_);
    vm_ = std::make_unique<ScriptVM>(record_.code, &imports_);
}

ScriptRTE::Program::~Program() {
    --record_.users;
}

} // namespace kst::script
