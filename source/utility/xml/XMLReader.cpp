#include "source/utility/xml/XMLReader.h"

#include "source/utility/Errors.h"

#include <algorithm>
#include <cstring>

namespace kst {
namespace {

/// What is asked of the archive at once.
constexpr std::int64_t full_block_bytes = 64 * 1024;
/// No code point needs more bytes than this to be told from its neighbour.
constexpr std::int64_t smallest_block_bytes = 16;

constexpr std::array<std::uint8_t, 256> make_byte_classes() {
    std::array<std::uint8_t, 256> classes{};
    for (std::size_t i = 0; i < classes.size(); ++i) {
        const bool letter = (i >= 'A' && i <= 'Z') || (i >= 'a' && i <= 'z') || i == '_';
        const bool digit = i >= '0' && i <= '9';
        unsigned bits = 0;
        if (i == 0 || i == '\r' || i == '\n' || i == '<' || i >= 0x80)
            bits |= XML_BYTE_SLOW;
        if (letter)
            bits |= XML_BYTE_NAME_START;
        if (letter || digit || i == ':')
            bits |= XML_BYTE_NAME;
        if (i == '&' || i == '@')
            bits |= XML_BYTE_EXPANDS;
        if (i == '"')
            bits |= XML_BYTE_DOUBLE_QUOTE;
        if (i == '\'')
            bits |= XML_BYTE_SINGLE_QUOTE;
        if (i == ' ' || i == '\t' || i == '>' || i == '/')
            bits |= XML_BYTE_ENDS_BARE_VALUE;
        if (i == ' ' || i == '\t')
            bits |= XML_BYTE_BLANK;
        classes[i] = static_cast<std::uint8_t>(bits);
    }
    return classes;
}

/// One code point of UTF-8 from the front of a text that append_utf8 may have written.
char32_t take_utf8(std::string_view& text) {
    const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
    const unsigned lead = byte(0);
    const std::size_t more = lead < 0xC0 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    char32_t c = more == 0 ? lead : lead & (0x3Fu >> more);
    for (std::size_t i = 1; i <= more; ++i)
        c = (c << 6) | (byte(i) & 0x3F);
    text.remove_prefix(std::min(text.size(), more + 1));
    return c;
}

} // namespace

constinit const std::array<std::uint8_t, 256> xml_byte_classes = make_byte_classes();

XMLEncoding detect_xml_encoding(Archive archive) {
    if (archive.size() - archive.position() < 4)
        throw ErrorWithCStack("Archive " + archive.name() + " empty");
    std::array<unsigned char, 4> b{};
    archive.read(b.data(), b.size());
    if (b[0] == 0 && b[1] == 0 && b[2] == 0 && b[3] == 0)
        throw ErrorWithCStack("Error in archive " + archive.name());
    if (b[0] == 0 && b[1] == 0 && (b[2] == 0 || (b[2] == 0xFE && b[3] == 0xFF)))
        return XMLEncoding::utf32_big;
    if (b[0] == 0 && b[1] == 0 && b[3] == 0)
        return XMLEncoding::utf16_little;
    if (b[0] == 0 && b[1] != 0 && b[2] == 0)
        return XMLEncoding::utf16_big;
    if (b[0] == 0xFF && b[1] == 0xFE)
        return b[2] == 0 && b[3] == 0 ? XMLEncoding::utf32_little : XMLEncoding::utf16_little;
    if (b[0] == 0xFE && b[1] == 0xFF)
        return XMLEncoding::utf16_big;
    if (b[0] == 0xEF && b[1] == 0xBB)
        return b[2] == 0xBF ? XMLEncoding::utf8 : XMLEncoding::eight_bit;
    if (b[0] != 0 && b[1] == 0 && b[3] == 0)
        return b[2] == 0 ? XMLEncoding::utf32_little : XMLEncoding::utf16_little;
    if (b[0] == 0x4C && b[1] == 0x6F && b[2] == 0xA7 && b[3] == 0x94)
        throw ErrorWithCStack("Error in archive " + archive.name() + " EBCDIC not supported");
    return XMLEncoding::eight_bit;
}

void append_utf8(std::string& out, char32_t code_point) {
    const auto put = [&](char32_t bits) { out += static_cast<char>(bits); };
    const auto put_low = [&](unsigned shift) { put(0x80 | ((code_point >> shift) & 0x3F)); };
    if (code_point >= 0x200000)
        code_point = 0xFFFD;
    if (code_point < 0x80) {
        put(code_point);
    } else if (code_point < 0x800) {
        put(0xC0 | (code_point >> 6));
        put_low(0);
    } else if (code_point < 0x10000) {
        put(0xE0 | (code_point >> 12));
        put_low(6);
        put_low(0);
    } else {
        put(0xF0 | (code_point >> 18));
        put_low(12);
        put_low(6);
        put_low(0);
    }
}

XMLReader::XMLReader(const Archive& archive, XMLEncoding encoding)
    : archive_(archive),
      encoding_(encoding),
      block_bytes_(static_cast<std::size_t>(archive.unbounded() ? full_block_bytes
                                                                : std::clamp(archive.size() - archive.position(),
                                                                             smallest_block_bytes, full_block_bytes))),
      block_(std::make_unique_for_overwrite<char[]>(block_bytes_)) {}

bool XMLReader::refill(std::size_t count) {
    const auto left = static_cast<std::size_t>(limit_ - cursor_);
    if (left > 0)
        std::memmove(block_.get(), cursor_, left);
    cursor_ = block_.get();
    limit_ = cursor_ + left;
    std::size_t room = block_bytes_ - left;
    if (!archive_.unbounded()) {
        const auto remaining =
            static_cast<std::size_t>(std::max<std::int64_t>(0, archive_.size() - archive_.position()));
        // With too little left, asking for what is missing lets the archive fail in its own words.
        room = std::max(std::min(room, remaining), count - left);
    }
    limit_ += archive_.read(block_.get() + left, room);
    return static_cast<std::size_t>(limit_ - cursor_) >= count;
}

std::uint32_t XMLReader::unit(unsigned width, bool big_endian) const {
    std::uint32_t value = 0;
    for (unsigned i = 0; i < width; ++i)
        value = (value << 8) | static_cast<unsigned char>(cursor_[big_endian ? i : width - 1 - i]);
    return value;
}

char32_t XMLReader::decode_utf8() {
    const auto lead = static_cast<unsigned char>(*cursor_++);
    if (lead < 0x80)
        return lead;
    if (lead < 0xC0 || lead >= 0xF8)
        return 0;
    const std::size_t more = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    if (!ensure(more))
        return 0;
    char32_t c = lead & (0x3Fu >> more);
    for (std::size_t i = 0; i < more; ++i)
        c = (c << 6) | (static_cast<unsigned char>(*cursor_++) & 0x3F);
    return c;
}

char32_t XMLReader::decode_utf16() {
    const bool big = encoding_ == XMLEncoding::utf16_big;
    const std::uint32_t first = unit(2, big);
    cursor_ += 2;
    if (first < 0xD800 || first > 0xDBFF)
        return first;
    if (!ensure(2))
        return 0;
    const std::uint32_t second = unit(2, big);
    cursor_ += 2;
    return (((first & 0x3FF) << 10) | (second & 0x3FF)) + 0x10000;
}

/// Folds CR LF, CR and LF to one LF and counts it.
char32_t XMLReader::end_of_line(char32_t c) {
    const bool wide = encoding_ >= XMLEncoding::utf16_little;
    const unsigned width = wide ? 2 : 1;
    if (c == U'\r' && ensure(width) && unit(width, encoding_ == XMLEncoding::utf16_big) == '\n')
        cursor_ += width;
    ++line_;
    return U'\n';
}

char32_t XMLReader::decode() {
    switch (encoding_) {
    case XMLEncoding::utf8:
        return ensure(1) ? decode_utf8() : 0;
    case XMLEncoding::eight_bit:
        return ensure(1) ? static_cast<unsigned char>(*cursor_++) : 0u;
    case XMLEncoding::utf16_little:
    case XMLEncoding::utf16_big:
        return ensure(2) ? decode_utf16() : 0;
    case XMLEncoding::utf32_little:
    case XMLEncoding::utf32_big:
        break;
    }
    if (!ensure(4))
        return 0;
    const char32_t c = unit(4, encoding_ == XMLEncoding::utf32_big);
    cursor_ += 4;
    return c;
}

char32_t XMLReader::next_raw_slowly() {
    if (!pushed_back_.empty()) {
        const char32_t c = pushed_back_.back();
        pushed_back_.pop_back();
        return c;
    }
    const char32_t c = decode();
    if ((c == U'\n' || c == U'\r') && encoding_ < XMLEncoding::utf32_little)
        return end_of_line(c);
    return c;
}

/// Behind a `<`: that, or what follows the comments that it begins.
char32_t XMLReader::next_after_comments() {
    constexpr std::string_view opening = "!--";
    char32_t c = U'<';
    while (c == U'<') {
        for (std::size_t matched = 0; matched < opening.size(); ++matched) {
            c = next_raw();
            if (c == static_cast<char32_t>(opening[matched]))
                continue;
            push_back(c);
            while (matched > 0)
                push_back(static_cast<char32_t>(opening[--matched]));
            return U'<';
        }
        skip_comment();
        c = next_raw();
    }
    return c;
}

void XMLReader::skip_comment() {
    for (int dashes = 0;;) {
        const char32_t c = next_raw();
        if (c == 0)
            fail("XML parser: expected -->");
        if (c == U'>' && dashes >= 2)
            return;
        dashes = c == U'-' ? std::min(dashes + 1, 2) : 0;
    }
}

void XMLReader::push_back_text(std::string_view text) {
    const std::size_t first = pushed_back_.size();
    while (!text.empty())
        pushed_back_.push_back(take_utf8(text));
    std::reverse(pushed_back_.begin() + static_cast<std::ptrdiff_t>(first), pushed_back_.end());
}

char32_t XMLReader::peek() {
    const char32_t c = next();
    if (c != 0)
        push_back(c);
    return c;
}

bool XMLReader::looking_at(std::string_view text) {
    std::size_t matched = 0;
    char32_t c = 0;
    for (; matched < text.size(); ++matched) {
        c = next();
        if (c != static_cast<char32_t>(text[matched])) {
            push_back(c);
            break;
        }
    }
    const bool all = matched == text.size();
    while (matched > 0)
        push_back(static_cast<char32_t>(text[--matched]));
    return all;
}

void XMLReader::expect(char c) {
    if (next() != static_cast<char32_t>(c))
        fail(std::string("Expected ") + c);
}

void XMLReader::expect_text(std::string_view text) {
    for (const char c : text)
        expect(c);
}

void XMLReader::skip_blanks_slowly() {
    if (direct()) {
        while (cursor_ != limit_ && (xml_byte_is(*cursor_, XML_BYTE_BLANK) || *cursor_ == '\n'))
            line_ += *cursor_++ == '\n' ? 1 : 0;
        if (cursor_ != limit_ && !xml_byte_is(*cursor_, XML_BYTE_SLOW))
            return;
    }
    char32_t c = next();
    while (c == U' ' || c == U'\t' || c == U'\n')
        c = next();
    push_back(c);
}

void XMLReader::fail(const std::string& message) const {
    throw ErrorWithCStack(archive_.name() + " (" + std::to_string(line_) + "): " + message);
}

} // namespace kst
