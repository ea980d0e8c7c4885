#pragma once

#include "script/language/Token.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace kst::script {

/// Text that is no token. Carries the bare message; `Token::line` of the token that was asked for tells the place.
class ScannerError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Cuts source text into tokens. A source says its name and gives its characters.
///
/// Blanks, tabs and line feeds part tokens; // comments run to the end of the line, /* comments nest. Character 0 ends
/// the text.
class Scanner {
public:
    Scanner() = default;
    Scanner(const Scanner&) = delete;
    Scanner& operator=(const Scanner&) = delete;
    virtual ~Scanner() = default;

    /// Shown in messages.
    virtual std::string name() const = 0;

    /// Reads the next token. At the end of the text its type is `end`, however often it is asked for. On ScannerError
    /// the token's place is set, and what was read so far is gone, so that reading goes on behind it.
    void next_token(Token& token);

    /// Of the character that comes next, those pushed back left aside.
    std::int32_t line() const { return line_; }
    std::int32_t column() const { return column_; }

protected:
    /// The next character, 0 to 255; 0 at the end of the text and ever after.
    virtual int next_character() = 0;

private:
    int take();
    void push_back(int character) { pushed_back_.push_back(character); }
    bool take_if(int character);
    /// True: a comment was skipped. False: the slash was a division.
    bool skip_comment();
    void skip_block_comment();
    int skip_to_token(Token& token);
    void read_word(Token& token);
    void read_number(Token& token);
    void read_string(Token& token, int delimiter);
    void read_escape(Token& token, int delimiter);
    void read_raw_string(Token& token);
    void read_sign(Token& token, int first);

    std::int32_t line_ = 1;
    std::int32_t column_ = 0;
    std::vector<int> pushed_back_;
};

} // namespace kst::script
