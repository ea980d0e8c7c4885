#include "objects/database/dump_objects.h"
#include "objects/object_classes.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "tools/kst/Command.h"

#include <iostream>
#include <memory>
#include <string>

namespace kst::tool {
namespace {

void dump(const std::string& file) {
    Archive archive = kst::open(file, "rc");
    if (!archive)
        throw CommandFailure("cannot open " + file);
    dump_objects(archive, object_classes(), std::cout);
}

} // namespace

void add_objects_command(CLI::App& app) {
    CLI::App* const objects = app.add_subcommand("objects", "Look at streams of the engine's objects");
    objects->require_subcommand(1);
    const auto file = std::make_shared<std::string>();

    CLI::App* const dump_command = objects->add_subcommand(
        "dump", "Print an object stream, a line an object: class and type, reference number, size, name and fields");
    dump_command->add_option("FILE", *file, "The object stream")->required();
    dump_command->callback([file] { dump(*file); });
}

} // namespace kst::tool
