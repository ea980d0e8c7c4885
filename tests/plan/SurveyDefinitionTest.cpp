#include "driver/plan/survey_definition.h"

#include "driver/TextureIndex.h"
#include "driver/plan/set_fingerprint.h"
#include "driver/plan/split_set_outputs.h"
#include "driver/read_set_definition.h"
#include "source/utility/filesystem/DiskFileSystem.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/xml/XMLDocument.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/tga_bytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <random>

namespace mosaicer {
namespace {

using test_support::tga_bytes;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class SurveyDefinition : public testing::Test {
protected:
    SurveyDefinition() {
        files.mount("/", &disk, /*owned=*/false);
        for (const char* const name : {"a", "b", "c", "dlc/a", "dlc/d", "maps/e", "maps/f"})
            folder.write("tex/" + std::string(name) + ".tga", tga_bytes(8, 8, 0xFF0000FFu));
    }

    PlanRoots roots() const { return {folder / "tex/", folder / "sets.xml", folder / "out/"}; }

    DefinitionSurvey survey(const std::string& xml) {
        folder.write("sets.xml", xml);
        return survey_definition(roots());
    }

    /// Each group by the names of its sets and its patterns.
    std::vector<std::string> groups(const std::string& xml) {
        const DefinitionSurvey found = survey(xml);
        std::vector<std::string> texts;
        for (const EdgeGroup& group : found.groups) {
            std::string text;
            for (const std::size_t i : group.sets)
                text += found.sets[i].name + " ";
            for (const std::string& pattern : group.patterns)
                text += "-p" + pattern;
            texts.push_back(text);
        }
        return texts;
    }

    /// Below the folder, for short.
    std::vector<std::string> inside(const std::vector<std::string>& paths) const {
        std::vector<std::string> names;
        for (const std::string& path : paths)
            names.push_back(path.substr(folder.path().string().size() + 1));
        return names;
    }

    test_support::TemporaryDirectory folder;
    kst::VirtualFileSystem files;
    kst::DiskFileSystem disk;
};

TEST_F(SurveyDefinition, lists_what_sets_read_and_write) {
    folder.write("inc/more.xml",
                 "<w><texture_set name='s' file_format='PNG'><t name='A' rename_to='z'/></texture_set></w>");
    folder.write("tex/maps/lightmap_positions.xml", "<p/>");
    const DefinitionSurvey found = survey("<g><atlas name='u'><t name='b'/><t name='c'/><t name='b'/></atlas>"
                                          "<xi:include href='inc/more.xml'/><atlas name='empty'/>"
                                          "<atlas name='m' autofill='maps'/></g>");
    ASSERT_EQ(found.sets.size(), 4u);
    EXPECT_THAT(inside(found.sets[0].inputs), ElementsAre("tex/b.tga", "tex/c.tga"));
    EXPECT_THAT(inside(found.sets[0].outputs), ElementsAre("out/u/atlas.dds", "out/u/tdb_atlas_set.xml"));
    EXPECT_THAT(inside(found.sets[1].outputs), ElementsAre("out/s/tdb_texture_set.xml", "out/s/z.png"));
    EXPECT_THAT(found.sets[2].outputs, IsEmpty());
    EXPECT_TRUE(found.sets[3].is_split);
    EXPECT_THAT(inside(found.sets[3].inputs),
                ElementsAre("tex/maps/e.tga", "tex/maps/f.tga", "tex/maps/lightmap_positions.xml"));
    EXPECT_THAT(inside(split_set_outputs(roots(), {"m"})),
                ElementsAre("out/m/atlas0/atlas.dds", "out/m/atlas0/tdb_atlas_set.xml"));
    EXPECT_THAT(inside(found.definitions), ElementsAre("inc/more.xml", "sets.xml"));
    EXPECT_THAT(inside(found.directories), ElementsAre("tex/", "tex/dlc", "tex/maps"));
    EXPECT_EQ(found.sources.size(), 7u);
}

TEST_F(SurveyDefinition, groups_sets_that_leave_marks_on_shared_textures) {
    const std::string first = "<g><atlas name='x1'><t name='a' used_by='1 2'/></atlas>";
    EXPECT_THAT(groups(first + "<atlas name='x2'><t name='a'/></atlas></g>"), ElementsAre("x1 x2 -px"));
    EXPECT_THAT(groups(first + "<atlas name='x2'><t name='a' used_by='2 1 3'/></atlas></g>"),
                ElementsAre("x1 -px1", "x2 -px2"))
        << "the union is the set's own groups";
    EXPECT_THAT(groups(first + "<atlas name='x2'><t name='b'/></atlas></g>"), ElementsAre("x1 -px1", "x2 -px2"));
}

TEST_F(SurveyDefinition, groups_sets_that_stand_on_an_earlier_sets_walk) {
    EXPECT_THAT(
        groups("<g><atlas name='x1' textures_root='dlc'><t name='d'/></atlas>"
               "<atlas name='x2'><t name='a'/></atlas><atlas name='y' textures_root='maps'><t name='e'/></atlas>"
               "</g>"),
        ElementsAre("x1 x2 -px", "y -py"));
}

TEST_F(SurveyDefinition, groups_sets_that_write_the_same_files) {
    EXPECT_THAT(groups("<g><atlas name='x/u'><t name='a'/></atlas><atlas name='x\\u'><t name='b'/></atlas>"
                       "<atlas name='y'><t name='b'/></atlas></g>"),
                ElementsAre("x/u x\\u -px", "y -py"));
    EXPECT_THAT(groups("<g><atlas name='x/s' autosplit='true'><t name='a'/></atlas>"
                       "<texture_set name='x\\s\\atlas7'><t name='b'/></texture_set></g>"),
                ElementsAre("x/s x\\s\\atlas7 -px"));
}

TEST_F(SurveyDefinition, keeps_all_in_one_where_a_left_out_set_does_harm) {
    for (const std::string entry : {"<t name='a' texel_format='JUNK'/>", "<t name='a' textures_root='dlc'/>"})
        EXPECT_THAT(groups("<g><atlas name='u'>" + entry + "</atlas><atlas name='v'><t name='b'/></atlas></g>"),
                    ElementsAre("u v -p"))
            << entry;
    EXPECT_THAT(groups("<g><atlas name='u1'><atlas name='a'/></atlas><atlas name='a'><t name='b'/></atlas>"
                       "<atlas name='w'><t name='b'/></atlas></g>"),
                ElementsAre("u1 a w -p"))
        << "-pa would make the entry u1/a a set";
}

TEST_F(SurveyDefinition, refuses_what_cannot_be_planned) {
    const auto message = [this](const std::string& xml) -> std::string {
        try {
            survey(xml);
        } catch (const std::runtime_error& failure) {
            return failure.what();
        }
        return "";
    };
    EXPECT_EQ(message(""), "cannot load " + (folder / "sets.xml"));
    EXPECT_EQ(message("<atlas name='u'><t name='zz'/></atlas>"),
              "Did not find texture zz referenced in set u, operation aborted.");
    EXPECT_EQ(message("<g><texture_set name='../tex' file_format='TGA'><t name='b'/></texture_set></g>"),
              "Set ../tex writes " + (folder / "tex/b.tga") + ", which set ../tex reads");
    EXPECT_EQ(message("<atlas name='u' autofill='none' autopacking_template='lightmaps'/>"),
              "Furthest specified as removal strategy, but no position data is present");
}

TEST_F(SurveyDefinition, lets_a_plan_stand_until_a_new_root_appears) {
    EXPECT_THAT(inside(survey("<atlas name='u' textures_root1='new/deep'><t name='a'/></atlas>").directories),
                testing::Contains("tex"));
}

/// What runs with these patterns hand to the makers, by the sets' places in the file: names are not unique.
std::map<std::string, std::uint64_t> made_by(const PlanRoots& roots, const std::string& pattern) {
    kst::XMLDocument definition;
    definition.load(roots.definition_path);
    TextureIndex index(roots.textures_root);
    std::map<std::string, std::uint64_t> made;
    std::map<std::string, int> seen;
    const auto keep = [&](const AtlasSetDefinition& set, const std::string&) {
        made[set.name + "#" + std::to_string(seen[set.name]++)] = set_fingerprint(set);
    };
    read_set_definition(AtlasSetDefinition{}, definition, {index, roots.output_root, pattern, {keep, keep, keep}});
    return made;
}

/// The whole promise, by the reader itself: what the runs of all edges make is what one run makes.
TEST_F(SurveyDefinition, gives_every_set_the_state_of_a_run_of_all_sets) {
    std::mt19937 random(7);
    const auto below = [&](std::size_t bound) { return random() % bound; };
    const auto pick = [&](std::vector<std::string> choices) { return choices[below(choices.size())]; };
    int grouped = 0;
    for (int round = 0; round < 150; ++round) {
        std::string xml = "<g>";
        for (std::size_t sets = 1 + below(6); sets > 0; --sets) {
            const std::string kind = pick({"atlas", "texture_set"});
            xml += "<" + kind + " name='" + pick({"x/a", "x/b", "x/c", "y/d", "y/a", "x"}) + "'" +
                   pick({"", "", " textures_root='dlc'", " textures_root1='maps'", " autofill='maps'"}) + ">";
            for (std::size_t entries = below(3); entries > 0; --entries)
                xml += "<" + pick({"t", "t", "t", "atlas"}) + " name='a'" +
                       pick({"", "", " used_by='1'", " used_by='2 1'", " textures_root='dlc'"}) + "/>";
            xml += "</" + kind + ">";
        }
        const DefinitionSurvey found = survey(xml + "</g>");
        const auto whole = made_by(roots(), "");
        std::map<std::string, std::uint64_t> parts;
        for (const EdgeGroup& group : found.groups) {
            grouped += group.sets.size() > 1 ? 1 : 0;
            for (const std::string& pattern : group.patterns)
                for (const auto& [name, fingerprint] : made_by(roots(), pattern))
                    parts[name] = fingerprint;
        }
        EXPECT_EQ(parts, whole) << xml;
    }
    EXPECT_GT(grouped, 30);
}

} // namespace
} // namespace mosaicer
