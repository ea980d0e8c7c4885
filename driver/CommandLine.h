#pragma once

#include <ostream>
#include <span>
#include <string>
#include <string_view>

namespace mosaicer {

/// What the command line asks of one run, beside the process-wide RunFlags.
struct CommandLine {
    std::string textures_root;
    std::string definition_path;
    std::string output_root;
    std::string pattern;               ///< -p: only sets whose full name contains it; empty: all
    bool pause_before_exit = false;    ///< -q
    bool have_all_positionals = false; ///< the third positional argument was taken
    bool help = false;                 ///< -? or -help was met; what stood behind it was not looked at
};

/// The usage text, every line ended by a newline.
extern const std::string_view usage_text;

/// Reads the arguments (without the program's name) from left to right. Sets RunFlags, and turns Report.verbose and
/// Report.debug to `console` where -v and -d stand, so that the messages of arguments further left went unseen.
/// Nothing is refused: an argument that is no switch is positional, and a fourth positional is passed over.
CommandLine read_command_line(std::span<const std::string> arguments, std::ostream& console);

} // namespace mosaicer
