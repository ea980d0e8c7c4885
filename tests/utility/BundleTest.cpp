#include "source/utility/Errors.h"
#include "source/utility/MemoryDataStore.h"
#include "source/utility/filesystem/BundleFileSystem.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/filesystem/extract_bundle.h"
#include "source/utility/filesystem/write_bundle.h"
#include "tests/support/TemporaryDirectory.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <memory>

namespace kst {
namespace {

using namespace std::string_literals;
using test_support::TemporaryDirectory;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::ThrowsMessage;
using Names = std::vector<std::string>;

/// Written by hand from the layout. Deleted: the file "old" and the directory "dead".
const std::string golden_v2 = "BNDL\2\0\0\0\0\0\0\0\0\0\0\0"s
                              "\2\x52\0\0\0\0\0\0\0\3\0\0\0\1a\0"s // 16: file a, 3 bytes at 82
                              "\1\0dead\0\3"s                      // 32: deleted directory
                              "\1\1dir\0"s                         // 40
                              "\2\x55\0\0\0\0\0\0\0\2\0\0\0\1b\0"s // 46: file dir/b, 2 bytes at 85
                              "\3"s                                // 62
                              "\2\0\0\0\0\0\0\0\0\0\0\0\0\0old\0"s // 63: deleted file
                              "\3"s                                // 81
                              "AAABB"s;                            // 82
const std::string golden_v1 = "BNDL\1\0\0\0\0\0\0\0\0\0\0\0"s
                              "\x37\0\0\0\3\0\0\0\1a\0"s // 16: file a, 3 bytes at 55
                              "\xFF\xFF\xFF\xFF\1dir\0"s // 27
                              "\x3A\0\0\0\2\0\0\0\1b\0"s // 36: file dir/b, 2 bytes at 58
                              "\xFE\xFF\xFF\xFF"s        // 47
                              "\xFE\xFF\xFF\xFF"s        // 51
                              "AAABB"s;                  // 55

Archive on(const std::string& bytes) {
    return {"hand.bundle", std::make_unique<ConstMemoryDataStore>(bytes.data(), bytes.size()), 0,
            static_cast<std::int64_t>(bytes.size()), /*unbounded=*/false};
}

/// An entry a word: d directory, f file with offset and size, x deleted.
Names told(const BundleDirectory& bundle) {
    Names lines;
    for (std::size_t i = 1; i < bundle.entries().size(); ++i) {
        const BundleEntry& entry = bundle.entries()[i];
        std::string line = !entry.present ? "x " : entry.is_directory ? "d " : "f ";
        line += bundle.path_of(i);
        if (entry.present && !entry.is_directory)
            line += " " + std::to_string(entry.offset) + " " + std::to_string(entry.size);
        lines.push_back(line);
    }
    return lines;
}

BundleItem sample_tree(const TemporaryDirectory& disk) {
    disk.write("in/A", "AAA");
    disk.write("in/dir/B", "BB");
    BundleItem tree = bundle_tree(disk / "in");
    tree.items.insert(tree.items.begin() + 1, BundleItem{.name = "dead", .is_directory = true, .present = false});
    tree.items.push_back(BundleItem{.name = "old", .present = false});
    return tree;
}

TEST(Bundle, is_written_and_read_byte_for_byte) {
    ASSERT_EQ(golden_v2.size(), 87u);
    EXPECT_THAT(told(BundleDirectory(on(golden_v2))),
                ElementsAre("f a 82 3", "x dead", "d dir", "f dir/b 85 2", "x old"));
    const TemporaryDirectory disk;
    auto store = std::make_unique<MemoryDataStore>();
    const MemoryDataStore& written = *store;
    Archive output("out", std::move(store), 0, 0, /*unbounded=*/true);
    write_bundle(output, sample_tree(disk), 2);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(written.bytes().data()), written.bytes().size()), golden_v2);
}

