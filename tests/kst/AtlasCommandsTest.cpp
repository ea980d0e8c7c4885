#include "tests/kst/KstProgram.h"
#include "tests/support/tga_bytes.h"

#include <nlohmann/json.hpp>

namespace mosaicer {
namespace {

using test_support::KstProgram;
using test_support::tga_bytes;
using testing::HasSubstr;

class KstAtlas : public KstProgram {};

TEST_F(KstAtlas, prints_a_line_a_finding) {
    folder.write("tex/rock.tga", tga_bytes(4, 4));
    folder.write("sets.xml", "<atlas name='a' width='8' height='8'><t name='rock'/></atlas>");
    expect({"atlas", "check", "tex", "sets.xml"}, 0, "", "");
    expect({"atlas", "check", "tex", "sets.xml", "--json"}, 0, "[]\n", "");
    folder.write("Part.xml", "<p>\n<t name='rok'/></p>");
    folder.write("sets.xml", "<atlas name='a' widht='8'>\n<xi:include href='part.xml'/></atlas>");
    expect({"atlas", "check", "tex", "sets.xml"}, 1,
           "Part.xml:2: texture: there is no texture \"rok\": the run ends here; did you mean \"rock\"?\n"
           "sets.xml:1: attribute: unknown attribute \"widht\" on <atlas>; did you mean \"width\"?\n"
           "tex/rock.tga:0: unused: the texture is used by no set\n",
           "kst: 3 findings\n");
    folder.write("odd/b\n\x1B[2J.tga", tga_bytes(4, 4));
    folder.write("odd.xml", "<texture_set name='a'><t name='c\x7F'/></texture_set>");
    expect({"atlas", "check", "odd", "odd.xml"}, 1,
           "odd.xml:1: texture: there is no texture \"c\\x7F\": the run ends here\n"
           "odd/b\\x0A\\x1B[2J.tga:0: unused: the texture is used by no set\n",
           "kst: 2 findings\n");
    EXPECT_EQ(run({"atlas", "check", "tex"}).exit_code, 2);
    EXPECT_EQ(run({"atlas"}).exit_code, 2);
}

TEST_F(KstAtlas, prints_findings_as_json) {
    folder.write("tex/rock.tga", tga_bytes(4, 4));
    // In ISO-8859-1, which comes out as UTF-8.
    folder.write("sets.xml", "<atlas name='a'>\n<t name='roc\xF6k'/><t name='rock'/></atlas>");
    const auto result = run({"atlas", "check", "--json", "tex", "sets.xml"});
    EXPECT_EQ(result.exit_code, 1);
    const auto findings = nlohmann::json::parse(result.out);
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings.at(0).at("file"), "sets.xml");
    EXPECT_EQ(findings.at(0).at("line"), 2);
    EXPECT_EQ(findings.at(0).at("kind"), "texture");
    EXPECT_EQ(findings.at(0).at("set"), "a");
    EXPECT_EQ(findings.at(0).at("message"), "there is no texture \"roc\u00F6k\": the run ends here");
    EXPECT_EQ(findings.at(0).at("suggestion"), "rock");
}

TEST_F(KstAtlas, writes_the_schema) {
    const auto printed = run({"atlas", "schema"});
    EXPECT_EQ(printed.exit_code, 0);
    EXPECT_THAT(printed.out, HasSubstr("<grammar"));
    expect({"atlas", "schema", "-o", "m.rng"}, 0, "", "");
    EXPECT_EQ(folder.read("m.rng"), printed.out);
    expect({"atlas", "schema", "-o", "nowhere/m.rng"}, 1, "", "kst: cannot write nowhere/m.rng\n");
}

} // namespace
} // namespace mosaicer
