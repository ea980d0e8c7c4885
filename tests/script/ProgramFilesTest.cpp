// Runs every *.kvs beside this file as a program of its own. What it prints has to be what its comments say:
//
//   // expect: LINE   the next line of the output
//   // error: LINE    the next line of the text it fails with
//   // trace: LINE    the next line of the script trace behind that, if any is given

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "script/runtime/HostLibrary.h"
#include "script/runtime/PrintFunction.h"
#include "script/runtime/ScriptFileSystem.h"
#include "script/runtime/ScriptRTE.h"
#include "source/utility/filesystem/VirtualFileSystem.h"

namespace kst::script {
namespace {

namespace fs = std::filesystem;

const fs::path folder = fs::path(MOSAICER_SOURCE_DIR) / "tests/script";

std::vector<std::string> programs() {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        if (entry.path().extension() == ".kvs")
            names.push_back(entry.path().stem().string());
    std::ranges::sort(names);
    return names;
}

/// What stands behind `mark` in the lines of a program, one line each.
std::string marked_lines(const std::string& name, const std::string& mark) {
    std::ifstream file(folder / (name + ".kvs"));
    std::string text;
    for (std::string line; std::getline(file, line);)
        if (const std::size_t at = line.find(mark); at != std::string::npos)
            text += line.substr(at + mark.size()) + "\n";
    return text;
}

class ProgramFiles : public testing::TestWithParam<std::string> {};

TEST_P(ProgramFiles, print_what_they_say) {
    VirtualFileSystem files;
    files.mount_directory("/", folder.string());
    std::ostringstream output;
    HostLibrary host;
    host.add<PrintFunction>("print", output);
    host.add<ScriptFileSystem>("files", files);
    ScriptRTE environment({.root = "", .mode = ScriptRTE::Mode::read_only, .host = &host});
    std::string error, trace;
    try {
        const auto program = environment.start(GetParam());
        EXPECT_TRUE(program->vm().has_function(intern("main")));
        environment.call(*program, intern("main"), {});
    } catch (const ScriptRTE::Error& failure) {
        error = std::string(failure.what()) + "\n";
        trace = failure.place() + environment.stack_text();
        std::erase(trace, '\t');
    }
    EXPECT_EQ(output.str(), marked_lines(GetParam(), "// expect: "));
    EXPECT_EQ(error, marked_lines(GetParam(), "// error: "));
    if (const std::string expected = marked_lines(GetParam(), "// trace: "); !expected.empty()) {
        EXPECT_EQ(trace, expected);
    }
    EXPECT_FALSE(output.str().empty() && error.empty()) << "says nothing";
}

INSTANTIATE_TEST_SUITE_P(Script, ProgramFiles, testing::ValuesIn(programs()),
                         [](const auto& parameter) { return parameter.param; });

} // namespace
} // namespace kst::script