TEST(Bundle, version_1_has_short_offsets) {
    const TemporaryDirectory disk;
    disk.write("in/a", "AAA");
    disk.write("in/dir/b", "BB");
    create_bundle(disk / "one.bundle", disk / "in", 1);
    EXPECT_EQ(disk.read("one.bundle"), golden_v1);
    EXPECT_THAT(told(BundleDirectory(on(golden_v1))), ElementsAre("f a 55 3", "d dir", "f dir/b 58 2"));
}

TEST(Bundle, packs_a_tree_in_the_order_of_its_normalised_names) {
    const TemporaryDirectory disk;
    for (const char* file : {"in/b", "in/_", "in/C/Deep/x.TXT", "in/c.txt", "in/\xC3\x84"})
        disk.write(file, file);
    create_bundle(disk / "in/own.bundle", disk / "in");
    create_bundle(disk / "in/own.bundle", disk / "in");
    const BundleDirectory bundle(on(disk.read("in/own.bundle")));
    Names paths;
    for (std::size_t i = 1; i < bundle.entries().size(); ++i)
        paths.push_back(bundle.path_of(i));
    EXPECT_THAT(paths, ElementsAre("_", "b", "c", "c/deep", "c/deep/x.txt", "c.txt", "\xC3\x84"))
        << "neither the bundle itself nor its unfinished form is packed";
    EXPECT_FALSE(std::filesystem::exists(disk / "in/own.bundle.part"));
}

TEST(Bundle, refuses_trees_that_it_cannot_hold) {
    const TemporaryDirectory disk;
    disk.write("case/Name", "");
    disk.write("case/name", "");
    disk.write("slash/a\\b", "");
    std::filesystem::create_directories(disk / "cycle/sub");
    std::filesystem::create_directory_symlink("..", disk / "cycle/sub/up");
    std::filesystem::create_directories(disk / "dangling");
    std::filesystem::create_symlink("nowhere", disk / "dangling/link");
    disk.write("large/file", "");
    std::filesystem::resize_file(disk / "large/file", std::uintmax_t{1} << 32);
    struct Case {
        const char *directory, *text;
    };
    for (const Case& c : {Case{"case", "A bundle cannot hold both "},
                          {"slash", "A bundle cannot hold the name of "},
                          {"cycle", "leads back to one above it"},
                          {"dangling", "it leads nowhere"},
                          {"large", "A bundle of version 2 has no room for "}})
        EXPECT_THAT([&] { create_bundle(disk / "out", disk / c.directory); },
                    ThrowsMessage<ErrorWithCStack>(testing::AllOf(HasSubstr(c.text), HasSubstr(disk / c.directory))));
    EXPECT_THROW(create_bundle(disk / "out", disk / "none"), DiskError);
    EXPECT_THROW(create_bundle(disk / "no/where", disk / "case"), std::runtime_error);
    EXPECT_FALSE(std::filesystem::exists(disk / "out"));
    EXPECT_FALSE(std::filesystem::exists(disk / "out.part"));
}

std::string nested(std::size_t levels) {
    std::string bytes = golden_v2.substr(0, 16);
    for (std::size_t i = 0; i < levels; ++i)
        bytes += "\1\1d\0"s;
    return bytes + std::string(levels + 1, '\3');
}

TEST(Bundle, a_damaged_directory_is_told_by_name) {
    struct Case {
        std::string bytes, text;
    };
    const std::string head = golden_v2.substr(0, 16);
    for (const Case& c :
         {Case{"", "the header is cut off"},
          {golden_v2.substr(0, 15), "the header is cut off"},
          {head, "the directory is cut off"},
          {head + "\1\1dir", "the directory is cut off"},
          {head + "\4", "unknown tag 4 in the directory"},
          {golden_v2.substr(0, 86), "the data of b lies outside the file"},
          {head + "\2\0\0\0\0\0\0\0\x80\1\0\0\0\1z\0\3"s, "the data of z lies outside the file"},
          {head + "\1\1" + std::string(4097, 'n') + "\0\3\3"s, "a path in the directory is too long"},
          {golden_v1.substr(0, 16) + "\xFF\xFF\xFF\xFF\1d\0\xFE\xFF\xFF\xFF"s, "the directory is cut off"},
          {nested(256), "directories are nested too deep"}})
        EXPECT_THAT([&] { BundleDirectory{on(c.bytes)}; },
                    ThrowsMessage<ErrorWithCStack>("Bundle hand.bundle: " + c.text));
    EXPECT_EQ(BundleDirectory(on(nested(255))).entries().size(), 256u);
    std::string other = golden_v2;
    other[4] = 3;
    EXPECT_EQ(BundleDirectory(on(other)).entries().size(), 1u) << "no directory is read for other versions";
    std::string letters = golden_v2;
    letters.replace(0, 4, "????");
    EXPECT_EQ(BundleDirectory(on(letters)).entries().size(), 6u) << "the letters are not tested";
}

