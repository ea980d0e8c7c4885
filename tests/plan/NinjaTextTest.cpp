#include "driver/plan/ninja_text.h"

#include "driver/plan/ninja_plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace mosaicer {
namespace {

TEST(NinjaText, escapes_what_ninja_and_the_shell_would_read) {
    EXPECT_EQ(ninja_path("a b/c$d:e|f\u00E4"), "a$ b/c$$d$:e${bar}f\u00E4");
    EXPECT_EQ(ninja_value("a b$c:|"), "a b$$c:|");
    EXPECT_EQ(dyndep_path("a b$c:"), "a$ b$$c$:");
    EXPECT_EQ(shell_word("-pui/hud_1.x"), "-pui/hud_1.x");
    EXPECT_EQ(shell_word("it's $a"), "'it'\\''s $a'");
    EXPECT_EQ(shell_word(""), "''");
    EXPECT_EQ(shell_word("~"), "'~'");
}

TEST(NinjaText, refuses_what_no_ninja_file_holds) {
    for (const char* const bad : {"a\nb", "a\rb"}) {
        EXPECT_THROW(ninja_path(bad), std::runtime_error);
        EXPECT_THROW(ninja_value(bad), std::runtime_error);
    }
    EXPECT_THROW(dyndep_path("a|b"), std::runtime_error);
}

TEST(NinjaText, makes_one_file_name_of_each_name) {
    EXPECT_EQ(file_name_of("ui/hud 1%"), "ui%2Fhud%201%25");
    std::set<std::string> names;
    for (const char last : {'a', 'b'}) {
        names.insert(file_name_of(std::string(400, '/') + last));
        EXPECT_LE(names.begin()->size(), 200u);
    }
    EXPECT_EQ(names.size(), 2u);
}

TEST(NinjaDyndep, names_the_files_behind_the_stamp) {
    const std::vector<std::string> files{"out/a b/atlas.dds", "out/a b/tdb_atlas_set.xml"};
    EXPECT_EQ(ninja_dyndep("s.log", files),
              "ninja_dyndep_version = 1\nbuild s.log | out/a$ b/atlas.dds out/a$ b/tdb_atlas_set.xml: dyndep\n");
    EXPECT_EQ(ninja_dyndep("s.log", {}), "ninja_dyndep_version = 1\nbuild s.log: dyndep\n");
}

} // namespace
} // namespace mosaicer
