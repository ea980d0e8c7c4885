#include "tests/script/LanguageSupport.h"

#include <gtest/gtest.h>

using namespace test_support;

namespace {

struct ErrorCase {
    const char* source;
    const char* errors;
};

struct ListingCase {
    const char* source;
    const char* listing;
};

/// The listing of a function "f(a, b) { BODY }" without its head and its end.
std::string body_listing(const std::string& body) {
    const Compiled compiled = compile("f(a, b) {" + body + "}");
    EXPECT_EQ(compiled.errors, "") << body;
    const std::string head = "\tresize_parameters\t2\n\tresize_local\t2\n\tresize_local\t2\n";
    const std::string end = "\tresize_local\t2\n\tpush\tvoid\n\treturn\n";
    EXPECT_EQ(compiled.listing.substr(0, head.size()), head);
    return compiled.listing.substr(head.size(), compiled.listing.size() - head.size() - end.size());
}

} // namespace

TEST(LanguageParser, reports_every_error_and_goes_on) {
    const ErrorCase cases[] = {
        {";", "a.kvs(1):syntax error\na.kvs(1):Unexpected token"},
        {"\n; ;\n;", "a.kvs(2):syntax error\na.kvs(2):Unexpected token\na.kvs(3):Unexpected token"},
        {"import ;\nimport a.b, a.b;\nimport c.b;",
         "a.kvs(1):syntax error\na.kvs(1):Import error, undefined error in ID list\n"
         "a.kvs(2):Identifier already imported\na.kvs(3):Identifier already imported"},
        {"f(){}\nf(){}", "a.kvs(2):Identifier f already declared"},
        {"object f;\nclass f{}", "a.kvs(2):Identifier f already declared (class)"},
        {"f(a, b, a){}", "a.kvs(1):Can't name two parameters the same"},
        {"class {", "a.kvs(1):syntax error\na.kvs(1):Undefined error while definine class\na.kvs(1):Unexpected token"},
        {"class C { f(){}\n+\n- } f(){} f(){}",
         "a.kvs(2):syntax error\na.kvs(2):Undefined error while definine class body\n"
         "a.kvs(3):Undefined error while definine class body\na.kvs(3):Identifier f already declared"},
        {"f()\n+ + { } f(){}", "a.kvs(2):syntax error\na.kvs(2):Expected \"{\"\na.kvs(2):Unexpected token"},
        {"f + 1 } f(){} f(){}", "a.kvs(1):syntax error\na.kvs(1):Identifier f already declared"},
        {"object 1 2 3;\nobject a, a;",
         "a.kvs(1):syntax error\na.kvs(1):Error declaring objects\na.kvs(2):Can't name two objects the same \"a\""},
        {"object a := 1;", "a.kvs(1):Global objects cannot have initializers."},
        {"class C { object a := 1; }", "a.kvs(1):Class objects cannot have initializers."},
        {"f(){ ) }", "a.kvs(1):syntax error\na.kvs(1):Non valid statement (token:))"},
        {"f(){ while x }", "a.kvs(1):syntax error\na.kvs(1):while: Expected \"( <test expression> )\"\n"
                           "a.kvs(1):Non valid statement (token:})"},
        {"f(){ for + }", "a.kvs(1):syntax error\na.kvs(1):for: Expected (<id> in <expr>)\n"
                         "a.kvs(1):Non valid statement (token:+)"},
        {"f(){ for (k, k in 1) {} }", "a.kvs(1):Variable name in for must be unique: \"k\""},
        {"f(){ if 1; }",
         "a.kvs(1):syntax error\na.kvs(1):if: error in statement\na.kvs(1):Non valid statement (token:1)"},
        {"f(){ if (1) {} else if + }",
         "a.kvs(1):syntax error\na.kvs(1):if: error in statement\na.kvs(1):Non valid statement (token:+)"},
        {"f(){ if (+) {} }", "a.kvs(1):syntax error\na.kvs(1):Not a valid test expression"},
        {"f(){ object x := this; }", "a.kvs(1):\"this\" can only be used from within a class"},
        {"f(a){ a.+ }",
         "a.kvs(1):syntax error\na.kvs(1):Expected ID as member reference\na.kvs(1):Non valid statement (token:+)"},
        {"f(a){ a := a = a = a; }", "a.kvs(1):syntax error\na.kvs(1):Non valid statement (token:=)"},
        {"f(a){ a := 'x", "a.kvs(1):Unexpected end of file - \" expected\na.kvs(1):syntax error\n"
                          "a.kvs(1):Non valid statement (token:)"},
        // A scope that an error leaves open is closed: x is free again, and a method's end is not the class's.
        {"f(){ object x; { object x; for (y in +) {} } object x; }",
         "a.kvs(1):syntax error\na.kvs(1):for: Expected (<id> in <expr>)\n"
         "a.kvs(1):Non valid statement (token:+)\na.kvs(1):Non valid statement (token:))\n"
         "a.kvs(1):Can't name two objects the same \"x\""},
        // What only shows when code is generated.
        {"f(){\n  x;\n}", "a.kvs(2): Id not found \"x\""},
        {"f(){ { object x; }\n x := 1; }", "a.kvs(2): Id not found \"x\""},
        {"class C { object m; }\nf(){ m(); }", "a.kvs(2): Id not found \"m\""},
    };
    for (const ErrorCase& c : cases)
        EXPECT_EQ(compile(c.source).errors, c.errors) << c.source;
}

