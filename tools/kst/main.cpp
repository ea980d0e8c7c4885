#include "tools/kst/Command.h"

#include "source/utility/filesystem/DiskFileSystem.h"
#include "source/utility/filesystem/VirtualFileSystem.h"

#include <cstdio>
#include <exception>
#include <iostream>

namespace {

constexpr int work_failed = 1;
constexpr int wrong_command_line = 2;

int run(int argc, char** argv) {
    CLI::App app{"The engine's foundation from the command line: XML, expressions, images, bundles and scripts.",
                 "kst"};
    app.set_version_flag("--version", "kst " MOSAICER_VERSION);
    app.require_subcommand(1);
    app.fallthrough(false);
    kst::tool::add_xml_commands(app);
    kst::tool::add_eval_command(app);
    kst::tool::add_image_commands(app);
    kst::tool::add_bundle_commands(app);
    kst::tool::add_script_commands(app);
    kst::tool::add_atlas_commands(app);
    kst::VirtualFileSystem files;
    kst::DiskFileSystem disk;
    files.mount("/", &disk, /*owned=*/false);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& asked_for) {
        return app.exit(asked_for); // --help and --version, on standard output
    } catch (const CLI::ParseError& wrong) {
        std::cerr << "kst: " << wrong.what() << std::endl;
        return wrong_command_line;
    }
    std::cout.flush();
    if (!std::cout)
        throw kst::tool::CommandFailure("cannot write to standard output");
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& failure) {
        std::cout.flush();
        std::cerr << "kst: " << failure.what() << std::endl;
        return work_failed;
    }
}
