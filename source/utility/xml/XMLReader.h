#pragma once

#include "source/utility/Archive.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kst {

enum class XMLEncoding : std::int32_t {
    utf8 = 0,
    /// ISO-8859-1: one byte is one code point.
    eight_bit = 1,
    utf16_little = 2,
    utf16_big = 3,
    utf32_little = 4,
    utf32_big = 5,
};

/// The encoding that the first four bytes from the archive's position tell. Throws ErrorWithCStack naming the archive
/// if there are fewer, or if they can be no text.
XMLEncoding detect_xml_encoding(Archive archive);

/// Appends a code point as UTF-8. Up to 1FFFFF, what four bytes hold, nothing is lost; beyond stands U+FFFD.
void append_utf8(std::string& out, char32_t code_point);

/// What a byte means to the fast lanes below. A byte without the bits that a lane stops at may be taken by it as it is.
enum XMLByteClass : std::uint8_t {
    /// NUL, CR, LF, `<` and everything from 80 hexadecimal on: only `next` knows what these are.
    XML_BYTE_SLOW = 1,
    XML_BYTE_NAME_START = 2,
    XML_BYTE_NAME = 4,
    /// Ends a run of text or of a double-quoted value: `&`, `@`.
    XML_BYTE_EXPANDS = 8,
    XML_BYTE_DOUBLE_QUOTE = 16,
    XML_BYTE_SINGLE_QUOTE = 32,
    /// Ends an unquoted value: blank, tab, `>`, `/`.
    XML_BYTE_ENDS_BARE_VALUE = 64,
    XML_BYTE_BLANK = 128,
};

extern const std::array<std::uint8_t, 256> xml_byte_classes;

inline bool xml_byte_is(char byte, unsigned classes) {
    return (xml_byte_classes[static_cast<unsigned char>(byte)] & classes) != 0;
}

/// The source of characters of one parse: code points of any encoding, line ends folded to LF, comments taken out.
///
/// Reads the archive from its position to its end in blocks. The truth is `next`, a character at a time. Where the
/// bytes at hand stand for themselves, a parser may run over them between `cursor` and `limit` instead; it must then
/// leave to `next` every byte of class XML_BYTE_SLOW, so that lines, comments and errors come out the same.
class XMLReader {
public:
    /// Shares the archive's store; the caller's position stays.
    XMLReader(const Archive& archive, XMLEncoding encoding);

    /// The next code point; 0 at a NUL, which all callers take for the end of input. At the end of a bounded archive
    /// the archive throws std::range_error.
    char32_t next() {
        const char32_t c = next_raw();
        return c == U'<' ? next_after_comments() : c;
    }
    /// The next `next` gives this. Lines are not counted again.
    void push_back(char32_t c) { pushed_back_.push_back(c); }
    /// The text, UTF-8, is read ahead of everything else.
    void push_back_text(std::string_view text);
    /// `next`, pushed back; but a 0 is gone.
    char32_t peek();

    /// Whether this ASCII text is next. Leaves it unread.
    bool looking_at(std::string_view text);
    /// Fails with "Expected " and the character if anything else is next.
    void expect(char c);
    void expect_text(std::string_view text);
    /// Tab, LF and blank.
    void skip_blanks() {
        if (!direct() || cursor_ == limit_ || xml_byte_is(*cursor_, XML_BYTE_BLANK | XML_BYTE_SLOW))
            skip_blanks_slowly();
    }

    /// Lines begun so far, from 1. Ends of lines that were read ahead count.
    std::int32_t line() const { return line_; }
    XMLEncoding encoding() const { return encoding_; }
    /// From the next character on.
    void set_encoding(XMLEncoding encoding) { encoding_ = encoding; }
    const std::string& archive_name() const { return archive_.name(); }

    /// Throws ErrorWithCStack: the archive's name, " (LINE): " and the message.
    [[noreturn]] void fail(const std::string& message) const;

    /// True: the next characters are the bytes from `cursor` on.
    bool direct() const { return pushed_back_.empty() && encoding_ <= XMLEncoding::eight_bit; }
    const char* cursor() const { return cursor_; }
    const char* limit() const { return limit_; }
    void advance_to(const char* place) { cursor_ = place; }
    /// Reads over this text of ordinary bytes, if it is next and at hand. False says nothing.
    bool skip_direct(std::string_view text) {
        if (!direct() || static_cast<std::size_t>(limit_ - cursor_) < text.size() ||
            std::memcmp(cursor_, text.data(), text.size()) != 0)
            return false;
        cursor_ += text.size();
        return true;
    }
    void add_lines(std::int32_t count) { line_ += count; }

private:
    /// One code point without regard to comments.
    char32_t next_raw() {
        if (pushed_back_.empty() && encoding_ <= XMLEncoding::eight_bit && cursor_ != limit_ &&
            static_cast<signed char>(*cursor_) > '\r')
            return static_cast<unsigned char>(*cursor_++);
        return next_raw_slowly();
    }
    char32_t next_raw_slowly();
    char32_t next_after_comments();
    void skip_comment();
    void skip_blanks_slowly();
    char32_t decode();
    char32_t decode_utf8();
    char32_t decode_utf16();
    char32_t end_of_line(char32_t c);

    /// A number of `width` bytes at the cursor, which must be there.
    std::uint32_t unit(unsigned width, bool big_endian) const;
    /// Makes `count` bytes available at the cursor. False only for an archive without bounds that has no more.
    bool ensure(std::size_t count) { return static_cast<std::size_t>(limit_ - cursor_) >= count || refill(count); }
    bool refill(std::size_t count);

    Archive archive_;
    std::int32_t line_ = 1;
    XMLEncoding encoding_;
    const char* cursor_ = nullptr;
    const char* limit_ = nullptr;
    std::size_t block_bytes_;
    std::unique_ptr<char[]> block_;
    std::vector<char32_t> pushed_back_;
};

} // namespace kst
