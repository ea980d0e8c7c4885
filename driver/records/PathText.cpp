#include "driver/records/PathText.h"

#include <algorithm>

namespace mosaicer {

std::string join_path(std::string_view a, std::string_view b) {
    const auto slash = [](char c) { return c == '/' || c == '\\'; };
    while (!a.empty() && slash(a.back()))
        a.remove_suffix(1);
    while (!b.empty() && slash(b.back()))
        b.remove_suffix(1);
    while (!b.empty() && slash(b.front()))
        b.remove_prefix(1);
    std::string joined;
    joined.reserve(a.size() + 1 + b.size());
    joined.append(a).append("/").append(b);
    std::replace(joined.begin(), joined.end(), '\\', '/');
    return joined;
}

std::string_view directory_of(std::string_view path) {
    return path.substr(0, path.find_last_of("/\\"));
}

std::string lower_name(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

std::string_view trim_blanks(std::string_view text) {
    const auto first = text.find_first_not_of(' ');
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::vector<std::string_view> split_string(std::string_view text, char delimiter) {
    std::vector<std::string_view> pieces;
    while (!text.empty()) {
        const auto end = std::min(text.find(delimiter), text.size());
        if (end > 0)
            pieces.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return pieces;
}

} // namespace mosaicer