TEST(LanguageParser, long_lists_take_no_stack_and_nesting_does) {
    EXPECT_EQ(compile("f(a){" + repeated("a := 1;", 2000) + "}").errors, "");
    EXPECT_EQ(compile("f(a){ if (a) {}" + repeated("else if (a) {}", 2000) + "}").errors, "");
    EXPECT_EQ(compile(repeated("object a; ", 1) + "f(a){" + repeated("{ object b; } ", 2000) + "}").errors, "");
    EXPECT_EQ(compile("f(a){ a := " + repeated("a + ", 2000) + "a; }").errors, "");
    EXPECT_EQ(compile("f(a){ a := " + repeated("(", 480) + "1" + repeated(")", 480) + "; }").errors, "");
    EXPECT_EQ(compile("f(a){ a := " + repeated("(", 500) + "1" + repeated(")", 500) + "; }").errors,
              "a.kvs(1):parser stack overflow");
}

TEST(LanguageParser, appends_instructions_for_each_construct) {
    const ListingCase cases[] = {
        {"a;", "\tpush\t&a\t;&local[0]\n\tpop\n"},
        {"a := b;", "\tpush\t&a\t;&local[0]\n\tpush\tb\t;local[1]\n\tassign\n"},
        {"a.m(1, b).string := void;",
         "\tpush\ta\t;local[0]\n\tmember\t\"m\"\n\tpush\t1\n\tparam\n\tpush\tb\t;local[1]\n"
         "\tparam\n\tcall\t2\n\tcnv_string\n\tpush\tvoid\n\tassign\n"},
        {"a := -b.x % 0.5;", "\tpush\t&a\t;&local[0]\n\tpush\tb\t;local[1]\n\tmember\t\"x\"\n\tderef\n\tnegate\n"
                             "\tpush\t0.5\n\tmod\n\tassign\n"},
        {"a := 1 - 2 - 3 * 4;",
         "\tpush\t&a\t;&local[0]\n\tpush\t1\n\tpush\t2\n\tsub\n\tpush\t3\n\tpush\t4\n\tmul\n\tsub\n"
         "\tassign\n"},
        {"if (a or b) { ; }", "\tpush\ta\t;local[0]\n\tbrifn\t6\n\tbra\t9\n"                         // 3
                              "\tpush\tb\t;local[1]\n\tbrifn\t11\n\tbra\t9\n"                        // 6
                              "\tresize_local\t2\n\tresize_local\t2\n"},                             // 9
        {"a := not a and b;", "\tpush\t&a\t;&local[0]\n\tpush\ta\t;local[0]\n\tbrif\t12\n\tbra\t7\n" // 3
                              "\tpush\tb\t;local[1]\n\tbrifn\t12\n\tbra\t10\n"                       // 7
                              "push true\n\tbra\t13\npush false\n\tassign\n"},                       // 10
        {"while (a < 1) { a(); }", "\tpush\ta\t;local[0]\n\tpush\t1\n\tlt\n\tbrifn\t14\n\tbra\t8\n"  // 3
                                   "\tresize_local\t2\n\tpush\ta\t;local[0]\n\tcall\t0\n\tpop\n\tresize_local\t2\n"
                                   "\tbra\t3\n"},
        {"if (a) { return 1; } else { return; }",
         "\tpush\ta\t;local[0]\n\tbrifn\t11\n\tbra\t6\n"                           // 3
         "\tresize_local\t2\n\tpush\t1\n\tbra\t17\n\tresize_local\t2\n\tbra\t15\n" // 6
         "\tresize_local\t2\n\tpush\tvoid\n\tbra\t17\n\tresize_local\t2\n"},       // 11; 15 resize, 16 void, 17 return
        {"for (x in b) { }",
         "\tresize_local\t5\n\tpush\t&x::list\t;&local[3]\n\tpush\tb\t;local[1]\n\tassign\n"                      // 3
         "\tpush\t&x::iter\t;&local[4]\n\tpush\tx::list\t;local[3]\n\tmember\t\"iterator\"\n\tcall\t0\n\tderef\n" // 7
         "\tassign\n\tpush\t&x\t;&local[2]\n\tpush\tx::iter\t;local[4]\n\tmember\t\"next\"\n\tcall\t0\n\tderef\n" // 12
         "\tassign\n\tpush\tx\t;local[2]\n\tpush\tvoid\n\teq\n\tbrif\t26\n"                                       // 18
         "\tresize_local\t5\n\tresize_local\t5\n\tbra\t13\n\tresize_local\t2\n"},                                 // 23
    };
    for (const ListingCase& c : cases)
        EXPECT_EQ(body_listing(c.source), c.listing) << c.source;
}

TEST(LanguageParser, lists_where_each_name_was_found) {
    EXPECT_EQ(compile("import x.sin; object g; class C { object m; f() { m := sin; g := f; m; q; } }").listing,
              "\tresize_parameters\t0\n\tresize_local\t0\n\tresize_local\t0\n"
              "\tpush\t&m\t;&class[0]\n\tpush\tsin\t;global[0]\n\tassign\n"
              "\tpush\t&g\t;&global[1]\n\tpush\tf\t;class[1]\n\tassign\n"
              "\tpush\t&m\t;&class[0]\n\tpop\n\tpush\t&q\t;error:q not found\n\tpop\n"
              "\tresize_local\t0\n\tpush\tvoid\n\treturn\n");
}
