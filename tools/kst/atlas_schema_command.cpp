#include "tools/kst/Command.h"

#include "driver/check/definition_schema.h"

#include <fstream>
#include <iostream>
#include <memory>
#include <string>

namespace kst::tool {
namespace {

void write_schema(const std::string& output) {
    const std::string schema = mosaicer::definition_schema();
    if (output.empty()) {
        std::cout << schema;
        return;
    }
    std::ofstream file(output, std::ios::binary | std::ios::trunc);
    file << schema;
    file.close();
    if (!file)
        throw CommandFailure("cannot write " + output);
}

} // namespace

void add_atlas_schema(CLI::App& atlas) {
    const auto output = std::make_shared<std::string>();
    CLI::App* const command =
        atlas.add_subcommand("schema", "Print a RELAX NG schema of the definition file, for editors and validators");
    command->add_option("-o", *output, "The file to write (default: standard output)");
    command->callback([output] { write_schema(*output); });
}

} // namespace kst::tool
