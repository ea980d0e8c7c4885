#include "driver/CommandLine.h"
#include "driver/records/Report.h"
#include "driver/records/RunFlags.h"
#include "driver/run_tool.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace mosaicer {
namespace {

using testing::HasSubstr;
using testing::Not;

struct Outcome {
    int exit_code;
    std::string console;
    bool read_input;
};

/// Runs the tool without a definition file, so that the command line alone decides.
Outcome run(const std::vector<std::string>& arguments) {
    std::ostringstream console;
    std::istringstream input("word rest");
    const int exit_code = run_tool(arguments, console, input);
    return {exit_code, console.str(), input.tellg() != 0};
}

std::string behind_attribution(const std::string& console) {
    std::size_t end = 0;
    for (int group = 0; group < 3; ++group)
        end = console.find("\n\n", end) + 2;
    return console.substr(end);
}

TEST(UsageText, is_the_one_that_scripts_compare_with) {
    EXPECT_EQ(usage_text.size(), 551u);
}

TEST(RunTool, prints_attribution_in_three_groups_of_four_lines) {
    const std::string console = run({}).console;
    const std::string attribution = console.substr(0, console.size() - behind_attribution(console).size());
    EXPECT_EQ(std::count(attribution.begin(), attribution.end(), '\n'), 4 + 3);
}

struct UsageCase {
    std::vector<std::string> arguments;
    bool waits;
};

TEST(RunTool, prints_the_usage_for_help_and_too_few_arguments) {
    for (const UsageCase& c : {UsageCase{{}, false}, UsageCase{{"a", "b"}, false}, UsageCase{{"a", "-q", "b"}, true},
                               UsageCase{{"-q", "-?"}, false}, UsageCase{{"a", "b", "c", "-?"}, false},
                               UsageCase{{"-help", "a", "b", "c"}, false}, UsageCase{{"-x", "a"}, false},
                               UsageCase{{"-draftx", "-vv"}, false}, UsageCase{{"a", " ", "b"}, false}}) {
        const Outcome result = run(c.arguments);
        EXPECT_EQ(behind_attribution(result.console), std::string(usage_text) + "\n");
        EXPECT_EQ(result.exit_code, 0);
        EXPECT_EQ(result.read_input, c.waits);
    }
}

TEST(RunTool, shows_debug_lines_from_the_switch_on) {
    EXPECT_EQ(behind_attribution(run({"-v", "-d"}).console),
              "Commandline arguments:\n-v -d \n" + std::string(usage_text) + "\n");
    EXPECT_EQ(behind_attribution(run({"a", "-d", " b "}).console),
              "Reading texture set definitions from b\nCommandline arguments:\na -d  b  \n" + std::string(usage_text) +
                  "\n");
}

TEST(RunTool, ends_well_and_without_a_word_when_the_definition_names_no_file) {
    const Outcome quiet = run({"no_textures", "no_such_definition.xml", "no_output"});
    EXPECT_EQ(quiet.exit_code, 0);
    EXPECT_EQ(behind_attribution(quiet.console), "");

    const Outcome verbose = run({"-v", "no_textures", "no_such_definition.xml", "no_output", "-q"});
    EXPECT_EQ(behind_attribution(verbose.console),
              "Reading texture tree definition and baking sets...\nAll done!\n\nNo errors\n");
    EXPECT_TRUE(verbose.read_input);
}

struct SwitchCase {
    std::vector<std::string> arguments;
    const char* message;
    void (*check)(const CommandLine& line);
};

TEST(ReadCommandLine, tells_each_switch_and_keeps_what_it_says) {
    const std::vector<SwitchCase> cases{
        {{"-c"}, "Colortagging of atlases is enabled\n", [](auto&) { EXPECT_TRUE(RunFlags.color_tag_atlases); }},
        {{"-b  bits "},
         "Outputting extra bmp file for each atlas\n",
         [](auto&) {
             EXPECT_TRUE(RunFlags.output_extra_bmp);
             EXPECT_EQ(RunFlags.extra_bmp_path, "bits");
         }},
        {{"-b"}, "Outputting extra bmp file for each atlas\n", [](auto&) { EXPECT_EQ(RunFlags.extra_bmp_path, ""); }},
        {{"-p a/b "},
         "Only processing sets containing  a/b \n",
         [](const CommandLine& line) { EXPECT_EQ(line.pattern, " a/b "); }},
        {{"-p"}, "Only processing sets containing \n", [](const CommandLine& line) { EXPECT_EQ(line.pattern, ""); }},
        {{"-tag_mips"},
         "Tagging the different mip levels with different colors\n",
         [](auto&) { EXPECT_TRUE(RunFlags.tag_mips); }},
        {{"-draft"},
         "Running in draft mode - result will be low quality\n",
         [](auto&) { EXPECT_TRUE(RunFlags.draft_mode); }},
        {{"a", "b", " "},
         "",
         [](const CommandLine& line) {
             EXPECT_TRUE(line.have_all_positionals);
             EXPECT_EQ(line.output_root, "");
         }},
        {{" a ", "", "b", "c", "d"},
         "",
         [](const CommandLine& line) {
             EXPECT_EQ(line.textures_root + line.definition_path + line.output_root, "abc");
         }},
    };
    for (const SwitchCase& c : cases) {
        std::ostringstream console;
        RunFlags = {};
        Report.verbose = &console;
        c.check(read_command_line(c.arguments, console));
        Report.verbose = &discarding_stream();
        RunFlags = {};
        EXPECT_EQ(console.str(), c.message);
    }
}

} // namespace
} // namespace mosaicer
