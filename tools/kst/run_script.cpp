#include "tools/kst/Command.h"

#include "script/runtime/ContainersLibrary.h"
#include "script/runtime/HostLibrary.h"
#include "script/runtime/MathLibrary.h"
#include "script/runtime/PrintFunction.h"
#include "script/runtime/ScriptFileSystem.h"
#include "script/runtime/ScriptRTE.h"
#include "source/utility/filesystem/VirtualFileSystem.h"

#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace kst::tool {
namespace {

struct RunArguments {
    std::string script;
    std::string root;
    int mode = 0;
    std::string function = "main";
    std::vector<std::string> arguments;
};

/// What programs can import.
void fill(script::HostLibrary& host) {
    host.add<script::PrintFunction>("print", std::cout);
    host.add<script::ContainersLibrary>("containers");
    host.add<script::MathLibrary>("math");
    host.add<script::ScriptFileSystem>("files", *VirtualFileSystem::instance());
}

std::string without_extension(const std::string& path) {
    const bool has_one = path.ends_with(".kvs") || path.ends_with(".kvx");
    return has_one ? path.substr(0, path.size() - 4) : path;
}

/// Of a path without directory, the current one.
std::string directory_of(const std::string& path) {
    return path.substr(0, path.find_last_of("/\\") + 1);
}

void run(const RunArguments& arguments) {
    const std::string name = without_extension(arguments.script);
    script::HostLibrary host;
    fill(host);
    script::ScriptRTE environment({.root = arguments.root.empty() ? directory_of(name) : arguments.root,
                                   .mode = static_cast<script::ScriptRTE::Mode>(arguments.mode),
                                   .host = &host});
    try {
        const auto program = environment.start(name);
        const idstring function = intern(arguments.function);
        if (!program->vm().has_function(function))
            throw CommandFailure("function " + arguments.function + " not found");
        std::vector<script::ScriptValue> values;
        for (const std::string& argument : arguments.arguments)
            values.push_back(script::string_value(argument));
        const script::ScriptValue result = environment.call(*program, function, values);
        if (!result.is_void())
            std::cout << result.to_string() << '\n';
    } catch (const script::ScriptRTE::Error& error) {
        std::string text = error.what() + ("\n" + error.place()) + environment.stack_text();
        text.pop_back(); // the line is ended by whoever tells it
        throw CommandFailure(text);
    }
}

} // namespace

void add_script_run_command(CLI::App& script) {
    const auto arguments = std::make_shared<RunArguments>();
    CLI::App* const command = script.add_subcommand("run", "Start a program and call a function of it");
    command->add_option("SCRIPT", arguments->script, "The program, with or without its .kvs or .kvx")->required();
    command->add_option("ARG", arguments->arguments, "Given to the function as strings; behind -- whatever they are");
    command->add_option("--root", arguments->root, "Where imports are looked up (default: the program's directory)");
    command
        ->add_option("--mode", arguments->mode,
                     "Compiled files: 0 read, 1 also save, 2 save with debug block, 3 and 4 the same without reading")
        ->check(CLI::Range(0, 4));
    command->add_option("--call", arguments->function, "The function to call (default: main)");
    command->callback([arguments] { run(*arguments); });
}

} // namespace kst::tool
