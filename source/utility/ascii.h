#pragma once

#include <limits>
#include <string>
#include <string_view>

namespace kst {

// Bytes as ASCII, whatever the host's locale says.

constexpr bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

/// Other bytes than capital letters stay.
constexpr char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline std::string lowered(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        c = lower(c);
    return result;
}

/// Without spaces, tabs and line ends at both ends.
constexpr std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos)
        return {};
    return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

/// What a decimal number without sign becomes that is out of a float's range: nothing, or infinite. The exponent tells,
/// or else whether a digit other than 0 stands ahead of the point.
constexpr float out_of_range_value(std::string_view number) {
    const std::size_t exponent = number.find_first_of("eE");
    const bool is_small = exponent != std::string_view::npos ? number.substr(exponent + 1).starts_with('-')
                                                             : number.find_first_of("123456789") >= number.find('.');
    return is_small ? 0.0f : std::numeric_limits<float>::infinity();
}

} // namespace kst
