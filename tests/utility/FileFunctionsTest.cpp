#include "source/utility/filesystem/file_functions.h"

#include "source/utility/filesystem/VirtualFileSystem.h"
#include "tests/support/TemporaryDirectory.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace kst {
namespace {

using test_support::TemporaryDirectory;

struct Fixture {
    Fixture() { files.mount_directory("/", disk.path().string()); }
    bool on_disk(const char* path) const { return std::filesystem::exists(disk / path); }
    TemporaryDirectory disk;
    VirtualFileSystem files;
};

TEST(FileFunctions, delete_takes_all_below_and_leaves_what_links_lead_to) {
    Fixture f;
    f.disk.write("Tree/a", "");
    f.disk.write("Tree/Sub/.b", "");
    f.disk.write("outside/kept", "");
    std::filesystem::create_directory_symlink("../../outside", f.disk / "Tree/Sub/link");
    EXPECT_TRUE(delete_recursively(f.files, "/tree"));
    EXPECT_FALSE(f.on_disk("Tree"));
    EXPECT_TRUE(f.on_disk("outside/kept"));
    EXPECT_TRUE(delete_recursively(f.files, "outside\\KEPT"));
    EXPECT_FALSE(delete_recursively(f.files, "outside/kept"));
    EXPECT_FALSE(delete_recursively(f.files, "//"));
    EXPECT_TRUE(f.on_disk("outside"));
}

TEST(FileFunctions, copy_keeps_every_byte) {
    Fixture f;
    std::string bytes(2 * 16'384 + 5, 'x');
    bytes[16'384] = '\0';
    f.disk.write("Source.bin", bytes);
    f.disk.write("dir/old", "");
    EXPECT_TRUE(copy_file(f.files, "source.bin", "Copy"));
    EXPECT_EQ(f.disk.read("copy"), bytes);
    EXPECT_TRUE(copy_file(f.files, "/SOURCE.bin", "dir"));
    EXPECT_EQ(f.disk.read("dir/source.bin"), bytes);
    EXPECT_FALSE(copy_file(f.files, "none", "copy"));
    EXPECT_FALSE(copy_file(f.files, "copy", "no/where"));
    EXPECT_FALSE(copy_file(f.files, "copy", "COPY")) << "one file cannot be copied onto itself";
    EXPECT_EQ(f.disk.read("copy"), bytes);
}

TEST(FileFunctions, can_write_to_leaves_no_trace) {
    Fixture f;
    f.disk.write("dir/file", "kept");
    EXPECT_TRUE(can_write_to(f.files, "dir/file"));
    EXPECT_EQ(f.disk.read("dir/file"), "kept");
    EXPECT_TRUE(can_write_to(f.files, "dir"));
    EXPECT_TRUE(can_write_to(f.files, "dir/new"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(f.disk / "dir"), {}), 1);
    EXPECT_FALSE(can_write_to(f.files, "no/where"));
    std::filesystem::create_symlink("loop", f.disk / "loop");
    EXPECT_FALSE(can_write_to(f.files, "loop"));
}

} // namespace
} // namespace kst
