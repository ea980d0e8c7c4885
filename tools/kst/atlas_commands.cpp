#include "tools/kst/Command.h"

namespace kst::tool {

void add_atlas_commands(CLI::App& app) {
    CLI::App* const atlas = app.add_subcommand("atlas", "Prepare and look at what mosaicer makes");
    atlas->require_subcommand(1);
    add_atlas_plan(*atlas);
}

} // namespace kst::tool
