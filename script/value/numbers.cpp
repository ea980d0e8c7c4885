#include "script/value/numbers.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace kst::script {

namespace {

bool is_space(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool is_hex_digit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool begins_hexadecimal(std::string_view text) {
    return text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') &&
           (is_hex_digit(text[2]) || (text[2] == '.' && text.size() > 3 && is_hex_digit(text[3])));
}

/// The value of a number that a float cannot hold: the wider types tell on which side it lies.
float out_of_range(std::string_view digits, std::chars_format format) {
    long double wide = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), wide, format);
    if (read.ec == std::errc{})
        return static_cast<float>(wide);
    const std::string_view number(digits.data(), static_cast<std::size_t>(read.ptr - digits.data()));
    const std::size_t exponent = number.find_first_of(format == std::chars_format::hex ? "pP" : "eE");
    const bool small =
        exponent != std::string_view::npos && exponent + 1 < number.size() && number[exponent + 1] == '-';
    return small ? 0.0f : std::numeric_limits<float>::infinity();
}

template <typename Integer>
Integer truncate(float value) {
    using Limits = std::numeric_limits<Integer>;
    if (std::isnan(value))
        return 0;
    // The lowest integer is a float, and so is its opposite, one above the highest: everything below it truncates into
    // range.
    constexpr auto lowest = static_cast<float>(Limits::min());
    if (value >= -lowest)
        return Limits::max();
    if (value < lowest)
        return Limits::min();
    return static_cast<Integer>(value);
}

} // namespace

std::int32_t truncate_to_int(float value) {
    return truncate<std::int32_t>(value);
}
std::int64_t truncate_to_int64(float value) {
    return truncate<std::int64_t>(value);
}

std::string number_text(float value) {
    const std::int32_t whole = truncate_to_int(value);
    if (static_cast<double>(whole) == static_cast<double>(value))
        return std::to_string(whole);
    if (std::isnan(value))
        return "nan";
    std::array<char, 32> buffer;
    const auto written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), static_cast<double>(value),
                                       std::chars_format::general, 8);
    return {buffer.data(), written.ptr};
}

std::string fixed_text(float value, int precision) {
    if (std::isnan(value))
        return "nan";
    std::string text(static_cast<std::size_t>(precision) + 48, '\0'); // 39 digits, sign and point
    const auto written = std::to_chars(text.data(), text.data() + text.size(), static_cast<double>(value),
                                       std::chars_format::fixed, precision);
    text.resize(static_cast<std::size_t>(written.ptr - text.data()));
    return text;
}

std::optional<float> scan_number(std::string_view text) {
    while (!text.empty() && is_space(text.front()))
        text.remove_prefix(1);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+'))
        text.remove_prefix(1);
    if (text.starts_with('-'))
        return std::nullopt; // from_chars would take a second sign
    auto format = std::chars_format::general;
    if (begins_hexadecimal(text)) {
        format = std::chars_format::hex;
        text.remove_prefix(2);
    }
    float value = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value, format);
    if (read.ec == std::errc::invalid_argument)
        return std::nullopt;
    if (read.ec == std::errc::result_out_of_range)
        value = out_of_range(text, format);
    return negative ? -value : value;
}

} // namespace kst::script
