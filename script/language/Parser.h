#pragma once

#include "script/language/CodeBuffer.h"
#include "script/language/ImInstruction.h"
#include "script/language/Scanner.h"
#include "script/language/Scope.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace kst::script {

class ParserActions;

/// Compiles one source. Usage: parse, then generate; after either fails, `errors` tells why.
///
/// There is no syntax tree: the actions of the grammar append intermediate instructions as they go. Names are looked up
/// when code is generated, so that functions and classes may be used ahead of their declaration.
class Parser {
public:
    using ImInstruction = script::ImInstruction;

    /// The scanner is not owned and must outlive the parser.
    explicit Parser(Scanner& scanner);
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;
    ~Parser();

    /// To be called once. False: there were errors, and nothing is left to generate from.
    bool parse();

    /// Empties the buffer and emits the program into it. False: stopped at the first error, which is added to `errors`.
    bool generate(CodeBuffer& code);

    /// One line for each instruction, after a successful parse. Branch targets are instruction indices, from 0.
    void print(std::ostream& out) const;

    /// "NAME(LINE):MESSAGE", parted by line feeds. The same line twice in a row is told once.
    const std::string& errors() const { return errors_; }
    std::size_t error_count() const { return error_count_; }

    const Scope& global_scope() const;
    /// In the order of declaration.
    const std::vector<const Scope*>& class_scopes() const;
    const std::vector<ImInstruction*>& instructions() const;

    /// Takes down an error of the source.
    void report(std::int32_t line, const std::string& message);

private:
    void append_error(const std::string& text);

    Scanner& scanner_;
    std::unique_ptr<ParserActions> actions_;
    std::string errors_;
    std::string last_error_;
    std::size_t error_count_ = 0;
};

} // namespace kst::script
