// Runs the programs beside this file: each function with a comment `// expect: RESULT` above it, in a program loaded anew.

#include <gtest/gtest.h>

#include <fstream>

#include "tests/script/RuntimeSupport.h"

namespace kst::script {
namespace {

class ScriptFiles : public testing::TestWithParam<const char*> {};

TEST_P(ScriptFiles, give_what_they_say) {
    std::ifstream file(std::string(MOSAICER_SOURCE_DIR "/tests/script/") + GetParam());
    const std::string source(std::istreambuf_iterator<char>(file), {});
    std::istringstream lines(source);
    const std::string mark = "// expect:";
    std::string expected;
    int functions = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(mark)) {
            expected = line.substr(std::min(line.size(), mark.size() + 1));
            while (lines.peek() == '/')
                std::getline(lines, line);
            std::getline(lines, line);
            const std::string function = line.substr(0, line.find('('));
            const std::size_t before = live_records();
            {
                RuntimeHost host;
                // Blanks at the end do not show in a comment.
                std::string result = result_of(source + "main() { return " + function + "(); }", &host);
                result.erase(result.find_last_not_of(' ') + 1);
                EXPECT_EQ(result, expected) << function;
            }
            EXPECT_EQ(live_records(), before) << function;
            ++functions;
        }
    }
    EXPECT_GT(functions, 15);
}

INSTANTIATE_TEST_SUITE_P(Programs, ScriptFiles, testing::Values("containers.kvs", "timed_callbacks.kvs"));

} // namespace
} // namespace kst::script
