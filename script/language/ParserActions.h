#pragma once

#include "script/language/Parser.h"
#include "script/language/SemanticValue.h"

#include <deque>
#include <string>
#include <unordered_set>
#include <utility>

namespace kst::script {

/// What the productions of the grammar do, and what they build: scopes, names and instructions.
class ParserActions {
public:
    using Value = SemanticValue;

    ParserActions(Parser& parser, Scanner& scanner);

    // The automaton's side.
    int next_token(Value& value);
    void syntax_error(const char* words);
    /// Reports at the token read last.
    void error(const std::string& message);
    void statement_error();

    // Declarations.
    Value extend_dotted_id(const Value& id, const Value& part);
    void import_id(const Value& dotted);
    Value begin_function(const Value& name);
    void parameter(const Value& name);
    void end_parameters();
    void end_function(const Value& head, const Value& body);
    Value begin_class(const Value& name);
    /// Goes back to the scope around a function, class, block or statement.
    void leave_scope(const Value& opened) { scope_ = opened.scope; }
    Value begin_block();
    void end_block(const Value& block);
    void declare_object(const Value& name);
    void begin_initializer(const Value& name);

    // Statements.
    /// The empty list; remembers its scope.
    Value statements_here() const;
    /// The list with one statement more. What a syntax error left open is closed.
    Value append_statement(const Value& statements, const Value& statement);
    void lvalue(const Value& name);
    void chained_lvalue(const Value& name);
    void pop_value() { append_command(ImCommand::Command::pop); }
    void assign(const Value& expression);
    /// Takes down line and instruction index of a keyword.
    Value begin_statement(const Value& keyword);
    /// The true exit of a test leads to what follows.
    Value begin_body(const Value& test);
    void end_while(const Value& start, const Value& test);
    Value if_part(const Value& test, const Value& body) const;
    Value begin_else(const Value& chain);
    Value else_if_part(const Value& chain, const Value& part);
    Value end_if(const Value& chain, const Value& else_part);
    Value return_statement(const Value& expression);
    /// Opens the scope of a loop and evaluates into its hidden list. `value` only with two variables.
    Value begin_for(const Value& key, const Value* value);
    Value for_head(const Value& opened, const Value& key, const Value* value, const Value& expression);
    void end_for(const Value& head);

    // Expressions.
    Value to_jump(Value expression);
    Value to_value(Value expression);
    /// An operand of "or" and "and" is followed by the other one; which exit leads there is the difference.
    Value or_left(const Value& left);
    Value or_right(const Value& left, const Value& right);
    Value and_left(const Value& left);
    Value and_right(const Value& left, const Value& right);
    Value not_(const Value& operand);
    Value binary(const Value& left, const Value& right, ImBinOp::Operator op);
    Value negate(const Value& operand);
    Value number(const Value& token);
    Value string(const Value& token);
    Value boolean(const Value& token);
    Value void_();
    Value this_();
    Value id_value(const Value& token);
    Value member(const Value& token);
    Value convert(ImCommand::Command command, ValueKind kind);
    Value call(std::size_t argument_count);
    void argument(const Value& expression);
    Value deref(const Value& chain);

    Scope global{ScopeKind::global, nullptr};
    std::vector<const Scope*> class_scopes;
    std::vector<ImInstruction*> instructions;

private:
    template <typename Instruction, typename... Arguments>
    Instruction& append(Arguments&&... arguments) {
        auto owned = std::make_unique<Instruction>(std::forward<Arguments>(arguments)...);
        Instruction& instruction = *owned;
        instruction.line = line_;
        instructions.push_back(&instruction);
        owned_.push_back(std::move(owned));
        return instruction;
    }
    void append_command(ImCommand::Command command) { append<ImCommand>(command); }
    void append_reference(const std::string* name) { append<ImIDRef>(NameUse::at(name, scope_)); }
    void append_value(const std::string* name) { append<ImValue>(NameUse::at(name, scope_)); }
    /// A call without arguments of a member of a local, brought to a value.
    void append_member_call(const std::string* object, const char* method);
    void append_member_value(const std::string* object, const char* name);
    void append_jump(ImGotoCond::Condition condition, Label& label);

    std::int32_t next_index() const { return static_cast<std::int32_t>(instructions.size()); }
    Value merged_returns(const Value& a, const Value& b);
    Label merged(const Label& a, const Label& b);
    void resolve(const Label& label, std::int32_t target);
    Scope* open_scope(ScopeKind kind);
    const std::string* intern(const std::string& text) { return &*texts_.insert(text).first; }
    /// The names of a loop's hidden locals hold "::", which no name of the source can.
    const std::string* hidden(const Value& variable, const char* suffix) { return intern(*variable.text + suffix); }

    Parser& parser_;
    Scanner& scanner_;
    Token token_;
    std::int32_t line_ = 0;
    Scope* scope_ = &global;
    std::deque<Scope> scopes_;
    std::unordered_set<std::string> texts_;
    std::vector<std::unique_ptr<ImInstruction>> owned_;
};

} // namespace kst::script
