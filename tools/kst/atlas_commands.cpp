#include "tools/kst/Command.h"

namespace kst::tool {

void add_atlas_commands(CLI::App& app) {
    CLI::App* const atlas = app.add_subcommand("atlas", "Look at definitions of atlases and at what is made of them");
    atlas->require_subcommand(1);
    add_atlas_check(*atlas);
    add_atlas_plan(*atlas);
    add_atlas_report(*atlas);
    add_atlas_schema(*atlas);
}

} // namespace kst::tool
