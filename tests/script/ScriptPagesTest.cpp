// The examples of the reference pages are true, and there is one for each member.

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "script/runtime/MathLibrary.h"
#include "tests/script/RuntimeSupport.h"

namespace kst::script {
namespace {

/// One example of a page, and the program that leads to it.
struct Example {
    std::string expression;
    std::string result;
    std::string program;
};

/// Whether the text has this member behind a point.
bool has_member(const std::string& text, const std::string& member) {
    const auto is_word = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; };
    for (std::size_t at = text.find("." + member); at != std::string::npos; at = text.find("." + member, at + 1))
        if (!is_word(text[at + 1 + member.size()]))
            return true;
    return false;
}

/// Lines of a block: functions, declarations and statements, and examples `expression  // => result`. A name that is
/// declared ahead of the first function is global, so that the functions see it.
std::vector<Example> examples_of(const std::string& page) {
    std::ifstream file(std::string(MOSAICER_SOURCE_DIR "/docs/") + page);
    std::vector<Example> examples;
    std::string globals, functions, statements;
    bool in_block = false;
    for (std::string line; std::getline(file, line);) {
        const std::size_t arrow = line.find("  // => ");
        if (line == "```") {
            in_block = !in_block;
            globals = functions = statements = "";
        } else if (!in_block) {
            continue;
        } else if (arrow != std::string::npos) {
            const std::string expression = line.substr(0, arrow);
            examples.push_back({expression, line.substr(arrow + 8),
                                "import containers, math;\n" + globals + functions + "main() {\n" + statements +
                                    "return " + expression + "; }"});
        } else if (line.starts_with("object ") && line.find(":=") == std::string::npos) {
            globals += line + "\n";
        } else {
            (line.ends_with(" }") ? functions : statements) += line + "\n";
        }
    }
    return examples;
}

struct Page {
    const char* name;
    const char* members;
};

class ScriptPages : public testing::TestWithParam<Page> {};

TEST_P(ScriptPages, have_examples_that_are_true) {
    const std::size_t before = live_records();
    std::string seen;
    for (const Example& example : examples_of(GetParam().name)) {
        RuntimeHost host;
        MathLibrary math;
        host.add("math", math.value());
        EXPECT_EQ(result_of(example.program, &host), example.result) << example.expression;
        seen += example.program;
    }
    std::istringstream members(GetParam().members);
    for (std::string member; members >> member;)
        EXPECT_TRUE(has_member(seen, member)) << member;
    EXPECT_EQ(live_records(), before);
}

INSTANTIATE_TEST_SUITE_P(
    Docs, ScriptPages,
    testing::Values(
        Page{"script-containers.md",
             "callback_handler CallbackHandler Bitfield Vector Range List Map get set size resize push_back delete_if "
             "for_each empty clear contains copy iterator delete delete_at set_range indices order_important insert "
             "push_front pop_front pop_back front back has state set_state add remove update reset next key value"},
        Page{
            "script-math.md",
            "pow exp ln cos sin tan acos asin atan atan2 sqrt floor round ceil rand cryptrand abs sign clamp lerp step "
            "normalize cross dot spread Vector3 random_orthogonal rotate_with vector_angle RotationYPR RotationAA "
            "RotationLA yaw_pitch_roll vector_rotation look_at random_rotation_x random_rotation_y random_rotation_z "
            "rotation_xyz polar vector_to_polar polar_to_vector vector_to_polar_with_reference "
            "polar_to_vector_with_reference Int64 slerp format_float distance_to_segment line_intersection "
            "string_is_good_vector string_to_vector x y z len normalized inverse yaw pitch roll spin tilt phi theta r "
            "radius hi lo"}),
    [](const auto& page) { return page.index == 0 ? "containers" : "math"; });

} // namespace
} // namespace kst::script
