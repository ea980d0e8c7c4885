#include "tools/kst/Command.h"

#include "source/utility/expression/ExpressionEvaluator.h"

#include <cstdio>
#include <memory>
#include <string>

namespace kst::tool {
namespace {

void evaluate(const std::string& expression) {
    ExpressionEvaluator evaluator;
    ExpressionProgram program;
    evaluator.compile(expression, program);
    if (!program.unknown_identifiers.empty())
        throw CommandFailure("Unknown identifier " + program.unknown_identifiers.front());
    const ExpressionValue value = evaluator.evaluate_vector(program);
    std::printf("%f %f %f\n", static_cast<double>(value.x), static_cast<double>(value.y), static_cast<double>(value.z));
}

} // namespace

void add_eval_command(CLI::App& app) {
    const auto expression = std::make_shared<std::string>();
    CLI::App* const eval = app.add_subcommand(
        "eval",
        "Evaluate an expression over three-component vectors and print its components. Put -- ahead of one that "
        "begins with a minus");
    eval->add_option("EXPRESSION", *expression, "For example \"length(vector(3, 4, 0)) * 2\"")->required();
    eval->callback([expression] { evaluate(*expression); });
}

} // namespace kst::tool
