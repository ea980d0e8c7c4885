#include "source/utility/filesystem/normalize_path.h"

#include "source/utility/ascii.h"

namespace kst {

namespace {

bool is_separator(char c) {
    return c == '/' || c == '\\';
}

char normalized(char c) {
    return c == '/' ? '\\' : lower(c);
}

} // namespace

std::string normalize_path(std::string_view path, bool trailing_separator, bool keep_leading_separator) {
    std::string result;
    result.reserve(path.size() + 1);
    for (const char c : path) {
        const bool repeated = result.empty() ? !keep_leading_separator : result.back() == '\\';
        if (!is_separator(c) || !repeated)
            result.push_back(normalized(c));
    }
    if (result.empty())
        return result;
    if (result.back() != '\\' && trailing_separator)
        result.push_back('\\');
    else if (result.back() == '\\' && !trailing_separator)
        result.pop_back();
    return result;
}

bool has_leading_separator(std::string_view path) {
    return !path.empty() && is_separator(path.front());
}

std::string_view file_name_of(std::string_view path) {
    const auto separator = path.find_last_of("/\\");
    return separator == std::string_view::npos ? path : path.substr(separator + 1);
}

} // namespace kst
