#include "tools/kst/report/collect_run.h"

#include "tests/support/TemporaryDirectory.h"
#include "tests/support/tga_bytes.h"
#include "tests/texture/support/TestImages.h"
#include "tools/kst/report/Page.h"
#include "tools/kst/report/utf8.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cmath>
#include <filesystem>
#include <limits>

namespace kst::tool::report {
namespace {

using test_support::TemporaryDirectory;
using test_support::tga_bytes;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(InnerRectangle, undoes_the_mapping_of_the_databases) {
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float infinite = std::numeric_limits<float>::infinity();
    const struct {
        std::array<float, 4> mapping; ///< u_off, v_off, u_scale, v_scale
        bool tiled_u, tiled_v;
        std::int32_t width, height;
        Rectangle expected;
    } cases[] = {
        // 128 by 128 at 258, 514, with a sampling offset of half a texel and with none.
        {{0.252441f, 0.626465f, 0.124023f, 0.124023f}, false, false, 1024, 1024, {258, 514, 128, 128}},
        {{0.251953f, 0.626953f, 0.125f, 0.125f}, false, false, 1024, 1024, {258, 514, 128, 128}},
        // A copy of 256 texels, half a texel in: the length of a tiled direction is whole.
        {{0.000488281f, 0.124512f, 0.25f, 0.124023f}, true, false, 1024, 1024, {0, 0, 256, 128}},
        {{0.0234375f, 0.996094f, 0.492188f, 1.0f}, false, true, 128, 128, {3, 0, 63, 128}},
        // Six digits on the largest atlas: 12345 / 16384 and 77 / 16384.
        {{0.753479f, 1.0f, 0.00469971f, 1.0f}, false, false, 16384, 4, {12345, 0, 77, 4}},
        {{0, 1, 1, 1}, false, false, 1, 1, {0, 0, 1, 1}},
        // An offset of three texels on a texture of four turns it inside out.
        {{0.5f, 0.25f, -0.03125f, -0.03125f}, false, false, 64, 64, {}},
        {{0.9f, 1, 0.2f, 1}, false, false, 64, 64, {}},
        {{0, 0.5f, 1, 1}, false, false, 64, 64, {}},
        {{nan, 1, 1, 1}, false, false, 64, 64, {}},
        {{0, 1, infinite, 1}, false, false, 64, 64, {}},
        {{0, 1, 1, 1}, false, false, 0, 0, {}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(inner_rectangle(c.mapping, c.tiled_u, c.tiled_v, c.width, c.height), c.expected)
            << testing::PrintToString(c.mapping);
}

std::string atlas_text(const std::string& lines) {
    return "<atlas_set name=\"ui/hud\" category=\"menu\" allow_autoload=\"true\">\n" + lines + "</atlas_set>\n";
}

/// A texture over the left half of its atlas.
std::string left_half(const std::string& name) {
    return "\t<atlas_mapping texture=\"" + name +
           "\" groups=\"1 2 \"  u_off=\"0\" v_off=\"1\" u_scale=\"0.5\" v_scale=\"1\" rotation=\"90\" "
           "tiled_u=\"false\" "
           "tiled_v=\"true\" orig_name=\"old\" orig_mip_filter=\"BOX\" orig_forced_width=\"16\" "
           "orig_forced_height=\"-1\" />\n";
}

TEST(CollectRun, reads_atlases_and_sets_in_the_order_of_their_folders) {
    const TemporaryDirectory dir;
    dir.write("ui/hud/tdb_atlas_set.xml", atlas_text(left_half("arrow")));
    dir.write("ui/hud/atlas.tga", tga_bytes(8, 4));
    dir.write("ui/hud/atlas.bmp", "an extra bitmap, which is not looked at");
    dir.write("stones/tdb_texture_set.xml", "<texture_set name=\"stones\" allow_autoload=\"false\">\n"
                                            "\t<image name=\"rock\" category=\"walls\" orig_name=\"rock_d\" />\n"
                                            "\t<image name=\"sky\" category=\"\" />\n</texture_set>\n");
    dir.write("stones/rock.tga", tga_bytes(2, 2));
    dir.write("stones/sky.dds", mosaicer::test::dds_file({mosaicer::test::solid(4, 4, 1)}, 0xFE00));
    const RunRecord run = collect_run(dir.path().string());

    ASSERT_EQ(run.atlases.size(), 1u);
    const Atlas& atlas = run.atlases[0];
    EXPECT_EQ(atlas.folder, "ui/hud");
    EXPECT_EQ(atlas.name, "ui/hud");
    EXPECT_EQ(atlas.category, "menu");
    EXPECT_TRUE(atlas.allow_autoload);
    EXPECT_THAT(atlas.faults, IsEmpty());
    EXPECT_EQ(atlas.image.file, "ui/hud/atlas.tga");
    EXPECT_EQ(atlas.image.bytes, 18 + 8 * 4 * 4);
    ASSERT_EQ(atlas.textures.size(), 1u);
    const PlacedTexture& texture = atlas.textures[0];
    EXPECT_EQ(texture.name, "arrow");
    EXPECT_EQ(texture.origin.orig_name, "old");
    EXPECT_EQ(texture.origin.mip_filter, "BOX");
    EXPECT_EQ(texture.origin.forced_width, 16);
    EXPECT_EQ(texture.origin.forced_height, -1);
    EXPECT_EQ(texture.groups, "1 2");
    EXPECT_EQ(texture.rotation, 90);
    EXPECT_FALSE(texture.tiled_u);
    EXPECT_TRUE(texture.tiled_v);
    EXPECT_EQ(texture.inner, (Rectangle{0, 0, 4, 4}));

    ASSERT_EQ(run.sets.size(), 1u);
    const TextureSet& set = run.sets[0];
    ASSERT_EQ(set.images.size(), 2u);
    EXPECT_EQ(set.images[0].name, "rock");
    EXPECT_EQ(set.images[0].category, "walls");
    EXPECT_EQ(set.images[0].origin.orig_name, "rock_d");
    EXPECT_FALSE(set.images[0].image.is_cube);
    EXPECT_TRUE(set.images[1].image.is_cube);
    EXPECT_EQ(set.images[1].image.width, 4);
}

TEST(CollectRun, turns_what_cannot_be_read_into_faults_and_goes_on) {
    const struct {
        const char* database;
        const char* text;
        const char* fault;
        std::size_t textures;
    } cases[] = {
        {"tdb_atlas_set.xml", "", "a/tdb_atlas_set.xml: the file is empty or cannot be read", 0},
        {"tdb_atlas_set.xml", "<atlas_set name=\"a\">\n",
         "a/tdb_atlas_set.xml: the file ends too early; it is cut off, or a name in it holds a quote, < or &", 0},
        {"tdb_atlas_set.xml", "<atlas_set><atlas_mapping texture=\"rock&co\" /></atlas_set>",
         "a/tdb_atlas_set.xml: the file ends too early", 0},
        {"tdb_atlas_set.xml",
         "<atlas_set><atlas_mapping texture=\"a&b\" />\n<atlas_mapping texture=\"c;d\" u_off=\"0\" v_off=\"1\" "
         "u_scale=\"1\" v_scale=\"1\" /></atlas_set>",
         "a/tdb_atlas_set.xml: textures are missing; a name holds &", 1},
        {"tdb_atlas_set.xml",
         "<atlas_set><atlas_mapping texture=\"kept\" u_off=\"0\" v_off=\"1\" u_scale=\"1\" "
         "v_scale=\"1\" /><atlas_mapping texture=\"a\"b\" /></atlas_set>",
         "a/tdb_atlas_set.xml (1): ", 1},
        {"tdb_atlas_set.xml",
         "<atlas_set><atlas_mapping texture=\"t\" u_off=\"7\" v_off=\"1\" u_scale=\"1\" "
         "v_scale=\"1\" /></atlas_set>",
         "a/tdb_atlas_set.xml: no place on the picture for texture t", 1},
        {"none.xml", "", "a/tdb_atlas_set.xml: missing, so the places of the textures are not known", 0},
    };
    for (const auto& c : cases) {
        const TemporaryDirectory dir;
        dir.write("a/atlas.tga", tga_bytes(4, 4));
        dir.write(std::string("a/") + c.database, c.text);
        const RunRecord run = collect_run(dir.path().string());
        ASSERT_EQ(run.atlases.size(), 1u) << c.fault;
        EXPECT_THAT(run.atlases[0].faults, ElementsAre(HasSubstr(c.fault)));
        EXPECT_EQ(run.atlases[0].image.width, 4);
        EXPECT_EQ(run.atlases[0].textures.size(), c.textures) << c.fault;
    }
    const TemporaryDirectory dir;
    EXPECT_EQ(mosaicer::test::failure_text([&] { collect_run(dir / "none"); }),
              "cannot read " + dir / "none" + ": there is no such directory");
    dir.write("a/tdb_atlas_set.xml", atlas_text(""));
    EXPECT_THAT(collect_run(dir.path().string()).atlases[0].faults,
                ElementsAre(HasSubstr("a/atlas: there is no image")));
    dir.write("a/atlas.dds", "DDS ");
    // No path of the machine that the report is made on.
    const std::vector<std::string> faults = collect_run(dir.path().string()).atlases[0].faults;
    EXPECT_THAT(faults, ElementsAre(AllOf(HasSubstr("a/atlas.dds"), Not(HasSubstr(dir.path().string())))));
}

TEST(CollectRun, neither_follows_links_in_circles_nor_waits_at_pipes) {
    const TemporaryDirectory dir;
    dir.write("a/tdb_atlas_set.xml", atlas_text(""));
    ASSERT_EQ(mkfifo((dir / "a/atlas.dds").c_str(), 0600), 0);
    std::filesystem::create_directory_symlink(dir.path(), dir.path() / "a" / "up");
    std::filesystem::create_directory_symlink(dir.path() / "a", dir.path() / "b");
    EXPECT_EQ(collect_run(dir.path().string()).atlases.size(), 1u);
}

TEST(CollectRun, reads_names_in_utf_8_and_in_latin_1) {
    const TemporaryDirectory dir;
    dir.write("a/atlas.tga", tga_bytes(4, 4));
    dir.write("b/atlas.tga", tga_bytes(4, 4));
    dir.write("a/tdb_atlas_set.xml", atlas_text(left_half("\xC3\xBC @x; \xF0\x9F\x90\xBB")));
    dir.write("b/tdb_atlas_set.xml", atlas_text(left_half("\xFC")));
    const RunRecord run = collect_run(dir.path().string());
    ASSERT_EQ(run.atlases[0].textures.size(), 1u);
    ASSERT_EQ(run.atlases[1].textures.size(), 1u);
    EXPECT_EQ(run.atlases[0].textures[0].name, "\xC3\xBC @x; \xF0\x9F\x90\xBB");
    EXPECT_EQ(run.atlases[1].textures[0].name, "\xC3\xBC");
}

TEST(CollectRun, survives_every_prefix_of_its_files) {
    const std::string database = atlas_text(left_half("a"));
    const std::string image = mosaicer::test::dds_file({mosaicer::test::solid(4, 4, 1)});
    for (std::size_t size = 0; size < std::max(database.size(), image.size()); size += 7) {
        const TemporaryDirectory dir;
        dir.write("a/tdb_atlas_set.xml", database.substr(0, size));
        dir.write("a/atlas.dds", image.substr(0, size));
        const Page page = build_page(collect_run(dir.path().string()), 256);
        EXPECT_FALSE(page.faults.empty()) << size;
    }
}

TEST(Utf8, is_told_from_other_bytes) {
    for (const char* good : {"", "abc", "\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEF\xBF\xBF",
                             "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"})
        EXPECT_TRUE(is_utf8(good)) << good;
    for (const char* bad : {"\x80", "\xC1\xBF", "\xC3", "\xC3g", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xE2\x82",
                            "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF"})
        EXPECT_FALSE(is_utf8(bad)) << bad;
    EXPECT_EQ(as_utf8("a\xE9\xFF"), "a\xC3\xA9\xC3\xBF");
}

} // namespace
} // namespace kst::tool::report
