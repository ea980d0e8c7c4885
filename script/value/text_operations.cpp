#include "script/value/text_operations.h"

#include <algorithm>

#include "script/value/DSError.h"
#include "script/value/numbers.h"
#include "script/value/utf16.h"
#include "source/utility/ascii.h"

namespace kst::script {

namespace {

/// The characters of the four values of two bits.
constexpr std::string_view bit_blanks = "\t\n\r ";

std::size_t clamped_index(float value, std::size_t limit) {
    const std::int32_t whole = std::max(truncate_to_int(value), 0);
    return std::min(static_cast<std::size_t>(whole), limit);
}

/// Turns one wheel; true when it passed its end and the carry moves on.
bool turn_wheel(char& c) {
    switch (c) {
    case '9':
        c = '0';
        return true;
    case 'z':
        c = 'a';
        return true;
    case 'Z':
        c = 'A';
        return true;
    default:
        ++c;
        return false;
    }
}

bool is_wheel(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

unsigned hex_digit(char c) {
    if (c >= '0' && c <= '9')
        return static_cast<unsigned>(c - '0');
    if (c >= 'a' && c <= 'f')
        return static_cast<unsigned>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F')
        return static_cast<unsigned>(c - 'A' + 10);
    return 0;
}

char to_byte(unsigned value) {
    return static_cast<char>(static_cast<std::uint8_t>(value));
}

} // namespace

void check_string_size(std::size_t bytes) {
    if (bytes > max_string_bytes)
        throw DSError("String too long");
}

std::string substring(std::string_view text, float start) {
    return substring(text, start, 2147483648.0f);
}

std::string substring(std::string_view text, float start, float count) {
    if (is_ascii(text)) {
        const std::size_t from = clamped_index(start, text.size());
        return std::string(text.substr(from, clamped_index(count, text.size() - from)));
    }
    const std::u16string units = decode_utf8(text);
    const std::size_t from = clamped_index(start, units.size());
    return encode_utf8(std::u16string_view(units).substr(from, clamped_index(count, units.size() - from)));
}

std::int64_t index_of(std::string_view text, std::string_view wanted) {
    if (is_ascii(text)) {
        const std::size_t found = text.find(wanted);
        return found == std::string_view::npos ? -1 : static_cast<std::int64_t>(found);
    }
    const std::size_t found = decode_utf8(text).find(decode_utf8(wanted));
    return found == std::u16string::npos ? -1 : static_cast<std::int64_t>(found);
}

std::string strip_blanks(std::string_view text) {
    return std::string(trimmed(text));
}

std::string repeat(std::string_view text, float times) {
    const std::int32_t whole = truncate_to_int(times);
    if (text.empty() || whole <= 0)
        return {};
    const auto count = static_cast<std::size_t>(whole);
    check_string_size(count > max_string_bytes ? count : count * text.size());
    std::string result;
    result.reserve(count * text.size());
    for (std::size_t i = 0; i < count; ++i)
        result += text;
    return result;
}

std::string next_text(std::string text) {
    for (std::size_t i = text.size(); i-- > 0 && is_wheel(text[i]);)
        if (!turn_wheel(text[i]))
            return text;
    const char last = text.empty() ? '0' : text.back();
    text.push_back(last == 'a' || last == 'A' ? last : '0');
    return text;
}

std::string replace_pattern(std::string_view text, std::string_view pattern,
                            const std::function<std::string(std::string_view)>& replacement) {
    const std::size_t star = pattern.find('*');
    const std::string_view left = pattern.substr(0, star);
    const std::string_view right = star == std::string_view::npos ? std::string_view() : pattern.substr(star + 1);
    if (left.empty() && right.empty())
        throw DSError("Empty pattern");
    std::string result;
    for (;;) {
        const std::size_t at = text.find(left);
        const std::size_t end = at == std::string_view::npos ? at : text.find(right, at + left.size());
        if (end == std::string_view::npos)
            break;
        const std::string_view between = text.substr(at + left.size(), end - at - left.size());
        result += text.substr(0, at);
        result += replacement(between);
        check_string_size(result.size());
        text.remove_prefix(end + right.size());
    }
    return result.append(text);
}

std::string xor_text(std::string text, std::string_view key) {
    if (key.empty())
        return text;
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = to_byte(static_cast<std::uint8_t>(text[i]) ^
                          static_cast<unsigned>(static_cast<std::uint8_t>(key[i % key.size()])));
    return text;
}

std::string to_blanks(std::string_view text) {
    check_string_size(text.size() * 4);
    std::string result;
    result.reserve(text.size() * 4);
    for (const char c : text)
        for (unsigned shift = 0; shift < 8; shift += 2)
            result.push_back(bit_blanks[static_cast<std::uint8_t>(c) >> shift & 3U]);
    return result;
}

std::string from_blanks(std::string_view text) {
    std::string result;
    result.reserve(text.size() / 4);
    for (std::size_t i = 0; i + 4 <= text.size(); i += 4) {
        unsigned byte = 0;
        for (std::size_t k = 0; k < 4; ++k) {
            const std::size_t bits = bit_blanks.find(text[i + k]);
            byte |= (bits == std::string_view::npos ? 0U : static_cast<unsigned>(bits)) << (2 * k);
        }
        result.push_back(to_byte(byte));
    }
    return result;
}

std::string to_upper_ascii(std::string text) {
    for (char& c : text)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    return text;
}

std::string to_lower_ascii(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return text;
}

std::string to_hex(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    check_string_size(text.size() * 2);
    std::string result;
    result.reserve(text.size() * 2);
    for (const char c : text) {
        result.push_back(digits[static_cast<std::uint8_t>(c) >> 4]);
        result.push_back(digits[static_cast<std::uint8_t>(c) & 15]);
    }
    return result;
}

std::string from_hex(std::string_view text) {
    std::string result;
    result.reserve((text.size() + 1) / 2);
    for (std::size_t i = 0; i < text.size(); i += 2)
        result.push_back(to_byte(hex_digit(text[i]) << 4 | (i + 1 < text.size() ? hex_digit(text[i + 1]) : 0U)));
    return result;
}

} // namespace kst::script
