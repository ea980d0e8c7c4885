#include "texture/AtlasBaker.h"

#include "tests/support/TemporaryDirectory.h"
#include "tests/texture/support/TestImages.h"
#include "texture/TextureDatabase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <filesystem>

namespace mosaicer {
namespace {

using namespace test;
using test_support::TemporaryDirectory;

/// Pixels of one letter each, so that a picture can be read in the test.
constexpr std::uint32_t a = 0xFFFF0000;
constexpr std::uint32_t b = 0xFF00FF00;
constexpr std::uint32_t c = 0xFF0000FF;
constexpr std::uint32_t d = 0xFFFFFFFF;
constexpr std::uint32_t e = 0x80000000;

/// Textures in files of their own and entries that place them.
class Workshop {
public:
    TemporaryDirectory dir;
    BakeRequest request;

    Workshop() {
        request.output_root = dir / "out";
        request.atlas_name = "ui/menu";
        request.category = "cat";
    }

    SetTextureEntry texture(const std::string& name, const Rows& rows) {
        const Bitmap picture = from_rows(rows);
        EXPECT_TRUE(picture.save(dir / name + ".png", BitmapFormat::png));
        SourceTexture& record = records_.emplace_back();
        record.name = name;
        record.image = {dir / name + ".png", picture.width(), picture.height()};
        SetTextureEntry entry;
        entry.texture = &record;
        entry.mip_filter = MipFilter::BOX;
        return entry;
    }

    SetTextureEntry padded(const std::string& name, const Rows& rows, std::int32_t pad = 1) {
        SetTextureEntry entry = texture(name, rows);
        entry.pad_texels_u = entry.pad_texels_v = pad;
        return entry;
    }

    /// Packs the entries in order on a surface of 16 by 16 and bakes it.
    AtlasSurface bake(const std::vector<SetTextureEntry>& entries) {
        AtlasSurface surface(16, 16);
        for (const SetTextureEntry& entry : entries)
            EXPECT_TRUE(surface.insert(entry, /*pixel_step=*/true, /*expanding_square=*/false));
        bake_atlas(surface, request);
        return surface;
    }

