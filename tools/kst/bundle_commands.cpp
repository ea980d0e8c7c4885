#include "tools/kst/Command.h"

#include "source/utility/Archive.h"
#include "source/utility/filesystem/BundleDirectory.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/filesystem/extract_bundle.h"
#include "source/utility/filesystem/write_bundle.h"

#include <array>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace kst::tool {
namespace {

struct BundleArguments {
    std::string file;
    std::string directory;
    int version = 2;
};

Archive open_bundle(const std::string& file) {
    Archive archive = kst::open(file, "r");
    if (!archive)
        throw CommandFailure("cannot open " + file);
    return archive;
}

/// The letters are no part of the engine's own test; here they tell a bundle from any other file.
BundleDirectory read_directory(Archive archive, const std::string& file) {
    std::array<char, 4> letters{};
    if (archive.size() >= bundle_header_size)
        archive.read(letters.data(), letters.size());
    archive.set_position(0);
    if (letters != std::array{'B', 'N', 'D', 'L'})
        throw CommandFailure(file + " is no bundle");
    BundleDirectory directory(archive);
    if (directory.version() != 1 && directory.version() != 2)
        throw CommandFailure(file + " has the unknown version " + std::to_string(directory.version()));
    return directory;
}

void list(const BundleArguments& arguments) {
    const BundleDirectory bundle = read_directory(open_bundle(arguments.file), arguments.file);
    const auto& entries = bundle.entries();
    for (std::size_t i = 1; i < entries.size(); ++i) {
        const BundleEntry& entry = entries[i];
        const std::string path = bundle.path_of(i);
        if (!entry.present)
            std::cout << "x " << path << '\n';
        else if (entry.is_directory)
            std::cout << "d " << path << '\n';
        else
            std::cout << "f " << path << ' ' << entry.offset << ' ' << entry.size << '\n';
    }
}

void extract(const BundleArguments& arguments) {
    const Archive archive = open_bundle(arguments.file);
    const std::vector<std::string> refused =
        extract_bundle(read_directory(archive, arguments.file), archive, arguments.directory);
    if (!refused.empty())
        throw CommandFailure("refused: the entry \"" + refused.front() + "\" of " + arguments.file +
                             " would leave the directory");
}

} // namespace

void add_bundle_commands(CLI::App& app) {
    CLI::App* const bundle =
        app.add_subcommand("bundle", "Pack, list and unpack bundles: one file that holds a tree of files");
    bundle->require_subcommand(1);
    const auto arguments = std::make_shared<BundleArguments>();
    const auto add = [&](const char* name, const char* description, bool with_directory) {
        CLI::App* const command = bundle->add_subcommand(name, description);
        command->add_option("FILE", arguments->file, "The bundle")->required();
        if (with_directory)
            command->add_option("DIRECTORY", arguments->directory, "The directory on disk")->required();
        return command;
    };

    CLI::App* const create_command =
        add("create", "Pack a directory tree into a bundle; names become lower case", true);
    create_command->add_option("--version", arguments->version, "Layout of the directory, 1 or 2 (default 2)")
        ->check(CLI::IsMember({1, 2}));
    create_command->callback([arguments] { create_bundle(arguments->file, arguments->directory, arguments->version); });

    add("list", "Print the entries: d PATH, f PATH OFFSET SIZE, x PATH for a deleted one", false)
        ->callback([arguments] { list(*arguments); });
    add("extract", "Write the present entries below a directory", true)->callback([arguments] { extract(*arguments); });
}

} // namespace kst::tool