TEST(Bundle, survives_every_prefix_and_flip) {
    const auto read = [](const std::string& bytes) {
        const auto exact = std::make_unique<char[]>(bytes.size());
        std::copy(bytes.begin(), bytes.end(), exact.get());
        Archive archive("cut", std::make_unique<ConstMemoryDataStore>(exact.get(), bytes.size()), 0,
                        static_cast<std::int64_t>(bytes.size()), false);
        try {
            told(BundleDirectory(archive));
        } catch (const ErrorWithCStack& error) {
            EXPECT_THAT(error.what(), testing::StartsWith("Bundle cut: "));
        }
    };
    for (const std::string& bytes : {golden_v2, golden_v1})
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            read(bytes.substr(0, i));
            std::string flipped = bytes;
            flipped[i] = static_cast<char>(~flipped[i]);
            read(flipped);
        }
}

TEST(Bundle, only_plain_names_stay_below_a_directory) {
    for (const auto& name : {"a"s, "..."s, ".hidden"s, "a b"s, "\xC3\xA4"s})
        EXPECT_TRUE(is_plain_name(name)) << name;
    for (const auto& name : {""s, "."s, ".."s, "a/b"s, "..\\x"s, "/etc"s, "a\0b"s})
        EXPECT_FALSE(is_plain_name(name)) << name;
}

