#include "driver/read_set_definition.h"

#include "driver/SetAttributes.h"
#include "driver/TextureIndex.h"
#include "driver/records/Report.h"
#include "source/utility/filesystem/DiskFileSystem.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/xml/XMLDocument.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/tga_bytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <stdexcept>

namespace mosaicer {
namespace {

using test_support::TemporaryDirectory;
using test_support::tga_bytes;
using testing::ElementsAre;

struct MadeSet {
    std::string road;
    AtlasSetDefinition set;
};

/// Textures rock (64 by 32), wall (16 by 16) and maps/map (256 by 256) below one root, and makers that only record.
class ReadSetDefinitionTest : public testing::Test {
protected:
    ReadSetDefinitionTest() {
        folder.write("root/Rock.tga", tga_bytes(64, 32));
        folder.write("root/maps/map.tga", tga_bytes(256, 256));
        folder.write("root/maps/ab/wall.tga", tga_bytes(16, 16));
        folder.write("other/wall.tga", tga_bytes(8, 8));
        file_system.mount("/", &disk, false);
    }

    std::vector<MadeSet> read(const std::string& xml, const std::string& pattern = "") {
        std::vector<MadeSet> made;
        const SetMakers makers{[&made](AtlasSetDefinition& set, const std::string&) {
                                   made.push_back({"atlas", set});
                               },
                               [&made](const AtlasSetDefinition& set, const std::string&) {
                                   made.push_back({"split", set});
                               },
                               [&made](const AtlasSetDefinition& set, const std::string&) {
                                   made.push_back({"set", set});
                               }};
        kst::XMLDocument document;
        document.parse_string(xml);
        read_set_definition(AtlasSetDefinition{}, document, {index, output_root, pattern, makers});
        return made;
    }

    AtlasSetDefinition read_one(const std::string& xml) {
        const auto made = read(xml);
        EXPECT_EQ(made.size(), 1u);
        return made.empty() ? AtlasSetDefinition{} : made.front().set;
    }

    std::string failure_of(const std::string& xml) {
        try {
            read(xml);
        } catch (const std::runtime_error& failure) {
            return failure.what();
        }
        return "nothing was thrown";
    }

