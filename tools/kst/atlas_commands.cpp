#include "tools/kst/Command.h"

namespace kst::tool {

void add_atlas_commands(CLI::App& app) {
    CLI::App* const atlas = app.add_subcommand("atlas", "Work with the definition and the outputs of mosaicer");
    atlas->require_subcommand(1);
    add_atlas_report(*atlas);
}

} // namespace kst::tool
