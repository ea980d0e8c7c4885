#include "tools/kst/Command.h"

#include "objects/database/print_value.h"
#include "objects/stats/StatsBlockManager.h"
#include "objects/stats/StatsBlockValues.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "tools/kst/load_stats.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <string>

namespace kst::tool {
namespace {

/// A name as it is, or, with anything in it that is no plain character, in quotes.
void print_name(const std::string& name) {
    const bool plain =
        !name.empty() && std::all_of(name.begin(), name.end(), [](char c) { return c > ' ' && c <= '~'; });
    if (plain)
        std::cout << name;
    else
        print_quoted(std::cout, name);
}

void print(const StatsBlock::Value& value) {
    using Kind = StatsBlock::Value::Kind;
    std::cout << "  ";
    print_name(idstring_text(value.name()));
    std::cout << ' ' << keyword_of(value.kind());
    switch (value.kind()) {
    case Kind::number:
    case Kind::boolean:
        std::cout << ' ' << value.get_string();
        break;
    case Kind::string:
        std::cout << ' ' << quoted(value.get_string());
        break;
    default:
        break; // empty at first, whatever the definition says
    }
    std::cout << '\n';
}

void list(const std::string& directory) {
    const auto manager = load_stats(directory);
    for (const StatsBlockManager::Prototype* const prototype : manager->prototypes()) {
        print_name(idstring_text(prototype->block.name()));
        std::cout << " (" << prototype->file << ")\n";
        for (const auto& value : prototype->block.values())
            print(*value);
    }
}

} // namespace

std::unique_ptr<StatsBlockManager> load_stats(const std::string& directory) {
    if (!kst::is_dir(directory))
        throw CommandFailure("no directory " + directory);
    // Files are named by the directory and a separator.
    const std::size_t end = directory.find_last_not_of('/');
    auto manager = std::make_unique<StatsBlockManager>(directory.substr(0, end == std::string::npos ? 1 : end + 1));
    for (const std::string& fault : manager->faults())
        std::cerr << "kst: " << fault << '\n';
    return manager;
}

void add_stats_commands(CLI::App& app) {
    CLI::App* const stats = app.add_subcommand("stats", "Look at stats blocks");
    stats->require_subcommand(1);
    const auto directory = std::make_shared<std::string>();
    CLI::App* const command =
        stats->add_subcommand("list", "Print the blocks defined under a directory: variables, kinds, defaults");
    command->add_option("DIRECTORY", *directory, "Searched, with all below it, for sb_*.xml")->required();
    command->callback([directory] { list(*directory); });
}

} // namespace kst::tool
