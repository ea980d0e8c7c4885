#include "tests/support/TemporaryDirectory.h"
#include "tests/utility/XmlSupport.h"

#include "source/utility/filesystem/DiskFileSystem.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/xml/XMLLimits.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>

namespace kst {
namespace {

struct MacroCase {
    const char* text;
    const char* result;
};

class XmlMacros : public testing::TestWithParam<MacroCase> {};

TEST_P(XmlMacros, expand_as_told) {
    EXPECT_EQ(parsed(std::string("<r>").append(GetParam().text).append("</r>")), GetParam().result) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Calls, XmlMacros,
    testing::Values(
        MacroCase{"<xdefine name=\"w\" value=\"64\"/><a size=\"@w\" b='@w' c=@w/>",
                  "r [@w=64 a size='64' b='@w' c='@w']"},
        MacroCase{"<xdefine name='m(a,ab)' value='$ab-$a'/>@m(1,2)", "r [@m$a$ab=$ab-$a \"2-1\"]"},
        MacroCase{"<xdefine name='half(v)' expression='$v/2'/>@half(3)", "r [@half$v~$v/2 \"1.500000\"]"},
        MacroCase{"<xdefine name='m(a,b)' value='$a$b'/>@m ignored ( 1 ,\t2 ,,)!", "r [@m$a$b=$a$b \"12!\"]"},
        MacroCase{"<xdefine name=' m ' value='x'/>@m@m@mm", "r [@m=x \"xx@mm\"]"},
        MacroCase{"<xdefine name='m' value='x'/>@mm @m", "r [@m=x \"@mm @m\"]"},
        MacroCase{"<xdefine name='m' value='1'/><a><xdefine name='m' value='2'/>@m</a>@m",
                  "r [@m=1 a [@m=2 \"2\"] \"1\"]"},
        MacroCase{"<a><xdefine name='m' value='2'/></a>@m", "r [a [@m=2] \"@m\"]"},
        MacroCase{"<xdefine name='m' value='1'/><xdefine name='n'>[@m]<b c=\"@m\"/></xdefine>@n",
                  "r [@m=1 @n=[1]<b c=\"1\"/> \"[1]\" b c='1']"},
        MacroCase{"<xdefine name='m' value='<b>&amp;</b>'/>x@m&lt;i/>", "r [@m=<b>&amp;</b> \"x\" b [\"&\"] i]"},
        MacroCase{"<xdefine name='e' value='\xC3\xA9'/>@e", "r [@e=\xC3\x83\xC2\xA9 \"\xC3\x83\xC2\xA9\"]"},
        MacroCase{"<xdefine name='a' value='@b'/><xdefine name='b' value='c'/>@a", "r [@a=@b @b=c \"c\"]"},
        MacroCase{"<xdefine name='m()' value='x'/>@m()", "r [@m=x \"x()\"]"}));

INSTANTIATE_TEST_SUITE_P(Errors, XmlMacros,
                         testing::Values(MacroCase{"<xdefine name='m(a,b)' value=''/>\n@m(1)",
                                                   "#internal_file (2): Wrong number of macro parameters to @m"},
                                         MacroCase{"<xdefine name='m(a)' value=''/>@m",
                                                   "#internal_file (1): Wrong number of macro parameters to @m"},
                                         MacroCase{"<xdefine name='m(a)' value=''/>@m)(",
                                                   "#internal_file (1): Wrong number of macro parameters to @m"},
                                         MacroCase{"<xdefine name='e' expression='1+ten'/>@e",
                                                   "#internal_file (1): Unknown identifier ten"}));

/// Takes so long as a test may, and fails with a message that begins like this.
void expect_stopped(const std::string& text, const std::string& message) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_THAT(parsed(text), testing::StartsWith(message));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

TEST(XmlBounds, end_macros_that_would_go_on_for_ever) {
    const std::string message = "#internal_file (2): Macro expansion exceeds 1677";
    for (const char* const endless : {
             "<xdefine name='m' value='@m'/>\n@m",
             "<xdefine name='m' value='x@m@m'/>\n@m",
             "<xdefine name='m(v)' value='[$v]'/>\n@m($v)",
             "<xdefine name='m(v)' value='@m($v$v)'/>\n@m(1)",
             "<xdefine name='m' value='@n'/><xdefine name='n' value='@m'/>\n@m",
             "<xdefine name='m' value='@n<b/>'/><xdefine name='n' value='@m<c/>'/>\n@m",
             "<xdefine name='m' value='<b a=\"@m\">@m'/>\n<c d=\"@m\"/>",
         })
        expect_stopped(std::string("<r>").append(endless).append("</r>"), message);
}

TEST(XmlBounds, end_exponential_growth) {
    std::string text = "<r><xdefine name='a0' value='lol'/>";
    for (int i = 1; i < 60; ++i) {
        const std::string before = std::string("@a").append(std::to_string(i - 1)).append(" ");
        text += "<xdefine name='a" + std::to_string(i) + "' value='" + before + before + "'/>";
    }
    expect_stopped(text + "\n@a59</r>", "#internal_file (1): Macro expansion exceeds ");
}

TEST(XmlSpeed, of_ten_thousand_calls_stays_linear) {
    std::string text = "<r><xdefine name='m(v)' value='[$v and $v]'/><xdefine name='w' value='64'/>";
    std::string calls;
    for (int i = 0; i < 10'000; ++i) {
        text += "<a b=\"@m(" + std::to_string(i) + ")\">@w</a>";
        calls += "@m(" + std::to_string(i) + ") ";
    }
    const auto begin = std::chrono::steady_clock::now();
    XMLDocument document;
    ASSERT_TRUE(document.parse_string(text + calls + "</r>"));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
    EXPECT_EQ(document.child(10'001)->parameter("b"), "[9999 and 9999]");
    EXPECT_TRUE(document.child(10'002)->text().ends_with(" [9999 and 9999] "));
}

/// A directory on the disk with files, mounted as the name space.
class XmlFiles : public testing::Test {
protected:
    XmlFiles() { names_.mount("/", &disk_, /*owned=*/false); }

    std::string path(const std::string& name) const { return (directory_.path() / name).string(); }
    void write(const std::string& name, const std::string& bytes) const {
        std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
        std::ofstream(path(name), std::ios::binary) << bytes;
    }
    std::string loaded(const std::string& name) const {
        XMLDocument document;
        try {
            const bool whole = document.load(path(name));
            return show(document) + (whole ? "" : "?");
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    }
    void compile(const std::string& name) const {
        XMLDocument document;
        document.load(path(name));
        Archive out = open(path(name) + ".bin", "w");
        document.write_compiled(out);
    }
    void set_age(const std::string& name, int hours) const {
        std::filesystem::last_write_time(path(name),
                                         std::filesystem::file_time_type::clock::now() - std::chrono::hours(hours));
    }

    test_support::TemporaryDirectory directory_;
    VirtualFileSystem names_;
    DiskFileSystem disk_;
};

TEST_F(XmlFiles, are_included_by_names_in_any_case_from_directories_around) {
    write("Sets/Deep/Main.xml",
          "<r><xi:include href='../COMMON.xml'/><xinclude:include href='../deep/Other.xml#xpointer(/o/ p)'/>"
          "<xi:include href='" +
              path("Sets/Common.xml") + "#/c/*/i'/></r>");
    write("Sets/Common.xml", "<c>text<a><i/></a><b><i x=1/><j/></b></c>");
    write("Sets/Deep/other.XML", "<o><p n=1/><q/><p n=2/></o>");
    EXPECT_EQ(loaded("Sets/Deep/Main.xml"), "r [a [i] b [i x='1' j] p n='1' p n='2' i i x='1']");
}

TEST_F(XmlFiles, that_are_missing_or_not_meant_add_nothing) {
    write("main.xml", "<r><xi:include href='none.xml'/><xi:include href='a.xml#/other/a'/>"
                      "<xi:include href='text.xml' parse='text'/><xi:include href='bad.xml'/></r>");
    write("a.xml", "<r><a/></r>");
    write("bad.xml", "<r>&unknown;</r>");
    XMLDocument document;
    EXPECT_TRUE(document.load(path("main.xml")));
    EXPECT_EQ(show(document), "r");
    EXPECT_EQ(document.included_files(),
              (std::set<std::string>{document.directory() + "none.xml", document.directory() + "a.xml",
                                     document.directory() + "bad.xml"}));
}

TEST_F(XmlFiles, share_their_macros) {
    write("main.xml", "<r><xdefine name='w' value='64'/><xi:include href='macros.xml'/><a size=\"@w @k\"/></r>");
    write("macros.xml", "<m><xdefine name='k' value='k@w'/><b c=\"@k\"/></m>");
    EXPECT_EQ(loaded("main.xml"), "r [@w=64 b c='k64' a size='64 k64']");
}

TEST_F(XmlFiles, in_a_circle_end_with_an_error) {
    write("a.xml", "<r><xi:include href='b.xml'/>\n<xi:include href='b.xml'/></r>");
    write("b.xml", "<r>\n<xi:include href='a.xml'/></r>");
    EXPECT_THAT(loaded("a.xml"), testing::EndsWith("a.xml (1): Includes nested deeper than 64"));
}

TEST_F(XmlFiles, that_multiply_end_with_an_error) {
    for (int i = 0; i < 30; ++i) {
        const std::string next = "<xi:include href='f" + std::to_string(i + 1) + ".xml'/>";
        write(std::string("f").append(std::to_string(i)).append(".xml"),
              std::string("<r>").append(next + next + next).append("</r>"));
    }
    write("f30.xml", "<r><a/></r>");
    EXPECT_THAT(loaded("f0.xml"), testing::HasSubstr("More than 10000 files included"));
}

TEST_F(XmlFiles, nest_no_deeper_together_than_alone) {
    std::string open, close;
    for (int i = 0; i < 1000; ++i) {
        open += "<a>";
        close += "</a>";
    }
    write("a.xml", open + "<xi:include href='b.xml'/>" + close);
    write("b.xml", open + close);
    EXPECT_THAT(loaded("a.xml"), testing::EndsWith("b.xml (1): Elements nested deeper than 1024"));
}

TEST_F(XmlFiles, are_read_from_the_compiled_form_while_that_is_current) {
    write("main.xml", "<r><xdefine name='m(v)' value='$v'/>\n<a b=\"@m(1)\">t</a><xi:include href='i.xml'/></r>");
    write("i.xml", "<i><x/></i>");
    compile("main.xml");
    set_age("main.xml.bin", 1);
    set_age("main.xml", 2);
    set_age("i.xml", 2);
    XMLDocument document;
    ASSERT_TRUE(document.load(path("main.xml")));
    EXPECT_EQ(show(document), "r [@m$v=$v a b='1' [\"t\"] x]");
    EXPECT_EQ(document.child(1)->line(), 0);
    EXPECT_EQ(document.child(1)->source_file(), path("main.xml"));

    write("i.xml", "<i><new/></i>");
    EXPECT_EQ(loaded("main.xml"), "r [@m$v=$v a b='1' [\"t\"] new]");
    set_age("i.xml", 2);
    EXPECT_EQ(loaded("main.xml"), "r [@m$v=$v a b='1' [\"t\"] x]");
    std::filesystem::remove(path("i.xml"));
    EXPECT_EQ(loaded("main.xml"), "r [@m$v=$v a b='1' [\"t\"] x]");
    write("main.xml", "<r/>");
    EXPECT_EQ(loaded("main.xml"), "r");
}

TEST_F(XmlFiles, are_not_hidden_by_a_damaged_compiled_form) {
    write("main.xml", "<r><a/></r>");
    set_age("main.xml", 2);
    write("main.xml.bin", std::string("XML\1\xFF\0\0\0", 8));
    EXPECT_EQ(loaded("main.xml"), "r [a]");
    write("main.xml.bin", "old format");
    EXPECT_EQ(loaded("main.xml"), "r [a]");
    std::filesystem::remove(path("main.xml"));
    EXPECT_EQ(loaded("main.xml"), "?");
    write("main.xml.bin", std::string("XML\1\xFF\0\0\0", 8));
    EXPECT_THAT(loaded("main.xml"),
                testing::EndsWith("main.xml.bin: damaged compiled form, too many strings at byte 8"));
}

TEST_F(XmlFiles, can_write_their_compiled_form_when_parsed) {
    write("main.xml", "<r><a/></r>");
    xml_switches().write_compiled_form = true;
    EXPECT_EQ(loaded("main.xml"), "r [a]");
    xml_switches().write_compiled_form = false;
    std::filesystem::remove(path("main.xml"));
    EXPECT_EQ(loaded("main.xml"), "r [a]");
}

} // namespace
} // namespace kst
