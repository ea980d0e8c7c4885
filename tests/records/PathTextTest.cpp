#include "driver/records/PathText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace mosaicer {
namespace {

struct JoinCase {
    const char* a;
    const char* b;
    const char* joined;
};

TEST(JoinPath, leaves_exactly_one_slash_between) {
    for (const JoinCase& c : {JoinCase{"C:\\a\\", "/b/", "C:/a/b"}, JoinCase{"tex", "", "tex/"},
                              JoinCase{"tex//\\", "", "tex/"}, JoinCase{"", "b", "/b"}, JoinCase{"", "", "/"},
                              JoinCase{"/", "b\\c//", "/b/c"}, JoinCase{"a b", "\xC3\xA4\\x", "a b/\xC3\xA4/x"}})
        EXPECT_EQ(join_path(c.a, c.b), c.joined) << c.a << " + " << c.b;
}

TEST(DirectoryOf, ends_before_the_last_separator_of_either_kind) {
    EXPECT_EQ(directory_of("a/b\\c.tga"), "a/b");
    EXPECT_EQ(directory_of("a\\b/c.tga"), "a\\b");
    EXPECT_EQ(directory_of("c.tga"), "c.tga");
}

TEST(TextHelpers, know_one_kind_of_blank_and_ascii_letters_only) {
    EXPECT_EQ(trim_blanks("  a\tb \t"), "a\tb \t");
    EXPECT_EQ(trim_blanks("   "), "");
    EXPECT_EQ(lower_name("Rock_\xC3\x84Z@["), "rock_\xC3\x84z@[");
    EXPECT_THAT(split_string(" 1  2 x ", ' '), testing::ElementsAre("1", "2", "x"));
    EXPECT_THAT(split_string("  ", ' '), testing::IsEmpty());
}

} // namespace
} // namespace mosaicer
