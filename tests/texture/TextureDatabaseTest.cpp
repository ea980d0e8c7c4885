#include "texture/TextureDatabase.h"

#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <clocale>
#include <filesystem>
#include <sstream>

namespace mosaicer {
namespace {

AtlasEntry rock(SourceTexture& texture, float offset) {
    AtlasEntry entry{256, 512, 132, 132, false, false, {}};
    entry.source.texture = &texture;
    entry.source.pad_texels_u = entry.source.pad_texels_v = 2;
    entry.source.texel_offset = offset;
    return entry;
}

TEST(AtlasDatabase, writes_every_attribute_in_its_place) {
    SourceTexture texture;
    texture.name = "rock_d";
    texture.used_by = {2, 1};
    AtlasSurface surface(1024, 1024);
    surface.entries().push_back(rock(texture, 0.5f));
    AtlasEntry renamed = rock(texture, 0.0f);
    texture.used_by = {2, 1};
    renamed.tiled_v = true;
    renamed.source.rename_to = "a\"<b";
    renamed.source.rotation = 90;
    renamed.source.mip_filter = MipFilter::KEEP;
    renamed.source.width = 64;
    renamed.source.height = 0;
    surface.entries().push_back(renamed);
    EXPECT_EQ(atlas_database_text(surface, "ui/atlas0", "menu", true),
              "<atlas_set name=\"ui/atlas0\" category=\"menu\" allow_autoload=\"true\">\n"
              "\t<atlas_mapping texture=\"rock_d\" groups=\"1 2 \"  u_off=\"0.252441\" v_off=\"0.626465\" "
              "u_scale=\"0.124023\" v_scale=\"0.124023\" rotation=\"0\" tiled_u=\"false\" tiled_v=\"false\" "
              "orig_name=\"rock_d\" orig_mip_filter=\"KAISER_GAMMA\" orig_forced_width=\"-1\" "
              "orig_forced_height=\"-1\" />\n"
              "\t<atlas_mapping texture=\"a\"<b\" groups=\"1 2 \"  u_off=\"0.251953\" v_off=\"0.626953\" "
              "u_scale=\"0.125\" v_scale=\"0.125\" rotation=\"90\" tiled_u=\"false\" tiled_v=\"true\" "
              "orig_name=\"rock_d\" orig_mip_filter=\"KEEP\" orig_forced_width=\"64\" "
              "orig_forced_height=\"0\" />\n"
              "</atlas_set>\n");
    texture.used_by.clear();
    surface.entries().clear();
    EXPECT_EQ(atlas_database_text(surface, "", "", false),
              "<atlas_set name=\"\" category=\"\" allow_autoload=\"false\">\n</atlas_set>\n");
}

struct MappingCase {
    AtlasEntry entry;
    std::int32_t pad;
    float offset;
    const char* printed;
};

TEST(TextureMapping, pulls_in_by_the_offset_except_along_a_tiled_direction) {
    for (const MappingCase& c :
         {MappingCase{{0, 0, 4, 4, false, false, {}}, 0, 0.0f, "0 0.015625 0.0078125 0.015625"},
          MappingCase{{0, 0, 4, 4, false, false, {}}, 0, 3.0f, "0.00585938 0.00390625 -0.00390625 -0.0078125"},
          MappingCase{{8, 8, 64, 64, true, false, {}}, 0, 0.5f, "0.0166016 0.279297 0.125 0.246094"},
          MappingCase{{8, 8, 64, 64, false, true, {}}, 0, 0.5f, "0.0166016 0.279297 0.123047 0.25"}}) {
        AtlasEntry entry = c.entry;
        entry.source.pad_texels_u = entry.source.pad_texels_v = c.pad;
        entry.source.texel_offset = c.offset;
        const TextureMapping mapping = texture_mapping(AtlasSurface(512, 256), entry);
        std::ostringstream printed;
        printed << mapping.u_off << ' ' << mapping.v_off << ' ' << mapping.u_scale << ' ' << mapping.v_scale;
        EXPECT_EQ(printed.str(), c.printed);
    }
}

TEST(AtlasDatabase, replaces_a_file_and_is_silent_about_one_that_cannot_be_written) {
    const test_support::TemporaryDirectory dir;
    const AtlasSurface surface(2, 2);
    dir.write("tdb.xml", std::string(1000, 'x'));
    write_atlas_database(surface, dir / "tdb.xml", "a", "b", true);
    EXPECT_EQ(dir.read("tdb.xml"), atlas_database_text(surface, "a", "b", true));
    write_atlas_database(surface, "/dev/full", "a", "b", true);
    EXPECT_TRUE(std::filesystem::exists("/dev/full"));
    write_atlas_database(surface, dir / "none/tdb.xml", "a", "b", true);
}

} // namespace
} // namespace mosaicer
