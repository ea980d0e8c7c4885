#include "driver/run_tool.h"

#include "tests/support/TemporaryDirectory.h"
#include "tests/support/tga_bytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace mosaicer {
namespace {

using test_support::TemporaryDirectory;
using test_support::tga_bytes;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

struct Result {
    int exit_code;
    std::string console; ///< behind the attribution
};

Result run_behind_attribution(const std::vector<std::string>& arguments) {
    std::ostringstream console;
    std::istringstream input;
    const int exit_code = run_tool(arguments, console, input);
    std::string text = console.str();
    for (int group = 0; group < 3; ++group)
        text.erase(0, text.find("\n\n") + 2);
    return {exit_code, text};
}

/// A source tree with two small textures, and a definition beside it.
class WholeRun : public testing::Test {
protected:
    WholeRun() {
        folder.write("tex/a.tga", tga_bytes(4, 4, 0xFF0000FFu));
        folder.write("tex/sub/b.tga", tga_bytes(2, 2, 0x80FF0000u));
    }

    Result run_definition(const std::string& xml, std::vector<std::string> switches = {}) {
        folder.write("sets.xml", xml);
        switches.insert(switches.end(), {(folder / "tex"), (folder / "sets.xml"), (folder / "out")});
        return run_behind_attribution(switches);
    }

