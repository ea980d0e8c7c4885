#include "texture/TextureSet.h"

#include "tests/support/TemporaryDirectory.h"
#include "tests/texture/support/TestImages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace mosaicer {
namespace {

using namespace test;
using test_support::TemporaryDirectory;

struct OneTexture {
    TemporaryDirectory dir;
    SourceTexture record;
    AtlasSetDefinition set;

    explicit OneTexture(const std::string& file_bytes = dds_file({solid(4, 4, 1), solid(2, 2, 2), {{3}}})) {
        record.name = "rock";
        record.image = {dir.write("rock.dds", file_bytes), 4, 4};
        set.name = "sets/Stone";
        SetTextureEntry entry;
        entry.texture = &record;
        entry.category = "walls";
        entry.mip_filter = MipFilter::KEEP;
        entry.rotation = 90; // without effect, as is the padding
        entry.pad_texels_u = 3;
        set.textures = {entry};
    }

    void create() { create_texture_set(set, dir / "out"); }
    std::string output(const std::string& name) const { return dir.read("out/sets/Stone/" + name); }
};

const std::string head = "<texture_set name=\"sets/Stone\" allow_autoload=\"true\">\n";
const std::string line = "\t<image name=\"rock\" category=\"walls\" orig_name=\"rock\" orig_mip_filter=\"KEEP\" "
                         "orig_forced_width=\"-1\" orig_forced_height=\"-1\" />\n";
const std::string end = "</texture_set>\n";

TEST(TextureSet, writes_an_image_and_a_line_for_each_texture) {
    OneTexture one;
    ReportCapture report;
    one.create();
    EXPECT_EQ(one.output("rock.dds"), one.dir.read("rock.dds"));
    EXPECT_EQ(one.output("tdb_texture_set.xml"), head + line + end);
    EXPECT_EQ(report.progress.str(), "Creating texture set sets/Stone...\n"
                                     "Using dxt lib for DXT compression\n"
                                     "Converting atlas to dxt image... done.\n"
                                     "Compressing using dxt lib... ***** done.\n"
                                     "Done.\n");
}

TEST(TextureSet, cuts_the_chain_to_the_levels_asked_for) {
    for (const auto& [nr_mips, levels] : {std::pair{0, 3}, {1, 1}, {2, 2}, {9, 3}}) {
        OneTexture one;
        one.set.nr_mips = nr_mips;
        one.create();
        std::vector<Rows> chain{solid(4, 4, 1), solid(2, 2, 2), {{3}}};
        chain.resize(static_cast<std::size_t>(levels));
        EXPECT_EQ(one.output("rock.dds"), dds_file(chain)) << nr_mips;
    }
}

TEST(TextureSet, names_an_image_by_its_new_name) {
    OneTexture one;
    one.set.textures[0].rename_to = "pebble";
    one.set.file_format = TextureFileFormat::PNG;
    one.set.textures.push_back(one.set.textures[0]);
    one.set.textures[1].rename_to = "gravel";
    one.create();
    EXPECT_TRUE(Bitmap::load(one.dir / "out/sets/Stone/pebble.png", BitmapFormat::png));
    EXPECT_TRUE(Bitmap::load(one.dir / "out/sets/Stone/gravel.png", BitmapFormat::png));
    EXPECT_THAT(one.output("tdb_texture_set.xml"),
                testing::HasSubstr("<image name=\"gravel\" category=\"walls\" orig_name=\"rock\""));
}

TEST(TextureSet, copies_a_cube_byte_for_byte_with_its_own_extension) {
    for (const std::size_t size : {0u, 2045u, 2046u, 10000u}) {
        OneTexture one(std::string(size, '\x5A') + "end");
        one.record.image.is_cube = true;
        one.set.file_format = TextureFileFormat::PNG;
        one.create();
        EXPECT_EQ(one.output("rock.dds"), one.dir.read("rock.dds"));
        EXPECT_EQ(one.output("tdb_texture_set.xml"), head + line + end);
    }
}

TEST(TextureSet, does_not_empty_a_cube_that_is_copied_onto_itself) {
    OneTexture one("six faces");
    one.record.image.is_cube = true;
    LoadedTexture none;
    write_texture_image(one.record.image, none, one.dir / "rock", TextureFileFormat::DDS, TexelFormat::AF_A8R8G8B8, 0);
    EXPECT_EQ(one.dir.read("rock.dds"), "six faces");
}

TEST(TextureSet, tells_which_side_of_a_cube_copy_failed) {
    OneTexture one;
    one.record.image.is_cube = true;
    LoadedTexture none;
    const auto write = [&](const std::string& target) {
        return failure_text([&] {
            write_texture_image(one.record.image, none, target, TextureFileFormat::DDS, TexelFormat::AF_A8R8G8B8, 0);
        });
    };
    EXPECT_EQ(write(one.dir / "none/x"), "Failure writing cube texture " + one.dir / "none/x.dds");
    one.record.image.file_path = one.dir / "missing.dds";
    EXPECT_EQ(write(one.dir / "x"), "Failure reading cube texture " + one.dir / "missing.dds");
    EXPECT_FALSE(std::filesystem::exists(one.dir / "x.dds")) << "no empty cube stays";

    std::filesystem::create_symlink("/dev/full", one.dir / "full.dds");
    one.record.image.file_path = one.dir / "rock.dds";
    EXPECT_EQ(write(one.dir / "full"), "Failure writing cube texture " + one.dir / "full.dds");
}

TEST(TextureSet, leaves_the_database_cut_off_behind_the_line_of_a_texture_that_fails) {
    OneTexture one;
    one.set.textures[0].rename_to = "no/folder/rock";
    EXPECT_EQ(failure_text([&] { one.create(); }),
              "Error saving image to file " + one.dir / "out/sets/Stone/no/folder/rock.dds");
    EXPECT_THAT(one.output("tdb_texture_set.xml"), testing::EndsWith("orig_forced_height=\"-1\" />\n"));

    one.set.file_format = TextureFileFormat::TGA; // silent for these
    one.create();
    EXPECT_THAT(one.output("tdb_texture_set.xml"), testing::EndsWith(end));
}

} // namespace
} // namespace mosaicer
