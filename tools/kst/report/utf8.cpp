#include "tools/kst/report/utf8.h"

#include <cstddef>
#include <cstdint>

namespace kst::tool::report {
namespace {

/// Bytes of the character at the front of the text; 0 if it is malformed.
std::size_t character_size(std::string_view text) {
    const auto byte = [&text](std::size_t i) -> std::uint32_t { return static_cast<unsigned char>(text[i]); };
    const std::uint32_t first = byte(0);
    if (first < 0x80)
        return 1;
    const std::size_t size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() < size)
        return 0;
    std::uint32_t code = first & (0x7Fu >> size);
    for (std::size_t i = 1; i < size; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
        code = code << 6 | (byte(i) & 0x3F);
    }
    const bool shortest = code >= (size == 4 ? 0x10000u : size == 3 ? 0x800u : 0x80u);
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    return shortest && !surrogate && code <= 0x10FFFF ? size : 0;
}

} // namespace

bool is_utf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t size = character_size(text);
        if (size == 0)
            return false;
        text.remove_prefix(size);
    }
    return true;
}

std::string as_utf8(std::string_view text) {
    if (is_utf8(text))
        return std::string(text);
    std::string wide;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            wide += c;
        } else {
            wide += static_cast<char>(0xC0 | byte >> 6);
            wide += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return wide;
}

} // namespace kst::tool::report
