#include "driver/plan/ninja_text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

namespace mosaicer {
namespace {

constexpr std::string_view line_breaks("\n\r\0", 3);

/// Room for an extension within the 255 bytes that file systems give a name.
constexpr std::size_t longest_file_name = 200;

bool is_letter_or_digit(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

void refuse_line_breaks(std::string_view text) {
    if (text.find_first_of(line_breaks) != std::string_view::npos)
        throw std::runtime_error("A name with a line break cannot stand in a plan: " + std::string(text));
}

std::string hexadecimal(std::uint64_t value, int digits) {
    std::string text(static_cast<std::size_t>(digits), '0');
    for (std::size_t i = text.size(); i-- > 0; value >>= 4)
        text[i] = "0123456789ABCDEF"[value & 15];
    return text;
}

} // namespace

std::string ninja_path(std::string_view path) {
    refuse_line_breaks(path);
    std::string escaped;
    for (const char c : path) {
        if (c == '|') {
            escaped += "${bar}";
            continue;
        }
        if (c == '$' || c == ' ' || c == ':')
            escaped += '$';
        escaped += c;
    }
    return escaped;
}

std::string dyndep_path(std::string_view path) {
    if (path.find('|') != std::string_view::npos)
        throw std::runtime_error("A name with a bar cannot stand in the plan of a set of several atlases: " +
                                 std::string(path));
    return ninja_path(path);
}

std::string ninja_value(std::string_view text) {
    refuse_line_breaks(text);
    std::string escaped;
    for (const char c : text)
        escaped += c == '$' ? "$$" : std::string(1, c);
    return escaped;
}

std::string shell_word(std::string_view text) {
    const auto is_plain = [](char c) {
        return is_letter_or_digit(c) || std::string_view("_./+=,@%:-").find(c) != std::string_view::npos;
    };
    if (!text.empty() && std::ranges::all_of(text, is_plain))
        return std::string(text);
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\'' ? "'\\''" : std::string(1, c);
    return quoted + "'";
}

std::string file_name_of(std::string_view name) {
    std::string escaped;
    std::uint64_t sum = 0xCBF29CE484222325u; // FNV-1a
    for (const char c : name) {
        const auto byte = static_cast<std::uint8_t>(c);
        sum = (sum ^ byte) * 0x100000001B3u;
        if (is_letter_or_digit(c) || c == '.' || c == '_' || c == '-')
            escaped += c;
        else
            escaped += "%" + hexadecimal(byte, 2);
    }
    if (escaped.size() > longest_file_name)
        escaped = escaped.substr(0, longest_file_name - 17) + "%" + hexadecimal(sum, 16);
    return escaped;
}

} // namespace mosaicer
