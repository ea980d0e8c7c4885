// Runs every *.kvs beside this file that has a `main`, and every block of docs/script-language.md that is marked as kvs, as a program of
// its own. What it prints has to be what its comments say:
//
//   // expect: LINE   the next line of the output
//   // error: LINE    the next line of the text it fails with
//   // trace: LINE    the next line of the script trace behind that, if any is given

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "script/runtime/ContainersLibrary.h"
#include "script/runtime/HostLibrary.h"
#include "script/runtime/PrintFunction.h"
#include "script/runtime/ScriptFileSystem.h"
#include "script/runtime/ScriptRTE.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "tests/support/TemporaryDirectory.h"

namespace kst::script {
namespace {

namespace fs = std::filesystem;

const fs::path folder = fs::path(MOSAICER_SOURCE_DIR) / "tests/script";
const fs::path page = fs::path(MOSAICER_SOURCE_DIR) / "docs/script-language.md";

/// What stands behind `mark` in the lines of a program, one line each.
std::string marked_lines(const std::string& program, const std::string& mark) {
    std::istringstream stream(program);
    std::string text;
    for (std::string line; std::getline(stream, line);)
        if (const std::size_t at = line.find(mark); at != std::string::npos)
            text += line.substr(at + mark.size()) + "\n";
    return text;
}

/// Runs `main` of the program of that name in a directory, which is all of the name space.
void run_and_compare(const fs::path& directory, const std::string& name, const std::string& text) {
    VirtualFileSystem files;
    files.mount_directory("/", directory.string());
    std::ostringstream output;
    HostLibrary host;
    host.add<PrintFunction>("print", output);
    host.add<ContainersLibrary>("containers");
    host.add<ScriptFileSystem>("files", files);
    ScriptRTE environment({.root = "", .mode = ScriptRTE::Mode::read_only, .host = &host});
    std::string error, trace;
    try {
        const auto program = environment.start(name);
        EXPECT_TRUE(program->vm().has_function(intern("main")));
        environment.call(*program, intern("main"), {});
    } catch (const ScriptRTE::Error& failure) {
        error = std::string(failure.what()) + "\n";
        trace = failure.place() + environment.stack_text();
        std::erase(trace, '\t');
    }
    EXPECT_EQ(output.str(), marked_lines(text, "// expect: "));
    EXPECT_EQ(error, marked_lines(text, "// error: "));
    if (const std::string expected = marked_lines(text, "// trace: "); !expected.empty()) {
        EXPECT_EQ(trace, expected);
    }
    EXPECT_FALSE(output.str().empty() && error.empty()) << "says nothing";
}

std::string text_of(const std::string& name) {
    std::ifstream file(folder / (name + ".kvs"));
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> program_files() {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().stem().string();
        if (entry.path().extension() == ".kvs" && text_of(name).find("\nmain(") != std::string::npos)
            names.push_back(name);
    }
    std::ranges::sort(names);
    return names;
}

class ProgramFiles : public testing::TestWithParam<std::string> {};

TEST_P(ProgramFiles, print_what_they_say) {
    run_and_compare(folder, GetParam(), text_of(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Script, ProgramFiles, testing::ValuesIn(program_files()),
                         [](const auto& parameter) { return parameter.param; });

struct Block {
    int line = 0;
    std::string text;
};

std::vector<Block> blocks_of_the_page() {
    std::vector<Block> blocks;
    std::ifstream file(page);
    bool inside = false;
    int number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        if (line == "```kvs")
            blocks.push_back({number, ""});
        else if (inside && line != "```")
            blocks.back().text += line + "\n";
        if (line.starts_with("```"))
            inside = line == "```kvs";
    }
    return blocks;
}

TEST(ScriptLanguagePage, has_programs_that_print_what_they_say) {
    const std::vector<Block> blocks = blocks_of_the_page();
    EXPECT_GE(blocks.size(), 8U);
    for (const Block& block : blocks) {
        SCOPED_TRACE(page.string() + ":" + std::to_string(block.line));
        const test_support::TemporaryDirectory directory;
        directory.write("program.kvs", block.text);
        run_and_compare(directory.path(), "program", block.text);
    }
}

} // namespace
} // namespace kst::script
