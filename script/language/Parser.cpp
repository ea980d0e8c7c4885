#include "script/language/Parser.h"

#include "script/language/ParserActions.h"

namespace kst::script {

/// The LALR automaton, made from Grammar.y. False: a syntax error that it found no way around.
bool run_automaton(ParserActions& actions);

namespace {

void emit_declaration(Emitter& emitter, const Symbol& symbol) {
    const bool function = symbol.kind == SymbolKind::function;
    emitter.begin(function ? Opcode::declare_function : Opcode::declare_object);
    if (function)
        emitter.put_target(symbol.first_instruction);
    emitter.put_name(*symbol.name);
}

// The declarations are a small program of their own, from offset 0 to the first return, that fills the globals and
// makes the classes when the code is loaded.
void emit_declarations(Emitter& emitter, const Scope& global) {
    for (const Symbol& symbol : global.symbols()) {
        switch (symbol.kind) {
        case SymbolKind::import_:
            emitter.begin(Opcode::import_);
            emitter.put_name(*symbol.import_name);
            break;
        case SymbolKind::class_:
            emitter.begin(Opcode::begin_class);
            emitter.put_name(*symbol.name);
            for (const Symbol& member : symbol.class_scope->symbols())
                emit_declaration(emitter, member);
            emitter.begin(Opcode::end_class);
            break;
        case SymbolKind::function:
        case SymbolKind::object:
            emit_declaration(emitter, symbol);
            break;
        }
    }
    emitter.begin(Opcode::return_);
}

} // namespace

Parser::Parser(Scanner& scanner) : scanner_(scanner), actions_(std::make_unique<ParserActions>(*this, scanner)) {}

Parser::~Parser() = default;

bool Parser::parse() {
    const bool accepted = run_automaton(*actions_);
    if (accepted && error_count_ == 0)
        return true;
    actions_ = std::make_unique<ParserActions>(*this, scanner_);
    return false;
}

const Scope& Parser::global_scope() const {
    return actions_->global;
}

const std::vector<const Scope*>& Parser::class_scopes() const {
    return actions_->class_scopes;
}

const std::vector<ImInstruction*>& Parser::instructions() const {
    return actions_->instructions;
}

void Parser::print(std::ostream& out) const {
    for (const ImInstruction* instruction : instructions())
        instruction->print(out);
}

void Parser::append_error(const std::string& text) {
    if (!errors_.empty())
        errors_ += '\n';
    errors_ += text;
    ++error_count_;
}

void Parser::report(std::int32_t line, const std::string& message) {
    std::string text = scanner_.name() + "(" + std::to_string(line) + "):" + message;
    if (text == last_error_)
        return;
    append_error(text);
    last_error_ = std::move(text);
}

bool Parser::generate(CodeBuffer& code) {
    code.clear();
    for (ImInstruction* instruction : instructions()) {
        instruction->offset = -1;
        instruction->waiting.clear();
    }
    std::string place = scanner_.name();
    const auto fail = [&](const std::exception& error) {
        append_error(place + ": " + error.what());
        return false;
    };
    try {
        Emitter emitter(code, instructions());
        emit_declarations(emitter, global_scope());
        for (ImInstruction* instruction : instructions()) {
            place = scanner_.name() + "(" + std::to_string(instruction->line) + ")";
            emitter.emit(*instruction);
        }
    } catch (const GeneratorError& error) {
        return fail(error);
    } catch (const ParserError& error) {
        return fail(error);
    }
    return true;
}

} // namespace kst::script
