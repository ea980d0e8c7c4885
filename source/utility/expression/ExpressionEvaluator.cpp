#include "source/utility/expression/ExpressionEvaluator.h"

#include "source/utility/ascii.h"
#include "source/utility/expression/ExpressionOperators.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <compare>
#include <limits>
#include <numbers>
#include <utility>

namespace kst {
namespace {

bool is_identifier_start(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

/// What leads the digits.
float number_of(std::string_view digits) {
    double value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error == std::errc::result_out_of_range)
        return out_of_range_value(digits.substr(0, static_cast<std::size_t>(end - digits.data())));
    return static_cast<float>(value);
}

float without_sign_of_nan(float value) {
    return std::isnan(value) ? std::numeric_limits<float>::quiet_NaN() : value;
}

} // namespace

ExpressionValue ExpressionStack::pop() {
    if (values_.empty())
        return {};
    const ExpressionValue value = values_.back();
    values_.pop_back();
    return value;
}

std::int32_t ExpressionStack::next_random() {
    // A linear congruence modulo 2^32, of which the upper bits vary enough.
    random_state_ = random_state_ * 214013u + 2531011u;
    return static_cast<std::int32_t>((random_state_ >> 16) & 0x7FFF);
}

/// Cuts a text into tokens. An unknown name or symbol gives none, and is kept for the report.
class ExpressionEvaluator::Scanner {
public:
    Scanner(const ExpressionEvaluator& evaluator, std::string_view text, std::vector<std::string>& unknown_identifiers)
        : evaluator_(evaluator), text_(text), unknown_identifiers_(unknown_identifiers) {}

    /// False at the end.
    bool next(Token& token) {
        while (!text_.empty())
            if (take(token))
                return true;
        return false;
    }

private:
    /// True if what stands in front is a token.
    bool take(Token& token) {
        const char c = text_.front();
        if (is_digit(c))
            return take_number(token);
        if (is_identifier_start(c))
            return take_identifier(token);
        if (c == '\t' || c == '\n' || c == '\r' || c == ' ') {
            text_.remove_prefix(1);
            return false;
        }
        if (c == '(' || c == ')') {
            token = {c == '(' ? Token::opening : Token::closing};
            after_value_ = c == ')';
            text_.remove_prefix(1);
            return true;
        }
        return take_symbol(token);
    }

    bool take_number(Token& token) {
        std::size_t length = 0;
        bool has_exponent = false;
        for (; length < text_.size(); ++length) {
            const char c = text_[length];
            if (is_digit(c) || c == '.')
                continue;
            if ((c != 'e' && c != 'E') || has_exponent)
                break;
            has_exponent = true;
            if (length + 1 < text_.size() && (text_[length + 1] == '+' || text_[length + 1] == '-'))
                ++length;
        }
        token = {Token::number, 0, number_of(text_.substr(0, length))};
        text_.remove_prefix(length);
        after_value_ = true;
        return true;
    }

    bool take_identifier(Token& token) {
        std::size_t length = 1;
        while (length < text_.size() && (is_identifier_start(text_[length]) || is_digit(text_[length])))
            ++length;
        after_value_ = true;
        return take_name(length, token);
    }

    bool take_symbol(Token& token) {
        const char c = text_.front();
        const bool is_sign = c == '+' || c == '-';
        const bool was_value = std::exchange(after_value_, false);
        if (is_sign && !was_value) {
            text_.remove_prefix(1);
            return evaluator_.find_name(c == '+' ? "u+" : "u-", token);
        }
        if (!is_sign && text_.size() >= 2 && evaluator_.find_name(text_.substr(0, 2), token)) {
            text_.remove_prefix(2);
            return true;
        }
        // A character outside of ASCII is reported whole.
        std::size_t length = 1;
        while (length < text_.size() && (static_cast<unsigned char>(text_[length]) & 0xC0) == 0x80)
            ++length;
        return take_name(length, token);
    }

    bool take_name(std::size_t length, Token& token) {
        const std::string_view name = text_.substr(0, length);
        text_.remove_prefix(length);
        if (evaluator_.find_name(name, token))
            return true;
        unknown_identifiers_.emplace_back(name);
        return false;
    }

    const ExpressionEvaluator& evaluator_;
    std::string_view text_;
    std::vector<std::string>& unknown_identifiers_;
    /// The last token ended an operand, so that a sign is a binary operator.
    bool after_value_ = false;
};

/// Puts operators behind their operands. In place of parentheses each waiting operator knows how deep it stood.
class ExpressionEvaluator::Compiler {
public:
    Compiler(const ExpressionEvaluator& evaluator, std::vector<ExpressionProgram::Instruction>& instructions)
        : evaluator_(evaluator), instructions_(instructions) {}

