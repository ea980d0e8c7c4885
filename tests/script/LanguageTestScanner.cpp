#include "script/language/StreamScanner.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

using namespace kst::script;

namespace {

/// Each token as LINE:COLUMN and its text in brackets, an error as its message in braces.
std::string tokens_of(const std::string& source) {
    std::istringstream stream(source);
    StreamScanner scanner(stream, "a.kvs");
    std::string all;
    for (Token token;;) {
        try {
            scanner.next_token(token);
        } catch (const ScannerError& error) {
            all += "{" + std::string(error.what()) + "}";
            continue;
        }
        if (token.type == TokenType::end)
            return all;
        all += std::to_string(token.line) + ":" + std::to_string(token.column) + "[" + token.text + "]";
    }
}

struct ScannerCase {
    const char* source;
    const char* tokens;
};

} // namespace

TEST(LanguageScanner, cuts_and_places_tokens) {
    const ScannerCase cases[] = {
        {"", ""},
        {"ab_1 _x", "1:0[ab_1]1:5[_x]"},
        {"a\n  b", "1:0[a]2:2[b]"},
        {"a\r\n b\n\r c", "1:0[a]2:1[b]3:1[c]"},
        {"a\rb", "1:0[a]{Unrecognized token}1:2[b]"},
        {"1. .5 12.25 1.2.3", "1:0[1.]1:3[.]1:4[5]1:6[12.25]1:12[1.2]1:15[.]1:16[3]"},
        {":= : <= < <> > >= =", "1:0[:=]1:3[:]1:5[<=]1:8[<]1:10[<>]1:13[>]1:15[>=]1:18[=]"},
        {"a/b//c\n/d", "1:0[a]1:1[/]1:2[b]2:0[/]2:1[d]"},
        {"/* /* */ */a", "1:11[a]"},
        {"/**/a/*/*/*/*/", "1:4[a]{Unexpected end of file - */ expected}"},
        {"a//", "1:0[a]"},
        {R"("a\"\\\n\r\t'" 'b\'"')", "1:0[a\"\\\n\r\t']1:15[b'\"]"},
        {R"("\'x)", R"({Unrecognized escape sequence "\'"}1:3[x])"},
        {R"('\"x)", R"({Unrecognized escape sequence "\""}1:3[x])"},
        {"\"a\nb", "{Can't have strings over multiple lines \" expected}2:0[b]"},
        {"'a\nb", "{Can't have strings over multiple lines \" expected}2:0[b]"},
        {"'a", "{Unexpected end of file - \" expected}"},
        {"\"a\\", "{Unexpected end of file - \" expected}"},
        {"\"\" ''", "1:0[]1:3[]"},
        {"\"\"\"a\"b\"\"\\n\n\"\"\"x", "1:0[a\"b\"\"\\n\n]2:3[x]"},
        {"\"\"\"\"\"\"x", "1:0[]1:6[x]"},
        {"\"\"\"a\"\"", "{Unexpected end of file - \"\"\" expected}"},
        {"a$\x80", "1:0[a]{Unrecognized token}{Unrecognized token}"},
    };
    for (const ScannerCase& c : cases)
        EXPECT_EQ(tokens_of(c.source), c.tokens) << c.source;
    EXPECT_EQ(tokens_of(std::string("a\0b", 3)), "1:0[a]") << "a zero byte ends the text";
}

TEST(LanguageScanner, only_whole_words_are_keywords) {
    std::istringstream stream("void voids true In");
    StreamScanner scanner(stream, "a.kvs");
    Token token;
    for (const TokenType type : {TokenType::void_, TokenType::identifier, TokenType::boolean_constant,
                                 TokenType::identifier, TokenType::end}) {
        scanner.next_token(token);
        EXPECT_EQ(token.type, type) << token.text;
    }
}
