#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace kst {

/// A text that can be an argument of a template.
template <std::size_t size>
struct ClassName {
    char text[size]{};

    // Converts from a literal, as an argument of a template must.
    constexpr ClassName(const char (&literal)[size]) { std::copy_n(literal, size, text); } // NOLINT
    constexpr std::string_view view() const { return {text, size - 1}; }
};

} // namespace kst
