#include "source/utility/filesystem/find_host_path.h"
#include "source/utility/filesystem/normalize_path.h"
#include "source/utility/filesystem/wildcards.h"
#include "source/utility/platform/Directory.h"
#include "tests/support/TemporaryDirectory.h"

#include <filesystem>
#include <gmock/gmock.h>

namespace kst {
namespace {

using test_support::TemporaryDirectory;

struct Rule {
    std::string path;
    bool trailing, leading;
    std::string expected;
};

TEST(NormalizePath, follows_the_rule) {
    for (const Rule& rule : {Rule{"/a//b/", true, false, "a\\b\\"},
                             {"/a//b/", true, true, "\\a\\b\\"},
                             {"/A//b/", false, false, "a\\b"},
                             {"a\\B", false, false, "a\\b"},
                             {"a", true, false, "a\\"},
                             {"\\/\\", false, false, ""},
                             {"//", true, true, "\\"},
                             {"//", false, true, ""},
                             {"", true, true, ""},
                             {"\xC3\x84/[Z]{@}", false, false, "\xC3\x84\\[z]{@}"},
                             {"../A", false, false, "..\\a"}})
        EXPECT_EQ(normalize_path(rule.path, rule.trailing, rule.leading), rule.expected) << rule.path;
}

struct Fit {
    const char *pattern, *fitting, *other;
};

TEST(Wildcards, fit_names_as_searches_do) {
    for (const Fit& fit : {Fit{"*", "a", nullptr},
                           {"*.*", "no_dot", nullptr},
                           {"*.txt", "A.B.TXT", "a.txt2"},
                           {"*.txt", ".txt", "txt"},
                           {"a*b*c", "aXbXbc", "aXbXcb"},
                           {"a.*", "a", "ab"},
                           {"?.bin", "\xC3\xA4.bin", "ab.bin"},
                           {"a??.x", "a.x", "abcd.x"},
                           {"Exact.Name", "exact.name", "exact.name2"},
                           {"*a*a*a*a*a*a*b", "aaaaaaaaaaaaaaaaaaaaaab", "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"},
                           {"", "", "a"}}) {
        EXPECT_TRUE(fits_pattern(fit.fitting, fit.pattern)) << fit.pattern;
        if (fit.other) {
            EXPECT_FALSE(fits_pattern(fit.other, fit.pattern)) << fit.pattern;
        }
    }
}

TEST(FindHostPath, reaches_files_of_any_case) {
    const TemporaryDirectory disk;
    for (const char* file : {"Dir/File.TXT", "b/x", "B/X", "B/only_upper", "c/e/1", "C/E/2", "\xC3\x84/UTF 8"})
        disk.write(file, "");
    const std::string root = disk.path().string() + "/";
    struct Case {
        const char *path, *expected;
    };
    for (const Case& c : {Case{"Dir/File.TXT", "Dir/File.TXT"},
                          {"dir\\file.txt", "Dir/File.TXT"},
                          {"DIR//./FILE.txt", "Dir/./File.TXT"},
                          {"dir/../dir/file.txt", "Dir/../Dir/File.TXT"},
                          {"b/x", "b/x"},
                          {"B/x", "B/X"},
                          {"b/ONLY_UPPER", "B/only_upper"},
                          {"c/e/2", "C/E/2"},
                          {"\xC3\x84/utf 8", "\xC3\x84/UTF 8"},
                          {"dir/", "Dir/"},
                          {"dir/new.txt", "Dir/new.txt"},
                          {"dir/New/Sub/x", "Dir/New/Sub/x"},
                          {"dir/file.txt/below", "Dir/file.txt/below"},
                          {"none", "none"}})
        EXPECT_EQ(find_host_path(root + c.path), root + c.expected);
    EXPECT_EQ(find_host_path(""), "");
    EXPECT_EQ(find_host_path("\\"), "/");
    EXPECT_EQ(find_host_path("No\\Where"), "No/Where");
}

TEST(FindHostPath, sees_what_was_written_a_moment_ago) {
    const TemporaryDirectory disk;
    EXPECT_EQ(find_host_path(disk / "a"), disk / "a");
    disk.write("A", "");
    EXPECT_EQ(find_host_path(disk / "a"), disk / "A");
    disk.write("a", "");
    EXPECT_EQ(find_host_path(disk / "a"), disk / "a");
}

TEST(ListDirectory, sorts_by_bytes_and_follows_links) {
    const TemporaryDirectory disk;
    for (const char* file : {"b", "B", "_", "a.txt", ".hidden", "dir/x"})
        disk.write(file, "");
    std::filesystem::create_directory_symlink("dir", disk / "link");
    std::filesystem::create_symlink("nowhere", disk / "dangling");
    std::filesystem::create_directory_symlink("..", disk / "dir/up");
    std::vector<platform::DirectoryEntry> entries;
    ASSERT_EQ(platform::list_directory(disk.path().string(), entries), platform::PathResult::ok);
    std::vector<std::string> told;
    for (const auto& entry : entries)
        told.push_back(entry.name + (entry.is_directory ? "/" : ""));
    EXPECT_THAT(told, testing::ElementsAre(".hidden", "B", "_", "a.txt", "b", "dangling", "dir/", "link/"));

    platform::PathInfo here;
    platform::PathInfo around;
    EXPECT_EQ(platform::path_info(disk.path().string(), here), platform::PathResult::ok);
    EXPECT_EQ(platform::path_info(disk / "dir\\up", around), platform::PathResult::ok);
    EXPECT_EQ(here.identity, around.identity) << "a walk can see that it came back";
    EXPECT_EQ(platform::list_directory(disk / "none", entries), platform::PathResult::missing);
    EXPECT_EQ(platform::list_directory(disk / "b", entries), platform::PathResult::missing);
    std::filesystem::create_symlink("loop", disk / "loop");
    EXPECT_EQ(platform::list_directory(disk / "loop", entries), platform::PathResult::failed);
    EXPECT_TRUE(entries.empty());
}

} // namespace
} // namespace kst
