#include "tests/script/LanguageSupport.h"

#include <gtest/gtest.h>

using namespace test_support;

namespace {

struct CodeCase {
    const char* source;
    Bytes code;
};

std::string objects(int count) {
    std::string list = "object a0";
    for (int i = 1; i < count; ++i)
        list += ", a" + std::to_string(i);
    return list + ";";
}

} // namespace

TEST(LanguageCode, is_generated_byte_for_byte) {
    const CodeCase cases[] = {
        {"", {0}},
        {"import m.sin, abcd, abcde;", {1, 'm', '.', 's', 'i', 'n', 0, 1, 'a', 'b', 'c', 'd', 0, //
                                        1, 'a', 'b', 'c', 'd', 'e', 0, 0}},
        // A function without parameters and locals: declaration 10 bytes, return, then its code at 11.
        {"f(){}", {3, 11, 0, 0, 0, 'f', 0, 0, 0, 0, 0, 39, 0, 10, 0}},
        {"f(){ { } }", {3, 11, 0, 0, 0, 'f', 0, 0, 0, 0, 0, 39, 0, 10, 0}},
        // A return branches past the push of void.
        {"f(){ return 2; }", {3, 11, 0, 0, 0, 'f', 0, 0, 0, 0, 0, 39, 0, 6, 0, 0, 0, 64, 41, 24, 0, 0, 0, 10, 0}},
        // g is used ahead of its definition; a function is no place to store to.
        {"f(){ g := ''; } g(){}", {3,  21, 0,  0, 0, 'f', 0, 0, 0, 0, 3, 35, 0,  0, 0, 'g', 0, 0, 0, 0, 0, //
                                   39, 0,  12, 1, 0, 7,   0, 0, 0, 0, 0, 40, 10, 0,                        //
                                   39, 0,  10, 0}},
        // Class: begin, object, method, end. The method: member references, this, conversions.
        {"object g; class C { object m; f(a){ m := this.n; a.number := g; } }",
         {2, 'g', 0,  0, 0,  0, 4,  'C', 0,  0,  0,   0, 2, 'm', 0, 0,  0,  0,  3, 30, 0,  0, 0, 'f', 0,  0, 0,  0,
          5, 0,   39, 1, 39, 1, 15, 0,   11, 44, 'n', 0, 0, 0,   0, 47, 40, 16, 0, 18, 12, 0, 0, 40,  39, 1, 10, 0}},
        // An inner block leaves room for what is declared behind it; the frame shrinks again at its end.
        {"f(a){ { object b; b := 1; } object c := true; }",
         {3,  11, 0, 0, 0, 'f', 0,  0,  0,  0, 0,  39, 1, 39, 1,  39, 2,  39, 3,
          17, 2,  6, 0, 0, 128, 63, 40, 39, 2, 17, 1,  8, 40, 39, 1,  10, 0}},
        // Offsets: the test at 15, the body at 27, behind the loop 37. A block without locals leaves the frame alone.
        {"f(a){ while (a) { a(); } }", {3, 11, 0,  0, 0, 'f', 0,  0, 0,  0, 0,  39, 1,  39, 1, 16, 0,  43, 37, 0, 0,
                                        0, 41, 27, 0, 0, 0,   16, 0, 45, 0, 21, 41, 15, 0,  0, 0,  39, 1,  10, 0}},
    };
    for (const CodeCase& c : cases) {
        const Compiled compiled = compile(c.source);
        EXPECT_EQ(compiled.errors, "") << c.source;
        EXPECT_EQ(compiled.code, c.code) << c.source;
    }
}

TEST(LanguageCode, line_table_names_the_line_of_each_first_byte) {
    const Compiled compiled = compile("f(a)\n{\n  a :=\n    1;\n}");
    // resize, resize; &a, 1, assign; resize, void, return: what follows a token has its line.
    const std::vector<std::int32_t> body = {1, -1, 1, -1, 3, -1, 4, -1, -1, -1, -1, 4, 4, -1, 4, 4};
    ASSERT_EQ(compiled.lines.size(), 11 + body.size());
    EXPECT_EQ(compiled.lines[0], 0);
    EXPECT_EQ(compiled.lines[9], -1);
    EXPECT_EQ(compiled.lines[10], 0);
    EXPECT_EQ(std::vector<std::int32_t>(compiled.lines.begin() + 11, compiled.lines.end()), body);
}

TEST(LanguageCode, operands_that_do_not_fit_are_errors) {
    const std::string long_name(255, 'n');
    EXPECT_EQ(compile("f(){" + objects(255) + "a254 := 1; }").errors, "");
    EXPECT_EQ(compile("f(){\n" + objects(256) + "}").errors, "a.kvs(1): More than 256 local variables not supported");
    EXPECT_EQ(compile("class C {" + objects(256) + "f(){ a255 := 1; } }").errors, "");
    EXPECT_EQ(compile("class C {" + objects(257) + "f(){ a256 := 1; } }").errors,
              "a.kvs(1): More than 256 class members not supported");
    EXPECT_EQ(compile(objects(65536) + "f(){ a65535 := 1; }").errors, "");
    EXPECT_EQ(compile(objects(65537) + "f(){ a65536 := 1; }").errors,
              "a.kvs(1): More than 65536 local variables not supported");
    EXPECT_EQ(compile("f(a){ a(" + repeated("1,", 254) + "1); }").errors, "");
    EXPECT_EQ(compile("f(a){ a(" + repeated("1,", 255) + "1); }").errors,
              "a.kvs(1): More than 256 parameters not supported");
    EXPECT_EQ(compile("f(a){ a." + long_name.substr(1) + "; }").errors, "");
    EXPECT_EQ(compile("f(a){\na." + long_name + "; }").errors,
              "a.kvs(2): More than 254 characters in a name not supported");
    EXPECT_EQ(compile(long_name + "(){}").errors, "a.kvs: More than 254 characters in a name not supported");
    EXPECT_EQ(compile("f(a){ a := '" + long_name + "'; }").errors, "") << "strings are free";
}

TEST(LanguageCode, numbers_are_single_precision) {
    const auto bytes_of = [](const std::string& number) {
        const Bytes code = compile("f(){ return " + number + "; }").code;
        return Bytes(code.begin() + 14, code.begin() + 18);
    };
    EXPECT_EQ(bytes_of("0.1"), (Bytes{0xCD, 0xCC, 0xCC, 0x3D}));
    EXPECT_EQ(bytes_of("16777217"), (Bytes{0, 0, 0x80, 0x4B})) << "2^24 + 1 goes to even";
    EXPECT_EQ(bytes_of(repeated("9", 60)), (Bytes{0, 0, 0x80, 0x7F}));
    EXPECT_EQ(bytes_of("0." + repeated("0", 60) + "1"), (Bytes{0, 0, 0, 0}));
}
