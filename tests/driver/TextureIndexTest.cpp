#include "driver/TextureIndex.h"

#include "driver/records/Report.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/tga_bytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

namespace mosaicer {
namespace {

using test_support::TemporaryDirectory;
using test_support::tga_bytes;

/// A DDS head of an uncompressed image of one level, with its pixels.
std::string dds_bytes(int side) {
    std::string bytes("DDS ");
    const auto word = [&bytes](std::uint32_t value) {
        for (int shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<char>((value >> shift) & 255));
    };
    const auto number = static_cast<std::uint32_t>(side);
    for (const std::uint32_t value : {124u, 0x1007u, number, number, number * number * 4, 0u, 1u})
        word(value);
    bytes.append(44, '\0');
    for (const std::uint32_t value :
         {32u, 0x41u, 0u, 32u, 0xFF0000u, 0xFF00u, 0xFFu, 0xFF000000u, 0x1000u, 0u, 0u, 0u, 0u})
        word(value);
    bytes.append(static_cast<std::size_t>(side) * static_cast<std::size_t>(side) * 4, '\x7F');
    return bytes;
}

class TextureIndexTest : public testing::Test {
protected:
    TextureIndexTest() {
        Report.warnings = &warnings;
        Report.verbose = &verbose;
    }
    ~TextureIndexTest() override { Report.warnings = Report.verbose = &discarding_stream(); }

    std::string below(const std::string& path) const { return folder.path().string() + "/" + path; }
    std::string collision(const std::string& standing, const std::string& found) const {
        return "Texture name collision between \n" + below(standing) + "\n and \n" + below(found) +
               " - check your texture roots!\n";
    }

    TemporaryDirectory folder;
    std::ostringstream warnings;
    std::ostringstream verbose;
};

struct WinnerCase {
    std::vector<std::string> files;
    std::string winner;
    std::vector<std::pair<std::string, std::string>> collisions;
};

TEST_F(TextureIndexTest, keeps_one_record_a_name) {
    const std::vector<WinnerCase> cases{
        {{"a.tga", "a.dds"}, "a.dds", {}},
        {{"1/a.tga", "2/a.tga"}, "1/a.tga", {{"1/a.tga", "2/a.tga"}}},
        {{"1/a.dds", "2/a.tga"}, "1/a.dds", {{"1/a.dds", "2/a.tga"}}},
        {{"1/a.dds", "2/a.dds"}, "2/a.dds", {{"1/a.dds", "2/a.dds"}}},
        {{"1/a.tga", "2/A.dds", "3/a.tga"}, "2/A.dds", {{"1/a.tga", "2/A.dds"}, {"2/A.dds", "3/a.tga"}}},
    };
    for (const WinnerCase& c : cases) {
        for (const auto& file : c.files)
            folder.write("root/" + file, file.ends_with("dds") ? dds_bytes(4) : tga_bytes(4, 4));
        warnings.str("");
        TextureIndex index(below("root/"));
        index.ensure_built();
        ASSERT_NE(index.find("a"), nullptr);
        EXPECT_EQ(index.find("a")->image.file_path, below("root/" + c.winner));
        std::string expected;
        for (const auto& [standing, found] : c.collisions)
            expected += collision("root/" + standing, "root/" + found);
        EXPECT_EQ(warnings.str(), expected);
        std::filesystem::remove_all(below("root"));
    }
}

TEST_F(TextureIndexTest, takes_names_with_blanks_umlauts_and_dots_and_only_four_lower_case_endings) {
    for (const char* name :
         {"Rock.tga", "sub dir/\xC3\xA4 b.tga", "a.b.tga", "upper.TGA", "notes.txt", "tga", "x.dds/y.tga"})
        folder.write(name, tga_bytes(3, 2));
    TextureIndex index(folder.path().string() + "/");
    index.ensure_built();
    std::vector<std::string> keys;
    for (const auto& [key, texture] : index.records())
        keys.push_back(key);
    EXPECT_THAT(keys, testing::ElementsAre("a.b", "rock", "y", "\xC3\xA4 b"));
    EXPECT_EQ(index.find("rock")->image.width, 3);
    EXPECT_EQ(index.find("rock")->image.height, 2);
}

TEST_F(TextureIndexTest, warns_of_a_file_that_cannot_be_read_and_goes_on) {
    folder.write("bad.tga", "not a picture");
    folder.write("bad.png", "not a picture either");
    folder.write("good.tga", tga_bytes(4, 4));
    TextureIndex index(folder.path().string() + "/");
    index.ensure_built();
    EXPECT_EQ(index.records().size(), 1u);
    EXPECT_THAT(warnings.str(),
                testing::AllOf(testing::HasSubstr(below("bad.png") + "\n"), testing::HasSubstr(below("bad.tga"))));
}

TEST_F(TextureIndexTest, walks_each_root_once_and_again_when_one_changes) {
    folder.write("1/a.tga", tga_bytes(4, 4));
    folder.write("2/b.tga", tga_bytes(4, 4));
    const std::string first = below("1/");
    const std::string second = below("2/");
    TextureIndex index(first);
    index.set_root(3, first);
    index.ensure_built();
    index.ensure_built();
    EXPECT_EQ(verbose.str(), "Indexing " + first + "... done (1 textures found)\n");

    const TextureIndex::Roots before = index.roots();
    index.set_root(3, second);
    EXPECT_TRUE(index.records().empty());
    index.ensure_built();
    index.restore_roots(before);
    index.ensure_built();
    EXPECT_NE(index.find("b"), nullptr) << "putting slots back drops nothing";
    EXPECT_THAT(verbose.str(), testing::EndsWith("Indexing " + second + "... done (2 textures found)\n"));
}

TEST_F(TextureIndexTest, does_not_follow_a_link_back_to_a_directory_above) {
    folder.write("root/a.tga", tga_bytes(4, 4));
    std::filesystem::create_directory_symlink(below("root"), below("root/loop"));
    TextureIndex index(below("root/"));
    index.ensure_built();
    EXPECT_EQ(index.records().size(), 1u);
    EXPECT_THAT(warnings.str(), testing::HasSubstr(below("root/loop") + " leads back"));
}

TEST_F(TextureIndexTest, finds_nothing_below_a_root_that_is_not_there) {
    TextureIndex index(below("nowhere/"));
    index.ensure_built();
    EXPECT_EQ(verbose.str(), "Indexing " + below("nowhere/") + "... done (0 textures found)\n");
    EXPECT_EQ(warnings.str(), "");
}

} // namespace
} // namespace mosaicer
