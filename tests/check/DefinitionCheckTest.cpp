// The referee is the tool itself: what a finding says of a run is held against a run of the same input.

#include "driver/check/DefinitionCheck.h"

#include "driver/run_tool.h"
#include "source/utility/filesystem/DiskFileSystem.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/tga_bytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>

namespace mosaicer {
namespace {

using test_support::TemporaryDirectory;
using test_support::tga_bytes;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// A8R8G8B8, one level told.
std::string dds_bytes(std::uint32_t width, std::uint32_t height, std::uint32_t caps2, std::uint32_t images) {
    std::string bytes = "DDS ";
    const auto put = [&bytes](std::initializer_list<std::uint32_t> words) {
        for (const std::uint32_t word : words)
            for (int shift = 0; shift < 32; shift += 8)
                bytes += static_cast<char>(word >> shift & 255);
    };
    put({124, 0x1007, height, width, 0, 0, 0});
    bytes.append(44, '\0');
    put({32, 0x41, 0, 32, 0xFF0000, 0xFF00, 0xFF, 0xFF000000, 0x1000, caps2, 0, 0, 0});
    return bytes.append(std::size_t{width} * height * 4 * images, '\x7F');
}

struct ToolResult {
    int exit_code;
    std::string console;
};

/// What a run does about a fault.
enum class Outcome { says_nothing, warns, reports, ends };

class DefinitionCheckTest : public testing::Test {
protected:
    DefinitionCheckTest() {
        folder.write("tex/rock.tga", tga_bytes(64, 32));
        folder.write("tex/wall.tga", tga_bytes(16, 16));
        folder.write("tex/odd.tga", tga_bytes(6, 6));
        folder.write("tex/tile_x_.tga", tga_bytes(8, 8));
        folder.write("tex/maps/lm.tga", tga_bytes(8, 8));
        folder.write("tex/mapsold/old.tga", tga_bytes(8, 8));
        folder.write("tex/cube.dds", dds_bytes(4, 4, 0xFE00, 6));
        folder.write("tex/cut.dds", dds_bytes(4, 4, 0, 1).substr(0, 150));
    }

    std::vector<Finding> check(const std::string& xml) const {
        folder.write("sets.xml", xml);
        kst::VirtualFileSystem files;
        kst::DiskFileSystem disk;
        files.mount("/", &disk, false);
        return check_definition(folder / "tex", folder / "sets.xml");
    }

    /// As lines, with paths relative to the folder; textures of the fixture that no set uses left out.
    std::vector<std::string> lines(const std::string& xml) const {
        std::vector<std::string> texts;
        const std::string root = folder.path().string() + "/";
        for (const Finding& finding : check(xml)) {
            std::string text = finding_text(finding);
            for (std::size_t at = text.find(root); at != std::string::npos; at = text.find(root))
                text.erase(at, root.size());
            if (finding.kind != FindingKind::unused)
                texts.push_back(text);
        }
        return texts;
    }

    ToolResult run() const {
        std::ostringstream console;
        std::istringstream input;
        const std::vector<std::string> arguments{folder / "tex", folder / "sets.xml", folder / "out"};
        const int exit_code = run_tool(arguments, console, input);
        return {exit_code, console.str()};
    }

    void expect_run(Outcome expected, const std::string& told) const {
        const ToolResult result = run();
        constexpr int exit_codes[] = {0, 0, 3, 1};
        EXPECT_EQ(result.exit_code, exit_codes[static_cast<int>(expected)]) << result.console;
        EXPECT_THAT(result.console, HasSubstr(told));
        if (expected == Outcome::says_nothing) {
            EXPECT_THAT(result.console, Not(HasSubstr("There were")));
        }
    }

