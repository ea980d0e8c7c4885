#include "source/utility/xml/XmlParameters.h"

#include "source/utility/ascii.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace kst {
namespace {

constexpr std::string_view white_space = " \t\n\v\f\r";

void skip_white_space(std::string_view& text) {
    text.remove_prefix(std::min(text.size(), text.find_first_not_of(white_space)));
}

/// Takes a sign off the front. True for a minus.
bool take_sign(std::string_view& text) {
    const bool minus = text.starts_with('-');
    if (minus || text.starts_with('+'))
        text.remove_prefix(1);
    return minus;
}

/// Takes the decimal number off the front, after white space; nothing if there is none.
std::optional<float> take_float(std::string_view& text) {
    skip_white_space(text);
    std::string_view digits = text;
    const bool minus = take_sign(digits);
    const bool starts_with_point = digits.starts_with('.');
    if (digits.size() <= (starts_with_point ? 1u : 0u) || !is_digit(digits[starts_with_point ? 1 : 0]))
        return std::nullopt;
    float value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    const auto length = static_cast<std::size_t>(end - digits.data());
    if (error == std::errc::result_out_of_range)
        value = out_of_range_value(digits.substr(0, length));
    text = digits.substr(length);
    return minus ? -value : value;
}

template <class Read>
bool with_value(const XMLNode& node, std::string_view name, Read read) {
    const XMLParameter* const parameter = node.find_parameter(intern(name));
    if (parameter)
        read(parameter->value());
    return parameter != nullptr;
}

} // namespace

std::int32_t leading_integer(std::string_view text) {
    skip_white_space(text);
    const bool minus = take_sign(text);
    // Saturates one past the largest positive number, which is the most negative one's size.
    constexpr std::int64_t most = std::int64_t{std::numeric_limits<std::int32_t>::max()} + 1;
    std::int64_t value = 0;
    for (; !text.empty() && is_digit(text.front()); text.remove_prefix(1))
        value = std::min(most, value * 10 + (text.front() - '0'));
    return static_cast<std::int32_t>(minus ? -value : std::min(value, most - 1));
}

float leading_float(std::string_view text) {
    return take_float(text).value_or(0.0f);
}

bool read_parameter(const XMLNode& node, std::string_view name, std::string& target) {
    return with_value(node, name, [&](std::string_view value) { target = value; });
}

bool read_parameter(const XMLNode& node, std::string_view name, std::int32_t& target) {
    return with_value(node, name, [&](std::string_view value) { target = leading_integer(value); });
}

bool read_parameter(const XMLNode& node, std::string_view name, float& target) {
    return with_value(node, name, [&](std::string_view value) { target = leading_float(value); });
}

bool read_parameter(const XMLNode& node, std::string_view name, bool& target) {
    return with_value(node, name, [&](std::string_view value) { target = value == "true"; });
}

bool read_parameter(const XMLNode& node, std::string_view name, std::array<float, 3>& target) {
    return with_value(node, name, [&](std::string_view value) {
        for (float& component : target) {
            const std::optional<float> number = take_float(value);
            if (!number)
                return;
            component = *number;
        }
    });
}

} // namespace kst
