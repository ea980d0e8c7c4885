#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kst {

/// Three components in single precision. A scalar has all three equal.
struct ExpressionValue {
    float x = 0, y = 0, z = 0;

    bool operator==(const ExpressionValue&) const = default;
};

constexpr ExpressionValue broadcast(float value) {
    return {value, value, value};
}

/// The values that operators work on. An operator that finds too few operands gets the zero vector for each that is
/// missing: nothing outside the stack is ever read.
class ExpressionStack {
public:
    /// The same state gives the same numbers on every machine.
    explicit ExpressionStack(std::uint32_t random_state) : random_state_(random_state) {}

    void push(ExpressionValue value) { values_.push_back(value); }
    ExpressionValue pop();
    void clear() { values_.clear(); }

    /// 0 to 32767.
    std::int32_t next_random();
    std::uint32_t random_state() const { return random_state_; }

private:
    std::vector<ExpressionValue> values_;
    std::uint32_t random_state_;
};

/// Pops its operands, the last one first, and pushes its result.
using ExpressionFunction = void (*)(ExpressionStack&);

/// A compiled expression. Good for the evaluator that made it.
struct ExpressionProgram {
    struct Instruction {
        enum Kind : std::int32_t { call = 0, push_variable = 1, push_number = 2 } kind;
        /// The operator's or variable's index, or the bits of the float.
        std::uint32_t payload;
    };
    /// Empty for a constant expression.
    std::vector<Instruction> instructions;
    ExpressionValue constant_result;
    /// Names and symbols that nothing is known of, in the order of the text. They were left out of the program.
    std::vector<std::string> unknown_identifiers;
};

/// Arithmetic on three-component vectors: `clamp(1, 0, 3*2)`, `length(vector(3, 4, 0))`. docs/xml.md lists operators,
/// functions and constants.
///
/// Syntax is not checked: parentheses that do not match only change what binds first, commas do nothing, an unknown
/// name is left out and reported in the program. Every text has a value; one that leaves no value behind is (0, 0, 0).
class ExpressionEvaluator {
public:
    /// `random_state` starts the row of numbers that `rnd` gives.
    explicit ExpressionEvaluator(std::uint32_t random_state = 1);

    void compile(std::string_view text, ExpressionProgram& out_program);

    /// The first component of the value. A result that is no number is always the same one, without a sign.
    float evaluate(const ExpressionProgram& program) { return evaluate_vector(program).x; }
    ExpressionValue evaluate_vector(const ExpressionProgram& program);

    /// A binary operator is a name with a low precedence between its operands, a function one of 17 ahead of them. With
    /// `not_constant` it is called anew at every evaluation.
    void add_operator(const std::string& name, ExpressionFunction function, std::int32_t precedence, bool not_constant);
    void add_variable(const std::string& name, float x, float y, float z);
    void add_constant(const std::string& name, float x, float y, float z);
    void add_constant(const std::string& name, float value) { add_constant(name, value, value, value); }

    /// Hand this to another evaluator to go on with its row of numbers.
    std::uint32_t random_state() const { return stack_.random_state(); }

private:
    struct Operator {
        ExpressionFunction function;
        std::int32_t precedence;
        bool not_constant;
    };
    struct Token {
        enum Kind : std::int32_t { number = 0, operation = 1, variable = 2, opening = 3, closing = 4 } kind;
        std::uint32_t index = 0;
        float value = 0;
    };
    class Scanner;
    class Compiler;

    bool find_name(std::string_view name, Token& out_token) const;
    ExpressionValue run(const std::vector<ExpressionProgram::Instruction>& instructions);

    std::vector<Operator> operators_;
    std::vector<ExpressionValue> variables_;
    std::vector<bool> variable_is_constant_;
    std::map<std::string, std::uint32_t, std::less<>> operator_names_;
    std::map<std::string, std::uint32_t, std::less<>> variable_names_;
    ExpressionStack stack_;
};

} // namespace kst
