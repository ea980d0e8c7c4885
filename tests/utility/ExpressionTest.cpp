#include "source/utility/expression/ExpressionEvaluator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kst {
namespace {

ExpressionValue vector_of(const char* text) {
    ExpressionEvaluator evaluator;
    ExpressionProgram program;
    evaluator.compile(text, program);
    return evaluator.evaluate_vector(program);
}

struct ExpressionCase {
    const char* text;
    float value;
};

class Expressions : public testing::TestWithParam<ExpressionCase> {};

TEST_P(Expressions, have_the_value) {
    EXPECT_EQ(vector_of(GetParam().text).x, GetParam().value) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(Operators, Expressions,
                         testing::Values(ExpressionCase{"1+2*3", 7}, ExpressionCase{"(1+2)*3", 9},
                                         ExpressionCase{"2-1-1", 0}, ExpressionCase{"-2*3", -6},
                                         ExpressionCase{"8/4/2", 1}, ExpressionCase{"2*-3", -6},
                                         ExpressionCase{"+4 - -1", 5}, ExpressionCase{"1.5e1+2E-1", 15.2f},
                                         ExpressionCase{"0 || 2", 1}, ExpressionCase{"0 or 0", 0},
                                         ExpressionCase{"1 && 2", 1}, ExpressionCase{"1 and 0", 0},
                                         ExpressionCase{"1==1", 1}, ExpressionCase{"1!=1", 0},
                                         ExpressionCase{"1<>2", 1}, ExpressionCase{"1<1", 0}, ExpressionCase{"1<=1", 1},
                                         ExpressionCase{"2>1", 1}, ExpressionCase{"1>=2", 0}, ExpressionCase{"!0", 1},
                                         ExpressionCase{"not(3)", 0}, ExpressionCase{"1+1==2 && 3<4", 1}));

INSTANTIATE_TEST_SUITE_P(Functions, Expressions,
                         testing::Values(ExpressionCase{"test(1>2, 5, 6)", 6}, ExpressionCase{"clamp(10, 0, 20)", 10},
                                         ExpressionCase{"clamp(10, 0, -1)", 0}, ExpressionCase{"clamp(10, 0, 4)", 4},
                                         ExpressionCase{"x(vector(1,2,3))", 1}, ExpressionCase{"y(vector(1,2,3))", 2},
                                         ExpressionCase{"z(vector(1,2,3))", 3},
                                         ExpressionCase{"length(vector(3,4,0))", 5}, ExpressionCase{"len(X+Y*0)", 1},
                                         ExpressionCase{"dot(X,Y)", 0}, ExpressionCase{"z(cross(X,Y))", 1},
                                         ExpressionCase{"z(cross(Y,X))", -1}, ExpressionCase{"abs(0-7)", 7},
                                         ExpressionCase{"sin(0)", 0}, ExpressionCase{"cos(pi)", -1},
                                         ExpressionCase{"y(dir(vector(0,3,4)))", 0.6f}, ExpressionCase{"sin(pi/2)", 1},
                                         ExpressionCase{"test(0, X, vector(7,8,9))", 7}));

INSTANTIATE_TEST_SUITE_P(
    Malformed, Expressions,
    testing::Values(ExpressionCase{"", 0}, ExpressionCase{"+", 0}, ExpressionCase{"*3", 0}, ExpressionCase{"1;2", 0},
                    ExpressionCase{"clamp(1)", 0}, ExpressionCase{"((2", 2}, ExpressionCase{")2(+1", 1},
                    ExpressionCase{"1.2.3", 1.2f}, ExpressionCase{"7 nothing", 7}, ExpressionCase{"1,2", 2},
                    ExpressionCase{"1e99", std::numeric_limits<float>::infinity()}, ExpressionCase{"1e-9999", 0},
                    ExpressionCase{"1/0", std::numeric_limits<float>::infinity()},
                    ExpressionCase{"0.1e400", std::numeric_limits<float>::infinity()}, ExpressionCase{"10.5e-400", 0}));

TEST(ExpressionResult, has_all_components) {
    EXPECT_EQ(vector_of("vector(1,2,3)*2+X"), (ExpressionValue{3, 4, 6}));
    EXPECT_EQ(vector_of("normal(vector(0,0,0))"), ExpressionValue());
    EXPECT_EQ(vector_of("5 < 6"), broadcast(1));
    EXPECT_TRUE(std::isnan(vector_of("0/0").x));
    EXPECT_FALSE(std::signbit(vector_of("0/0").x));
}

TEST(ExpressionProgramOf, unknown_names_tells_them_in_order) {
    ExpressionEvaluator evaluator;
    ExpressionProgram program;
    evaluator.compile("one + 2 ? $v \xC3\xA9", program);
    EXPECT_THAT(program.unknown_identifiers, testing::ElementsAre("one", "?", "$", "v", "\xC3\xA9"));
    evaluator.compile("1", program);
    EXPECT_TRUE(program.unknown_identifiers.empty());
}

TEST(ExpressionProgramOf, a_variable_follows_it_and_of_constants_is_computed_at_once) {
    ExpressionEvaluator evaluator;
    evaluator.add_variable("time", 1, 2, 3);
    evaluator.add_constant("two", 2);
    ExpressionProgram program;
    evaluator.compile("time*two", program);
    EXPECT_EQ(program.instructions.size(), 3u);
    EXPECT_EQ(evaluator.evaluate_vector(program), (ExpressionValue{2, 4, 6}));
    evaluator.compile("two*pi", program);
    EXPECT_TRUE(program.instructions.empty());
}

TEST(ExpressionRandom, is_the_same_row_for_the_same_start) {
    const auto row = [](std::uint32_t start) {
        ExpressionEvaluator evaluator(start);
        ExpressionProgram program;
        evaluator.compile("rnd*32767", program);
        std::vector<int> out;
        for (int i = 0; i < 4; ++i)
            out.push_back(static_cast<int>(std::lround(evaluator.evaluate(program))));
        return out;
    };
    // Worked out by hand from x = x * 214013 + 2531011, bits 16 to 30.
    EXPECT_THAT(row(1), testing::ElementsAre(41, 18467, 6334, 26500));
    EXPECT_NE(row(1), row(2));
}

} // namespace
} // namespace kst
