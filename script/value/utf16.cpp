#include "script/value/utf16.h"

#include <algorithm>
#include <cstdint>

namespace kst::script {

namespace {

constexpr char16_t raw_byte = 0xdc00;

bool is_raw_byte(char32_t unit) {
    return unit >= raw_byte + 0x80 && unit <= raw_byte + 0xff;
}
bool is_high_surrogate(char32_t unit) {
    return unit >= 0xd800 && unit <= 0xdbff;
}
bool is_low_surrogate(char32_t unit) {
    return unit >= 0xdc00 && unit <= 0xdfff;
}

struct Step {
    char32_t character;
    std::size_t bytes;
};

/// The character at the start of `text`, or its first byte as a raw one.
Step next_character(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
    const std::uint8_t first = byte(0);
    if (first < 0x80)
        return {first, 1};
    const Step raw{static_cast<char32_t>(raw_byte + first), 1};
    const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4 || text.size() < length)
        return raw;
    char32_t character = first & (0x7fU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xc0) != 0x80)
            return raw;
        character = character << 6 | (byte(i) & 0x3fU);
    }
    constexpr char32_t least[] = {0x80, 0x800, 0x10000};
    // A raw byte's unit in three bytes would come back as one byte: it is taken for three raw ones.
    if (character < least[length - 2] || character > 0x10ffff || is_raw_byte(character))
        return raw;
    return {character, length};
}

void append_utf8(std::string& text, char32_t c) {
    const auto put = [&](char32_t byte) { text.push_back(static_cast<char>(static_cast<std::uint8_t>(byte))); };
    if (c < 0x80) {
        put(c);
        return;
    }
    if (c < 0x800) {
        put(0xc0 | c >> 6);
    } else if (c < 0x10000) {
        put(0xe0 | c >> 12);
        put(0x80 | (c >> 6 & 0x3f));
    } else {
        put(0xf0 | c >> 18);
        put(0x80 | (c >> 12 & 0x3f));
        put(0x80 | (c >> 6 & 0x3f));
    }
    put(0x80 | (c & 0x3f));
}

} // namespace

std::u16string decode_utf8(std::string_view text) {
    std::u16string units;
    units.reserve(text.size());
    while (!text.empty()) {
        const Step step = next_character(text);
        text.remove_prefix(step.bytes);
        if (step.character < 0x10000) {
            units.push_back(static_cast<char16_t>(step.character));
        } else {
            units.push_back(static_cast<char16_t>(0xd7c0 + (step.character >> 10)));
            units.push_back(static_cast<char16_t>(0xdc00 + (step.character & 0x3ff)));
        }
    }
    return units;
}

std::string encode_utf8(std::u16string_view units) {
    std::string text;
    text.reserve(units.size());
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char32_t unit = units[i];
        if (is_high_surrogate(unit) && i + 1 < units.size() && is_low_surrogate(units[i + 1]))
            append_utf8(text, 0x10000 + ((unit - 0xd800) << 10) + (units[++i] - 0xdc00U));
        else if (is_raw_byte(unit))
            text.push_back(static_cast<char>(static_cast<std::uint8_t>(unit - raw_byte)));
        else
            append_utf8(text, unit);
    }
    return text;
}

std::size_t count_units(std::string_view text) {
    std::size_t count = 0;
    while (!text.empty()) {
        const Step step = next_character(text);
        text.remove_prefix(step.bytes);
        count += step.character < 0x10000 ? 1 : 2;
    }
    return count;
}

bool is_ascii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<std::uint8_t>(c) < 0x80; });
}

} // namespace kst::script
