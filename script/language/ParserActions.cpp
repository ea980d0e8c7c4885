#include "script/language/ParserActions.h"

#include <charconv>
#include <limits>
#include <string_view>

namespace kst::script {

namespace {

SemanticValue expression_of(ValueKind kind) {
    SemanticValue value = no_value;
    value.kind = kind;
    return value;
}

/// Digits with at most one point. What is too large is infinite, what is too small is 0.
float number_of(std::string_view text) {
    float value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    if (result.ec == std::errc::result_out_of_range) {
        const std::string_view integer = text.substr(0, text.find('.'));
        const bool large = integer.find_first_not_of('0') != std::string_view::npos;
        return large ? std::numeric_limits<float>::infinity() : 0.0F;
    }
    return value;
}

} // namespace

ParserActions::ParserActions(Parser& parser, Scanner& scanner) : parser_(parser), scanner_(scanner) {}

int ParserActions::next_token(Value& value) {
    value = no_value;
    try {
        scanner_.next_token(token_);
    } catch (const ScannerError& error) {
        parser_.report(token_.line, error.what());
        token_.type = TokenType::unscannable;
        token_.text.clear();
    }
    value.line = token_.line;
    if (token_.type >= TokenType::identifier && token_.type <= TokenType::boolean_constant)
        value.text = intern(token_.text);
    return static_cast<int>(token_.type);
}

void ParserActions::syntax_error(const char* words) {
    error(std::string_view(words) == "memory exhausted" ? "parser stack overflow" : "syntax error");
}

void ParserActions::error(const std::string& message) {
    parser_.report(token_.line, message);
}

void ParserActions::statement_error() {
    error("Non valid statement (token:" + token_.text + ")");
}

SemanticValue ParserActions::extend_dotted_id(const Value& id, const Value& part) {
    Value dotted = part;
    dotted.text = intern(*id.text + "." + *part.text);
    return dotted;
}

void ParserActions::import_id(const Value& dotted) {
    const std::size_t point = dotted.text->rfind('.');
    const std::string* name = point == std::string::npos ? dotted.text : intern(dotted.text->substr(point + 1));
    if (global.declare(name, SymbolKind::import_))
        global.newest().import_name = dotted.text;
    else
        error("Identifier already imported");
}

Scope* ParserActions::open_scope(ScopeKind kind) {
    scopes_.emplace_back(kind, scope_);
    scope_ = &scopes_.back();
    return scope_;
}

SemanticValue ParserActions::begin_function(const Value& name) {
    line_ = name.line;
    Value head = no_value;
    head.scope = scope_;
    if (scope_->declare(name.text, SymbolKind::function))
        scope_->newest().first_instruction = next_index();
    else
        error("Identifier " + *name.text + " already declared");
    append<ImResizeParameters>(open_scope(ScopeKind::function));
    return head;
}

void ParserActions::parameter(const Value& name) {
    if (!scope_->declare(name.text, SymbolKind::object))
        error("Can't name two parameters the same");
}

void ParserActions::end_parameters() {
    append<ImResizeLocal>(scope_);
}

void ParserActions::end_function(const Value& head, const Value& body) {
    append_command(ImCommand::Command::push_void);
    // A `return` has left its value and jumps past the push of void.
    resolve(body.returns, next_index());
    append_command(ImCommand::Command::return_);
    leave_scope(head);
}

SemanticValue ParserActions::begin_class(const Value& name) {
    Value head = no_value;
    head.scope = scope_;
    const bool declared = scope_->declare(name.text, SymbolKind::class_);
    if (!declared)
        error("Identifier " + *name.text + " already declared (class)");
    Scope* const scope = open_scope(ScopeKind::class_);
    if (declared) {
        head.scope->newest().class_scope = scope;
        class_scopes.push_back(scope);
    }
    return head;
}

SemanticValue ParserActions::begin_block() {
    Value block = no_value;
    block.scope = scope_;
    append<ImResizeLocal>(open_scope(ScopeKind::block));
    return block;
}

void ParserActions::end_block(const Value& block) {
    leave_scope(block);
    append<ImResizeLocal>(scope_);
}

void ParserActions::declare_object(const Value& name) {
    line_ = name.line;
    if (!scope_->declare(name.text, SymbolKind::object))
        error("Can't name two objects the same \"" + *name.text + "\"");
}

void ParserActions::begin_initializer(const Value& name) {
    declare_object(name);
    if (scope_->kind() == ScopeKind::global)
        error("Global objects cannot have initializers.");
    if (scope_->kind() == ScopeKind::class_)
        error("Class objects cannot have initializers.");
    append_reference(name.text);
}

SemanticValue ParserActions::statements_here() const {
    Value list = no_value;
    list.scope = scope_;
    return list;
}

SemanticValue ParserActions::append_statement(const Value& statements, const Value& statement) {
    leave_scope(statements);
    Value list = merged_returns(statements, statement);
    list.scope = statements.scope;
    return list;
}

SemanticValue ParserActions::merged_returns(const Value& a, const Value& b) {
    Value both = no_value;
    both.returns = merged(a.returns, b.returns);
    if (a.kind == ValueKind::none || b.kind == ValueKind::none)
        both.kind = a.kind == ValueKind::none ? b.kind : a.kind;
    else
        both.kind = a.kind == b.kind ? a.kind : ValueKind::unknown;
    return both;
}

void ParserActions::lvalue(const Value& name) {
    line_ = name.line;
    append_reference(name.text);
}

void ParserActions::chained_lvalue(const Value& name) {
    line_ = name.line;
    append_value(name.text);
}

void ParserActions::assign(const Value& expression) {
    to_value(expression);
    append_command(ImCommand::Command::assign);
}

SemanticValue ParserActions::begin_statement(const Value& keyword) {
    line_ = keyword.line;
    Value here = no_value;
    here.start = next_index();
    return here;
}

SemanticValue ParserActions::begin_body(const Value& test) {
    resolve(test.true_label, next_index());
    return test;
}

void ParserActions::end_while(const Value& start, const Value& test) {
    append<ImGotoCond>(ImGotoCond::Condition::always, start.start);
    resolve(test.false_label, next_index());
}

SemanticValue ParserActions::if_part(const Value& test, const Value& body) const {
    Value part = body;
    part.false_label = test.false_label;
    return part;
}

SemanticValue ParserActions::begin_else(const Value& chain) {
    Value rest = chain;
    append_jump(ImGotoCond::Condition::always, rest.end_label);
    resolve(rest.false_label, next_index());
    rest.false_label = no_label;
    return rest;
}

SemanticValue ParserActions::else_if_part(const Value& chain, const Value& part) {
    Value longer = merged_returns(chain, part);
    longer.end_label = chain.end_label;
    longer.false_label = part.false_label;
    return longer;
}

SemanticValue ParserActions::end_if(const Value& chain, const Value& else_part) {
    resolve(chain.false_label, next_index());
    resolve(chain.end_label, next_index());
    return merged_returns(chain, else_part);
}

SemanticValue ParserActions::return_statement(const Value& expression) {
    Value statement = no_value;
    statement.kind = to_value(expression).kind;
    append_jump(ImGotoCond::Condition::always, statement.returns);
    return statement;
}

void ParserActions::append_member_value(const std::string* object, const char* name) {
    append_value(object);
    append<ImMember>(intern(name));
    append_command(ImCommand::Command::deref);
}

void ParserActions::append_member_call(const std::string* object, const char* method) {
    append_value(object);
    append<ImMember>(intern(method));
    append<ImCall>(std::size_t{0});
    append_command(ImCommand::Command::deref);
}

SemanticValue ParserActions::begin_for(const Value& key, const Value* value) {
    line_ = key.line;
    Value opened = no_value;
    opened.scope = scope_;
    open_scope(ScopeKind::block);
    scope_->declare(key.text, SymbolKind::object);
    if (value && !scope_->declare(value->text, SymbolKind::object))
        error("Variable name in for must be unique: \"" + *value->text + "\"");
    if (value)
        scope_->declare(hidden(key, "::x"), SymbolKind::object);
    scope_->declare(hidden(key, "::list"), SymbolKind::object);
    scope_->declare(hidden(key, "::iter"), SymbolKind::object);
    append<ImResizeLocal>(scope_);
    append_reference(hidden(key, "::list"));
    return opened;
}

SemanticValue ParserActions::for_head(const Value& opened, const Value& key, const Value* value,
                                      const Value& expression) {
    assign(expression);
    append_reference(hidden(key, "::iter"));
    append_member_call(hidden(key, "::list"), "iterator");
    append_command(ImCommand::Command::assign);

    Value head = opened;
    head.start = next_index();
    const std::string* const element = value ? hidden(key, "::x") : key.text;
    append_reference(element);
    append_member_call(hidden(key, "::iter"), "next");
    append_command(ImCommand::Command::assign);
    append_value(element);
    append_command(ImCommand::Command::push_void);
    append<ImBinOp>(ValueKind::unknown, ValueKind::void_, ImBinOp::Operator::eq);
    append_jump(ImGotoCond::Condition::if_true, head.false_label);
    if (value) {
        append_reference(key.text);
        append_member_value(element, "key");
        append_command(ImCommand::Command::assign);
        append_reference(value->text);
        append_member_value(element, "value");
        append_command(ImCommand::Command::assign);
    }
    return head;
}

void ParserActions::end_for(const Value& head) {
    append<ImGotoCond>(ImGotoCond::Condition::always, head.start);
    resolve(head.false_label, next_index());
    end_block(head);
}

void ParserActions::append_jump(ImGotoCond::Condition condition, Label& label) {
    const Label jump{next_index(), next_index()};
    append<ImGotoCond>(condition);
    label = merged(label, jump);
}

Label ParserActions::merged(const Label& a, const Label& b) {
    if (a.first < 0)
        return b;
    if (b.first < 0)
        return a;
    instructions[static_cast<std::size_t>(a.last)]->as_goto_cond()->next_waiting = b.first;
    return {a.first, b.last};
}

void ParserActions::resolve(const Label& label, std::int32_t target) {
    for (std::int32_t index = label.first; index >= 0;) {
        ImGotoCond& jump = *instructions[static_cast<std::size_t>(index)]->as_goto_cond();
        jump.target = target;
        index = jump.next_waiting;
    }
}

SemanticValue ParserActions::to_jump(Value expression) {
    if (expression.kind != ValueKind::jump) {
        expression = expression_of(ValueKind::jump);
        append_jump(ImGotoCond::Condition::if_false, expression.false_label);
        append_jump(ImGotoCond::Condition::always, expression.true_label);
    }
    return expression;
}

SemanticValue ParserActions::to_value(Value expression) {
    if (expression.kind != ValueKind::jump)
        return expression;
    resolve(expression.true_label, next_index());
    resolve(expression.false_label, next_index() + 2);
    append<ImConstBoolean>(true);
    append<ImGotoCond>(ImGotoCond::Condition::always, next_index() + 2);
    append<ImConstBoolean>(false);
    return expression_of(ValueKind::boolean);
}

SemanticValue ParserActions::or_left(const Value& left) {
    Value jump = to_jump(left);
    resolve(jump.false_label, next_index());
    jump.false_label = no_label;
    return jump;
}

SemanticValue ParserActions::or_right(const Value& left, const Value& right) {
    Value jump = to_jump(right);
    jump.true_label = merged(left.true_label, jump.true_label);
    return jump;
}

SemanticValue ParserActions::and_left(const Value& left) {
    Value jump = to_jump(left);
    resolve(jump.true_label, next_index());
    jump.true_label = no_label;
    return jump;
}

SemanticValue ParserActions::and_right(const Value& left, const Value& right) {
    Value jump = to_jump(right);
    jump.false_label = merged(left.false_label, jump.false_label);
    return jump;
}

SemanticValue ParserActions::not_(const Value& operand) {
    Value jump = operand;
    if (operand.kind == ValueKind::jump) {
        std::swap(jump.true_label, jump.false_label);
        return jump;
    }
    jump = expression_of(ValueKind::jump);
    append_jump(ImGotoCond::Condition::if_true, jump.false_label);
    append_jump(ImGotoCond::Condition::always, jump.true_label);
    return jump;
}

SemanticValue ParserActions::binary(const Value& left, const Value& right, ImBinOp::Operator op) {
    const Value operand = to_value(right);
    append<ImBinOp>(left.kind, operand.kind, op);
    return expression_of(op >= ImBinOp::Operator::lt ? ValueKind::boolean : ValueKind::unknown);
}

SemanticValue ParserActions::negate(const Value& operand) {
    append<ImUnOp>(to_value(operand).kind, ImUnOp::Operator::negate);
    return expression_of(ValueKind::unknown);
}

SemanticValue ParserActions::number(const Value& token) {
    line_ = token.line;
    append<ImConstNumber>(number_of(*token.text));
    return expression_of(ValueKind::number);
}

SemanticValue ParserActions::string(const Value& token) {
    line_ = token.line;
    append<ImConstString>(token.text);
    return expression_of(ValueKind::string);
}

SemanticValue ParserActions::boolean(const Value& token) {
    line_ = token.line;
    append<ImConstBoolean>(*token.text == "true");
    return expression_of(ValueKind::boolean);
}

SemanticValue ParserActions::void_() {
    append_command(ImCommand::Command::push_void);
    return expression_of(ValueKind::void_);
}

SemanticValue ParserActions::this_() {
    const Scope* outer = scope_;
    while (outer && outer->kind() != ScopeKind::class_)
        outer = outer->parent();
    if (!outer)
        error("\"this\" can only be used from within a class");
    append_command(ImCommand::Command::push_this);
    return expression_of(ValueKind::unknown);
}

SemanticValue ParserActions::id_value(const Value& token) {
    line_ = token.line;
    append_value(token.text);
    return expression_of(ValueKind::unknown);
}

SemanticValue ParserActions::member(const Value& token) {
    line_ = token.line;
    append<ImMember>(token.text);
    return expression_of(ValueKind::unknown);
}

SemanticValue ParserActions::convert(ImCommand::Command command, ValueKind kind) {
    append_command(command);
    return expression_of(kind);
}

SemanticValue ParserActions::call(std::size_t argument_count) {
    append<ImCall>(argument_count);
    return expression_of(ValueKind::unknown);
}

void ParserActions::argument(const Value& expression) {
    to_value(expression);
    append_command(ImCommand::Command::param);
}

SemanticValue ParserActions::deref(const Value& chain) {
    append_command(ImCommand::Command::deref);
    return expression_of(chain.kind);
}

} // namespace kst::script
