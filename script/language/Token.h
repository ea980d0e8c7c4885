#pragma once

#include <cstdint>
#include <string>

namespace kst::script {

/// Signs of one character have their character as type; the grammar gives the words the same numbers.
enum class TokenType : std::int32_t {
    end = 0,
    identifier = 258,
    number_constant,
    string_constant,
    boolean_constant,
    if_,
    else_,
    object,
    number,
    string,
    boolean,
    import_,
    return_,
    and_,
    or_,
    class_,
    not_,
    void_,
    this_,
    while_,
    for_,
    in,
    assign,        ///< :=
    less_equal,    ///< <=
    greater_equal, ///< >=
    not_equal,     ///< <>
    /// Stands for text that is no token, after its error was reported. Fits no production.
    unscannable,
};

struct Token {
    TokenType type = TokenType::end;
    /// As written; for a string its value, escapes resolved.
    std::string text;
    /// Where the token begins. Lines count from 1, columns from 0.
    std::int32_t line = 1;
    std::int32_t column = 0;
};

} // namespace kst::script
