#include "source/utility/Errors.h"
#include "source/utility/filesystem/DiskFileSystem.h"
#include "source/utility/filesystem/MemoryFileSystem.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/filesystem/normalize_path.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/throws_disk_error.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <sys/stat.h>

namespace kst {
namespace {

using test_support::TemporaryDirectory;
using test_support::throws_disk_error;
using testing::ElementsAre;
using Names = std::vector<std::string>;

std::string content(Archive archive) {
    std::string text(static_cast<std::size_t>(archive.size()), '?');
    text.resize(archive.read(text.data(), text.size()));
    return text;
}

void put(FileSystem& files, const std::string& path, const std::string& mode, std::string_view text) {
    Archive archive = files.open(path, mode);
    ASSERT_TRUE(archive) << path;
    archive.write(text.data(), text.size());
}

Names list(FileSystem& files, const std::string& path, const std::string& patterns, bool want_directories = false) {
    Names names;
    files.list(names, path, patterns, want_directories);
    return names;
}

/// Runs a test inside a directory.
class WorkingDirectory {
public:
    explicit WorkingDirectory(const std::filesystem::path& path) { std::filesystem::current_path(path); }
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;
    ~WorkingDirectory() { std::filesystem::current_path(before_); }

private:
    std::filesystem::path before_ = std::filesystem::current_path();
};

TEST(DiskFileSystem, opens_by_mode) {
    const TemporaryDirectory disk;
    DiskFileSystem files(disk.path().string());
    EXPECT_FALSE(files.open("f", "r"));
    EXPECT_FALSE(files.open("f", "r+"));
    EXPECT_FALSE(files.open("no/dir", "w"));
    put(files, "f", "w", "first");
    put(files, "f", "a", "+");
    EXPECT_EQ(disk.read("f"), "first+");
    put(files, "f", "r+", "F");
    EXPECT_EQ(disk.read("f"), "First+");
    put(files, "g", "a", "new");
    put(files, "f", "w+", "2");
    EXPECT_EQ(disk.read("f"), "2");
    EXPECT_EQ(disk.read("g"), "new");

    Archive reader = files.open("G", "r");
    EXPECT_EQ(reader.name(), "G");
    EXPECT_FALSE(reader.unbounded());
    EXPECT_EQ(content(reader), "new");
    EXPECT_THROW(reader.set_position(4), std::range_error);
    const Archive tail = files.open("g", "a");
    EXPECT_EQ(tail.size(), 0);
    EXPECT_TRUE(tail.unbounded());
    EXPECT_THROW(files.open("", "r"), DiskError) << "a directory is there but no file";
}

TEST(DiskFileSystem, answers_about_paths_in_any_case) {
    const TemporaryDirectory disk;
    const std::string file = disk.write("Sub Dir/\xC3\xA4 File.Txt", "x");
    const timespec times[2] = {{1'000'000'000, 123'456'789}, {1'000'000'000, 123'456'789}};
    ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
    DiskFileSystem files(disk.path().string());
    EXPECT_TRUE(files.exists("sub dir\\\xC3\xA4 file.txt"));
    EXPECT_FALSE(files.exists("sub dir\\none"));
    EXPECT_TRUE(files.is_dir("SUB DIR"));
    EXPECT_FALSE(files.is_dir("sub dir/\xC3\xA4 file.txt"));
    EXPECT_EQ(files.last_modified("sub dir/\xC3\xA4 file.txt"), 126'444'736'001'234'567u);
    EXPECT_EQ(files.last_modified("none"), 0u);
    EXPECT_EQ(files.system_path("sub dir\\\xC3\xA4 file.txt"), file);
    EXPECT_EQ(files.full_path("sub dir\\x"), "sub dir\\x");
    std::int64_t offset = 7;
    std::int32_t size = 7;
    EXPECT_EQ(files.locate("sub dir/\xC3\xA4 file.txt", offset, size), file);
    EXPECT_EQ(offset, 0);
    EXPECT_EQ(size, -1);

    std::filesystem::create_symlink("loop", disk / "loop");
    EXPECT_THAT([&] { files.exists("loop"); }, throws_disk_error("Cannot determine if path exists loop"));
    EXPECT_THAT([&] { files.is_dir("loop"); }, throws_disk_error("Cannot determine if path is dir loop"));
    EXPECT_THAT([&] { files.last_modified("loop"); }, throws_disk_error("Cannot determine if path exists loop"));
    EXPECT_THAT([&] { list(files, "loop", "*"); }, throws_disk_error("Cannot list dir loop"));
    EXPECT_THAT([&] { files.open("loop", "r"); }, throws_disk_error("Cannot open " + disk / "loop"));
}

TEST(DiskFileSystem, makes_lists_and_deletes) {
    const TemporaryDirectory disk;
    DiskFileSystem files(disk.path().string() + "\\");
    EXPECT_TRUE(files.root().ends_with("\\"));
    EXPECT_TRUE(files.make_dir("Made"));
    EXPECT_FALSE(files.make_dir("made")) << "it is there in another case";
    EXPECT_FALSE(files.make_dir("no/parent"));
    for (const char* file : {"Made/b.txt", "Made/a.xml", "Made/A.TXT", "Made/c"})
        disk.write(file, "");
    std::filesystem::create_directories(disk / "Made/sub.txt");
    EXPECT_THAT(list(files, "made", "*.txt;;*.xml"), ElementsAre("A.TXT", "b.txt", "a.xml"));
    EXPECT_THAT(list(files, "made/", "*.*", true), ElementsAre("sub.txt"));
    EXPECT_THAT(list(files, "", "MADE/c"), ElementsAre("c"));
    EXPECT_THAT(list(files, "none", "*"), ElementsAre());
    EXPECT_FALSE(files.delete_file("made")) << "not empty";
    EXPECT_TRUE(files.delete_file("MADE/B.TXT"));
    EXPECT_TRUE(files.delete_file("made/SUB.txt"));
    EXPECT_FALSE(files.delete_file("made/b.txt"));
}

TEST(MemoryFileSystem, leads_every_name_to_its_file) {
    const TemporaryDirectory disk;
    const std::string path = disk.write("Any Case.bin", "bytes");
    MemoryFileSystem files(path);
    EXPECT_TRUE(files.exists("whatever"));
    EXPECT_FALSE(files.is_dir("whatever"));
    EXPECT_EQ(files.full_path("x"), path);
    EXPECT_THAT(list(files, "x", "*.y"), ElementsAre(path));
    Archive archive = files.open("image_memory", "r");
    EXPECT_EQ(archive.name(), path);
    EXPECT_EQ(archive.size(), 0);
    char bytes[9] = {};
    EXPECT_EQ(archive.read(bytes, 8), 5u);
    EXPECT_STREQ(bytes, "bytes");
    const std::string missing = disk / "none";
    EXPECT_THAT([&] { MemoryFileSystem(missing).open("x", "r"); },
                testing::ThrowsMessage<ErrorWithCStack>("Failure opening " + missing));
}

/// A file system of fixed names that notes what it is asked.
class FakeFileSystem : public FileSystem {
public:
    explicit FakeFileSystem(Names has, Names masked = {}) : has_(std::move(has)), masked_(std::move(masked)) {}

    bool exists(const std::string& path) override {
        asked.push_back(path);
        return std::count(has_.begin(), has_.end(), path) > 0;
    }
    bool masks(const std::string& path) override { return std::count(masked_.begin(), masked_.end(), path) > 0; }
    bool is_dir(const std::string&) override { return true; }
    std::string locate(const std::string& path, std::int64_t&, std::int32_t&) override { return path; }
    std::string system_path(const std::string& path) override { return "host:" + path; }
    std::string full_path(const std::string& path) override { return path; }
    Archive open(const std::string& path, const std::string& mode) override {
        asked.push_back(mode + " " + path);
        return {};
    }
    bool make_dir(const std::string& path) override {
        asked.push_back("make " + path);
        return true;
    }
    bool delete_file(const std::string& path) override {
        asked.push_back("delete " + path);
        return true;
    }
    void list(Names& names, const std::string&, const std::string&, bool) override {
        names.insert(names.end(), has_.begin(), has_.end());
    }
    bool is_read_only() override { return read_only; }
    std::uint64_t last_modified(const std::string&) override { return 42; }

    Names asked;
    bool read_only = false;

private:
    Names has_, masked_;
};

TEST(VirtualFileSystem, asks_in_one_spelling) {
    VirtualFileSystem files;
    FakeFileSystem disk({"a\\b.txt"});
    files.mount("/", &disk, /*owned=*/false);
    for (const char* path : {"/A/B.TXT", "a\\b.txt", "a/b.txt", "//a\\/B.txt/"})
        EXPECT_TRUE(kst::exists(path));
    EXPECT_THAT(disk.asked, testing::Each("a\\b.txt"));
    EXPECT_EQ(kst::system_path("A/B.txt"), "host:a\\b.txt");
    EXPECT_EQ(kst::system_path("/Other"), "/Other") << "unchanged where nothing has it";
    EXPECT_EQ(kst::full_path("Other/"), "Other/");
    EXPECT_EQ(kst::last_modified("a/b.txt"), 42u);
    EXPECT_EQ(kst::last_modified("none"), 0u);
    EXPECT_TRUE(kst::is_dir("a/b.txt"));
    EXPECT_FALSE(kst::is_dir("none"));
    EXPECT_FALSE(kst::open("none", "r"));
}

TEST(VirtualFileSystem, later_mounts_come_first_and_may_mask) {
    VirtualFileSystem files;
    FakeFileSystem early({"both", "early", "gone"});
    FakeFileSystem late({"both"}, {"gone"});
    files.mount("data/", &early, false);
    const auto id = files.mount("Data", &late, false);
    files.open("data/both", "r");
    files.open("data/early", "rc");
    files.open("data/gone", "r");
    files.open("data/new", "r+");
    EXPECT_THAT(late.asked, ElementsAre("both", "r both", "early", "gone", "r+ new"));
    EXPECT_THAT(early.asked, ElementsAre("early", "rc early"));
    EXPECT_FALSE(files.exists("data/gone"));
    EXPECT_THAT(list(files, "data", "*"), ElementsAre("both", "early", "gone"));
    late.read_only = true;
    EXPECT_TRUE(files.make_dir("data/d"));
    EXPECT_TRUE(files.delete_file("data/d"));
    EXPECT_EQ(early.asked.back(), "delete d");
    files.unmount(id + 1000);
    files.unmount(id);
    EXPECT_TRUE(files.exists("data/gone"));
    EXPECT_FALSE(files.exists("other/both"));
    EXPECT_FALSE(files.exists("dat"));
}

TEST(VirtualFileSystem, a_mount_point_itself_is_the_empty_path) {
    VirtualFileSystem files;
    FakeFileSystem fake({""});
    files.mount("a/b", &fake, false);
    EXPECT_TRUE(files.exists("/A/B/"));
    EXPECT_TRUE(files.exists("a\\b"));
    EXPECT_FALSE(files.exists("a"));
    EXPECT_FALSE(files.exists("a/bc"));
}

TEST(VirtualFileSystem, is_the_only_one_and_frees_what_it_owns) {
    struct Mortal : FakeFileSystem {
        explicit Mortal(bool& alive) : FakeFileSystem({}), alive_(alive) { alive_ = true; }
        ~Mortal() override { alive_ = false; }
        bool& alive_;
    };
    bool first = false;
    bool second = false;
    EXPECT_THROW(kst::exists("x"), AssertionException);
    {
        VirtualFileSystem files;
        EXPECT_EQ(VirtualFileSystem::instance(), &files);
        EXPECT_THROW(VirtualFileSystem(), AssertionException);
        EXPECT_EQ(VirtualFileSystem::instance(), &files);
        const auto id = files.mount("a", new Mortal(first), /*owned=*/true);
        EXPECT_EQ(files.mount("b", new Mortal(second), /*owned=*/true), id + 1);
        files.unmount(id);
        EXPECT_FALSE(first);
        EXPECT_TRUE(second);
    }
    EXPECT_FALSE(second);
    EXPECT_EQ(VirtualFileSystem::instance(), nullptr);
}

TEST(VirtualFileSystem, references_show_a_directory_read_only) {
    const TemporaryDirectory disk;
    disk.write("Real/Deep/File", "text");
    VirtualFileSystem files;
    files.mount_directory("/", disk.path().string());
    files.mount_reference("alias", "/real/deep/");
    EXPECT_EQ(content(files.open("alias/file", "r")), "text");
    EXPECT_TRUE(files.is_dir("alias"));
    EXPECT_THAT(list(files, "alias", "*"), ElementsAre("File"));
    EXPECT_FALSE(files.open("alias/new", "w")) << "goes to the disk, which has no directory alias";
    EXPECT_TRUE(files.make_dir("alias"));
    put(files, "alias/new", "w", "x");
    EXPECT_EQ(disk.read("alias/new"), "x");
    files.mount_reference("real", "real");
    EXPECT_TRUE(files.exists("real/deep/file")) << "found behind the reference to itself";
}

TEST(VirtualFileSystem, takes_absolute_and_relative_paths_of_the_host) {
    const TemporaryDirectory disk;
    const std::string root = disk.path().string();
    // The same name below the root of the host and below the current directory.
    disk.write("Here.txt", "absolute");
    disk.write("cwd" + root + "/here.txt", "relative");
    disk.write("cwd/Only/File.txt", "only");
    const WorkingDirectory inside(disk / "cwd");
    VirtualFileSystem files;
    DiskFileSystem host;
    files.mount("/", &host, false);

    Archive archive = files.open(root + "/HERE.txt", "r");
    EXPECT_EQ(content(archive), "absolute");
    EXPECT_EQ(archive.name(), normalize_path(root + "/here.txt", false, false));
    EXPECT_EQ(content(files.open(root.substr(1) + "/HERE.txt", "r")), "relative");
    EXPECT_EQ(content(files.open("/only/file.TXT", "r")), "only") << "as below the root of the name space";
    EXPECT_EQ(files.system_path(root + "/here.txt"), disk / "Here.txt");
    EXPECT_EQ(content(files.open(files.full_path(root + "/here.txt"), "r")), "absolute");
    EXPECT_THAT(list(files, root, "*.txt"), ElementsAre("Here.txt"));
    EXPECT_EQ(list(files, "/", "*", true).size(), 2u) << "the root of the name space is the current directory";

    put(files, root + "/New.txt", "w", "new");
    EXPECT_EQ(disk.read("new.txt"), "new");
    EXPECT_FALSE(files.delete_file("/nothing_of_this_name"));
    disk.write("cwd/nothing_of_this_name", "x");
    EXPECT_FALSE(files.delete_file("/nothing_of_this_name")) << "never the file below the current directory";
    EXPECT_EQ(files.make_dir(root + "/Made"), true);
    EXPECT_TRUE(std::filesystem::is_directory(disk / "made"));
}

TEST(VirtualFileSystem, traces_opens) {
    const TemporaryDirectory disk;
    disk.write("a.txt", "");
    {
        VirtualFileSystem files;
        files.mount_directory("/", disk.path().string());
        files.set_tracing(true);
        files.open("/A.txt", "r");
        files.set_script("levels\\One.kvs");
        files.open("none", "rc");
        files.enable_bundles(false);
        files.open("a.txt", "r");
        files.enable_bundles(true);
        files.set_script("script_not_set");
        files.open("a.txt", "r");
        files.set_tracing(false);
        files.open("a.txt", "r");
    }
    EXPECT_EQ(disk.read("bundles/script_not_set.xml"),
              "   <open path=\"a.txt\" flags=\"r\" />\n   <open path=\"a.txt\" flags=\"r\" />\n");
    EXPECT_EQ(disk.read("bundles/One.kvs.xml"), "   <open path=\"none\" flags=\"rc\" />\n");
}

} // namespace
} // namespace kst
