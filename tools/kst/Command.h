#pragma once

#include <CLI/CLI.hpp>

#include <stdexcept>

namespace kst::tool {

/// The work of a subcommand failed; the text is what the user is told behind "kst: ". Any other std::exception that
/// reaches `main` is told the same way.
class CommandFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Each adds one group of subcommands. What runs is the callback of the subcommand that was named; it prints results to
// standard output and throws for a failure. The process's virtual file system exists then, with the disk at its root.

void add_xml_commands(CLI::App& app);
void add_eval_command(CLI::App& app);
void add_image_commands(CLI::App& app);
void add_bundle_commands(CLI::App& app);
void add_script_commands(CLI::App& app);
void add_atlas_commands(CLI::App& app);

// Each adds its subcommands of `atlas`.

void add_atlas_plan(CLI::App& atlas);

} // namespace kst::tool
