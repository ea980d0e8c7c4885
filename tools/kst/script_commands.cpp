#include "tools/kst/Command.h"

#include "script/language/CodeBuffer.h"
#include "script/language/Parser.h"
#include "script/language/StreamScanner.h"
#include "script/runtime/save_compiled_file.h"
#include "source/utility/Archive.h"
#include "source/utility/filesystem/VirtualFileSystem.h"

#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>

namespace kst::tool {
namespace {

struct ScriptArguments {
    std::string script;
    std::string output;
    bool debug = false;
};

constexpr std::string_view source_extension = ".kvs";

/// The path of the source, which may be given without its extension.
std::string source_path(const std::string& script) {
    return script.ends_with(source_extension) ? script : script + std::string(source_extension);
}

std::string read_source(const std::string& path) {
    Archive archive = kst::exists(path) && !kst::is_dir(path) ? kst::open(path, "r") : Archive();
    if (!archive)
        throw CommandFailure("cannot open " + path);
    std::string text(static_cast<std::size_t>(archive.size()), '\0');
    archive.read(text.data(), text.size());
    return text;
}

/// A source with the stream that its scanner reads from.
class Source {
public:
    explicit Source(const std::string& path) : stream_(read_source(path)), scanner_(stream_, path), parser_(scanner_) {
        if (!parser_.parse())
            throw CommandFailure(parser_.errors());
    }

    script::Parser& parser() { return parser_; }

private:
    std::istringstream stream_;
    script::StreamScanner scanner_;
    script::Parser parser_;
};

void compile(const ScriptArguments& arguments) {
    const std::string path = source_path(arguments.script);
    Source source(path);
    script::CodeBuffer code(arguments.debug);
    if (!source.parser().generate(code))
        throw CommandFailure(source.parser().errors());
    const std::string output =
        arguments.output.empty() ? path.substr(0, path.size() - source_extension.size()) + ".kvx" : arguments.output;
    if (!script::save_compiled_file(output, code, path, arguments.debug))
        throw CommandFailure("cannot write " + output);
}

void list(const ScriptArguments& arguments) {
    Source source(source_path(arguments.script));
    source.parser().print(std::cout);
}

} // namespace

void add_script_commands(CLI::App& app) {
    CLI::App* const script =
        app.add_subcommand("script", "Run, compile and list programs of the engine's script language");
    script->require_subcommand(1);
    add_script_run_command(*script);
    const auto arguments = std::make_shared<ScriptArguments>();
    const auto add = [&](const char* name, const char* description) {
        CLI::App* const command = script->add_subcommand(name, description);
        command->add_option("SCRIPT", arguments->script, "The program, with or without its .kvs")->required();
        return command;
    };

    CLI::App* const compile_command = add("compile", "Write the compiled form of a program");
    compile_command->add_option("-o", arguments->output, "The file to write (default: beside the source, .kvx)");
    compile_command->add_flag("--debug", arguments->debug, "Keep the source's path and its lines");
    compile_command->callback([arguments] { compile(*arguments); });

    add("list", "Print a program's instructions")->callback([arguments] { list(*arguments); });
}

} // namespace kst::tool