    TemporaryDirectory folder;
};

struct FaultCase {
    std::string xml;
    std::string finding; ///< the only one but for unused textures, behind "sets.xml:"
    Outcome run = Outcome::says_nothing;
    std::string told{}; ///< by the run
};

void PrintTo(const FaultCase& each, std::ostream* out) {
    *out << each.xml;
}

/// A set that has nothing wrong with it, with some attributes and its content.
std::string atlas(const std::string& attributes, const std::string& content = "<t name='wall'/>") {
    return "<atlas name='a' width='64' height='64' " + attributes + ">" + content + "</atlas>";
}

class DefinitionFaults : public DefinitionCheckTest, public testing::WithParamInterface<FaultCase> {};

TEST_P(DefinitionFaults, are_told_and_are_true) {
    EXPECT_THAT(lines(GetParam().xml), ElementsAre("sets.xml:" + GetParam().finding));
    expect_run(GetParam().run, GetParam().told);
}

const std::string set_of_two = "<t name='wall'/><t name='odd'/>";

INSTANTIATE_TEST_SUITE_P(
    Names, DefinitionFaults,
    testing::Values(
        FaultCase{atlas("widht='8'"), "1: attribute: unknown attribute \"widht\" on <atlas>; did you mean \"width\"?"},
        FaultCase{atlas("", "<t name='wall' rotaton='90'/>"),
                  "1: attribute: unknown attribute \"rotaton\" on <t>; did you mean \"rotation\"?"},
        FaultCase{atlas("", "<t name='wall' texel_format='AF_DXT1'/>"),
                  "1: attribute: unknown attribute \"texel_format\" on <t>: it holds for sets and groups, not for one "
                  "texture"},
        FaultCase{"<g>\n" + atlas("") + "<atlass name='b'><t name='wall'/></atlass></g>",
                  "2: element: <atlass> is no set: it makes nothing; did you mean \"atlas\"?"},
        FaultCase{"<g>\n\n<p><t name='wall'/></p></g>",
                  "1: element: there is no <atlas> and no <texture_set> in <g>: it makes nothing"},
        FaultCase{atlas("", "<t name='wall'>\n<t name='odd'/></t>"),
                  "1: element: what stands inside of <t> is never read"},
        FaultCase{atlas("", ""), "1: element: set \"a\" names no texture: it makes nothing"},
        FaultCase{"<g name='g'><atlas><t name='wall'/></atlas></g>",
                  "1: value: <atlas> has no name: its full name is \"g/\""},
        FaultCase{atlas("", "<t name='wal'/>"),
                  "1: texture: there is no texture \"wal\": the run ends here; did you mean \"wall\"?", Outcome::ends,
                  "Did not find texture wal referenced in set a"},
        FaultCase{
            atlas("", "<t name='maps/LM.tga'/>"),
            "1: texture: there is no texture \"maps/lm.tga\": names stand without directory and extension; the run "
            "ends here; did you mean \"lm\"?",
            Outcome::ends, "Did not find texture maps/lm.tga"}));

INSTANTIATE_TEST_SUITE_P(
    Values, DefinitionFaults,
    testing::Values(
        FaultCase{atlas("nr_mips='one'"), "1: value: nr_mips \"one\" is no number and counts as 0"},
        FaultCase{atlas("autosplit='yes'"), "1: value: autosplit \"yes\" counts as false: it must be true or false"},
        FaultCase{atlas("file_format='dds'"),
                  "1: value: file_format \"dds\" ends the run: it must be DDS, TGA, PNG or BMP; did you mean \"DDS\"?",
                  Outcome::ends, "No enum element named dds"},
        FaultCase{atlas("", "<t name='wall' rotation='45'/>"), "1: value: rotation \"45\" is none of 0, 90, 180 or 270",
                  Outcome::ends, "wall - only 0, 90, 180 or 270"},
        FaultCase{atlas("", "<t name='wall' rotation='-90'/>"),
                  "1: value: rotation \"-90\" is none of 0, 90, 180 or 270"},
        FaultCase{atlas("", "<t name='wall' used_by='1;2'/>"),
                  "1: value: used_by \"1;2\": \"1;2\" counts as 1; the numbers are separated by single blanks"},
        FaultCase{
            "<g><xdefine name='w' value='1'/>\n" + atlas("nr_mips='@w'") + "</g>",
            "2: macro: \"@w\" stays as it is: macros hold from their definition to the end of the element around it, "
            "in text and in double-quoted values"},
        FaultCase{"<g><xdefine name='car' value=''/>" + atlas("", "<t name='wall'/>\n@cart(1)") + "</g>",
                  "1: macro: \"@cart\" is no macro here and stays as it is; did you mean \"@car\"?"},
        FaultCase{atlas("", "<t name='wall'/> and more"), "1: text: text is never read: \"and more\""},
        FaultCase{"<g>\n<xi:include href='x.xml'/>" + atlas("") + "</g>",
                  "2: include: included file \"x.xml\" is not found or empty: it adds nothing"},
        FaultCase{
            "<g>" + atlas("o:note=\"&nbsp;\"") + "</g>",
            "1: definition: unknown entity \"&nbsp;\" stays as it is: there are &lt; &gt; &amp; &apos; and &quot;"},
        FaultCase{"<g>\n</h>", "2: definition: Identifiers must match", Outcome::ends, "Identifiers must match"},
        FaultCase{"", "0: definition: the definition is not found or empty: a run makes nothing and says nothing"},
        FaultCase{atlas("min_usage='0.5'"),
                  "1: ignored: min_usage has no effect on an atlas without autosplit or autofill"},
        FaultCase{"<texture_set name='s' pad_texels_u='1'><t name='wall'/></texture_set>",
                  "1: ignored: pad_texels_u has no effect on a texture_set"},
        FaultCase{atlas("file_format='PNG' nr_mips='3'"),
                  "1: ignored: nr_mips has no effect here: only DDS files hold more than one level"}));

INSTANTIATE_TEST_SUITE_P(
    Sizes, DefinitionFaults,
    testing::Values(
        FaultCase{atlas("pad_texels_u='1'", "<t name='rock'/>"),
                  "1: size: texture \"rock\" is larger than the surface: 66 x 32 with padding on 64 x 64",
                  Outcome::reports, "Insert of rock in atlas a failed"},
        FaultCase{
            "<atlas name='a' width='64' height='32'><t name='rock'/>\n<t name='wall'/></atlas>",
            "2: packing: texture \"wall\" finds no place on the 64 x 32 surface beside the 1 ahead of it: it and the "
            "0 behind it are left out",
            Outcome::reports, "Insert of wall in atlas a failed"},
        FaultCase{atlas("drop_mips='7'"), "1: size: no surface is left: 64 x 64 with drop_mips 7", Outcome::reports,
                  "Insert of wall in atlas a failed"},
        FaultCase{
            atlas("", "<t name='wall' width='8'/>"),
            "1: size: texture \"wall\" cannot be brought from 16 x 16 to 8 x -1: the run ends here (Texture resizing "
            "must be specified for both width and height); it must be the size of a mip level",
            Outcome::ends, "Texture resizing must be specified for both"},
        FaultCase{
            atlas("", "<t name='wall' width='5' height='5'/>"),
            "1: size: texture \"wall\" cannot be brought from 16 x 16 to 5 x 5: the run ends here (Unable to resize "
            "texture); it must be the size of a mip level",
            Outcome::ends, "Unable to resize texture"},
        FaultCase{atlas("", "<t name='wall' width='16' height='12'/>"),
                  "1: size: texture \"wall\" is loaded at 16 x 16 but placed as 16 x 12"},
        FaultCase{
            atlas("", "<t name='wall' width='8' height='0'/>"),
            "1: size: texture \"wall\" keeps its size of 16 x 16: a forced size needs both width and height above 0"},
        FaultCase{atlas("", "<t name='cube'/>"),
                  "1: packing: texture \"cube\" is a cube map, which no atlas takes: the run ends here", Outcome::ends,
                  "Unable to insert cube texture"},
        FaultCase{atlas("pad_texels_u='1'", "<t name='tile_x_'/>"),
                  "1: packing: texture \"tile_x_\" repeats and has padding along the same axis: the run ends here",
                  Outcome::ends, "is tiled and has padding texels"}));

INSTANTIATE_TEST_SUITE_P(
    Strategies, DefinitionFaults,
    testing::Values(
        FaultCase{
            atlas("autosplit='true' min_usage='0.9'", "<t name='odd'/>"),
            "1: usage: Unable to pack set a, textures that can never be placed: odd (reaches a usage of only 0.5625 "
            "alone, 0.9 is required): the run ends here",
            Outcome::ends, "Unable to pack set a"},
        FaultCase{
            atlas("autosplit='true' removal_strat0='FURTHEST'"),
            "1: packing: Furthest specified as removal strategy, but no position data is present: the run ends here",
            Outcome::ends, "Furthest specified"},
        FaultCase{atlas("autosplit='true' packing_order_strat='BY_PRECOOK'", set_of_two),
                  "1: packing: No precooking set but packing order is set to by precooking order: the run ends here",
                  Outcome::ends, "No precooking set"},
        FaultCase{atlas("mip_filter='KEEP'"),
                  "1: filter: texture \"wall\" has no mip levels that KEEP could keep, only 1: BOX_GAMMA is used",
                  Outcome::warns, "KEEP specified as mip filter"}));

INSTANTIATE_TEST_SUITE_P(
    Formats, DefinitionFaults,
    testing::Values(
        FaultCase{atlas("file_format='PNG' texel_format='AF_DXT1'"),
                  "1: format: PNG files hold AF_A8R8G8B8 alone, not AF_DXT1: the run ends here; did you mean "
                  "\"AF_A8R8G8B8\"?",
                  Outcome::ends, "Invalid combination of file format and texel format"},
        FaultCase{
            "<texture_set name='s' texel_format='AF_DXT5'><t name='odd'/></texture_set>",
            "1: format: texture \"odd\" of 6 x 6 cannot be written as AF_DXT5: each side must be 1, 2 or a multiple "
            "of 4",
            Outcome::ends, "Error saving image to file"},
        FaultCase{
            "<atlas name='a' width='20' height='20' texel_format='AF_DXT5'><t name='odd'/></atlas>",
            "1: format: atlas \"a\" of 10 x 10 cannot be written as AF_DXT5: each side must be 1, 2 or a multiple of "
            "4; the run ends here",
            Outcome::ends, "Error saving image to file"},
        FaultCase{atlas("", "<t name='wall'/>\n<t name='odd' rename_to='wall'/>"),
                  "2: output: the set holds \"wall\" a second time, under the same name"},
        FaultCase{atlas("category=\"R&amp;D\""),
                  "1: output: name or category of the set holds &, < or a double quote, which breaks its database"},
        FaultCase{"<texture_set name='s'><t name='wall' rename_to='x/y'/></texture_set>",
                  "1: output: rename_to \"x/y\" names a folder, which is not made: the file can't be written",
                  Outcome::ends, "Error saving image to file"}));

INSTANTIATE_TEST_SUITE_P(
    Folders, DefinitionFaults,
    testing::Values(
        FaultCase{atlas("autofill='mops'", ""), "1: autofill: autofill \"mops\" is no directory of a textures root"},
        FaultCase{atlas("autofill='maps'", ""),
                  "1: autofill: autofill \"maps\" also takes the textures of \"tex/mapsold\", because its path "
                  "begins alike"}));

TEST_F(DefinitionCheckTest, tells_what_several_places_have_to_do_with_each_other) {
    // One set over the other, through a name that only looks different.
    EXPECT_THAT(
        lines("<g><atlas name='u/a' width='64' height='64'><t name='wall'/></atlas>\n"
              "<g name='u'><atlas name='./a' width='64' height='64'><t name='odd'/></atlas></g></g>"),
        ElementsAre("sets.xml:2: output: \"u/a/tdb_atlas_set.xml\" is written over that of set \"u/a\" (sets.xml:1)"));
    expect_run(Outcome::says_nothing, "");
    EXPECT_THAT(folder.read("out/u/a/tdb_atlas_set.xml"), AllOf(HasSubstr("odd"), Not(HasSubstr("wall"))));

    EXPECT_THAT(lines("<g textures_root='nowhere'>\n" + atlas("") + "</g>"),
                ElementsAre("sets.xml:1: root: textures root \"tex/nowhere\" is no directory",
                            "sets.xml:2: texture: there is no texture \"wall\": the run ends here"));
    expect_run(Outcome::ends, "Did not find texture wall");

    EXPECT_THAT(lines(atlas("", "<t name='cut'/>")),
                ElementsAre("sets.xml:1: pixels: texture \"cut\" ends before its pixels do: loading it ends the run "
                            "(tex/cut.dds)"));
    expect_run(Outcome::ends, "Failure loading texture");
}

TEST_F(DefinitionCheckTest, tells_what_the_index_passes_over) {
    folder.write("tex/big.TGA", tga_bytes(4, 4));
    folder.write("tex/maps/wall.tga", tga_bytes(4, 4));
    folder.write("tex/rock.png", "no picture");
    folder.write("tex/odd.bmp", folder.read("tex/odd.tga"));
    folder.write("tex/old.dds", "DDS ");
    // The directory comes ahead of the file: maps/wall stays.
    EXPECT_THAT(
        lines(atlas("", "<t name='wall'/>")),
        ElementsAre("tex/big.TGA:0: case: the file is no texture: its extension must be in lower case; did you mean "
                    "\"big.tga\"?",
                    testing::StartsWith("tex/odd.bmp:0: header: the texture is left out: its header cannot be read"),
                    testing::StartsWith("tex/old.dds:0: header: the texture is left out"),
                    testing::StartsWith("tex/rock.png:0: header: the texture is left out"),
                    "tex/wall.tga:0: collision: the texture is left out: \"tex/maps/wall.tga\" has the same name"));
    const ToolResult result = run();
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_THAT(result.console, AllOf(HasSubstr("Texture name collision between"), HasSubstr("/tex/rock.png"),
                                      HasSubstr("/tex/odd.bmp"), HasSubstr("/tex/old.dds"), Not(HasSubstr("big.TGA"))));
}

/// The packer takes an odd side for the next smaller even one.
TEST_F(DefinitionCheckTest, tells_textures_that_overlap) {
    folder.write("tex/drei.tga", tga_bytes(3, 3));
    folder.write("tex/trois.tga", tga_bytes(3, 3));
    const std::string content = "<t name='drei'/><t name='trois'/>";
    EXPECT_THAT(
        lines(atlas("", content)),
        ElementsAre("sets.xml:1: packing: textures \"drei\" and \"trois\" overlap by a texel, because they have odd "
                    "sides: pad them by 1 or more"));
    expect_run(Outcome::says_nothing, "");
    EXPECT_THAT(lines(atlas("pad_texels_u='1'", content)), IsEmpty());
}

TEST_F(DefinitionCheckTest, tells_textures_that_no_set_uses) {
    std::vector<std::string> unused;
    for (const Finding& finding : check("<g>" + atlas("", set_of_two) + "<texture_set name='s' autofill='maps'/></g>"))
        if (finding.kind == FindingKind::unused)
            unused.push_back(finding.file.substr(finding.file.rfind('/') + 1));
    EXPECT_THAT(unused, ElementsAre("cube.dds", "cut.dds", "rock.tga", "tile_x_.tga"));
}

TEST_F(DefinitionCheckTest, tells_records_of_positions_that_place_nothing) {
    folder.write("tex/maps/lightmap_positions.xml", "<p>\n<l name='LM.tga' position='1 2 3'/>\n<l name='lm' "
                                                    "position='1 2'/>\n<l name='old' position='1 2 3'/></p>");
    EXPECT_THAT(lines(atlas("autofill='maps' autopacking_template='lightmaps'", "")),
                testing::IsSupersetOf(
                    {std::string("tex/maps/lightmap_positions.xml:2: texture: there is no texture \"LM.tga\": the "
                                 "position is passed over; did you mean \"lm\"?"),
                     std::string("tex/maps/lightmap_positions.xml:3: value: position \"1 2\" is not three "
                                 "numbers: what is missing counts as 0")}));
    expect_run(Outcome::says_nothing, "");
}

TEST_F(DefinitionCheckTest, tells_a_thing_once_that_concerns_many_textures) {
    for (int i = 0; i < 5; ++i)
        folder.write("tex/many/m" + std::to_string(i) + ".tga", tga_bytes(128, 8));
    EXPECT_THAT(
        lines(atlas("autofill='many'", "")),
        ElementsAre("sets.xml:1: size: texture \"m0\" (and \"m1\", \"m2\" and 2 more) is larger than the surface: 128 "
                    "x 8 with padding on 64 x 64"));
    expect_run(Outcome::ends, "Unable to pack set a");
}

/// Too many to be packed on paper: no atlas with the large one can be fuller than all of them together.
TEST_F(DefinitionCheckTest, tells_by_area_of_sets_that_are_too_large_to_pack) {
    std::string entries = "<t name='big'/>\n";
    folder.write("tex/many/big.tga", tga_bytes(513, 8));
    for (int i = 0; i < 512; ++i) {
        folder.write("tex/many/m" + std::to_string(i) + ".tga", tga_bytes(1, 2));
        entries += "<t name='m" + std::to_string(i) + "'/>";
    }
    // 513 x 8 and 512 x 2 are 5,128 texels; the large one needs 1024 x 8.
    const auto set = [&entries](const std::string& usage) {
        return "<atlas name='a' width='1024' height='1024' autosplit='true' min_usage='" + usage + "'>\n" + entries +
               "</atlas>";
    };
    EXPECT_THAT(lines(set("0.62")), IsEmpty());
    EXPECT_THAT(
        lines(set("0.63")),
        ElementsAre("sets.xml:2: usage: texture \"big\" can never stand on an atlas that is full enough: all textures "
                    "of the set together fill too little of the 1024 x 8 that it needs"));
    expect_run(Outcome::ends, "Unable to pack set a, textures that can never be placed: big");
}

TEST(FindingKinds, have_each_a_part_of_their_own_in_the_documentation) {
    std::ifstream page(MOSAICER_SOURCE_DIR "/docs/checking.md");
    const std::string text{std::istreambuf_iterator<char>(page), {}};
    for (const std::string_view word : finding_words)
        EXPECT_THAT(text, HasSubstr("\n### " + std::string(word) + "\n"));
}

TEST_F(DefinitionCheckTest, finds_nothing_in_the_examples_and_a_run_agrees) {
    kst::VirtualFileSystem files;
    kst::DiskFileSystem disk;
    files.mount("/", &disk, false);
    const std::string examples = MOSAICER_SOURCE_DIR "/examples/";
    for (const Finding& finding : check_definition(examples + "textures", examples + "atlas_set.xml"))
        ADD_FAILURE() << finding_text(finding);
}

} // namespace
} // namespace mosaicer
