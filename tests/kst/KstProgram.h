#pragma once

#include "tests/support/TemporaryDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace test_support {

struct Result {
    int exit_code = -1;
    std::string out;
    std::string err;
};

inline std::string quoted(const std::string& argument) {
    std::string shell = "'";
    for (const char c : argument)
        shell += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return shell + "'";
}

/// The program in an empty folder of its own.
class KstProgram : public testing::Test {
protected:
    /// Runs in the folder, so that paths in messages are as given.
    Result run(const std::vector<std::string>& arguments) const {
        std::string command = "cd " + quoted(folder.path().string()) + " && " + quoted(KST_PROGRAM);
        for (const std::string& argument : arguments)
            command += " " + quoted(argument);
        const TemporaryDirectory output;
        command += " >" + quoted((output / "out")) + " 2>" + quoted((output / "err"));
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output.read("out"), output.read("err")};
    }

    void expect(const std::vector<std::string>& arguments, int exit_code, const std::string& out,
                const std::string& err) const {
        const Result result = run(arguments);
        EXPECT_EQ(result.exit_code, exit_code) << testing::PrintToString(arguments);
        EXPECT_EQ(result.out, out) << testing::PrintToString(arguments);
        EXPECT_EQ(result.err, err) << testing::PrintToString(arguments);
    }

    TemporaryDirectory folder;
};

} // namespace test_support
