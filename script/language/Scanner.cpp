#include "script/language/Scanner.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kst::script {

namespace {

struct Keyword {
    std::string_view word;
    TokenType type;
};

constexpr std::array keywords{
    Keyword{"if", TokenType::if_},
    Keyword{"else", TokenType::else_},
    Keyword{"object", TokenType::object},
    Keyword{"number", TokenType::number},
    Keyword{"string", TokenType::string},
    Keyword{"boolean", TokenType::boolean},
    Keyword{"import", TokenType::import_},
    Keyword{"return", TokenType::return_},
    Keyword{"and", TokenType::and_},
    Keyword{"or", TokenType::or_},
    Keyword{"not", TokenType::not_},
    Keyword{"class", TokenType::class_},
    Keyword{"true", TokenType::boolean_constant},
    Keyword{"false", TokenType::boolean_constant},
    Keyword{"void", TokenType::void_},
    Keyword{"this", TokenType::this_},
    Keyword{"while", TokenType::while_},
    Keyword{"for", TokenType::for_},
    Keyword{"in", TokenType::in},
};

constexpr bool is_digit(int c) {
    return c >= '0' && c <= '9';
}
constexpr bool is_word_start(int c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
constexpr bool is_white(int c) {
    return c == '\t' || c == '\n' || c == ' ';
}

} // namespace

int Scanner::take() {
    if (!pushed_back_.empty()) {
        const int character = pushed_back_.back();
        pushed_back_.pop_back();
        return character;
    }
    const int character = next_character();
    if (character == '\n') {
        ++line_;
        column_ = 0;
    } else {
        ++column_;
    }
    return character;
}

bool Scanner::take_if(int character) {
    const int next = take();
    if (next == character)
        return true;
    push_back(next);
    return false;
}

void Scanner::next_token(Token& token) {
    token.text.clear();
    const int first = skip_to_token(token);
    if (first == 0) {
        token.type = TokenType::end;
        push_back(0);
    } else if (is_word_start(first)) {
        push_back(first);
        read_word(token);
    } else if (is_digit(first)) {
        push_back(first);
        read_number(token);
    } else if (first == '\'' || first == '"') {
        token.type = TokenType::string_constant;
        read_string(token, first);
    } else {
        read_sign(token, first);
    }
}

int Scanner::skip_to_token(Token& token) {
    for (;;) {
        // A character that was pushed back is never a line feed ahead of other text, so only the column can be off.
        token.column = column_ - static_cast<std::int32_t>(pushed_back_.size());
        token.line = line_;
        const int character = take();
        if (is_white(character))
            continue;
        if (character != '/' || !skip_comment())
            return character;
    }
}

bool Scanner::skip_comment() {
    const int second = take();
    if (second == '*') {
        skip_block_comment();
        return true;
    }
    if (second != '/') {
        push_back(second);
        return false;
    }
    for (int character = take(); character != '\n'; character = take()) {
        if (character == 0) {
            push_back(0);
            break;
        }
    }
    return true;
}

void Scanner::skip_block_comment() {
    std::size_t depth = 1;
    while (depth > 0) {
        const int character = take();
        if (character == 0) {
            push_back(0);
            throw ScannerError("Unexpected end of file - */ expected");
        }
        if (character == '/' && take_if('*'))
            ++depth;
        else if (character == '*' && take_if('/'))
            --depth;
    }
}

void Scanner::read_word(Token& token) {
    int character = take();
    for (; is_word_start(character) || is_digit(character); character = take())
        token.text.push_back(static_cast<char>(character));
    push_back(character);
    const auto* keyword = std::find_if(keywords.begin(), keywords.end(),
                                       [&](const Keyword& candidate) { return candidate.word == token.text; });
    token.type = keyword == keywords.end() ? TokenType::identifier : keyword->type;
}

void Scanner::read_number(Token& token) {
    token.type = TokenType::number_constant;
    bool point_seen = false;
    int character = take();
    for (; is_digit(character) || (character == '.' && !point_seen); character = take()) {
        point_seen = point_seen || character == '.';
        token.text.push_back(static_cast<char>(character));
    }
    push_back(character);
}

void Scanner::read_string(Token& token, int delimiter) {
    if (delimiter == '"' && take_if('"')) {
        if (take_if('"'))
            read_raw_string(token);
        return;
    }
    for (int character = take(); character != delimiter; character = take()) {
        if (character == 0) {
            push_back(0);
            throw ScannerError("Unexpected end of file - \" expected");
        }
        if (character == '\n')
            throw ScannerError("Can't have strings over multiple lines \" expected");
        if (character == '\\')
            read_escape(token, delimiter);
        else
            token.text.push_back(static_cast<char>(character));
    }
}

void Scanner::read_escape(Token& token, int delimiter) {
    const int character = take();
    switch (character) {
    case 0:
        push_back(0);
        throw ScannerError("Unexpected end of file - \" expected");
    case 'n':
        token.text.push_back('\n');
        return;
    case 'r':
        token.text.push_back('\r');
        return;
    case 't':
        token.text.push_back('\t');
        return;
    default:
        if (character != delimiter && character != '\\')
            throw ScannerError(std::string("Unrecognized escape sequence \"\\") + static_cast<char>(character) + "\"");
        token.text.push_back(static_cast<char>(character));
    }
}

void Scanner::read_raw_string(Token& token) {
    for (int quotes = 0; quotes < 3;) {
        const int character = take();
        if (character == 0) {
            push_back(0);
            throw ScannerError("Unexpected end of file - \"\"\" expected");
        }
        quotes = character == '"' ? quotes + 1 : 0;
        token.text.push_back(static_cast<char>(character));
    }
    token.text.resize(token.text.size() - 3);
}

void Scanner::read_sign(Token& token, int first) {
    token.type = static_cast<TokenType>(first);
    token.text.push_back(static_cast<char>(first));
    struct Pair {
        char first;
        char second;
        TokenType type;
    };
    constexpr std::array pairs{Pair{':', '=', TokenType::assign}, Pair{'<', '=', TokenType::less_equal},
                               Pair{'>', '=', TokenType::greater_equal}, Pair{'<', '>', TokenType::not_equal}};
    for (const Pair& pair : pairs) {
        if (first == pair.first && take_if(pair.second)) {
            token.type = pair.type;
            token.text.push_back(pair.second);
            return;
        }
    }
    constexpr std::string_view signs = "=<>:.,;+-*/%(){}";
    if (signs.find(token.text.front()) == std::string_view::npos)
        throw ScannerError("Unrecognized token");
}

} // namespace kst::script