    TemporaryDirectory folder;
    kst::VirtualFileSystem file_system;
    kst::DiskFileSystem disk;
    TextureIndex index{folder.path().string() + "/root/"};
    const std::string output_root = "out/";
};

TEST_F(ReadSetDefinitionTest, gives_a_lone_atlas_the_defaults) {
    const auto set = read_one("<atlas><texture name='ROCK'/></atlas>");
    EXPECT_EQ(set.name, "");
    EXPECT_EQ(set.width, 2048);
    EXPECT_EQ(set.height, 2048);
    EXPECT_EQ(set.texel_format, TexelFormat::AF_A8R8G8B8);
    EXPECT_EQ(set.file_format, TextureFileFormat::DDS);
    EXPECT_THAT(set.removal_strats, ElementsAre(RemovalKind::BIGGEST));
    ASSERT_EQ(set.textures.size(), 1u);
    EXPECT_EQ(set.textures[0].texture, index.find("rock"));
    EXPECT_EQ(set.textures[0].width, -1);
    EXPECT_EQ(set.textures[0].mip_filter, MipFilter::KAISER_GAMMA);
    EXPECT_EQ(set.textures[0].texel_offset, 0.5f);
}

struct FieldCase {
    const char* attributes;
    bool (*holds)(const AtlasSetDefinition& set);
};

TEST_F(ReadSetDefinitionTest, reads_every_set_attribute) {
    using S = const AtlasSetDefinition&;
    const std::vector<FieldCase> cases{
        {"name='a'", [](S s) { return s.name == "a"; }},
        {"width='12px' height='wide'", [](S s) { return s.width == 12 && s.height == 0; }},
        {"nr_mips='3'", [](S s) { return s.nr_mips == 3; }},
        {"texel_format='AF_BUMP_DXT5'", [](S s) { return s.texel_format == TexelFormat::AF_BUMP_DXT5; }},
        {"texel_format=''", [](S s) { return s.texel_format == TexelFormat::AF_A8R8G8B8; }},
        {"file_format='PNG'", [](S s) { return s.file_format == TextureFileFormat::PNG; }},
        {"halftexel_offsets='false'", [](S s) { return s.texel_offset == 0.0f; }},
        {"halftexel_offsets='threetexel_offsets'", [](S s) { return s.texel_offset == 3.0f; }},
        {"halftexel_offsets='some'", [](S s) { return s.texel_offset == 0.5f; }},
        {"pad_texels_u='1' pad_texels_v='-2'", [](S s) { return s.pad_texels_u == 1 && s.pad_texels_v == -2; }},
        {"allow_autoload='True'", [](S s) { return !s.allow_autoload; }},
        {"mip_filter='BOX'", [](S s) { return s.mip_filter == MipFilter::BOX; }},
        {"min_usage='.5x'", [](S s) { return s.min_usage == 0.5f; }},
        {"precook_strat='MAJOR_VDIM'", [](S s) { return s.precook_strat == PrecookStrategy::MAJOR_VDIM; }},
        {"packing_order_strat='BY_PRECOOK'", [](S s) { return s.packing_order_strat == PackingOrder::BY_PRECOOK; }},
        {"insertion_strat='SMALL_STEP'", [](S s) { return s.insertion_strat == InsertionStrategy::SMALL_STEP; }},
        {"category='c'", [](S s) { return s.category == "c"; }},
        {"drop_mips='2'", [](S s) { return s.drop_mips == 2; }},
        {"autosplit='true'", [](S s) { return s.autosplit; }},
    };
    for (const FieldCase& c : cases)
        EXPECT_TRUE(c.holds(read_one("<atlas " + std::string(c.attributes) + "/>"))) << c.attributes;
}

TEST_F(ReadSetDefinitionTest, hands_settings_down_and_joins_names) {
    const auto made = read("<g name='a' width='1024'><atlas name='b'/><deep><atlas height='64'/></deep></g>");
    ASSERT_EQ(made.size(), 2u);
    EXPECT_EQ(made[0].set.name, "a/b");
    EXPECT_EQ(made[0].set.width, 1024);
    EXPECT_EQ(made[1].set.name, "a//");
    EXPECT_EQ(made[1].set.width, 1024);
    EXPECT_EQ(read_one("<g><g name='a' width='1024'/><atlas/></g>").width, 2048) << "a sibling is not touched";
}

struct RoadCase {
    const char* xml;
    const char* road;
};

TEST_F(ReadSetDefinitionTest, sends_each_set_down_its_road) {
    for (const RoadCase& c : {RoadCase{"<atlas/>", "atlas"}, RoadCase{"<atlas autosplit='true'/>", "split"},
                              RoadCase{"<atlas autofill='maps'/>", "split"}, RoadCase{"<texture_set/>", "set"},
                              RoadCase{"<texture_set autosplit='true' autofill='maps'/>", "set"},
                              RoadCase{"<g autofill='maps'><atlas autofill=''/></g>", "atlas"}})
        EXPECT_EQ(read(c.xml).at(0).road, c.road) << c.xml;
}

struct PatternCase {
    const char* pattern;
    std::vector<std::string> made;
};

TEST_F(ReadSetDefinitionTest, makes_only_sets_whose_full_name_contains_the_pattern) {
    const std::string xml = "<g name='a'><atlas name='b'><texture_set name='c'/><texture name='nowhere'/></atlas></g>";
    for (const PatternCase& c : {PatternCase{"a/b/c", {"a/b/c"}}, PatternCase{"A/B", {}}, PatternCase{"zz", {}}}) {
        std::vector<std::string> names;
        for (const MadeSet& made : read(xml, c.pattern))
            names.push_back(made.set.name);
        EXPECT_EQ(names, c.made) << c.pattern;
    }
    std::ostringstream verbose;
    Report.verbose = &verbose;
    TextureIndex untouched(folder.path().string() + "/root/");
    read(xml, "zz");
    Report.verbose = &discarding_stream();
    EXPECT_EQ(verbose.str(), "") << "nothing to make, nothing to index";
}

struct RemovalCase {
    const char* xml;
    std::vector<RemovalKind> strategies;
};

TEST_F(ReadSetDefinitionTest, builds_the_removal_list_from_inheritance_template_and_attributes) {
    using R = RemovalKind;
    const std::vector<RemovalCase> cases{
        {"<g><atlas removal_strat0='TILING'/></g>", {R::BIGGEST, R::TILING}},
        {"<g><atlas removal_strat0='TILING' autopacking_template='silhouettes'/></g>", {R::TILING}},
        {"<g><atlas autopacking_template='silhouettes'/></g>", {R::BIGGEST, R::BIGGEST}},
        {"<atlas autopacking_template='mission_specific'/>", {R::TILING, R::SMALLEST_FROM_SMALLEST_GROUP}},
        {"<atlas autopacking_template='other' removal_strat3='SMALLEST'/>", {R::SMALLEST}},
        {"<g><atlas autopacking_template='other'/></g>", {R::BIGGEST}},
        {"<atlas removal_strat1='FURTHEST' removal_strat4='SMALLEST'/>", {R::FURTHEST, R::SMALLEST}},
        {"<g removal_strat0='TILING'><atlas autopacking_template='lightmaps' removal_strat0='' "
         "removal_strat1='BIGGEST' "
         "removal_strat2='SMALLEST'/></g>",
         {R::BIGGEST, R::SMALLEST}},
    };
    for (const RemovalCase& c : cases)
        EXPECT_EQ(read_one(c.xml).removal_strats, c.strategies) << c.xml;
}

TEST_F(ReadSetDefinitionTest, lets_attributes_override_a_template) {
    const auto lightmaps = read_one("<atlas autopacking_template='lightmaps'/>");
    EXPECT_EQ(lightmaps.packing_order_strat, PackingOrder::DESC_UDIM_ASC_VDIM);
    EXPECT_EQ(lightmaps.insertion_strat, InsertionStrategy::SMALL_STEP);
    EXPECT_FALSE(lightmaps.try_alternative_insertion);
    const auto silhouettes = read_one("<atlas autopacking_template='silhouettes' min_usage='0.5'/>");
    EXPECT_EQ(silhouettes.min_usage, 0.5f);
    EXPECT_EQ(silhouettes.precook_strat, PrecookStrategy::MAJOR_UDIM);
    EXPECT_TRUE(silhouettes.try_alternative_insertion);
}

TEST_F(ReadSetDefinitionTest, reads_entries_over_what_their_set_hands_down) {
    const auto set =
        read_one("<atlas pad_texels_u='2' pad_texels_v='3' category='c' mip_filter='BOX'>"
                 "<t name='rock'/>"
                 "<t name='rock' pad_texels_u='-1' rotation='270' category='d' rename_to='r' "
                 "halftexel_offsets='onetexel_offsets' mip_filter='KEEP' width='32' height='16'/>"
                 "<t name='rock' halftexel_offsets='twotexel_offsets' mip_filter='' category='' rotation='-90'/>"
                 "</atlas>");
    ASSERT_EQ(set.textures.size(), 3u);
    const SetTextureEntry& plain = set.textures[0];
    EXPECT_EQ(plain.pad_texels_u, 2);
    EXPECT_EQ(plain.pad_texels_v, 3);
    EXPECT_EQ(plain.category, "c");
    EXPECT_EQ(plain.mip_filter, MipFilter::BOX);
    const SetTextureEntry& rich = set.textures[1];
    EXPECT_EQ(rich.pad_texels_u, -1);
    EXPECT_EQ(rich.pad_texels_v, 3);
    EXPECT_EQ(rich.rotation, 270);
    EXPECT_EQ(rich.category, "d");
    EXPECT_EQ(rich.rename_to, "r");
    EXPECT_EQ(rich.texel_offset, 1.0f);
    EXPECT_EQ(rich.mip_filter, MipFilter::KEEP);
    EXPECT_EQ(rich.width, 32);
    EXPECT_EQ(rich.height, 16);
    EXPECT_EQ(set.textures[2].texel_offset, 0.5f);
    EXPECT_EQ(set.textures[2].mip_filter, MipFilter::BOX);
    EXPECT_EQ(set.textures[2].category, "c");
    EXPECT_EQ(set.textures[2].rotation, -90);
}

struct DropCase {
    const char* entry;
    int drop_mips;
    std::int32_t width;
    std::int32_t height;
};

TEST_F(ReadSetDefinitionTest, shifts_entries_by_the_dropped_levels) {
    for (const DropCase& c :
         {DropCase{"", 2, 16, 8}, DropCase{"width='100'", 2, 25, 1}, DropCase{"width='100' height='60'", 2, 25, 15},
          DropCase{"", 20, 1, 1}, DropCase{"", 0, -1, -1}, DropCase{"", 99, 1, 1}}) {
        const auto set =
            read_one("<atlas drop_mips='" + std::to_string(c.drop_mips) + "'><t name='rock' " + c.entry + "/></atlas>");
        EXPECT_EQ(set.textures.at(0).width, c.width) << c.entry;
        EXPECT_EQ(set.textures.at(0).height, c.height) << c.entry;
    }
}

TEST_F(ReadSetDefinitionTest, adds_up_the_groups_of_a_texture_over_all_sets) {
    read("<g><atlas><t name='rock' used_by='2  1'/></atlas><texture_set><t name='rock' used_by='7 "
         "x'/></texture_set></g>");
    EXPECT_EQ(index.find("rock")->used_by, (std::set<std::int32_t>{-1, 1, 2, 7}));
}

struct FailureCase {
    const char* xml;
    const char* text;
};

TEST_F(ReadSetDefinitionTest, names_what_is_wrong) {
    for (const FailureCase& c : {FailureCase{"<g name='a'><atlas name='b'><t name='Nowhere'/></atlas></g>",
                                             "Did not find texture nowhere referenced in set a/b, operation aborted."},
                                 FailureCase{"<atlas><t name='Nowhere' rotation='45'/></atlas>",
                                             "nowhere - only 0, 90, 180 or 270 are legal rotation values"},
                                 FailureCase{"<atlas file_format='dds'/>",
                                             "No enum element named dds found when doing texture file format lookup"},
                                 FailureCase{"<atlas><t name='Nowhere' mip_filter='soft'/></atlas>",
                                             "No enum element named soft found when doing mip filter lookup"}})
        EXPECT_EQ(failure_of(c.xml), c.text);
}

std::vector<std::string> names_of(const AtlasSetDefinition& set) {
    std::vector<std::string> names;
    for (const SetTextureEntry& entry : set.textures)
        names.push_back(entry.texture->name);
    return names;
}

TEST_F(ReadSetDefinitionTest, fills_a_set_from_a_directory_by_the_text_of_its_path) {
    EXPECT_THAT(names_of(read_one("<atlas autofill='maps'/>")), ElementsAre("map", "wall"));
    EXPECT_THAT(names_of(read_one("<atlas autofill='maps/a'/>")), ElementsAre("wall"));
    EXPECT_THAT(names_of(read_one("<atlas autofill='maps'><t name='wall'/></atlas>")),
                ElementsAre("map", "wall", "wall"));
    const auto dropped = read_one("<atlas autofill='maps' drop_mips='3'/>");
    EXPECT_EQ(dropped.textures.at(0).width, 32);
    EXPECT_EQ(dropped.textures.at(1).height, 2);
}

TEST_F(ReadSetDefinitionTest, gives_textures_the_positions_of_the_directory) {
    folder.write("root/maps/lightmap_positions.xml", "<all><x name='map' position='1 -2.5 3e1'/><x name='wall'/>"
                                                     "<x name='ROCK' position='9 9 9'/><x name='nowhere'/></all>");
    const auto set = read_one("<atlas autofill='maps'/>");
    EXPECT_TRUE(set.has_positions);
    EXPECT_EQ(index.find("map")->position, (std::array{1.0f, -2.5f, 30.0f}));
    EXPECT_EQ(index.find("rock")->position, (std::array{0.0f, 0.0f, 0.0f}));
    EXPECT_FALSE(read_one("<atlas autofill='nothing'/>").has_positions);
}

TEST_F(ReadSetDefinitionTest, goes_deeper_with_nested_roots_and_leaves_records_to_siblings) {
    const auto made = read("<g><g textures_root='maps'><atlas textures_root='ab'><t name='wall'/></atlas></g>"
                           "<atlas><t name='wall'/></atlas></g>");
    ASSERT_EQ(made.size(), 2u);
    EXPECT_EQ(made[1].set.textures.at(0).texture->image.file_path, folder.path().string() + "/root/maps/ab/wall.tga");
    EXPECT_EQ(index.roots()[0], folder.path().string() + "/root/");

    const auto set = read_one("<atlas textures_root4='../other'><t name='wall'/></atlas>");
    EXPECT_EQ(set.textures.at(0).texture->image.file_path, folder.path().string() + "/root/maps/ab/wall.tga")
        << "slot 0 is walked first, and the first file of a name stays";
}

TEST(SetAttributes, are_each_named_once) {
    std::set<std::string_view> names;
    for (const SetAttribute& attribute : set_attributes())
        EXPECT_TRUE(names.insert(attribute.name).second) << attribute.name;
    EXPECT_EQ(names.size(), 35u);
}

} // namespace
} // namespace mosaicer
