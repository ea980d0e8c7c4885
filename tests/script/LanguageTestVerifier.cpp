#include "script/language/CompiledFile.h"
#include "script/language/Verifier.h"
#include "tests/script/LanguageSupport.h"

#include <gtest/gtest.h>

using namespace kst::script;
using namespace test_support;

namespace {

/// Empty for code that passes, else what follows the file's name. The copy has exactly the code's size.
std::string fault_of(const Bytes& code) {
    try {
        verify_code(code, "a.kvx");
    } catch (const CompiledFileError& error) {
        return std::string(error.what()).substr(std::string("a.kvx: damaged compiled script: ").size());
    }
    return "";
}

/// A function f whose code, behind the declarations, begins at 11.
Bytes with_body(const Bytes& body) {
    Bytes code = {3, 11, 0, 0, 0, 'f', 0, 0, 0, 0, 0};
    for (const std::uint8_t byte : body)
        code.push_back(byte);
    return code;
}

struct FaultCase {
    Bytes code;
    const char* fault;
};

const char* const sources[] = {
    "",
    "import m.sin; object g; f(a, b) { return not (a or b) and sin(a, b.c(1, g or a)); }",
    "class C { object m; get(a) { if (a) { m := a; } else { return this; } while (m < 3) { m := m + 1; } } }",
    "f(a) { for (x in a) { object y := x; if (y) { return y; } else if (x) {} { object z; } } for (k, v in a) { v(k); "
    "} }",
};

} // namespace

TEST(LanguageVerifier, passes_what_the_generator_makes) {
    for (const char* source : sources) {
        const Compiled compiled = compile(source);
        EXPECT_EQ(compiled.errors, "") << source;
        EXPECT_EQ(fault_of(compiled.code), "") << source;
    }
}

TEST(LanguageVerifier, names_the_fault_and_its_place) {
    const FaultCase cases[] = {
        {{}, "the code runs off its end at code offset 0"},
        {{48}, "invalid opcode at code offset 0"},
        {{21}, "misplaced declaration at code offset 0"},
        {{5}, "misplaced declaration at code offset 0"},
        {{4, 'C', 0, 0, 0, 0, 0}, "misplaced declaration at code offset 6"},
        {{2, 0, 1, 2, 3, 4, 0}, "empty name at code offset 1"},
        {{2, 'a', 'b'}, "unterminated name at code offset 1"},
        {{2, 'a', 0, 0, 0}, "operand cut off at code offset 1"},
        {{3, 11, 0, 0}, "operand cut off at code offset 1"},
        {{3, 0, 0, 0, 0, 'f', 0, 0, 0, 0, 0}, "no instruction to go on with at code offset 0"},
        {{3, 255, 255, 255, 255, 'f', 0, 0, 0, 0, 0}, "no instruction to go on with at code offset 4294967295"},
        {with_body({0}), "a function without a frame at code offset 11"},
        {with_body({39, 0, 4, 'C', 0, 0, 0, 0}), "misplaced declaration at code offset 13"},
        {with_body({39, 0, 7, 'a', 'b'}), "unterminated string at code offset 14"},
        {with_body({39, 0, 7, 0, 0, 0, 0, 9, 0}), "filling that is not zero at code offset 14"},
        {{2, 'a', 0, 0, 1, 0, 0}, "filling that is not zero at code offset 1"},
        {with_body({39, 0, 10}), "no instruction to go on with at code offset 14"},
        {with_body({39, 0, 41, 12, 0, 0, 0}), "no instruction to go on with at code offset 12"},
        {with_body({39, 0, 41, 0, 0, 0, 0}), "no instruction to go on with at code offset 0"},
        {with_body({39, 0, 21, 0}), "value stack taken below its ground at code offset 13"},
        {with_body({39, 0, 10, 22, 0}), "value stack taken below its ground at code offset 14"},
        {with_body({39, 1, 16, 1, 0}), "index out of bounds at code offset 13"},
        {with_body({39, 1, 12, 1, 0, 0}), "index out of bounds at code offset 13"},
        {with_body({39, 1, 14, 0, 0}), "index out of bounds at code offset 13"},
        {with_body({39, 1, 11, 0}), "\"this\" outside a method at code offset 13"},
        {with_body({39, 1, 10, 45, 1, 0}), "more arguments than were gathered at code offset 14"},
        {with_body({39, 1, 10, 46, 0}), "arguments left over at code offset 15"},
        // A loop that pushes with each turn, and one that shrinks the frame under a local.
        {with_body({39, 1, 10, 41, 13, 0, 0, 0}), "paths that disagree at code offset 13"},
        {with_body({39, 1, 16, 0, 21, 39, 0, 41, 13, 0, 0, 0}), "index out of bounds at code offset 13"},
    };
    for (const FaultCase& c : cases)
        EXPECT_EQ(fault_of(c.code), c.fault);
}

TEST(LanguageVerifier, refuses_every_prefix_and_survives_every_flip) {
    for (const char* source : sources) {
        const Bytes code = compile(source).code;
        for (std::size_t size = 0; size < code.size(); ++size) {
            // A prefix that ends with the declarations may hold no function at all, as for the empty source.
            const std::string fault = fault_of(Bytes(code.begin(), code.begin() + static_cast<std::ptrdiff_t>(size)));
            EXPECT_NE(fault, "") << source << " cut at " << size;
        }
        for (std::size_t i = 0; i < code.size(); ++i) {
            for (const int flip : {0xFF, 0x01, 0x80, code[i] + 0}) {
                Bytes damaged = code;
                damaged[i] ^= static_cast<std::uint8_t>(flip);
                fault_of(damaged);
            }
        }
    }
}
