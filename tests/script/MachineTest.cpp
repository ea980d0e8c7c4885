// The machine against the instructions taken one at a time, on random programs.

#include "script/value/ClassString.h"
#include "script/vm/ScriptStacks.h"
#include "script/vm/ScriptVM.h"
#include "tests/script/LanguageSupport.h"
#include "tests/script/LiteralMachine.h"

#include <gtest/gtest.h>

#include <random>

namespace kst::script {
namespace {

/// Source text of functions f0 and f1, which call each other, over three globals.
class RandomSource {
public:
    explicit RandomSource(unsigned seed) : random_(seed) {}

    std::string program() {
        std::string text = "object g, h, k;\n";
        for (const char* head : {"f0(a, b)", "f1(a, b)"})
            text.append(head)
                .append(" { object c := ")
                .append(expression(2))
                .append("; ")
                .append(block(3))
                .append(" return c; }\n");
        return text + "state() { return \"\" + g + \"|\" + h + \"|\" + k; }\n";
    }

private:
    unsigned below(unsigned count) { return static_cast<unsigned>(random_()) % count; }
    std::string one_of(std::initializer_list<const char*> choices) {
        return choices.begin()[below(static_cast<unsigned>(choices.size()))];
    }
    std::string variable() { return one_of({"a", "b", "c", "a", "c", "g", "h", "k"}); }

    // Mostly small numbers, so that sides of comparisons are often equal, and most programs come to their end.
    std::string leaf() {
        if (below(25) == 0)
            return one_of({"\"\"", "\"x\"", "\"12\"", "true", "void"});
        return below(3) == 0 ? one_of({"0", "1", "2", "2.5", "-3"}) : variable();
    }

    std::string expression(unsigned depth) {
        if (depth == 0 || below(4) == 0)
            return leaf();
        const unsigned kind = below(12);
        if (kind == 0)
            return "-" + one_of({"a", "c", "h", "4"});
        if (kind == 1)
            return condition(depth - 1);
        const std::string left = expression(depth - 1);
        const std::string right = expression(depth - 1);
        if (kind == 2)
            return one_of({"f0(", "f1("}) + left + ", " + right + ")";
        return "(" + left + one_of({" + ", " - ", " * ", " / ", " % ", " + ", " - "}) + right + ")";
    }

    std::string condition(unsigned depth) {
        if (depth > 0 && below(3) == 0)
            return "(" + condition(depth - 1) + one_of({" and ", " or "}) + condition(depth - 1) + ")";
        if (below(6) == 0)
            return "(not " + condition(depth > 0 ? depth - 1 : 0) + ")";
        if (below(8) == 0)
            return variable();
        return "(" + expression(depth) + one_of({" < ", " <= ", " = ", " <> ", " > ", " >= "}) + expression(depth) +
               ")";
    }

    std::string statement(unsigned depth) {
        switch (below(depth == 0 ? 3 : 7)) {
        case 0:
            return one_of({"c := c + ", "g := g + ", "h := h + ", "a := a - "}) + one_of({"a", "b", "1", "\"y\""}) +
                   ";";
        case 3:
            return "if (" + condition(2) + ") " + block(depth - 1) + " else " + block(depth - 1);
        case 4:
            return "{ object n := 0; while (n < " + one_of({"1", "3", "b"}) + ") { n := n + 1; " +
                   statement(depth - 1) + " } }";
        case 5:
            return "{ object d := " + expression(2) + "; c := d; " + statement(depth - 1) + " }";
        case 6:
            return "return " + expression(2) + ";";
        default:
            return variable() + " := " + expression(3) + ";";
        }
    }

    std::string block(unsigned depth) {
        std::string text = "{ ";
        for (unsigned i = below(4); i > 0; --i)
            text += statement(depth) + " ";
        return text + "}";
    }

    std::mt19937 random_;
};

std::string shown(const ScriptValue& value) {
    return value.type_name() + " " + value.to_string();
}

// Every operand comes in each of its places, with each of the classes, and results go wherever they can.
TEST(Machine, does_what_the_single_instructions_do) {
    int completed = 0;
    for (unsigned seed = 0; seed < 6000; ++seed) {
        const std::string source = RandomSource(seed).program();
        test_support::Compiled compiled = test_support::compile(source);
        ASSERT_EQ(compiled.errors, "") << source;
        const std::vector<ScriptValue> arguments{number_value(static_cast<float>(seed % 4)), string_value("s")};
        std::string expected;
        try {
            test_support::LiteralMachine literal(compiled.code);
            expected = shown(literal.call("f0", arguments));
            expected += " " + shown(literal.call("state", {}));
        } catch (const DSError& error) {
            if (error.what() == std::string("too long"))
                continue;
            expected = error.what();
        }
        ScriptVM program(compiled.code, nullptr);
        program.load();
        std::string result;
        try {
            result = shown(program.call(intern("f0"), arguments));
            result += " " + shown(program.call(intern("state"), {}));
            ++completed;
        } catch (const VMError& error) {
            result = error.what();
        }
        EXPECT_EQ(result, expected) << source;
    }
    EXPECT_GT(completed, 1200);
    EXPECT_EQ(ScriptStacks::instance().values.count() + ScriptStacks::instance().locals.count(), 0U);
}

} // namespace
} // namespace kst::script
