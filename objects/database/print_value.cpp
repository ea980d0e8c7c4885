#include "objects/database/print_value.h"

#include <algorithm>
#include <array>

namespace kst {

namespace {

constexpr std::string_view digits = "0123456789ABCDEF";

unsigned char byte_of(std::string_view text, std::size_t i) {
    return static_cast<unsigned char>(text[i]);
}

struct Utf8Range {
    unsigned char first_low, first_high;   ///< of the first byte
    unsigned char second_low, second_high; ///< of the second one; all others are 80 to BF
    std::size_t length;
};

/// Shortest forms only, no surrogates, nothing past 10FFFF, and none of the controls 80 to 9F.
constexpr std::array utf8_ranges{
    Utf8Range{0xC2, 0xC2, 0xA0, 0xBF, 2}, Utf8Range{0xC3, 0xDF, 0x80, 0xBF, 2}, Utf8Range{0xE0, 0xE0, 0xA0, 0xBF, 3},
    Utf8Range{0xE1, 0xEC, 0x80, 0xBF, 3}, Utf8Range{0xED, 0xED, 0x80, 0x9F, 3}, Utf8Range{0xEE, 0xEF, 0x80, 0xBF, 3},
    Utf8Range{0xF0, 0xF0, 0x90, 0xBF, 4}, Utf8Range{0xF1, 0xF3, 0x80, 0xBF, 4}, Utf8Range{0xF4, 0xF4, 0x80, 0x8F, 4},
};

/// The bytes of the character at the front, 0 for one that is not shown as it is.
std::size_t shown_length(std::string_view text) {
    const unsigned char first = byte_of(text, 0);
    if (first < 0x80)
        return first >= 0x20 && first != 0x7F && first != '"' && first != '\\' ? 1 : 0;
    const auto* const range = std::find_if(utf8_ranges.begin(), utf8_ranges.end(), [&](const Utf8Range& r) {
        return first >= r.first_low && first <= r.first_high;
    });
    if (range == utf8_ranges.end() || text.size() < range->length || byte_of(text, 1) < range->second_low ||
        byte_of(text, 1) > range->second_high)
        return 0;
    for (std::size_t i = 2; i < range->length; ++i)
        if ((byte_of(text, i) & 0xC0u) != 0x80)
            return 0;
    return range->length;
}

} // namespace

void print_quoted(std::ostream& out, std::string_view text) {
    out << '"';
    while (!text.empty()) {
        const std::size_t shown = shown_length(text);
        if (shown > 0)
            out << text.substr(0, shown);
        else if (text[0] == '"' || text[0] == '\\')
            out << '\\' << text[0];
        else
            out << "\\x" << digits[byte_of(text, 0) >> 4] << digits[byte_of(text, 0) & 15u];
        text.remove_prefix(std::max<std::size_t>(shown, 1));
    }
    out << '"';
}

void print_type_id(std::ostream& out, std::uint32_t type_id) {
    out << "0x";
    for (int shift = 28; shift >= 0; shift -= 4)
        out << digits[(type_id >> shift) & 15u];
}

} // namespace kst
