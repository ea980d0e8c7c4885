#include "compression/Profile.h"

#include "compression/Codes.h"
#include "compression/OptionKeys.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <fstream>
#include <string_view>

namespace compression {
namespace {

constexpr std::string_view blanks = " \t\r";

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

template <class Number>
bool parse_number(std::string_view text, Number& out) {
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size())
        return false;
    out = value;
    return true;
}

bool parse_value(std::string_view text, std::int32_t& out) {
    return parse_number(text, out);
}

bool parse_value(std::string_view text, float& out) {
    float value = 0.0f;
    if (!parse_number(text, value) || !std::isfinite(value))
        return false;
    out = value;
    return true;
}

bool parse_value(std::string_view text, bool& out) {
    if (text != "0" && text != "1" && text != "false" && text != "true")
        return false;
    out = text == "1" || text == "true";
    return true;
}

bool read_line(std::string_view line, CompressionOptions& options) {
    if (line.empty() || line.front() == '#')
        return true;
    const std::size_t key_length = std::min(line.find_first_of(blanks), line.size());
    const std::string_view name = line.substr(0, key_length);
    const std::string_view value = trimmed(line.substr(key_length));
    const auto keys = option_keys();
    const auto key = std::find_if(keys.begin(), keys.end(), [&](const OptionKey& each) { return each.name == name; });
    if (key == keys.end())
        return true;
    return std::visit([&](auto field) { return parse_value(value, options.*field); }, key->field);
}

} // namespace

std::int32_t read_profile(std::istream& text, CompressionOptions& options) {
    std::array<char, 1024> line{};
    while (text.getline(line.data(), line.size()))
        if (!read_line(trimmed(line.data()), options))
            return UNSUPPORTED_OPTION;
    if (text.bad())
        return CANT_OPEN_PROFILE;
    // The stream fails without its end in sight only where a line did not fit.
    return text.eof() ? OK : UNSUPPORTED_OPTION;
}

std::int32_t read_profile_file(const std::string& path, CompressionOptions& options) {
    std::ifstream file(path);
    if (!file)
        return CANT_OPEN_PROFILE;
    return read_profile(file, options);
}

} // namespace compression