    std::string output(const std::string& name) const { return dir.read("out/ui/menu/" + name); }
    Rows picture(const std::string& path) const { return rows_of(*Bitmap::load(path, BitmapFormat::bmp)); }

private:
    std::deque<SourceTexture> records_;
};

TEST(BakeAtlas, pads_two_textures_and_fills_the_rest_with_the_mean_of_their_means) {
    Workshop shop;
    ReportCapture report;
    shop.request.nr_mips = 1;
    shop.request.file_format = TextureFileFormat::BMP;
    const AtlasSurface surface = shop.bake({shop.padded("first", {{a, b}, {c, d}}), shop.padded("second", {{e, e}})});
    EXPECT_EQ(surface.width(), 8);
    EXPECT_EQ(surface.height(), 4);
    // Each colour of the first has the mean 1/2, the second is black: 1/4 of 255 is 63.
    const std::uint32_t f = 0x003F3F3F;
    EXPECT_EQ(
        shop.picture(shop.dir / "out/ui/menu/atlas.bmp"),
        (Rows{{a, a, b, b, e, e, e, e}, {a, a, b, b, e, e, e, e}, {c, c, d, d, e, e, e, e}, {c, c, d, d, f, f, f, f}}));
    EXPECT_EQ(report.statistics.str(), "Baked atlas ui/menu, 87% used (2 textures)\n"); // 28 of 32
    EXPECT_EQ(shop.output("tdb_atlas_set.xml"), atlas_database_text(surface, "ui/menu", "cat", true));
    const TextureMapping second = texture_mapping(surface, surface.entries()[1]);
    EXPECT_EQ(second.u_off, 5.5f / 8);
    EXPECT_EQ(second.v_off, 1.5f / 4);
}

TEST(BakeAtlas, says_what_it_does_on_the_channels) {
    Workshop shop;
    ReportCapture report;
    shop.request.extra_bitmap = true;
    shop.bake({shop.texture("only", solid(4, 4, a))});
    EXPECT_EQ(report.progress.str(),
              "Baking... \n"
              "Adjusting tiling width/shrinking... done.\n"
              "Creating atlas image... loading/filtering mips/calculating average color... filling... blitting.... "
              "dilating... done.\n"
              "Saving to disk... Using dxt lib for DXT compression\n"
              "Converting atlas to dxt image... done.\n"
              "Compressing using dxt lib... ***** done.\n"
              "Saving extra bitmap to " +
                  shop.dir / "out/ui/menu/atlas.bmp" +
                  "... done.\n"
                  "done.\n"
                  "done baking.\n");
    EXPECT_EQ(report.warnings.str(), "");
    EXPECT_EQ(shop.output("atlas.dds"), dds_file({solid(4, 4, a), solid(2, 2, a), {{a}}}));
}

TEST(BakeAtlas, takes_as_many_levels_as_are_asked_for_and_there_are) {
    const struct {
        std::int32_t nr_mips;
        bool draft;
        std::size_t levels;
    } cases[] = {{0, false, 4}, {1, false, 1}, {3, false, 3}, {20, false, 4}, {0, true, 1}, {3, true, 1}};
    for (const auto& each : cases) {
        Workshop shop;
        ReportCapture report;
        RunFlags.draft_mode = each.draft;
        shop.request.nr_mips = each.nr_mips;
        shop.bake({shop.texture("only", solid(8, 8, b))});
        const std::vector<Rows> chain{solid(8, 8, b), solid(4, 4, b), solid(2, 2, b), {{b}}};
        EXPECT_EQ(shop.output("atlas.dds"),
                  dds_file({chain.begin(), chain.begin() + static_cast<std::ptrdiff_t>(each.levels)}));
    }
}

TEST(BakeAtlas, gives_pixels_to_every_place_of_a_texture) {
    Workshop shop;
    ReportCapture report;
    shop.request.nr_mips = 1;
    shop.request.file_format = TextureFileFormat::BMP;
    SetTextureEntry upright = shop.texture("twice", {{a, b}, {c, d}});
    SetTextureEntry turned = upright;
    turned.rotation = 180;
    shop.bake({upright, turned});
    EXPECT_EQ(shop.picture(shop.dir / "out/ui/menu/atlas.bmp"), (Rows{{a, b, d, c}, {c, d, b, a}}));
    EXPECT_EQ(report.statistics.str(), "Baked atlas ui/menu, 100% used (1 textures)\n");
}

TEST(BakeAtlas, repeats_a_tiled_texture_along_what_is_used_of_the_surface) {
    Workshop shop;
    ReportCapture report;
    shop.request.nr_mips = 1;
    shop.request.file_format = TextureFileFormat::BMP;
    SetTextureEntry tiled = shop.texture("t", {{a, b}, {c, d}});
    tiled.texture->tile_u = true;
    tiled.texel_offset = 0;
    const AtlasSurface surface = shop.bake({shop.texture("plain", solid(8, 2, c)), tiled});
    const Rows rows = shop.picture(shop.dir / "out/ui/menu/atlas.bmp");
    const std::vector<std::uint32_t> full(8, c);
    EXPECT_EQ(rows, (Rows{full, full, {a, b, a, b, a, b, a, b}, {c, d, c, d, c, d, c, d}}));
    EXPECT_EQ(surface.entries()[1].width, 2);
    EXPECT_THAT(shop.output("tdb_atlas_set.xml"), testing::HasSubstr("u_scale=\"0.25\""));
}

TEST(BakeAtlas, tags_corners_before_and_mips_after_the_dilation) {
    Workshop shop;
    ReportCapture report;
    RunFlags.color_tag_atlases = true;
    RunFlags.tag_mips = true;
    shop.request.nr_mips = 2;
    shop.bake({shop.padded("only", solid(2, 2, c))});
    // Four corners are the whole texture; level 1 keeps its blue, a fifth of it under four fifths of red.
    const std::uint32_t red = 0xFFFF0000;
    const std::string bytes = shop.output("atlas.dds");
    EXPECT_EQ(bytes.substr(0, 128 + 64), dds_file({solid(4, 4, red), solid(2, 2, 0)}).substr(0, 128 + 64));
    EXPECT_EQ(bytes.substr(128 + 64, 4), std::string("\x32\0\xCC\xFF", 4)); // 0.2 is a little less in floats
}

TEST(BakeAtlas, puts_the_extra_bitmap_beside_the_atlas_or_into_one_folder_for_all) {
    Workshop shop;
    ReportCapture report;
    shop.request.extra_bitmap = true;
    shop.request.extra_bitmap_path = shop.dir / "maps";
    std::filesystem::create_directory(shop.dir / "maps");
    shop.request.atlas_name = "castle\\x/atlas3";
    shop.request.texel_format = TexelFormat::AF_BUMP_A8L8;
    shop.bake({shop.texture("only", solid(2, 2, 0xFFC86432))});
    EXPECT_EQ(shop.picture(shop.dir / "maps/castle_x_atlas3.bmp"), solid(2, 2, 0x64C864C8))
        << "with the channels moved";

    shop.request.texel_format = TexelFormat::AF_A8R8G8B8;
    shop.request.file_format = TextureFileFormat::BMP;
    shop.request.extra_bitmap_path = shop.dir / "other";
    shop.bake({shop.texture("only", {{a}})});
    EXPECT_THAT(report.progress.str(), testing::Not(testing::HasSubstr("other")));
}

TEST(BakeAtlas, warns_of_bump_and_plain_textures_in_one_compressed_atlas) {
    for (const bool mixed : {true, false}) {
        Workshop shop;
        ReportCapture report;
        shop.request.texel_format = TexelFormat::AF_BUMP_DXT5;
        shop.request.file_format = TextureFileFormat::PNG; // refused, but after the warning
        SetTextureEntry bump = shop.texture("bump_bm", solid(4, 4, a));
        bump.texture->is_bump = true;
        SetTextureEntry other = shop.texture("other", solid(4, 4, a));
        other.texture->is_bump = !mixed;
        EXPECT_EQ(failure_text([&] {
                      shop.bake({bump, other});
                  }),
                  "Invalid combination of file format and texel format specified");
        EXPECT_EQ(report.warnings.str(),
                  mixed ? "Atlas is compressed and has mixed bump and diffuse textures; red will be copied to alpha\n"
                        : "");
    }
}

TEST(BakeAtlas, goes_on_without_a_word_when_a_bitmap_file_cannot_be_written) {
    Workshop shop;
    ReportCapture report;
    shop.dir.write("out", "a file stands where the folder should be");
    shop.request.file_format = TextureFileFormat::PNG;
    shop.bake({shop.texture("only", {{a}})});
    EXPECT_THAT(report.progress.str(), testing::EndsWith("done baking.\n"));
    shop.request.file_format = TextureFileFormat::DDS;
    EXPECT_EQ(failure_text([&] { shop.bake({shop.texture("only", {{a}})}); }),
              "Error saving image to file " + shop.dir / "out/ui/menu/atlas.dds");
}

} // namespace
} // namespace mosaicer