    TemporaryDirectory folder;
};

const std::string one_atlas =
    "<atlas name='ui' width='16' height='8' mip_filter='BOX'><t name='a'/><t name='b'/></atlas>";

TEST_F(WholeRun, makes_an_atlas_and_its_database) {
    EXPECT_EQ(run_definition(one_atlas).exit_code, 0);
    EXPECT_THAT(folder.files(),
                ElementsAre("out/ui/atlas.dds", "out/ui/tdb_atlas_set.xml", "sets.xml", "tex/a.tga", "tex/sub/b.tga"));
    const std::string dds = folder.read("out/ui/atlas.dds");
    EXPECT_EQ(dds.size(), 128u + 4 * (8 * 4 + 4 * 2 + 2 * 1 + 1));
    EXPECT_EQ(dds.substr(0, 4), "DDS ");
    EXPECT_EQ(dds.substr(128, 8), std::string("\xFF\0\0\xFF\xFF\0\0\xFF", 8)) << "blue, green, red, alpha";
    EXPECT_EQ(dds.substr(128 + 16, 4), std::string("\0\0\xFF\x80", 4)) << "b stands right of a";
    EXPECT_EQ(folder.read("out/ui/tdb_atlas_set.xml"),
              "<atlas_set name=\"ui\" category=\"\" allow_autoload=\"true\">\n"
              "\t<atlas_mapping texture=\"a\" groups=\"\"  u_off=\"0.0625\" v_off=\"0.875\" u_scale=\"0.375\" "
              "v_scale=\"0.75\" rotation=\"0\" tiled_u=\"false\" tiled_v=\"false\" orig_name=\"a\" "
              "orig_mip_filter=\"BOX\" orig_forced_width=\"-1\" orig_forced_height=\"-1\" />\n"
              "\t<atlas_mapping texture=\"b\" groups=\"\"  u_off=\"0.5625\" v_off=\"0.375\" u_scale=\"0.125\" "
              "v_scale=\"0.25\" rotation=\"0\" tiled_u=\"false\" tiled_v=\"false\" orig_name=\"b\" "
              "orig_mip_filter=\"BOX\" orig_forced_width=\"-1\" orig_forced_height=\"-1\" />\n"
              "</atlas_set>\n");
}

TEST_F(WholeRun, says_under_v_what_it_does) {
    EXPECT_EQ(run_definition(one_atlas, {"-v"}).console, "Reading texture tree definition and baking sets...\n"
                                                         "Indexing " +
                                                             (folder / "tex") +
                                                             "/... done (2 textures found)\n"
                                                             "Creating atlas ui...\n"
                                                             "Using dxt lib for DXT compression\n"
                                                             "Done.\n"
                                                             "All done!\n\n"
                                                             "No errors\n"
                                                             "Statistics: \n"
                                                             "Baked atlas ui, 62% used (2 textures)\n\n");
    EXPECT_EQ(run_definition(one_atlas).console, "");
}

TEST_F(WholeRun, ends_with_3_and_bakes_the_rest_when_a_texture_does_not_fit) {
    const Result result = run_definition("<atlas name='ui' width='4' height='4'><t name='b'/><t name='a'/></atlas>");
    EXPECT_EQ(result.exit_code, 3);
    EXPECT_EQ(result.console, "There were errors: \nInsert of a in atlas ui failed, packing aborted\n\n");
    EXPECT_THAT(folder.files(), testing::Contains("out/ui/atlas.dds"));
}

TEST_F(WholeRun, ends_with_1_and_keeps_earlier_sets_when_an_exception_ends_it) {
    const Result result = run_definition("<g>" + one_atlas + "<atlas name='bad'><t name='zz'/></atlas></g>");
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_EQ(result.console, "Failure: Did not find texture zz referenced in set bad, operation aborted.\n");
    EXPECT_THAT(folder.files(), testing::Contains("out/ui/atlas.dds"));
}

TEST_F(WholeRun, prints_warnings_without_v_and_still_ends_with_0) {
    folder.write("tex/broken.tga", "x");
    const Result result = run_definition(one_atlas);
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_THAT(result.console, AllOf(testing::StartsWith("There were warnings: \n"), HasSubstr("broken.tga")));
}

TEST_F(WholeRun, goes_on_when_the_reader_of_its_console_has_left) {
    folder.write("sets.xml", one_atlas);
    const std::string command = "cd '" + (folder / "") +
                                "' && { sleep 0.2; '" MOSAICER_PROGRAM "' -v tex sets.xml out; echo $? >code; } | true";
    ASSERT_EQ(std::system(command.c_str()), 0); // NOLINT(concurrency-mt-unsafe)
    EXPECT_EQ(folder.read("code"), "0\n");
    EXPECT_THAT(folder.files(), testing::Contains("out/ui/tdb_atlas_set.xml"));
}

TEST_F(WholeRun, gives_the_same_bytes_again) {
    run_definition(one_atlas);
    const std::string first = folder.read("out/ui/atlas.dds");
    run_definition(one_atlas);
    EXPECT_EQ(folder.read("out/ui/atlas.dds"), first);
}

struct PathCase {
    const char* textures;
    const char* definition;
    const char* output;
    bool relative;
};

TEST_F(WholeRun, takes_paths_of_every_kind) {
    const std::string xml = "<?xml version='1.0' encoding='UTF-8'?><texture_set name='Set \xC3\x84' nr_mips='1'><t "
                            "name='a'/></texture_set>";
    for (const PathCase& c : {PathCase{"Mixed Case/T\xC3\xA4x", "My Sets/Def.XML", "Out Put", false},
                              PathCase{"Mixed Case/T\xC3\xA4x", "My Sets/Def.XML", "Out Put", true},
                              PathCase{"Mixed Case\\T\xC3\xA4x\\", "My Sets\\Def.XML", "Out Put\\", true},
                              PathCase{"./x/../x/", "./def.xml", "./deep/er/out", true}}) {
        const TemporaryDirectory place;
        std::string texture = c.textures;
        std::replace(texture.begin(), texture.end(), '\\', '/');
        std::string definition = c.definition;
        std::replace(definition.begin(), definition.end(), '\\', '/');
        std::filesystem::create_directories((place / "x"));
        place.write(texture + "/a.tga", tga_bytes(4, 4));
        place.write(definition, xml);
        const std::filesystem::path before = std::filesystem::current_path();
        const auto given = [&](const char* path) { return c.relative ? std::string(path) : (place / path); };
        if (c.relative)
            std::filesystem::current_path(place.path().string());
        const Result result = run_behind_attribution({given(c.textures), given(c.definition), given(c.output)});
        std::filesystem::current_path(before);
        std::string output = c.output;
        std::replace(output.begin(), output.end(), '\\', '/');
        const std::string image = std::filesystem::path(output + "/Set \xC3\x84/a.dds").lexically_normal().string();
        EXPECT_EQ(result.exit_code, 0) << result.console;
        EXPECT_TRUE(std::filesystem::exists((place / image))) << image << "\n" << result.console;
    }
}

TEST_F(WholeRun, reads_positions_in_a_folder_of_mixed_case) {
    folder.write("tex/Maps/One.tga", tga_bytes(4, 4));
    folder.write("tex/Maps/lightmap_positions.xml", "<p><m name='one' position='1 2 3'/></p>");
    const Result result = run_definition("<atlas name='l' autofill='Maps' autopacking_template='lightmaps'/>", {"-d"});
    EXPECT_EQ(result.exit_code, 0) << result.console;
    EXPECT_THAT(result.console, HasSubstr("Encountered positions map for autofilled set l\n"));
    EXPECT_THAT(folder.files(), testing::Contains("out/l/atlas0/atlas.dds"));
}

struct BrokenCase {
    const char* xml;
    const char* text;
};

TEST_F(WholeRun, names_the_file_and_the_fault_of_a_broken_definition) {
    for (const BrokenCase& c : {BrokenCase{"<a></b>", " (1): Identifiers must match"},
                                BrokenCase{"<a b=", "Attempt to read past end of archive"},
                                BrokenCase{"<a> ", "past end of archive"}, BrokenCase{"xyz", " empty"}}) {
        const Result result = run_definition(c.xml);
        EXPECT_EQ(result.exit_code, 1);
        EXPECT_THAT(result.console, AllOf(testing::StartsWith("Failure: "), HasSubstr("sets.xml"), HasSubstr(c.text)));
    }
    EXPECT_EQ(run_definition("").exit_code, 0) << "an empty file makes nothing";
}

TEST_F(WholeRun, ends_a_split_set_that_can_never_be_placed) {
    const Result result =
        run_definition("<atlas name='big' autosplit='true' width='2' height='2'><t name='a'/><t name='b'/></atlas>");
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.console, AllOf(HasSubstr("big"), HasSubstr("a")));
    EXPECT_THAT(folder.files(), testing::Contains("out/big/atlas0/atlas.dds")) << "what could be placed was";
}

} // namespace
} // namespace mosaicer
