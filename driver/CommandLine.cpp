#include "driver/CommandLine.h"

#include "driver/records/PathText.h"
#include "driver/records/Report.h"
#include "driver/records/RunFlags.h"

#include <array>

namespace mosaicer {

const std::string_view usage_text = "mosaicer syntax:\n"
                                    "mosaicer [-switch1] [-switch2] [...] textures_root atlas_set.xml output_root\n"
                                    "-v - enable verbose output\n"
                                    "-d - enable debug output\n"
                                    "-q - query for stdin input before exiting\n"
                                    "-b[optional path] - output a windows bitmap file for each generated atlas\n"
                                    "-p[pattern] - only process texture sets with specificed substring in name\n"
                                    "-c - tags the (1,1) corner of each texture in the atlas with a distinct color\n"
                                    "-draft - changes some parameters for faster processing\n"
                                    "-tag_mips - tints the mip levels in different colors\n"
                                    "-? - print this help message\n";

namespace {

struct Reading {
    CommandLine& line;
    std::ostream& console;
};

/// One switch. `behind` is what follows a prefix switch; empty for an exact one.
struct Switch {
    std::string_view text;
    bool prefix;
    void (*apply)(Reading& reading, std::string_view behind);
};

void say(std::ostream* channel, std::string_view text, std::string_view value = {}) {
    *channel << text << value << std::endl;
}

/// In the order in which an argument is tested against them: the exact ones stand before a prefix that would take them.
constexpr std::array switches{
    Switch{"-v", false, [](Reading& reading, std::string_view) { Report.verbose = &reading.console; }},
    Switch{"-d", false, [](Reading& reading, std::string_view) { Report.debug = &reading.console; }},
    Switch{"-q", false, [](Reading& reading, std::string_view) { reading.line.pause_before_exit = true; }},
    Switch{"-?", false, [](Reading& reading, std::string_view) { reading.line.help = true; }},
    Switch{"-help", false, [](Reading& reading, std::string_view) { reading.line.help = true; }},
    Switch{"-c", false,
           [](Reading&, std::string_view) {
               RunFlags.color_tag_atlases = true;
               say(Report.verbose, "Colortagging of atlases is enabled");
           }},
    Switch{"-b", true,
           [](Reading&, std::string_view behind) {
               RunFlags.output_extra_bmp = true;
               RunFlags.extra_bmp_path = trim_blanks(behind);
               say(Report.verbose, "Outputting extra bmp file for each atlas");
           }},
    Switch{"-p", true,
           [](Reading& reading, std::string_view behind) {
               reading.line.pattern = behind;
               say(Report.verbose, "Only processing sets containing ", behind);
           }},
    Switch{"-tag_mips", false,
           [](Reading&, std::string_view) {
               RunFlags.tag_mips = true;
               say(Report.verbose, "Tagging the different mip levels with different colors");
           }},
    Switch{"-draft", false,
           [](Reading&, std::string_view) {
               RunFlags.draft_mode = true;
               say(Report.verbose, "Running in draft mode - result will be low quality");
           }},
};

bool read_switch(Reading& reading, std::string_view argument) {
    for (const Switch& candidate : switches) {
        const bool fits = candidate.prefix ? argument.starts_with(candidate.text) : argument == candidate.text;
        if (!fits)
            continue;
        candidate.apply(reading, argument.substr(candidate.text.size()));
        return true;
    }
    return false;
}

/// An argument of nothing but blanks leaves its slot empty, so the next one fills the same slot. The third slot is the
/// odd one: even such an argument there counts as the last positional.
void read_positional(CommandLine& line, std::string_view argument) {
    const std::string value(trim_blanks(argument));
    if (line.textures_root.empty()) {
        line.textures_root = value;
        say(Report.debug, "Indexing textures from ", value);
    } else if (line.definition_path.empty()) {
        line.definition_path = value;
        say(Report.debug, "Reading texture set definitions from ", value);
    } else if (line.output_root.empty()) {
        line.output_root = value;
        line.have_all_positionals = true;
        say(Report.debug, "Outputting all sets relative to ", value);
    }
}

} // namespace

CommandLine read_command_line(std::span<const std::string> arguments, std::ostream& console) {
    CommandLine line;
    Reading reading{line, console};
    for (const std::string& argument : arguments) {
        if (!read_switch(reading, argument))
            read_positional(line, argument);
        if (line.help)
            return line;
    }
    *Report.debug << "Commandline arguments:" << std::endl;
    for (const std::string& argument : arguments)
        *Report.debug << argument << " ";
    *Report.debug << std::endl;
    return line;
}

} // namespace mosaicer
