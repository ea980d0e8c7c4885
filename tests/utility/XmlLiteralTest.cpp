#include "tests/utility/XmlLiteralParser.h"
#include "tests/utility/XmlSupport.h"

#include "source/utility/MemoryDataStore.h"

#include <gtest/gtest.h>

#include <random>

namespace kst {
namespace {

std::string literally_parsed(std::string_view bytes) {
    try {
        const Archive archive("#internal_file", std::make_unique<ConstMemoryDataStore>(bytes.data(), bytes.size()), 0,
                              static_cast<std::int64_t>(bytes.size()), false);
        return literal::Parser::parse(bytes, static_cast<int>(detect_xml_encoding(archive)));
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

/// Pieces that meet in every order: what the lanes stop at, what they run over, and what only looks like markup.
const std::array<std::string_view, 73> pieces{"<a>",
                                              "</a>",
                                              "<b",
                                              "/>",
                                              ">",
                                              "<",
                                              "</b>",
                                              "<c d=\"",
                                              "\"",
                                              "'",
                                              "=",
                                              " ",
                                              "\n",
                                              "\r",
                                              "\r\n",
                                              "\t",
                                              "\f",
                                              "/",
                                              "e='",
                                              "x",
                                              "text",
                                              "long_name:with_9",
                                              "&lt;",
                                              "&gt;",
                                              "&amp;",
                                              "&nosuch;",
                                              "&",
                                              ";",
                                              "<!--",
                                              "-->",
                                              "-",
                                              "->",
                                              "--",
                                              "!",
                                              "<!",
                                              "<![CDATA[",
                                              "]]>",
                                              "]",
                                              "?",
                                              "<?",
                                              "\xC3\xA9",
                                              "\xE2\x82\xAC",
                                              "\xF0\x9F\x98\x80",
                                              "\xC0\x8D",
                                              "\x80",
                                              "\xFF",
                                              "@",
                                              "@m",
                                              "@mm",
                                              "@m(",
                                              "@f(1,2)",
                                              "@f(",
                                              ",",
                                              ")",
                                              "(",
                                              "$v",
                                              "@e(3)",
                                              "<xdefine name=\"m\" value=\"v\"/>",
                                              "<xdefine name='f(a, ab)' value='[$ab-$a]'/>",
                                              "<xdefine name='m' value='<i/>'/>",
                                              "<xdefine name='e(v)' expression='$v/2'/>",
                                              "<xdefine name='n'>@m</xdefine>",
                                              "@n",
                                              "<xdefine name=\"",
                                              "</xdefine>",
                                              "<xdefine name='mm'>",
                                              "2",
                                              "9",
                                              "<a b=\"1\" c='2' d=3>",
                                              "</a ><a>",
                                              "<a/>",
                                              "\n<a\n>\n",
                                              "</a\n>"};

std::string random_document(std::mt19937& random) {
    std::string text = random() % 4 == 0 ? "<?xml version='1.0' encoding='UTF-8'?>" : "";
    text += random() % 8 == 0 ? "" : "<a>";
    int open = 1;
    for (auto left = random() % 30; left > 0; --left) {
        const std::string_view piece = pieces[random() % pieces.size()];
        text += piece;
        open += piece == "<a>" ? 1 : piece == "</a>" ? -1 : 0;
    }
    // Most documents are given a chance to end well.
    for (; open > 0 && random() % 16 != 0; --open)
        text += "</a>";
    return text;
}

std::string encoded(std::string_view ascii, int encoding) {
    if (encoding < 2)
        return std::string(ascii);
    std::string out;
    for (const char c : ascii) {
        std::string unit(encoding < 4 ? 2 : 4, '\0');
        unit[encoding % 2 == 0 ? 0 : unit.size() - 1] = c;
        out += unit;
    }
    return out;
}

/// Texts of at least one byte: an empty archive is no document.
void expect_same(const std::string& text) {
    if (text.empty())
        return;
    const std::string literal = literally_parsed(text);
    const std::string product = parsed(text, /*lines=*/true);
    const bool endless = literal == "endless" || product.find("Macro expansion exceeds") != std::string::npos;
    if (!endless) {
        ASSERT_EQ(product, literal) << testing::PrintToString(text);
    }
}

TEST(XmlParser, equals_the_literal_one_on_random_documents_in_all_encodings) {
    std::mt19937 random(1);
    for (int i = 0; i < 10'000; ++i) {
        const std::string text = random_document(random);
        expect_same(encoded(text, static_cast<int>(random() % 10)));
        if (HasFatalFailure())
            return;
    }
}

TEST(XmlParser, equals_the_literal_one_on_all_prefixes_and_flips) {
    const std::string text =
        "<?xml encoding='UTF-8'?>\r\n<!DOCTYPE x><a b=\"1&lt;\" c='2' d=3 e>\n<!-- c --><xdefine name='m' "
        "value='q'/>t\xC3\xA9@m<![CDATA[<x>]]>\r</a\n>";
    for (std::size_t i = 0; i < text.size(); ++i) {
        expect_same(text.substr(0, i + 1));
        for (const unsigned flip : {0x01u, 0x10u, 0x20u, 0x80u, 0xFFu}) {
            std::string flipped = text;
            flipped[i] = static_cast<char>(static_cast<unsigned char>(flipped[i]) ^ flip);
            expect_same(flipped);
        }
    }
}

TEST(XmlParser, equals_the_literal_one_across_the_ends_of_blocks) {
    const std::string unit = "<b c=\"d\xC3\xA9&lt;\" e='f'>\r\ntext<!-- x --><![CDATA[<]]>&amp;</b>\n";
    // Shifted a byte at a time, every construct meets the end of the first block.
    for (std::size_t shift = 0; shift < unit.size(); ++shift) {
        std::string text = "<?xml encoding='UTF-8'?><a>" + std::string(shift, '.');
        while (text.size() < 70'000)
            text += unit;
        expect_same(text + "</a>");
    }
}

} // namespace
} // namespace kst