TEST(Bundle, extracts_what_it_packed) {
    const TemporaryDirectory disk;
    const std::string large(200'000, 'x');
    disk.write("in/dir/large", large);
    disk.write("in/dir/sub/empty", "");
    std::filesystem::create_directories(disk / "in/bare");
    for (const int version : {1, 2}) {
        create_bundle(disk / "b", disk / "in", version);
        const std::string bytes = disk.read("b");
        const std::string out = disk / "out" + std::to_string(version);
        EXPECT_THAT(extract_bundle(BundleDirectory(on(bytes)), on(bytes), out), ElementsAre());
        create_bundle(disk / "again", out, version);
        EXPECT_EQ(disk.read("again"), bytes);
    }
    EXPECT_EQ(disk.read("out1/dir/large"), large);
}

TEST(Bundle, extracts_nothing_outside) {
    const TemporaryDirectory disk;
    auto store = std::make_unique<MemoryDataStore>();
    const MemoryDataStore& written = *store;
    Archive output("out", std::move(store), 0, 0, /*unbounded=*/true);
    const std::string source = disk.write("source", "s");
    const BundleItem file{.name = "f", .host_path = source, .size = 1};
    BundleItem climbing = file;
    climbing.name = "..\\climbed";
    write_bundle(output,
                 {.items = {{.name = "..", .is_directory = true, .items = {file}},
                            climbing,
                            {.name = "dead", .is_directory = true, .present = false, .items = {file}},
                            file}},
                 2);
    const std::string bytes(reinterpret_cast<const char*>(written.bytes().data()), written.bytes().size());
    EXPECT_THAT(extract_bundle(BundleDirectory(on(bytes)), on(bytes), disk / "in"), ElementsAre("..", "..\\climbed"));
    EXPECT_EQ(disk.read("in/f"), "s");
    EXPECT_FALSE(std::filesystem::exists(disk / "f"));
    EXPECT_FALSE(std::filesystem::exists(disk / "climbed"));
    EXPECT_FALSE(std::filesystem::exists(disk / "in/dead"));
}

/// A disk with a bundle "level" over files of its own.
struct Game {
    Game() {
        disk.write("bundles/level.bundle", golden_v2);
        for (const char* file : {"a", "old", "dead/x", "behind"})
            disk.write(file, "disk");
        files.mount_directory("/", disk.path().string());
    }
    std::string content(const std::string& path) {
        Archive archive = files.open(path, "r");
        std::string text(static_cast<std::size_t>(archive.size()), '?');
        text.resize(archive.read(text.data(), text.size()));
        return text;
    }
    TemporaryDirectory disk;
    VirtualFileSystem files;
    BundleFileSystem bundle{files};
};

TEST(BundleFileSystem, serves_hides_and_masks) {
    Game game;
    game.files.mount("/", &game.bundle, /*owned=*/false);
    EXPECT_EQ(game.content("a"), "disk") << "nothing is loaded yet";
    ASSERT_TRUE(game.bundle.load("level"));
    EXPECT_EQ(game.content("A"), "AAA");
    EXPECT_EQ(game.content("/DIR//b"), "BB");
    EXPECT_EQ(game.files.open("dir\\b", "rc").name(), "dir\\b");
    EXPECT_TRUE(game.files.is_dir("dir"));
    EXPECT_FALSE(game.files.is_dir("dir/b"));
    EXPECT_FALSE(game.files.exists("dir/b/c"));
    EXPECT_FALSE(game.files.exists("old"));
    EXPECT_FALSE(game.files.open("old", "r"));
    EXPECT_FALSE(game.files.exists("dead/x")) << "all below a deleted directory is gone";
    EXPECT_EQ(game.content("behind"), "disk");
    std::int64_t offset = 0;
    std::int32_t size = 0;
    EXPECT_EQ(game.files.locate("dir/b", offset, size), game.disk / "bundles/level.bundle");
    EXPECT_EQ(offset, 85);
    EXPECT_EQ(size, 2);
    EXPECT_EQ(game.files.last_modified("dir/b"), game.files.last_modified("bundles/level.bundle"));
    Names names;
    game.bundle.list(names, "", "*.*", /*want_directories=*/false);
    EXPECT_THAT(names, ElementsAre("a"));
    names.clear();
    game.bundle.list(names, "/", "*;d*", /*want_directories=*/true);
    EXPECT_THAT(names, ElementsAre("dir", "dir"));
    names.clear();
    game.bundle.list(names, "dir", "*", /*want_directories=*/false);
    EXPECT_THAT(names, ElementsAre("b"));

    Archive written = game.files.open("dir2", "w");
    EXPECT_TRUE(written) << "writing goes past the bundle to the disk";
    game.files.enable_bundles(false);
    EXPECT_EQ(game.content("a"), "disk");
    EXPECT_TRUE(game.files.exists("old"));
    game.files.enable_bundles(true);
    game.bundle.unload();
    EXPECT_EQ(game.content("a"), "disk");
}

TEST(BundleFileSystem, looks_up_bundles_by_name) {
    Game game;
    EXPECT_FALSE(game.bundle.load("other"));
    EXPECT_FALSE(game.bundle.load("level", BundleFileSystem::Kind::custom_level));
    game.disk.write("custom_levels/mine.bundle", golden_v2);
    EXPECT_TRUE(game.bundle.load("mine", BundleFileSystem::Kind::custom_level));
    EXPECT_TRUE(game.bundle.exists("a"));
    game.disk.write("bundles/Quick.bundle", golden_v2.substr(0, 16) + "\3");
    EXPECT_TRUE(game.bundle.load(BundleFileSystem::patch_name));
    EXPECT_FALSE(game.bundle.exists("a"));
    game.disk.write("bundles/patch.bundle", "BNDL");
    EXPECT_THAT([&] { game.bundle.load(BundleFileSystem::patch_name); },
                ThrowsMessage<ErrorWithCStack>("Bundle bundles\\patch.bundle: the header is cut off"));
    EXPECT_FALSE(game.bundle.masks("a"));
}

} // namespace
} // namespace kst
