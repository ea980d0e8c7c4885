#include "driver/check/definition_schema.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace mosaicer {
namespace {

using test_support::TemporaryDirectory;

std::string file_text(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(Schema, stands_in_the_documentation_as_it_is_made) {
    EXPECT_EQ(definition_schema(), file_text(MOSAICER_SOURCE_DIR "/docs/schema/mosaicer-definition.rng"))
        << "run: kst atlas schema -o docs/schema/mosaicer-definition.rng";
}

/// Validates with another's program.
class SchemaByXmllint : public testing::Test {
protected:
    SchemaByXmllint() { folder.write("schema.rng", definition_schema()); }

    bool takes_file(const std::string& file, const std::string& options = {}) const {
#ifdef XMLLINT_PROGRAM
        const std::string command = std::string("'" XMLLINT_PROGRAM "' --noout ") + options + " --relaxng '" +
                                    folder / "schema.rng" + "' '" + file + "' 2>'" + folder / "err" + "'";
        return std::system(command.c_str()) == 0;
#else
        return !file.empty() && options.empty();
#endif
    }

    bool takes(const std::string& xml) const {
        return takes_file(folder.write("d.xml", xml));
    }

    void SetUp() override {
#ifndef XMLLINT_PROGRAM
        GTEST_SKIP() << "xmllint is not installed";
#endif
    }

    TemporaryDirectory folder;
};

TEST_F(SchemaByXmllint, takes_the_examples_raw_and_with_their_includes) {
    for (const char* const options : {"", "--xinclude"})
        EXPECT_TRUE(takes_file(MOSAICER_SOURCE_DIR "/examples/atlas_set.xml", options)) << folder.read("err");
    EXPECT_TRUE(takes_file(MOSAICER_SOURCE_DIR "/examples/common/macros.xml")) << folder.read("err");
}

TEST_F(SchemaByXmllint, takes_what_a_run_reads_as_it_was_meant) {
    for (const char* const xml : {
             "<atlas/>",
             "<g width='64' height='+64.000000' drop_mips='30'><atlas name='a' texel_format=''/></g>",
             "<g><xdefine name='w' value='1'/><atlas width='@w' mip_filter='@filter(1)' "
             "autosplit='@on'>@all</atlas></g>",
             "<g><xdefine name='t(n)'><texture name='$n' anything='1'/></xdefine></g>",
             "<g><g><texture_set name='s'><any name='x' rotation='270' used_by='1 2 -3'/></texture_set></g></g>",
             "<g xmlns:xi='http://www.w3.org/2001/XInclude'><atlas><xi:include href='a#/b/c'/></atlas></g>",
             "<g xmlns:o='other' o:note='1'><atlas min_usage='.5' halftexel_offsets='threetexel_offsets'/></g>",
         })
        EXPECT_TRUE(takes(xml)) << xml << '\n' << folder.read("err");
}

TEST_F(SchemaByXmllint, refuses_what_would_be_passed_over_or_end_the_run) {
    for (const char* const xml : {
             "<g widht='1'/>",
             "<g width='0'/>",
             "<g width='12px'/>",
             "<g width='wide'/>",
             "<g width='2147483648'/>",
             "<g drop_mips='31'/>",
             "<g min_usage='1.5'/>",
             "<g min_usage='0,5'/>",
             "<g texel_format='af_dxt1'/>",
             "<g autosplit='yes'/>",
             "<g autosplit=''/>",
             "<g halftexel_offsets='half'/>",
             "<g rotation='90'/>",
             "<atlas><t/></atlas>",
             "<atlas><t name='a' rotation='45'/></atlas>",
             "<atlas><t name='a' rotation='-90'/></atlas>",
             "<atlas><t name='a' halftexel_offsets='twotexel_offsets'/></atlas>",
             "<atlas><t name='a' texel_format='AF_DXT1'/></atlas>",
             "<atlas><t name='a' used_by='1,2'/></atlas>",
             "<atlas><t name='a' pad_texels_u='-1'/></atlas>",
             "<atlas><atlas name='b'/></atlas>",
             "<atlas><t name='a'><t name='b'/></t></atlas>",
             "<g><xdefine value='1'/></g>",
         })
        EXPECT_FALSE(takes(xml)) << xml;
}

} // namespace
} // namespace mosaicer