    void add(const Token& token) {
        switch (token.kind) {
        case Token::number:
            instructions_.push_back(
                {ExpressionProgram::Instruction::push_number, std::bit_cast<std::uint32_t>(token.value)});
            break;
        case Token::variable:
            instructions_.push_back({ExpressionProgram::Instruction::push_variable, token.index});
            constant_ = constant_ && evaluator_.variable_is_constant_[token.index];
            break;
        case Token::opening:
            ++level_;
            break;
        case Token::closing:
            --level_;
            break;
        case Token::operation:
            add_operation(token.index);
        }
    }

    /// True: the value never changes.
    bool finish() {
        while (!waiting_.empty())
            emit_top();
        return constant_;
    }

private:
    /// Ordered by how deep it stood, then by precedence.
    struct FunctionStackItem {
        std::int64_t level;
        std::int32_t precedence;
        std::uint32_t index;

        std::strong_ordering operator<=>(const FunctionStackItem& other) const {
            const auto by_level = level <=> other.level;
            return std::is_neq(by_level) ? by_level : precedence <=> other.precedence;
        }
    };

    void add_operation(std::uint32_t index) {
        const Operator& operation = evaluator_.operators_[index];
        const FunctionStackItem item{level_, operation.precedence, index};
        while (!waiting_.empty() && std::is_gteq(waiting_.back() <=> item))
            emit_top();
        waiting_.push_back(item);
        constant_ = constant_ && !operation.not_constant;
    }

    void emit_top() {
        instructions_.push_back({ExpressionProgram::Instruction::call, waiting_.back().index});
        waiting_.pop_back();
    }

    const ExpressionEvaluator& evaluator_;
    std::vector<ExpressionProgram::Instruction>& instructions_;
    std::vector<FunctionStackItem> waiting_;
    std::int64_t level_ = 0;
    bool constant_ = true;
};

ExpressionEvaluator::ExpressionEvaluator(std::uint32_t random_state) : stack_(random_state) {
    for (const BuiltInOperator& item : built_in_operators())
        add_operator(item.name, item.function, item.precedence, item.not_constant);
    add_constant("pi", std::numbers::pi_v<float>);
    add_constant("X", 1, 0, 0);
    add_constant("Y", 0, 1, 0);
    add_constant("Z", 0, 0, 1);
}

void ExpressionEvaluator::compile(std::string_view text, ExpressionProgram& out_program) {
    out_program = {};
    Scanner scanner(*this, text, out_program.unknown_identifiers);
    Compiler compiler(*this, out_program.instructions);
    for (Token token{}; scanner.next(token);)
        compiler.add(token);
    if (!compiler.finish())
        return;
    out_program.constant_result = run(out_program.instructions);
    out_program.instructions.clear();
}

ExpressionValue ExpressionEvaluator::evaluate_vector(const ExpressionProgram& program) {
    return program.instructions.empty() ? program.constant_result : run(program.instructions);
}

ExpressionValue ExpressionEvaluator::run(const std::vector<ExpressionProgram::Instruction>& instructions) {
    stack_.clear();
    for (const ExpressionProgram::Instruction& instruction : instructions) {
        switch (instruction.kind) {
        case ExpressionProgram::Instruction::call:
            operators_[instruction.payload].function(stack_);
            break;
        case ExpressionProgram::Instruction::push_variable:
            stack_.push(variables_[instruction.payload]);
            break;
        case ExpressionProgram::Instruction::push_number:
            stack_.push(broadcast(std::bit_cast<float>(instruction.payload)));
        }
    }
    const ExpressionValue value = stack_.pop();
    return {without_sign_of_nan(value.x), without_sign_of_nan(value.y), without_sign_of_nan(value.z)};
}

bool ExpressionEvaluator::find_name(std::string_view name, Token& out_token) const {
    if (const auto variable = variable_names_.find(name); variable != variable_names_.end()) {
        out_token = {Token::variable, variable->second};
        return true;
    }
    const auto operation = operator_names_.find(name);
    if (operation == operator_names_.end())
        return false;
    out_token = {Token::operation, operation->second};
    return true;
}

void ExpressionEvaluator::add_operator(const std::string& name, ExpressionFunction function, std::int32_t precedence,
                                       bool not_constant) {
    operator_names_[name] = static_cast<std::uint32_t>(operators_.size());
    operators_.push_back({function, precedence, not_constant});
}

void ExpressionEvaluator::add_variable(const std::string& name, float x, float y, float z) {
    variable_names_[name] = static_cast<std::uint32_t>(variables_.size());
    variables_.push_back({x, y, z});
    variable_is_constant_.push_back(false);
}

void ExpressionEvaluator::add_constant(const std::string& name, float x, float y, float z) {
    add_variable(name, x, y, z);
    variable_is_constant_.back() = true;
}

} // namespace kst
