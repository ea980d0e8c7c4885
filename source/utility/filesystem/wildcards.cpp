#include "source/utility/filesystem/wildcards.h"

#include "source/utility/ascii.h"

#include <algorithm>
#include <cstddef>

namespace kst {

namespace {

/// Length in bytes of the UTF-8 character at `at`; 1 for a byte that begins none.
std::size_t character_length(std::string_view name, std::size_t at) {
    std::size_t end = at + 1;
    if ((static_cast<unsigned char>(name[at]) & 0xC0u) == 0xC0u)
        while (end < name.size() && (static_cast<unsigned char>(name[end]) & 0xC0u) == 0x80u)
            ++end;
    return end - at;
}

/// Steps over one item of the pattern that is no star, with the characters that it stands for.
bool step(std::string_view name, std::string_view pattern, std::size_t& n, std::size_t& p) {
    const bool name_ended = n == name.size();
    if (pattern[p] == '?') {
        if (!name_ended && name[n] != '.')
            n += character_length(name, n);
        ++p;
        return true;
    }
    const bool before_wildcard = p + 1 < pattern.size() && (pattern[p + 1] == '*' || pattern[p + 1] == '?');
    if (name_ended && pattern[p] == '.' && before_wildcard) {
        ++p;
        return true;
    }
    if (name_ended || lower(name[n]) != lower(pattern[p]))
        return false;
    ++n;
    ++p;
    return true;
}

} // namespace

bool fits_pattern(std::string_view name, std::string_view pattern) {
    // Only the last star ever needs to be tried with a longer run: what an earlier one could give up, it can take.
    constexpr auto none = std::string_view::npos;
    std::size_t n = 0;
    std::size_t p = 0;
    std::size_t star = none;
    std::size_t star_end = 0;
    while (true) {
        if (p == pattern.size() && n == name.size())
            return true;
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            star_end = n;
        } else if (p == pattern.size() || !step(name, pattern, n, p)) {
            if (star == none || star_end >= name.size())
                return false;
            n = ++star_end;
            p = star + 1;
        }
    }
}

std::vector<std::string> split_patterns(const std::string& patterns) {
    std::vector<std::string> pieces;
    for (std::size_t start = 0; start < patterns.size();) {
        const std::size_t end = std::min(patterns.find(';', start), patterns.size());
        if (end > start)
            pieces.push_back(patterns.substr(start, end - start));
        start = end + 1;
    }
    return pieces;
}

} // namespace kst
