#pragma once

#include "script/language/ImInstruction.h"
#include "script/language/Scope.h"

#include <cstdint>
#include <string>

namespace kst::script {

/// A set of jumps that wait for one target: the ends of a chain through `ImGotoCond::next_waiting`, so that two sets
/// merge at once, however large they are. -1 in an empty one.
struct Label {
    std::int32_t first;
    std::int32_t last;
};
constexpr Label no_label{-1, -1};

/// What the automaton keeps for each symbol of the grammar. A symbol uses the fields that mean something for it; plain
/// data throughout, since the automaton moves it about as such.
struct SemanticValue {
    /// Of a token: where it stands, and its text, interned. Of a dotted name: the whole of it.
    std::int32_t line;
    const std::string* text;
    /// Of an expression, and of statements: what they return, `none` if nothing.
    ValueKind kind;
    /// The exits of a jump form; of a loop and an if, the false one is where a failed test goes.
    Label true_label;
    Label false_label;
    /// Of statements: all their `return` jumps.
    Label returns;
    /// Of an if: the jumps from its parts to its end.
    Label end_label;
    /// Where statements and functions began: an instruction index, and the scope to go back to.
    std::int32_t start;
    Scope* scope;
    /// Of an argument list.
    std::size_t count;
};

/// The semantic value of a statement without `return`.
constexpr SemanticValue no_value{0, nullptr, ValueKind::none, no_label, no_label, no_label, no_label, -1, nullptr, 0};

} // namespace kst::script
