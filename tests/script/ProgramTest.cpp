// Programs from source text to result: parsed, generated, verified, loaded and called.

#include "tests/script/RunSource.h"

#include <gtest/gtest.h>

namespace kst::script {
namespace {

struct ProgramCase {
    const char* source;
    const char* result;
};

class Programs : public testing::TestWithParam<ProgramCase> {};

TEST_P(Programs, give_their_result) {
    EXPECT_EQ(result_of(GetParam().source), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Sources, Programs,
    testing::Values(
        ProgramCase{"main() { return 1 + 2 * 3; }", "7"}, ProgramCase{"main() { }", ""},
        ProgramCase{"fib(n) { if (n < 2) return n; return fib(n - 1) + fib(n - 2); } main() { return fib(15); }",
                    "test(1):syntax error\ntest(1):Expected \"{\""},
        ProgramCase{"fib(n) { if (n < 2) { return n; } return fib(n - 1) + fib(n - 2); } main() { return fib(15); }",
                    "610"},
        ProgramCase{"main() { object i := 0, s := \"\"; while (i < 5) { s := s + i; i := i + 1; } return s; }",
                    "01234"},
        ProgramCase{"object g; set(v) { g := v; } main() { set(\"x\"); return g * 3; }", "xxx"},
        ProgramCase{"main() { return 2 * \"ab\"; }", "abab"},
        ProgramCase{"main() { return (1 < 2 and not 3 < 2) or \"\"; }", "true"},
        ProgramCase{"main() { return 7 % 4 = 3; }", "true"},
        ProgramCase{"class P { object x; set(v) { x := v; return this; } twice() { return x * 2; } }"
                    "main() { object p := P(); p.set(4); return p.twice() + p.x; }",
                    "12"},
        ProgramCase{"class B { hello() { return \"B\"; } } class D { object b; super() { b := B(); return b; } }"
                    "main() { return D().hello(); }",
                    "B"},
        ProgramCase{"main() { return \"a-b\".replace(\"-\", \"+\").size; }", "3"},
        ProgramCase{"f(n) { return f(n + 1); } main() { return f(0); }", "Script error: local stack overflow"},
        ProgramCase{"main() { return void.nothing; }", "cant find member: nothing in type <void>"},
        ProgramCase{"main() { return missing; }", "test(1): Id not found \"missing\""}));

} // namespace
} // namespace kst::script
