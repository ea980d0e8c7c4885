#include "tests/utility/XmlSupport.h"

#include <gtest/gtest.h>

namespace kst {
namespace {

struct ParseCase {
    const char* text;
    const char* result;
};

const char* const end_of_file = "Archive::checked_read() Attempt to read past end of archive '#internal_file'";

class XmlDialect : public testing::TestWithParam<ParseCase> {};

TEST_P(XmlDialect, is_read_as_told) {
    EXPECT_EQ(parsed(GetParam().text), GetParam().result) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(Parameters, XmlDialect,
                         testing::Values(ParseCase{"<a b=1/>", "a b='1'"}, ParseCase{"<a b/>", "a b=''"},
                                         ParseCase{"<a b = 'x' c\n=\n\"y\" d>\n</a>", "a b='x' c='y' d=''"},
                                         ParseCase{"<a b=\"1\" c=3 b=\"2\"/>", "a b='2' c='3'"},
                                         ParseCase{"<a b='&lt;'/>", "a b='&lt;'"},
                                         ParseCase{"<a b=\"&lt;&amp;\"/>", "a b='<&'"},
                                         ParseCase{"<a b=x&y;'\" c=2>t</a>", "a b='x&y;'\"' c='2' [\"t\"]"},
                                         ParseCase{"<a b=\"x<!-- y -->z\"/>", "a b='xz'"},
                                         ParseCase{"<a b<!-- - -- ->-->c='1'<!--->-->/>", "a bc='1'"},
                                         ParseCase{"<a b=\"x\r\ny\rz\"/>", "a b='x\ny\nz'"},
                                         ParseCase{"<a b=\"1\"c='2'/>", "a b='1' c='2'"}));

INSTANTIATE_TEST_SUITE_P(Content, XmlDialect,
                         testing::Values(ParseCase{"<a>x<!-- y -->z</a>", "a [\"xz\"]"},
                                         ParseCase{"<a><!--1--><!--2---->x</a>", "a [\"x\"]"},
                                         ParseCase{"<a><![CDATA[<b>]]>tail</a>", "a [\"<b>tail\"]"},
                                         ParseCase{"<a>x<![CDATA[]]]&lt;<!--c-->]]><![CDATA[]]> </a>",
                                                   "a [\"x]]]&lt; \"]"},
                                         ParseCase{"<a>  </a>", "a"}, ParseCase{"<a> \t\f\r\n</a>", "a"},
                                         ParseCase{"<a>  x  </a>", "a [\"  x  \"]"},
                                         ParseCase{"<a>1<b/>2<c>3</c ></a>", "a [\"1\" b \"2\" c [\"3\"]]"},
                                         ParseCase{"<a>&nosuch;</a>", "a [\"&nosuch;\"]?"},
                                         ParseCase{"<a>&#65;&quot;&apos;&gt;</a>", "a [\"&#65;\"'>\"]?"},
                                         ParseCase{"<a/>trailing<b>", "a"}));

INSTANTIATE_TEST_SUITE_P(Prologue, XmlDialect,
                         testing::Values(ParseCase{"\xEF\xBB\xBF<?xml encoding=\"foo\"?><a/>", "a"},
                                         ParseCase{"<?XML version=1.0 encoding='UTF-8' standalone?> <!DOCTYPE a>\n<a/>",
                                                   "a"},
                                         ParseCase{"<?xml?x?>\n<!-- c --><a/>", "a"},
                                         ParseCase{"\xEF\xBB\xBF<a>\xC3\xA9</a>", "a [\"\xC3\xA9\"]"},
                                         ParseCase{"<a>\xE9</a>", "a [\"\xC3\xA9\"]"},
                                         ParseCase{"<?xml encoding='UTF-8'?><a>\xC3\xA9</a>", "a [\"\xC3\xA9\"]"}));

INSTANTIATE_TEST_SUITE_P(
    Errors, XmlDialect,
    testing::Values(ParseCase{"<a", "Archive #internal_file empty"},
                    ParseCase{"<a></b>", "#internal_file (1): Identifiers must match"},
                    ParseCase{"<a>\n<b>\r\n\r</c></a>", "#internal_file (4): Identifiers must match"},
                    ParseCase{"<a></a\n\nx>", "#internal_file (3): Expected >"},
                    ParseCase{"< a>", "#internal_file (1): Expected identifier"},
                    ParseCase{"<a b=\"1\" 2/>", "#internal_file (1): Expected identifier"},
                    ParseCase{"<a / >", "#internal_file (1): Expected >"},
                    ParseCase{"<?php?><a/>", "#internal_file (1): Expected identifier"},
                    ParseCase{"<!x><!y><a/>", "#internal_file (1): Expected identifier"},
                    ParseCase{"\n\nabc", "#internal_file (3): Expected <"},
                    ParseCase{"<?xml 1?><a/>", "#internal_file (1): Expected > or identifier"},
                    ParseCase{"<?xml encoding=latin1 ?><a/>", "#internal_file (1): Encoding latin1 not valid"},
                    ParseCase{"<a>truncated", end_of_file}, ParseCase{"<a b='1\n", end_of_file},
                    ParseCase{"<a>\n<b/>\r", end_of_file}));

TEST(XmlErrors, of_a_zero_byte_name_what_was_open) {
    using namespace std::string_view_literals;
    EXPECT_EQ(parsed("<a>x\0</a>"sv), "#internal_file (1): Unexpected end of file");
    EXPECT_EQ(parsed("<a b='\n\0'/>"sv), "#internal_file (2): Unexpected end of file");
    EXPECT_EQ(parsed("<a><!-- \0 --></a>"sv), "#internal_file (1): XML parser: expected -->");
    EXPECT_EQ(parsed("<?xml a=\"\0\"?>"sv), "#internal_file (1):  Unmatched \"");
    EXPECT_EQ(parsed("<?xml a='\0'?>"sv), "#internal_file (1):  Unmatched '");
    EXPECT_EQ(parsed("<?xml ?\0?>"sv), "#internal_file (1): Unexpected end of file");
    EXPECT_EQ(parsed("\n   \0"sv), "#internal_file (2): Unexpected end of file");
    EXPECT_EQ(parsed("<a\0\0>"sv), "#internal_file (1): Unexpected end of file");
    EXPECT_EQ(parsed("\0\0\0\0"sv), "Error in archive #internal_file");
    EXPECT_EQ(parsed("\x4C\x6F\xA7\x94"sv), "Error in archive #internal_file EBCDIC not supported");
}

TEST(XmlLines, are_those_of_the_opening_bracket_and_of_the_start_of_the_text) {
    EXPECT_EQ(parsed("<?xml?>\n<a\nb='1\n2'>\n\nx<b/>\r\n<c\n/>\r\r<d></d></a>", true),
              "a:2 b='1\n2' [\"\n\nx\":4 b:6 c:7 d:10]");
}

TEST(XmlLines, of_wide_characters_count_too_but_not_in_32_bits) {
    const auto widened = [](std::string_view text, unsigned width, bool big) {
        std::string out;
        for (const char c : text) {
            std::string unit(width, '\0');
            unit[big ? width - 1 : 0] = c;
            out += unit;
        }
        return out;
    };
    const std::string_view text = "<a>\r\n<b/>\r<c/>\n</d>";
    for (const bool big : {false, true}) {
        EXPECT_EQ(parsed(widened(text, 2, big)), "#internal_file (4): Identifiers must match");
        EXPECT_EQ(parsed(widened(text, 4, big)), "#internal_file (1): Identifiers must match");
        EXPECT_EQ(parsed(widened("<a b=\"1\">x</a>", 2, big)), "a b='1' [\"x\"]");
    }
    EXPECT_EQ(parsed(std::string("\xFF\xFE<\0a\0>\0\x3D\xD8\x00\xDE<\0/\0a\0>\0", 20)), "a [\"\xF0\x9F\x98\x80\"]");
}

TEST(XmlDocument, keeps_the_complete_children_of_the_root_after_an_error) {
    XMLDocument document;
    EXPECT_THROW(document.parse_string("<a p=1><b/>text<c><d/></a>"), std::runtime_error);
    EXPECT_EQ(show(document), "a p='1' [b \"text\"]");
    EXPECT_TRUE(document.parse_string("<again/>"));
    EXPECT_EQ(show(document), "again");
}

TEST(XmlDocument, of_no_bytes_is_false) {
    XMLDocument document;
    EXPECT_FALSE(document.parse_string(""));
    EXPECT_EQ(document.type(), XML_NONE);
}

TEST(XmlDocument, finds_repeated_names_among_many_parameters) {
    std::string text = "<a";
    for (int i = 0; i < 3000; ++i)
        text += " p" + std::to_string(i) + "=" + std::to_string(i);
    text += " p7=again p2999='last'/>";
    XMLDocument document;
    ASSERT_TRUE(document.parse_string(text));
    EXPECT_EQ(document.parameters().size(), 3000u);
    EXPECT_EQ(document.parameter("p7"), "again");
    EXPECT_EQ(document.parameter("p2999"), "last");
    EXPECT_EQ(document.parameters()[8].value(), "8");
}

TEST(XmlDocument, refuses_to_nest_without_end) {
    const auto nested = [](std::size_t depth) {
        std::string text;
        for (std::size_t i = 0; i < depth; ++i)
            text += "<a>\n";
        for (std::size_t i = 0; i < depth; ++i)
            text += "</a>";
        return text;
    };
    XMLDocument document;
    EXPECT_TRUE(document.parse_string(nested(1024)));
    EXPECT_EQ(parsed(nested(1025)), "#internal_file (1025): Elements nested deeper than 1024");
    EXPECT_EQ(parsed(nested(1'000'000)), "#internal_file (1025): Elements nested deeper than 1024");
}

} // namespace
} // namespace kst
